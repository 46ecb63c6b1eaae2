#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Prints a header as Doxygen is to see it. In our headers the comment of a value stands above its getter and
speaks for the setter below it too, and for overloads; Doxygen gives it to the first alone. So it is repeated for
them. And each class is given its example, where there is one.

    doc_filter.py EXAMPLES HEADER

EXAMPLES is a source whose lines "//! [Class]" stand around the example of a class.
"""

import pathlib
import re
import sys

COMMENT = re.compile(r"\s*///(?!<)")
# A function's first line, as far as it has one of its own.
FUNCTION = re.compile(r"    [\w\[][^()]*?[\s&*](?:get|set|is)?([a-zA-Z]\w*)\(")
CLASS = re.compile(r"(?:template <.*> )?(?:class|struct)\s+(?:[A-Z_]+EXPORT\s+)?(\w+)[^;]*$")
EXAMPLE = re.compile(r"//! \[(\w+)\]")
# The fields that stand in one line, and are their shape and nothing more.
FIELD = re.compile(r"class (Field_\w+) +final : public (\w+)<(\d+),.*MMS_HDR_S::(\w+)>\s*{};")
# Classes that are used all alike share the example of their family.
FAMILIES = {"fields.h": "MsgFieldBase", "mms_ua_cmd.h": "MMS_UA_Cmd", "mms_ua_svcmd.h": "MMS_UA_SvCmd"}


def spread(lines):
    comment, stem, output = [], None, []
    for line in lines:
        if COMMENT.match(line):
            comment = comment + [line] if output and COMMENT.match(output[-1]) else [line]
            output.append(line)
            continue
        found = FUNCTION.match(line)
        if not line.strip():
            comment = []
        elif found and output and COMMENT.match(output[-1]):
            stem = found[1]
        elif found and comment and found[1] == stem:
            output += comment
        elif found:
            comment = []
        output.append(line)
    return output


def example_of(name, header, names):
    """The name of the example of a class, or None."""
    return name if name in names else FAMILIES.get(header)


def with_examples(lines, example, file_name):
    output = []
    for line in lines:
        field = FIELD.match(line)
        if field:
            output.append(f"/// {field[1]} is header field {field[3]}, MMS_HDR_S::{field[4]}, and a {field[2]}.\n")
        found = field or CLASS.match(line)
        name = example(found[1]) if found else None
        if name and output and COMMENT.match(output[-1]):
            output += ["///\n", "/// @par Example\n", f"/// @snippet {file_name} {name}\n"]
        output.append(line)
    return output


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    examples, header = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    names = set(EXAMPLE.findall(examples.read_text(encoding="utf-8")))
    with open(header, encoding="utf-8") as text:
        lines = text.readlines()
    sys.stdout.writelines(with_examples(spread(lines), lambda name: example_of(name, header.name, names), examples.name))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Writes a source that includes every public header and names what they declare, so that the debug information of
its object tells the public layouts; check_abi.py reads them.

    abi_probe.py SOURCE
"""

import collections
import posixpath
import re
import sys

import check_layers
import lint_files

NAMESPACE = re.compile(r"^namespace ([\w:]+) \{$")
EXPORT = r"WMSG_(?:PLATFORM_)?EXPORT"
ATTRIBUTE = r"(?:\[\[.*?\]\] ?)?"
TYPE = re.compile(rf"^(?:class|struct|union|enum(?: class)?) {ATTRIBUTE}(?:{EXPORT} )?(\w+)(?=[\s:{{]|$)(?!\s*;)")
TEMPLATE = re.compile(r"^template <[^;]*?>\n?\s*(?:class|struct) (\w+)", re.MULTILINE)
FUNCTION = re.compile(rf"^{ATTRIBUTE}{EXPORT} .*?\b(\w+)\(")
VARIABLE = re.compile(rf"^extern {EXPORT} .*?(\w+);")
CONSTANT = re.compile(r"^(?:inline )?constexpr (?:unsigned )?(?:int|short|long|char|qu?int\d+) (\w+) =")

Declarations = collections.namedtuple("Declarations", "types templates functions constants")


def declarations(headers):
    """What headers (name -> text) declare for all to use: types and constants with their namespace, and functions and
    variables of the libraries. Templates are apart: only what is made of them has a layout."""
    found = Declarations([], [], [], [])
    for text in headers.values():
        open_spaces = []
        found.templates.extend(TEMPLATE.findall(text))
        for line in text.splitlines():
            space = "".join(open_spaces)
            if line.startswith("}"):
                del open_spaces[-1:]
            elif re.match(r"[a-zA-Z].*\{$", line):
                namespace = NAMESPACE.match(line)
                open_spaces.append(namespace[1] + "::" if namespace else "")
            if (declared := TYPE.match(line)) and declared[1] not in found.templates:
                found.types.append(space + declared[1])
            elif declared := FUNCTION.match(line) or VARIABLE.match(line):
                found.functions.append(space + declared[1])
            elif declared := CONSTANT.match(line):
                found.constants.append(space + declared[1])
    return found


def source(headers):
    """The text of the probe. Each function is a name of its own, so that nothing goes unnoticed."""
    declared = declarations(headers)
    lines = [f'#include "{header}"' for header in headers]
    lines += [f"WMSG_EXPORT void abiProbe(const {name} *) {{ }}" for name in declared.types]
    lines += [f"WMSG_EXPORT decltype(&{name}) abiProbe_{name.replace('::', '_')}() {{ return &{name}; }}"
              for name in declared.functions]
    lines += ["enum AbiProbeConstants : long long {",
              *(f"    abiProbe_{name.replace('::', '_')} = {name}," for name in declared.constants), "};",
              "WMSG_EXPORT void abiProbe(const AbiProbeConstants *) { }"]
    return "\n".join(lines) + "\n"


def public_headers():
    """The public headers of the project: name -> text."""
    names = lint_files.paths()
    tree = lint_files.read([name for name in names
                            if name.endswith(".h") or posixpath.basename(name) == "CMakeLists.txt"])
    return {header: tree[header] for header in sorted(check_layers.public_headers(tree))}


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], "w", encoding="utf-8") as target:
        target.write(source(public_headers()))

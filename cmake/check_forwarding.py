#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The table of forwarding headers names every public class, and nothing that is not there."""

import posixpath
import re

import check_layers
import lint_files

TABLE = "cmake/WmsgForwarding.cmake"
ROWS = re.compile(r"^set\(WMSG_FORWARDING\n(.*?)\)", re.MULTILINE | re.DOTALL)
EXPORTED = re.compile(r"^(?:class|struct) WMSG_(?:PLATFORM_)?EXPORT (\w+)", re.MULTILINE)

# Exported for the sake of inline code alone; applications do not use it by name.
HELPERS = {"FieldPrinter"}


def declares(text, name):
    """Tells whether a header declares a type or namespace of that name, no mere announcement."""
    return re.search(rf"\b(?:class|struct|namespace)\s+(?:WMSG_\w+\s+)?{name}\b(?!\s*;)|\busing {name} =", text)


def check(tree):
    table = ROWS.search(tree[TABLE])[1].split()
    rows = list(zip(table[::2], table[1::2]))
    public = check_layers.public_headers(tree)
    problems = [f"{TABLE}: {header} is no public header" for header, _ in rows if header not in public]
    problems += [f"{TABLE}: {header} declares no {name}" for header, name in rows
                 if header in public and not declares(tree[header], name)]
    named = set(rows)
    for header in sorted(public & tree.keys()):
        problems += [f"{TABLE}: {name} of {header} is missing" for name in EXPORTED.findall(tree[header])
                     if (header, name) not in named and name not in HELPERS]
    return problems


if __name__ == "__main__":
    names = lint_files.paths()
    tree = lint_files.read(lint_files.sources(names) + [TABLE]
                           + [name for name in names if posixpath.basename(name) == "CMakeLists.txt"])
    lint_files.finish(check(tree), len(tree))

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""No function is longer than sixty lines. Leans on the format: the brace that opens a function stands alone on
its line, and the one that closes it below in the same column."""

import re

import lint_files

LIMIT = 60
FUNCTION = re.compile(r"(?P<before>[^\n]*[^\s,={(;])\n(?P<indent>[ ]*)\{\n(?P<body>(?:.*\n)*?)(?P=indent)\}[;,)]?")


def check(tree):
    problems = []
    for path, text in tree.items():
        offset = 0
        while found := FUNCTION.search(text, offset):
            lines = found["body"].count("\n") + 2
            if lines > LIMIT:
                line = lint_files.line_of(text, found.start("indent"))
                problems.append(f"{path}:{line}: a function of {lines} lines ({found['before'].strip()}); "
                                f"the limit is {LIMIT}")
            offset = found.end()
    return problems


if __name__ == "__main__":
    tree = lint_files.read(lint_files.sources(lint_files.paths()))
    lint_files.finish(check(tree), len(tree))

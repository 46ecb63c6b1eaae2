#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Every file of code begins with its copyright and licence lines."""

import posixpath
import re

import lint_files

HEAD = re.compile(r"(#!.*\n)?"
                  r"(//|#) SPDX-FileCopyrightText: \d{4} The wmsg authors\n"
                  r"\2 SPDX-License-Identifier: Apache-2\.0\n")
CODE = (".h", ".cpp", ".py", ".cmake", ".sh", ".in", ".yml", ".yaml")
NAMES = ("CMakeLists.txt", ".clang-format", ".clang-tidy")


def is_code(path, text):
    return (path.endswith(CODE) or posixpath.basename(path) in NAMES or text.startswith("#!")) \
        and not path.startswith(lint_files.DATA)


def check(tree):
    return [f"{path}:1: does not begin with the SPDX copyright and licence lines"
            for path, text in tree.items() if is_code(path, text) and not HEAD.match(text)]


if __name__ == "__main__":
    tree = lint_files.read(lint_files.paths())
    lint_files.finish(check(tree), sum(is_code(path, text) for path, text in tree.items()))

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Every C++ file looks as the formatter would write it. `check_format.py --fix` rewrites those that do not."""

import argparse
import concurrent.futures
import os
import shutil
import subprocess
import sys

import lint_files


def formatter():
    """The formatter's program: another version than 14 lays some lines out differently."""
    program = shutil.which("clang-format-14") or shutil.which("clang-format")
    if not program:
        sys.exit("clang-format is missing; scripts/install-deps installs it")
    return program


def check(names, root=lint_files.ROOT):
    """One line for each file that the formatter would change."""
    def problem(name):
        result = subprocess.run([formatter(), "--style=file", "--dry-run", "-Werror", name],
                                cwd=root, capture_output=True, text=True)
        return result.stderr.partition("\n")[0] or f"{name}: the formatter failed" if result.returncode else ""

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        return [line for line in workers.map(problem, names) if line]


if __name__ == "__main__":
    options = argparse.ArgumentParser()
    options.add_argument("--fix", action="store_true", help="rewrite the files")
    arguments = options.parse_args()
    names = lint_files.sources(lint_files.paths())
    if arguments.fix:
        subprocess.run([formatter(), "--style=file", "-i", *names], cwd=lint_files.ROOT, check=True)
    lint_files.finish(check(names), len(names))

# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""What the lint scripts share: the files of the project and how problems are told.

A check is a function from a tree (a dict of path -> text) to a list of problems, so that it can be fed
samples; see lint_test.py.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Folders of bytes and words that are not ours to style.
DATA = ("tests/data/", "fuzz/corpus/")


def paths(root=ROOT):
    """The project's files, new ones included, as sorted paths from the root."""
    git = ["git", "-c", "safe.directory=*", "-C", str(root)]
    listing = subprocess.run(git + ["ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                             capture_output=True, text=True)
    if listing.returncode == 0:
        names = listing.stdout.split("\0")
    else:  # not a checkout: an unpacked archive
        names = (str(path.relative_to(root)) for path in root.rglob("*"))
        names = (name for name in names if not re.match(r"(build[^/]*|\.cache|\.git)/|.*__pycache__/", name))
    return sorted(name for name in names if name and (root / name).is_file())


def sources(names):
    """The C++ files among `names`, generated and foreign data apart."""
    return [name for name in names if name.endswith((".h", ".cpp")) and not name.startswith(DATA)]


def read(names, root=ROOT):
    """The tree of the named files; a file that is no text is left out."""
    tree = {}
    for name in names:
        try:
            tree[name] = (root / name).read_text(encoding="utf-8")
        except UnicodeDecodeError:
            pass
    return tree


def line_of(text, offset):
    """The line number of a character."""
    return text.count("\n", 0, offset) + 1


def finish(problems, checked):
    """Prints the problems and ends the program: 0 without any, else 1."""
    for problem in problems:
        print(problem)
    print(f"{len(problems)} problem(s) in {checked} file(s)")
    if not checked:
        print("nothing was checked")
    sys.exit(1 if problems or not checked else 0)

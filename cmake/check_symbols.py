#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The names that a library exports are those of its lists in abi/, no more and no fewer.

    check_symbols.py libwmsg.so ...

Only strong names and the tables of our own classes are listed: what compilers and sanitizers add, and inline
code of Qt and the standard library, differs from build to build.
"""

import pathlib
import re
import subprocess
import sys

import release_lists

SYMBOL = re.compile(r"^[0-9a-f]* ?[0-9a-f]* ?(?P<kind>[A-Za-z]) (?P<name>.+)$")
TABLE = re.compile(r"(?:vtable|typeinfo|typeinfo name|VTT) for (?P<class>.+)$")
RESERVED = re.compile(r"_[_A-Z]|_(?:init|fini|end|edata)$|non-virtual thunk|virtual thunk|guard variable for|std::|\.L")


def owned(listing):
    """The sorted names that are ours in the output of `nm --demangle`."""
    symbols = [SYMBOL.match(line) for line in listing.splitlines()]
    symbols = [(found["kind"], found["name"]) for found in symbols if found]
    strong = {name for kind, name in symbols if kind in "TDBR" and not RESERVED.match(name)
              and not TABLE.match(name)}
    classes = {name.split("::")[0] for name in strong if "::" in name}
    tables = {name for _, name in symbols
              if (found := TABLE.match(name)) and re.split(r"::|<", found["class"])[0] in classes}
    return sorted(strong | tables)


def names(path, *choice):
    listing = subprocess.run(["nm", "--dynamic", "--demangle", *choice, path], check=True, capture_output=True, text=True)
    return listing.stdout


def exported(path):
    return owned(names(path, "--defined-only"))


def undefined(path):
    return [line.split(maxsplit=1)[1] for line in names(path, "--undefined-only").splitlines()]


def name_of(path):
    """The name of a library without what its file has more: libwmsg-engine."""
    return path.name.partition(".")[0]


def list_of(path):
    return name_of(path) + ".symbols"


def compare(found, listed):
    return [f"exported, but not in the list: {name}" for name in sorted(set(found) - set(listed))] \
        + [f"in the list, but not exported: {name}" for name in sorted(set(listed) - set(found))]


def main():
    if not sys.argv[1:]:
        sys.exit(__doc__)
    lists = release_lists.of_project()
    problems, count = [], 0
    for path in map(pathlib.Path, sys.argv[1:]):
        found = exported(path)
        count += len(found)
        problems += [f"{name_of(path)}: {problem}" for problem in compare(found, lists.read(list_of(path)))]
        if not found:
            problems.append(f"{name_of(path)}: exports nothing")
    print("\n".join([*problems, f"{len(problems)} problem(s) in {count} exported name(s)"]))
    if problems:
        print("If that is meant, make the lists anew (the target abi_lists) and say why in the change log.")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())

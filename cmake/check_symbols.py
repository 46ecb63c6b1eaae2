#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The names that the library exports are those of a list, no more and no fewer.

    check_symbols.py libwmsg.so            compares
    check_symbols.py libwmsg.so --update   writes the list anew

Only strong names and the tables of our own classes are listed: what compilers and sanitizers add, and inline
code of Qt and the standard library, differs from build to build.
"""

import argparse
import pathlib
import re
import subprocess
import sys

LIST = pathlib.Path(__file__).resolve().parent / "exported-symbols.txt"
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


def compare(exported, listed):
    return [f"exported, but not in the list: {name}" for name in sorted(set(exported) - set(listed))] \
        + [f"in the list, but not exported: {name}" for name in sorted(set(listed) - set(exported))]


def main():
    options = argparse.ArgumentParser()
    options.add_argument("library")
    options.add_argument("--update", action="store_true", help="write the list anew")
    arguments = options.parse_args()
    listing = subprocess.run(["nm", "--dynamic", "--defined-only", "--demangle", arguments.library],
                             check=True, capture_output=True, text=True)
    exported = owned(listing.stdout)
    if arguments.update:
        LIST.write_text("".join(name + "\n" for name in exported), encoding="utf-8")
        return 0
    problems = compare(exported, LIST.read_text(encoding="utf-8").splitlines())
    print("\n".join(problems))
    print(f"{len(problems)} problem(s) in {len(exported)} exported name(s)")
    if problems:
        print("If that is meant, run cmake/check_symbols.py with --update and say why in the change log.")
    return 1 if problems or not exported else 0


if __name__ == "__main__":
    sys.exit(main())

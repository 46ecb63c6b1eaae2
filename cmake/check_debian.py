#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""What the Debian packages repeat from elsewhere is the same there: the version, the exported names of the library,
and the packages that a build needs.

    check_debian.py            compares
    check_debian.py --update   writes new names into debian/libwmsg1.symbols, with the version that they come in,
                               and removes those that are gone
"""

import argparse
import re
import sys

import lint_files

SYMBOLS = "debian/libwmsg1.symbols"
LIST = re.compile(r"abi/\d+\.\d+/libwmsg\.symbols")
# A row for a name of ours. Others are patterns for what compilers add.
ROW = re.compile(r'^ \(c\+\+\)"(?P<name>.+)@Base" (?P<version>\S+)$')


def version(tree):
    return re.search(r"^project\(wmsg VERSION (\S+)", tree["CMakeLists.txt"], re.MULTILINE)[1]


def changelog_version(tree):
    return re.match(r"wmsg \(([^()]+)-[^-()]+\) ", tree["debian/changelog"])[1]


def exported(tree):
    """The names of the library: what the lists of all versions say."""
    return {name for path in tree if LIST.fullmatch(path) for name in tree[path].splitlines()}


def rows(tree):
    """The names of ours in the list of the package -> since when they are there."""
    found = map(ROW.match, tree[SYMBOLS].splitlines())
    return {row["name"]: row["version"] for row in found if row}


def build_packages(tree):
    """The names that debian/control wants for a build."""
    listed = re.search(r"^Build-Depends:((?:.|\n )*)", tree["debian/control"], re.MULTILINE)[1] \
        + re.search(r"^Build-Depends-Indep:((?:.|\n )*)", tree["debian/control"], re.MULTILINE)[1]
    names = {entry.split()[0] for entry in listed.split(",") if entry.strip()}
    return {name.replace("debhelper-compat", "debhelper") for name in names}


def check(tree):
    problems = []
    if version(tree) != changelog_version(tree):
        problems.append(f"debian/changelog:1: is about {changelog_version(tree)}, and CMakeLists.txt about {version(tree)}")
    listed = set(rows(tree))
    problems += [f"{SYMBOLS}: lacks {name}" for name in sorted(exported(tree) - listed)]
    problems += [f"{SYMBOLS}: has {name}, which is not exported" for name in sorted(listed - exported(tree))]
    installed = set(re.findall(r"[\w.+-]+", tree["scripts/install-deps"]))
    problems += [f"scripts/install-deps: lacks {name}, which debian/control wants" for name in sorted(build_packages(tree) - installed)]
    return problems


def updated(tree):
    """The list of the package with the names that are exported now; those that it had keep their versions."""
    since = rows(tree)
    kept = [line for line in tree[SYMBOLS].splitlines() if not ROW.match(line)]
    ours = [f' (c++)"{name}@Base" {since.get(name, version(tree))}' for name in sorted(exported(tree))]
    return "".join(line + "\n" for line in kept + ours)


def main():
    options = argparse.ArgumentParser()
    options.add_argument("--update", action="store_true", help="write the list of names anew")
    lists = [name for name in lint_files.paths() if LIST.fullmatch(name)]
    tree = lint_files.read(["CMakeLists.txt", "debian/changelog", "debian/control", SYMBOLS, "scripts/install-deps", *lists])
    if options.parse_args().update:
        (lint_files.ROOT / SYMBOLS).write_text(updated(tree), encoding="utf-8")
        return
    problems = check(tree)
    if problems:
        problems.append("Names of the library are brought over by cmake/check_debian.py --update.")
    lint_files.finish(problems, len(tree))


if __name__ == "__main__":
    sys.exit(main())

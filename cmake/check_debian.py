#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""What the Debian packages repeat from elsewhere is the same there: the version, the exported names of the libraries,
and the packages that a build needs.

    check_debian.py            compares
    check_debian.py --update   writes the names of abi/ into the lists of debian/, with the versions that brought them
"""

import argparse
import re
import sys

import lint_files

LISTS = ("debian/libwmsg1.symbols", "debian/libwmsg-platform1.symbols")
ABI = re.compile(r"abi/(?P<version>\d+\.\d+)/(?P<library>[\w-]+)\.symbols")
LIBRARY = re.compile(r"^(?=\S+ \S+ #MINVER#$)", re.MULTILINE)
# A row for a name of ours; variables and functions of C have no more than a name. Others are patterns for what
# compilers add.
ROW = re.compile(r'^ (?:\(c\+\+\)"(?P<name>.+)@Base"|(?P<plain>\w+)@Base) (?P<version>\S+)$')


def version(tree):
    return re.search(r"^project\(wmsg VERSION (\S+)", tree["CMakeLists.txt"], re.MULTILINE)[1]


def changelog_version(tree):
    return re.match(r"wmsg \(([^()]+)-[^-()]+\) ", tree["debian/changelog"])[1]


def exported(tree, library):
    """The names of a library -> the version that brought them."""
    found = {}
    for match in filter(None, map(ABI.fullmatch, sorted(tree))):
        if match["library"] == library:
            found.update((name, match["version"] + ".0") for name in tree[match[0]].splitlines())
    return found


def sections(text):
    """The lines of each library of a list."""
    for section in LIBRARY.split(text)[1:]:
        yield section.partition(".so")[0], section.splitlines()


def rows(lines):
    """The names of ours -> since when they are there."""
    return {row["name"] or row["plain"]: row["version"] for row in map(ROW.match, lines) if row}


def row(name, since):
    return f" {name}@Base {since}" if re.fullmatch(r"\w+", name) else f' (c++)"{name}@Base" {since}'


def differences(tree, path):
    for library, lines in sections(tree[path]):
        listed, wanted = rows(lines), exported(tree, library)
        yield from (f"{path}: lacks {name} of {library}" for name in sorted(wanted.keys() - listed.keys()))
        yield from (f"{path}: has {name}, which {library} does not promise" for name in sorted(listed.keys() - wanted.keys()))
        yield from (f"{path}: has {name} since {listed[name]}, not {wanted[name]}"
                    for name in sorted(wanted.keys() & listed.keys()) if wanted[name] != listed[name])


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
    for path in LISTS:
        problems += differences(tree, path)
    promised = {match["library"] for match in map(ABI.fullmatch, tree) if match}
    listed = {library for path in LISTS for library, _ in sections(tree[path])}
    problems += [f"{LISTS[-1]}: lacks {library}" for library in sorted(promised - listed)]
    installed = set(re.findall(r"[\w.+-]+", tree["scripts/install-deps"]))
    problems += [f"scripts/install-deps: lacks {name}, which debian/control wants" for name in sorted(build_packages(tree) - installed)]
    return problems


def updated(tree, path):
    """A list with the names as they are now; its patterns stay."""
    text = ""
    for library, lines in sections(tree[path]):
        kept = [line for line in lines if not ROW.match(line)]
        text += "".join(line + "\n" for line in kept + [row(*entry) for entry in sorted(exported(tree, library).items())])
    return text


def main():
    options = argparse.ArgumentParser()
    options.add_argument("--update", action="store_true", help="write the names anew")
    lists = [name for name in lint_files.paths() if ABI.fullmatch(name)]
    tree = lint_files.read(["CMakeLists.txt", "debian/changelog", "debian/control", "scripts/install-deps", *LISTS, *lists])
    if options.parse_args().update:
        for path in LISTS:
            (lint_files.ROOT / path).write_text(updated(tree, path), encoding="utf-8")
        return
    problems = check(tree)
    if problems:
        problems.append("Names of the libraries are brought over by cmake/check_debian.py --update.")
    lint_files.finish(problems, len(tree))


if __name__ == "__main__":
    sys.exit(main())

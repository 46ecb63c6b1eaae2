#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""What was built keeps what the last release promised: exported names, public layouts, and what it asks of the
platform libraries. What is new is told, and is no problem.

    check_abi.py [--probe PROBE] [--update] LIBRARY...

PROBE is the object of the source that abi_probe.py writes. Without it (the lists of layouts are those of g++ on
64 bits) names alone are compared, and the exit status is 77. Where abidiff is installed it has a second look.
With --update the lists of the current version are written anew, if it ends with .0; see docs/versioning.md.
"""

import argparse
import contextlib
import lzma
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile

import abi_probe
import check_symbols
import dwarf
import release_lists

SKIPPED = 77
LAYOUTS = "layouts.txt"
NEEDED = "needed.txt"
DEEP = "public-headers.abi.xz"

# What abidiff says with its exit status.
FAILED, CHANGED = 1 | 2, 4 | 8


def layouts(probe, declared):
    """The lines about what the public headers declare."""
    names = {name.split("::")[0] for name in (*declared.types, *declared.templates, *declared.functions)}
    unit, = dwarf.units_of(probe)
    lines = dwarf.lines(unit, lambda name: name.split("<")[0] in names)
    constants, = (entry for entry in unit.children if entry.name == "AbiProbeConstants")
    return lines + [f"constant {entry.name.removeprefix('abiProbe_')} = {entry.number('const_value')}"
                    for entry in constants.children]


def needed(libraries):
    """What the library takes from each platform library: no more may be asked of those that phones have."""
    sdk = next(path for path in libraries if check_symbols.name_of(path) == "libwmsg")
    wanted = set(check_symbols.undefined(sdk))
    return [f"{check_symbols.name_of(path)}: {name}" for path in libraries if path != sdk
            for name in check_symbols.exported(path) if name in wanted and not check_symbols.TABLE.match(name)]


def place(line):
    """What a line is about: a member by its offset, a function or a value by its name."""
    subject, _, rest = line.partition(": ")
    found = re.match(r"at [\w, ]+|virtual \d+|\d+ bytes", rest) or re.search(r"[~\w]+(?=\(| = )", line)
    return subject.split(" = ")[0], re.sub(r"^\d+ ", "", found[0]) if found else ""


def compare(promised, present):
    """What of `promised` (a line -> its version) is lost, and what is new: two lists to print."""
    fresh = [line for line in present if line not in promised]
    problems, replaced = [], set()
    for line in promised:
        if line not in present:
            now = [other for other in fresh if place(other) == place(line)]
            problems.append(f"promised by {promised[line]}: {line}")
            problems += [f"        there is now: {other}" for other in now]
            replaced.update(now)
    return problems, [f"new: {line}" for line in fresh if line not in replaced]


def compare_demands(listed, present):
    """What is asked of platform libraries that no list tells; to ask less is no problem."""
    return [f"asked of platform libraries, and not in the list: {line}" for line in present if line not in listed]


@contextlib.contextmanager
def folder_of(headers):
    """A folder with the headers (name -> text) alone: what abigail is told to look at, beside what it works with."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "public").mkdir()
        for header, text in headers.items():
            (folder / "public" / pathlib.Path(header).name).write_text(text, encoding="utf-8")
        yield folder


def deep_list(probe, headers):
    """What abidw says about the probe, packed."""
    with folder_of(headers) as folder:
        subprocess.run(["abidw", "--headers-dir", folder / "public", "--exported-interfaces-only", "--short-locs",
                        "--no-corpus-path", "--no-comp-dir-path", "--no-elf-needed", "--out-file", folder / "abi", probe],
                       check=True)
        return lzma.compress((folder / "abi").read_bytes(), preset=9 | lzma.PRESET_EXTREME)


def deep_problems(packed, probe, headers):
    """What abidiff finds between a list and the probe."""
    with folder_of(headers) as folder:
        (folder / "abi").write_bytes(lzma.decompress(packed))
        outcome = subprocess.run(["abidiff", "--headers-dir1", folder / "public", "--headers-dir2", folder / "public",
                                  "--exported-interfaces-only", "--leaf-changes-only", "--no-added-syms", "--ignore-soname",
                                  "--no-corpus-path", folder / "abi", probe], capture_output=True, text=True)
    if outcome.returncode & FAILED or outcome.returncode < 0:
        return ["abidiff failed:", *outcome.stdout.splitlines(), *outcome.stderr.splitlines()]
    return ["abidiff finds:", *outcome.stdout.splitlines()] if outcome.returncode & CHANGED else []


def look_deeper(lists, probe, headers):
    """Prints and returns the problems that abidiff finds, or says why it was not asked."""
    path = lists.folder / lists.versions()[-1] / DEEP
    if not shutil.which("abidiff"):
        print("abidiff is not installed: the lists alone were compared")
        return []
    packed = path.read_bytes()
    if f"{platform.machine()}'" not in lzma.decompress(packed)[:500].decode():
        print("abidiff was not asked: its list is of another machine")
        return []
    return deep_problems(packed, probe, headers)


def present_lists(arguments):
    """The names of the lists -> what they would hold now."""
    found = {check_symbols.list_of(path): check_symbols.exported(path) for path in arguments.libraries}
    found[NEEDED] = needed(arguments.libraries)
    if arguments.probe:
        found[LAYOUTS] = layouts(arguments.probe, abi_probe.declarations(abi_probe.public_headers()))
    return found


def update(arguments, lists):
    if not arguments.probe or not shutil.which("abidw"):
        raise SystemExit("The lists are made with g++ on 64 bits, and with abidw of the package abigail-tools.")
    for name, lines in present_lists(arguments).items():
        if name != NEEDED or not lists.minor:
            lists.write(name, lines)
    path = lists.folder / lists.current / DEEP
    path.write_bytes(deep_list(arguments.probe, abi_probe.public_headers()))


def check(arguments, lists):
    problems, lines = [], 0
    for name, present in present_lists(arguments).items():
        promised = lists.read(name)
        lost, fresh = (compare_demands(promised, present), []) if name == NEEDED else compare(promised, present)
        problems += lost
        lines += len(promised)
        print("".join(line + "\n" for line in fresh), end="")
        if not present:
            problems.append(f"{name}: nothing was compared")
    if arguments.probe:
        problems += look_deeper(lists, arguments.probe, abi_probe.public_headers())
    print("\n".join([*problems, f"{len(problems)} problem(s) in {lines} line(s) of {', '.join(lists.versions())}"]))
    return problems


def main():
    options = argparse.ArgumentParser()
    options.add_argument("libraries", nargs="+", type=pathlib.Path)
    options.add_argument("--probe", type=pathlib.Path, help="the object of the source that abi_probe.py writes")
    options.add_argument("--update", action="store_true", help="write the lists of the current version anew")
    arguments = options.parse_args()
    lists = release_lists.of_project()
    if arguments.update:
        update(arguments, lists)
    elif not lists.versions():
        sys.exit(f"There is no list of version {lists.major}; the target abi_lists makes it.")
    elif check(arguments, lists):
        print("Programs or platform libraries that were built for that release break. Take it back; docs/versioning.md\n"
              "tells how to do without, and what else there is to do.")
        sys.exit(1)
    elif not arguments.probe:
        print("Layouts were not compared: their lists are those of g++ on 64 bits.")
        sys.exit(SKIPPED)


if __name__ == "__main__":
    main()

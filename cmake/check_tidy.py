#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The analyser finds nothing in the sources of the library, the platform and the tools.

    check_tidy.py BUILD-FOLDER [PATH...]

A source that was found clean is not read again until it, a header of ours that it includes, its options or
.clang-tidy changes; the notes on that lie in BUILD-FOLDER/tidy.

Each source is read by itself for the checks that look beyond a function. For the others many sources are read
as one; when there is anything to say about these, each is read by itself for all checks.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

import lint_files
import tidy_batches

INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*["<]([^">\n]+)[">]', re.MULTILINE)
ROOMS = ("core/", "drm/", "mms/", "platform/", "qt2/", "services/", "sim/", "sms/", "tools/",
         "util/")

# What the compiler understands and the analyser does not, or must not see.
FOREIGN = re.compile(r"-fsanitize\S*|-fno-sanitize\S*|-Winvalid-pch|-fno-ipa-sra|-include \S*cmake_pch\S*|-Werror\b")
CONFIG = lint_files.ROOT / ".clang-tidy"
OUTPUT = re.compile(r" -o \S+ -c \S+$")

# The checks that say the same of a function wherever it stands. Others see the bodies and the classes of
# the sources beside it too, and would take that into account.
LOCAL = re.compile(
    r"(?!bugprone-(?:exception-escape|forward-declaration-namespace|signal-handler)$)(?:bugprone|performance)-"
    r"|(?:google-explicit-constructor|modernize-use-override|readability-(?:braces-.*|function-size))$")


def analyser():
    program = shutil.which("clang-tidy-14") or shutil.which("clang-tidy")
    if not program:
        sys.exit("clang-tidy is missing; scripts/install-deps installs it")
    return program


def commands(build):
    """Source path from the root -> its compile command, for the sources that are checked."""
    rows = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        path = os.path.relpath(os.path.join(entry["directory"], entry["file"]), lint_files.ROOT)
        if path.startswith(ROOMS):
            rows.setdefault(path, {**entry, "command": FOREIGN.sub("", entry["command"])})
    return rows


def reach(path, root=lint_files.ROOT):
    """The file and every file of ours that it includes, also through others."""
    seen, waiting = set(), [path]
    while waiting:
        name = waiting.pop()
        if name in seen or not (root / name).is_file():
            continue
        seen.add(name)
        found = INCLUDE.findall((root / name).read_bytes())
        folder = os.path.dirname(name)
        for target in (include.decode() for include in found):
            waiting += [target, os.path.join(folder, target)]
    return sorted(seen)


def fingerprint(path, command, version, root=lint_files.ROOT):
    """Changes with all that the analyser's answer depends on."""
    digest = hashlib.sha256(f"{version}\0{command}\0".encode())
    for name in [".clang-tidy", *reach(path, root)]:
        digest.update(name.encode() + b"\0" + (root / name).read_bytes() + b"\0")
    return digest.hexdigest()


def split_checks(program):
    """The checks that are asked of many sources as one, and those that are asked of each; as options."""
    listing = subprocess.run([program, "--list-checks", f"--config-file={CONFIG}"],
                             capture_output=True, text=True, check=True).stdout
    names = listing.split("Enabled checks:")[1].split()
    local = {name for name in names if LOCAL.match(name)}
    return ["--checks=" + ",".join(["-*", *part]) for part in (sorted(local), sorted({*names} - local))]


def analyse(program, path, folder, checks=None):
    """The analyser's words on a source; none when it is clean."""
    options = ["--quiet", "-p", str(folder), f"--config-file={CONFIG}", *([checks] if checks else [])]
    result = subprocess.run([program, *options, str(lint_files.ROOT / path)], capture_output=True, text=True)
    if result.returncode == 0:
        return ""
    return (result.stdout + result.stderr).strip() or f"{path}: the analyser failed"


def write_batches(rows, folder, root=lint_files.ROOT):
    """Writes the sources that include many, and all compile commands; returns batch -> paths from the root."""
    alike, found, entries = {}, {}, list(rows.values())
    for path, row in rows.items():
        alike.setdefault(OUTPUT.sub("", row["command"]), {})[path] = (root / path).read_text()
    for command, sources in alike.items():
        for paths in tidy_batches.batches(sources):
            batch = folder / f"batch_{len(found)}.cpp"
            batch.write_text(tidy_batches.joined(paths, sources, root))
            found[batch] = paths
            entries.append({**rows[paths[0]], "file": str(batch), "command": f"{command} -o x.o -c {batch}"})
    (folder / "compile_commands.json").write_text(json.dumps(entries))
    return found


def analyse_all(program, rows, folder, root=lint_files.ROOT):
    """Yields the analyser's words on each of the sources, in their order."""
    together, alone = split_checks(program)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        found = write_batches(rows, folder, root)
        words = workers.map(lambda batch: analyse(program, batch, folder, together), found)
        clean = {path for paths, said in zip(found.values(), words) if not said for path in paths}
        print(f"{len(clean)} of them clean in {len(found)} batch(es), for most checks", flush=True)
        yield from workers.map(
            lambda path: analyse(program, root / path, folder, alone if path in clean else None), rows)


def check(build, wanted):
    os.nice(10)  # the tests beside it wait for programs, and this one waits for nothing
    program = analyser()
    version = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout
    rows = {path: row for path, row in commands(build).items() if not wanted or path in wanted}
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    notes = {path: folder / fingerprint(path, row["command"], version) for path, row in rows.items()}
    pending = {path: row for path, row in rows.items() if not notes[path].exists()}
    print(f"{len(rows)} source(s), {len(pending)} of them new or changed", flush=True)
    problems = []
    for path, words in zip(pending, analyse_all(program, pending, folder)):
        if words:
            problems.append(words)
        else:
            notes[path].touch()
    return problems, len(rows)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    lint_files.finish(*check(pathlib.Path(sys.argv[1]).resolve(), set(sys.argv[2:])))

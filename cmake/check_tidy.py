#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The analyser finds nothing in the sources of the library, the platform and the tools.

    check_tidy.py BUILD-FOLDER [PATH...]

A source that was found clean is not read again until it, a header of ours that it includes, its options or
.clang-tidy changes; the notes on that lie in BUILD-FOLDER/tidy.
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

INCLUDE = re.compile(rb'^[ \t]*#[ \t]*include[ \t]*["<]([^">\n]+)[">]', re.MULTILINE)
ROOMS = ("core/", "drm/", "mms/", "platform/", "qt2/", "services/", "sim/", "sms/", "tools/",
         "util/")

# What the compiler understands and the analyser does not, or must not see.
FOREIGN = re.compile(r"-fsanitize\S*|-fno-sanitize\S*|-Winvalid-pch|-include \S*cmake_pch\S*|-Werror\b")


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


def analyse(program, path, folder):
    """The analyser's words on a source; none when it is clean."""
    result = subprocess.run([program, "--quiet", "-p", str(folder), str(lint_files.ROOT / path)],
                            capture_output=True, text=True)
    if result.returncode == 0:
        return ""
    return (result.stdout + result.stderr).strip() or f"{path}: the analyser failed"


def check(build, wanted):
    program = analyser()
    version = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout
    rows = {path: row for path, row in commands(build).items() if not wanted or path in wanted}
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    (folder / "compile_commands.json").write_text(json.dumps(list(rows.values())))
    notes = {path: folder / fingerprint(path, row["command"], version) for path, row in rows.items()}
    pending = [path for path in rows if not notes[path].exists()]
    print(f"{len(rows)} source(s), {len(pending)} of them new or changed")
    problems = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for path, words in zip(pending, workers.map(lambda one: analyse(program, one, folder), pending)):
            if words:
                problems.append(words)
            else:
                notes[path].touch()
    return problems, len(rows)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    lint_files.finish(*check(pathlib.Path(sys.argv[1]).resolve(), set(sys.argv[2:])))

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Holds the manual pages against the programs: a page for each program and each subcommand, with every word of
its --help, and nothing that the typesetter complains of.

    man_pages.py FOLDER PROGRAM...
"""

import pathlib
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "cmake"))
import make_man_pages

# Words that a page has in another form: the name of its own list, and the heading of the exit codes.
ELSEWHERE = {"Usage:", "Options:", "Exit", "codes:"}


def typeset(page):
    done = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-P-cbou", "-rLL=1000n", str(page)],
                          capture_output=True, text=True, check=True, env={"LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin"})
    return done.stdout, done.stderr.strip()


def plain(text):
    """Words without the dashes and quotes that a typesetter changes."""
    return re.sub(r"[‐−–-]+", "-", text).replace("‘", "`").replace("’", "'").replace("“", '"').replace("”", '"')


def problems_of(page, help_text, known):
    text, complaint = typeset(page)
    problems = [complaint] if complaint else []
    words = set(plain(re.sub(r"(-\w), (?=--)", r"\1,", text)).split())
    problems += [f"lacks {word!r}" for line in help_text.splitlines() for word in plain(line).split()
                 if word not in words and word not in ELSEWHERE]
    home = f"{pathlib.Path.home()}/"
    problems += [f"names the folder {home} of who made it"] if home != "//" and home in text else []
    pointers = re.findall(r"^\.BR (\S+) \(1\)", page.read_text(encoding="utf-8"), re.MULTILINE)
    problems += [f"points to {pointer}" for pointer in pointers if pointer.replace("\\-", "-") not in known]
    return [f"{page.name}: {problem}" for problem in problems]


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1])
    wanted = {make_man_pages.name_of(words): text
              for program in sys.argv[2:] for words, text in make_man_pages.pages(program)}
    present = {page.stem for page in folder.glob("*.1")}
    problems = [f"there is no page {name}" for name in sorted(wanted.keys() - present)]
    problems += [f"{name} is a page of nothing" for name in sorted(present - wanted.keys())]
    for name in sorted(present & wanted.keys()):
        problems += problems_of(folder / f"{name}.1", wanted[name], present)
    if problems:
        sys.exit("\n".join(problems))
    print(f"{len(present)} manual pages")


if __name__ == "__main__":
    main()

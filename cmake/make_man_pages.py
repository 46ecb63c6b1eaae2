#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Writes the manual pages of programs from their own --help, one for each program and one for each of its
subcommands, so that a page says what the program says.

    make_man_pages.py HELP2MAN FOLDER PROGRAM...

Every page points to the others.
"""

import os
import pathlib
import re
import subprocess
import sys

SUBCOMMAND = re.compile(r"^  ([a-z][a-z-]*)(?=\s|$)")
# CLI11 writes "-h,--help"; help2man takes the short name alone for one.
BOTH_NAMES = re.compile(r"\\fB\\-(\w)\\fR,\\-\\-([\w\\-]+)")

TITLE = re.compile(r"^\.TH \S+", re.MULTILINE)
EXIT_CODES = re.compile(r"^(?:\.PP\n)?Exit codes: ", re.MULTILINE)
NAME = re.compile(r"^(\.SH NAME\n).*( \\- )", re.MULTILINE)


# What programs say of the reader's folders and sockets must not be those of the builder.
READER = {**{name: value for name, value in os.environ.items() if name not in ("XDG_STATE_HOME", "WMSG_TELEPHONY_SOCKET")},
          "HOME": "~", "LC_ALL": "C.UTF-8"}


def help_of(words):
    return subprocess.run([*words, "--help"], check=True, capture_output=True, text=True, env=READER).stdout


def subcommands(text):
    """The names below the line "Subcommands:"."""
    names = []
    lines = iter(text.splitlines())
    for line in lines:
        if line == "Subcommands:":
            break
    for line in lines:
        if not line.strip():
            break
        found = SUBCOMMAND.match(line)
        if found:
            names.append(found[1])
    return names


def about(text):
    """The first line of a help text, as the line of a list: no capital, no full stop."""
    first = text.strip().splitlines()[0].rstrip(".")
    return first if first[:2].isupper() else first[0].lower() + first[1:]


def pages(program):
    """The words of the program and of every subcommand below it, with their help texts."""
    waiting = [[program]]
    while waiting:
        words = waiting.pop(0)
        text = help_of(words)
        waiting += [words + [name] for name in subcommands(text)]
        yield words, text


def name_of(words):
    return "-".join([pathlib.Path(words[0]).name, *words[1:]])


def escaped(name):
    return name.replace("-", r"\-")


def write(help2man, folder, words, text, others):
    page = name_of(words)
    command = [help2man, "--no-info", "--section=1", f"--name={about(text)}",
               "--help-option=" + " ".join([*words[1:], "--help"])]
    roff = subprocess.run([*command, words[0]], check=True, capture_output=True, text=True, env=READER).stdout
    roff = BOTH_NAMES.sub(r"\\fB\\-\1\\fR, \\fB\\-\\-\2\\fR", roff)
    roff = TITLE.sub(lambda head: f'.TH "{escaped(page.upper())}"', roff, count=1)
    roff = NAME.sub(lambda head: head[1] + escaped(page) + head[2], roff, count=1)
    roff = EXIT_CODES.sub('.SH "EXIT STATUS"\n', roff, count=1)
    see = ",\n".join(f".BR {escaped(other)} (1)" for other in others if other != page)
    (folder / f"{page}.1").write_text(f'{roff}.SH "SEE ALSO"\n{see}\n', encoding="utf-8")


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    help2man, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.1"):
        old.unlink()
    wanted = [(words, text) for program in sys.argv[3:] for words, text in pages(program)]
    programs = [pathlib.Path(program).name for program in sys.argv[3:]]
    for words, text in wanted:
        below = [name_of(other) for other, _ in wanted if other[:-1] == words]
        above = [name_of(words[:-1])] if len(words) > 1 else programs
        write(help2man, folder, words, text, sorted({*below, *above}))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""A deliberate oddity is explained by one "Kept:" comment and pinned by a test of the same words: the words up
to its first comma or full stop stand in a file under tests/."""

import re

import lint_files

COMMENT = re.compile(r"(?:///?<?|\*|/\*)\s*Kept:(?P<text>.*(?:\n\s*(?://|\*(?!/)).*)*)")
MARKS = re.compile(r"^\s*(?://+<?|/?\*+/?)|\*/\s*$", re.MULTILINE)


def fold(text):
    """The bare words of a text: no comment marks, no line ends, no capitals."""
    return " ".join(MARKS.sub(" ", text).lower().split())


def phrases(text):
    """Offset and words of each "Kept:" comment of a source."""
    for found in COMMENT.finditer(text):
        yield found.start(), re.split(r"[,.](?:\s|$)|$", fold(found["text"]))[0]


def check(tree):
    tests = [fold(text) for path, text in tree.items() if path.startswith("tests/")]
    problems = []
    for path, text in tree.items():
        if path.startswith("tests/"):
            continue
        for offset, phrase in phrases(text):
            line = lint_files.line_of(text, offset)
            if not phrase:
                problems.append(f'{path}:{line}: "Kept:" says nothing')
            elif not any(phrase in test for test in tests):
                problems.append(f'{path}:{line}: no test under tests/ has the words "{phrase}"')
    return problems


if __name__ == "__main__":
    tree = lint_files.read(lint_files.sources(lint_files.paths()))
    lint_files.finish(check(tree), len(tree))

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Refuses words that do not belong in the project: pointers to things that a reader does not have, marks of
unfinished work, and code that was commented out."""

import re

import lint_files

# What is refused -> why. Applied to every line of every text, this file and its test apart.
WORDS = {
    r"\bspec(?:s|ification|ifications)?\b": "points to a document; state the fact itself",
    r"\b(?:sections?|chapters?|clauses?|(?-i:Parts?)|annex) \d+\.\d": "points to a numbered place; state the fact itself",
    r"\bRFC[ -]?\d{3,}|\bWAP-\d{3}|\bOMA-[A-Z]{2,}": "points to a document; state the fact itself",
    r"(?<![\w.<$}])/(?:(?:home|root|mnt|Users)/[\w.]{2,}/|work/)\w": "is a path of one machine",
    r"(?-i:\b(?:TO[D]O|FIX[M]E|HAC[K])\b|(?<=[/#*] )XX[X]\b)(?!\(#\d+\))": "is unfinished; finish it, or name an issue behind it: (#12)",
    r"\bnot (?:yet )?implemented\b|\bunimplemented\b": "is unfinished",
}
COMMENTED_OUT = re.compile(r"^\s*//(?!/)\s*(?:[\w:.>\-]+\(.*\)\s*;|return\b.*;|[\w:<>*& .\-\[\]]+ = .*;|[{}])\s*$")
EXEMPT = ("cmake/check_words.py", "cmake/lint_test.py", "LICENSE")

PATTERN = re.compile("|".join(f"(?P<w{n}>{word})" for n, word in enumerate(WORDS)), re.IGNORECASE)
REASONS = list(WORDS.values())


def check(tree):
    problems = []
    for path, text in tree.items():
        for number, line in enumerate(text.splitlines(), 1):
            for found in PATTERN.finditer(line):
                problems.append(f'{path}:{number}: "{found[0]}" {REASONS[int(found.lastgroup[1:])]}')
            if path.endswith((".h", ".cpp")) and COMMENTED_OUT.match(line):
                problems.append(f"{path}:{number}: code is commented out; remove it")
    return problems


if __name__ == "__main__":
    tree = lint_files.read(name for name in lint_files.paths() if name not in EXEMPT)
    lint_files.finish(check(tree), len(tree))

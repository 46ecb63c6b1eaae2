#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Links lead somewhere: those of a page to a file or folder of the project, and to a heading of it, and the pages
that code names are there."""

import posixpath
import re

import lint_files

LINK = re.compile(r"\]\(([^)\s]+)\)")
FOREIGN = re.compile(r"[a-z]+:")
FENCED = re.compile(r"^```.*?^```$", re.MULTILINE | re.DOTALL)
HEADING = re.compile(r"^#+ +(.*)$", re.MULTILINE)
NAMED = re.compile(r"(?<![\w/.-])docs/[\w/-]+\.md\b")
SAMPLES = "cmake/lint_test.py"


def blank(found):
    """Newlines for what is no text of a page, so that lines keep their numbers."""
    return "\n" * found[0].count("\n")


def anchors(text):
    """What the headings of a page are called in links."""
    titles = (re.sub(r"[^\w\- ]", "", title.strip().lower()) for title in HEADING.findall(FENCED.sub(blank, text)))
    return {title.replace(" ", "-") for title in titles}


def problem_of(path, link, tree, folders):
    """What is wrong with one link of a page, or None."""
    target, _, anchor = link.partition("#")
    target = posixpath.normpath(posixpath.join(posixpath.dirname(path), target)) if target else path
    if target not in tree and target not in folders:
        return "leads nowhere"
    if anchor and (not target.endswith(".md") or anchor not in anchors(tree[target])):
        return "leads to no heading of that page"
    return None


def check(tree):
    folders = {"/".join(path.split("/")[:depth]) for path in tree for depth in range(1, path.count("/") + 1)}
    problems = []
    for path, text in tree.items():
        if path.endswith(".md"):
            page = FENCED.sub(blank, text)
            found = ((link, problem_of(path, link[1], tree, folders))
                     for link in LINK.finditer(page) if not FOREIGN.match(link[1]))
            problems += [f"{path}:{lint_files.line_of(page, link.start())}: {link[1]} {problem}"
                         for link, problem in found if problem]
        elif path != SAMPLES and not path.startswith(lint_files.DATA):
            problems += [f"{path}:{lint_files.line_of(text, name.start())}: there is no {name[0]}"
                         for name in NAMED.finditer(text) if name[0] not in tree]
    return problems


if __name__ == "__main__":
    names = lint_files.paths()
    # What is no text can be linked to all the same.
    tree = {**dict.fromkeys(names, ""), **lint_files.read(names)}
    lint_files.finish(check(tree), sum(name.endswith(".md") for name in names))

# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Which sources can be read as one, and the source that does it.

Most of what the analyser does to a source it does to the headers of Qt, each time anew. Sources that are
compiled alike share that where none can tell that the others are there: no name that one keeps to itself is
a word of another, and all bring in the same names of other namespaces. Macros would be seen by all, so a
source that defines one is read alone.
"""

import re

LARGEST = 16

INCLUDE = re.compile(r"^#include [<\"][^>\"\n]+[>\"]", re.MULTILINE)
MACRO = re.compile(r"^[ \t]*#[ \t]*(?:define|undef|pragma)\b", re.MULTILINE)
USING = re.compile(r"^using (?!namespace [\w:]*[lL]iterals;)[\w: ]+;", re.MULTILINE)

# What says nothing about names: comments, and the text of literals.
SILENT = re.compile(r"""//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|'\\?.'""", re.DOTALL)
WORD = re.compile(r"(?<![.\w])(?<!->)[A-Za-z_]\w*")

# The names that a line at the first column may declare; one too many only keeps a source alone.
TYPE = re.compile(r"\b(?:struct|(?:enum +)?class|enum|union|using|namespace) +(\w+)")
OTHER = re.compile(r"(?<!:)\b(?!Q_|sizeof\b)([A-Za-z_]\w*) *(?:[({\[;]|=?$)|\bQ_LOGGING_CATEGORY\((\w+)")


def private_names(text):
    """The names that a source declares for itself: in its unnamed namespaces, or as static."""
    names, inside = set(), False
    for line in text.splitlines():
        if line == "namespace {":
            inside = True
        elif line == "} // namespace":
            inside = False
        elif (inside or line.startswith("static ")) and re.match("[A-Za-z]", line):
            names.update(TYPE.findall(line), *OTHER.findall(line.partition(" = ")[0]))
    return names - {""}


class Batch:
    """Sources that do not notice one another, by name."""

    def __init__(self):
        self.paths, self.private, self.words, self.using = [], set(), set(), None

    def take(self, path, text):
        """Adds the source, or returns False and stays as it is."""
        private, using = private_names(text), set(USING.findall(text))
        words = set(WORD.findall(SILENT.sub('""', text)))
        if self.paths and (len(self.paths) == LARGEST or using != self.using
                           or private & self.words or words & self.private):
            return False
        self.paths.append(path)
        self.private |= private
        self.words |= words
        self.using = using
        return True


def batches(sources):
    """Lists of paths that are read together, at least two each, from a dict of path -> text."""
    found = []
    for path, text in sources.items():
        if MACRO.search(SILENT.sub('""', text)):
            continue
        if not any(batch.take(path, text) for batch in found):
            found.append(Batch())
            found[-1].take(path, text)
    return [batch.paths for batch in found if len(batch.paths) > 1]


def joined(paths, sources, root):
    """The text of the one source: all their headers, so that these see no private name, then the sources."""
    headers = dict.fromkeys(line for path in paths for line in INCLUDE.findall(sources[path]))
    bodies = (f'#include "{root / path}"  // NOLINT(bugprone-suspicious-include)' for path in paths)
    return "\n".join([*headers, *bodies, ""])

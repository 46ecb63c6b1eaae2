# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""The lists of abi/: what a version offers that those after it keep, as long as the first number stays. A folder per
version of two numbers holds what came with it, so that a line is there once. See docs/versioning.md."""

import re

import lint_files


class Lists:
    """The lists below `folder`, for a version of three numbers."""

    def __init__(self, folder, version):
        self.folder = folder
        self.major, self.minor, self.patch = map(int, version.split("."))

    @property
    def current(self):
        return f"{self.major}.{self.minor}"

    def versions(self):
        """The versions of this major number that have lists, up to the current one, ascending."""
        found = (re.fullmatch(rf"{self.major}\.(\d+)", path.name) for path in self.folder.glob("*"))
        return [f"{self.major}.{minor}" for minor in sorted(int(name[1]) for name in found if name) if minor <= self.minor]

    def read(self, name):
        """The lines of a list -> the version that brought them."""
        found = {}
        for version in self.versions():
            path = self.folder / version / name
            if path.exists():
                found.update((line, version) for line in path.read_text(encoding="utf-8").splitlines())
        return found

    def write(self, name, lines):
        """Lists what is new in the current version. What former ones brought stays where it is."""
        self.refuse_patch()
        older = {line for line, version in self.read(name).items() if version != self.current}
        if gone := sorted(older.difference(lines)):
            raise SystemExit("\n".join(["It was promised by a former version, and is gone:", *gone]))
        path = self.folder / self.current / name
        path.parent.mkdir(parents=True, exist_ok=True)
        fresh = [line for line in lines if line not in older]
        if fresh or path.exists():
            path.write_text("".join(line + "\n" for line in fresh), encoding="utf-8")

    def refuse_patch(self):
        if self.patch:
            raise SystemExit(f"{self.current}.{self.patch} is a patch of {self.current}: it offers what that offers. "
                             "A list is made for a version that ends with .0.")


def of_project():
    text = (lint_files.ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return Lists(lint_files.ROOT / "abi", re.search(r"^project\(wmsg VERSION (\S+)", text, re.MULTILINE)[1])

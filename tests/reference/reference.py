#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Makes the reference, which fails on a warning, and looks whether each public class is in it, described and with
an example.

    reference.py BUILD-FOLDER
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# A name for what Qt has under another one, and a namespace, have pages of another kind.
NO_CLASS = {"QCString", "QValueList", "WMFM"}


def public_classes():
    text = (ROOT / "cmake" / "WmsgForwarding.cmake").read_text(encoding="utf-8")
    return re.findall(r"^    [\w/]+\.h\s+(\w+)$", text, re.MULTILINE)


def page_of(folder, name):
    for kind in ("class", "struct"):
        page = folder / f"{kind}{name.replace('_', '__')}.html"
        if page.exists():
            return page.read_text(encoding="utf-8")
    return None


def problem_of(folder, name):
    page = page_of(folder, name)
    if page is None:
        return f"{name} has no page"
    if 'id="details"' not in page:
        return f"{name} is not described"
    if '<div class="fragment">' not in page:
        return f"{name} has no example"
    return None


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    build = pathlib.Path(sys.argv[1])
    made = subprocess.run(["cmake", "--build", build, "--target", "reference"], capture_output=True, text=True)
    if made.returncode:
        sys.exit(made.stdout + made.stderr)
    names = [name for name in public_classes() if name not in NO_CLASS]
    problems = [problem for problem in (problem_of(build / "reference" / "html", name) for name in names) if problem]
    if problems:
        sys.exit("\n".join(problems))
    print(f"{len(names)} public classes")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Holds the table of the rooms: who may include whom. Includes are written from the root."""

import posixpath
import re

import lint_files

# Room -> what its files may include beside themselves and outside libraries: rooms, or single headers.
BELOW_MODEL = ["mms/codec", "util", "core", "platform", "qt2"]
ROOMS = {
    "qt2": [],
    "platform": ["qt2"],
    "core": ["platform", "qt2"],
    "mms/codec": ["core", "platform", "qt2"],
    "util": ["core", "platform", "qt2", "mms/codec/wmmscontenttype.h"],
    "mms/model": BELOW_MODEL,
    "mms/session": ["mms/model", "util", "core", "platform", "qt2"],
    "sms": ["core", "util", "platform", "qt2", "mms/model/mms_util_tool.h"],
    "drm": ["mms/model", "util", "core", "platform", "qt2", "mms/codec/wmmscontenttype.h"],
}

# Rooms outside the library: what they see of it.
INSTALLED_ONLY = ["tools", "examples", "sim"]
INSTALLED_AND_RECORDS = ["services"]
RECORDS = ["mms/session/", "platform/telephony/telephony_records_p.h", "platform/telephony/telephony_socket_p.h"]
FREE = ["tests", "bench", "fuzz"]

# What the programs share, and who may use it beside the services.
SHARED_PIECES = {
    "tools": ("services/common/", "services/intake/", "services/sms_pdu/"),
    "sim": ("services/common/", "services/sms_pdu/"),
}

# The only files that may look up, and where to.
DOORS = {
    "core/factories.cpp": ["mms/model", "mms/session", "mms/codec", "sms", "util"],
    "mms/model/wmmsmultipart_drm.cpp": ["drm"],
    "mms/model/wmmsmsg_drm.cpp": ["drm"],
}

GENERATED = {"wmsg_export.h"}
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">\n]+)[">]', re.MULTILINE)
PUBLIC = re.compile(r"^\s*wmsg_public_headers\(([^)]*)\)", re.MULTILINE)


def room_of(path):
    """The room a file lies in, or None."""
    rooms = [*ROOMS, *INSTALLED_ONLY, *INSTALLED_AND_RECORDS, *FREE]
    return next((room for room in rooms if path.startswith(room + "/")), None)


def public_headers(tree):
    """The installed headers: those that the build declares, and the contracts of the platform."""
    headers = {path for path in tree
               if path.startswith("platform/") and path.endswith(".h") and not path.endswith("_p.h")}
    for path, text in tree.items():
        if posixpath.basename(path) == "CMakeLists.txt":
            folder = posixpath.dirname(path)
            for declared in PUBLIC.findall(text):
                headers.update(posixpath.join(folder, name) for name in declared.split())
    return headers


def problem_of(path, quoted, target, tree, public):
    """What is wrong with one include, or None."""
    room = room_of(path)
    ours = target in tree or room_of(target) is not None
    if not quoted and not ours:
        return None
    if quoted and not ours:
        # An example is a project of its own, and names its headers from where it lies.
        if room == "examples" and posixpath.join(posixpath.dirname(path), target) in tree:
            return None
        if target in GENERATED or target.endswith(".moc") or posixpath.basename(target).startswith("moc_"):
            return None
        return "is no file of ours, seen from the root"
    if target not in tree:
        return "does not exist"
    if path in public and target not in public:
        return "is not installed, and this header is"
    other = room_of(target)
    if room in FREE or (other == room and (quoted or room not in ROOMS)):
        return None
    if quoted and target.startswith(SHARED_PIECES.get(room, ())):
        return None
    if room in INSTALLED_ONLY:
        if quoted:
            return "is the library's: include installed headers with <>"
        return None if target in public else "is not installed"
    if room in INSTALLED_AND_RECORDS:
        return None if target in public or target.startswith(tuple(RECORDS)) else "is neither installed nor a record"
    if not quoted:
        return "is ours: include it with quotes"
    allowed = ROOMS[room] + DOORS.get(path, [])
    return None if other in allowed or target in allowed else f"is not below {room}"


def check(tree):
    public = public_headers(tree)
    problems = [f"{header}: declared as public but not there" for header in sorted(public - tree.keys())]
    for path in lint_files.sources(tree):
        if room_of(path) is None:
            problems.append(f"{path}: lies in no known room")
            continue
        for include in INCLUDE.finditer(tree[path]):
            wrong = problem_of(path, include[1] == '"', include[2], tree, public)
            if wrong:
                line = lint_files.line_of(tree[path], include.start(1))
                problems.append(f"{path}:{line}: {include[2]} {wrong}")
    return problems


if __name__ == "__main__":
    names = lint_files.paths()
    tree = lint_files.read(lint_files.sources(names)
                           + [name for name in names if posixpath.basename(name) == "CMakeLists.txt"])
    lint_files.finish(check(tree), len(tree))

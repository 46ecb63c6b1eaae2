#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Builds the Debian packages of what is committed, has lintian look at them, and tries them in a bare root: they are
installed, an example is compiled against them, the box exchanges a message, and when they are purged nothing is left.
It runs as root on Debian, and fetches packages of Debian.

    debian.py WORK-FOLDER [--keep-packages]      with the option packages that lie there are not built anew
"""

import os
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SUITE = "bookworm"
# What installing anything leaves behind, ours or not.
OTHERS = ("/proc", "/sys", "/dev", "/tmp", "/run", "/debs", "/root", "/var/cache", "/var/log", "/var/lib/apt", "/var/lib/dpkg",
          "/var/lib/systemd/deb-systemd-user-helper-enabled", "/etc/ld.so.cache")
PROGRAM = """
set -e
cp -r /usr/share/doc/wmsg-doc/examples /tmp/examples
cmake -S /tmp/examples -B /tmp/examples-build -DWMSG_MESSENGER=OFF > /tmp/cmake.log || { cat /tmp/cmake.log; exit 1; }
cmake --build /tmp/examples-build --target 3-inbox > /tmp/make.log || { cat /tmp/make.log; exit 1; }
export UVO_EXTRA_SYS_DATA_PATH=/tmp/device HOME=/tmp
wmsg compose --to +15550100 --text Kept --pdu stored -o /tmp/kept.mms
/tmp/examples-build/3-inbox add /tmp/kept.mms
wmsg box --demo
man -l /usr/share/man/man1/wmsg-send.1.gz > /dev/null 2>&1 || test ! -e /usr/bin/man
"""


def run(*command, **more):
    print("$", *command, flush=True)
    subprocess.run([str(word) for word in command], check=True, **more)


def build_packages(work):
    """A clean tree of what is committed; the packages come to lie beside it."""
    tree = work / "wmsg-1.0.0"
    shutil.rmtree(tree, ignore_errors=True)
    for old in work.glob("*.deb"):
        old.unlink()
    tree.mkdir(parents=True)
    archive = subprocess.run(["git", "-C", str(ROOT), "archive", "HEAD"], check=True, capture_output=True).stdout
    subprocess.run(["tar", "-x", "-C", str(tree)], input=archive, check=True)
    # The source is ours as it lies there: no archive of an upstream is wanted.
    (tree / "debian" / "source" / "format").write_text("3.0 (native)\n", encoding="utf-8")
    changelog = tree / "debian" / "changelog"
    changelog.write_text(changelog.read_text(encoding="utf-8").replace("(1.0.0-1)", "(1.0.0)"), encoding="utf-8")
    run("dpkg-buildpackage", "-b", "-us", "-uc", cwd=tree, env={**os.environ, "DEB_BUILD_OPTIONS": "nocheck parallel=2"})
    run("lintian", "--allow-root", "--fail-on", "error,warning", "--tag-display-limit", "0", *work.glob("*.changes"))


class Root:
    """A bare system in a folder, with what programs need of a kernel."""

    def __init__(self, folder):
        self.folder = folder
        self.mounts = []

    def make(self):
        if not self.folder.exists():
            run("mmdebstrap", "--variant=minbase", "--include=ca-certificates", SUITE, self.folder)
        for kind, place in (("proc", "proc"), ("devpts", "dev/pts"), ("tmpfs", "dev/shm")):
            (self.folder / place).mkdir(exist_ok=True)
            run("mount", "-t", kind, kind, self.folder / place)
            self.mounts.append(self.folder / place)

    def end(self):
        for place in reversed(self.mounts):
            subprocess.run(["umount", str(place)], check=False)

    def run(self, *command):
        run("chroot", self.folder, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C.UTF-8", "DEBIAN_FRONTEND=noninteractive",
            "HOME=/root", *command)

    def apt(self, *words):
        self.run("apt-get", "-q", "-y", "-o", "Dpkg::Use-Pty=0", *words)

    def files(self):
        return {path for path in (f"/{found.relative_to(self.folder)}" for found in self.folder.rglob("*"))
                if not path.startswith(OTHERS)}


def try_packages(work):
    root = Root(work / "root")
    try:
        root.make()
        root.apt("update")
        root.apt("install", "--no-install-recommends", "g++", "cmake", "make", "qt6-base-dev")
        root.run("sh", "-c", "apt-get -q -y purge wmsg-doc 'libwmsg*' 'wmsg-*' >/dev/null 2>&1; apt-get -q -y autoremove --purge >/dev/null")
        before = root.files()
        debs = root.folder / "debs"
        shutil.rmtree(debs, ignore_errors=True)
        debs.mkdir()
        names = [f"/debs/{shutil.copy(deb, debs) and deb.name}" for deb in work.glob("*.deb") if "dbgsym" not in deb.name]
        root.apt("install", "--no-install-recommends", *names)
        root.run("sh", "-c", PROGRAM)
        root.apt("purge", *(pathlib.Path(name).name.split("_")[0] for name in names))
        root.apt("autoremove", "--purge")
        left = sorted(root.files() - before)
        if left:
            sys.exit("left behind:\n" + "\n".join(left))
    finally:
        root.end()


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    work = pathlib.Path(sys.argv[1]).resolve()
    work.mkdir(parents=True, exist_ok=True)
    if "--keep-packages" not in sys.argv or not list(work.glob("*.deb")):
        build_packages(work)
    try_packages(work)
    print("the packages can be installed, used and removed")


if __name__ == "__main__":
    try:
        main()
    except subprocess.CalledProcessError as failed:
        sys.exit(f"failed with {failed.returncode}: {failed.cmd}")

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Builds the Debian packages of the source tree as it is, has lintian look at them, and tries them in a bare root: they
are installed, debian/tests/use builds and runs with them what a developer would, and when they are purged nothing is left.
It runs on Debian, as root or with sudo, and fetches packages of Debian.

    debian.py WORK-FOLDER [--built]      with the option the packages that lie there are tried, none is built

A compiler cache is used where its folder comes first: PATH=/usr/lib/ccache:$PATH.
"""

import hashlib
import os
import pathlib
import re
import shutil
import stat
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "cmake"))
import lint_files

SUITE = "bookworm"
# What the base system changes whenever a package comes or goes, and where the test itself works.
VOLATILE = ("/dev/", "/proc/", "/sys/", "/var/cache/", "/var/log/", "/var/lib/apt/", "/var/lib/dpkg/", "/etc/ld.so.cache", "/debs", "/try")
ENTER = """
set -e
mount -t proc proc "$0/proc"
mount -t devpts -o newinstance,ptmxmode=666 devpts "$0/dev/pts"
mount -t tmpfs -o mode=1777 tmpfs "$0/dev/shm"
root=$0 user=$1
shift
exec chroot --userspec="$user" "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
"""
# Whatever is said of them is a complaint.
UNITS = "if systemd-analyze --user --man=no verify /usr/lib/systemd/user/wmsg-*.service 2>&1 | grep .; then exit 1; fi"


class Failed(Exception):
    pass


def run(*command, **more):
    command = [str(word) for word in command]
    print("$", *command, flush=True)
    subprocess.run(command, check=True, **more)


def output(*command, **more):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True, **more).stdout.strip()


def field(deb, name):
    return output("dpkg-deb", "--field", deb, name)


def unpack(work):
    """The source tree beside the archive that it would be released as."""
    version = output("dpkg-parsechangelog", "--file", ROOT / "debian" / "changelog", "--show-field", "Version").rpartition("-")[0]
    tree = work / f"wmsg-{version}"
    shutil.rmtree(tree, ignore_errors=True)
    for name in lint_files.paths():
        (tree / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, tree / name)
    run("tar", "-C", work, f"--exclude={tree.name}/debian", "--owner=root", "--group=root", "-czf", work / f"wmsg_{version}.orig.tar.gz", tree.name)
    return tree


def build(work):
    """Source and packages; a warning of whatever tool is a failure."""
    for old in work.glob("wmsg*_*"):
        old.unlink()
    for old in work.glob("libwmsg*_*"):
        old.unlink()
    tree = unpack(work)
    # The tools of Debian give the build a home of its own, and a cache there would be gone with it.
    environment = {"DEB_BUILD_OPTIONS": f"nocheck parallel={os.cpu_count()}", "CCACHE_DIR": str(work / "ccache"), **os.environ}
    log = work / "build.log"
    print(f"$ dpkg-buildpackage > {log}", flush=True)
    with open(log, "w", encoding="utf-8") as file:
        done = subprocess.run(["dpkg-buildpackage", "-us", "-uc"], cwd=tree, env=environment, stdout=file, stderr=subprocess.STDOUT, check=False)
    lines = log.read_text(encoding="utf-8").splitlines()
    if done.returncode != 0:
        raise Failed("they cannot be built:\n" + "\n".join(lines[-60:]))
    warnings = [line for line in lines if re.search(r"(?<!CMake )\b[Ww]arning:", line)]
    if warnings:
        raise Failed("warnings of the build:\n" + "\n".join(warnings))
    shutil.rmtree(tree)
    run("lintian", "--allow-root", "--display-info", "--fail-on", "error,warning", "--tag-display-limit", "0", *work.glob("*.changes"))


class Root:
    """A bare system in a folder. Each command has a space of processes and mounts of its own, which end with it."""

    def __init__(self, work):
        self.work = work
        self.folder = work / "root"

    def make(self, packages):
        base = self.work / "base.tar"
        if not base.exists():
            unfinished = self.work / "unfinished.tar"
            run("mmdebstrap", "--variant=minbase", "--dpkgopt=force-unsafe-io", "--include=ca-certificates", f"--include={','.join(packages)}", SUITE, unfinished)
            unfinished.rename(base)
        self.remove()
        self.folder.mkdir()
        run("tar", "-C", self.folder, "--numeric-owner", "-xf", base)
        self.apt("update")
        self.apt("upgrade")
        self.apt("install", "--no-install-recommends", *packages)

    def remove(self):
        if self.folder.exists():
            shutil.rmtree(self.folder)

    def run(self, *command, user="0:0"):
        print("$", *command, flush=True)
        entered = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "sh", "-c", ENTER, str(self.folder), user]
        if subprocess.run([*entered, *command], stdin=subprocess.DEVNULL, check=False).returncode != 0:
            raise Failed("that failed in the bare root")

    def apt(self, *words):
        self.run("apt-get", "-q", "-y", "-o", "Dpkg::Use-Pty=0", *words)

    def files(self):
        """What lies in the root: path -> what it is."""
        found = {}
        for folder, folders, files in os.walk(self.folder):
            for path in (pathlib.Path(folder) / name for name in folders + files):
                name = f"/{path.relative_to(self.folder)}"
                if not name.startswith(VOLATILE):
                    found[name] = self.kind(path)
        return found

    @staticmethod
    def kind(path):
        state = path.lstat()
        if stat.S_ISLNK(state.st_mode):
            return "link", os.readlink(path)
        if stat.S_ISREG(state.st_mode):
            return state.st_mode, hashlib.sha256(path.read_bytes()).hexdigest()
        return state.st_mode, ""


def others(debs, names):
    """What our packages depend on, ours apart."""
    wanted = set()
    for deb in debs:
        for control in ("Pre-Depends", "Depends"):
            wanted |= {entry.strip() for entry in field(deb, control).split(",")}
    return sorted(entry for entry in wanted if entry and re.split(r"[ :(]", entry)[0] not in names)


def developers_packages(names):
    """What debian/tests/use needs, ours apart."""
    control = (ROOT / "debian" / "tests" / "control").read_text(encoding="utf-8")
    depends = re.search(r"^Depends:((?:.|\n )*)", control, re.MULTILINE)[1]
    return sorted({word.strip() for word in depends.split(",")} - names - {""})


def try_packages(work):
    debs = [deb for deb in sorted(work.glob("*.deb")) if "-dbgsym" not in deb.name]
    names = {field(deb, "Package") for deb in debs}
    root = Root(work)
    # The units are looked at by the system that will run them.
    root.make(["systemd", *developers_packages(names)])
    root.apt("satisfy", "--no-install-recommends", ", ".join(others(debs, names)))
    before = root.files()

    (root.folder / "debs").mkdir()
    for deb in debs:
        shutil.copy(deb, root.folder / "debs")
    root.apt("install", "--no-install-recommends", *(f"/debs/{deb.name}" for deb in debs))
    place = root.folder / "try"
    place.mkdir()
    os.chown(place, 1000, 1000)
    shutil.copy(ROOT / "debian" / "tests" / "use", place)
    root.run("HOME=/try", "XDG_RUNTIME_DIR=/try", "sh", "-c", UNITS, user="1000:1000")
    root.run("AUTOPKGTEST_TMP=/try", "/try/use", user="1000:1000")

    root.apt("purge", *sorted(names))
    after = root.files()
    left = [f"left behind: {name}" for name in sorted(after.keys() - before.keys())]
    left += [f"gone: {name}" for name in sorted(before.keys() - after.keys())]
    left += [f"changed: {name}" for name in sorted(before.keys() & after.keys()) if before[name] != after[name]]
    if left:
        raise Failed("\n".join(left))
    root.remove()


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    work = pathlib.Path(sys.argv[1]).resolve()
    work.mkdir(parents=True, exist_ok=True)
    if "--built" not in sys.argv:
        build(work)
    if os.geteuid() != 0:
        os.execvp("sudo", ["sudo", "env", "PYTHONDONTWRITEBYTECODE=1", sys.executable, __file__, str(work), "--built"])
    try_packages(work)
    print("the packages can be installed, used and removed")


if __name__ == "__main__":
    try:
        main()
    except Failed as failed:
        sys.exit(f"debian: {failed}")
    except subprocess.CalledProcessError as failed:
        sys.exit(f"debian: failed with {failed.returncode}: {failed.cmd}\n{failed.stderr or ''}")

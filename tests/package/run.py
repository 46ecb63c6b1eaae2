#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Installs a build into a prefix, then builds and runs small programs that know only that prefix: through
CMake, and through pkg-config. One of them is the program that the README shows.

    run.py BUILD-FOLDER LIBRARY-FOLDER COMPILER FLAGS
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
README = HERE.parent.parent / "README.md"


def run(*command, **more):
    """Runs a command and ends this program with its words when it fails."""
    command = [str(word) for word in command]
    print("$", shlex.join(command), flush=True)
    subprocess.run(command, check=True, **more)


def output(*command, **more):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True, **more).stdout


def readme_program():
    """The one whole C++ program of the README."""
    programs = [code for code in re.findall(r"^```cpp\n(.*?)^```$", README.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
                if "int main" in code]
    if len(programs) != 1:
        sys.exit(f"{README} shows {len(programs)} whole programs, not one")
    return programs[0]


def install(build, prefix):
    """A fresh prefix; nothing in it may point back to where it was built."""
    shutil.rmtree(prefix, ignore_errors=True)
    run("cmake", "--install", build, "--prefix", prefix, stdout=subprocess.DEVNULL)
    for path in prefix.rglob("*"):
        if path.suffix in (".cmake", ".pc", ".h") and str(HERE.parent.parent) in path.read_text(encoding="utf-8"):
            sys.exit(f"{path} points to the source tree")


def check_run(program, folder, prefix):
    """Runs a program in a folder of its own; it must leave a mail file there, which the installed command reads."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    run(program, folder / "message.mms", cwd=folder)
    saved = list(folder.iterdir())
    if len(saved) != 1:
        sys.exit(f"{program} saved {len(saved)} files, not one")
    run(prefix / "bin" / "wmsg", "decode", saved[0])


def through_cmake(work, prefix, compiler, flags):
    build = work / "cmake"
    shutil.rmtree(build, ignore_errors=True)
    (work / "readme.cpp").write_text(readme_program(), encoding="utf-8")
    run("cmake", "-S", HERE, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}",
        f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_CXX_FLAGS={flags}", f"-DREADME_PROGRAM={work / 'readme.cpp'}")
    run("cmake", "--build", build)
    for name in ("round_trip", "readme"):
        check_run(build / name, work / f"{name}_files", prefix)


def through_pkg_config(work, prefix, libraries, compiler, flags):
    environment = {**os.environ, "PKG_CONFIG_PATH": str(prefix / libraries / "pkgconfig"),
                   "LD_LIBRARY_PATH": str(prefix / libraries)}
    words = shlex.split(output("pkg-config", "--cflags", "--libs", "wmsg", env=environment))
    program = work / "round_trip_pkg_config"
    run(compiler, "-std=c++17", "-fPIC", *shlex.split(flags), HERE / "round_trip.cpp", "-o", program, *words,
        f"-Wl,-rpath,{prefix / libraries}", env=environment)
    check_run(program, work / "pkg_config_files", prefix)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    build, libraries, compiler, flags = sys.argv[1:]
    work = pathlib.Path(build).resolve() / "installed_package"
    work.mkdir(exist_ok=True)
    prefix = work / "prefix"
    install(build, prefix)
    through_cmake(work, prefix, compiler, flags)
    through_pkg_config(work, prefix, libraries, compiler, flags)


if __name__ == "__main__":
    try:
        main()
    except subprocess.CalledProcessError as failed:
        sys.exit(f"failed with {failed.returncode}: {shlex.join(failed.cmd)}\n{failed.stderr or ''}")

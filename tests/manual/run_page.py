#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Types what a page of the manual shows, in a folder of its own, and compares what comes back.

    run_page.py PAGE PROGRAM-FOLDER...

A block ```console holds commands behind "$ " and what they print. A line "..." stands for any lines, "…" within a
line for anything. A command that ends with "&" goes on in the background: its lines are waited for, and it is
stopped with Ctrl-C when the page ends. "[exit 1]" below the lines tells that a command fails.
"""

import os
import pathlib
import queue
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

PATIENCE = 90
ROOT = pathlib.Path(__file__).resolve().parents[2]


class Wrong(Exception):
    pass


def commands(page):
    """Each command with the lines that it prints and the exit code."""
    for block in re.findall(r"^```console\n(.*?)^```$", page, re.MULTILINE | re.DOTALL):
        command, lines = None, []
        for line in block.splitlines():
            if line.startswith("$ "):
                if command:
                    yield command, *ending(lines)
                command, lines = line[2:], []
            elif command and command.endswith("\\"):
                command += "\n" + line
            else:
                lines.append(line)
        if command:
            yield command, *ending(lines)


def ending(lines):
    if lines and (found := re.fullmatch(r"\[exit (\d+)\]", lines[-1])):
        return lines[:-1], int(found[1])
    return lines, 0


def pattern(lines):
    """A regular expression for what is shown, of whole lines."""
    text = ""
    for line in lines:
        text += r"(?:.*\n)*?" if line == "..." else ".*?".join(map(re.escape, line.split("…"))) + r"[ ]*\n"
    return re.compile(text)


class Background:
    """A command that goes on; what it prints is collected."""

    def __init__(self, command, folder, environment):
        self.process = subprocess.Popen(["sh", "-c", "exec " + command.rstrip("& ")], cwd=folder, env=environment, text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.lines = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line)
        self.lines.put(None)

    def expect(self, wanted):
        text = ""
        while not pattern(wanted).fullmatch(text):
            line = self.lines.get(timeout=PATIENCE)
            if line is None:
                raise Wrong(f"ended behind:\n{text}")
            text += line

    def stop(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
            try:
                self.process.wait(15)
            except subprocess.TimeoutExpired:
                self.process.kill()


def run(command, wanted, code, folder, environment):
    done = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, text=True, timeout=PATIENCE,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != code:
        raise Wrong(f"exit code {done.returncode}:\n{done.stdout}")
    if wanted and not pattern(wanted).fullmatch(done.stdout if done.stdout.endswith("\n") or not done.stdout else done.stdout + "\n"):
        raise Wrong(f"prints:\n{done.stdout}")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    page = pathlib.Path(sys.argv[1])
    folder = pathlib.Path(tempfile.mkdtemp(prefix="wmsg-manual-"))
    environment = {**os.environ, "PATH": ":".join([*sys.argv[2:], os.environ["PATH"]]), "HOME": str(folder), "LC_ALL": "C.UTF-8",
                   "TZ": "UTC", "UVO_EXTRA_SYS_DATA_PATH": str(folder / "device"), "WMSG_SOURCE": str(ROOT)}
    environment.pop("XDG_STATE_HOME", None)
    running, count = [], 0
    subprocess.run([sys.executable, ROOT / "scripts" / "make-picture.py", folder / "sunset.png", "320", "240"], check=True)
    try:
        for command, wanted, code in commands(page.read_text(encoding="utf-8")):
            count += 1
            print("$", command, flush=True)
            try:
                if command.endswith("&"):
                    running.append(Background(command, folder, environment))
                    running[-1].expect(wanted)
                else:
                    run(command, wanted, code, folder, environment)
            except (Wrong, queue.Empty, subprocess.TimeoutExpired) as problem:
                sys.exit(f"{page.name}: $ {command}\n{problem}\nthe page shows:\n" + "\n".join(wanted))
    finally:
        for program in reversed(running):
            program.stop()
        shutil.rmtree(folder, ignore_errors=True)
    if not count:
        sys.exit(f"{page.name} shows no commands")
    print(f"{page.name}: {count} commands")


if __name__ == "__main__":
    main()

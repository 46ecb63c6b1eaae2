#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Builds the examples against what tests/package/run.py installed, and runs each of them with the installed
programs: beside a box, with a slow network where something is cancelled.

    examples.py build BUILD-FOLDER LIBRARY-FOLDER COMPILER FLAGS
    examples.py run BUILD-FOLDER LIBRARY-FOLDER
"""

import json
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import zlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
PATIENCE = 120


class Failed(Exception):
    pass


def require(holds, what):
    if not holds:
        raise Failed(what)


class World:
    """A folder for the run, the examples, and the programs that were started and have to end."""

    def __init__(self, work, prefix, libraries):
        self.work = work
        self.prefix = prefix
        self.examples = work / "build"
        self.environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": str(work),
                            "UVO_EXTRA_SYS_DATA_PATH": str(work / "device"),
                            "LD_LIBRARY_PATH": str(prefix / libraries)}
        self.running = []

    def start(self, program, *arguments):
        command = [str(program), *map(str, arguments)]
        print("$", *command, "&", flush=True)
        process = subprocess.Popen(command, env=self.environment, cwd=self.work, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.running.append(process)
        return process

    def run(self, program, *arguments):
        """The exit code, and what was said on both streams."""
        process = self.start(program, *arguments)
        output, errors = process.communicate(timeout=PATIENCE)
        return process.returncode, output, errors

    def wmsg(self, *arguments):
        code, output, errors = self.run(self.prefix / "bin" / "wmsg", *arguments)
        require(code == 0, f"wmsg {arguments[0]} ended with {code}: {errors}")
        return output

    def example(self, name, *arguments):
        return self.run(self.examples / name, *arguments)

    def stop(self):
        for process in reversed(self.running):
            if process.poll() is None:
                process.send_signal(signal.SIGINT)
                try:
                    process.wait(10)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()


def read_lengths():
    """An example is read in one go."""
    for path in (ROOT / "examples").rglob("*.*"):
        lines = len(path.read_text(encoding="utf-8").splitlines())
        require(lines < 150, f"{path} has {lines} lines")


def build(world, compiler, flags):
    for command in (["cmake", "-S", ROOT / "examples", "-B", world.examples, "-G", "Ninja",
                     f"-DCMAKE_PREFIX_PATH={world.prefix}", f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_CXX_FLAGS={flags}"],
                    ["cmake", "--build", world.examples]):
        subprocess.run([str(word) for word in command], check=True)


def box(world, *faults):
    arguments = [word for fault in faults for word in ("--fault", fault)]
    process = world.start(world.prefix / "bin" / "wmsg", "box", "--folder", world.work / "box", "--json", *arguments)
    line = process.stdout.readline()
    require(line, f"the box does not start: {process.stderr.read() if process.poll() is not None else ''}")
    return json.loads(line)


def a_picture(world):
    path = world.work / "sunset.png"
    subprocess.run([sys.executable, ROOT / "scripts" / "make-picture.py", path, "640", "480"], check=True)
    return path


def send_and_save(world, picture):
    saver = world.start(world.examples / "2-save-what-arrives", world.work / "saved", "1")
    code, output, errors = world.example("1-send-picture", "+15550100", picture, "What you missed")
    require(code == 0 and output.endswith("sent\n"), f"not sent: {output}{errors}")
    output, errors = saver.communicate(timeout=PATIENCE)
    require(saver.returncode == 0 and '"sunset.png"' in output, f"not saved: {output}{errors}")
    folder = world.work / "saved" / "message-1"
    require((folder / "sunset.png").read_bytes() == picture.read_bytes(), "another picture arrived")
    require((folder / "text.txt").read_text(encoding="utf-8") == "What you missed", "another text arrived")


def cancel(world, picture):
    """The network takes the second message slowly, so that there is something to take back."""
    process = world.start(world.examples / "1-send-picture", "+15550100", picture, "Never mind")
    require("of" in process.stdout.readline(), "no progress was told")
    process.send_signal(signal.SIGINT)
    output, errors = process.communicate(timeout=PATIENCE)
    require(process.returncode == 1 and "not sent: status 19" in output, f"not cancelled: {output}{errors}")


def keep(world):
    mail = world.work / "kept.mms"
    world.wmsg("compose", "--to", "+15550100", "--subject", "To keep", "--text", "Kept text", "--pdu", "stored", "-o", mail)
    code, output, errors = world.example("3-inbox", "add", mail)
    require(code == 0, f"not kept: {errors}")
    number = output.split()[-1]
    code, output, _ = world.example("3-inbox", "list")
    require(code == 0 and "To keep" in output and output.endswith("1 messages\n"), f"another list: {output}")
    code, output, _ = world.example("3-inbox", "show", number)
    require(code == 0 and "Kept text" in output, f"another message: {output}")
    require(world.example("3-inbox", "remove", number)[0] == 0, "not removed")
    require(world.example("3-inbox", "show", number)[0] == 1, "still there")
    return mail


def talk(world):
    answering = world.start(world.examples / "4-port-messages", "answer", "9000")
    require("listening" in answering.stdout.readline(), "nobody answers")
    code, output, errors = world.example("4-port-messages", "ask", "+15550100", "9000", "bye")
    require(code == 0 and "You said: bye" in output, f"another answer: {output}{errors}")
    output, errors = answering.communicate(timeout=PATIENCE)
    require(answering.returncode == 0 and "says: bye" in output, f"heard something else: {output}{errors}")


def forward(world, mail):
    code, output, errors = world.example("5-forward", mail, "+15550101")
    require(code == 0 and output == "forwarded\n", f"not forwarded: {output}{errors}")
    require("Fwd: To keep" in world.wmsg("receive", "--count", "1", "--timeout", "60"), "another message arrived")
    protected = world.work / "locked.dm"
    protected.write_bytes(b"--limit\r\nContent-Type: image/gif\r\nContent-Transfer-Encoding: binary\r\n\r\nGIF89a\r\n--limit--\r\n")
    locked = world.work / "locked.mms"
    world.wmsg("compose", "--to", "+15550100", "--attach", protected, "--pdu", "stored", "-o", locked)
    code, output, errors = world.example("5-forward", locked, "+15550101")
    require(code == 1 and "rights forbid" in errors, f"a locked picture was forwarded: {output}{errors}")


def pixels(path):
    """The colours of a PNG of eight bits a channel, as Qt writes it, with how often each is there."""
    data = path.read_bytes()
    width, height, _, kind = struct.unpack(">IIBB", data[16:26])
    depth = {2: 3, 6: 4}[kind]
    packed, position = b"", 8
    while position < len(data):
        length, = struct.unpack(">I", data[position:position + 4])
        if data[position + 4:position + 8] == b"IDAT":
            packed += data[position + 8:position + 8 + length]
        position += length + 12
    raw, colours, above = zlib.decompress(packed), {}, bytearray(width * depth)
    for row in range(height):
        start = row * (width * depth + 1)
        line = bytearray(raw[start + 1:start + 1 + width * depth])
        for i in range(len(line)):
            left, up = line[i - depth] if i >= depth else 0, above[i]
            corner = above[i - depth] if i >= depth else 0
            estimate = left + up - corner
            paeth = min((left, up, corner), key=lambda value: abs(estimate - value))
            line[i] = (line[i] + (0, left, up, (left + up) // 2, paeth)[raw[start]]) & 255
        for x in range(0, len(line), depth):
            colour = tuple(line[x:x + 3])
            colours[colour] = colours.get(colour, 0) + 1
        above = line
    return colours


def show(world, picture):
    """The window of the messenger has the picture twice: as it was sent, and as it arrived."""
    program = world.examples / "6-messenger"
    if not program.exists():
        print("the messenger is not built: there is no Qt Quick", flush=True)
        return
    shot = world.work / "messenger.png"
    world.environment.update(QT_QUICK_BACKEND="software", XDG_RUNTIME_DIR=str(world.work),
                             ASAN_OPTIONS=":".join([os.environ.get("ASAN_OPTIONS", ""), "detect_leaks=0"]))
    code, output, errors = world.run(program, "--to", "+15550100", "--text", "Look what I found on the way home",
                                     "--picture", picture, "--grab", shot)
    require(code == 0, f"the messenger ended with {code}: {output}{errors}")
    sun = (247, 228, 172)
    count = sum(often for colour, often in pixels(shot).items() if all(abs(a - b) < 8 for a, b in zip(colour, sun)))
    require(count > 2000, f"{count} points of the sun are in the window")


def run_all(world):
    try:
        mail = keep(world)
        box(world, "send 2 up-rate=2000")
        picture = a_picture(world)
        send_and_save(world, picture)
        cancel(world, picture)
        talk(world)
        forward(world, mail)
        show(world, picture)
    finally:
        world.stop()


def main():
    if (len(sys.argv), *sys.argv[1:2]) not in ((6, "build"), (4, "run")):
        sys.exit(__doc__)
    action, folder, libraries, *compiling = sys.argv[1:]
    installed = pathlib.Path(folder).resolve() / "installed_package"
    world = World(installed / "examples", installed / "prefix", libraries)
    if action == "build":
        shutil.rmtree(world.work, ignore_errors=True)
        world.work.mkdir()
        read_lengths()
        build(world, *compiling)
    else:
        run_all(world)


if __name__ == "__main__":
    try:
        main()
    except (Failed, subprocess.CalledProcessError, subprocess.TimeoutExpired) as failed:
        sys.exit(f"examples: {failed}")

#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Exchanges messages with Debian's mmsd-tng, an MMS client that shares no code with this project:
mmsd_tng.py BUILD-FOLDER

mmsd-tng sends a message to our simulated MMSC, and our daemon fetches it; our daemon sends one, and mmsd-tng
fetches it and says what it holds. mmsd-tng's modem is a mock on a bus of its own. Nothing outside a temporary
folder and the fixed socket paths of the daemon is touched. The end is 0 when all that arrived is what was sent."""

import json
import os
import pathlib
import select
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

HERE = pathlib.Path(__file__).resolve().parent
THEIR_NUMBER = "+15550111"
OUR_NUMBER = "+15550122"
SENDER = "+15550133"  # which the network inserts, as both ask it to
SERVICE_PATH = "/org/ofono/mms/modemmanager"
SECONDS = 60  # for each step; they take far less than one

MMSD_SETTINGS = """[Modem Manager]
CarrierMMSC={mmsc}
MMS_APN=mms
CarrierMMSProxy=NULL
DefaultModemNumber=NULL
AutoProcessOnConnection=true
AutoProcessSMSWAP=true
IMSI=310260000000000
[Settings]
UseDeliveryReports=false
TotalMaxAttachmentSize=1100000
MaxAttachments=25
AutoCreateSMIL=true
ForceCAres=true
"""


class Failure(Exception):
    """What went wrong, in words."""


def check(condition, problem):
    if not condition:
        raise Failure(problem)


class Programs:
    """Programs of this test, all of which end with it. What they say goes to files of the folder."""

    def __init__(self, folder):
        self.folder = folder
        self.running = {}

    def start(self, name, *command, **options):
        log = open(self.folder / f"{name}.log", "wb")
        options.setdefault("stdout", log)
        self.running[name] = subprocess.Popen([str(word) for word in command], stderr=log, cwd=self.folder,
                                              stdin=subprocess.DEVNULL, **options)
        return self.running[name]

    def first_line(self, name, *command, **options):
        """Starts a program that says on its first line when it is ready, and returns that line."""
        process = self.start(name, *command, stdout=subprocess.PIPE, **options)
        ready, _, _ = select.select([process.stdout], [], [], SECONDS)
        line = process.stdout.readline().decode().strip() if ready else ""
        check(line, f"{name} does not get ready")
        # What it says later must not stop it.
        threading.Thread(target=process.stdout.read, daemon=True).start()
        return line

    def stop(self):
        for process in reversed(list(self.running.values())):
            if process.poll() is None:
                process.send_signal(signal.SIGTERM)
                try:
                    process.wait(10)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()


class Bus:
    """The bus that mmsd-tng and its modem live on, with what is heard on it."""

    def __init__(self, programs):
        address = programs.first_line("dbus", "dbus-daemon", f"--config-file={HERE / 'bus.conf'}", "--nofork",
                                      "--print-address")
        self.environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=address, DBUS_SESSION_BUS_ADDRESS=address)
        os.environ.update(self.environment)  # bindings look there
        dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
        self.connection = dbus.bus.BusConnection(address)
        self.context = GLib.MainContext.default()

    def wait_for(self, what, condition):
        """Turns the loop until the condition holds, and returns its value."""
        is_over = []
        GLib.timeout_add_seconds(SECONDS, lambda: is_over.append(True))
        while not is_over:
            value = condition()
            if value:
                return value
            self.context.iteration(True)
        raise Failure(f"waited {SECONDS} s for {what}")

    def wait_for_name(self, name):
        owner = []
        watch = self.connection.watch_name_owner(name, lambda new: owner.append(new) if new else None)
        self.wait_for(name, lambda: owner)
        watch.cancel()


class Modem:
    """The mocked modem. Notifications that the MMSC pushes become short messages of it."""

    PUSH_HEADER = bytes.fromhex("010603BEAF84")  # a WSP push with an MMS message

    def __init__(self, programs, bus):
        self.path = str(programs.folder / "their-push")
        self.bus = bus
        programs.start("modem", sys.executable, "-m", "dbusmock", "--system", "-t", HERE / "modem_manager.py",
                       "-p", json.dumps({"number": THEIR_NUMBER}), env=bus.environment)
        bus.wait_for_name("org.freedesktop.ModemManager1")
        proxy = bus.connection.get_object("org.freedesktop.ModemManager1", "/org/freedesktop/ModemManager1")
        self.mock = dbus.Interface(proxy, "wmsg.Mock")
        listener = socket.socket(socket.AF_UNIX)
        listener.bind(self.path)
        listener.listen()
        threading.Thread(target=self.serve, args=(listener,), daemon=True).start()

    def serve(self, listener):
        while True:
            client, _ = listener.accept()
            threading.Thread(target=self.take, args=(client,), daemon=True).start()

    def take(self, client):
        stream = client.makefile("rwb")
        while len(head := stream.read(4)) == 4:
            pdu = stream.read(struct.unpack(">I", head)[0])
            # The bus belongs to the main thread.
            GLib.idle_add(lambda data: self.mock.Push(dbus.Array(data, signature="y")) and False,
                          self.PUSH_HEADER + pdu)
            stream.write(b"\0\0\0")
            stream.flush()


class Mmsd:
    """mmsd-tng, ready to send and receive."""

    def __init__(self, programs, bus, mmsc):
        self.bus = bus
        self.arrived = []
        self.states = {}
        home = programs.folder / "mmsd-home"
        settings = home / ".mms" / "modemmanager"
        settings.mkdir(parents=True)
        (settings / "mms").write_text(MMSD_SETTINGS.format(mmsc=mmsc))
        programs.start("mmsd", "mmsdtng", "-d", env=dict(bus.environment, HOME=str(home), G_MESSAGES_DEBUG="all"))
        bus.wait_for_name("org.ofono.mms")
        connection = bus.connection
        connection.add_signal_receiver(lambda path, content: self.arrived.append(content), "MessageAdded",
                                       "org.ofono.mms.Service")
        connection.add_signal_receiver(self.changed, "PropertyChanged", "org.ofono.mms.Message", path_keyword="path")
        manager = dbus.Interface(connection.get_object("org.ofono.mms", "/org/ofono/mms"), "org.ofono.mms.Manager")
        added = []
        connection.add_signal_receiver(lambda *args: added.append(args), "ServiceAdded", "org.ofono.mms.Manager")
        bus.wait_for("mmsd-tng's service", lambda: added or manager.GetServices())
        self.service = dbus.Interface(connection.get_object("org.ofono.mms", SERVICE_PATH), "org.ofono.mms.Service")

    def changed(self, name, value, path=None):
        if name == "status":
            self.states[path] = str(value)

    def send(self, number, subject, files):
        """Sends files as (name, media type, path), and waits until the MMSC has accepted them."""
        options = dbus.Dictionary({"Subject": subject}, signature="sv", variant_level=1)
        path = self.service.SendMessage(dbus.Array([number], signature="s"), options,
                                        dbus.Array(files, signature="(sss)"))
        state = self.bus.wait_for("mmsd-tng to have sent", lambda: self.states.get(path))
        check(state == "sent", f"mmsd-tng tells that its message is {state}")

    def next_message(self):
        def received():
            return [content for content in self.arrived if content.get("Status") == "received"]
        return self.bus.wait_for("a message at mmsd-tng", received)[0]


class Exchange:
    """Both ways, between mmsd-tng and our own programs."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.programs = Programs(folder)
        self.text = "Grüße vom Gipfel\n"
        self.photo = folder / "photo.png"
        subprocess.run([sys.executable, HERE.parents[1] / "scripts" / "make-picture.py", self.photo], check=True)
        (folder / "words.txt").write_text(self.text, encoding="utf-8")

    def run(self):
        bus = Bus(self.programs)
        modem = Modem(self.programs, bus)
        our_push = self.folder / "our-push"
        line = self.programs.first_line(
            "mmsc", self.build / "sim/mmsc/wmsg-sim-mmsc", "--sender", SENDER, "--pdu-log", self.folder / "pdus",
            "--subscriber", f"{THEIR_NUMBER}={modem.path}", "--subscriber", f"{OUR_NUMBER}={our_push}")
        mmsc = line.removeprefix("listening on ")
        self.programs.first_line("mmsproxyd", self.build / "services/mmsproxyd/wmsg-mmsproxyd", "--mmsc", mmsc,
                                 "--spool", self.folder / "spool", "--push-socket", our_push, "--telephony", "no")
        mmsd = Mmsd(self.programs, bus, mmsc)
        self.from_them(mmsd)
        self.to_them(mmsd)

    def wmsg(self, *arguments):
        done = subprocess.run([str(self.build / "tools/wmsg/wmsg"), *map(str, arguments)], cwd=self.folder,
                              stdout=subprocess.PIPE, timeout=SECONDS, check=False)
        check(done.returncode == 0, f"wmsg {arguments[0]} ends with {done.returncode}")
        return done.stdout.decode()

    def from_them(self, mmsd):
        """mmsd-tng -> MMSC -> our daemon -> wmsg receive"""
        mmsd.send(OUR_NUMBER, "From afar", [("words.txt", "text/plain", str(self.folder / "words.txt")),
                                            ("photo.png", "image/png", str(self.photo))])
        told = json.loads(self.wmsg("receive", "--count", "1", "--json", "--extract", "received",
                                    "--timeout", SECONDS))
        headers = told["headers"]
        check(headers["subject"] == "From afar", f"their subject arrives as {headers['subject']}")
        check(headers["from"]["value"] == SENDER, f"their message is from {headers['from']}")
        check(headers["to"][0]["value"] == OUR_NUMBER, f"their message is to {headers['to']}")
        files = {path.name: path.read_bytes() for path in (self.folder / "received/message-1").iterdir()}
        check(self.photo.read_bytes() in files.values(), f"their picture is not whole among {sorted(files)}")
        check(self.text.encode() in files.values(), f"their text is not whole among {sorted(files)}")
        print("mmsd-tng -> wmsg: subject, sender, recipient, text and picture are whole")

    def to_them(self, mmsd):
        """wmsg send -> our daemon -> MMSC -> mmsd-tng"""
        self.wmsg("send", "--to", THEIR_NUMBER, "--subject", "From near", "--text-file",
                  "words.txt", "--attach", "photo.png", "--timeout", SECONDS)
        content = mmsd.next_message()
        check(content["Subject"] == "From near", f"mmsd-tng reads the subject as {content['Subject']}")
        check(content["Sender"] == SENDER, f"mmsd-tng reads the sender as {content['Sender']}")
        check(THEIR_NUMBER in content["Recipients"], f"mmsd-tng reads the recipients as {content['Recipients']}")
        parts = {}
        for _, kind, path, offset, length in content["Attachments"]:
            data = pathlib.Path(path).read_bytes()[offset:offset + length]
            parts[str(kind).split(";")[0]] = data
        check(parts.get("image/png") == self.photo.read_bytes(), f"mmsd-tng has no whole picture, but {list(parts)}")
        check(parts.get("text/plain") == self.text.encode(), f"mmsd-tng has no whole text, but {list(parts)}")
        check("photo.png" in content["Smil"], "mmsd-tng reads another presentation")
        print("wmsg -> mmsd-tng: subject, sender, recipient, text, picture and presentation are whole")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="wmsg-interop-"))
    exchange = Exchange(pathlib.Path(sys.argv[1]).resolve(), folder)
    try:
        exchange.run()
    except (Failure, OSError, subprocess.SubprocessError, dbus.DBusException) as problem:
        for log in sorted(folder.glob("*.log")):
            print(f"---- {log.name}\n{log.read_text(errors='replace')[-4000:]}", file=sys.stderr)
        sys.exit(f"mmsd_tng.py: {problem}")
    finally:
        exchange.programs.stop()
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Writes the seed corpora in corpus/: small inputs of each fuzzer that meet as many of its branches as can be.
Run it again after a change here; seeds that libFuzzer found worth keeping lie beside them and are left alone."""

import pathlib
import struct

CORPUS = pathlib.Path(__file__).resolve().parent / "corpus"


def text(value):
    data = value.encode() if isinstance(value, str) else value
    return (b"\x7f" if data[:1] >= b"\x80" else b"") + data + b"\0"


def uintvar(value):
    groups = [value & 0x7F]
    while value := value >> 7:
        groups.append(value & 0x7F | 0x80)
    return bytes(reversed(groups))


def counted(data):
    return (bytes([len(data)]) if len(data) <= 30 else b"\x1f" + uintvar(len(data))) + data


def long_integer(value):
    data = value.to_bytes((value.bit_length() + 7) // 8 or 1, "big")
    return bytes([len(data)]) + data


def encoded(value, charset=b"\xea"):
    return counted(charset + text(value))


def field(number, value):
    return bytes([number | 0x80]) + value


def start(pdu_type, transaction="t-1", version=0x90):
    return (field(12, bytes([pdu_type])) + (field(24, text(transaction)) if transaction else b"")
            + field(13, bytes([version])))


FROM = field(9, counted(b"\x80" + text("+4915112345/TYPE=PLMN")))
FROM_INSERTED = field(9, b"\x01\x81")
TO = field(23, text("+4915154321/TYPE=PLMN"))
TO_MAIL = field(23, text("Ann <ann@example.org>"))
TO_UNICODE = field(23, encoded("Jürgen <jürgen@example.org>"))
DATE = field(5, long_integer(1100000000))
SUBJECT = field(22, encoded("Grüße aus Köln"))
YES, NO = b"\x80", b"\x81"

JPEG = bytes.fromhex("FFD8FFE000104A46494600010100000100010000FFD9")
SMIL = b'<smil><body><par dur="5s"><img src="a.jpg"/><text src="t.txt"/></par></body></smil>'


def entry(content_type, data, headers=b""):
    return uintvar(len(content_type) + len(headers)) + uintvar(len(data)) + content_type + headers + data


def body(*entries):
    return bytes([len(entries)]) + b"".join(entries)


def location(name):
    return b"\x8e" + text(name)


def content_id(name):
    return b"\xc0" + (b'"' if name.startswith("<") else b"") + text(name)


SMIL_PART = entry(counted(text("application/smil") + b"\x85" + text("s.smil")), SMIL + b"\0",
                  location("s.smil") + content_id("<smil>"))
JPEG_PART = entry(counted(b"\x9e\x85" + text("a.jpg")), JPEG, location("a.jpg") + content_id("<a>"))
TEXT_PART = entry(counted(b"\x83\x81\xea\x85" + text("t.txt")), "Grüße".encode(), location("t.txt") + content_id("t"))
PLAIN_PART = entry(b"\x83", b"hello\0")


def utf16(mib, mark, data, media=b"\x83"):
    return entry(counted(media + b"\x81" + long_integer(mib)), mark + data)


RELATED = body(SMIL_PART, JPEG_PART, TEXT_PART)
RELATED_TYPE = field(4, counted(b"\xb3\x8a" + text("<smil>") + b"\x89" + text("application/smil")))
MIXED_TYPE = field(4, b"\xa3")


def nested(levels):
    inner = body(PLAIN_PART)
    for _ in range(levels):
        inner = body(entry(b"\xa3", inner))
    return inner


BODIES = {
    "empty": body(),
    "plain": body(PLAIN_PART),
    "related": RELATED,
    "nested-1": body(PLAIN_PART, entry(b"\xb3", RELATED)),
    "nested-16": nested(16),
    "nested-20": nested(20),
    "nested-broken": body(entry(b"\xa3", b"\x05\x01\x01\x83")),
    "utf16-big": body(utf16(1015, b"\xfe\xff", "abcd".encode("utf-16-be"))),
    "utf16-little": body(utf16(1014, b"", "abäć".encode("utf-16-le")), utf16(1015, b"\xff\xfe", "ab".encode("utf-16-le"))),
    "utf16-odd": body(utf16(1013, b"", "abc".encode("utf-16-be") + b"\0"), utf16(1000, b"", b"\0")),
    "utf16-html": body(utf16(1000, b"", "<p>\U0001f600".encode("utf-16-le"), b"\x82")),
    "boundary": body(entry(counted(b"\xc8" + text("boundary") + text("xyz")), b"--xyz\r\n")),
    "boundary-behind": body(entry(counted(b"\xc8" + text(b"\x85n\0boundary") + text("xyz")), b"1")),
    "boundary-run-in": body(entry(counted(b"\xc8\x01x\x81\xeaboundary\0" + text("xyz")), b"1")),
    "start-and-type": body(entry(counted(b"\xb3\x89" + text("a/b") + b"\x8a" + text("<s>")), body(PLAIN_PART))),
    "named-parameter": body(entry(counted(b"\x83" + text("format") + text("flowed") + b"\x81\xea"), b"x")),
    "other-headers": body(entry(b"\x9d", b"GIF89a", b"\xae\x03\x81\x85\x00\x8e" + text('"<x>.gif"') + b"\xc0" + text('"<c>'))),
    "unknown-type": body(entry(text("application/x-unheard"), b"1"), entry(text("noslash"), b"2")),
    "long-length": body(entry(b"\x1f\x81\x00" + b"\x83" + b"\x85" + text("n" * 125), b"long")),
    "data-too-long": body(b"\x01\x7f\x83x"),
    "headers-too-long": body(b"\x7f\x01\x83x"),
    "no-headers": body(b"\x00\x01x"),
    "many": bytes([200]) + b"\x01\x00\x83" * 200,
    "drm": body(entry(b"\xc8", body(PLAIN_PART)), entry(counted(b"\xc8" + text("boundary") + text("b")), body(PLAIN_PART))),
    "long-location": body(entry(b"\x83", b"x", location("l" * 600) + content_id("i" * 600))),
}

HEADERS_ALL = (
    start(0x80) + DATE + FROM + TO + TO_MAIL + TO_UNICODE + field(2, text("12345")) + field(1, text("bcc@example.org"))
    + SUBJECT + field(10, b"\x80") + field(8, counted(b"\x81" + long_integer(3600)))
    + field(7, counted(b"\x80" + long_integer(1100003600))) + field(15, b"\x81") + field(20, NO) + field(6, YES)
    + field(16, NO))

PDUS = {
    "send-req-related": HEADERS_ALL + RELATED_TYPE + RELATED,
    "send-req-mixed": start(0x80) + FROM_INSERTED + TO + MIXED_TYPE + body(PLAIN_PART, TEXT_PART),
    "send-req-applications": start(0x80) + FROM + TO + field(4, counted(
        b"\xb3\x8a\"" + text("s") + b"\x89" + text("a/b") + text("Application-ID") + text("app")
        + text("Reply-To-Application-ID") + text("reply"))) + body(PLAIN_PART),
    "send-req-nested": start(0x80) + FROM + TO + MIXED_TYPE + BODIES["nested-16"],
    "send-conf": start(0x81) + field(18, b"\x80") + field(19, encoded("Ok")) + field(11, text("m-1@example.org")),
    "send-conf-failed": start(0x81) + field(18, b"\xe0") + field(19, text("no")),
    "notification": start(0x82) + FROM + SUBJECT + field(10, b"\x83") + field(14, long_integer(30000))
    + field(8, counted(b"\x80" + long_integer(1300000000))) + field(3, text("http://mmsc.example.org/m1")),
    "notify-resp": start(0x83) + field(21, b"\x81") + field(17, YES),
    "retrieve-conf": start(0x84) + field(11, text("m-1")) + DATE + FROM + TO + field(2, text("Bo <bo@example.org>"))
    + field(22, text("plain")) + field(10, b"\x82") + field(15, b"\x82") + field(6, NO) + field(16, YES) + RELATED_TYPE
    + RELATED,
    "retrieve-conf-text": start(0x84) + DATE + FROM + field(4, counted(b"\x83\x81" + long_integer(1015)))
    + b"\xff\xfe" + "Hallo".encode("utf-16-le"),
    "retrieve-conf-picture": start(0x84) + DATE + FROM + field(4, b"\x9e") + JPEG,
    "acknowledge": start(0x85) + field(17, NO),
    "delivery": start(0x86, "") + field(11, text("m-1")) + TO + DATE + field(21, b"\x86"),
    "stored": FROM + TO + SUBJECT + field(10, b"\x80") + field(7, counted(b"\x81" + long_integer(600))) + field(15, b"\x01")
    + field(21, b"\x81") + field(14, b"\x85") + field(3, text("x")) + field(8, b"\x02\x81\x85") + field(20, NO) + field(6, YES)
    + field(16, NO) + field(6, YES) + DATE + field(11, text("i")) + field(18, b"\x80") + RELATED_TYPE + RELATED,
    "unknown-field": start(0x84) + b"\x99\x80",
    "field-zero": b"\x80",
    "long-field-id": b"\x01\x0c\x84",
    "bad-yes-no": field(6, b"\x82"),
    "length-past-end": field(22, b"\x1f\xff\xff\xff\xff\x0f\xea"),
    "length-below-charset": field(22, b"\x01\x02\x03\xe8a"),
    "nul-in-address": start(0x84) + field(9, counted(b"\x80" + encoded(b"a\0\x01\x1788"))),
    "from-token": field(9, b"\x02\x82a"),
    "unfinished-text": field(24, b"never ends"),
    "media-only": field(4, b"\x80\x81"),
    "drm-boundary": field(4, counted(b"\xc8" + text("boundary") + text("b"))) + b"raw",
    "charset-unknown": field(4, counted(b"\x83\x81\x6a")) + b"raw",
    "type-empty-body": field(4, b"\xb3"),
    "expiry-none": field(8, b"\x06\x81\x04\xff\xff\xff\xff"),
    "date-far": field(5, b"\x04\xff\xff\xff\xff") + field(7, b"\x06\x81\x04\xff\xff\xff\xff"),
    "size-negative": field(14, b"\x04\xff\xff\xff\xff"),
    "number-long": field(14, b"\x1f" + bytes(range(31))),
}


def mail(pdu, mms_type=0, header=0, rest=0):
    return struct.pack("<BBBBIII", 0x12, 0x10, mms_type, 0, header, rest, 0) + pdu


MAIL_FILES = {name: mail(PDUS[name], n) for n, name in enumerate((
    "stored", "send-req-related", "send-req-nested", "retrieve-conf-text", "retrieve-conf-picture", "send-conf", "unknown-field",
    "drm-boundary"))} | {
    "lengths-wrong": mail(PDUS["stored"], 3, 0xFFFFFFFF, 0xFFFFFFFF),
    "old-layout": b"\0\0" + bytes(20),
    "old-second-byte": b"\x12\0" + bytes(20),
    "prefix-alone": mail(b""),
    "prefix-cut": mail(b"")[:15],
}

CONTENT_TYPES = {
    "plain": "text/plain",
    "charset": "text/plain;charset=UTF-16",
    "quoted": 'application/vnd.wap.multipart.related;type="application/smil";start="<s>"',
    "blank": "text/plain ;charset=utf-8;name=a.txt;",
    "blank-behind": "text/plain; charset=utf-8; name=a.txt",
    "drm": "application/vnd.oma.drm.message;boundary=xyz",
    "one-quote": 'a/b;n="',
    "empty-value": "a/b;n=;m=;n=1",
    "no-equals": "a/b;nothing;more",
    "long": "a/" + "b" * 70 + ";" + "n" * 70 + "=" + "v" * 70,
    "no-slash": "plain",
    "two-slashes": "image/svg/xml",
    "unicode": "text/plain;name=Grüße€.txt",
    "empty": "",
    "upper": "IMAGE/JPEG",
    "last": "video/3gp2",
}

ADDRESSES = {
    "email": "<Ann>[EMAIL]ann@example.org",
    "plmn": "<>[PLMN]+4915112345",
    "unknown": "<Bob>[UNKNOWN]x",
    "list": "<Ann>[EMAIL]ann@example.org,<>[PLMN]12345,",
    "list-blanks": " <Ann>[EMAIL]ann@example.org ,\t<>[PLMN]12345, ,",
    "no-brackets": "ann@example.org",
    "reversed": ">Ann<]EMAIL[x",
    "name-with-mark": "<A>nn>[PL]MN]1[2]3",
    "unicode": "<Jürgen>[EMAIL]jürgen@example.org",
    "commas": ",,,",
    "half": "<Ann[EMAIL",
    "empty-value": "<Ann>[EMAIL]",
}


def units(value):
    return value.encode("utf-16-le", "surrogatepass")


def words(*values):
    return struct.pack(f"<{len(values)}i", *values)


def record(number, fixed, extra=b""):
    return words(number, len(extra), *fixed) + extra


URI = units("/tmp/t00000.txt")
DATE_TEXT = units("Thu May 20 03:40:13 1999")
TEN = units("0123456789")
PROXY_RECORDS = {
    "send": record(1, (7, len(URI), 0), URI),
    "register": record(2, (0, 2), units("a")),
    "deregister": record(3, (1, 0)),
    "retrieve": record(4, (2, len(URI), 0), URI),
    "abort": record(6, (4, 9)),
    "pause": record(7, (5, -1)),
    "resume": record(8, (6, 2147483647)),
    "request-complete": record(1, (3, 0, 4, 127), units("ab")),
    "registration-complete": record(2, (3, 0, 5)),
    "retrieval-complete": record(3, (len(URI),), URI),
    "progress": record(4, (1, 10, 100)),
    "status": record(5, (2, 130)),
    "notification": record(6, (len(URI), 4), units("t1") + URI),
    "delivery": record(7, (0, 6, 4, len(DATE_TEXT), 0), units("to1") + DATE_TEXT + units("id")),
    "two": record(5, (2, 130)) + record(4, (1, 10, 100)),
    "no-length": words(5, -1, 2, 130),
    "length-lowest": words(5, -2147483648, 2, 130),
    "length-highest": words(3, 2147483647, 4) + TEN,
    "length-above-limit": words(3, 1024 * 1024 + 1, 4) + TEN,
    "length-odd": words(3, 5, 4) + TEN,
    "text-longer": record(6, (2147483647, 2147483647), TEN),
    "text-negative": record(7, (0, -1, -2147483648, -2, 0), TEN),
    "text-odd": record(6, (3, 5), TEN),
    "text-date-first": record(7, (0, 0, 20, 20, 0), TEN),
    "surrogate": record(2, (0, 4), units("\ud800\0")),
    "type-9": words(9, 0, 0, 0),
}


def write(fuzzer, inputs):
    folder = CORPUS / fuzzer
    folder.mkdir(parents=True, exist_ok=True)
    for name, data in inputs.items():
        (folder / f"{name}.bin").write_bytes(data.encode() if isinstance(data, str) else data)


if __name__ == "__main__":
    write("pdu", PDUS)
    write("multipart", BODIES)
    write("mail_file", MAIL_FILES)
    write("content_type", CONTENT_TYPES)
    write("address", ADDRESSES)
    write("proxy_records", PROXY_RECORDS)

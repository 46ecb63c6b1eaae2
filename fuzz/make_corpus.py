#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Writes the seed corpora in corpus/: small inputs of each fuzzer that meet as many of its branches as can be.
Run it again after a change here; seeds that libFuzzer found worth keeping lie beside them and are left alone."""

import base64
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


def retrieval(*parts, header=b"", content_type=b"\xa3"):
    return (start(0x84) + header + field(4, content_type)
            + (uintvar(len(parts)) + b"".join(parts) if parts else b""))


def notified(*fields):
    return start(0x82) + b"".join(fields) + field(3, text("http://mmsc.example/1"))


def push(pdu, content_type=b"\xbe", headers=b"\xaf\x84", length=None):
    headers = content_type + headers
    return b"\x01\x06" + uintvar(len(headers) if length is None else length) + headers + pdu


PLAIN = counted(b"\x83\x81\xea")
MIME_TEXT = text("text/plain; charset=iso-8859-1; name=a.txt")
MESSAGES = {
    "readable": PDUS["retrieve-conf-picture"],
    "notification": PDUS["notification"],
    "push": push(PDUS["notification"]),
    "push-text-type": push(PDUS["notification"], text("application/vnd.wap.mms-message")),
    "push-wrong-length": push(PDUS["notification"], length=9),
    "push-other": push(b"<si/>", b"\xae"),
    "short-message": bytes.fromhex("060504 0B84 23F0") + push(PDUS["notification"]),
    "short-message-part": bytes.fromhex("0B0504 0B84 23F0 0003 01 02 01") + push(PDUS["notification"]),
    "text-fields": notified(text("X-Foo"), text("bar"), text(" "), text("x")),
    "later-fields": notified(field(0x19, b"\x80"), field(0x1A, encoded("ok")), field(0x37, text("app"))),
    "not-retrieved": start(0x84) + field(0x19, b"\xe2") + field(0x1A, encoded("gone")),
    "read-report": field(12, b"\x88") + field(13, b"\x92") + field(11, text("m1")) + field(0x1B, b"\x80"),
    "class-text": notified(field(10, text("auto")), field(10, text("new"))),
    "subject-latin1": notified(field(22, counted(b"\x84Gr\xfc\xdfe\0"))),
    "subject-utf16": notified(field(22, counted(b"\x02\x03\xf7" + "\ufeffé".encode("utf-16-be")))),
    "subject-low-charset": notified(field(22, counted(b"\x6aabc\0"))),
    "subject-undeclared": notified(field(22, b"\xe9t\xe9\0")),
    "subject-word": notified(field(22, text("=?utf-8?B?w7w=?= =?iso-8859-1?Q?_=FC?="))),
    "subject-koi8": notified(field(22, counted(b"\x02\x08\x24\xf0\xd2\0"))),
    "from-text": notified(field(9, text("+49"))),
    "from-overrun": notified(field(9, b"\x1e\x80" + text("+49"))),
    "addresses": notified(TO, field(2, text("Ann <+49/TYPE=plmn>")), field(1, text("1.2.3.4/TYPE=IPv4")),
                          field(23, text(""))),
    "zeros": notified(b"\0\0", field(22, text("a")), b"\0"),
    "junk-behind": notified() + b"\x07\x01",
    "type-as-text": retrieval(entry(PLAIN, b"a"), content_type=text("application/vnd.wap.multipart.related")),
    "type-quoted": retrieval(entry(PLAIN, b"a"), content_type=counted(
        b"\xb3\x8a" + text('"<s>"') + b"\x89" + text('"application/smil"'))),
    "type-number": retrieval(entry(PLAIN, b"a"), content_type=counted(b"\xb3\x89\x83\x99" + text("<s>"))),
    "alternative": retrieval(entry(PLAIN, b"a"), entry(b"\x82", b"<p>"), content_type=b"\xa6"),
    "single": retrieval(content_type=counted(b"\x83\x81\x84")) + b"\xe4",
    "single-text-type": retrieval(content_type=text("audio/x-own")) + b"sound",
    "single-drm": retrieval(content_type=b"\xc9") + b"\x01\x02",
    "parts": retrieval(
        entry(counted(b"\x83\x81\x84"), b"\xe4"), entry(MIME_TEXT, b"\xe4"),
        entry(counted(b"\x83\x81\x02\x03\xf7"), "ab".encode("utf-16-be") + b"\0"),
        entry(text("text/plain") + b"\x81\x84", b"\xe4"),
        entry(b"\x83", b"w6Q", text("Content-Transfer-Encoding") + text("base64")),
        entry(b"\x83", b"=C3=A4=\r\n", text("Content-Transfer-Encoding") + text("quoted-printable")),
        entry(b"\x9e", JPEG, b"\xae" + counted(b"\x81\x86" + text("a.jpg")) + b"\xc0\"" + text("<i>")),
        entry(b"\xc9", b"dcf"), entry(b"", b"x"), entry(b"\x9e", JPEG, b"\x8e" + text('"b.jpg"'))),
    "nested": retrieval(entry(b"\xa6", body(entry(PLAIN, b"a"), entry(b"\x82", b"b")), b"\xc0\"" + text("<n>")),
                        entry(b"\xa3", b"")),
    "count-too-large": start(0x84) + field(4, b"\xa3") + b"\x05" + entry(PLAIN, b"a"),
    "count-in-two-bytes": start(0x84) + field(4, b"\xa3") + b"\x80\x01" + entry(PLAIN, b"a"),
    "cut": retrieval(entry(PLAIN, b"a"), entry(b"\x9e", JPEG))[:-5],
    "bytes-behind": retrieval(entry(PLAIN, b"a")) + b"behind\0\0",
    "many": retrieval(*[entry(PLAIN, b"a")] * 130),
    "plain-fields": notified(
        TO, field(9, b"\x01\x81"), field(22, counted(b"\xea" + "Grüße\0".encode())),
        field(8, b"\x03\x81\x01\x3c"), field(14, b"\x02\x10\x00"), field(10, b"\x80"), field(6, b"\x81")),
    "plain-confirmation": start(0x81) + field(18, b"\x80") + field(19, text("Ok")) + field(11, text("m1")),
    "plain-delivery": b"\x8c\x86\x8d\x92" + field(11, text("m1")) + TO + field(5, b"\x01\x05") + field(21, b"\x81"),
    "plain-parts": retrieval(
        entry(counted(text("application/smil") + b"\x85" + text("s.xml")), b"<smil/>", b"\xc0\"" + text("<s>")),
        entry(counted(b"\x83\x81\xea\x85" + text("t.txt")), b"t\xc3\xbc", b"\x8e" + text("t.txt")),
        entry(b"\x83", b"no charset"), entry(text("x-own/type"), b"\xff"), entry(b"\x9e", JPEG, b"\xc0" + text("<i>")),
        content_type=counted(b"\xb3\x8a" + text("<s>") + b"\x89" + text("application/smil"))),
}


def drm_part(content_type, data, *fields):
    return "\r\n".join([f"Content-Type: {content_type}", *fields, "", ""]).encode() + data


def drm_message(*parts, boundary="boundary-1"):
    start = f"--{boundary}\r\n".encode()
    return b"".join(start + part + b"\r\n" for part in parts) + start[:-2] + b"--\r\n"


def drm_content(content_type, uri, headers, data=b"secret"):
    return (bytes([1, len(content_type), len(uri)]) + content_type.encode() + uri.encode()
            + uintvar(len(headers)) + uintvar(len(data)) + headers + data)


def box(kind, data, wide=False):
    return (struct.pack(">I4sQ", 1, kind, 16 + len(data)) if wide else struct.pack(">I4s", 8 + len(data), kind)) + data


FLAGS = bytes(4)
ISSUER = b"http://rights.example.org/?id=1"
HEADERS = (b"Encryption-Method: AES128CBC;padding=x;plaintextlen=6\r\nContent-Name: Sunset\r\nRights-Issuer: " + ISSUER
           + b"\r\nContent-Description: a b\r\n c\r\n")
COMMON = box(b"ohdr", FLAGS + struct.pack(">BBQHHH", 1, 1, 6, 7, len(ISSUER), 4) + b"cid:1@x" + ISSUER + b"A:b\0")
DISCRETE = box(b"odhe", FLAGS + b"\x0aimage/jpeg" + COMMON + box(b"udta", b""))
FILE_TYPE = box(b"ftyp", b"odcf\0\0\0\x02odcf")


def track(entry, fields):
    keys = box(b"sinf", box(b"frma", b"mp4a") + box(b"schi", box(b"odkm", FLAGS + COMMON)))
    table = box(b"stsd", FLAGS + b"\0\0\0\1" + box(entry, bytes(fields) + keys))
    return box(b"moov", box(b"trak", box(b"tkhd", b"") + box(b"mdia", box(b"minf", box(b"stbl", table)))))


DRM_CONTENT1 = {
    "whole": drm_content("image/jpeg", "cid:1@x", HEADERS),
    "no-headers": drm_content("a/b", "", b""),
    "parameter": drm_content("audio/amr;rate=1", "cid:1", b"X\r\n\r\nrights-issuer:x"),
    "long-headers": drm_content("a/b", "c", b"X: " + b"y" * 200 + b"\nRights-Issuer: x\n"),
    "headers-4gb": b"\x01\x03\x01a/bc\x8f\xff\xff\xff\x7f\0",
    "data-4gb": b"\x01\x03\x01a/bc\0\x8f\xff\xff\xff\x7fx",
    "control": drm_content("a/b", "c", b"Rights-Issuer: \0\r\nContent-Name: \x7f\r\n"),
}
DRM_CONTENT2 = {
    "whole": FILE_TYPE + box(b"odrm", FLAGS + DISCRETE + box(b"odda", FLAGS + struct.pack(">Q", 1) + b"x", True), True),
    "narrow": FILE_TYPE + box(b"free", b"x") + box(b"odrm", FLAGS + DISCRETE) + box(b"mdri", b""),
    "to-the-end": FILE_TYPE + b"\0\0\0\0odrm" + FLAGS + DISCRETE,
    "film": box(b"ftyp", b"3gp6\0\0\0\x003gp6opf2") + track(b"encv", 78),
    "sound": box(b"ftyp", b"opf2\0\0\0\0") + track(b"enca", 28),
    "box-4gb": FILE_TYPE + b"\xff\xff\xff\xffodrm" + FLAGS + DISCRETE,
    "box-huge": FILE_TYPE + b"\0\0\0\x01odrm" + b"\xff" * 8 + FLAGS + DISCRETE,
    "deep": FILE_TYPE + (b"\0\0\0\0odrm" + FLAGS) * 50,
    "url-past-end": FILE_TYPE + box(b"odrm", FLAGS + box(b"odhe", FLAGS + b"\3a/b" + box(b"ohdr", FLAGS + b"\1" * 12 + b"\xff" * 4))),
}
RIGHTS1 = (b'<?xml version="1.0"?>\n<!DOCTYPE o-ex:rights PUBLIC "-//OMA//DTD DRMREL 1.0//EN" "x">\n<o-ex:rights '
           b'xmlns:o-ex="http://odrl.net/1.1/ODRL-EX" xmlns:o-dd="http://odrl.net/1.1/ODRL-DD"><o-ex:context><o-dd:version>1.0'
           b"</o-dd:version></o-ex:context><o-ex:agreement><o-ex:asset><o-ex:context><o-dd:uid>cid:1@x</o-dd:uid></o-ex:context>"
           b"</o-ex:asset><o-ex:permission><o-dd:play/></o-ex:permission></o-ex:agreement></o-ex:rights>")
RIGHTS2 = (b'<roap:protectedRO xmlns:roap="urn:oma:bac:dldrm:roap-1.0"><roap:ro riURL="http://rights.example.org/?a&amp;b">'
           b"<rights><asset><context><uid> cid:1@x\n</uid></context></asset></rights></roap:ro></roap:protectedRO>")
DRM_RIGHTS_XML = {
    "version-1": RIGHTS1,
    "version-2": RIGHTS2,
    "no-prefix": b'<rights xmlns="http://odrl.net/1.1/ODRL-EX"><!-- c --><asset><uid><![CDATA[u]]></uid></asset></rights>',
    "undeclared": b"<o-ex:rights><a:asset><a:uid>&#117;</a:uid></a:asset><x",
    "utf16": b"\xff\xfe" + RIGHTS2.decode().encode("utf-16-le"),
    "entities": b'<!DOCTYPE r [<!ENTITY a "aaaa"><!ENTITY b "&a;&a;&a;">]><o-ex:rights><asset><uid>&b;</uid></asset></o-ex:rights>',
    "deep": b"<o-ex:rights>" + b"<asset>" * 100 + b"<uid>u",
}
DRM_RIGHTS_WBXML = {
    "whole": bytes.fromhex("030E6A00C50585068601464703312E30000101494A464803") + b"cid:1@x\0"
    + bytes.fromhex("0101014D0F010101"),
    "public-id": bytes.fromhex("0300006A1B") + b"-//OMA//DTD DRMREL 1.0//EN\0" + bytes.fromhex("454A488300010101"),
    "names-in-table": bytes.fromhex("010E6A13") + b"rights\0x:asset\0uid\0" + bytes.fromhex("44004407440F037500010101"),
    "attributes": bytes.fromhex("030E6A026100C5040003760083000241C30178C080000000014AC8C3017501010101"),
    "extensions": bytes.fromhex("030E6A0045407600417600420080810181058205C0C1C20001028F0143050101"),
    "table-4gb": bytes.fromhex("030E6A8FFFFFFF7F4501"),
    "deep": bytes.fromhex("030E6A00") + b"\x45" + b"\x4a" * 200 + bytes.fromhex("48037500"),
}
DRM_MESSAGES = {
    "forward-lock": drm_message(drm_part("image/jpeg", JPEG, "Content-Transfer-Encoding: binary")),
    "base64": drm_message(drm_part("image/jpeg", b"/9j/4AAQ", "Content-Transfer-Encoding: base64")),
    "combined": drm_message(drm_part("application/vnd.oma.drm.rights+xml", RIGHTS1), drm_part("image/jpeg", JPEG)),
    "combined-binary": drm_message(drm_part("application/vnd.oma.drm.rights+wbxml", DRM_RIGHTS_WBXML["whole"]),
                                   drm_part("image/jpeg", JPEG)),
    "combined-base64": drm_message(drm_part("application/vnd.oma.drm.ro+xml", base64.encodebytes(RIGHTS2),
                                            "Content-Transfer-Encoding: base64"), drm_part("audio/amr", b"#!AMR")),
    "combined-quoted": drm_message(drm_part(
        "application/vnd.oma.drm.rights+xml", b"<o-ex:rights=3E=\r\n<asset><uid>=75</uid>= \n=zz",
        "Content-Transfer-Encoding: quoted-printable"), drm_part("image/gif", b"GIF89a")),
    "content-1": drm_message(drm_part("application/vnd.oma.drm.content", DRM_CONTENT1["whole"])),
    "content-2": drm_message(drm_part("application/vnd.oma.drm.dcf", base64.b64encode(DRM_CONTENT2["whole"]),
                                      "Content-Transfer-Encoding: base64"), boundary="'()+_,-./:=? x"),
    "line-feeds": b"\r\n--b  \nContent-ID: <1>\nContent-Type:\n image/gif\n\t; name=a\n\nGIF89a\n--b--\n",
    "no-delimiter": b"--b\r\nContent-Type: application/vnd.oma.drm.rights+xml\r\n\r\n--bb\r\n--",
}


def telephony(number, payload=b"", request=0):
    return struct.pack("<IHH", len(payload), number, request) + payload


def pascal(value):
    return bytes([len(value)]) + value.encode("latin-1")


def sized(data):
    return struct.pack("<H", len(data)) + data


CLIENT_ID = bytes(range(16))
SEND_TO = pascal("") + pascal("+43664")
ARRIVED = pascal("+4366") + pascal("+43664") + struct.pack("<q", 1100000000)
TELEPHONY_RECORDS = {
    "hello": telephony(1, struct.pack("<I", 1) + CLIENT_ID + struct.pack("<I", 2) + pascal("WSMS")),
    "hello-version-2": telephony(1, struct.pack("<I", 2) + b"whatever"),
    "send-text": telephony(2, struct.pack("<iBBHH", 1, 3, 0, 0, 0) + SEND_TO + sized(units("Hi"))),
    "send-unicode": telephony(2, struct.pack("<iBBHH", 2, 0, 0, 0, 0) + SEND_TO + sized(units("\u0416\U0001f600"))),
    "send-data": telephony(2, struct.pack("<iBBHH", 3, 2, 1, 2948, 9200) + SEND_TO + sized(b"\0\xff")),
    "send-half-unit": telephony(2, struct.pack("<iBBHH", 3, 0, 0, 0, 0) + SEND_TO + sized(b"a")),
    "send-nul": telephony(2, struct.pack("<iBBHH", 3, 2, 0, 0, 0) + pascal("") + pascal("1\0") + sized(b"")),
    "send-body-past-end": telephony(2, struct.pack("<iBBHH", 3, 2, 0, 0, 0) + SEND_TO + b"\xff\xff"),
    "register": telephony(3, b"\x84\x0b\x01", 1),
    "deregister": telephony(4, b"\x84\x0b", 2),
    "service-centre": telephony(5, pascal("+4366"), 65535),
    "message-answer": telephony(6, struct.pack("<QB", 2**64 - 1, 1)),
    "result-taken": telephony(7, struct.pack("<i", -1)),
    "welcome": telephony(129, struct.pack("<II", 1, 2) + pascal("+4366")),
    "refused": telephony(130, struct.pack("<I", 2)),
    "done": telephony(131, struct.pack("<I", 4), 1),
    "done-unknown": telephony(131, struct.pack("<I", 5), 1),
    "result": telephony(132, struct.pack("<iii", 1, 255, 65538)),
    "message-text": telephony(133, struct.pack("<QBBHH", 1, 0, 0, 0, 0) + ARRIVED + sized(units("Hi"))),
    "message-8-bit": telephony(133, struct.pack("<QBBHH", 2, 1, 0, 0, 0) + ARRIVED + sized(b"H\xe9")),
    "message-data": telephony(133, struct.pack("<QBBHH", 3, 2, 1, 2948, 9200) + ARRIVED + sized(b"\0\xff")),
    "modem-state": telephony(134, struct.pack("<I", 3) + pascal("")),
    "several": telephony(132, struct.pack("<iii", 1, 0, 0)) + telephony(131, struct.pack("<I", 0), 7)
    + telephony(134, struct.pack("<I", 2) + pascal("+4366")),
    "unknown-type": telephony(999, b"\x01\x02") + telephony(0),
    "length-longest": struct.pack("<IHH", 66 * 1024, 133, 0),
    "length-above-limit": struct.pack("<IHH", 66 * 1024 + 1, 133, 0),
    "length-highest": telephony(0) + b"\xff\xff\xff\xff",
}


def command(number, *words, said=""):
    data = units(said)
    return struct.pack("<ii", number, len(data)) + struct.pack(f"<{len(words)}i", *words) + data


PROXY_COMMANDS = {
    "all": command(1, 0, 4, 0, said="ab") + command(2, 1, 2, said="c") + command(3, 2, 0)
    + command(4, 3, 2, 0, said="d") + command(6, 4, 0) + command(7, 5, 1) + command(8, 6, 2),
    "length-minus-one": struct.pack("<iiii", 6, -1, 1, 0) + command(7, 2, 0),
    "text-length-past-end": command(2, 0, 100, said="a"),
    "text-length-odd": command(2, 0, 3, said="ab"),
    "text-length-negative": command(2, 0, -1, said="ab"),
    "unknown-5": command(7, 0, 0) + struct.pack("<ii", 5, 0) + command(7, 1, 0),
    "unknown-9": struct.pack("<ii", 9, 0),
    "unknown-0": struct.pack("<ii", 0, 0),
    "length-negative": command(8, 0, 0) + struct.pack("<ii", 1, -2),
    "length-longest": struct.pack("<iiii", 2, 65536, 0, 65536) + b"a\0" * 32768 + command(6, 1, 0),
    "length-above-limit": struct.pack("<iiii", 2, 65537, 0, 65536) + b"a\0" * 40,
    "length-highest": struct.pack("<iiii", 4, 2**31 - 1, 0, 0),
    "cut-in-the-middle": command(2, 0, 10, said="chess")[:-3],
}


# What an MMSC pushes, and what it answers to a send request.
WAITING = start(0x82) + field(10, b"\x80") + field(14, long_integer(300000))
NOTIFICATIONS = {
    "bare": start(0x82) + field(3, text("http://mmsc.example/1")),
    "full": start(0x82) + FROM + SUBJECT + field(10, b"\x81") + field(14, long_integer(300000))
    + field(8, counted(b"\x81" + long_integer(604800))) + field(3, text("http://mmsc.example/2")),
    "expiry-date": WAITING + field(8, counted(b"\x80" + long_integer(1800000000))) + field(3, text("http://a/b")),
    "size-absurd": start(0x82) + field(14, b"\x04\xff\xff\xff\xff") + field(3, text("http://a/b")),
    "no-location": WAITING,
    "no-transaction": start(0x82, "") + field(3, text("http://a/b")),
    "pushed": b"\x01\x06\x03\xbe\xaf\x84" + WAITING + field(3, text("http://a/b")),
    "delivered": start(0x86, "") + field(11, text("m-1")) + TO + DATE + field(21, b"\x81"),
    "delivered-bare": start(0x86, "") + field(11, text("m-1")),
    "delivered-nothing": start(0x86, "") + field(21, b"\x81"),
    "read": start(0x88, "", 0x91) + field(11, text("m-1")) + TO + FROM_INSERTED + DATE + b"\x9b\x80",
    "accepted": start(0x81) + field(18, b"\x80") + field(11, text("m-1")),
    "denied": start(0x81) + field(18, b"\x82") + field(19, encoded("Kein Guthaben für MMS")),
    "transient": start(0x81) + field(18, b"\xc0"),
    "status-of-a-future": start(0x81) + field(18, b"\xff"),
    "status-none": start(0x81),
    "another": start(0x81, "t-2") + field(18, b"\x80"),
}

# What `wmsg decode` is given.
WALKED = {name: MESSAGES[name] for name in (
    "readable", "push", "push-text-type", "push-wrong-length", "push-other", "short-message", "short-message-part",
    "text-fields", "later-fields", "not-retrieved", "read-report", "class-text", "subject-utf16", "from-overrun",
    "addresses", "zeros", "junk-behind", "type-number", "alternative", "parts", "nested", "count-too-large", "cut",
    "bytes-behind", "plain-parts")} | {
    "mail": MAIL_FILES["stored"],
    "mail-cut": MAIL_FILES["stored"][:40],
    "push-headers": push(PDUS["notification"], headers=b"\xaf" + text("x-wap:a") + b"\xb4\x87" + text("X-A") + text("b")),
    "deep": retrieval(entry(b"\xa3", nested(20))),
    "every-id": start(0x84) + b"".join(field(id, b"\x80") for id in range(0x19, 0x80)),
    "steering": notified(field(0x1A, text("\x1b[2J\u202e")), text("X-\u202e") + text("\x9b"), field(22, text("a\rb"))),
}

# "hello" and more, between a phone and its network.
SENDER = bytes.fromhex("0C91942143658709")
NAME = bytes.fromhex("07D041E13008")
CENTRE = bytes.fromhex("0791447700090000")
NOW = bytes.fromhex("62111221436540")
HELLO = bytes.fromhex("05E8329BFD06")
PORTS = bytes.fromhex("0605040B8423F0")
PART = bytes.fromhex("0500030703FF")
WIDE_PART = bytes.fromhex("0608040102FFFF")


def deliver(data, dcs=0, first=0x04, sender=SENDER, time=NOW):
    return bytes([first]) + sender + bytes([0, dcs]) + time + data


def submit(data, dcs=0, first=0x01, validity=b"", recipient=SENDER):
    return bytes([first, 42]) + recipient + bytes([0, dcs]) + validity + data


def octets(data):
    return bytes([len(data)]) + data


TPDUS = {
    "deliver": deliver(HELLO),
    "deliver-empty": deliver(b"\0"),
    "deliver-behind-centre": CENTRE + deliver(HELLO),
    "deliver-behind-none": b"\0" + deliver(HELLO),
    "deliver-name": deliver(HELLO, sender=NAME),
    "deliver-nobody": deliver(HELLO, sender=b"\0\x81"),
    "deliver-odd-digits": deliver(HELLO, sender=bytes.fromhex("05812143F5")),
    "deliver-keys": deliver(HELLO, sender=bytes.fromhex("0581BADCFE")),
    "deliver-fill-inside": deliver(HELLO, sender=bytes.fromhex("06812FF3F5")),
    "deliver-all-flags": deliver(HELLO, first=0xA8),
    "deliver-no-time": deliver(HELLO, time=bytes(7)),
    "deliver-far-zone": deliver(HELLO, time=bytes.fromhex("6211122143659F")),
    "deliver-ucs2": deliver(octets("Ж😀".encode("utf-16-be")), 8),
    "deliver-ucs2-odd": deliver(octets(b"\0a\xd8"), 8),
    "deliver-octets": deliver(octets(bytes(range(140))), 4),
    "deliver-compressed": deliver(octets(b"\x01\x02"), 0x20),
    "deliver-waiting": deliver(HELLO, 0xC8),
    "deliver-extension": deliver(bytes([4]) + bytes.fromhex("9B32BD0D")),
    "deliver-160": deliver(bytes([160]) + bytes.fromhex("C3") * 140),
    "deliver-161": deliver(bytes([161]) + bytes.fromhex("C3") * 141),
    "deliver-push": deliver(octets(PORTS + b"\x01\x06\x03\xbe\xaf\x84" + WAITING), 0xF5, 0x44),
    "deliver-part": deliver(bytes.fromhex("0C050003070201D06536FB0D"), 0, 0x44),
    "deliver-wide-part": deliver(octets(WIDE_PART + b"abc"), 4, 0x44),
    "deliver-impossible-part": deliver(octets(PART + b"abc"), 4, 0x44),
    "deliver-header-alone": deliver(bytes.fromhex("0705000307020100"), 0, 0x44),
    "deliver-empty-header": deliver(b"\x01\0", 0, 0x44),
    "deliver-header-too-long": deliver(octets(b"\x06\x05\x04"), 4, 0x44),
    "deliver-header-wrong": deliver(octets(b"\x03\x05\x04\0"), 4, 0x44),
    "deliver-cut": deliver(HELLO)[:-1],
    "deliver-more": deliver(HELLO) + b"\0",
    "submit": submit(HELLO),
    "submit-behind-centre": CENTRE + submit(HELLO),
    "submit-day": submit(HELLO, first=0x11, validity=b"\xa7"),
    "submit-until": submit(HELLO, first=0x19, validity=NOW),
    "submit-seconds": submit(HELLO, first=0x09, validity=bytes.fromhex("021E0000000000")),
    "submit-clock": submit(HELLO, first=0x09, validity=bytes.fromhex("43102030000000")),
    "submit-all-flags": submit(HELLO, first=0xA5),
    "submit-ports": submit(octets(PORTS + b"\x01\x02"), 4, 0x41),
    "report": b"\x06\x2a" + SENDER + NOW + NOW + b"\0",
    "report-text": b"\x06\x2a" + SENDER + NOW + NOW + b"\x46\x07\0\0" + HELLO,
    "report-extended": b"\x06\x2a" + SENDER + NOW + NOW + b"\x46\x84\x80\0" + HELLO,
    "command": b"\x02\x2a\0\0\x2a" + SENDER + b"\0",
}


def sent(tpdu, end=b"\x1a", count=None):
    pdu = (CENTRE + tpdu).hex().upper().encode()
    return b"AT+CMGS=%d\r" % (len(tpdu) if count is None else count) + pdu + end


MODEM_LINES = {
    "hello": b"\x1bAT\rATE1\rAT+CMEE=1\rAT+CGMM\rAT+CGMI;+CGMR;+CGSN\rATI\rAT+CPIN?\rAT+CREG?\r",
    "several": b"ATE0V1 X4&C1S0=0S3?+CMEE=1;+CNMI=2,1\r",
    "messages": b'AT+CSMS=0;+CMGF=0;+CPMS="SM","ME";+CSCA?\rAT+CNMI=?\rAT+CNMI=2,2,0,0\rAT+CMGL=4\rAT+CMGD=1,4\r',
    "send": sent(submit(HELLO)),
    "send-and-go-on": sent(submit(HELLO)) + b"AT+CMGR=1\r" + sent(submit(HELLO)) + b"AT\r",
    "send-nothing": b"AT+CMGS=20\r\x1bAT\r",
    "send-other-length": sent(submit(HELLO), count=9),
    "send-no-hex": b"AT+CMGS=10\rhello\x1a",
    "send-too-long": b"AT+CMGS=10\r" + b"0" * 1100 + b"\x1a",
    "send-too-long-given-up": b"AT+CMGS=10\r" + b"0" * 1100 + b"\x1bAT\r",
    "store-and-send": sent(submit(HELLO)).replace(b"S=", b"W=") + b"AT+CMSS=1\rAT+CMGR=1\rAT+CMGL=2;+CPMS?\r",
    "centre": b'AT+CSCA="15550100",145\rAT+CSCA?\rAT+CSCA=""\rAT+CSCA="a"\r',
    "quoted": b'AT+CPIN="1,2;3"\rAT+CPMS="SM\r',
    "edited": b"ATX\b\bT+CG\bSN\r\n\0\x1a",
    "too-long": b"AT" + b"E1" * 600 + b"\r",
    "unknown": b"hello\rAT#X\rAT+NONE\rAT+\rAT&\rATS\rAT+CMGL=?1\rATV0\r",
}


# What clients say to the telephony daemon.
HELLO = TELEPHONY_RECORDS["hello"]
TELEPHONY_TALKS = {
    "ports": HELLO + TELEPHONY_RECORDS["register"] * 2 + TELEPHONY_RECORDS["deregister"] * 2,
    "send": HELLO + TELEPHONY_RECORDS["send-text"] + TELEPHONY_RECORDS["send-data"] + TELEPHONY_RECORDS["send-text"],
    "send-to-own-port": HELLO + TELEPHONY_RECORDS["register"] + TELEPHONY_RECORDS["send-data"],
    "refused": HELLO + telephony(2, struct.pack("<iBBHH", 4, 2, 0, 0, 0) + pascal("x") + pascal("") + sized(b"")),
    "too-long": HELLO + telephony(2, struct.pack("<iBBHH", 5, 2, 0, 0, 0) + SEND_TO + sized(bytes(141))),
    "confirmed": HELLO + TELEPHONY_RECORDS["send-text"] + telephony(7, struct.pack("<i", 1)),
    "centre": HELLO + TELEPHONY_RECORDS["service-centre"],
    "second-greeting": HELLO + HELLO,
    "other-version": TELEPHONY_RECORDS["hello-version-2"],
    "no-greeting": TELEPHONY_RECORDS["send-text"],
    "half-a-unit": HELLO + TELEPHONY_RECORDS["send-half-unit"],
    "unknown-and-cut": HELLO + TELEPHONY_RECORDS["unknown-type"] + TELEPHONY_RECORDS["send-text"][:-1],
    "impossible-length": HELLO + TELEPHONY_RECORDS["length-above-limit"],
}


def sms_part(header, time=1, sender=1, body=b"x"):
    return bytes([len(header)]) + header + bytes([time, sender]) + body


def part(reference, total, number):
    return sms_part(bytes([5, 0, 3, reference, total, number]))


CONCATENATIONS = {
    "in-order": part(7, 3, 1) + part(7, 3, 2) + part(7, 3, 3),
    "out-of-order": part(7, 3, 3) + part(7, 3, 1) + part(7, 3, 2),
    "two-messages": part(7, 2, 1) + part(8, 2, 2) + part(8, 2, 1) + part(7, 2, 2),
    "reference-again": part(7, 2, 1) + sms_part(b"\5\0\3\7\2\1", 30) + sms_part(b"\5\0\3\7\2\2", 31) + part(7, 2, 2),
    "wide-reference": sms_part(b"\6\x08\4\x12\x34\2\1") + sms_part(b"\6\x08\4\x12\x34\2\2"),
    "ports": sms_part(b"\x0b\0\3\7\2\1\5\4\x0b\x84\x23\xf0") + sms_part(b"\x0b\0\3\7\2\2\5\4\x0b\x84\x23\xf0"),
    "impossible-parts": part(7, 0, 0) + part(7, 2, 3) + part(7, 1, 1) + part(7, 255, 255),
    "broken-header": sms_part(b"\5\0\4\7\2\1") + sms_part(b"\xff"),
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
    write("notification", NOTIFICATIONS)
    write("proxy_commands", PROXY_COMMANDS)
    write("telephony_records", TELEPHONY_RECORDS)
    write("telephony_daemon", TELEPHONY_TALKS)
    write("concatenation", CONCATENATIONS)
    write("intake", MESSAGES)
    write("tpdu", TPDUS)
    write("message_walk", WALKED)
    write("modem_line", MODEM_LINES)
    write("drm_message", DRM_MESSAGES)
    write("drm_content1", DRM_CONTENT1)
    write("drm_content2", DRM_CONTENT2)
    write("drm_rights_xml", DRM_RIGHTS_XML)
    write("drm_rights_wbxml", DRM_RIGHTS_WBXML)

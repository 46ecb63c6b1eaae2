// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/push_envelope.h"

#include "services/intake/media_type.h"
#include "services/intake/wire_values.h"

#include <optional>

using namespace Qt::StringLiterals;

// short-message := header-length { element length octets } push
// push          := transaction (0x06 | 0x07) headers-length content-type headers pdu

namespace wmsg::intake {

namespace {

constexpr quint8 kPush = 0x06;
constexpr quint8 kConfirmedPush = 0x07;
constexpr quint8 kMessageType = 0x8C;
constexpr quint8 kConcatenation = 0x00;
constexpr quint8 kLongConcatenation = 0x08;
// Behind a longer one a short message has no room for a push; the ids of fields begin there.
constexpr qsizetype kLongestUserDataHeader = 127;
constexpr auto kMms = "application/vnd.wap.mms-message";

quint8 byteAt(QByteArrayView bytes, qsizetype i)
{
    return i < bytes.size() ? static_cast<quint8>(bytes[i]) : 0;
}

bool isPush(QByteArrayView bytes)
{
    return bytes.size() > 3 && (byteAt(bytes, 1) == kPush || byteAt(bytes, 1) == kConfirmedPush);
}

/// A user data header, and whether it says that this is one part of several.
struct UserDataHeader {
    qsizetype end = 0;
    int parts = 1;
    int part = 1;
};

std::optional<UserDataHeader> readUserDataHeader(QByteArrayView bytes)
{
    UserDataHeader header;
    const qsizetype length = byteAt(bytes, 0);
    header.end = length + 1;
    if (length < 2 || length > kLongestUserDataHeader || header.end >= bytes.size()) {
        return std::nullopt;
    }
    qsizetype i = 1;
    while (i + 1 < header.end) {
        const quint8 element = byteAt(bytes, i);
        const quint8 size = byteAt(bytes, i + 1);
        if (element == kConcatenation && size == 3) {
            header.parts = byteAt(bytes, i + 3);
            header.part = byteAt(bytes, i + 4);
        } else if (element == kLongConcatenation && size == 4) {
            header.parts = byteAt(bytes, i + 4);
            header.part = byteAt(bytes, i + 5);
        }
        i += 2 + size;
    }
    return i == header.end ? std::optional(header) : std::nullopt;
}

/// Where a PDU begins that the length of the push headers does not lead to: at its message type,
/// with a transaction id or a version behind it.
qsizetype findPdu(QByteArrayView bytes)
{
    constexpr quint8 kLowestType = 0x80;
    constexpr quint8 kHighestType = 0x97;
    for (qsizetype i = 0; i + 2 < bytes.size(); ++i) {
        const quint8 type = byteAt(bytes, i + 1);
        const quint8 next = byteAt(bytes, i + 2);
        if (byteAt(bytes, i) == kMessageType && type >= kLowestType && type <= kHighestType
            && (next == 0x98 || next == 0x8D)) {
            return i;
        }
    }
    return -1;
}

/// Whether a PDU whose first field is another one begins here: its message type follows.
bool isHeaderInOtherOrder(QByteArrayView bytes)
{
    constexpr quint8 kFirstField = 0x81;
    constexpr quint8 kLastField = 0x98;
    constexpr quint8 kContentType = 0x84;
    WSP_Stream stream = streamOver(bytes);
    quint8 id = 0;
    while (stream.readByte(id) && id >= kFirstField && id <= kLastField && id != kContentType) {
        if (id == kMessageType) {
            return true;
        }
        if (!skipValue(stream)) {
            return false;
        }
    }
    return false;
}

bool readPush(QByteArrayView push, QByteArrayView &pdu, Journal &journal)
{
    WSP_Stream stream = streamOver(push);
    stream.pos = 2;
    quint32 length = 0;
    if (!stream.readUintvar(length)) {
        return journal.problem(push.data() + 2, u"the push ends inside its length"_s);
    }
    const qint32 headers = stream.pos;
    const bool isLengthPossible = length > 0 && length <= quint32(stream.remaining());
    WSP_Stream header(stream.data, isLengthPossible ? headers + qint32(length) : stream.size);
    header.pos = headers;
    const MediaType type = readMediaType(header);
    if (type.media.toLower() != kMms) {
        return journal.problem(
            push.data() + headers,
            u"this is a push of \"%1\""_s.arg(QString::fromUtf8(type.media.left(80))));
    }
    const qsizetype begin = isLengthPossible ? headers + qint32(length) : push.size();
    pdu = push.sliced(begin);
    if (byteAt(pdu, 0) == kMessageType || isHeaderInOtherOrder(pdu)) {
        return true;
    }
    const qsizetype found = findPdu(push.sliced(headers));
    if (found < 0) {
        return journal.problem(push.data() + begin,
                               u"there is no message behind the push headers"_s);
    }
    journal.step(push.data() + 2, u"the length of the push headers is wrong"_s);
    pdu = push.sliced(headers + found);
    return true;
}

} // namespace

bool unwrapped(QByteArrayView bytes, QByteArrayView &pdu, Journal &journal)
{
    pdu = bytes;
    // A push may have any transaction, and 8C too; no message is of type 06 or 07.
    if (isPush(bytes)) {
        return readPush(bytes, pdu, journal);
    }
    if (byteAt(bytes, 0) == kMessageType) {
        return true;
    }
    const auto header = readUserDataHeader(bytes);
    if (!header || !isPush(bytes.sliced(header->end))) {
        return true; // its fields may stand in any order
    }
    if (header->parts > 1) {
        return journal.problem(
            bytes.data(),
            u"this is part %1 of %2 of a short message"_s.arg(header->part).arg(header->parts));
    }
    return readPush(bytes.sliced(header->end), pdu, journal);
}

} // namespace wmsg::intake

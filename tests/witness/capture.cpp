// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// capture := file-header *( packet-header ip-header tcp-header segment )
//   file-header, packet-header: little-endian, 24 and 16 bytes   ip-header, tcp-header: 20 bytes
//   each, big-endian, without options; their checksums are 0, which readers do not mind

#include "tests/witness/capture.h"

#include <QtCore/QtEndian>

#include <algorithm>

namespace {

constexpr quint32 kMagic = 0xA1B2C3D4;
constexpr quint16 kMajorVersion = 2;
constexpr quint16 kMinorVersion = 4;
constexpr quint32 kLongestPacket = 65535;
constexpr quint32 kRawIp = 101;

constexpr qsizetype kSegmentSize = 1400;
constexpr quint16 kHttpPort = 80;
constexpr quint16 kPhonePort = 40000;
constexpr quint32 kSender = 0x0A000001;
constexpr quint32 kReceiver = 0x0A000002;

template <typename Integer> void little(QByteArray &out, Integer value)
{
    const Integer bytes = qToLittleEndian(value);
    out.append(reinterpret_cast<const char *>(&bytes), sizeof bytes);
}

template <typename Integer> void big(QByteArray &out, Integer value)
{
    const Integer bytes = qToBigEndian(value);
    out.append(reinterpret_cast<const char *>(&bytes), sizeof bytes);
}

QByteArray fileHeader()
{
    QByteArray out;
    little(out, kMagic);
    little(out, kMajorVersion);
    little(out, kMinorVersion);
    little(out, quint32(0)); // time zone
    little(out, quint32(0)); // accuracy
    little(out, kLongestPacket);
    little(out, kRawIp);
    return out;
}

QByteArray tcpSegment(QByteArrayView bytes, quint32 sequence, Direction direction)
{
    const bool isRequest = direction == Direction::Request;
    QByteArray out;
    big(out, isRequest ? kPhonePort : kHttpPort);
    big(out, isRequest ? kHttpPort : kPhonePort);
    big(out, sequence);
    big(out, quint32(1)); // acknowledged
    big(out, quint16(0x5018)); // a header of five words; push and acknowledge
    big(out, quint16(65535)); // window
    big(out, quint16(0)); // checksum
    big(out, quint16(0)); // urgent
    return out + bytes.toByteArray();
}

QByteArray ipPacket(const QByteArray &payload)
{
    QByteArray out;
    big(out, quint16(0x4500)); // version 4, a header of five words
    big(out, quint16(20 + payload.size()));
    big(out, quint32(0)); // not in fragments
    big(out, quint16(0x4006)); // time to live; TCP
    big(out, quint16(0)); // checksum
    big(out, kSender);
    big(out, kReceiver);
    return out + payload;
}

QByteArray httpMessage(QByteArrayView pdu, Direction direction)
{
    const QByteArray firstLine = direction == Direction::Request
        ? "POST /mms HTTP/1.1\r\nHost: mmsc.example.org\r\n"
        : "HTTP/1.1 200 OK\r\n";
    return firstLine + "Content-Type: application/vnd.wap.mms-message\r\nContent-Length: "
        + QByteArray::number(pdu.size()) + "\r\n\r\n" + pdu.toByteArray();
}

} // namespace

QByteArray captureOf(QByteArrayView pdu, Direction direction)
{
    const QByteArray message = httpMessage(pdu, direction);
    QByteArray out = fileHeader();
    for (qsizetype at = 0; at < message.size(); at += kSegmentSize) {
        const auto segment = QByteArrayView(message).sliced(
            at, std::min<qsizetype>(kSegmentSize, message.size() - at));
        const QByteArray packet = ipPacket(tcpSegment(segment, quint32(1 + at), direction));
        little(out, quint32(0)); // seconds
        little(out, quint32(at)); // microseconds
        little(out, quint32(packet.size()));
        little(out, quint32(packet.size()));
        out += packet;
    }
    return out;
}

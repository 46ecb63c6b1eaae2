// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/pdus.h"
#include "tests/support/hex.h"

#include <mms/model/wmmsmsg.h>

#include <QtTest/QtTest>

/// The content of every message below: the content type with the parameters of applications, one
/// that the library does not write among them, and a body that is nobody's business.
inline QByteArray content()
{
    return fromHex("84 1F 24 B3" // content type, 36 bytes: related
                   "89 61 2F 62 00" // type: a/b
                   "8A 3C 73 3E 00") // start: <s>
        + QByteArray("Application-ID\0a.b\0", 19) + QByteArray("X-Y\0z\0", 6)
        + fromHex("00 FF 00 C0 FF EE 8C 80");
}

/// A send request of a phone, with more header fields in hex.
inline QByteArray sendRequest(const QByteArray &fields, const QByteArray &transactionId = "T1")
{
    return fromHex("8C 80 98") + transactionId + fromHex("00 8D 92") + fromHex(fields) + content();
}

inline QByteArray textHex(const QByteArray &text)
{
    return toHex(text + '\0') + ' ';
}
inline QByteArray to(const QByteArray &address)
{
    return "97 " + textHex(address);
}
inline QByteArray cc(const QByteArray &address)
{
    return "82 " + textHex(address);
}
inline QByteArray bcc(const QByteArray &address)
{
    return "81 " + textHex(address);
}
inline const QByteArray kInsertFrom = "89 01 81 ";
inline const QByteArray kWantReport = "86 80 ";

/// A notify-response or acknowledge of a phone.
inline QByteArray notifyResponse(const QString &transactionId, quint8 status,
                                 const QByteArray &more = {})
{
    return fromHex("8C 83 98") + transactionId.toLatin1() + fromHex("00 8D 92 95") + char(status)
        + fromHex(more);
}
inline QByteArray acknowledge(const QString &transactionId, const QByteArray &more = {})
{
    return fromHex("8C 85 98") + transactionId.toLatin1() + fromHex("00 8D 92") + fromHex(more);
}

/// The header of a PDU that the network sent, as the library reads it.
inline wmsg::sim::ReceivedPdu decoded(const QByteArray &pdu)
{
    wmsg::sim::ReceivedPdu read;
    const QString problem = read.read(pdu);
    if (!problem.isEmpty()) {
        QTest::qFail(qPrintable(problem + ": " + toHex(pdu)), __FILE__, __LINE__);
    }
    return read;
}

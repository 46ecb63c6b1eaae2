// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "services/intake/intake.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

/// Messages in hex, and what the codec makes of what intake makes of them.

/// A notification with these fields, between its transaction id and its location.
inline QByteArray notificationWith(const QByteArray &fields)
{
    return fromHex("8C 82 98 74 00 8D 90") + fields + fromHex("83 6C 00");
}
/// A retrieve confirmation up to its content type.
inline QByteArray retrievalHeader()
{
    return fromHex("8C 84 98 74 00 8D 90");
}
/// A retrieve confirmation with a mixed body; `parts` begins with their count.
inline QByteArray retrievalOf(const QByteArray &parts)
{
    return retrievalHeader() + fromHex("84 A3") + parts;
}
/// An entry of a body with lengths below 128.
inline QByteArray partOf(const QByteArray &header, const QByteArray &data)
{
    return QByteArray(1, char(header.size())) + QByteArray(1, char(data.size())) + header + data;
}

/// A result, and the bytes that it is about.
struct Taken : wmsg::intake::Result {
    QByteArray given;
};
inline Taken taken(const QByteArray &bytes,
                   wmsg::intake::Origin origin = wmsg::intake::Origin::Network)
{
    Taken result;
    result.given = bytes;
    static_cast<wmsg::intake::Result &>(result) = wmsg::intake::takeIn(result.given, origin);
    return result;
}

/// All remarks, a line each: "12 what was done".
inline QStringList linesOf(const QList<wmsg::intake::Remark> &remarks)
{
    QStringList lines;
    for (const auto &remark : remarks) {
        lines.append(QString::number(remark.offset) + ' ' + remark.what);
    }
    return lines;
}

/// Decodes what intake returned with the library.
inline WMMSMsg decoded(const wmsg::intake::Result &result)
{
    const QByteArray pdu = result.pdu.joined();
    QArray<char> bytes = QArray<char>::fromBytes(pdu.constData(), int(pdu.size()));
    WMMSMsg message;
    const quint32 code = message.construct(bytes, true);
    if (code != MMS_DECODE_OK) {
        qFatal("the codec gives %u for %s", code, toHex(pdu).constData());
    }
    return message;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/parts.h"
#include "tests/support/scripted_http.h"

#include <QtTest/QtTest>

/// What a test says as an MMSC, and what it writes as a session.

/// A letter of that many bytes, as a mail file.
inline void writeMailFile(const QString &path, int size = 2000)
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, "+4912345"));
    message.setSubject("hello");
    message.setContentType(typeOf("application/vnd.wap.multipart.mixed"));
    const WMMSMultipart part = partOf("text/plain", QByteArray(size, 'a'));
    message.getMultiParts().getSubMmsMultipartList().append(part);
    QCOMPARE(message.saveAs(path, nullptr, nullptr), quint32(MMS_SAVE_OK));
}

/// The PDU in a request, decoded.
inline WMMSMsg pduIn(const ScriptedRequest &request)
{
    WMMSMsg message;
    QArray<char> bytes = bytesOf(request.body);
    const quint32 result = message.construct(bytes, true);
    if (result != MMS_DECODE_OK) {
        QTest::qFail("what was posted is no PDU", __FILE__, __LINE__);
    }
    return message;
}

/// A send confirmation.
inline QByteArray sendConfirmation(const QString &transactionId, int status)
{
    return QByteArray("\x8C\x81\x98") + transactionId.toLatin1() + QByteArray("\0\x8D\x92\x92", 4)
        + char(status);
}

/// Answers the one request of a connection and ends it.
inline void answerOnce(
    ScriptedConnection &connection, const QByteArray &status, const QByteArray &body = QByteArray(),
    const QByteArray &lines = "Content-Type: application/vnd.wap.mms-message\r\n")
{
    connection.answer(status, body, lines + "Connection: close\r\n");
    connection.close();
}

/// A notification of a message of that many bytes.
inline QByteArray notificationOf(const QString &transactionId, const QString &location,
                                 quint32 size = 5000, quint32 secondsToLive = 3600)
{
    const auto number = [](quint32 value) {
        QByteArray bytes(4, Qt::Uninitialized);
        qToBigEndian(value, bytes.data());
        return bytes;
    };
    return QByteArray("\x8C\x82\x98") + transactionId.toLatin1()
        + QByteArray("\0\x8D\x92\x8A\x80", 5) + "\x8E\x04" + number(size) + "\x88\x06\x81\x04"
        + number(secondsToLive) + "\x83" + location.toLatin1() + '\0';
}

/// A retrieve confirmation, with a transaction id and an application unless they are null.
inline QByteArray retrieveConfirmation(const QByteArray &text,
                                       const QString &transactionId = QString(),
                                       const QString &appId = QString())
{
    WMMSMsg message;
    message.setPDUType(0x84);
    message.setVersion(0x12);
    message.setPriority(129);
    message.setFrom(WMFMEntry(1, "+4998765"));
    message.setDate(QDateTime::fromSecsSinceEpoch(1700000000));
    message.setContentType(typeOf("application/vnd.wap.multipart.mixed"));
    if (!transactionId.isNull()) {
        message.setTransactionID(transactionId);
    }
    if (!appId.isNull()) {
        message.setAppID(appId);
    }
    message.getMultiParts().getSubMmsMultipartList().append(partOf("text/plain", text));
    QArray<char> bytes;
    const quint32 result = message.packTo(bytes, nullptr, nullptr);
    if (result != MMS_ENCODE_OK) {
        QTest::qFail("the retrieve confirmation cannot be encoded", __FILE__, __LINE__);
    }
    return bytes.view().toByteArray();
}

/// A delivery report of a message of ours.
inline QByteArray deliveryReport(const QString &messageId, int status = 129,
                                 quint32 date = 1700000000)
{
    QByteArray seconds(4, Qt::Uninitialized);
    qToBigEndian(date, seconds.data());
    return QByteArray("\x8C\x86\x8D\x92\x8B") + messageId.toLatin1()
        + QByteArray("\0\x97+4912345/TYPE=PLMN\0\x85\x04", 23) + seconds + '\x95' + char(status);
}

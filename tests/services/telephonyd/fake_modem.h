// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/modem.h"
#include "services/telephonyd/spool.h"

#include <QtTest/QtTest>

/// A modem that writes down what it is asked, and says what the test says.
class FakeModem : public wmsg::telephonyd::Modem {
public:
    using Modem::Modem;

    void start() override { ++started; }
    void send(const wmsg::telephonyd::OutgoingSms &message) override { sends.append(message); }
    void forget(const QByteArray &place) override { forgets.append(place); }
    void setServiceCenter(const QByteArray &number) override { centers.append(number); }

    void ready() { Q_EMIT stateChanged(TAPI_MODEM_READY, "+4366"); }
    void absent() { Q_EMIT stateChanged(TAPI_MODEM_ABSENT, QByteArray()); }
    void answer(wmsg::telephonyd::SendOutcome::Kind kind, int reference = 0, int cause = 0)
    {
        Q_EMIT sent(sends.last().id, {kind, reference, cause, QString()});
    }
    void isSent(int reference) { answer(wmsg::telephonyd::SendOutcome::Sent, reference); }

    int started = 0;
    QList<wmsg::telephonyd::OutgoingSms> sends;
    QList<QByteArray> forgets;
    QList<QByteArray> centers;
};

/// UTF-16, little-endian.
inline QByteArray units(const QString &text)
{
    QByteArray bytes(text.size() * 2, '\0');
    qToLittleEndian<quint16>(text.utf16(), text.size(), bytes.data());
    return bytes;
}
inline QString textOf(const QByteArray &body)
{
    QString text(body.size() / 2, '\0');
    qFromLittleEndian<quint16>(body.constData(), text.size(), text.data());
    return text;
}

/// A text of one short message, that lies at a place.
inline wmsg::telephonyd::IncomingSms smsOf(const QString &text, const QByteArray &place = {})
{
    wmsg::telephonyd::IncomingSms sms;
    sms.sender = "+43664";
    sms.serviceCenter = "+4366";
    sms.body = units(text);
    sms.time = 1100000000;
    sms.place = place;
    return sms;
}

/// Part `number` of `total`.
inline wmsg::telephonyd::IncomingSms partOf(int reference, int total, int number,
                                            const QString &text, const QByteArray &place = {})
{
    auto sms = smsOf(text, place);
    sms.header = QByteArray("\x05\x00\x03", 3) + char(reference) + char(total) + char(number);
    return sms;
}

/// The names of the files in a box of a spool.
inline QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

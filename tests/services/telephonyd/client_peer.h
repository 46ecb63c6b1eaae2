// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "tests/support/local_peer.h"

#include <optional>

/// A client of the telephony daemon that says what the test says. What it hears it gives as lines:
///
///     ClientPeer client(path);
///     client.greet('a');
///     QCOMPARE(client.next(), QString("welcome 2 +4366"));
class ClientPeer {
public:
    explicit ClientPeer(const QString &path) : m_peer(path) { }

    template <typename Record> void send(const Record &record, quint16 number = 0)
    {
        m_peer.sendBytes(wmsg::telephony::toFrame(record, number));
    }
    /// Greets as the client whose id is 16 times `letter`.
    void greet(char letter, quint32 events = 2)
    {
        wmsg::telephony::Hello hello;
        hello.clientId = QByteArray(wmsg::telephony::kClientIdSize, letter);
        hello.events = events;
        hello.name = QByteArray(1, letter);
        send(hello);
    }
    void sendData(int reference, const QByteArray &destination, const QByteArray &data,
                  int port = 0)
    {
        wmsg::telephony::Send record;
        record.reference = reference;
        record.coding = wmsg::telephony::Coding::Binary;
        record.hasPorts = port != 0;
        record.destinationPort = quint16(port);
        record.sourcePort = port != 0 ? 1 : 0;
        record.destination = destination;
        record.body = data;
        send(record);
    }
    void registerPort(quint16 number, int port, int mode = 0)
    {
        wmsg::telephony::RegisterPort record;
        record.port = quint16(port);
        record.mode = quint8(mode);
        send(record, number);
    }
    void deregisterPort(quint16 number, int port)
    {
        wmsg::telephony::DeregisterPort record;
        record.port = quint16(port);
        send(record, number);
    }
    void answer(quint64 id, bool isTaken)
    {
        wmsg::telephony::MessageAnswer record;
        record.id = id;
        record.isTaken = isTaken;
        send(record);
    }
    void resultTaken(int reference)
    {
        wmsg::telephony::ResultTaken record;
        record.reference = reference;
        send(record);
    }

    /// The next record, as a line; "end" when the daemon hung up, "nothing" when none comes.
    QString next(int patience = 30000)
    {
        wmsg::telephony::Frame frame;
        bool hasFrame = false;
        bool isOver = false;
        (void)QTest::qWaitFor(
            [&] {
                isOver = m_peer.isHungUp();
                m_reader.append(m_peer.take(m_peer.waiting().size()));
                hasFrame = hasFrame || m_reader.next(frame);
                return hasFrame || isOver;
            },
            patience);
        return hasFrame ? lineOf(frame) : isOver ? QString("end") : QString("nothing");
    }
    /// Whether nothing has come, when the daemon has answered what was asked before.
    QString afterAQuestion()
    {
        deregisterPort(9999, 65535);
        return next();
    }

    /// The id of the last message that next() told.
    quint64 messageId() const { return m_messageId; }
    LocalPeer &peer() { return m_peer; }
    void close() { m_peer.close(); }

private:
    template <typename Record> static Record read(const wmsg::telephony::Frame &frame)
    {
        Record record;
        if (!wmsg::telephony::fromPayload(frame.payload, record)) {
            qFatal("the daemon sent a record that makes no sense");
        }
        return record;
    }
    QString lineOf(const wmsg::telephony::Frame &frame)
    {
        using namespace wmsg::telephony;
        switch (frame.type) {
        case RecordType::Welcome: {
            const auto record = read<Welcome>(frame);
            return QString("welcome %1 %2").arg(record.modem).arg(QString(record.serviceCenter));
        }
        case RecordType::Refused:
            return QString("refused %1").arg(read<Refused>(frame).version);
        case RecordType::Done:
            return QString("done %1 %2").arg(frame.number).arg(int(read<Done>(frame).answer));
        case RecordType::Result: {
            const auto record = read<Result>(frame);
            return QString("result %1 %2 %3")
                .arg(record.reference)
                .arg(record.networkReference)
                .arg(record.status);
        }
        case RecordType::Message: {
            const auto record = read<Message>(frame);
            m_messageId = record.id;
            const QString ports = record.hasPorts
                ? QString(" %1<%2").arg(record.destinationPort).arg(record.sourcePort)
                : QString();
            return QString("message %1 %2%3")
                .arg(QString(record.sender), QString(toHex(record.body)), ports);
        }
        case RecordType::ModemState: {
            const auto record = read<ModemState>(frame);
            return QString("modem %1 %2").arg(record.modem).arg(QString(record.serviceCenter));
        }
        default:
            return QString("record %1").arg(int(frame.type));
        }
    }

    LocalPeer m_peer;
    wmsg::telephony::FrameReader m_reader;
    quint64 m_messageId = 0;
};

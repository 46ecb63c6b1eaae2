// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/tpdu.h"
#include "tests/support/hex.h"

#include <QtCore/QTemporaryDir>
#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>
#include <QtTest/QtTest>

/// A modem simulator that keeps what is delivered, and joins it as a phone does.
class ModemPeer {
public:
    /// Listens on a path of its own, or not yet.
    explicit ModemPeer(bool isOn = true)
    {
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { accept(); });
        if (isOn) {
            switchOn();
        }
    }

    void switchOn() { QVERIFY2(m_server.listen(path()), qPrintable(m_server.errorString())); }
    [[nodiscard]] QString path() const { return m_folder.filePath("control"); }

    QString refusal; ///< Why deliveries are refused; empty: they are not.
    QList<wmsg::smspdu::Tpdu> delivered;

    /// The bodies of all that was delivered.
    [[nodiscard]] QByteArray joined() const
    {
        QByteArray all;
        for (const wmsg::smspdu::Tpdu &one : delivered) {
            all += one.userData;
        }
        return all;
    }

private:
    void accept()
    {
        QLocalSocket *socket = m_server.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
            while (socket->canReadLine()) {
                take(socket->readLine());
                socket->write(refusal.isEmpty() ? "ok\n" : "error " + refusal.toUtf8() + '\n');
            }
        });
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    }
    void take(const QByteArray &line)
    {
        const QByteArray pdu = QByteArray::fromHex(line.mid(8));
        const auto centre = wmsg::smspdu::readServiceCentre(pdu);
        QVERIFY2(line.startsWith("deliver ") && centre, line.constData());
        const auto read = wmsg::smspdu::readTpdu(QByteArrayView(pdu).sliced(centre->size),
                                                 wmsg::smspdu::Origin::Network);
        QVERIFY2(read.isRead(), qPrintable(read.problem));
        if (refusal.isEmpty()) {
            delivered.append(read.tpdu);
        }
    }

    QTemporaryDir m_folder;
    QLocalServer m_server;
};

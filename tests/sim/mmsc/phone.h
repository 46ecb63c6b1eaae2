// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/push_records.h"

#include <QtCore/QTemporaryDir>
#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>
#include <QtTest/QtTest>

/// The push socket of a daemon: takes, or refuses, what is pushed.
class Phone {
public:
    /// Listens on a path of its own, or not yet.
    explicit Phone(bool isOn = true)
    {
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { accept(); });
        if (isOn) {
            switchOn();
        }
    }

    void switchOn() { QVERIFY2(m_server.listen(path()), qPrintable(m_server.errorString())); }
    [[nodiscard]] QString path() const { return m_folder.filePath("push"); }

    QString refusal; ///< Why pushes are refused; empty: they are taken.
    QList<QByteArray> pushed;

private:
    void accept()
    {
        QLocalSocket *socket = m_server.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
            const QByteArray bytes = socket->peek(socket->bytesAvailable());
            const auto push = wmsg::service::readPush(bytes);
            if (push.kind == wmsg::service::ReceivedPush::Whole) {
                socket->skip(push.size);
                pushed.append(push.pdu);
                socket->write(wmsg::service::pushAnswer(refusal));
            }
        });
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    }

    QTemporaryDir m_folder;
    QLocalServer m_server;
};

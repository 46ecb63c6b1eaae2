// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "qt2/qwssocket.h"

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <cerrno>

#include <sys/socket.h>
#include <unistd.h>

/// A connected QWSSocket and the bare other end of its connection. It needs no event loop.
///
///     SocketPair pair;
///     record.write(pair.socket());
///     QCOMPARE(toHex(pair.taken()), "06 00 00 00 ...");
///     pair.feed(fromHex("00 00 00 00"));            // socket() now has these bytes to read
class SocketPair {
public:
    SocketPair()
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0
            || !m_socket.setSocketDescriptor(ends[0])) {
            qFatal("SocketPair: no sockets");
        }
        m_peer = ends[1];
    }
    ~SocketPair() { ::close(m_peer); }
    Q_DISABLE_COPY_MOVE(SocketPair)

    QWSSocket *socket() { return &m_socket; }

    /// feed sends `bytes` to the socket and returns when it has them all.
    void feed(const QByteArray &bytes)
    {
        const qint64 wanted = m_socket.bytesAvailable() + bytes.size();
        qsizetype sent = 0;
        while (m_socket.bytesAvailable() < wanted) {
            const ssize_t count = ::send(m_peer, bytes.constData() + sent,
                                         size_t(bytes.size() - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
            sent += qMax<ssize_t>(count, 0);
            if (!m_socket.waitForReadyRead(10000) && count <= 0) {
                qFatal("SocketPair: the bytes do not arrive");
            }
        }
    }

    /// taken returns what the socket has sent since it was last asked.
    QByteArray taken()
    {
        QByteArray all;
        char piece[65536];
        for (;;) {
            const ssize_t count = ::recv(m_peer, piece, sizeof piece, MSG_DONTWAIT);
            if (count > 0) {
                all.append(piece, count);
            } else if (m_socket.bytesToWrite() == 0 || !m_socket.waitForBytesWritten(10000)) {
                return all;
            }
        }
    }

    /// unread returns, and takes, what the socket has not read yet.
    QByteArray unread() { return m_socket.readAll(); }

private:
    QWSSocket m_socket;
    int m_peer = -1;
};

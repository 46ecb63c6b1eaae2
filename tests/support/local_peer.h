// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_address.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

/// A bare client of a local socket, which never blocks the event loop of the server beside it.
class LocalPeer {
public:
    explicit LocalPeer(const QString &path)
    {
        const wmsg::service::LocalAddress address(path);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        m_isConnected = ::connect(m_socket, address.get(), address.size()) == 0;
    }
    explicit LocalPeer(int socket) : m_socket(socket), m_isConnected(true) { }
    ~LocalPeer() { close(); }
    Q_DISABLE_COPY_MOVE(LocalPeer)

    bool isConnected() const { return m_isConnected; }
    int descriptor() const { return m_socket; }

    /// Sends the bytes that `hex` spells.
    void send(QByteArrayView hex) { sendBytes(fromHex(hex)); }
    /// Sends all of the bytes, however slowly the server takes them; false when it hung up.
    bool sendBytes(QByteArrayView bytes)
    {
        return QTest::qWaitFor(
                   [this, &bytes] {
                       const ssize_t sent = ::send(m_socket, bytes.data(), size_t(bytes.size()),
                                                   MSG_DONTWAIT | MSG_NOSIGNAL);
                       m_isGone = m_isGone || (sent < 0 && errno != EAGAIN);
                       bytes = bytes.sliced(qMax<ssize_t>(sent, 0));
                       return m_isGone || bytes.isEmpty();
                   },
                   30000)
            && !m_isGone;
    }

    /// Waits for the bytes that `hex` spells; no others may come before them.
    void expect(QByteArrayView hex)
    {
        const QByteArray wanted = fromHex(hex);
        QCOMPARE(toHex(take(wanted.size())), toHex(wanted));
    }
    /// Waits until the server has closed the connection; nothing may come before.
    void expectEnd()
    {
        QTRY_VERIFY2_WITH_TIMEOUT(receive(), "the server keeps the connection", 30000);
        QCOMPARE(toHex(m_received), QByteArray());
    }
    /// Waits for so many bytes, or for the end, and takes them.
    QByteArray take(qsizetype size)
    {
        (void)QTest::qWaitFor([this, size] { return receive() || m_received.size() >= size; },
                              30000);
        const QByteArray taken = m_received.left(size);
        m_received.remove(0, taken.size());
        return taken;
    }
    /// All bytes until the server closes the connection.
    QByteArray takeAll()
    {
        (void)QTest::qWaitFor([this] { return receive(); }, 30000);
        return std::exchange(m_received, QByteArray());
    }
    /// What has come and was not taken.
    QByteArray waiting()
    {
        receive();
        return m_received;
    }
    /// Whether the server has closed the connection.
    bool isHungUp() { return receive(); }

    void close()
    {
        if (m_socket >= 0) {
            ::close(std::exchange(m_socket, -1));
        }
    }

private:
    bool receive()
    {
        char piece[65536];
        for (;;) {
            const ssize_t count = ::recv(m_socket, piece, sizeof piece, MSG_DONTWAIT);
            if (count <= 0) {
                return count == 0 || errno == ECONNRESET;
            }
            m_received.append(piece, count);
        }
    }

    int m_socket = -1;
    bool m_isConnected = false;
    bool m_isGone = false;
    QByteArray m_received;
};

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/hex.h"

#include <QtTest/QtTest>

#include <chrono>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The other ends of a session, for tests. Both listen on paths that the whole machine shares: such
/// tests have the RESOURCE_LOCK mmsproxy.

/// A bare socket that listens on a path; the file goes with it.
class ListeningSocket {
public:
    explicit ListeningSocket(const char *path) : m_path(path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path, sizeof address.sun_path);
        const auto *where = reinterpret_cast<const sockaddr *>(&address);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(m_socket, where, sizeof address) == 0) {
            qFatal("ListeningSocket: somebody else listens on %s", path);
        }
        ::unlink(path);
        if (::bind(m_socket, where, sizeof address) != 0 || ::listen(m_socket, 50) != 0) {
            qFatal("ListeningSocket: cannot listen on %s", path);
        }
    }
    ~ListeningSocket()
    {
        stop();
        ::unlink(m_path);
    }
    Q_DISABLE_COPY_MOVE(ListeningSocket)

    /// Listens no longer; the file stays.
    void stop()
    {
        if (m_socket >= 0) {
            ::close(std::exchange(m_socket, -1));
        }
    }
    /// Takes the next client and returns its descriptor; waits for one.
    int accept()
    {
        pollfd ready = {m_socket, POLLIN, 0};
        if (::poll(&ready, 1, 10000) != 1) {
            qFatal("ListeningSocket: no client comes to %s", m_path);
        }
        return ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
    }

private:
    const char *m_path;
    int m_socket = -1;
};

/// The proxy daemon's end of one connection. It waits for its client when it is first needed, so
/// that a client is accepted as late as the test wants.
class ProxyClient {
public:
    explicit ProxyClient(ListeningSocket &server) : m_server(server) { }
    ~ProxyClient() { close(); }
    Q_DISABLE_COPY_MOVE(ProxyClient)

    /// Sends the bytes that `hex` spells, all at once.
    void send(QByteArrayView hex) { sendBytes(fromHex(hex)); }
    void sendBytes(const QByteArray &bytes)
    {
        accept();
        const ssize_t sent =
            ::send(m_socket, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
        QCOMPARE(qsizetype(sent), bytes.size());
    }

    /// Waits for the bytes that `hex` spells; no others may come before them.
    void expect(QByteArrayView hex)
    {
        const QByteArray wanted = fromHex(hex);
        QCOMPARE(toHex(take(int(wanted.size()))), toHex(wanted));
    }
    /// Nothing more has come.
    void expectNothing()
    {
        QTest::qWait(20);
        receive();
        QCOMPARE(toHex(m_received), QByteArray());
    }
    /// Waits until the client has closed the connection.
    void expectEnd()
    {
        QTRY_VERIFY2(receive(), "the client keeps the connection");
        QCOMPARE(toHex(m_received), QByteArray());
    }

    /// Waits for a send command and returns the path in it.
    QString takeSent(int requestId) { return takeText(1, requestId, {0}); }
    /// Waits for a register command and returns the application id in it.
    QString takeRegistered(int requestId) { return takeText(2, requestId, {}); }

    /// Closes the connection.
    void close()
    {
        if (m_socket >= 0) {
            ::close(std::exchange(m_socket, -1));
        }
    }

private:
    void accept()
    {
        if (m_socket < 0) {
            m_socket = m_server.accept();
        }
    }
    /// Takes in what is there; true at the end of the connection.
    bool receive()
    {
        accept();
        char piece[4096];
        for (;;) {
            const ssize_t count = ::recv(m_socket, piece, sizeof piece, MSG_DONTWAIT);
            if (count <= 0) {
                return count == 0 || errno == ECONNRESET;
            }
            m_received.append(piece, count);
        }
    }
    QByteArray take(int size)
    {
        (void)QTest::qWaitFor([this, size] { return receive() || m_received.size() >= size; });
        const QByteArray taken = m_received.left(size);
        m_received.remove(0, taken.size());
        return taken;
    }

    /// Waits for a command with a text, and words behind the text's length.
    QString takeText(int command, int requestId, const QList<int> &behind)
    {
        const qsizetype size = 4 + behind.size();
        const QByteArray head = take(int(4 * size));
        QList<int> words;
        for (qsizetype n = 0; n < head.size() / 4; ++n) {
            words += qFromUnaligned<qint32>(head.constData() + 4 * n);
        }
        const int length = words.value(1, -1);
        if (words != QList<int>{command, length, requestId, length} + behind) {
            QTest::qFail("another command than this, or with another request id", __FILE__,
                         __LINE__);
            return QString();
        }
        const QByteArray text = take(length);
        return QString(reinterpret_cast<const QChar *>(text.constData()), text.size() / 2);
    }

    ListeningSocket &m_server;
    int m_socket = -1;
    QByteArray m_received;
};

/// The proxy daemon, with one client.
///
///     ProxyPeer proxy;
///     session.registerAppID("a", status);
///     proxy.expect("02000000 02000000  00000000 02000000  6100");
///     proxy.send  ("02000000 00000000  00000000 00000000 05000000");
///     QTRY_COMPARE(listener.heard, QStringList{"status 0 5"});
class ProxyPeer : private ListeningSocket, public ProxyClient {
public:
    ProxyPeer() : ListeningSocket("/tmp/mmsproxy"), ProxyClient(server()) { }

    /// For further clients.
    ListeningSocket &server() { return *this; }
};

/// The settings server: answers one client with `pieces`, a moment apart, and closes.
class SettingsPeer {
public:
    explicit SettingsPeer(QByteArrayList pieces)
        : m_server("/tmp/extra-mmserver"), m_thread([this, pieces] { answer(pieces); })
    {
    }
    ~SettingsPeer() { m_thread.join(); }

    /// What the client has sent, to be asked when it has its answer.
    QByteArray heard()
    {
        m_thread.join();
        m_thread = std::thread([] {});
        return m_heard;
    }

private:
    void answer(const QByteArrayList &pieces)
    {
        const int client = m_server.accept();
        for (const QByteArray &piece : pieces) {
            (void)::send(client, piece.constData(), size_t(piece.size()), MSG_NOSIGNAL);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        ::shutdown(client, SHUT_WR);
        char bytes[64];
        const ssize_t count = ::recv(client, bytes, sizeof bytes, 0);
        m_heard = QByteArray(bytes, qMax<ssize_t>(count, 0));
        ::close(client);
    }

    ListeningSocket m_server;
    QByteArray m_heard;
    std::thread m_thread;
};

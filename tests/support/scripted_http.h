// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtTest/QtTest>

#include <cerrno>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

/// An HTTP server that does what the test says, byte by byte, and knows next to nothing of HTTP
/// itself. It runs in the thread of the test: waiting for something runs the event loop meanwhile,
/// so that a client in the same thread gets on.

/// The patience of all that waits, in milliseconds.
inline constexpr int kHttpPatience = 20000;

/// A request as it arrived.
struct ScriptedRequest {
    QByteArray line;
    QByteArray head; ///< The header lines, without the request line.
    QByteArray body;

    /// The value of a header; null when there is no such line.
    [[nodiscard]] QByteArray header(const QByteArray &name) const
    {
        for (const QByteArray &one : head.split('\n')) {
            const qsizetype colon = one.indexOf(':');
            if (colon >= 0 && one.left(colon).toLower() == name.toLower()) {
                return one.mid(colon + 1).trimmed();
            }
        }
        return QByteArray();
    }
};

/// The server's end of one connection.
class ScriptedConnection {
public:
    explicit ScriptedConnection(int socket) : m_socket(socket) { }

    [[nodiscard]] bool isOpen() const { return m_socket.isOpen(); }

    /// Reads the next request, its body too.
    ScriptedRequest readRequest()
    {
        ScriptedRequest request = readHead();
        request.body = read(request.header("Content-Length").toLongLong());
        return request;
    }
    /// Reads the next request up to the empty line behind its header.
    ScriptedRequest readHead()
    {
        ScriptedRequest request;
        while (!m_received.contains("\r\n\r\n") && waitForMore()) { }
        const QByteArray head = take(m_received.indexOf("\r\n\r\n") + 4);
        request.line = head.left(qMax<qsizetype>(head.indexOf('\r'), 0));
        request.head = head.mid(request.line.size() + 2);
        return request;
    }
    /// Reads that many bytes.
    QByteArray read(qint64 count)
    {
        while (m_received.size() < count && waitForMore()) { }
        return take(count);
    }
    /// Reads what is there, that many bytes at most.
    QByteArray readSome(qint64 count)
    {
        if (m_received.size() < count) {
            receive(count - m_received.size());
        }
        return take(count);
    }
    /// How many bytes have arrived and were not read.
    [[nodiscard]] qint64 waiting() const
    {
        int count = 0;
        ::ioctl(m_socket.get(), FIONREAD, &count);
        return m_received.size() + count;
    }

    /// Sends all of the bytes; waits while the client does not take them.
    void send(const QByteArray &bytes)
    {
        qsizetype sent = 0;
        const bool went = QTest::qWaitFor(
            [&] {
                sent += sendSome(bytes.mid(sent));
                return sent == bytes.size();
            },
            kHttpPatience);
        QVERIFY2(went, "the client does not take the answer");
    }
    /// Sends what the client takes at once, and returns how many bytes those were.
    qsizetype sendSome(const QByteArray &bytes)
    {
        const ssize_t sent = ::send(m_socket.get(), bytes.constData(), size_t(bytes.size()),
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        return qMax<ssize_t>(sent, 0);
    }
    /// Sends an answer with its length.
    void answer(const QByteArray &status, const QByteArray &body = QByteArray(),
                const QByteArray &lines = "Content-Type: application/vnd.wap.mms-message\r\n")
    {
        send("HTTP/1.1 " + status + "\r\n" + lines
             + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    }

    void close() { m_socket.close(); }
    /// Ends the connection as a crash does.
    void reset()
    {
        const linger now = {1, 0};
        ::setsockopt(m_socket.get(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        m_socket.close();
    }
    /// Waits until the client has closed the connection; what it sent before is dropped.
    bool waitForEnd()
    {
        return QTest::qWaitFor([this] { return receive(65536) == 0; }, kHttpPatience);
    }
    /// How many bytes arrived before the client closed the connection; waits for that.
    qint64 readToEnd()
    {
        qint64 count = take(m_received.size()).size();
        const bool ended = QTest::qWaitFor(
            [&] {
                const ssize_t got = receive(65536);
                count += take(m_received.size()).size();
                return got == 0;
            },
            kHttpPatience);
        return ended ? count : -1;
    }
    /// Whether the client has closed the connection.
    bool hasEnded() { return receive(65536) == 0; }

    /// The address that the client speaks from.
    [[nodiscard]] QByteArray peerAddress() const
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        ::getpeername(m_socket.get(), reinterpret_cast<sockaddr *>(&address), &size);
        return ::inet_ntoa(address.sin_addr);
    }

private:
    /// The result of recv(): 0 at the end, a connection that was reset included; -1 when nothing is
    /// there.
    ssize_t receive(qint64 count)
    {
        QByteArray bytes(count, Qt::Uninitialized);
        const ssize_t got = ::recv(m_socket.get(), bytes.data(), size_t(count), MSG_DONTWAIT);
        m_received.append(bytes.constData(), qMax<ssize_t>(got, 0));
        return got < 0 && errno != EAGAIN ? 0 : got;
    }
    bool waitForMore()
    {
        ssize_t got = -1;
        const bool came = QTest::qWaitFor(
            [&] {
                got = receive(65536);
                return got >= 0;
            },
            kHttpPatience);
        if (!came || got == 0) {
            QTest::qFail(came ? "the client has hung up" : "the client sends nothing", __FILE__,
                         __LINE__);
        }
        return came && got > 0;
    }
    QByteArray take(qint64 count)
    {
        const QByteArray bytes = m_received.left(count);
        m_received.remove(0, bytes.size());
        return bytes;
    }

    wmsg::service::Descriptor m_socket;
    QByteArray m_received;
};

/// A socket on a free port of the loopback interface.
class ScriptedHttp {
public:
    /// A small receive buffer makes a client wait for a test that reads slowly; 0 leaves it to the
    /// system.
    explicit ScriptedHttp(int receiveBuffer = 0)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        if (receiveBuffer > 0) {
            ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer,
                         sizeof receiveBuffer);
        }
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *where = reinterpret_cast<sockaddr *>(&address);
        socklen_t size = sizeof address;
        if (::bind(m_socket.get(), where, size) != 0 || ::listen(m_socket.get(), 50) != 0
            || ::getsockname(m_socket.get(), where, &size) != 0) {
            qFatal("ScriptedHttp: cannot listen");
        }
        m_port = ntohs(address.sin_port);
    }

    [[nodiscard]] int port() const { return m_port; }
    [[nodiscard]] QString url(const QString &path = "/") const
    {
        return QString("http://127.0.0.1:%1%2").arg(m_port).arg(path);
    }
    /// Takes the next client; waits for one.
    ScriptedConnection accept()
    {
        int client = -1;
        const bool came = QTest::qWaitFor(
            [&] {
                client = ::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC);
                return client >= 0;
            },
            kHttpPatience);
        if (!came) {
            QTest::qFail("no client comes", __FILE__, __LINE__);
        }
        return ScriptedConnection(client);
    }
    /// Whether a client waits to be taken. It is not taken.
    [[nodiscard]] bool hasClient() const
    {
        fd_set ready;
        FD_ZERO(&ready);
        FD_SET(m_socket.get(), &ready);
        timeval none = {};
        return ::select(m_socket.get() + 1, &ready, nullptr, nullptr, &none) == 1;
    }
    /// Listens no longer.
    void close() { m_socket.close(); }

private:
    wmsg::service::Descriptor m_socket;
    int m_port = 0;
};

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>
#include <QtTest/QtTest>

/// A bare HTTP client: writes what it is told to and keeps what comes back, in the event loop that
/// the server beside it runs in too.
class HttpCall {
public:
    explicit HttpCall(quint16 port)
    {
        m_socket.connectToHost("127.0.0.1", port);
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &m_socket,
                         [this] { m_received += m_socket.readAll(); });
    }

    /// Writes bytes as they are.
    HttpCall &send(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        return *this;
    }
    HttpCall &get(const QByteArray &path)
    {
        return send("GET " + path + " HTTP/1.1\r\nHost: mmsc\r\n\r\n");
    }
    HttpCall &post(const QByteArray &body, const QByteArray &moreHeaders = {})
    {
        return send("POST / HTTP/1.1\r\nHost: mmsc\r\n"
                    "Content-Type: application/vnd.wap.mms-message\r\n"
                    + moreHeaders + "Content-Length: " + QByteArray::number(body.size())
                    + "\r\n\r\n" + body);
    }
    /// Waits until an answer is there in its full length, or the server has closed.
    HttpCall &wait()
    {
        return waitUntil([this] { return isWhole() || isClosed(); });
    }
    /// Waits until the server has closed.
    HttpCall &waitForEnd()
    {
        return waitUntil([this] { return isClosed(); });
    }
    void hangUp() { m_socket.abort(); }

    /// 0: no answer; -1: none in time.
    [[nodiscard]] int status() const
    {
        return m_isLate                          ? -1
            : m_received.startsWith("HTTP/1.1 ") ? m_received.mid(9, 3).toInt()
                                                 : 0;
    }
    [[nodiscard]] QByteArray header(const QByteArray &name) const
    {
        for (const QByteArray &line : m_received.first(headEnd()).split('\n')) {
            const qsizetype colon = line.indexOf(':');
            if (colon > 0 && line.first(colon).toLower() == name.toLower()) {
                return line.sliced(colon + 1).trimmed();
            }
        }
        return {};
    }
    [[nodiscard]] QByteArray body() const { return m_received.sliced(headEnd()); }
    [[nodiscard]] bool isWhole() const
    {
        return headEnd() > 0
            && m_received.size() - headEnd() >= header("Content-Length").toLongLong();
    }
    [[nodiscard]] bool isClosed() const
    {
        return m_socket.state() == QAbstractSocket::UnconnectedState;
    }
    [[nodiscard]] const QByteArray &received() const { return m_received; }

private:
    // The loop runs without a pause, so that large bodies pass in no time.
    template <typename Condition> HttpCall &waitUntil(Condition isFulfilled)
    {
        QEventLoop loop;
        QTimer patience;
        patience.setSingleShot(true);
        QObject::connect(&patience, &QTimer::timeout, &loop, &QEventLoop::quit);
        QObject::connect(&m_socket, &QTcpSocket::readyRead, &loop, &QEventLoop::quit);
        QObject::connect(&m_socket, &QTcpSocket::stateChanged, &loop, &QEventLoop::quit);
        patience.start(60000);
        while (!isFulfilled() && patience.isActive()) {
            loop.exec();
        }
        m_isLate = !isFulfilled();
        return *this;
    }

    [[nodiscard]] qsizetype headEnd() const
    {
        const qsizetype end = m_received.indexOf("\r\n\r\n");
        return end < 0 ? 0 : end + 4;
    }

    QTcpSocket m_socket;
    QByteArray m_received;
    bool m_isLate = false;
};

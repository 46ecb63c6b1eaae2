// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtTest/QtTest>

#include <fcntl.h>
#include <unistd.h>

/// The side of a program that has opened the modem.
class ModemLine {
public:
    explicit ModemLine(const QString &link)
        : m_line(
            ::open(QFile::encodeName(link).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~ModemLine() { close(); }
    Q_DISABLE_COPY_MOVE(ModemLine)

    bool isOpen() const { return m_line >= 0; }
    void close()
    {
        if (m_line >= 0) {
            ::close(std::exchange(m_line, -1));
        }
    }

    void write(const QByteArray &bytes)
    {
        QCOMPARE(::write(m_line, bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    }
    /// Waits until what came ends with `end`, and takes it all.
    QByteArray readTo(const QByteArray &end)
    {
        (void)QTest::qWaitFor([this, &end] { return receive().endsWith(end); }, 30000);
        return std::exchange(m_received, QByteArray());
    }
    /// Writes a command and returns the answer, with marks for the ends of lines, without echo.
    QByteArray ask(const QByteArray &command)
    {
        write(command + "\r");
        (void)QTest::qWaitFor([this] { return hasResult(); }, 30000);
        return shown(std::exchange(m_received, QByteArray()));
    }
    /// The ends of lines as "/", none in front and behind.
    static QByteArray shown(QByteArray text)
    {
        text = text.replace("\r\n\r\n", "/").replace("\r\n", "/");
        text = text.startsWith('/') ? text.mid(1) : text;
        return text.endsWith('/') ? text.chopped(1) : text;
    }
    /// All that has come.
    const QByteArray &receive()
    {
        char piece[4096];
        ssize_t count = 0;
        while ((count = ::read(m_line, piece, sizeof piece)) > 0) {
            m_received.append(piece, count);
        }
        return m_received;
    }
    /// Whether the modem has hung up.
    bool isHungUp()
    {
        char byte;
        return ::read(m_line, &byte, 1) == 0 || errno == EIO;
    }

private:
    bool hasResult()
    {
        static const QRegularExpression result("\r\n(OK|ERROR|\\+CM[ES] ERROR: \\d+)\r\n$|\r\n> $");
        return result.match(QString::fromLatin1(receive())).hasMatch();
    }

    int m_line;
    QByteArray m_received;
};

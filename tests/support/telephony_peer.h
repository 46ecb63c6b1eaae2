// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/tapi_client.h"
#include "platform/telephony/telephony_records_p.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

#include <mutex>
#include <thread>

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The telephony daemon's end, for tests: it answers from a thread of its own, for a client may
/// wait for its answers with the event loop at rest. What it hears it writes down as "type:
/// payload".
///
///     TelephonyPeer daemon;                      // clients of this process find it
///     const int handle = TAPI_CLIENT_Init("a", 2);
///     daemon.send(toFrame(Result{1, 0, 0}));
///     QTRY_COMPARE(daemon.heard(), QStringList{"7: 01 00 00 00"});
class TelephonyPeer {
    using Frame = wmsg::telephony::Frame;
    using RecordType = wmsg::telephony::RecordType;

public:
    TelephonyPeer()
    {
        if (::pipe(m_wake) != 0) {
            qFatal("TelephonyPeer: no pipe");
        }
        qputenv("WMSG_TELEPHONY_SOCKET", path());
        wmsg::telephony::Welcome welcome;
        welcome.modem = TAPI_MODEM_READY;
        welcome.serviceCenter = "+4366";
        answer(RecordType::Hello, toFrame(welcome));
        const QByteArray done = toFrame(wmsg::telephony::Done());
        answer(RecordType::RegisterPort, done);
        answer(RecordType::DeregisterPort, done);
        answer(RecordType::SetServiceCenter, done);
        listen();
        m_thread = std::thread([this] { run(); });
    }
    ~TelephonyPeer()
    {
        m_isOver = true;
        wake();
        m_thread.join();
        drop();
        stopListening();
        ::close(m_wake[0]);
        ::close(m_wake[1]);
        qunsetenv("WMSG_TELEPHONY_SOCKET");
    }
    Q_DISABLE_COPY_MOVE(TelephonyPeer)

    /// From now on each record of a type is answered by these bytes; the first frame in them gets
    /// the number of the request.
    void answer(RecordType type, const QByteArray &bytes)
    {
        const std::lock_guard guard(m_mutex);
        m_answers[int(type)] = bytes;
    }

    QStringList heard()
    {
        const std::lock_guard guard(m_mutex);
        return m_heard;
    }
    /// What was heard since it was last asked.
    QStringList takeHeard()
    {
        const std::lock_guard guard(m_mutex);
        return std::exchange(m_heard, {});
    }
    /// How many clients have come.
    int clients()
    {
        const std::lock_guard guard(m_mutex);
        return m_clients;
    }
    /// How often a client has gone.
    int gone()
    {
        const std::lock_guard guard(m_mutex);
        return m_gone;
    }

    /// Sends bytes to the client.
    void send(const QByteArray &bytes)
    {
        const std::lock_guard guard(m_mutex);
        sendTo(bytes);
    }
    /// How many of the bytes that were sent the client has not read yet.
    int unread()
    {
        const std::lock_guard guard(m_mutex);
        int count = 0;
        return m_client >= 0 && ::ioctl(m_client, TIOCOUTQ, &count) == 0 ? count : 0;
    }

    /// Ends the connection.
    void drop()
    {
        const std::lock_guard guard(m_mutex);
        if (m_client >= 0) {
            ::close(std::exchange(m_client, -1));
        }
        wake();
    }
    /// Whether every record is answered by the end of the connection.
    void hangUp(bool does)
    {
        const std::lock_guard guard(m_mutex);
        m_hangsUp = does;
    }
    /// Nobody is let in any more, until listen().
    void stopListening()
    {
        const std::lock_guard guard(m_mutex);
        if (m_server >= 0) {
            ::close(std::exchange(m_server, -1));
            ::unlink(path().constData());
        }
        wake();
    }
    void listen()
    {
        const std::lock_guard guard(m_mutex);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path().constData(), sizeof address.sun_path);
        m_server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::bind(m_server, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
            || ::listen(m_server, 50) != 0) {
            qFatal("TelephonyPeer: cannot listen on %s", path().constData());
        }
        wake();
    }

    QByteArray path() const { return m_folder.filePath("telephony").toLocal8Bit(); }

private:
    void wake() { (void)!::write(m_wake[1], "", 1); }

    void sendTo(const QByteArray &bytes)
    {
        for (qsizetype sent = 0; m_client >= 0 && sent < bytes.size();) {
            const ssize_t count = ::send(m_client, bytes.constData() + sent,
                                         size_t(bytes.size() - sent), MSG_NOSIGNAL);
            if (count <= 0) {
                return;
            }
            sent += count;
        }
    }

    void run()
    {
        while (!m_isOver) {
            pollfd ready[3] = {{m_wake[0], POLLIN, 0}, {-1, POLLIN, 0}, {-1, POLLIN, 0}};
            {
                const std::lock_guard guard(m_mutex);
                ready[1].fd = m_server;
                ready[2].fd = m_client;
            }
            (void)::poll(ready, 3, -1);
            if (ready[0].revents != 0) {
                char byte = 0;
                (void)!::read(m_wake[0], &byte, 1);
            }
            const std::lock_guard guard(m_mutex);
            if (ready[2].revents != 0 && ready[2].fd == m_client) {
                receive();
            }
            if (ready[1].revents != 0 && ready[1].fd == m_server) {
                accept();
            }
        }
    }
    void accept()
    {
        if (m_client >= 0) {
            ::close(m_client);
        }
        m_client = ::accept4(m_server, nullptr, nullptr, SOCK_CLOEXEC);
        m_reader = wmsg::telephony::FrameReader();
        ++m_clients;
    }
    void receive()
    {
        char piece[4096];
        const ssize_t count = ::recv(m_client, piece, sizeof piece, MSG_DONTWAIT);
        if (count <= 0) {
            ::close(std::exchange(m_client, -1));
            ++m_gone;
            return;
        }
        if (m_hangsUp) {
            ::close(std::exchange(m_client, -1));
            return;
        }
        m_reader.append({piece, count});
        Frame frame;
        while (m_reader.next(frame)) {
            m_heard.append(
                QString("%1: %2").arg(int(frame.type)).arg(QString(toHex(frame.payload))));
            QByteArray bytes = m_answers.value(int(frame.type));
            if (bytes.size() >= wmsg::telephony::kHeadSize) {
                qToLittleEndian(frame.number, bytes.data() + 6);
            }
            sendTo(bytes);
        }
    }

    QTemporaryDir m_folder;
    std::mutex m_mutex;
    std::thread m_thread;
    std::atomic<bool> m_isOver = false;
    int m_wake[2] = {-1, -1};
    int m_server = -1;
    int m_client = -1;
    int m_clients = 0;
    int m_gone = 0;
    bool m_hangsUp = false;
    wmsg::telephony::FrameReader m_reader;
    QMap<int, QByteArray> m_answers;
    QStringList m_heard;
};

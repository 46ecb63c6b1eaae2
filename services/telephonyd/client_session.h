// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/common/descriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <QtCore/QtGlobal>

#include <chrono>

namespace wmsg::telephonyd {

/// The number of a session, never used again by a daemon; 0 is no session.
using SessionId = quint64;

/// ClientSession is the daemon's end of the connection of one client: it takes the greeting, tells
/// of the other frames, and writes. What a client sent before it went is still told. A few frames
/// are told at a time, so that a client that sends much does not keep others waiting.
class ClientSession : public QObject {
    Q_OBJECT

public:
    /// How many bytes may wait for a client that does not read, before it is dropped.
    static constexpr qsizetype kMostUnsent = qsizetype(1024) * 1024;
    /// With more bytes than these waiting, it is better to wait with what can wait.
    static constexpr qsizetype kManyUnsent = qsizetype(128) * 1024;
    static constexpr int kFramesAtATime = 16;
    /// How long a client may take to greet.
    static constexpr std::chrono::seconds kPatience{10};

    /// Takes the descriptor of a connection, which does not block.
    ClientSession(SessionId id, qintptr descriptor, QObject *parent = nullptr);

    [[nodiscard]] SessionId id() const { return m_id; }
    /// hello returns the greeting; its client id is empty before it came.
    [[nodiscard]] const telephony::Hello &hello() const { return m_hello; }

    /// send writes a record.
    template <typename Record> void send(const Record &record, quint16 number = 0)
    {
        write(telephony::toFrame(record, number));
    }
    /// isBusy tells whether many bytes wait; drained() tells when they do not any more.
    [[nodiscard]] bool isBusy() const { return m_unsent.size() > kManyUnsent; }

    /// drop ends the session, with a line in the log.
    void drop(const char *reason);
    /// replace ends it because the client has another one.
    void replace() { close(); }

Q_SIGNALS:
    /// greeted tells that the greeting came; nothing was written yet.
    void greeted();
    /// received tells of a frame after the greeting.
    void received(const wmsg::telephony::Frame &frame);
    void drained();
    /// ended tells, from the event loop and once, that the session is over.
    void ended();

private:
    void read();
    void handle();
    void take(const telephony::Frame &frame);
    void greet(const telephony::Frame &frame);
    void write(const QByteArray &bytes);
    void flush();
    void close();

    const SessionId m_id;
    service::Descriptor m_socket;
    QSocketNotifier m_reading;
    QSocketNotifier m_writing;
    QTimer m_later; ///< for the frames that others were let past
    QTimer m_patience;
    QTimer m_end; ///< for ended()
    telephony::FrameReader m_reader;
    telephony::Hello m_hello;
    QByteArray m_unsent;
    bool m_hasEnd = false; ///< of what the client sends
    bool m_isDeaf = false; ///< the client does not read any more
};

} // namespace wmsg::telephonyd

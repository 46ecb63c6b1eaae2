// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/session_id.h"

#include <mms/session/mms_ua_cmd.h>
#include <mms/session/mms_ua_svcmd.h>
#include <qt2/qwssocket.h>

#include <QtCore/QObject>
#include <QtCore/QtGlobal>

#include <deque>
#include <memory>
#include <sys/types.h>

namespace wmsg::proxy {

/// ProxySession is the daemon's end of one session: it reads commands, and writes events. Commands
/// are read as they arrive, in pieces of any size. What is no command ends the session, because
/// nobody could tell where the next one begins.
class ProxySession : public QObject {
    Q_OBJECT

public:
    /// The longest variable part of a command. No path, URL or application id comes near it.
    static constexpr qint32 kLongestText = 64 * 1024;
    /// How many bytes of events may wait for a session that does not read, before it is ended.
    static constexpr qint64 kMostWaiting = qint64(1024) * 1024;

    /// Takes the descriptor of a connection with a process of the user `uid`.
    ProxySession(SessionId id, qintptr descriptor, uid_t uid, QObject *parent = nullptr);
    ~ProxySession() override;

    [[nodiscard]] SessionId id() const { return m_id; }
    [[nodiscard]] uid_t uid() const { return m_uid; }

    /// send writes an event. Each leaves as a whole, because sessions do not resume records: one
    /// that the connection has no room for waits, and with it those behind it.
    void send(std::unique_ptr<MMS_UA_SvCmd> event);

Q_SIGNALS:
    /// command tells of a command; it is gone when the receivers return.
    void command(MMS_UA_Cmd &command);
    /// ended tells, from the event loop and once, that the session is over. Commands that had
    /// arrived were told before.
    void ended();

private:
    void read();
    [[nodiscard]] bool readCommand();
    void writeWaiting();
    void drop(const char *reason);
    void finish();

    SessionId m_id;
    uid_t m_uid;
    QWSSocket m_socket;
    std::unique_ptr<MMS_UA_Cmd> m_command; // whose beginning has arrived
    std::deque<std::unique_ptr<MMS_UA_SvCmd>> m_waiting;
    qint64 m_waitingBytes = 0;
    bool m_isOver = false;
};

} // namespace wmsg::proxy

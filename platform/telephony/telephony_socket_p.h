// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"

#include <QtCore/QByteArray>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QtGlobal>

namespace wmsg::telephony {

/// socketPath returns where the daemon listens: the value of WMSG_TELEPHONY_SOCKET, or
/// /tmp/wmsg-telephony where that is unset or empty.
[[nodiscard]] QByteArray socketPath();

/// isSameUser tells whether the other end of a connected local socket is a process of the user that
/// this process runs as. Both sides ask it before they believe anything.
[[nodiscard]] bool isSameUser(int descriptor);

/// DaemonSocket is the client's end of a connection to the daemon. Nothing of it blocks, but for
/// the two operations that take a deadline.
class DaemonSocket {
public:
    DaemonSocket() = default;
    ~DaemonSocket() { close(); }
    Q_DISABLE_COPY_MOVE(DaemonSocket)

    /// connectTo connects to a server of the same user at `path`, and waits until `deadline` where
    /// the server has more callers than it can take. It returns false, and is closed, on failure.
    bool connectTo(const QByteArray &path, QDeadlineTimer deadline);
    void close();
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /// receive hands all that has arrived to `reader`. It returns false at the end of the
    /// connection; what came before has been handed over.
    bool receive(FrameReader &reader);

    /// send takes bytes to be sent, and sends what the socket takes now; a closed one takes none. A
    /// dead connection is noticed by receive().
    void send(const QByteArray &bytes);
    /// flush sends of what waits as much as the socket takes now.
    void flush();
    /// unsent returns how many bytes wait.
    [[nodiscard]] qsizetype unsent() const { return m_unsent.size(); }

    /// wait returns true when there is something to receive, false at the deadline. It sends what
    /// waits meanwhile.
    bool wait(QDeadlineTimer deadline);

private:
    int m_descriptor = -1;
    QByteArray m_unsent;
};

} // namespace wmsg::telephony

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/session_run.h"

#include <qt2/qwssocket.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

bool SessionRun::open()
{
    m_session = openSession<WMMSSession>(WMFM::MSG_TYPE_MMS, this);
    if (!m_session) {
        complain(u"no session can be opened"_s);
        return false;
    }
    watchConnection();
    return true;
}

// A session tells of a connection that fails; that the daemon ended it in good order, as one does
// that was killed, tells its socket alone. Both are heard behind the events that came before.
void SessionRun::watchConnection()
{
    const auto lost = [this] {
        if (!isFinished()) {
            disconnected(connectionProblem());
        }
    };
    QObject::connect(m_session.get(), &WMMSSession::connectionClosed, context(), lost,
                     Qt::QueuedConnection);
    if (const auto *socket = m_session->findChild<QWSSocket *>()) {
        m_wasConnected = socket->state() == QLocalSocket::ConnectedState;
        QObject::connect(socket, &QLocalSocket::connected, context(),
                         [this] { m_wasConnected = true; });
        QObject::connect(socket, &QWSSocket::connectionClosed, context(), lost,
                         Qt::QueuedConnection);
    }
}

QString SessionRun::connectionProblem() const
{
    if (m_wasConnected) {
        return u"the proxy daemon has ended the connection"_s;
    }
    const auto *socket = m_session->findChild<QWSSocket *>();
    return socket && socket->error() == QLocalSocket::SocketAccessError
        ? u"the proxy daemon at /tmp/mmsproxy is not for this user"_s
        : u"no proxy daemon listens at /tmp/mmsproxy (is wmsg-mmsproxyd running?)"_s;
}

} // namespace wmsg::cli

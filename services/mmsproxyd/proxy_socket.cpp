// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/proxy_socket.h"

#include <QtCore/QLoggingCategory>

#include <sys/socket.h>
#include <utility>

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kProxySocket, "wmsg.session", QtInfoMsg)

constexpr uid_t kNobody = static_cast<uid_t>(-1);

uid_t userBehind(qintptr descriptor)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    const int result =
        ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return result == 0 ? peer.uid : kNobody;
}

} // namespace

ProxySocket::ProxySocket(QObject *parent) : QObject(parent)
{
    connect(&m_listener, &service::LocalListener::connected, this, &ProxySocket::take);
}

ProxySocket::~ProxySocket() = default;

QString ProxySocket::listen(const QString &path, mode_t mode)
{
    return m_listener.listen(path, mode);
}

void ProxySocket::send(SessionId session, std::unique_ptr<MMS_UA_SvCmd> event)
{
    const auto found = m_sessions.find(session);
    if (found != m_sessions.end()) {
        found->second->send(std::move(event));
    }
}

uid_t ProxySocket::userOf(SessionId session) const
{
    const auto found = m_sessions.find(session);
    return found == m_sessions.end() ? kNobody : found->second->uid();
}

void ProxySocket::take(qintptr descriptor)
{
    if (m_sessions.size() >= kMostSessions) {
        const service::Descriptor closed(static_cast<int>(descriptor));
        qCWarning(kProxySocket, "a session is refused: there are %zu", m_sessions.size());
        return;
    }
    const SessionId id = ++m_lastId;
    auto session = std::make_unique<ProxySession>(id, descriptor, userBehind(descriptor));
    connect(session.get(), &ProxySession::command, this,
            [this, id](MMS_UA_Cmd &heard) { Q_EMIT command(id, heard); });
    connect(session.get(), &ProxySession::ended, this, [this, id] { remove(id); });
    m_sessions[id] = std::move(session);
    Q_EMIT opened(id);
}

void ProxySocket::remove(SessionId id)
{
    const auto session = m_sessions.extract(id);
    if (session) {
        session.mapped().release()->deleteLater(); // it is the one that is calling
        Q_EMIT closed(id);
    }
}

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/client_socket.h"

#include <QtCore/QLoggingCategory>

#include <utility>

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kSocket, "wmsg.session", QtInfoMsg)

} // namespace

ClientSocket::ClientSocket(QObject *parent) : QObject(parent)
{
    connect(&m_listener, &service::LocalListener::connected, this, &ClientSocket::take);
}

ClientSocket::~ClientSocket() = default;

QString ClientSocket::listen(const QString &path, mode_t mode)
{
    return m_listener.listen(path, mode);
}

ClientSession *ClientSocket::find(SessionId id) const
{
    const auto found = m_sessions.find(id);
    const bool isThere =
        found != m_sessions.end() && sessionOf(found->second->hello().clientId) != nullptr;
    return isThere && m_clients.at(found->second->hello().clientId) == id ? found->second.get()
                                                                          : nullptr;
}

ClientSession *ClientSocket::sessionOf(const QByteArray &client) const
{
    const auto found = m_clients.find(client);
    return found == m_clients.end() ? nullptr : m_sessions.at(found->second).get();
}

void ClientSocket::take(qintptr descriptor)
{
    if (m_sessions.size() >= kMostSessions) {
        const service::Descriptor closed(static_cast<int>(descriptor));
        qCWarning(kSocket, "a session is refused: there are %zu", m_sessions.size());
        return;
    }
    const SessionId id = ++m_lastId;
    auto session = std::make_unique<ClientSession>(id, descriptor);
    ClientSession &one = *session;
    connect(&one, &ClientSession::greeted, this, [this, &one] { greet(one); });
    connect(&one, &ClientSession::received, this,
            [this, &one](const telephony::Frame &frame) { Q_EMIT received(one, frame); });
    connect(&one, &ClientSession::drained, this, [this, &one] { Q_EMIT drained(one); });
    connect(&one, &ClientSession::ended, this, [this, id] { remove(id); });
    m_sessions[id] = std::move(session);
}

void ClientSocket::greet(ClientSession &session)
{
    const QByteArray client = session.hello().clientId;
    if (ClientSession *before = sessionOf(client)) {
        leave(before->id());
        before->replace();
    }
    m_clients[client] = session.id();
    qCInfo(kSocket, "session %llu is that of %s", session.id(), session.hello().name.constData());
    Q_EMIT opened(session);
}

/// The session of a client is over for the daemon before its object is gone.
void ClientSocket::leave(SessionId id)
{
    if (const ClientSession *session = find(id)) {
        const QByteArray client = session->hello().clientId;
        m_clients.erase(client);
        Q_EMIT closed(id, client);
    }
}

void ClientSocket::remove(SessionId id)
{
    leave(id);
    const auto session = m_sessions.extract(id);
    if (session) {
        session.mapped().release()->deleteLater(); // it is the one that is calling
    }
}

} // namespace wmsg::telephonyd

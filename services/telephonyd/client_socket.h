// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_listener.h"
#include "services/telephonyd/client_session.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <map>
#include <memory>

namespace wmsg::telephonyd {

/// ClientSocket is where clients connect. It numbers their sessions and tells of them from the
/// greeting on; a second session of a client takes the place of the first.
class ClientSocket : public QObject {
    Q_OBJECT

public:
    /// How many sessions there may be at a time; more are closed at once.
    static constexpr size_t kMostSessions = 256;

    explicit ClientSocket(QObject *parent = nullptr);
    ~ClientSocket() override;

    /// listen begins to take sessions; see LocalListener.
    [[nodiscard]] QString listen(const QString &path, mode_t mode);

    /// find returns a session that has greeted and is not over, or null.
    [[nodiscard]] ClientSession *find(SessionId id) const;
    /// sessionOf returns the one of a client, or null.
    [[nodiscard]] ClientSession *sessionOf(const QByteArray &client) const;
    /// forEach calls a function with each session that has greeted. The function may write to it.
    template <typename Function> void forEach(const Function &function)
    {
        for (const auto &[client, id] : m_clients) {
            function(*m_sessions.at(id));
        }
    }

Q_SIGNALS:
    void opened(wmsg::telephonyd::ClientSession &session);
    void received(wmsg::telephonyd::ClientSession &session, const wmsg::telephony::Frame &frame);
    void drained(wmsg::telephonyd::ClientSession &session);
    /// closed tells that a session is over whose opening was told; there may be another one of the
    /// same client, which is told of after this.
    void closed(wmsg::telephonyd::SessionId session, const QByteArray &client);

private:
    void take(qintptr descriptor);
    void greet(ClientSession &session);
    void leave(SessionId id);
    void remove(SessionId id);

    service::LocalListener m_listener;
    SessionId m_lastId = 0;
    std::map<SessionId, std::unique_ptr<ClientSession>> m_sessions;
    std::map<QByteArray, SessionId> m_clients;
};

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_listener.h"
#include "services/mmsproxyd/proxy_session.h"
#include "services/mmsproxyd/session_id.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <map>
#include <memory>

namespace wmsg::proxy {

/// ProxySocket is where sessions connect. It numbers them, tells of their commands, and brings them
/// events.
class ProxySocket : public QObject {
    Q_OBJECT

public:
    /// How many sessions there may be at a time; more are closed at once.
    static constexpr size_t kMostSessions = 256;

    explicit ProxySocket(QObject *parent = nullptr);
    ~ProxySocket() override;

    /// listen begins to take sessions; see LocalListener.
    [[nodiscard]] QString listen(const QString &path, mode_t mode);
    /// close takes no more sessions; those that are there stay.
    void close() { m_listener.close(); }

    /// send brings an event to a session; one that is over hears nothing.
    void send(SessionId session, std::unique_ptr<MMS_UA_SvCmd> event);

    /// The user whose process a session is, or nobody's number when there is no such session.
    [[nodiscard]] uid_t userOf(SessionId session) const;
    [[nodiscard]] size_t count() const { return m_sessions.size(); }

Q_SIGNALS:
    void opened(wmsg::proxy::SessionId session);
    /// The command is gone when the receivers return.
    void command(wmsg::proxy::SessionId session, MMS_UA_Cmd &command);
    /// closed tells that a session is over; it hears nothing any more.
    void closed(wmsg::proxy::SessionId session);

private:
    void take(qintptr descriptor);
    void remove(SessionId id);

    service::LocalListener m_listener;
    SessionId m_lastId = 0;
    std::map<SessionId, std::unique_ptr<ProxySession>> m_sessions;
};

} // namespace wmsg::proxy

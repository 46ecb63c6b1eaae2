// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/client_socket.h"
#include "services/telephonyd/inbox.h"
#include "services/telephonyd/port_table.h"

#include <QtCore/QObject>
#include <QtCore/QtGlobal>

#include <map>
#include <set>

namespace wmsg::telephonyd {

/// Offers decides who is told of which message: the session that has its port, else every session
/// that takes messages without one. Each is told of it once. When one of them takes it, it is over;
/// as long as nobody does, it waits for the next session that may have it.
class Offers : public QObject {
    Q_OBJECT

public:
    Offers(Inbox &inbox, const PortTable &ports, ClientSocket &clients, QObject *parent = nullptr);

    /// look tells a session of what it may have and was not told of, as much as it reads for now.
    void look(ClientSession &session);
    /// answered tells what a session does with a message; a message that it was not told of is no
    /// business of it.
    void answered(SessionId session, quint64 message, bool isTaken);
    /// closed tells that a session is over.
    void closed(SessionId session);

private:
    void offer(quint64 message);
    [[nodiscard]] bool mayHave(const ClientSession &session,
                               const telephony::Message &message) const;

    Inbox &m_inbox;
    const PortTable &m_ports;
    ClientSocket &m_clients;
    std::map<SessionId, std::set<quint64>> m_told; ///< of the messages that wait
};

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/offers.h"

#include <platform/telephony/tapi_client.h>

namespace wmsg::telephonyd {

Offers::Offers(Inbox &inbox, const PortTable &ports, ClientSocket &clients, QObject *parent)
    : QObject(parent), m_inbox(inbox), m_ports(ports), m_clients(clients)
{
    connect(&m_inbox, &Inbox::added, this, &Offers::offer);
    connect(&m_clients, &ClientSocket::drained, this, &Offers::look);
}

void Offers::look(ClientSession &session)
{
    for (const quint64 id : m_inbox.waiting()) {
        if (session.isBusy()) {
            return; // until it has drained
        }
        const telephony::Message *message = m_inbox.find(id);
        if (message && mayHave(session, *message) && m_told[session.id()].insert(id).second) {
            session.send(*message);
        }
    }
}

/// To those who are behind it comes in its turn.
void Offers::offer(quint64 message)
{
    const telephony::Message *found = m_inbox.find(message);
    if (!found) {
        return;
    }
    m_clients.forEach([this, found](ClientSession &session) {
        if (!session.isBusy() && mayHave(session, *found)
            && m_told[session.id()].insert(found->id).second) {
            session.send(*found);
        }
    });
}

bool Offers::mayHave(const ClientSession &session, const telephony::Message &message) const
{
    const SessionId owner = message.hasPorts ? m_ports.ownerOf(message.destinationPort) : 0;
    if (owner != 0) {
        return owner == session.id();
    }
    return (session.hello().events & TAPI_EVENTS_SMS) != 0
        && !m_ports.wantsPortsAlone(session.id());
}

void Offers::answered(SessionId session, quint64 message, bool isTaken)
{
    const auto told = m_told.find(session);
    if (!isTaken || told == m_told.end() || told->second.count(message) == 0) {
        return;
    }
    for (auto &[other, messages] : m_told) {
        messages.erase(message);
    }
    m_inbox.taken(message);
}

void Offers::closed(SessionId session)
{
    m_told.erase(session);
}

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/port_table.h"

#include <platform/telephony/tapi_sms.h>

#include <algorithm>
#include <iterator>

namespace wmsg::telephonyd {

using telephony::Answer;

Answer PortTable::add(SessionId session, quint16 port, quint8 mode)
{
    // A message without ports is told with two zeros.
    if (port == 0 || mode > SMS_RECV_MODE_PORTS) {
        return Answer::Invalid;
    }
    const auto found = m_ports.find(port);
    if (found != m_ports.end() && found->second.session != session) {
        return Answer::PortTaken;
    }
    m_ports[port] = {session, mode};
    return Answer::Ok;
}

Answer PortTable::remove(SessionId session, quint16 port)
{
    if (ownerOf(port) != session) {
        return Answer::NotRegistered;
    }
    m_ports.erase(port);
    return Answer::Ok;
}

void PortTable::removeAll(SessionId session)
{
    for (auto port = m_ports.begin(); port != m_ports.end();) {
        port = port->second.session == session ? m_ports.erase(port) : std::next(port);
    }
}

SessionId PortTable::ownerOf(quint16 port) const
{
    const auto found = m_ports.find(port);
    return found == m_ports.end() ? 0 : found->second.session;
}

bool PortTable::wantsPortsAlone(SessionId session) const
{
    return std::any_of(m_ports.begin(), m_ports.end(), [session](const auto &port) {
        return port.second.session == session && port.second.mode == SMS_RECV_MODE_PORTS;
    });
}

} // namespace wmsg::telephonyd

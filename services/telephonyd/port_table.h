// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/telephonyd/client_session.h"

#include <QtCore/QtGlobal>

#include <map>

namespace wmsg::telephonyd {

/// PortTable knows which session has which port. A port is that of one session, and ends with it.
class PortTable {
public:
    /// add gives a port to a session; one that it has already changes its mode.
    [[nodiscard]] telephony::Answer add(SessionId session, quint16 port, quint8 mode);
    [[nodiscard]] telephony::Answer remove(SessionId session, quint16 port);
    /// removeAll ends the registrations of a session.
    void removeAll(SessionId session);

    /// ownerOf returns the session that has a port, 0 when none has.
    [[nodiscard]] SessionId ownerOf(quint16 port) const;
    /// wantsPortsAlone tells whether a session has a port in the mode that keeps other messages
    /// away from it.
    [[nodiscard]] bool wantsPortsAlone(SessionId session) const;

private:
    struct Registration {
        SessionId session;
        quint8 mode;
    };

    std::map<quint16, Registration> m_ports;
};

} // namespace wmsg::telephonyd

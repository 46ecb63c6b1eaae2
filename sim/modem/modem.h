// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/modem/at_terminal.h"
#include "sim/modem/message_commands.h"
#include "sim/modem/network.h"
#include "sim/modem/phone_commands.h"
#include "sim/modem/pty.h"

#include <QtCore/QObject>
#include <QtCore/QString>

namespace wmsg::sim {

/// Modem is the simulated modem with its line and its network.
class Modem : public QObject {
    Q_OBJECT

public:
    struct Settings {
        QString link; ///< to the terminal
        PhoneCommands::Settings phone;
        MessageCommands::Settings messages;
        bool isLoopback = false;
    };

    /// `log` outlives the modem.
    Modem(Settings settings, PduFiles &log);

    /// start makes the line. It returns what is in the way.
    [[nodiscard]] QString start() { return m_line.open(m_settings.link); }

    /// vanish takes the modem away, as when it is unplugged or loses its supply; hang lets it hear
    /// and answer nothing; comeBack ends both, with the modem just switched on. What is in its
    /// memories stays. comeBack returns what is in the way.
    void vanish();
    void hang() { m_isHanging = true; }
    [[nodiscard]] QString comeBack();

    /// setDelay lets the modem take so long to send a message.
    void setDelay(int milliseconds);

    [[nodiscard]] Network &network() { return m_network; }
    /// messageAt returns what lies in a memory, 0 the card's; null where nothing does.
    [[nodiscard]] StoredMessage *messageAt(int store, int place)
    {
        return m_messages.messageAt(store, place);
    }
    bool removeMessage(int store, int place) { return m_messages.removeMessage(store, place); }
    /// status tells all in a line, as "key=value" and blanks.
    [[nodiscard]] QString status() const;

private:
    AtAnswer obey(const AtCommand &command);
    void restart();

    Settings m_settings;
    Network m_network;
    PhoneCommands m_phone;
    MessageCommands m_messages;
    AtTerminal m_terminal;
    Pty m_line;
    bool m_isHanging = false;
    int m_delay = 0;
};

} // namespace wmsg::sim

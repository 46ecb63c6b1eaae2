// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/modem/at_terminal.h"

#include <QtCore/QByteArray>

namespace wmsg::sim {

/// PhoneCommands is the part of the modem that says who it is and how the network is heard.
class PhoneCommands {
public:
    struct Settings {
        QByteArray number; ///< of the subscriber
        QByteArray pin; ///< that the card wants before it is used; empty: none
    };

    explicit PhoneCommands(Settings settings);

    AtAnswer obey(const AtCommand &command);
    /// restart brings back what the modem begins with.
    void restart();

    [[nodiscard]] bool isEchoOn() const { return m_isEchoOn; }
    [[nodiscard]] int errorCodes() const { return m_errorCodes; }
    [[nodiscard]] bool isLocked() const { return m_isLocked; }

private:
    AtAnswer basic(const AtCommand &command);
    AtAnswer pin(const AtCommand &command);
    AtAnswer errors(const AtCommand &command);
    AtAnswer charset(const AtCommand &command);

    Settings m_settings;
    bool m_isEchoOn = true;
    int m_errorCodes = 0;
    bool m_isLocked = false;
    QByteArray m_charset;
};

} // namespace wmsg::sim

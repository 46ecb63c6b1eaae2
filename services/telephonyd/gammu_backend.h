// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/modem.h"

#include <QtCore/QString>

#include <memory>

namespace wmsg::telephonyd {

/// What the gammu back end is told: a device, and how to talk to it.
struct GammuSettings {
    QString device; ///< of the modem, such as /dev/ttyUSB2
    QString connection = QStringLiteral("at115200"); ///< as gammu names connections
};

/// makeGammuModem makes the modem behind libgammu, or sets `problem` to one line and returns null:
/// this daemon was built without libgammu, or the settings make no sense.
[[nodiscard]] std::unique_ptr<Modem> makeGammuModem(const GammuSettings &settings,
                                                    QString &problem);

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/program.h"
#include "sim/modem/modem.h"

#include <string>

namespace wmsg::sim {

/// What wmsg-sim-modem was told, on the command line and in its configuration file.
struct ModemOptions {
    std::string pty;
    std::string control;
    std::string pduLog;
    std::string number = "+15550123";
    std::string serviceCentre = "+15550199";
    std::string pin;
    int storage = 20;
    bool isLoopback = false;
    bool isVerbose = false;

    [[nodiscard]] Modem::Settings settings() const;
};

/// Reads the arguments and the file that they name into `options`.
[[nodiscard]] service::OptionsReading readModemOptions(int argc, char **argv,
                                                       ModemOptions &options);

} // namespace wmsg::sim

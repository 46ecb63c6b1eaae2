// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/program.h"
#include "services/telephonyd/gammu_backend.h"
#include "services/telephonyd/loopback_modem.h"
#include "services/telephonyd/telephony_daemon.h"

#include <QtCore/QString>

namespace wmsg::telephonyd {

/// Which modem the daemon has.
enum class Backend { Loopback, Gammu };

/// Config is what the daemon was told, by its options and by its configuration file. Each option
/// stands under the same name in the file; the command line wins.
struct Config {
    DaemonSettings daemon;
    Backend backend = Backend::Loopback;
    LoopbackSettings loopback;
    GammuSettings gammu;
    QString logFile; ///< empty: standard error
    bool isVerbose = false;
};

/// What reading options came to; to run with `config`, if at all.
struct ConfigReading : service::OptionsReading {
    Config config;
};

/// readConfig reads the options of the program, and the configuration file that they name.
[[nodiscard]] ConfigReading readConfig(int argc, const char *const *argv);

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/program.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>

#include <string>
#include <vector>

namespace wmsg::sim {

/// What the program was told, on the command line and in its configuration file.
struct Options {
    unsigned port = 0;
    std::vector<std::string> subscribers; ///< ADDRESS=WAY
    std::string defaultPush;
    std::string sender = "+15550100";
    std::vector<std::string> faults;
    std::string faultFile;
    std::string pduLog;
    double notifyAgain = 60;
    double pushRetry = 2;
    qint64 keep = 259200;
    qint64 maxSize = 32 << 20;
    qint64 maxStored = 256 << 20;
    std::string log;
    bool isVerbose = false;
};

/// Reads the arguments and the file that they name into `options`.
[[nodiscard]] service::OptionsReading readOptions(int argc, char **argv, Options &options);

// way := [ "sms:" ] path

/// What stands in front of the control socket of a modem simulator; a path alone is the push socket
/// of a proxy daemon.
inline constexpr QLatin1String kShortMessages("sms:");

/// One of the subscribers that were given. Returns what is wrong with the text, or an empty one.
[[nodiscard]] QString readSubscriber(const std::string &text, QString &address, QString &way);

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/report.h"

#include <string>

namespace CLI {
class App;
}

namespace wmsg::cli {

/// The options about the log of the library, which every subcommand has.
struct LogOptions {
    std::string file;
    bool isVerbose = false;

    void addTo(CLI::App &command);
    /// False, with a complaint, when the log file cannot be opened.
    [[nodiscard]] bool apply(LogRoute &route) const;
};

} // namespace wmsg::cli

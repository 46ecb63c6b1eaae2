// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>

namespace CLI {
class App;
}

namespace wmsg::cli {

/// The options of the subcommands that wait for the proxy daemon.
struct SessionOptions {
    std::string timeout;
    bool json = false;

    void addTo(CLI::App &command, const std::string &atTheEnd, const std::string &object);
    /// Zero when none was given.
    [[nodiscard]] std::chrono::seconds timeLimit() const;
};

} // namespace wmsg::cli

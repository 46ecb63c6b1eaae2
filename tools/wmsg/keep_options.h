// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/store_folder.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace wmsg::cli {

/// The options of the subcommands that can keep their messages in the message store.
struct KeepOptions {
    bool store = false;
    std::string folder;

    void addTo(CLI::App &command, const std::string &words, const std::string &usualFolder);
    /// Nothing when nothing is to be kept; `usual` when no folder was given.
    [[nodiscard]] std::optional<StoreFolder> storeFolder(unsigned short usual) const;
};

/// What is wrong with a name as that of a folder of the store; an empty text when nothing is.
[[nodiscard]] std::string folderProblem(const std::string &name);

} // namespace wmsg::cli

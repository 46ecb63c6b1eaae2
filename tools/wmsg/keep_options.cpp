// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/keep_options.h"

#include "tools/wmsg/stored_message.h"

#include <CLI/CLI.hpp>

namespace wmsg::cli {

void KeepOptions::addTo(CLI::App &command, const std::string &words, const std::string &usualFolder)
{
    CLI::Option *storing = command.add_flag("--store", store, words);
    command.add_option("--folder", folder, "Store in this folder instead of " + usualFolder)
        ->check(CLI::Validator(folderProblem, "", ""))
        ->type_name("FOLDER")
        ->needs(storing);
}

std::optional<StoreFolder> KeepOptions::storeFolder(unsigned short usual) const
{
    return store
        ? std::optional<StoreFolder>(folderOf(QString::fromStdString(folder)).value_or(usual))
        : std::nullopt;
}

std::string folderProblem(const std::string &name)
{
    return folderOf(QString::fromStdString(name)) ? std::string()
                                                  : "'" + name
            + "' is no folder: inbox, outbox, sent, drafts, templates, or a number up to 65534";
}

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/log_options.h"

#include "tools/wmsg/files.h"

#include <CLI/CLI.hpp>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

void LogOptions::addTo(CLI::App &command)
{
    auto *log = command.add_option("--log", file, "Append the log of the library to FILE");
    log->type_name("FILE");
    command.add_flag("-v,--verbose", isVerbose, "Write the log of the library to standard error")
        ->excludes(log);
}

bool LogOptions::apply(LogRoute &route) const
{
    if (isVerbose) {
        route.toStandardError();
    }
    const auto path = QByteArray::fromStdString(file);
    if (path.isEmpty() || route.toFile(path)) {
        return true;
    }
    complain(shownName(path) + u": the log cannot be opened: "_s + systemError());
    return false;
}

} // namespace wmsg::cli

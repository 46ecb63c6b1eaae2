// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/program.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

/// How the programs that run until they are stopped read their options: from the command line, and
/// from the configuration file that it names.
namespace wmsg::service {

/// The end of a daemon's help.
extern const char *const kDaemonFooter;

/// A check of one of our functions (see option_checks.h).
[[nodiscard]] CLI::Validator check(std::string (*function)(const std::string &));

/// addText adds an option with a text; `type` is what the help calls it.
CLI::Option *addText(CLI::App &app, const char *name, std::string &value, const char *type,
                     const char *about);

/// addCommonOptions adds those for the version and for the configuration file.
void addCommonOptions(CLI::App &app, const char *aboutFile);

/// readOptions reads the options that `app` knows. Then it calls `take`, which takes them over, and
/// throws a CLI::ValidationError where they do not fit each other.
[[nodiscard]] OptionsReading readOptions(CLI::App &app, int argc, const char *const *argv,
                                         const std::function<void()> &take);

} // namespace wmsg::service

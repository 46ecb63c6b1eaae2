// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/settings.h"

#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/settings_run.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace wmsg::cli {

namespace {

struct SettingsOptions {
    bool json = false;
    LogOptions log;
};

int runSettings(const SettingsOptions &options)
{
    LogRoute log;
    return options.log.apply(log) ? SettingsRun(options.json).run(std::chrono::seconds(0))
                                  : ExitBadInput;
}

} // namespace

void addSettings(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<SettingsOptions>();
    CLI::App *command = program.add_subcommand(
        "settings", "Show the largest message that may be sent, and the server that takes it");
    command->add_flag("--json", options->json, "Print JSON: one object");
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runSettings(*options); });
}

} // namespace wmsg::cli

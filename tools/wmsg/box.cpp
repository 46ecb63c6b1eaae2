// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/box.h"

#include "tools/wmsg/box_run.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/report.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace wmsg::cli {

namespace {

int runBox(const BoxOptions &options, const LogOptions &logOptions)
{
    LogRoute log;
    if (!logOptions.apply(log)) {
        return ExitBadInput;
    }
    BoxRun run(options);
    return run.run();
}

} // namespace

void addBox(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<BoxOptions>();
    CLI::App *command = program.add_subcommand(
        "box", "Start a phone and its network on this machine, until Ctrl-C");
    command
        ->add_option("--folder", options->folder,
                     "Where spool, logs and PDUs lie, made if it is not there; without it a new "
                     "folder, which is removed in the end")
        ->type_name("FOLDER");
    command->add_flag("--keep", options->keep, "Remove no folder in the end");
    command
        ->add_option("--fault", options->faults,
                     "What goes wrong in the network, like \"send 1 http-status=503\"; may be "
                     "given again")
        ->type_name("LINE")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("--faults", options->faultFile, "A file with such lines")
        ->type_name("FILE");
    command->add_flag(
        "--no-modem", options->hasNoModem,
        "Start no modem and no telephony daemon: no short messages, and notifications "
        "go straight to the proxy daemon");
    command->add_flag("--demo", options->isDemo,
                      "Exchange messages between two applications, show them, and end");
    command->add_flag("--json", options->isJson, "Tell in JSON, one object, what was started")
        ->excludes("--demo");
    auto log = std::make_shared<LogOptions>();
    log->addTo(*command);
    command->callback([options, log, &exitCode] { exitCode = runBox(*options, *log); });
}

} // namespace wmsg::cli

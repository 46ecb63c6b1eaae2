// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/box.h"
#include "tools/wmsg/compose.h"
#include "tools/wmsg/decode.h"
#include "tools/wmsg/doctor.h"
#include "tools/wmsg/drm.h"
#include "tools/wmsg/push.h"
#include "tools/wmsg/receive.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/send.h"
#include "tools/wmsg/settings.h"
#include "tools/wmsg/sms.h"
#include "tools/wmsg/store.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

constexpr const char *kFooter = "Exit codes: 0 fine; 1 bad input, with a line on standard error "
                                "that says what and where; 2 wrong usage.";

/// The parser's words; but where a subcommand is asked for and something else was typed, that is
/// it.
QString problemOf(const CLI::Error &error, const CLI::App &program)
{
    const CLI::App *last = &program;
    while (!last->get_subcommands().empty()) {
        last = last->get_subcommands().front();
    }
    const std::vector<std::string> unknown = program.remaining(true);
    if (last->get_require_subcommand_min() == 0 || unknown.empty()) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("\"%1\" is neither a subcommand nor an option")
        .arg(QString::fromStdString(unknown.front()));
}

int run(int argc, char **argv)
{
    CLI::App program("Composes, sends and receives messages, and shows what is in them.", "wmsg");
    program.set_version_flag("--version", "wmsg " WMSG_VERSION, "Print the version and end");
    program.require_subcommand(1);
    program.footer(kFooter);
    int exitCode = wmsg::cli::ExitFine;
    wmsg::cli::addDecode(program, exitCode);
    wmsg::cli::addCompose(program, exitCode);
    wmsg::cli::addDrm(program, exitCode);
    wmsg::cli::addSend(program, exitCode);
    wmsg::cli::addReceive(program, exitCode);
    wmsg::cli::addSettings(program, exitCode);
    wmsg::cli::addSms(program, exitCode);
    wmsg::cli::addStore(program, exitCode);
    wmsg::cli::addPush(program, exitCode);
    wmsg::cli::addBox(program, exitCode);
    wmsg::cli::addDoctor(program, exitCode);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success &wish) {
        return program.exit(wish); // help or the version
    } catch (const CLI::ParseError &error) {
        wmsg::cli::complain(problemOf(error, program) + QStringLiteral(" (see wmsg --help)"));
        return wmsg::cli::ExitUsage;
    }
    return exitCode;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "wmsg: %s\n", problem.what()); // no memory, above all
    } catch (...) {
        std::fputs("wmsg: an unknown problem\n", stderr);
    }
    return wmsg::cli::ExitBadInput;
}

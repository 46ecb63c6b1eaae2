// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"
#include "services/common/program.h"
#include "services/common/stop_signals.h"
#include "sim/mmsc/simulator.h"

#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <cstdio>

using namespace wmsg::service;

namespace {

constexpr const char *kProgram = "wmsg-sim-mmsc";

/// False, with a complaint, when the log cannot be opened.
bool routeLogs(const wmsg::sim::Options &options)
{
    appLogModuleStream = appLogDiscardStream();
    if (options.isVerbose) {
        appLogModuleStream = stderr;
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*=true"));
    } else if (!options.log.empty()) {
        FILE *file = std::fopen(options.log.c_str(), "ae"); // open until the process ends
        if (!file) {
            complain(kProgram, kExitFailed,
                     QString::fromStdString(options.log) + QStringLiteral(": ") + systemError());
            return false;
        }
        appLogModuleStream = file;
    }
    return true;
}

int run(int argc, char **argv)
{
    wmsg::sim::Options options;
    if (const auto end = endAfter(wmsg::sim::readOptions(argc, argv, options), kProgram)) {
        return *end;
    }
    if (!routeLogs(options)) {
        return kExitFailed;
    }
    const QCoreApplication application(argc, argv);
    StopSignals signals;
    QObject::connect(&signals, &StopSignals::stopped, &application, &QCoreApplication::quit);
    wmsg::sim::Simulator simulator(options);
    QString problem = simulator.readFaults();
    if (!problem.isEmpty()) {
        return complain(kProgram, kExitUsage, problem);
    }
    problem = simulator.start();
    if (!problem.isEmpty()) {
        return complain(kProgram, kExitFailed, problem);
    }
    sayListening(simulator.url());
    QCoreApplication::exec();
    return kExitFine;
}

} // namespace

int main(int argc, char **argv)
{
    return runProgram(kProgram, run, argc, argv);
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"
#include "sim/mmsc/simulator.h"

#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

namespace {

constexpr int kExitFine = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

int complain(int code, const QString &problem)
{
    std::fprintf(stderr, "wmsg-sim-mmsc: %s\n", qUtf8Printable(problem));
    return code;
}

// False, with a complaint, when the log cannot be opened.
bool routeLogs(const wmsg::sim::Options &options)
{
    appLogModuleStream = appLogDiscardStream();
    if (options.isVerbose) {
        appLogModuleStream = stderr;
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*=true"));
    } else if (!options.log.empty()) {
        FILE *file = std::fopen(options.log.c_str(), "ae"); // open until the process ends
        if (!file) {
            complain(kExitFailed,
                     QString::fromStdString(options.log) + QStringLiteral(": ")
                         + QString::fromLocal8Bit(std::strerror(errno)));
            return false;
        }
        appLogModuleStream = file;
    }
    return true;
}

int run(int argc, char **argv)
{
    wmsg::sim::Options options;
    if (const auto end = wmsg::sim::readOptions(argc, argv, options)) {
        return *end;
    }
    if (!routeLogs(options)) {
        return kExitFailed;
    }
    const QCoreApplication application(argc, argv);
    wmsg::service::StopSignals signals;
    QObject::connect(&signals, &wmsg::service::StopSignals::stopped, &application,
                     &QCoreApplication::quit);
    wmsg::sim::Simulator simulator(options);
    QString problem = simulator.readFaults();
    if (!problem.isEmpty()) {
        return complain(kExitUsage, problem);
    }
    problem = simulator.start();
    if (!problem.isEmpty()) {
        return complain(kExitFailed, problem);
    }
    std::printf("listening on %s\n", qPrintable(simulator.url()));
    std::fflush(stdout);
    QCoreApplication::exec();
    return kExitFine;
}

} // namespace

int main(int argc, char **argv)
{
    qSetMessagePattern(QStringLiteral("%{time yyyy-MM-ddThh:mm:ss.zzz} %{category}: %{message}"));
    try {
        return run(argc, argv);
    } catch (const std::exception &problem) {
        return complain(kExitFailed, QString::fromUtf8(problem.what()));
    }
}

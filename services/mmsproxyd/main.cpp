// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/program.h"
#include "services/common/stop_signals.h"
#include "services/mmsproxyd/config.h"
#include "services/mmsproxyd/proxy_daemon.h"

#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <cstdio>
#include <sys/stat.h>

using namespace wmsg::proxy;
using namespace wmsg::service;

namespace {

constexpr const char *kProgram = "wmsg-mmsproxyd";

/// Leads the log of the library where it is wanted; false, with a complaint, when it cannot go
/// there.
bool routeLog(const Config &config)
{
    appLogModuleStream = config.isVerbose ? stderr : appLogDiscardStream();
    if (config.logFile.isEmpty()) {
        return true;
    }
    // Open until the process ends.
    FILE *file = std::fopen(QFile::encodeName(config.logFile).constData(), "ae");
    if (!file) {
        complain(kProgram, kExitFailed, config.logFile + QLatin1String(": ") + systemError());
        return false;
    }
    appLogModuleStream = file;
    return true;
}

int run(int argc, char **argv)
{
    const ConfigReading reading = readConfig(argc, argv);
    if (const auto end = endAfter(reading, kProgram)) {
        return *end;
    }
    if (!routeLog(reading.config)) {
        return kExitFailed;
    }
    ::umask(077);
    const QCoreApplication application(argc, argv);
    const StopSignals stop;
    QObject::connect(&stop, &StopSignals::stopped, &application, &QCoreApplication::quit);
    ProxyDaemon daemon(reading.config);
    const QString problem = daemon.start();
    if (!problem.isEmpty()) {
        return complain(kProgram, kExitFailed, problem);
    }
    sayListening(reading.config.proxySocket);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    return runProgram(kProgram, run, argc, argv);
}

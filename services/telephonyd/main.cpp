// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"
#include "services/common/program.h"
#include "services/common/stop_signals.h"
#include "services/telephonyd/config.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QString>

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace wmsg::telephonyd;
using namespace wmsg::service;

namespace {

constexpr const char *kProgram = "wmsg-telephonyd";

/// Leads standard error, which has the log, into the file; false, with a complaint, when it cannot
/// go there.
bool routeLog(const Config &config)
{
    if (config.isVerbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*.debug=true"));
    }
    if (config.logFile.isEmpty()) {
        return true;
    }
    const Descriptor file(::open(QFile::encodeName(config.logFile).constData(),
                                 O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (!file.isOpen() || ::dup2(file.get(), STDERR_FILENO) < 0) {
        complain(kProgram, kExitFailed, config.logFile + QLatin1String(": ") + systemError());
        return false;
    }
    return true;
}

std::unique_ptr<Modem> makeModem(const Config &config, QString &problem)
{
    switch (config.backend) {
    case Backend::Loopback:
        return std::make_unique<LoopbackModem>(config.loopback);
    case Backend::Gammu:
        break;
    }
    return makeGammuModem(config.gammu, problem);
}

int run(int argc, char **argv)
{
    const ConfigReading reading = readConfig(argc, argv);
    if (const auto end = endAfter(reading, kProgram)) {
        return *end;
    }
    ::umask(077);
    const QCoreApplication application(argc, argv);
    const StopSignals stop;
    QString problem;
    auto modem = makeModem(reading.config, problem);
    if (!modem) {
        return complain(kProgram, kExitUsage, problem);
    }
    TelephonyDaemon daemon(reading.config.daemon, std::move(modem));
    QObject::connect(&stop, &StopSignals::stopped, &daemon, &TelephonyDaemon::stop);
    QObject::connect(&daemon, &TelephonyDaemon::stopped, &application, &QCoreApplication::quit);
    problem = daemon.start();
    if (!problem.isEmpty()) {
        return complain(kProgram, kExitFailed, problem);
    }
    if (!routeLog(reading.config)) {
        return kExitFailed;
    }
    sayListening(reading.config.daemon.socket);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    return runProgram(kProgram, run, argc, argv);
}

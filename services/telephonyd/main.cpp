// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"
#include "services/telephonyd/config.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QString>

#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace wmsg::telephonyd;

namespace {

constexpr int kExitFine = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

int complain(int code, const QString &problem)
{
    std::fprintf(stderr, "wmsg-telephonyd: %s\n", qUtf8Printable(problem));
    return code;
}

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
    const wmsg::service::Descriptor file(::open(QFile::encodeName(config.logFile).constData(),
                                                O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (!file.isOpen() || ::dup2(file.get(), STDERR_FILENO) < 0) {
        complain(kExitFailed, config.logFile + QLatin1String(": ") + wmsg::service::systemError());
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
    switch (reading.kind) {
    case ConfigReading::Print:
        std::fputs(qUtf8Printable(reading.text), stdout);
        return kExitFine;
    case ConfigReading::Refuse:
        return complain(kExitUsage, reading.text);
    case ConfigReading::Run:
        break;
    }
    ::umask(077);
    const QCoreApplication application(argc, argv);
    const wmsg::service::StopSignals stop;
    QString problem;
    auto modem = makeModem(reading.config, problem);
    if (!modem) {
        return complain(kExitFailed, problem);
    }
    TelephonyDaemon daemon(reading.config.daemon, std::move(modem));
    QObject::connect(&stop, &wmsg::service::StopSignals::stopped, &daemon, &TelephonyDaemon::stop);
    QObject::connect(&daemon, &TelephonyDaemon::stopped, &application, &QCoreApplication::quit);
    problem = daemon.start();
    if (!problem.isEmpty()) {
        return complain(kExitFailed, problem);
    }
    if (!routeLog(reading.config)) {
        return kExitFailed;
    }
    std::printf("listening on %s\n", qUtf8Printable(reading.config.daemon.socket));
    std::fflush(stdout);
    return QCoreApplication::exec();
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

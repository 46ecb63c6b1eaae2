// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"
#include "services/mmsproxyd/config.h"
#include "services/mmsproxyd/proxy_daemon.h"

#include <platform/applog/applog.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <cstdio>
#include <exception>
#include <sys/stat.h>

using namespace wmsg::proxy;

namespace {

constexpr int kExitFine = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

int complain(int code, const QString &problem)
{
    std::fprintf(stderr, "wmsg-mmsproxyd: %s\n", qUtf8Printable(problem));
    return code;
}

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
        complain(kExitFailed, config.logFile + QLatin1String(": ") + wmsg::service::systemError());
        return false;
    }
    appLogModuleStream = file;
    return true;
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
    if (!routeLog(reading.config)) {
        return kExitFailed;
    }
    ::umask(077);
    const QCoreApplication application(argc, argv);
    const wmsg::service::StopSignals stop;
    QObject::connect(&stop, &wmsg::service::StopSignals::stopped, &application,
                     &QCoreApplication::quit);
    ProxyDaemon daemon(reading.config);
    const QString problem = daemon.start();
    if (!problem.isEmpty()) {
        return complain(kExitFailed, problem);
    }
    std::printf("listening on %s\n", qUtf8Printable(reading.config.proxySocket));
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

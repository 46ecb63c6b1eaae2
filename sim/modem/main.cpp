// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"
#include "sim/modem/control_socket.h"
#include "sim/modem/options.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <cstdio>
#include <exception>

namespace {

constexpr int kExitFine = 0;
constexpr int kExitFailed = 1;

int complain(const QString &problem)
{
    std::fprintf(stderr, "wmsg-sim-modem: %s\n", qUtf8Printable(problem));
    return kExitFailed;
}

/// What is in the way of the folder, the commands and the line; the line comes last, because
/// programs wait for it.
QString start(const wmsg::sim::ModemOptions &options, wmsg::sim::PduFiles &log,
              wmsg::sim::Modem &modem, wmsg::sim::ControlSocket &control)
{
    QString problem;
    if (!options.pduLog.empty()) {
        problem = log.open(QString::fromStdString(options.pduLog));
    }
    if (problem.isEmpty() && !options.control.empty()) {
        problem = control.listen(QString::fromStdString(options.control));
    }
    return problem.isEmpty() ? modem.start() : problem;
}

int run(int argc, char **argv)
{
    wmsg::sim::ModemOptions options;
    if (const auto end = wmsg::sim::readModemOptions(argc, argv, options)) {
        return *end;
    }
    if (options.isVerbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*=true"));
    }
    const QCoreApplication application(argc, argv);
    wmsg::service::StopSignals signals;
    QObject::connect(&signals, &wmsg::service::StopSignals::stopped, &application,
                     &QCoreApplication::quit);
    wmsg::sim::PduFiles log;
    wmsg::sim::Modem modem(options.settings(), log);
    wmsg::sim::ControlSocket control(modem);
    const QString problem = start(options, log, modem, control);
    if (!problem.isEmpty()) {
        return complain(problem);
    }
    std::printf("listening on %s\n", options.pty.c_str());
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
        return complain(QString::fromUtf8(problem.what()));
    }
}

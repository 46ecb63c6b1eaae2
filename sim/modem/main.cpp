// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/program.h"
#include "services/common/stop_signals.h"
#include "sim/modem/control_socket.h"
#include "sim/modem/options.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

using namespace wmsg::service;

namespace {

constexpr const char *kProgram = "wmsg-sim-modem";

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
    if (const auto end = endAfter(wmsg::sim::readModemOptions(argc, argv, options), kProgram)) {
        return *end;
    }
    if (options.isVerbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("wmsg.*=true"));
    }
    const QCoreApplication application(argc, argv);
    StopSignals signals;
    QObject::connect(&signals, &StopSignals::stopped, &application, &QCoreApplication::quit);
    wmsg::sim::PduFiles log;
    wmsg::sim::Modem modem(options.settings(), log);
    wmsg::sim::ControlSocket control(modem);
    const QString problem = start(options, log, modem, control);
    if (!problem.isEmpty()) {
        return complain(kProgram, kExitFailed, problem);
    }
    sayListening(QString::fromStdString(options.pty));
    QCoreApplication::exec();
    return kExitFine;
}

} // namespace

int main(int argc, char **argv)
{
    return runProgram(kProgram, run, argc, argv);
}

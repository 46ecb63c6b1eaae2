// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/listening_run.h"

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace wmsg::cli {

ListeningRun::ListeningRun()
    : WMFMListener(nullptr), m_application(m_argumentCount, m_arguments) { }

ListeningRun::~ListeningRun()
{
    if (m_signals >= 0) {
        ::close(m_signals);
    }
}

int ListeningRun::run(std::chrono::seconds timeout)
{
    watchSignals();
    if (!open()) {
        return ExitBadInput;
    }
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &m_context, [this] {
        if (!isFinished()) {
            timedOut();
        }
    });
    if (timeout.count() > 0) {
        timer.start(timeout);
    }
    begin();
    if (!isFinished()) {
        m_loop.exec();
    }
    return m_exitCode;
}

void ListeningRun::watchSignals()
{
    sigset_t wanted;
    ::sigemptyset(&wanted);
    ::sigaddset(&wanted, SIGINT);
    ::sigaddset(&wanted, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &wanted, nullptr);
    m_signals = ::signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_signals < 0) {
        ::sigprocmask(SIG_UNBLOCK, &wanted, nullptr); // they end the program as ever
        return;
    }
    auto *notifier = new QSocketNotifier(m_signals, QSocketNotifier::Read, &m_context);
    QObject::connect(notifier, &QSocketNotifier::activated, &m_context, [this] { takeSignal(); });
}

void ListeningRun::takeSignal()
{
    signalfd_siginfo signal;
    if (::read(m_signals, &signal, sizeof signal) == sizeof signal && !isFinished()) {
        interrupted();
    }
}

void ListeningRun::finish(int exitCode)
{
    m_exitCode = exitCode;
    m_isFinished = true;
    close();
    m_loop.exit(exitCode);
}

} // namespace wmsg::cli

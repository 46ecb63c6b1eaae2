// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/session_run.h"

#include <qt2/qwssocket.h>

#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

SessionRun::SessionRun() : WMFMListener(nullptr), m_application(m_argumentCount, m_arguments) { }

SessionRun::~SessionRun()
{
    if (m_signals >= 0) {
        ::close(m_signals);
    }
}

int SessionRun::run(std::chrono::seconds timeout)
{
    watchSignals();
    if (!open()) {
        complain(u"no session can be opened"_s);
        return ExitBadInput;
    }
    watchConnection();
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

bool SessionRun::open()
{
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    auto *opened = WMFMSession::open(WMFM::MSG_TYPE_MMS, status);
    m_session.reset(dynamic_cast<WMMSSession *>(opened));
    return m_session && status == WMFM::STATUS_OK && m_session->setListener(this, status);
}

// A session tells of a connection that fails; that the daemon ended it in good order, as one does
// that was killed, tells its socket alone. Both are heard behind the events that came before.
void SessionRun::watchConnection()
{
    const auto lost = [this] {
        if (!isFinished()) {
            disconnected(connectionProblem());
        }
    };
    QObject::connect(m_session.get(), &WMMSSession::connectionClosed, &m_context, lost,
                     Qt::QueuedConnection);
    if (const auto *socket = m_session->findChild<QWSSocket *>()) {
        m_wasConnected = socket->state() == QLocalSocket::ConnectedState;
        QObject::connect(socket, &QLocalSocket::connected, &m_context,
                         [this] { m_wasConnected = true; });
        QObject::connect(socket, &QWSSocket::connectionClosed, &m_context, lost,
                         Qt::QueuedConnection);
    }
}

QString SessionRun::connectionProblem() const
{
    if (m_wasConnected) {
        return u"the proxy daemon has ended the connection"_s;
    }
    const auto *socket = m_session->findChild<QWSSocket *>();
    return socket && socket->error() == QLocalSocket::SocketAccessError
        ? u"the proxy daemon at /tmp/mmsproxy is not for this user"_s
        : u"no proxy daemon listens at /tmp/mmsproxy (is wmsg-mmsproxyd running?)"_s;
}

void SessionRun::watchSignals()
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

void SessionRun::takeSignal()
{
    signalfd_siginfo signal;
    if (::read(m_signals, &signal, sizeof signal) == sizeof signal && !isFinished()) {
        interrupted();
    }
}

void SessionRun::finish(int exitCode)
{
    m_exitCode = exitCode;
    m_session.reset();
    m_loop.exit(exitCode);
}

} // namespace wmsg::cli

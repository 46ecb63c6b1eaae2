// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/report.h"

#include <core/wmfmlistener.h>
#include <mms/session/wmmssession.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QObject>

#include <chrono>
#include <memory>

namespace wmsg::cli {

/// One run of a subcommand that talks with the proxy daemon: a session, its listener, and the event
/// loop that drives them. A subcommand derives from it and says what it does when something is
/// heard, when its time is over and when the user wants it to end (Ctrl-C, or SIGTERM).
class SessionRun : protected WMFMListener {
public:
    SessionRun();
    ~SessionRun() override;

    /// Connects, runs until finish(), and returns what that was given. Zero means no time limit.
    [[nodiscard]] int run(std::chrono::seconds timeout);

protected:
    /// The session stands, whether the daemon is there or not.
    virtual void begin() = 0;
    virtual void interrupted() = 0;
    virtual void timedOut() = 0;
    /// The daemon is not there, or no longer; `problem` says which.
    virtual void disconnected(const QString &problem) = 0;

    /// Ends the run. The session is closed at once, so that nothing more is heard: what the daemon
    /// has handed over and was not told yet stays the daemon's. May be called from anywhere.
    void finish(int exitCode);
    [[nodiscard]] bool isFinished() const { return m_session == nullptr; }
    /// Null when the run is finished.
    [[nodiscard]] WMMSSession *session() const { return m_session.get(); }

private:
    struct Closer {
        void operator()(WMMSSession *session) const { WMFMSession::close(session); }
    };

    bool open();
    void watchConnection();
    void watchSignals();
    void takeSignal();
    [[nodiscard]] QString connectionProblem() const;
    QString listenerName() const override { return QStringLiteral("wmsg"); }

    int m_argumentCount = 1;
    char m_name[5] = "wmsg";
    char *m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application;
    QObject m_context; // what the connected functions end with
    QEventLoop m_loop;
    std::unique_ptr<WMMSSession, Closer> m_session;
    int m_signals = -1;
    bool m_wasConnected = false;
    int m_exitCode = ExitBadInput;
};

} // namespace wmsg::cli

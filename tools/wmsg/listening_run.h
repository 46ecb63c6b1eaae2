// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/report.h"

#include <core/wmfmlistener.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QObject>

#include <chrono>

namespace wmsg::cli {

/// One run of a subcommand that listens to a session: its listener, and the event loop that drives
/// both. A subcommand derives from it and says what it does when something is heard, when its time
/// is over and when the user wants it to end (Ctrl-C, or SIGTERM).
class ListeningRun : protected WMFMListener {
public:
    ListeningRun();
    ~ListeningRun() override;

    /// Opens the session, runs until finish(), and returns what that was given. Zero means no time
    /// limit.
    [[nodiscard]] int run(std::chrono::seconds timeout);

protected:
    /// Opens the session; false, with a complaint, when that cannot be.
    virtual bool open() = 0;
    /// Closes it, so that nothing more is heard.
    virtual void close() = 0;
    /// The session stands.
    virtual void begin() = 0;
    virtual void interrupted() = 0;
    virtual void timedOut() = 0;

    /// Ends the run. The session is closed at once: what was to be heard and was not told yet stays
    /// with the service. May be called from anywhere.
    void finish(int exitCode);
    [[nodiscard]] bool isFinished() const { return m_isFinished; }
    /// What connected functions end with.
    [[nodiscard]] QObject *context() { return &m_context; }

private:
    void watchSignals();
    void takeSignal();
    QString listenerName() const override { return QStringLiteral("wmsg"); }

    int m_argumentCount = 1;
    char m_name[5] = "wmsg";
    char *m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application;
    QObject m_context;
    QEventLoop m_loop;
    int m_signals = -1;
    bool m_isFinished = false;
    int m_exitCode = ExitBadInput;
};

} // namespace wmsg::cli

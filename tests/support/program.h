// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QProcess>
#include <QtTest/QtTest>

#include <csignal>
#include <linux/prctl.h>
#include <sys/prctl.h>

/// A program beside the test. It is killed with its owner, or with a test that crashes.
class Program {
public:
    Program()
    {
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    }
    explicit Program(const QString &program, const QStringList &arguments = {}) : Program()
    {
        start(program, arguments);
    }
    ~Program() { kill(); }
    Q_DISABLE_COPY_MOVE(Program)

    void start(const QString &program, const QStringList &arguments)
    {
        m_process.start(program, arguments);
    }
    /// Waits for a line that it prints. Without one it has ended, or says nothing.
    QByteArray line()
    {
        (void)QTest::qWaitFor([this] { return m_process.canReadLine() || hasEnded(); }, kPatience);
        return m_process.readLine();
    }
    /// Waits for its end; the exit code, -1 for none.
    int end()
    {
        const bool ended = hasEnded() || m_process.waitForFinished(kPatience);
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    /// Asks it to end, as its service manager does, and waits for that; the exit code, -1 for none.
    int stop()
    {
        m_process.terminate();
        return end();
    }
    /// Ends it at once, as a crash would.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    void signal(int number) const { ::kill(pid_t(m_process.processId()), number); }

    [[nodiscard]] bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    [[nodiscard]] bool wasKilled() const
    {
        return hasEnded() && m_process.exitStatus() == QProcess::CrashExit
            && m_process.exitCode() == SIGKILL;
    }
    QString out() { return QString::fromUtf8(m_process.readAllStandardOutput()); }
    QString err() { return QString::fromUtf8(m_process.readAllStandardError()); }
    QProcess &process() { return m_process; }

private:
    static constexpr int kPatience = 120000; // the machine may be busy

    QProcess m_process;
};

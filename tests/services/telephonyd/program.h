// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtTest/QtTest>

/// The program wmsg-telephonyd, with a folder of its own for socket and spool.
class TelephonyProgram {
public:
    explicit TelephonyProgram(const QTemporaryDir &folder) : m_folder(folder) { }
    ~TelephonyProgram() { stop(); }
    Q_DISABLE_COPY_MOVE(TelephonyProgram)

    QStringList options() const
    {
        return {"--socket", m_folder.filePath("socket"), "--spool", m_folder.filePath("spool")};
    }
    /// Starts it, and tells whether it says that it listens.
    bool start(const QStringList &more = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(WMSG_TELEPHONYD, options() + more);
        return QTest::qWaitFor([this] { return m_process.canReadLine(); }, 30000)
            && m_process.readLine()
            == "listening on " + m_folder.filePath("socket").toUtf8() + '\n';
    }
    /// Asks it to end, and tells whether it ended well.
    bool stop()
    {
        m_process.terminate();
        return m_process.waitForFinished(30000) && m_process.exitStatus() == QProcess::NormalExit
            && m_process.exitCode() == 0;
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    QProcess &process() { return m_process; }

private:
    const QTemporaryDir &m_folder;
    QProcess m_process;
};

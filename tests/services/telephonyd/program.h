// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/program.h"

/// The program wmsg-telephonyd, with a folder of its own for socket and spool.
class TelephonyProgram {
public:
    explicit TelephonyProgram(const QTemporaryDir &folder) : m_folder(folder)
    {
        m_program.process().setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }

    QStringList options() const
    {
        return {"--socket", m_folder.filePath("socket"), "--spool", m_folder.filePath("spool")};
    }
    /// Starts it, and tells whether it says that it listens.
    bool start(const QStringList &more = {})
    {
        m_program.start(WMSG_TELEPHONYD, options() + more);
        return m_program.line() == "listening on " + m_folder.filePath("socket").toUtf8() + '\n';
    }
    /// Asks it to end, and tells whether it ended well.
    bool stop() { return m_program.stop() == 0; }
    void kill() { m_program.kill(); }
    Program &program() { return m_program; }

private:
    const QTemporaryDir &m_folder;
    Program m_program;
};

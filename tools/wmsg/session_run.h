// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/listening_run.h"
#include "tools/wmsg/owned_session.h"

#include <mms/session/wmmssession.h>

namespace wmsg::cli {

/// One run of a subcommand that talks with the proxy daemon.
class SessionRun : public ListeningRun {
protected:
    /// The daemon is not there, or no longer; `problem` says which. The session stands before it
    /// begins, whether the daemon is there or not.
    virtual void disconnected(const QString &problem) = 0;

    /// Null when the run is finished.
    [[nodiscard]] WMMSSession *session() const { return m_session.get(); }

private:
    bool open() override;
    void close() override { m_session.reset(); }
    void watchConnection();
    [[nodiscard]] QString connectionProblem() const;

    OwnedSession<WMMSSession> m_session;
    bool m_wasConnected = false;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/listening_run.h"
#include "tools/wmsg/owned_session.h"

#include <sms/wsmssession.h>

namespace wmsg::cli {

/// One run of a subcommand that talks with the telephony service.
class SmsRun : public ListeningRun {
protected:
    /// Null when the run is finished.
    [[nodiscard]] WSMSSession *session() const { return m_session.get(); }

private:
    bool open() override;
    void close() override { m_session.reset(); }

    OwnedSession<WSMSSession> m_session;
};

} // namespace wmsg::cli

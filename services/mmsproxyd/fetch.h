// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/progress_gate.h"
#include "services/mmsproxyd/session_id.h"

#include <QtCore/QPointer>
#include <QtCore/QString>

#include <vector>

namespace wmsg::proxy {

class HttpTransfer;

/// Request is what a session asked for.
struct Request {
    SessionId session = 0;
    qint32 id = 0;
    QString uri;
    bool isPaused = false;
    ProgressGate gate;
};

/// Fetch is a message that is being fetched: for the sessions that asked for it, or for nobody in
/// particular. A transfer goes with it.
struct Fetch {
    Fetch() = default;
    ~Fetch();
    Q_DISABLE_COPY_MOVE(Fetch)

    /// A message that several sessions asked for is paused when all of them want that.
    [[nodiscard]] bool isPaused() const;
    void forget(SessionId session);
    /// The requests that are to hear of a progress.
    [[nodiscard]] std::vector<Request> thatHear(qint64 done, qint64 total);

    std::vector<Request> requests;
    bool wasPaused = false; // while the transfer ran: the peer may have lost patience
    QPointer<HttpTransfer> transfer;
};

} // namespace wmsg::proxy

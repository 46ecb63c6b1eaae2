// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/wmfmlistener.h>
#include <core/wmfmsession.h>

#include <memory>
#include <utility>

namespace wmsg::cli {

struct SessionCloser {
    void operator()(WMFMSession *session) const { WMFMSession::close(session); }
};

/// A session that is closed with its owner.
template <typename Session> using OwnedSession = std::unique_ptr<Session, SessionCloser>;

/// openSession opens a session for messages of this type, which `listener` hears. It returns null
/// when that cannot be.
template <typename Session>
[[nodiscard]] OwnedSession<Session> openSession(WMFM::MSG_TYPE_T type, WMFMListener *listener)
{
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    auto *opened = WMFMSession::open(type, status);
    OwnedSession<Session> session(dynamic_cast<Session *>(opened));
    const bool isHeard =
        session && status == WMFM::STATUS_OK && session->setListener(listener, status);
    return isHeard ? std::move(session) : nullptr;
}

} // namespace wmsg::cli

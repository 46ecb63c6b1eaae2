// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmsession.h"

WMFMSession::~WMFMSession() = default;

void WMFMSession::close(WMFMSession *session)
{
    delete session;
}

bool WMFMSession::setListener(WMFMListener *listener, WMFM::STATUS_T &status)
{
    if (m_listener) {
        status = WMFM::STATUS_LISTENER_EXISTS;
        return false;
    }
    // Kept: attaching null succeeds, and the session has no listener then.
    m_listener = listener;
    status = WMFM::STATUS_OK;
    return true;
}

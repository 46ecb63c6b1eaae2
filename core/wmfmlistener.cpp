// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmlistener.h"

#include "core/wmfmmsg.h"

WMFMListener::WMFMListener(WMFMSession *session) : m_session(session) { }

WMFMListener::~WMFMListener() = default;

void WMFMListener::msgIncome(WMFMMsg *msg)
{
    delete msg;
}

void WMFMListener::statusChanged(int, WMFM::STATUS_T) { }

void WMFMListener::progress(int, int, int) { }

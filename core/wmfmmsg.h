// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfm.h"
#include "core/wmfmentry.h"
#include "wmsg_export.h"

/// WMFMMsg is what all messages have in common: a sender, recipients and a kind. The concrete
/// messages are WMMSMsg and WSMSMsg; it holds no data itself.
///
/// The application owns, and deletes, every message that it made or got from factory(), and every
/// message that WMFMListener::msgIncome brought it. A message given to WMFMSession::send stays the
/// application's.
class WMSG_EXPORT WMFMMsg {
public:
    virtual ~WMFMMsg();

    /// getFrom returns the sender of the message.
    virtual WMFMEntry getFrom() = 0;

    /// setTo adds or sets a recipient. It returns true, or false when this kind of message does not
    /// take such an address; the recipients are then unchanged.
    virtual bool setTo(const WMFMEntry &entry) = 0;

    /// getMsgType returns the kind of the message, which is that of its class.
    virtual WMFM::MSG_TYPE_T getMsgType() const = 0;

    /// factory returns an empty message of the given kind, which the caller owns, or null when
    /// there is no such kind.
    static WMFMMsg *factory(WMFM::MSG_TYPE_T type);

protected:
    WMFMMsg() = default;
    WMFMMsg(const WMFMMsg &) = default;
    WMFMMsg &operator=(const WMFMMsg &) = default;
};

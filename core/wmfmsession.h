// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfm.h"
#include "wmsg_export.h"

class WMFMListener;
class WMFMMsg;

/// WMFMSession is the way to send and receive messages of one kind. An application opens a session,
/// checks the status, makes its listener and attaches it, sends; it closes the session and then
/// deletes the listener.
///
/// The application owns every session it got from open() and gives it back with close(). A session
/// never owns its listener, and messages given to send() stay the application's. Attach a listener
/// before the event loop runs: what is to be told while there is none is dropped.
///
/// A session is used in the thread that opened it, and needs that thread's event loop.
class WMSG_EXPORT WMFMSession {
public:
    WMFMSession(const WMFMSession &) = delete;
    WMFMSession &operator=(const WMFMSession &) = delete;

    /// send hands `msg` over for sending and returns at once: the number of the request, whose
    /// outcome arrives through WMFMListener::statusChanged, or -1 with the reason in `status`. The
    /// message stays the caller's.
    virtual int send(WMFMMsg *msg, WMFM::STATUS_T &status) = 0;

    /// getMsgType returns the kind of messages the session moves.
    virtual WMFM::MSG_TYPE_T getMsgType() const = 0;

    virtual ~WMFMSession();

    /// open returns a new session, which the caller gives back with close(). Test `status`: a
    /// session may be returned although it could not be set up, with STATUS_FAIL. For an unknown
    /// type it returns null with STATUS_INVALID_PARAM.
    static WMFMSession *open(WMFM::MSG_TYPE_T type, WMFM::STATUS_T &status);

    /// close deletes a session; null is ignored.
    static void close(WMFMSession *session);

    /// setListener attaches `listener`, which stays the caller's, and returns true. A session that
    /// has a listener keeps it: the result is then false with STATUS_LISTENER_EXISTS. Attaching
    /// null succeeds and leaves the session without one.
    bool setListener(WMFMListener *listener, WMFM::STATUS_T &status);

    /// getListener returns the listener, null when there is none.
    WMFMListener *getListener() const { return m_listener; }

protected:
    WMFMSession() = default;

private:
    WMFMListener *m_listener = nullptr;
};

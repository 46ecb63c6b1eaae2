// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfm.h"
#include "wmsg_export.h"

#include <QtCore/QString>

class WMFMMsg;
class WMFMSession;

/// WMFMListener is what an application derives from to hear of its session: messages that arrive,
/// outcomes of requests, progress. All calls come from the event loop of the session's thread.
///
/// The application owns its listener and attaches it with WMFMSession::setListener; the listener
/// does not attach itself. Session and listener do not own each other: close the session first,
/// then delete the listener.
class WMSG_EXPORT WMFMListener {
public:
    /// WMFMListener(session) remembers the session, and does no more. `session` may be null.
    explicit WMFMListener(WMFMSession *session);
    virtual ~WMFMListener();

    WMFMListener(const WMFMListener &) = delete;
    WMFMListener &operator=(const WMFMListener &) = delete;

    /// getSession returns the session given at construction.
    WMFMSession *getSession() const { return m_session; }

    /// msgIncome takes a message that arrived: a short message, or a multimedia message that was
    /// retrieved. It belongs to the listener from then on. The default deletes it; an override that
    /// keeps it must delete it later.
    virtual void msgIncome(WMFMMsg *msg);

    /// statusChanged tells that request `id` has finished or changed its state, with the status
    /// that the service reported, whatever its number. The default does nothing.
    virtual void statusChanged(int id, WMFM::STATUS_T status);

    /// listenerName returns the name of the listener for the application's own logs. The library
    /// never calls it.
    virtual QString listenerName() const = 0;

    /// progress tells how far multimedia request `id` has come, with the two counters that the
    /// proxy daemon sends. The default does nothing.
    virtual void progress(int id, int value1, int value2);

private:
    WMFMSession *m_session;
};

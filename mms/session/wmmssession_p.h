// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfm.h"
#include "mms/session/mms_ua_cmd.h"
#include "mms/session/mms_ua_svcmd.h"
#include "qt2/qcustomevent.h"
#include "qt2/qwssocket.h"

#include <QtCore/QEvent>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

class WMFMListener;
class WMMSMsg;
class WMMSSession;

/// The number of the Qt event that carries event `id` of the daemon.
constexpr int proxyEventType(int id)
{
    return id + 1003;
}
constexpr int kFirstProxyEvent = proxyEventType(MMS_UA_SVCMD_REQ_COMPLETE);
constexpr int kLastProxyEvent = proxyEventType(MMS_UA_SVCMD_DELIVERY);
static_assert(kFirstProxyEvent >= QEvent::User);

/// ProxyEvent is an event of the daemon on its way through the event loop. It owns its record, so
/// that the record goes with it, handled or not.
class ProxyEvent final : public QCustomEvent {
public:
    explicit ProxyEvent(std::unique_ptr<MMS_UA_SvCmd> record)
        : QCustomEvent(proxyEventType(record->type()), record.get()), m_record(std::move(record))
    {
    }

private:
    std::unique_ptr<MMS_UA_SvCmd> m_record;
};

/// WMMSSessionPrivate is the private half of a session: the state of the connection and what is
/// done about each event. A handler may find that the listener has closed the session when its call
/// returns, and touches nothing of it then.
class WMMSSessionPrivate {
public:
    explicit WMMSSessionPrivate(WMMSSession *session) : owner(session) { }

    /// The last number given to a request.
    qint32 requestCounter = -1;
    /// A registration of the session's own; there is none, so that all are the application's.
    qint32 nativeRegId = -1;
    std::unique_ptr<QWSSocket> socket;
    /// Noted, and asked by nobody: requests go to a dead socket without an error.
    bool closed = true;
    WMMSSession *owner;
    /// The files of the messages that the listener is being told; more than one when it lets the
    /// event loop go on meanwhile.
    QStringList beingTold;

    /// Ends the connection. A listener that closes the session while it is told a message has the
    /// message: its file is removed first, for the daemon takes back what is there when a session
    /// goes.
    void close();

    /// Writes a command under the next request number and returns that.
    int request(MMS_UA_Cmd &command);
    /// Asks for something about an earlier request.
    void request(MMS_UA_TargetCmd &&command, int target);

    /// Reads one event, if its id is there, and posts it. False: there is nothing to go on with.
    bool readEvent();
    /// Ends a connection on which nothing can be understood any more.
    void drop();

    /// Saves `message` under a name of its own and returns that; null with `status` set on failure.
    static QString save(WMMSMsg &message, WMFM::STATUS_T &status);

    /// Calls the handler of an event type from 1004 to 1010. False: there is none.
    bool handle(int eventType, void *record);
    void procEvReqCompleted(MMS_UA_SvReqCompleteCmd *ev);
    void procEvRegCompleted(MMS_UA_SvRegCompleteCmd *ev);
    void procEvRetrCompleted(MMS_UA_SvRetrCompleteCmd *ev);
    void procEvProgress(MMS_UA_SvProgCmd *ev);
    void procEvStsRet(MMS_UA_SvStsRetCmd *ev);

private:
    void tellStatus(qint32 id, qint32 status) const;
};

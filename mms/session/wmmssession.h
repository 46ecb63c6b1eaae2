// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmsession.h"
#include "wmsg_export.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

class WMMSSessionPrivate;

/// WMMSSession is the way to send and receive multimedia messages: one connection to the proxy
/// daemon at /tmp/mmsproxy. Applications get it from WMFMSession::open and give it back with
/// WMFMSession::close; the operations that WMFMSession lacks need a cast to this class.
///
/// Every request is handed to the daemon at once and gets a number, which counts from 0 in each
/// session. Its outcome arrives through WMFMListener::statusChanged under that number, its progress
/// through WMFMListener::progress, and a message that was retrieved through
/// WMFMListener::msgIncome; all of them from the event loop, never from inside a request. A status
/// is passed on as the daemon sent it. A listener may close the session from inside its calls.
///
/// A daemon that is not there is told by connectionClosed(), from the event loop. A session does
/// not connect again: requests on a session whose connection has ended are accepted and lost. Open
/// a new one.
///
/// The daemon is taken to write each record at once. A record that arrives in pieces is not put
/// together again, and what follows is read as a record of its own; a record that makes no sense
/// ends the connection. docs/formats/proxy-records.md tells what is exchanged.
///
/// A session belongs to one thread, that of the event loop that drives it.
class WMSG_EXPORT WMMSSession : public QObject, public WMFMSession {
    Q_OBJECT

public:
    /// What getSetting() tells.
    struct MMS_Setting_Info {
        qint32 moSize = 0; ///< the largest message that may be sent, in bytes
        QString svrURI; ///< the MMS server
    };

    /// WMMSSession(status) connects to the daemon and sets `status` to STATUS_OK, whether the
    /// daemon is there or not. Without memory it sets STATUS_FAIL; all requests then fail with
    /// STATUS_FAIL.
    explicit WMMSSession(WMFM::STATUS_T &status);

    /// ~WMMSSession closes the connection. Events that have arrived and were not told yet are
    /// dropped, and the files that they name stay where they are.
    ~WMMSSession() override;

    /// registerAppID asks for the messages to the application `appId`, deRegisterAppID for no more
    /// of them. They return the number of the request.
    int registerAppID(const QString &appId, WMFM::STATUS_T &status);
    int deRegisterAppID(const QString &appId, WMFM::STATUS_T &status);

    /// send saves `msg` as a mail file with a name of its own below /tmp and hands the file over to
    /// the daemon. It returns the number of the request, or -1 with `status` set to
    ///
    /// - STATUS_FAIL: `msg` is no multimedia message;
    /// - STATUS_SEND_FAIL: it has no To, Cc or Bcc address, no content type, or cannot be saved;
    /// - STATUS_INVALID_PARAM: none of the 65536 names for the file is free.
    ///
    /// The name is reserved first, so that no other process uses it. `msg` stays the caller's.
    int send(WMFMMsg *msg, WMFM::STATUS_T &status) override;

    /// mmsAbort, mmsPause and mmsResume ask to end, hold up or go on with the earlier request `id`
    /// of this session. They are requests with numbers of their own, which are not returned.
    void mmsAbort(int id, WMFM::STATUS_T &status);
    void mmsPause(int id, WMFM::STATUS_T &status);
    void mmsResume(int id, WMFM::STATUS_T &status);

    /// getMsgType returns MSG_TYPE_MMS.
    WMFM::MSG_TYPE_T getMsgType() const override;

    /// getSetting asks the settings server at /tmp/extra-mmserver, and blocks until it answers or
    /// closes. It returns false, with `info` unchanged, when nobody listens there. The answer is
    /// what one read of 128 bytes gives, so that a URI has 60 characters at most; what it
    /// lacks becomes 0 and an empty text.
    bool getSetting(MMS_Setting_Info &info);

    /// event tells the listener what the daemon reported. It returns true for the events of the
    /// session that it handles, false for those that it does not and for events of others; for
    /// events of Qt, what QObject::event returns.
    bool event(QEvent *e) override;

public Q_SLOTS:
    /// readData, errorHandler and closeClient serve the socket of the session.
    void readData();
    void errorHandler(int error);
    void closeClient();

Q_SIGNALS:
    /// connectionClosed tells that the connection could not be made or broke. When the daemon
    /// closes it in good order nothing is told.
    void connectionClosed();

private:
    std::unique_ptr<WMMSSessionPrivate> m_private;
};

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmsession.h"
#include "platform/telephony/tapi_sms.h"
#include "wmsg_export.h"

#include <QtCore/QByteArray>

#include <memory>

class WSMSClient;
class WSMSMsg;

/// WSMSSession is the way to send and receive short messages, through the telephony service of the
/// device. Applications get it from WMFMSession::open and give it back with WMFMSession::close; the
/// operations that WMFMSession lacks need a cast to this class.
///
/// A request that was accepted is told by WMFMListener::statusChanged under the number that send()
/// returned, with 0 when the network has taken the message; other numbers are those of the
/// telephony service. Messages that arrive come through WMFMListener::msgIncome. All of it comes
/// from the event loop, never from inside a request. A message that arrives while there is no
/// listener stays with the telephone, and comes to another session or a later one.
///
/// Of the two ports of a message the first is the destination and the second the source. A message
/// that arrived without ports has two zeros.
///
/// A session belongs to one thread, that of the event loop that drives it.
class WMSG_EXPORT WSMSSession : public WMFMSession {
public:
    /// WSMSSession(status) makes the session and its client, and sets `status` to STATUS_OK, or to
    /// STATUS_FAIL when there is no telephony service: all requests then fail.
    explicit WSMSSession(WMFM::STATUS_T &status);
    /// ~WSMSSession gives the ports of the session back. What was sent goes its way.
    ~WSMSSession() override;

    /// getMsgType returns MSG_TYPE_SMS.
    WMFM::MSG_TYPE_T getMsgType() const override;

    /// send hands `msg` over for sending and returns at once: the number of the request, with
    /// `status` set to STATUS_OK, or
    ///
    /// - -1 and STATUS_FAIL: `msg` is null;
    /// - 0 and STATUS_FAIL: it is no short message;
    /// - -1 and STATUS_SEND_FAIL: it has no recipient;
    /// - -1 and STATUS_CONTENT_OVERFLOW: its text does not fit one short message;
    /// - -1 and STATUS_FAIL: the telephony service does not take it, for example because its data
    ///   does not fit.
    ///
    /// Without a service centre of its own it goes through the default one. `msg` stays the
    /// caller's.
    int send(WMFMMsg *msg, WMFM::STATUS_T &status) override;

    /// registerPortNumber asks for the messages to `port`, which no other session gets then, and
    /// waits for the answer: STATUS_OK, or STATUS_FAIL when another session has it. `mode` says
    /// what else the session gets.
    WMFM::STATUS_T registerPortNumber(unsigned short port, SMS_RECV_MODE_E mode);
    /// deregisterPortNumber gives a port back, and returns STATUS_OK, or STATUS_FAIL when the
    /// session does not have it.
    WMFM::STATUS_T deregisterPortNumber(unsigned short port);

    /// getRegisteredPort returns the port that was registered last, 0 when none is.
    [[nodiscard]] unsigned short getRegisteredPort() const;

    /// setTakesMessages says whether the session takes messages that arrive, which it does until it
    /// is told otherwise. A session that sends and does no more leaves them to others.
    void setTakesMessages(bool takes) { m_takesMessages = takes; }
    [[nodiscard]] bool takesMessages() const { return m_takesMessages; }

private:
    int sendPlain(WSMSMsg &msg, const QByteArray &serviceCenter, WMFM::STATUS_T &status);
    int sendToPort(WSMSMsg &msg, const QByteArray &serviceCenter, WMFM::STATUS_T &status);
    QByteArray serviceCenterOf(const WSMSMsg &msg) const;

    quint32 m_registeredPort = 0;
    bool m_takesMessages = true;
    std::unique_ptr<WSMSClient> m_client;
};

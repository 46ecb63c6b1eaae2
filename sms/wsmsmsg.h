// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmmsg.h"
#include "qt2/qarray.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <memory>

class WSMSMsgPrivate;

/// SMS_ENCODE_TYPE_E is what the body of a short message is.
enum SMS_ENCODE_TYPE_E : int {
    SMS_ENCODE_TYPE_TEXT = 0,
    SMS_ENCODE_TYPE_BINARY = 1,
};

/// WSMSMsg is one short message: the number of its sender or recipient, the service centre, the
/// time stamp, a pair of application ports if it has one, and a body that is text or bytes.
///
/// An application fills one and hands it to WSMSSession::send; the session makes one for each
/// message that arrives and gives it to WMFMListener::msgIncome. What fits one short message is
/// found out when it is sent.
///
/// Messages are values: a copy shares nothing with its original. The bytes of a body are the one
/// thing that a message may share with the application, as the two setBody() tell. It may be used
/// in any thread, one thread at a time.
class WMSG_EXPORT WSMSMsg : public WMFMMsg {
public:
    /// WSMSMsg() makes a text message without a body, numbers, time stamp or ports.
    WSMSMsg();
    WSMSMsg(const WSMSMsg &other);
    WSMSMsg &operator=(const WSMSMsg &other);
    ~WSMSMsg() override;

    /// getMsgType returns MSG_TYPE_SMS.
    WMFM::MSG_TYPE_T getMsgType() const override;

    /// getFrom and getTo return the sender and the recipient as entries of type 1, without a name.
    WMFMEntry getFrom() override;
    WMFMEntry getTo();

    /// setFrom takes the address of `entry` as it stands, whatever its type, and returns true.
    bool setFrom(const WMFMEntry &entry);

    /// setTo takes the address of `entry` and returns true, or returns false, with nothing changed,
    /// unless it is a telephone number: type 1, 1 to 41 characters, no at sign behind the first
    /// character.
    bool setTo(const WMFMEntry &entry) override;

    /// getServiceCenter returns the number of the service centre; empty stands for the default one.
    QString getServiceCenter() const;
    /// setServiceCenter sets it and returns true, or returns false, with nothing changed, for an
    /// empty number.
    bool setServiceCenter(const QString &sc);

    /// getTimeStamp returns when the service centre got the message, in local time; it is not valid
    /// for a message that did not arrive.
    QDateTime getTimeStamp() const;
    void setTimeStamp(const QDateTime &time);

    /// setPortNumber makes this a message to an application: `p1` is the port it goes to, `p2` the
    /// port it comes from.
    void setPortNumber(unsigned short p1, unsigned short p2);
    /// getPortNumber writes both ports, 0 when none were set, and returns true; it returns false
    /// when a pointer is null.
    bool getPortNumber(unsigned short *p1, unsigned short *p2) const;
    /// getPortNumberValid tells whether ports were set.
    bool getPortNumberValid() const;

    /// getEncodeType returns 0 for a body of 16-bit text, 1 for any other.
    int getEncodeType() const;
    /// getBodyType returns what the body is. setBodyType says what it is to be taken for, and
    /// leaves its bytes as they are.
    SMS_ENCODE_TYPE_E getBodyType() const;
    void setBodyType(SMS_ENCODE_TYPE_E t);

    /// setBody(text) makes `text` the body and returns true, or returns false, with nothing
    /// changed, when it has more than 3200 characters (UTF-16 units).
    bool setBody(const QString &text);
    /// getBody(text) sets `text` to the body and returns true, or returns false for a body that is
    /// no text.
    bool getBody(QString &text) const;

    /// setBody(bytes) makes the body share `bytes` and returns true, or returns false, with nothing
    /// changed, when there are more than 3201. What is written to the array later changes the
    /// message: give a copy() where that is not wanted.
    bool setBody(const QArray<char> &bytes);
    /// getBody(bytes) makes `bytes` share the body and returns true, or returns false for a body
    /// that is text.
    bool getBody(QArray<char> &bytes) const;

    /// stringToBuf stores the first characters of `s`, `size` - 1 at most, at `buf`, 16 bits each
    /// in the byte order of the device, and a zero behind them. It returns how many characters it
    /// stored: 0, with nothing written, where there is no room for the zero.
    int stringToBuf(const QString &s, unsigned short *buf, int size) const;

    /// getData returns the bytes of the body, for the session: text as 16-bit units with a zero
    /// unit behind them, or the bytes as they were given.
    QArray<char> &getData();

protected:
    WSMSMsgPrivate &record();

private:
    std::unique_ptr<WSMSMsgPrivate> m_private;
};

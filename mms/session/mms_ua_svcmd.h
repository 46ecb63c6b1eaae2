// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/session/mms_ua_cmditem.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

// Events, from the proxy daemon to a session.
//
//   id  class                    fixed part, in words                         variable part
//   1   MMS_UA_SvReqCompleteCmd  request id, 0, URI bytes, status             URI
//   2   MMS_UA_SvRegCompleteCmd  request id, 0, result
//   3   MMS_UA_SvRetrCompleteCmd URI bytes                                    URI: path of a file
//   4   MMS_UA_SvProgCmd         request id, counter, counter
//   5   MMS_UA_SvStsRetCmd       request id, status
//   6   MMS_UA_SvNotiCmd         URI bytes, transaction id bytes              transaction id, URI
//   7   MMS_UA_SvDeliCmd         0, To bytes, message id bytes, date bytes, 0 To, date, message id
//   -   MMS_UA_SvReadRecCmd      as 7                                         as 7

/// The event ids. On the wire: add at the end, never renumber.
enum MMS_UA_SVCMD_E : qint32 {
    MMS_UA_SVCMD_REQ_COMPLETE = 1,
    MMS_UA_SVCMD_REG_COMPLETE = 2,
    MMS_UA_SVCMD_RETR_COMPLETE = 3,
    MMS_UA_SVCMD_PROGRESS = 4,
    MMS_UA_SVCMD_STATUS = 5,
    MMS_UA_SVCMD_NOTIFICATION = 6,
    MMS_UA_SVCMD_DELIVERY = 7,
};

/// MMS_UA_SvCmd is an event. The setters are for the daemon's side, the getters for the session's.
class WMSG_EXPORT MMS_UA_SvCmd : public MMS_UA_CmdItem {
public:
    /// factory returns a new, empty event of an id of MMS_UA_SVCMD_E, which the caller deletes;
    /// null for any other number.
    static MMS_UA_SvCmd *factory(int type);

protected:
    using MMS_UA_CmdItem::MMS_UA_CmdItem;
};

/// MMS_UA_SvReqCompleteCmd tells that a request has ended, with its status. The URI may be empty.
class WMSG_EXPORT MMS_UA_SvReqCompleteCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvReqCompleteCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_REQ_COMPLETE, 4) { }

    qint32 getRequestId() const { return word(0); }
    void setRequestId(qint32 id) { setWord(0, id); }
    qint32 getStatus() const { return word(3); }
    void setStatus(qint32 status) { setWord(3, status); }
    QString getUri() const { return m_uri; }
    void setUri(const QString &uri);

    void setData(char *buf, int len, bool copy) override;

private:
    QString m_uri;
};

/// MMS_UA_SvRegCompleteCmd tells that an application was registered or deregistered; a result of 0
/// is success.
class WMSG_EXPORT MMS_UA_SvRegCompleteCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvRegCompleteCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_REG_COMPLETE, 3) { }

    qint32 getRequestId() const { return word(0); }
    void setRequestId(qint32 id) { setWord(0, id); }
    qint32 getResult() const { return word(2); }
    void setResult(qint32 result) { setWord(2, result); }
};

/// MMS_UA_SvRetrCompleteCmd tells that a message was retrieved: the URI is the path of its mail
/// file, which is the session's from then on.
class WMSG_EXPORT MMS_UA_SvRetrCompleteCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvRetrCompleteCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_RETR_COMPLETE, 1) { }

    QString getUri() const { return m_uri; }
    void setUri(const QString &uri);

    void setData(char *buf, int len, bool copy) override;

private:
    QString m_uri;
};

/// MMS_UA_SvProgCmd tells how far a request has come, in two counters.
class WMSG_EXPORT MMS_UA_SvProgCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvProgCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_PROGRESS, 3) { }

    qint32 getRequestId() const { return word(0); }
    void setRequestId(qint32 id) { setWord(0, id); }
    qint32 getValue1() const { return word(1); }
    void setValue1(qint32 value) { setWord(1, value); }
    qint32 getValue2() const { return word(2); }
    void setValue2(qint32 value) { setWord(2, value); }
};

/// MMS_UA_SvStsRetCmd tells the status of a request that goes on.
class WMSG_EXPORT MMS_UA_SvStsRetCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvStsRetCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_STATUS, 2) { }

    qint32 getRequestId() const { return word(0); }
    void setRequestId(qint32 id) { setWord(0, id); }
    qint32 getStatus() const { return word(1); }
    void setStatus(qint32 status) { setWord(1, status); }
};

/// MMS_UA_SvNotiCmd tells of a message that waits at a URI.
class WMSG_EXPORT MMS_UA_SvNotiCmd final : public MMS_UA_SvCmd {
public:
    MMS_UA_SvNotiCmd() : MMS_UA_SvCmd(MMS_UA_SVCMD_NOTIFICATION, 2) { }

    QString getUri() const { return m_uri; }
    QString getTranID() const { return m_tranId; }
    void setUriAndTranID(const QString &uri, const QString &tranId);

    void setData(char *buf, int len, bool copy) override;

private:
    QString m_uri;
    QString m_tranId;
};

/// MMS_UA_SvReportCmd is what the reports about a sent message share: the message, whose report it
/// is, and when. The date travels as text, as QDateTime::toString() gives it for local time.
class WMSG_EXPORT MMS_UA_SvReportCmd : public MMS_UA_SvCmd {
public:
    QString getMsgID() const { return m_msgId; }
    QString getTo() const { return m_to; }
    /// getDate returns the date; it is not valid when its text was none.
    QDateTime getDate() const { return m_date; }

    void setData(char *buf, int len, bool copy) override;

protected:
    explicit MMS_UA_SvReportCmd(qint32 type) : MMS_UA_SvCmd(type, 5) { }

    /// setValues stores the three values and their lengths, and returns the text of the date.
    QString setValues(const QString &msgId, const QString &to, const QDateTime &date);

private:
    QString m_msgId;
    QString m_to;
    QDateTime m_date;
};

/// MMS_UA_SvDeliCmd reports that a message was delivered.
class WMSG_EXPORT MMS_UA_SvDeliCmd final : public MMS_UA_SvReportCmd {
public:
    MMS_UA_SvDeliCmd() : MMS_UA_SvReportCmd(MMS_UA_SVCMD_DELIVERY) { }

    void setMsgIDAndToAndDate(const QString &msgId, const QString &to, const QDateTime &date);
};

/// MMS_UA_SvReadRecCmd reports that a message was read. No event id creates it, and a session never
/// sees one.
class WMSG_EXPORT MMS_UA_SvReadRecCmd final : public MMS_UA_SvReportCmd {
public:
    MMS_UA_SvReadRecCmd() : MMS_UA_SvReportCmd(0) { }

    /// setMsgIDAndToAndDate writes To at the start of the variable part, the date at an offset of
    /// its own length in bytes, and the message id at an offset of its own, as far as they fit.
    /// They read back only where these are the places at which a reader looks.
    void setMsgIDAndToAndDate(const QString &msgId, const QString &to, const QDateTime &date);
};

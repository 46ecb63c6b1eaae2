// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_svcmd.h"

#include "util/mms_util_common.h"

#include <QtCore/QByteArray>

#include <algorithm>

namespace {

// The words with the lengths of the texts.
enum : int { ReqUri = 2, RetrUri = 0, NotiUri = 0, NotiTranId = 1 };
enum : int { ReportTo = 1, ReportMsgId = 2, ReportDate = 3 };

/// Copies the units of `text` to an offset of their own number of bytes, as far as they fit.
void placeByOwnLength(QByteArray &bytes, const QString &text)
{
    const qsizetype offset = text.size() * static_cast<qsizetype>(sizeof(char16_t));
    if (offset < bytes.size()) {
        std::copy_n(reinterpret_cast<const char *>(text.utf16()),
                    std::min(offset, bytes.size() - offset), bytes.data() + offset);
    }
}

} // namespace

MMS_UA_SvCmd *MMS_UA_SvCmd::factory(int type)
{
    switch (type) {
    case MMS_UA_SVCMD_REQ_COMPLETE:
        return new MMS_UA_SvReqCompleteCmd;
    case MMS_UA_SVCMD_REG_COMPLETE:
        return new MMS_UA_SvRegCompleteCmd;
    case MMS_UA_SVCMD_RETR_COMPLETE:
        return new MMS_UA_SvRetrCompleteCmd;
    case MMS_UA_SVCMD_PROGRESS:
        return new MMS_UA_SvProgCmd;
    case MMS_UA_SVCMD_STATUS:
        return new MMS_UA_SvStsRetCmd;
    case MMS_UA_SVCMD_NOTIFICATION:
        return new MMS_UA_SvNotiCmd;
    case MMS_UA_SVCMD_DELIVERY:
        return new MMS_UA_SvDeliCmd;
    default:
        return nullptr;
    }
}

void MMS_UA_SvReqCompleteCmd::setData(char *buf, int len, bool copy)
{
    MMS_UA_CmdItem::setData(buf, len, copy);
    qint32 position = 0;
    m_uri = takeText(position, word(ReqUri));
}

void MMS_UA_SvReqCompleteCmd::setUri(const QString &uri)
{
    setWord(ReqUri, lengthOf(uri));
    setTexts({uri});
    m_uri = uri;
}

void MMS_UA_SvRetrCompleteCmd::setData(char *buf, int len, bool copy)
{
    MMS_UA_CmdItem::setData(buf, len, copy);
    qint32 position = 0;
    m_uri = takeText(position, word(RetrUri));
}

void MMS_UA_SvRetrCompleteCmd::setUri(const QString &uri)
{
    setWord(RetrUri, lengthOf(uri));
    setTexts({uri});
    m_uri = uri;
}

void MMS_UA_SvNotiCmd::setData(char *buf, int len, bool copy)
{
    MMS_UA_CmdItem::setData(buf, len, copy);
    qint32 position = 0;
    m_tranId = takeText(position, word(NotiTranId));
    m_uri = takeText(position, word(NotiUri));
}

void MMS_UA_SvNotiCmd::setUriAndTranID(const QString &uri, const QString &tranId)
{
    setWord(NotiUri, lengthOf(uri));
    setWord(NotiTranId, lengthOf(tranId));
    setTexts({tranId, uri});
    m_uri = uri;
    m_tranId = tranId;
}

void MMS_UA_SvReportCmd::setData(char *buf, int len, bool copy)
{
    MMS_UA_CmdItem::setData(buf, len, copy);
    qint32 position = 0;
    m_to = takeText(position, word(ReportTo));
    m_date = MMS_UTIL_Common::stringToTime(takeText(position, word(ReportDate)));
    m_msgId = takeText(position, word(ReportMsgId));
}

QString MMS_UA_SvReportCmd::setValues(const QString &msgId, const QString &to,
                                      const QDateTime &date)
{
    // Of other times the text would name the zone, and nobody could read it.
    QString dateText = date.toLocalTime().toString();
    setWord(ReportTo, lengthOf(to));
    setWord(ReportMsgId, lengthOf(msgId));
    setWord(ReportDate, lengthOf(dateText));
    m_msgId = msgId;
    m_to = to;
    m_date = date;
    return dateText;
}

void MMS_UA_SvDeliCmd::setMsgIDAndToAndDate(const QString &msgId, const QString &to,
                                            const QDateTime &date)
{
    const QString dateText = setValues(msgId, to, date);
    setTexts({to, dateText, msgId});
}

void MMS_UA_SvReadRecCmd::setMsgIDAndToAndDate(const QString &msgId, const QString &to,
                                               const QDateTime &date)
{
    const QString dateText = setValues(msgId, to, date);
    // Kept: the date and the message id of a read report lie at offsets of their own lengths.
    const qsizetype size = to.size() + dateText.size() + msgId.size();
    QByteArray bytes(size * static_cast<qsizetype>(sizeof(char16_t)), '\0');
    std::copy_n(reinterpret_cast<const char *>(to.utf16()),
                to.size() * static_cast<qsizetype>(sizeof(char16_t)), bytes.data());
    placeByOwnLength(bytes, dateText);
    placeByOwnLength(bytes, msgId);
    setBytes(bytes);
}

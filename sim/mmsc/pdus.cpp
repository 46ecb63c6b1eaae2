// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/pdus.h"

#include <mms/codec/msgfieldbase.h>
#include <mms/codec/wsp_stream.h>
#include <mms/model/result_codes.h>
#include <mms/model/wmmsmsg.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr quint8 kVersion = 0x12;
constexpr quint8 kTypeField = 0x80 | MMS_FIELD_MSG_TYPE;
constexpr quint8 kLowestCode = 128;
constexpr quint8 kHighestPriority = 130;
constexpr quint8 kHighestClass = 131;
constexpr qint64 kHighestNumber = std::numeric_limits<qint32>::max();

WMMSMsg pduOf(quint8 type)
{
    WMMSMsg pdu;
    pdu.clear();
    pdu.setPDUType(type);
    pdu.setVersion(kVersion);
    return pdu;
}

// The library writes a sender into every PDU that has a place for one, "insert the address" when it
// has none; from the network that would mean nothing.
QByteArray withoutFrom(const QByteArray &header)
{
    static const QByteArray kInsert = QByteArrayLiteral("\x89\x01\x81");
    WSP_Stream stream(const_cast<char *>(header.constData()), static_cast<qint32>(header.size()));
    MMS_HDR_S read;
    while (stream.hasMore()) {
        const qint32 start = stream.pos;
        quint32 id = 0;
        stream.readInteger(id);
        if (id == MMS_FIELD_FROM) {
            return header.first(start) + header.sliced(start + kInsert.size());
        }
        const std::unique_ptr<MsgFieldBase> codec(WMMSMsg::selectField(static_cast<quint8>(id)));
        if (!codec || !codec->read(stream, &read)) {
            break;
        }
    }
    return header;
}

QByteArray packed(WMMSMsg &pdu)
{
    QArray<char> bytes;
    if (pdu.packTo(bytes, nullptr, nullptr) != MMS_ENCODE_OK) {
        return {};
    }
    return QByteArray(bytes.constData(), bytes.size());
}

QByteArray packedFrom(WMMSMsg &pdu, const WMFMEntry &from)
{
    pdu.setFrom(from);
    const QByteArray bytes = packed(pdu);
    return from.isValid() ? bytes : withoutFrom(bytes);
}

bool isCode(quint8 code, quint8 highest)
{
    return code >= kLowestCode && code <= highest;
}

// The date of the sender, unless no PDU can carry it on.
std::optional<QDateTime> dateOf(const ReceivedPdu &request)
{
    const QDateTime &date = request.header().msgDate;
    const bool isUsable = request.has(MMS_FIELD_DATE) && date.isValid()
        && date.toSecsSinceEpoch() >= 0 && date.toSecsSinceEpoch() <= kHighestNumber;
    return isUsable ? std::optional(date) : std::nullopt;
}

void takeOver(WMMSMsg &pdu, const ReceivedPdu &request)
{
    const MMS_HDR_S &header = request.header();
    pdu.setTo(header.to);
    pdu.setCc(header.cc);
    pdu.setSubject(header.subject);
    pdu.setMsgClass(isCode(header.msgClass, kHighestClass) ? header.msgClass : kLowestCode);
    if (request.has(MMS_FIELD_PRIORITY) && isCode(header.priority, kHighestPriority)) {
        pdu.setPriority(header.priority);
    }
    if (request.has(MMS_FIELD_DELIVERY_REPORT)) {
        pdu.setDeliveryReportNecessity(header.deliveryReport);
    }
    if (request.has(MMS_FIELD_READ_REPORT)) {
        pdu.setReadReportNecessity(header.readReport);
    }
}

} // namespace

QString ReceivedPdu::read(const QByteArray &pdu)
{
    m_bytes = pdu;
    // The stream only reads, though it could write.
    WSP_Stream stream(const_cast<char *>(m_bytes.constData()), static_cast<qint32>(m_bytes.size()));
    if (pduType(m_bytes) == 0) {
        return u"offset 0: this is no PDU"_s;
    }
    while (stream.hasMore()) {
        const qint32 start = stream.pos;
        quint32 id = 0;
        const bool isField = stream.readInteger(id) && id <= MMS_FIELD_TRANSACTION_ID;
        const std::unique_ptr<MsgFieldBase> codec(
            isField ? WMMSMsg::selectField(static_cast<quint8>(id)) : nullptr);
        if (!codec) {
            return u"offset %1: field %2 is unknown"_s.arg(start).arg(id);
        }
        if (!codec->read(stream, &m_header)) {
            return u"offset %1: the value of field %2 cannot be read"_s.arg(start).arg(id);
        }
        m_mask.setMask(static_cast<quint8>(id));
        if (id == MMS_FIELD_CONTENT_TYPE) {
            m_contentStart = start;
            break;
        }
    }
    return {};
}

quint8 pduType(QByteArrayView pdu)
{
    const bool isPdu = pdu.size() >= 2 && static_cast<quint8>(pdu[0]) == kTypeField;
    const auto type = isPdu ? static_cast<quint8>(pdu[1]) : quint8(0);
    return type >= MMS_PDU_SEND_REQ ? type : quint8(0);
}

QString pduName(quint8 type)
{
    static constexpr QLatin1String kNames[] = {
        "send-req"_L1,      "send-conf"_L1,       "notification-ind"_L1, "notifyresp-ind"_L1,
        "retrieve-conf"_L1, "acknowledge-ind"_L1, "delivery-ind"_L1,
    };
    const bool isNamed = type >= MMS_PDU_SEND_REQ && type <= MMS_PDU_DELIVERY_IND;
    return isNamed ? kNames[type - MMS_PDU_SEND_REQ] : "unknown"_L1;
}

QByteArray encoded(const SendConf &conf)
{
    WMMSMsg pdu = pduOf(MMS_PDU_SEND_CONF);
    pdu.setTransactionID(conf.transactionId);
    pdu.setResponseStatus(conf.responseStatus);
    pdu.setResponseText(conf.responseText);
    pdu.setMsgID(conf.messageId);
    return packed(pdu);
}

QByteArray encoded(const NotificationInd &notification)
{
    WMMSMsg pdu = pduOf(MMS_PDU_NOTIFICATION_IND);
    pdu.setTransactionID(notification.transactionId);
    pdu.setSubject(notification.subject);
    pdu.setMsgClass(notification.messageClass);
    pdu.setMsgSize(static_cast<int>(std::min(notification.size, kHighestNumber)));
    pdu.setExpiryTime(
        static_cast<unsigned>(std::clamp<qint64>(notification.expiresIn, 0, kHighestNumber)));
    pdu.setContentLocation(notification.location);
    return packedFrom(pdu, notification.from);
}

QByteArray encoded(const DeliveryInd &report)
{
    WMMSMsg pdu = pduOf(MMS_PDU_DELIVERY_IND);
    pdu.setMsgID(report.messageId);
    pdu.setTo(report.to);
    pdu.setDate(report.date);
    pdu.setMsgStatus(report.status);
    return packed(pdu);
}

QByteArray encodedHead(const RetrieveConf &conf, const ReceivedPdu &request)
{
    WMMSMsg pdu = pduOf(MMS_PDU_RETRIEVE_CONF);
    pdu.setTransactionID(conf.transactionId);
    pdu.setMsgID(conf.messageId);
    pdu.setDate(dateOf(request).value_or(conf.received));
    takeOver(pdu, request);
    return packedFrom(pdu, conf.from);
}

} // namespace wmsg::sim

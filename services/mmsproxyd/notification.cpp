// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/notification.h"

#include "services/intake/intake.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/result_codes.h>
#include <mms/model/wmmsmsg.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::proxy {

namespace {

constexpr quint8 kFirstClass = 128;
constexpr int kNoExpiry = -1;

Notification unknown(const QString &reason)
{
    Notification notification;
    notification.reason = reason;
    return notification;
}

bool decode(const intake::Result &read, WMMSMsg &message)
{
    QArray<char> pdu(QByteArrayView(read.pdu.joined()));
    message.clear();
    return message.construct(pdu, false) == MMS_DECODE_OK;
}

/// The codec gives an expiry as seconds from now, whatever clock the network goes by.
QDateTime expiryOf(const WMMSMsg &message, const QDateTime &now)
{
    const auto seconds = static_cast<qint32>(message.getExpiryTime());
    return message.fieldIsPresent(MMS_FIELD_EXPIRY) && seconds != kNoExpiry
        ? now.toUTC().addSecs(seconds)
        : QDateTime();
}

Notification messageThatWaits(const WMMSMsg &message, const QDateTime &now)
{
    Notification notification;
    notification.kind = Notification::Kind::MessageWaits;
    notification.transactionId = message.getTransactionID();
    notification.location = message.getContentLocation();
    notification.size = static_cast<quint32>(std::max(message.getMsgSize(), 0));
    notification.expires = expiryOf(message, now);
    if (message.getMsgClass() >= kFirstClass) {
        notification.messageClass = message.getMsgClass();
    }
    if (notification.transactionId.isEmpty() || notification.location.isEmpty()) {
        return unknown(u"the notification has no transaction id or no location"_s);
    }
    return notification;
}

Notification deliveryReport(WMMSMsg &message, const QDateTime &now)
{
    Notification notification;
    notification.kind = Notification::Kind::DeliveryReport;
    notification.messageId = message.getMsgID();
    if (!message.getTo().isEmpty()) {
        notification.recipient = message.getTo().first().getEntryVal();
    }
    const bool isDated = message.fieldIsPresent(MMS_FIELD_DATE);
    notification.date = isDated ? message.getDate().toUTC() : now.toUTC();
    notification.status = message.getMsgStatus();
    return notification.messageId.isEmpty() ? unknown(u"the delivery report names no message"_s)
                                            : notification;
}

} // namespace

Notification readNotification(const QByteArray &pdu, const QDateTime &now)
{
    if (pdu.size() > kLargestPush) {
        return unknown(u"the push has more than %1 bytes"_s.arg(kLargestPush));
    }
    const intake::Result read = intake::takeIn(pdu);
    Notification notification;
    if (read.verdict == intake::Verdict::ReadReport) {
        notification.kind = Notification::Kind::ReadReport;
        return notification;
    }
    if (read.verdict == intake::Verdict::Unreadable) {
        return unknown(u"%1 (at offset %2)"_s.arg(read.problem.what).arg(read.problem.offset));
    }
    WMMSMsg message;
    if (read.verdict == intake::Verdict::Readable && decode(read, message)) {
        if (read.facts.type == MMS_PDU_NOTIFICATION_IND) {
            return messageThatWaits(message, now);
        }
        if (read.facts.type == MMS_PDU_DELIVERY_IND) {
            return deliveryReport(message, now);
        }
    }
    return unknown(u"a message of type %1 is not pushed"_s.arg(read.facts.type));
}

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/wap_push.h"

#include "services/sms_pdu/tpdu.h"
#include "services/sms_pdu/user_data_header.h"

namespace wmsg::sim {

namespace {

constexpr char kPushType = 0x06;
constexpr smspdu::Ports kPorts{2948, 9200, true};
constexpr qsizetype kMostOctets = 140;
constexpr qsizetype kMostParts = 255;

QByteArray message(const QByteArray &header, const QByteArray &data, bool hasMore,
                   const QDateTime &time)
{
    const smspdu::Address sender = smspdu::Address::fromString(QString::fromLatin1(kPushSender));
    smspdu::Tpdu tpdu = smspdu::dataMessage(smspdu::Kind::Deliver, sender, data);
    tpdu.udh = header;
    tpdu.hasMore = hasMore;
    tpdu.timeStamp = time;
    return smspdu::writtenServiceCentre(sender) + smspdu::writeTpdu(tpdu);
}

} // namespace

QByteArray wapPush(const QByteArray &pdu, quint8 transaction)
{
    const auto headers = QByteArrayLiteral("\xBE" // the media type of MMS
                                           "\xAF\x84"); // the application, by its number
    return QByteArray(1, static_cast<char>(transaction)) + kPushType
        + static_cast<char>(headers.size()) + headers + pdu;
}

QByteArrayList pushMessages(const QByteArray &push, quint8 reference, const QDateTime &time)
{
    const QByteArray ports = smspdu::portsElement(kPorts);
    const QByteArray whole = smspdu::userDataHeader({ports});
    if (whole.size() + push.size() <= kMostOctets) {
        return {message(whole, push, false, time)};
    }
    const qsizetype room = kMostOctets
        - smspdu::userDataHeader({ports, smspdu::concatenationElement({reference, 1, 1})}).size();
    const qsizetype total = (push.size() + room - 1) / room;
    QByteArrayList messages;
    for (qsizetype part = 1; total <= kMostParts && part <= total; ++part) {
        const smspdu::Concatenation place{reference, static_cast<quint8>(total),
                                          static_cast<quint8>(part), false};
        messages.append(
            message(smspdu::userDataHeader({ports, smspdu::concatenationElement(place)}),
                    push.mid((part - 1) * room, room), part < total, time));
    }
    return messages;
}

} // namespace wmsg::sim

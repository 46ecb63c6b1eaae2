// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/outgoing_record.h"

#include "services/common/record_fields.h"
#include "services/sms_pdu/user_data_header.h"

#include <platform/telephony/sms_length.h>

#include <QtCore/QtEndian>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;
using wmsg::service::RecordFields;
using wmsg::telephony::Coding;

namespace wmsg::telephonyd {

namespace {

constexpr qsizetype kLongestText = 255;
constexpr qsizetype kMostDigits = 20;
constexpr quint16 kHighestPort = std::numeric_limits<quint16>::max();
constexpr qint64 kLowest = std::numeric_limits<qint32>::min();

QString hexOf(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

QString textOf(const QByteArray &body)
{
    QString text(body.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<quint16>(body.constData(), text.size(), text.data());
    return text;
}

SmsLength lengthOf(const telephony::Send &send)
{
    switch (send.coding) {
    case Coding::Gsm7:
        return smsLengthOf(textOf(send.body), send.hasPorts);
    case Coding::Ucs2:
        return {SmsAlphabet::Ucs2, send.body.size() / 2,
                smsLimit(SmsAlphabet::Ucs2, send.hasPorts)};
    case Coding::Binary:
    case Coding::Text8:
        break;
    }
    return smsLengthOfData(send.body.size(), send.hasPorts);
}

void readSend(RecordFields &fields, telephony::Send &send)
{
    int coding = 0;
    fields.need("reference"_L1);
    fields.number("reference"_L1, send.reference, kLowest);
    fields.word("coding"_L1, {"ucs2"_L1, "data"_L1, "gsm7"_L1}, coding);
    send.coding = coding == 0 ? Coding::Ucs2 : coding == 1 ? Coding::Binary : Coding::Gsm7;
    send.hasPorts = fields.has("port"_L1);
    fields.number("port"_L1, send.destinationPort, 0, kHighestPort);
    fields.number("sourcePort"_L1, send.sourcePort, 0, kHighestPort);
    fields.bytes("serviceCenter"_L1, send.serviceCenter, kLongestText);
    fields.bytes("destination"_L1, send.destination, kLongestText);
    fields.bytes("body"_L1, send.body, telephony::kLongestBody);
}

QString nameOf(Coding coding)
{
    return coding == Coding::Gsm7 ? u"gsm7"_s : coding == Coding::Binary ? u"data"_s : u"ucs2"_s;
}

} // namespace

QJsonObject OutgoingRecord::toJson() const
{
    QJsonObject json{{"client"_L1, hexOf(client)},
                     {"taken"_L1, taken},
                     {"reference"_L1, send.reference},
                     {"coding"_L1, nameOf(send.coding)}};
    if (result) {
        json.insert("status"_L1, result->status);
        json.insert("networkReference"_L1, result->networkReference);
        return json;
    }
    if (send.hasPorts) {
        json.insert("port"_L1, send.destinationPort);
        json.insert("sourcePort"_L1, send.sourcePort);
    }
    json.insert("serviceCenter"_L1, hexOf(send.serviceCenter));
    json.insert("destination"_L1, hexOf(send.destination));
    json.insert("body"_L1, hexOf(send.body));
    return json;
}

std::optional<OutgoingRecord> OutgoingRecord::fromJson(const QJsonObject &json, QString &reason)
{
    RecordFields fields(json);
    OutgoingRecord record;
    fields.need("client"_L1);
    fields.bytes("client"_L1, record.client, telephony::kClientIdSize);
    fields.number("taken"_L1, record.taken);
    readSend(fields, record.send);
    if (fields.has("status"_L1)) {
        telephony::Result result;
        result.reference = record.send.reference;
        fields.number("status"_L1, result.status);
        fields.number("networkReference"_L1, result.networkReference, kLowest);
        record.result = result;
    } else if (fields.isUsable()) {
        const QString problem = problemOf(record.send);
        if (!problem.isEmpty()) {
            fields.refuse(problem);
        }
    }
    reason = fields.reason();
    return fields.isUsable() ? std::optional(record) : std::nullopt;
}

bool isNumber(const QByteArray &text)
{
    const QByteArray digits = text.startsWith('+') ? text.mid(1) : text;
    return !digits.isEmpty() && digits.size() <= kMostDigits
        && std::all_of(digits.begin(), digits.end(),
                       [](char c) { return (c >= '0' && c <= '9') || c == '*' || c == '#'; });
}

QString problemOf(const telephony::Send &send)
{
    if (!isNumber(send.destination)) {
        return u"it goes to no telephone number"_s;
    }
    if (!send.serviceCenter.isEmpty() && !isNumber(send.serviceCenter)) {
        return u"its service centre is no telephone number"_s;
    }
    const bool isText = send.coding == Coding::Gsm7 || send.coding == Coding::Ucs2;
    if (send.coding == Coding::Text8 || (isText && send.body.size() % 2 != 0)) {
        return u"it has no coding, or half a character"_s;
    }
    const SmsLength length = lengthOf(send);
    if (send.coding == Coding::Gsm7 && length.alphabet != SmsAlphabet::Gsm7) {
        return u"the 7-bit alphabet does not have its text"_s;
    }
    return length.fits() ? QString() : u"it is too long for one short message"_s;
}

OutgoingSms outgoingSms(quint64 id, const telephony::Send &send)
{
    OutgoingSms sms;
    sms.id = id;
    sms.coding = send.coding;
    if (send.hasPorts) {
        smspdu::Ports ports;
        ports.destination = send.destinationPort;
        ports.source = send.sourcePort;
        sms.header = smspdu::userDataHeader({smspdu::portsElement(ports)});
    }
    sms.serviceCenter = send.serviceCenter;
    sms.destination = send.destination;
    sms.body = send.body;
    return sms;
}

} // namespace wmsg::telephonyd

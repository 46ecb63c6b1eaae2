// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/incoming_record.h"

#include "services/common/record_fields.h"
#include "services/sms_pdu/user_data_header.h"
#include "services/telephonyd/spool.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QJsonArray>
#include <QtCore/QRandomGenerator>

#include <limits>

using namespace Qt::StringLiterals;
using wmsg::service::RecordFields;

namespace wmsg::telephonyd {

namespace {

constexpr qsizetype kLongestNumber = 255;
constexpr qsizetype kLongestDigest = 32;
constexpr qsizetype kMostSegments = 255;
constexpr quint16 kHighestPort = std::numeric_limits<quint16>::max();

QString hexOf(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

QByteArray digestOf(const IncomingSms &sms)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QByteArray &field : {sms.sender, sms.header, sms.body}) {
        hash.addData(QByteArray::number(field.size()) + ':' + field);
    }
    hash.addData(sms.coding == telephony::Coding::Binary ? "b" : "t");
    return hash.result();
}

QJsonArray segmentsToJson(const QList<Segment> &segments)
{
    QJsonArray array;
    for (const Segment &segment : segments) {
        QJsonObject one{{"digest"_L1, hexOf(segment.digest)}, {"time"_L1, segment.time}};
        if (!segment.place.isEmpty()) {
            one.insert("place"_L1, hexOf(segment.place));
        }
        array.append(one);
    }
    return array;
}

QList<Segment> segmentsFromJson(const QJsonValue &value, RecordFields &record)
{
    QList<Segment> segments;
    const QJsonArray array = value.toArray();
    if (array.isEmpty() || array.size() > kMostSegments) {
        record.refuse(u"segments is no list, or has no fitting length"_s);
        return segments;
    }
    for (const auto &one : array) {
        RecordFields fields(one.toObject());
        Segment segment;
        fields.need("digest"_L1);
        fields.bytes("digest"_L1, segment.digest, kLongestDigest);
        fields.bytes("place"_L1, segment.place, kLongestNumber);
        fields.number("time"_L1, segment.time, std::numeric_limits<qint64>::min());
        if (!fields.isUsable()) {
            record.refuse(u"a segment: "_s + fields.reason());
        }
        segments.append(segment);
    }
    return segments;
}

void readPorts(RecordFields &fields, telephony::Message &message)
{
    message.hasPorts = fields.has("port"_L1);
    fields.number("port"_L1, message.destinationPort, 0, kHighestPort);
    fields.number("sourcePort"_L1, message.sourcePort, 0, kHighestPort);
}

void readMessage(RecordFields &fields, telephony::Message &message)
{
    int coding = 0;
    fields.need("body"_L1);
    fields.word("coding"_L1, {"text"_L1, "data"_L1}, coding);
    message.coding = coding == 0 ? telephony::Coding::Ucs2 : telephony::Coding::Binary;
    readPorts(fields, message);
    fields.bytes("serviceCenter"_L1, message.serviceCenter, kLongestNumber);
    fields.bytes("sender"_L1, message.sender, kLongestNumber);
    fields.number("time"_L1, message.time, std::numeric_limits<qint64>::min());
    fields.bytes("body"_L1, message.body, telephony::kLongestBody);
    if (fields.isUsable() && coding == 0 && message.body.size() % 2 != 0) {
        fields.refuse(u"body is half a character too long"_s);
    }
}

void readId(RecordFields &fields, quint64 &id)
{
    QByteArray bytes;
    fields.need("id"_L1);
    fields.bytes("id"_L1, bytes, sizeof id);
    bool isNumber = false;
    id = bytes.toHex().toULongLong(&isNumber, 16);
    if (fields.isUsable() && (!isNumber || bytes.size() != sizeof id)) {
        fields.refuse(u"id is none"_s);
    }
}

void readPart(RecordFields &fields, IncomingRecord &record)
{
    fields.need("reference"_L1);
    fields.number("reference"_L1, record.reference);
    int width = 0;
    fields.word("width"_L1, {"8"_L1, "16"_L1}, width);
    record.isWide = width == 1;
    fields.number("total"_L1, record.total, 2);
    fields.number("number"_L1, record.number, 1, record.total);
}

void writeMessage(QJsonObject &json, const telephony::Message &message)
{
    json.insert("coding"_L1, message.coding == telephony::Coding::Binary ? "data"_L1 : "text"_L1);
    if (message.hasPorts) {
        json.insert("port"_L1, message.destinationPort);
        json.insert("sourcePort"_L1, message.sourcePort);
    }
    json.insert("serviceCenter"_L1, hexOf(message.serviceCenter));
    json.insert("sender"_L1, hexOf(message.sender));
    json.insert("time"_L1, message.time);
    json.insert("body"_L1, hexOf(message.body));
}

} // namespace

QJsonObject IncomingRecord::toJson() const
{
    static constexpr QLatin1String kKinds[] = {"whole"_L1, "part"_L1, "over"_L1};
    QJsonObject json{{"kind"_L1, kKinds[static_cast<int>(kind)]},
                     {"kept"_L1, kept},
                     {"segments"_L1, segmentsToJson(segments)}};
    if (kind == Kind::Whole) {
        json.insert("id"_L1, QString::number(message.id, 16).rightJustified(16, u'0'));
    }
    if (kind != Kind::Over) {
        writeMessage(json, message);
    }
    if (kind == Kind::Part) {
        json.insert("reference"_L1, reference);
        json.insert("width"_L1, isWide ? "16"_L1 : "8"_L1);
        json.insert("total"_L1, total);
        json.insert("number"_L1, number);
    }
    return json;
}

std::optional<IncomingRecord> IncomingRecord::fromJson(const QJsonObject &json, QString &reason)
{
    RecordFields fields(json);
    IncomingRecord record;
    int kind = 0;
    fields.word("kind"_L1, {"whole"_L1, "part"_L1, "over"_L1}, kind);
    record.kind = static_cast<Kind>(kind);
    fields.number("kept"_L1, record.kept);
    record.segments = segmentsFromJson(json.value("segments"_L1), fields);
    if (record.kind == Kind::Whole) {
        readId(fields, record.message.id);
    }
    if (record.kind != Kind::Over) {
        readMessage(fields, record.message);
    }
    if (record.kind == Kind::Part) {
        readPart(fields, record);
    }
    reason = fields.reason();
    return fields.isUsable() ? std::optional(record) : std::nullopt;
}

quint64 newMessageId()
{
    return QRandomGenerator::system()->generate64();
}

IncomingRecord incomingRecord(const IncomingSms &sms)
{
    IncomingRecord record;
    record.kept = currentTime();
    record.segments = {{sms.place.left(kLongestNumber), digestOf(sms), sms.time}};
    telephony::Message &message = record.message;
    message.coding = sms.coding == telephony::Coding::Binary ? sms.coding : telephony::Coding::Ucs2;
    message.serviceCenter = sms.serviceCenter.left(kLongestNumber);
    message.sender = sms.sender.left(kLongestNumber);
    message.time = sms.time;
    message.body = sms.body.left(telephony::kLongestBody);
    if (message.coding == telephony::Coding::Ucs2 && message.body.size() % 2 != 0) {
        message.body.chop(1);
    }
    if (const auto ports = smspdu::portsIn(sms.header)) {
        message.hasPorts = true;
        message.destinationPort = ports->destination;
        message.sourcePort = ports->source;
    }
    const auto concatenation = smspdu::concatenationIn(sms.header);
    if (!concatenation || concatenation->total < 2) {
        message.id = newMessageId();
        return record;
    }
    record.kind = IncomingRecord::Kind::Part;
    record.reference = concatenation->reference;
    record.isWide = concatenation->isWide;
    record.total = concatenation->total;
    record.number = concatenation->part;
    return record;
}

} // namespace wmsg::telephonyd

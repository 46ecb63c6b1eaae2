// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/short_message_view.h"

#include "tools/wmsg/short_message_words.h"
#include "tools/wmsg/text_view.h"
#include "tools/wmsg/user_data_words.h"
#include "tools/wmsg/wire_reader.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

using namespace smspdu;

namespace {

constexpr qsizetype kShownText = 160;
constexpr qsizetype kShownData = 32;
constexpr int kNameWidth = 19;

QString fieldLine(const QString &name, const QString &value)
{
    return u"  "_s + name.leftJustified(kNameWidth) + value + u'\n';
}

/// The address with its kind, unless the "+" of its number tells that.
QString addressInWords(const Address &address)
{
    if (address.value.isEmpty()) {
        return u"(nobody)"_s;
    }
    return address.isAlphanumeric() ? quoted(address.toString()) : address.toString();
}

QString timeInWords(const QDateTime &time)
{
    return time.isValid() ? time.toString(u"yyyy-MM-dd HH:mm:ss t"_s) : u"(no time)"_s;
}

QString headerFieldsView(const ShortMessage &message)
{
    const Tpdu &tpdu = message.tpdu;
    QString view;
    if (message.centre && !message.centre->address.value.isEmpty()) {
        view += fieldLine(u"Service centre"_s, addressInWords(message.centre->address));
    }
    view +=
        fieldLine(tpdu.kind == Kind::Deliver ? u"From"_s : u"To"_s, addressInWords(tpdu.address));
    if (tpdu.kind != Kind::Submit) {
        view += fieldLine(u"Time stamp"_s, timeInWords(tpdu.timeStamp));
    }
    if (tpdu.kind == Kind::StatusReport) {
        view += fieldLine(u"Done"_s, timeInWords(tpdu.dischargeTime));
        view += fieldLine(u"Status"_s, statusInWords(tpdu.status));
    }
    if (tpdu.kind != Kind::Deliver) {
        view += fieldLine(u"Reference"_s, QString::number(tpdu.reference));
    }
    if (tpdu.validity.form != Validity::Form::None) {
        view += fieldLine(u"Validity"_s, validityInWords(tpdu.validity));
    }
    if (tpdu.pid != 0) {
        view += fieldLine(u"Protocol"_s, protocolInWords(tpdu.pid));
    }
    view += fieldLine(u"Coding"_s, schemeInWords(tpdu.dcs));
    if (const auto ports = tpdu.ports()) {
        view +=
            fieldLine(u"Ports"_s, u"to %1, from %2"_s.arg(ports->destination).arg(ports->source));
    }
    const QStringList flags = flagsInWords(tpdu);
    return flags.isEmpty() ? view : view + fieldLine(u"Flags"_s, flags.join(u", "_s));
}

QString titleOf(const JoinedMessage &message)
{
    const ShortMessage &first = message.messages.first();
    QString title = printable(first.source) + u": "_s + kindInWords(message.first().kind);
    if (message.total > 1) {
        title += message.isWhole() ? u" in %1 parts"_s.arg(message.total)
                                   : u" in %1 parts, of which %2 %3 there"_s.arg(message.total)
                                         .arg(message.messages.size())
                                         .arg(message.messages.size() == 1 ? u"is"_s : u"are"_s);
    }
    qsizetype size = 0;
    for (const ShortMessage &part : message.messages) {
        size += part.bytes.size();
    }
    return title + u", "_s + sizeInWords(size) + u'\n';
}

QString partsView(const JoinedMessage &message)
{
    QString view;
    for (const ShortMessage &part : message.messages) {
        const auto concatenation = part.tpdu.concatenation().value_or(Concatenation());
        view += fieldLine(u"Part %1 of %2"_s.arg(concatenation.part).arg(message.total),
                          u"reference %1, %2, %3"_s.arg(concatenation.reference)
                              .arg(sizeInWords(part.bytes.size()), printable(part.source)));
    }
    return view;
}

QString contentOf(const JoinedMessage &message, Detail detail)
{
    const bool isFull = detail == Detail::Full;
    const QString text = message.text();
    if (!text.isNull()) {
        return fieldLine(u"Text"_s, u'"' + shortened(text, isFull ? 0 : kShownText) + u'"');
    }
    const QByteArray data = message.data();
    if (data.isEmpty()) {
        return {};
    }
    const QByteArray shown = isFull ? data : data.left(kShownData);
    const QString more =
        shown.size() < data.size() ? u" … (%1)"_s.arg(counted(data.size(), "byte"_L1)) : QString();
    return fieldLine(u"Data"_s, QString::fromLatin1(shown.toHex(' ').toUpper()) + more);
}

QJsonObject oneJson(const ShortMessage &message)
{
    const Tpdu &tpdu = message.tpdu;
    QJsonObject object{
        {u"source"_s, message.source},
        {u"type"_s, kindKey(tpdu.kind)},
        {tpdu.kind == Kind::Deliver ? u"from"_s : u"to"_s, tpdu.address.toString()},
        {u"pid"_s, tpdu.pid},
        {u"dcs"_s, tpdu.dcs},
        {u"alphabet"_s, alphabetKey(tpdu.alphabet())},
    };
    if (message.centre && !message.centre->address.value.isEmpty()) {
        object.insert(u"serviceCentre"_s, message.centre->address.toString());
    }
    if (tpdu.timeStamp.isValid()) {
        object.insert(u"timeStamp"_s, tpdu.timeStamp.toString(Qt::ISODate));
    }
    if (tpdu.kind != Kind::Deliver) {
        object.insert(u"reference"_s, tpdu.reference);
    }
    if (tpdu.kind == Kind::StatusReport) {
        object.insert(u"status"_s, tpdu.status);
    }
    if (tpdu.validity.seconds() >= 0) {
        object.insert(u"validity"_s, tpdu.validity.seconds());
    } else if (tpdu.validity.until().isValid()) {
        object.insert(u"validUntil"_s, tpdu.validity.until().toString(Qt::ISODate));
    }
    if (const auto ports = tpdu.ports()) {
        object.insert(u"ports"_s,
                      QJsonObject{{u"to"_s, ports->destination}, {u"from"_s, ports->source}});
    }
    if (const auto part = tpdu.concatenation()) {
        object.insert(u"part"_s,
                      QJsonObject{{u"reference"_s, part->reference},
                                  {u"total"_s, part->total},
                                  {u"number"_s, part->part}});
    }
    return object;
}

QString markInWords(const Mark &mark, const ShortMessage &message, QByteArrayView bytes)
{
    const Tpdu &tpdu = message.tpdu;
    const auto octet = static_cast<quint8>(bytes.front());
    switch (mark.item) {
    case Item::FirstOctet: {
        const QStringList flags = flagsInWords(tpdu);
        return kindInWords(tpdu.kind) + (flags.isEmpty() ? u""_s : u", "_s + flags.join(u", "_s));
    }
    case Item::Reference:
        return u"message reference: %1"_s.arg(octet);
    case Item::AddressLength:
        return (tpdu.kind == Kind::Deliver ? u"sender: %1 digits"_s : u"recipient: %1 digits"_s)
            .arg(octet);
    case Item::AddressType:
        return u"type of the address: "_s + addressTypeInWords(octet);
    case Item::AddressValue:
        return u"address: "_s + addressInWords(tpdu.address);
    case Item::ProtocolId:
        return u"protocol identifier: "_s + protocolInWords(octet);
    case Item::CodingScheme:
        return u"data coding scheme: "_s + schemeInWords(octet);
    case Item::TimeStamp:
        return u"time stamp: "_s + timeInWords(tpdu.timeStamp);
    case Item::DischargeTime:
        return u"done: "_s + timeInWords(tpdu.dischargeTime);
    case Item::Status:
        return u"status: "_s + statusInWords(octet);
    case Item::Parameters:
        return u"which fields follow: 0x%1"_s.arg(octet, 2, 16, QLatin1Char('0'));
    case Item::Validity:
        return u"validity: "_s + validityInWords(tpdu.validity);
    case Item::DataLength:
        return (tpdu.alphabet() == Alphabet::Gsm7 ? u"user data length: %1 septets"_s
                                                  : u"user data length: %1 octets"_s)
            .arg(octet);
    case Item::Header:
    case Item::Data:
        break;
    }
    const QString text = tpdu.text();
    return text.isNull() ? u"user data"_s : u"user data: "_s + quoted(text);
}

void walkServiceCentre(const ServiceCentre &centre, WalkNotes &notes)
{
    const QString field = u"service centre"_s;
    notes.mark(1, field, [&] { return u"length: %1"_s.arg(centre.size - 1); });
    notes.mark(std::min<qint32>(2, static_cast<qint32>(centre.size)), field,
               [&] { return u"type: "_s + addressTypeInWords(centre.address.type); });
    notes.mark(static_cast<qint32>(centre.size), field,
               [&] { return addressInWords(centre.address); });
}

} // namespace

QString shortMessageView(const JoinedMessage &message, Detail detail, bool isPush)
{
    QString view = titleOf(message) + headerFieldsView(message.messages.first());
    if (message.total > 1) {
        view += partsView(message);
    }
    return isPush ? view : view + contentOf(message, detail);
}

QJsonArray shortMessagesJson(const JoinedMessage &message)
{
    QJsonArray array;
    for (const ShortMessage &part : message.messages) {
        array.append(oneJson(part));
    }
    return array;
}

QJsonObject shortMessageJson(const JoinedMessage &message)
{
    QJsonObject object{
        {u"file"_s, message.messages.first().source},
        {u"kind"_s, u"sms"_s},
        {u"shortMessages"_s, shortMessagesJson(message)},
        {u"whole"_s, message.isWhole()},
    };
    const QString text = message.text();
    if (text.isNull()) {
        object.insert(u"data"_s, QString::fromLatin1(message.data().toHex()));
    } else {
        object.insert(u"text"_s, text);
    }
    return object;
}

void walkShortMessage(const ShortMessage &message, const WalkNotes::Sink &sink)
{
    WalkNotes notes(sink);
    if (message.centre) {
        walkServiceCentre(*message.centre, notes);
    }
    const QString field = u"short message"_s;
    const auto start = static_cast<qint32>(message.start());
    for (const Mark &mark : message.tpdu.marks) {
        const qint32 begin = start + static_cast<qint32>(mark.offset);
        const qint32 end = begin + static_cast<qint32>(mark.size);
        const QByteArrayView bytes = QByteArrayView(message.bytes).sliced(begin, mark.size);
        if (mark.item == Item::Header) {
            markUserDataHeader(notes, bytes, begin);
        }
        notes.mark(
            end, field, [&] { return markInWords(mark, message, bytes); }, mark.item == Item::Data);
    }
}

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_walk.h"

#include "services/intake/intake.h"
#include "services/intake/journal.h"
#include "services/intake/media_type.h"
#include "services/intake/push_envelope.h"
#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/header_field_walk.h"
#include "tools/wmsg/text_view.h"
#include "tools/wmsg/user_data_words.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/codec/msgfieldbase.h>
#include <mms/model/wmmsmsg.h>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

// short-message := user-data-header push
// push          := transaction (0x06 | 0x07) headers-length content-type headers pdu
// pdu           := { field | text-field | 0 } [ content-type-field body ]

namespace wmsg::cli {

namespace {

using intake::kHighBit;
using intake::kLengthQuote;

constexpr int kLastKnown = MMS_FIELD_TRANSACTION_ID;
constexpr int kDeepestNesting = 16;
constexpr quint8 kPush = 0x06;
constexpr quint8 kConfirmedPush = 0x07;
constexpr int kApplicationHeader = 0x2F;
constexpr int kPartCharset = 0x81;

QString pushPlace()
{
    return u"push"_s;
}

QString bodyPlace(const QString &path)
{
    return path.isEmpty() ? u"body"_s : u"part "_s + path;
}

/// What a content type says, with what it says about itself.
QString inWords(const intake::MediaType &type)
{
    if (type.isEmpty()) {
        return u"cannot be read"_s;
    }
    QString words = printable(QString::fromUtf8(type.media));
    if (type.number >= 0) {
        words += u" (%1)"_s.arg(type.number);
    }
    const auto add = [&words](const QString &name, const QByteArray &value) {
        if (!value.isEmpty()) {
            words += u", "_s + name + u' ' + quoted(QString::fromUtf8(value));
        }
    };
    if (type.charset.isDeclared()) {
        const char *name = charsetName(type.charset.number);
        const QString charset = name      ? QString::fromLatin1(name)
            : type.charset.name.isEmpty() ? QString::number(type.charset.number)
                                          : QString::fromUtf8(type.charset.name);
        words += u", charset "_s + printable(charset);
    }
    add(u"name"_s, type.name);
    add(u"file name"_s, type.fileName);
    add(u"type"_s, type.type);
    add(u"start"_s, type.start);
    add(u"boundary"_s, type.boundary);
    return words;
}

QString mediaOf(const intake::MediaType &type)
{
    return type.isEmpty() ? u"unknown type"_s : printable(QString::fromUtf8(type.media));
}

} // namespace

QByteArrayView MessageWalk::bytes(qint32 from, qint32 to) const
{
    return m_file.sliced(from, to - from);
}

int MessageWalk::byteAt(qint32 pos) const
{
    return pos < m_file.size() ? static_cast<quint8>(m_file[pos]) : -1;
}

void MessageWalk::walk(QByteArrayView file)
{
    m_file = file;
    const auto size = static_cast<qint32>(file.size());
    m_pduOffset = findPdu();
    if (m_pduOffset > 0) {
        walkPush(walkUserDataHeader(), m_pduOffset);
    }
    m_headerEnd = m_pduOffset;
    if (m_pduOffset < size) {
        walkHeader();
    }
    mark(
        size, u"rest"_s, [] { return u"not read"_s; }, true);
}

/// Intake knows where the PDU begins, also behind wrong lengths.
qint32 MessageWalk::findPdu()
{
    intake::Result scratch;
    intake::Journal journal(m_file, scratch);
    QByteArrayView pdu;
    if (intake::unwrapped(m_file, pdu, journal)) {
        return static_cast<qint32>(pdu.data() - m_file.data());
    }
    const bool isHeader = byteAt(0) > kHighBit && byteAt(0) <= kHighBit + kLastKnown;
    return isHeader ? 0 : static_cast<qint32>(m_file.size());
}

qint32 MessageWalk::walkUserDataHeader()
{
    if (byteAt(1) == kPush || byteAt(1) == kConfirmedPush) {
        return 0;
    }
    const qint32 end = byteAt(0) + 1;
    if (end < m_pduOffset) {
        markUserDataHeader(m_notes, bytes(0, end), 0);
    }
    return std::min(end, m_pduOffset);
}

void MessageWalk::walkPush(qint32 begin, qint32 end)
{
    WSP_Stream stream = intake::streamOver(m_file.first(end));
    stream.pos = begin;
    quint8 transaction = 0;
    quint8 type = 0;
    quint32 length = 0;
    if (!stream.readByte(transaction)) {
        return;
    }
    mark(stream.pos, pushPlace(), [&] { return u"transaction: %1"_s.arg(transaction); });
    if (!stream.readByte(type) || (type != kPush && type != kConfirmedPush)) {
        return;
    }
    mark(stream.pos, pushPlace(),
         [&] { return type == kPush ? u"type: push (6)"_s : u"type: confirmed push (7)"_s; });
    m_push.emplace();
    m_push->transaction = transaction;
    m_push->type = type;
    if (!stream.readUintvar(length)) {
        return;
    }
    mark(stream.pos, pushPlace(), [&] { return u"length of the headers: %1"_s.arg(length); });
    // What is behind the headers of a push of something else is its content.
    if (end == m_file.size() && length > 0 && length <= quint32(stream.remaining())) {
        stream.size = stream.pos + static_cast<qint32>(length);
    }
    walkPushHeaders(stream, *m_push);
    mark(
        end, pushPlace(), [] { return u"content"_s; }, true);
}

void MessageWalk::walkPushHeaders(WSP_Stream &stream, PushFacts &facts)
{
    const intake::MediaType type = intake::readMediaType(stream);
    facts.media = QString::fromUtf8(type.media);
    mark(stream.pos, pushPlace(), [&] { return u"content type: "_s + inWords(type); });
    while (stream.hasMore()) {
        const qint32 start = stream.pos;
        const int first = byteAt(start);
        if (first == kHighBit + kApplicationHeader) {
            ++stream.pos;
            if (intake::skipValue(stream)) {
                facts.application = applicationInWords(bytes(start + 1, stream.pos));
            }
            stream.pos = start;
        }
        if (!walkPartHeader(stream, pushPlace())) {
            break;
        }
    }
    mark(stream.size, pushPlace(), [] { return u"cannot be read"_s; });
}

void MessageWalk::walkHeader()
{
    WSP_Stream stream = intake::streamOver(m_file);
    stream.pos = m_pduOffset;
    while (stream.hasMore()) {
        const qint32 start = stream.pos;
        const int first = byteAt(start);
        if (first == 0) {
            while (byteAt(stream.pos) == 0) {
                ++stream.pos;
            }
            mark(stream.pos, u"header"_s, [] { return u"zeros"_s; });
        } else if (first == kHighBit + MMS_FIELD_CONTENT_TYPE) {
            walkContentType(stream);
            return;
        } else if (!(first < kHighBit ? walkTextField(stream, u"header"_s, true)
                                      : walkField(stream))) {
            return;
        }
        m_headerEnd = stream.pos;
    }
}

/// A name and a value, both texts; some values have a length in front.
bool MessageWalk::walkTextField(WSP_Stream &stream, const QString &place, bool isHeader)
{
    const qint32 start = stream.pos;
    if (byteAt(start) <= kLengthQuote) {
        return false;
    }
    const auto name = intake::readText(stream);
    const qint32 begin = stream.pos;
    const bool isCounted = byteAt(begin) <= kLengthQuote;
    if (!name || !(isCounted ? intake::skipValue(stream) : intake::readText(stream).has_value())) {
        stream.pos = start;
        return false;
    }
    mark(begin, place, [&] { return u"text field "_s + quoted(name->string()); });
    const QString value = anyValueInWords(bytes(begin, stream.pos));
    mark(stream.pos, place, [&] { return u"value: "_s + value; });
    if (isHeader) {
        keep({start, 0, printable(name->string()), value});
    }
    return true;
}

bool MessageWalk::walkField(WSP_Stream &stream)
{
    const int id = byteAt(stream.pos) & ~kHighBit;
    const qint32 start = stream.pos++;
    if (!stream.hasMore()) {
        stream.pos = start;
        return false;
    }
    mark(stream.pos, fieldName(id), [] { return u"field id"_s; });
    return id > 0 && id <= kLastKnown ? walkKnown(stream, id) : walkOther(stream, id);
}

/// The codec must end where the value does by the rules that hold for any value.
bool MessageWalk::isReadByCodec(const WSP_Stream &stream, int id, qint32 end)
{
    WSP_Stream copy = stream;
    MMS_HDR_S header;
    const std::unique_ptr<MsgFieldBase> codec(WMMSMsg::selectField(static_cast<quint8>(id)));
    return codec->read(copy, &header) != 0 && copy.pos == end;
}

/// Moves behind a value. Some senders leave out the length of an address or of a time: its token
/// alone would pass for the value then, and what follows for a field.
bool MessageWalk::skipKnown(WSP_Stream &stream, int id) const
{
    constexpr int kLongestTime = 8;
    const int token = byteAt(stream.pos);
    const int next = byteAt(stream.pos + 1);
    const bool isTime = id == MMS_FIELD_DELIVERY_TIME || id == MMS_FIELD_EXPIRY;
    if (id == MMS_FIELD_FROM && token == kHighBit && next > 0) {
        ++stream.pos;
        return intake::readEncodedText(stream).has_value();
    }
    if (isTime && token >= kHighBit && next > 0 && next <= kLongestTime) {
        ++stream.pos;
        return intake::readNumber(stream).has_value();
    }
    return intake::skipValue(stream);
}

bool MessageWalk::walkKnown(WSP_Stream &stream, int id)
{
    const QString name = fieldName(id);
    const qint32 start = stream.pos;
    WSP_Stream behind = stream;
    if (!skipKnown(behind, id)) {
        return false;
    }
    bool isRead = isReadByCodec(stream, id, behind.pos);
    if (isRead) {
        WireReader in(m_notes, stream, name);
        isRead = HeaderFieldWalk(in, id, behind.pos).walk();
    }
    stream.pos = behind.pos;
    mark(stream.pos, name, [&] { return anyValueInWords(bytes(start, stream.pos)); });
    if (isRead) {
        m_knownFields += bytes(start - 1, stream.pos);
    }
    return true;
}

bool MessageWalk::walkOther(WSP_Stream &stream, int id)
{
    const qint32 start = stream.pos;
    if (!intake::skipValue(stream)) {
        return false;
    }
    const QString value = valueInWords(id, bytes(start, stream.pos));
    mark(stream.pos, fieldName(id), [&value] { return QString(value); });
    keep({start - 1, id, fieldName(id), value});
    return true;
}

void MessageWalk::keep(const OtherField &field)
{
    if (m_otherFields.size() < kMostFields) {
        m_otherFields.append(field);
    }
}

void MessageWalk::walkContentType(WSP_Stream &stream)
{
    const QString name = fieldName(MMS_FIELD_CONTENT_TYPE);
    mark(++stream.pos, name, [] { return u"field id"_s; });
    WSP_Stream behind = stream;
    const intake::MediaType type = intake::readMediaType(behind);
    if (type.isPlainInHeader && isReadByCodec(stream, MMS_FIELD_CONTENT_TYPE, behind.pos)) {
        WireReader in(m_notes, stream, name);
        HeaderFieldWalk(in, MMS_FIELD_CONTENT_TYPE, behind.pos).walk();
    }
    stream.pos = behind.pos;
    mark(stream.pos, name, [&] { return u"media type: "_s + inWords(type); });
    m_headerEnd = stream.pos;
    walkBody(stream.pos, type);
}

void MessageWalk::walkBody(qint32 begin, const intake::MediaType &type)
{
    const auto end = static_cast<qint32>(m_file.size());
    if (type.isMultipart()) {
        walkMultipart(begin, end, QString(), 0);
        return;
    }
    mark(
        end, u"body"_s, [&] { return u"data, "_s + mediaOf(type); }, true);
}

void MessageWalk::walkMultipart(qint32 begin, qint32 end, const QString &path, int depth)
{
    const QString place = bodyPlace(path);
    WSP_Stream body = intake::streamOver(m_file.first(end));
    body.pos = begin;
    quint32 count = 0;
    if (!body.readUintvar(count)) {
        return;
    }
    mark(body.pos, place, [&] { return u"number of parts: %1"_s.arg(count); });
    for (quint32 number = 1; number <= count && body.hasMore(); ++number) {
        const QString part =
            path.isEmpty() ? QString::number(number) : u"%1.%2"_s.arg(path).arg(number);
        if (!walkPart(body, part, depth)) {
            mark(
                end, u"part "_s + part, [] { return u"cannot be read"_s; }, true);
            return;
        }
    }
    mark(
        end, place, [] { return u"behind the last part"_s; }, true);
}

bool MessageWalk::walkPart(WSP_Stream &body, const QString &path, int depth)
{
    const QString place = u"part "_s + path;
    quint32 headersLength = 0;
    quint32 dataLength = 0;
    if (!body.readUintvar(headersLength)) {
        return false;
    }
    mark(body.pos, place, [&] { return u"length of the headers: %1"_s.arg(headersLength); });
    if (!body.readUintvar(dataLength)) {
        return false;
    }
    mark(body.pos, place, [&] { return u"length of the data: %1"_s.arg(dataLength); });
    if (headersLength > quint32(body.remaining())) {
        return false;
    }
    const qint32 headers = body.pos;
    body.pos += static_cast<qint32>(headersLength);
    const intake::MediaType type = walkPartHeaders(headers, body.pos, place);
    const qint32 begin = body.pos;
    body.pos += static_cast<qint32>(std::min(dataLength, quint32(body.remaining())));
    if (type.isMultipart() && depth < kDeepestNesting) {
        walkMultipart(begin, body.pos, path, depth + 1);
    }
    const qint64 missing = qint64(dataLength) - (body.pos - begin);
    const QString cut =
        missing == 0 ? QString() : u", cut off: %1 missing"_s.arg(counted(missing, "byte"_L1));
    mark(
        body.pos, place, [&] { return u"data, "_s + mediaOf(type) + cut; }, true);
    return true;
}

intake::MediaType MessageWalk::walkPartHeaders(qint32 begin, qint32 end, const QString &place)
{
    WSP_Stream stream = intake::streamOver(m_file.first(end));
    stream.pos = begin;
    intake::MediaType type = intake::readMediaType(stream);
    mark(stream.pos, place, [&] { return u"content type: "_s + inWords(type); });
    const qint32 behind = stream.pos;
    if (byteAt(behind) == kPartCharset && behind < end) {
        ++stream.pos;
        const auto charset = intake::readCharset(stream);
        if (charset) {
            mark(stream.pos, place,
                 [&] { return u"charset: "_s + anyValueInWords(bytes(behind + 1, stream.pos)); });
        } else {
            stream.pos = behind;
        }
    }
    while (stream.hasMore() && walkPartHeader(stream, place)) { }
    mark(end, place, [] { return u"cannot be read"_s; });
    return type;
}

bool MessageWalk::walkPartHeader(WSP_Stream &stream, const QString &place)
{
    const qint32 start = stream.pos;
    const int first = byteAt(start);
    if (first < kHighBit) {
        return walkTextField(stream, place, false);
    }
    ++stream.pos;
    if (!intake::skipValue(stream)) {
        stream.pos = start;
        return false;
    }
    const int number = first & ~kHighBit;
    mark(stream.pos, place, [&] {
        return partHeaderName(number) + u": "_s
            + partHeaderInWords(number, bytes(start + 1, stream.pos));
    });
    return true;
}

} // namespace wmsg::cli

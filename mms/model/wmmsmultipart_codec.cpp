// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/charset.h"
#include "mms/model/wmmsmultipart_body.h"
#include "util/mms_util_common.h"

#include <QtCore/QByteArrayView>

#include <algorithm>
#include <climits>

// body         := count *entry                              count: one byte
// entry        := headers-length data-length content-type *header data         lengths: uintvar
// content-type := media | value-length media *parameter     media: 0x80 | number, or text
//   parameter  := 0x81 integer (charset) | 0x85 text (name) | 0x89 text | 0x8A text | text-name
//   text-value
// header       := 0x8E text (location) | 0xC0 [0x22] text (content id) | any byte, stepped over

namespace {

constexpr quint8 kHighBit = 0x80;
constexpr quint8 kLongestShortLength = 0x1F;

constexpr quint8 kParamCharset = 0x81;
constexpr quint8 kParamName = 0x85;
constexpr quint8 kParamType = 0x89;
constexpr quint8 kParamStart = 0x8A;
constexpr quint8 kHeaderLocation = 0x8E;
constexpr quint8 kHeaderContentId = 0xC0;
constexpr quint8 kQuotedString = 0x22;
constexpr quint8 kTextQuote = 127;
constexpr quint8 kUtf8 = 0xEA;

constexpr int kContentTypeRoom = 1024;
constexpr int kHeadersRoom = 5120;
constexpr int kDeepestNesting = 16;
constexpr int kSmallestEntry = 3;
constexpr int kLowestWrittenMedia = 1;
constexpr int kHighestWrittenMedia = 62;

QString charsetName()
{
    return QStringLiteral("charset");
}
QString boundaryName()
{
    return QStringLiteral("boundary");
}

bool isQuoteOrBracket(QChar c)
{
    return c == QLatin1Char('"') || c == QLatin1Char('<') || c == QLatin1Char('>');
}

void removeQuotesAndBrackets(QString &location)
{
    if (std::any_of(location.cbegin(), location.cend(), isQuoteOrBracket)) {
        location.removeIf(isQuoteOrBracket);
    }
}

} // namespace

bool WMMSMultipart::construct(QArray<char> &bytes, int offset)
{
    return BodyReader(bytes, BodyReader::Bytes::Copied).read(*this, offset);
}

bool WMMSMultipart::exportTo(QArray<char> &out, int offset)
{
    if (holds(out)) {
        QArray<char> own = out.copy();
        const bool written = exportTo(own, offset);
        out = own;
        return written;
    }
    return BodyWriter(*this).write(out, offset, getApproxSize());
}

WMMSMultipart::BodyReader::BodyReader(QArray<char> &buffer, Bytes bytes, int depth)
    : m_buffer(buffer), m_stream(buffer), m_bytes(bytes), m_depth(depth)
{
}

// Kept: the number of entries is one byte. Larger bodies cannot be told.
bool WMMSMultipart::BodyReader::read(WMMSMultipart &parent, int offset)
{
    m_stream.skip(offset);
    quint8 count;
    if (!m_stream.readByte(count)) {
        return false;
    }
    logLine(4, "numOfParts:%d", count);
    auto &parts = parent.getSubMmsMultipartList();
    parts.reserve(parts.size() + std::min<int>(count, m_stream.remaining() / kSmallestEntry));
    for (int left = count; left > 0; --left) {
        BodyPartRecord record;
        if (!readEntry(record)) {
            return false;
        }
        append(parent, record);
    }
    return true;
}

bool WMMSMultipart::BodyReader::readEntry(BodyPartRecord &record)
{
    quint32 headersLength;
    quint32 dataLength;
    if (!(m_stream.readUintvar(headersLength) && m_stream.readUintvar(dataLength))
        || headersLength > static_cast<quint32>(m_stream.remaining())) {
        return false;
    }
    const auto size = static_cast<qint32>(headersLength);
    WSP_Stream headers(m_stream.data + m_stream.pos, size);
    m_stream.pos += size;
    return readContentType(headers, record) && readHeaders(headers, record)
        && readData(dataLength, record.data);
}

bool WMMSMultipart::BodyReader::readData(quint32 length, QArray<char> &data)
{
    if (length > static_cast<quint32>(m_stream.remaining())) {
        return false;
    }
    const auto size = static_cast<qint32>(length);
    if (size > 0) {
        data = m_bytes == Bytes::Shared
            ? QArray<char>::slice(m_buffer, m_stream.pos, size)
            : QArray<char>::fromBytes(m_stream.data + m_stream.pos, size);
    }
    m_stream.pos += size;
    return data.size() == size;
}

// The location of the headers counts, an empty one too; without one the content id takes its place,
// as the setters of a part would have it.
void WMMSMultipart::BodyReader::append(WMMSMultipart &parent, BodyPartRecord &record) const
{
    WMMSMultipart &part = parent.m_subParts->emplaceBack();
    removeQuotesAndBrackets(record.contentLocation);
    part.m_contentType = std::move(record.contentType);
    part.m_contentID = std::move(record.contentID);
    part.m_contentLocation = std::move(record.contentLocation);
    if (part.m_contentLocation.isNull()) {
        part.setContentLocationIfNull();
    }
    part.setData(record.data);
    if (part.m_contentType.needDecode()) {
        decodeNested(part);
    }
    convertToUtf8(part, record.data);
}

// Kept: a nested body that cannot be read is no failure. What could be read of it stays, beside the
// raw data.
void WMMSMultipart::BodyReader::decodeNested(WMMSMultipart &part) const
{
    if (m_depth < kDeepestNesting) {
        BodyReader(part.m_data, Bytes::Copied, m_depth + 1).read(part, 0);
    }
}

bool WMMSMultipart::BodyReader::readContentType(WSP_Stream &headers, BodyPartRecord &record)
{
    quint8 first;
    if (!headers.readByte(first)) {
        return false;
    }
    if (first > kLongestShortLength) {
        return readMedia(headers, first, record.contentType);
    }
    headers.back(1);
    quint32 length;
    if (!headers.readValueLength(length) || length > static_cast<quint32>(headers.remaining())) {
        return false;
    }
    WSP_Stream value(headers.data + headers.pos, static_cast<qint32>(length));
    headers.pos += value.size;
    return value.readByte(first) && first > kLongestShortLength
        && readMedia(value, first, record.contentType) && readParameters(value, record);
}

bool WMMSMultipart::BodyReader::readMedia(WSP_Stream &value, quint8 first, WMMSContentType &type)
{
    if (first & kHighBit) {
        type.setWellKnownMedia(first & 0x7F);
        return true;
    }
    value.back(1);
    QString text;
    if (!value.readTextString(text)) {
        return false;
    }
    type.setMimeType(text);
    return true;
}

bool WMMSMultipart::BodyReader::readParameters(WSP_Stream &value, BodyPartRecord &record)
{
    quint8 first;
    while (value.readByte(first)) {
        if (!readParameter(value, first, record)) {
            return false;
        }
    }
    return true;
}

// Kept: 0x89 is stored as start and 0x8A as type, the other way round than they are assigned.
bool WMMSMultipart::BodyReader::readParameter(WSP_Stream &value, quint8 first,
                                              BodyPartRecord &record)
{
    if (first == kParamCharset) {
        quint32 charset;
        if (!value.readInteger(charset)) {
            return false;
        }
        wmsg::codec::setCharset(record.contentType, charset);
        return true;
    }
    if (first != kParamName && first != kParamType && first != kParamStart) {
        value.back(1);
        return readNamedParameter(value, record);
    }
    QString text;
    if (!value.readTextString(text)) {
        return false;
    }
    if (first == kParamName) {
        record.contentLocation = text;
    } else if (first == kParamType) {
        record.contentType.setParamStart(text);
    } else {
        record.contentType.setParamType(text);
    }
    return true;
}

// Kept: of the parameters with a name only the boundary is read. The value of another one is taken
// as the next name; what stands in front of "boundary" is parsed again, for senders that run a
// well-known parameter into it.
bool WMMSMultipart::BodyReader::readNamedParameter(WSP_Stream &value, BodyPartRecord &record)
{
    const qint32 start = value.pos;
    QString text;
    if (!value.readTextString(text)) {
        return false;
    }
    QByteArrayView name(value.data + start, value.pos - start);
    if (name.startsWith(static_cast<char>(kTextQuote))) {
        name = name.sliced(1);
    }
    const auto boundary = name.indexOf(QByteArrayView("boundary"));
    if (boundary < 0) {
        return true;
    }
    if (!value.readTextString(text)) {
        return false;
    }
    record.contentType.setParam(boundaryName(), text);
    WSP_Stream inFront(const_cast<char *>(name.data()), static_cast<qint32>(boundary));
    return readParameters(inFront, record);
}

// Kept: bytes that are no location or content id are stepped over one at a time.
bool WMMSMultipart::BodyReader::readHeaders(WSP_Stream &headers, BodyPartRecord &record)
{
    quint8 byte;
    while (headers.readByte(byte)) {
        if (byte == kHeaderLocation) {
            if (!headers.readTextString(record.contentLocation)) {
                return false;
            }
        } else if (byte == kHeaderContentId) {
            if (!headers.readByte(byte)) {
                return false;
            }
            if (byte != kQuotedString) {
                headers.back(1);
            }
            if (!headers.readTextString(record.contentID)) {
                return false;
            }
        }
    }
    return true;
}

void WMMSMultipart::BodyReader::convertToUtf8(WMMSMultipart &part, const QArray<char> &received)
{
    const QString charset = part.m_contentType.getParam(charsetName());
    logLine(4, "charset=%s", charset);
    if (charset.isEmpty() || part.m_contentType.getMainType().toLower() != QLatin1String("text")) {
        return;
    }
    QArray<char> text;
    if (MMS_UTIL_Common::toUTF8(received, charset, text)) {
        part.setData(text);
        part.m_contentType.setParam(charsetName(), QStringLiteral("UTF-8"));
    }
}

bool WMMSMultipart::BodyWriter::write(QArray<char> &out, int offset, qint64 room)
{
    if (m_part.m_contentType.isEmpty() || room > INT_MAX || !out.resize(static_cast<int>(room))) {
        return false;
    }
    WSP_Stream stream(out);
    stream.skip(offset);
    auto *parts = m_part.m_subParts.get();
    const bool written = parts && !parts->isEmpty() ? writeParts(stream, *parts)
                                                    : writeEntry(stream, m_part, m_part.m_data);
    return written && out.resize(stream.pos);
}

bool WMMSMultipart::BodyWriter::writeParts(WSP_Stream &stream, QValueList<WMMSMultipart> &parts)
{
    if (!stream.writeByte(static_cast<quint8>(parts.size()))) {
        return false;
    }
    for (qsizetype n = 0; n < parts.size(); ++n) {
        const WMMSMultipart &part = std::as_const(parts)[n];
        const bool isNested = part.m_subParts && !part.m_subParts->isEmpty();
        if (!(isNested ? writeNested(stream, parts[n]) : writeEntry(stream, part, part.m_data))) {
            return false;
        }
    }
    return true;
}

bool WMMSMultipart::BodyWriter::writeNested(WSP_Stream &stream, WMMSMultipart &part)
{
    BodyWriter writer(part, m_allowance);
    QArray<char> body;
    if (!writer.write(body, 0, writer.room()) || !writeEntry(stream, part, body)) {
        return false;
    }
    m_whole = m_whole && writer.isWhole();
    part.m_data = QArray<char>(); // an array of its own: a copy of the part keeps its bytes
    return true;
}

bool WMMSMultipart::BodyWriter::writeEntry(WSP_Stream &stream, const WMMSMultipart &part,
                                           const QArray<char> &data)
{
    if (part.m_contentType.isEmpty()) {
        return false;
    }
    char bytes[kHeadersRoom];
    WSP_Stream headers(bytes, kHeadersRoom);
    // Kept: headers that do not fit are cut, and the entry is written all the same.
    if (!writeHeaders(headers, part)) {
        m_whole = false;
    }
    return stream.writeUintvar(headers.pos) && stream.writeUintvar(data.size())
        && stream.writeBytes(bytes, headers.pos) && stream.writeArray(data);
}

bool WMMSMultipart::BodyWriter::writeHeaders(WSP_Stream &headers, const WMMSMultipart &part)
{
    if (!writeContentType(headers, part)) {
        return false;
    }
    const QString &location = part.m_contentLocation;
    if (!location.isEmpty()
        && !(headers.writeByte(kHeaderLocation) && headers.writeTextString(location))) {
        return false;
    }
    const QString &id = part.m_contentID;
    if (id.isEmpty()) {
        return true;
    }
    return headers.writeByte(kHeaderContentId)
        && (id.front() != QLatin1Char('<') || headers.writeByte(kQuotedString))
        && headers.writeTextString(id);
}

// Kept: every text part is labelled UTF-8, and the location stands here too, as its name.
bool WMMSMultipart::BodyWriter::writeContentType(WSP_Stream &headers, const WMMSMultipart &part)
{
    const WMMSContentType &type = part.m_contentType;
    char bytes[kContentTypeRoom];
    WSP_Stream value(bytes, kContentTypeRoom);
    const int media = type.wellKnownId();
    const bool isShort = media >= kLowestWrittenMedia && media <= kHighestWrittenMedia;
    const bool isText = type.getMainType() == QLatin1String("text");
    const QString boundary = type.getParam(boundaryName());
    if (!((isShort ? value.writeInteger(media) : value.writeTextString(type.getMimeType()))
          && (!isText || (value.writeByte(kParamCharset) && value.writeByte(kUtf8)))
          && (part.m_contentLocation.isEmpty()
              || (value.writeByte(kParamName) && value.writeTextString(part.m_contentLocation)))
          && (boundary.isEmpty()
              || (value.writeTextString(boundaryName()) && value.writeTextString(boundary))))) {
        return false;
    }
    return (value.pos == 1 || headers.writeValueLength(value.pos))
        && headers.writeBytes(bytes, value.pos);
}

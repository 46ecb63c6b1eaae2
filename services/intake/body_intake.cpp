// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/body_intake.h"

#include "services/intake/transfer_encoding.h"
#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"
#include "services/intake/xml_declaration.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

// multipart := count { entry }             count: a uintvar, or one byte in this system's own hand
//   entry   := header-length data-length header data

namespace wmsg::intake {

namespace {

constexpr int kDeepest = 16; // as deep as the codec follows
constexpr qsizetype kMostInOneByte = 255;
constexpr quint8 kHighestShort = 127;
constexpr quint32 kMostParts = 4000; // that many fit into the multiparts that the codec follows
constexpr QByteArrayView kMixedPartHeader("\xA3");

bool isZeros(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == 0; });
}

/// Reads the count of a multipart of this system, which writes one above 127 in one byte.
bool readOwnCount(WSP_Stream &stream, QByteArrayView body, quint32 &count)
{
    quint8 byte = 0;
    if (peekByte(stream) <= kHighestShort || !isWholeMultipart(body)) {
        return false;
    }
    stream.readByte(byte);
    count = byte;
    return true;
}

/// An entry, as it will be read.
struct Part {
    QByteArrayView given; ///< The whole entry, when nothing has to be done.
    QByteArray header;
    Pieces data;
};

QByteArray writtenLength(qsizetype length)
{
    constexpr qsizetype kMost = 5;
    QByteArray out(kMost, Qt::Uninitialized);
    WSP_Stream stream(out.data(), static_cast<qint32>(out.size()));
    stream.writeUintvar(static_cast<qint32>(length));
    out.truncate(stream.pos);
    return out;
}

Pieces entryOf(const QByteArray &header, Pieces data)
{
    Pieces entry;
    entry.add(writtenLength(header.size()) + writtenLength(data.size()) + header);
    entry.add(std::move(data));
    return entry;
}

/// Writes parts behind their count. What one byte cannot count goes into a multipart at the end.
Pieces written(std::vector<Part> parts)
{
    std::vector<Part> rest;
    if (qsizetype(parts.size()) > kMostInOneByte) {
        const auto middle = parts.begin() + kMostInOneByte - 1;
        rest.assign(std::make_move_iterator(middle), std::make_move_iterator(parts.end()));
        parts.erase(middle, parts.end());
    }
    Pieces body;
    body.add(QByteArray(1, static_cast<char>(parts.size() + (rest.empty() ? 0 : 1))));
    for (Part &part : parts) {
        if (part.given.isEmpty()) {
            body.add(entryOf(part.header, std::move(part.data)));
        } else {
            body.keep(part.given);
        }
    }
    if (!rest.empty()) {
        body.add(entryOf(kMixedPartHeader.toByteArray(), written(std::move(rest))));
    }
    return body;
}

/// Where the last byte lies that is not 0; -1 when all are.
qsizetype lastNonZero(QByteArrayView bytes)
{
    const auto found = std::find_if(bytes.rbegin(), bytes.rend(), [](char c) { return c != 0; });
    return bytes.rend() - found - 1;
}

std::optional<QByteArray> withoutTransfer(QByteArrayView content, Transfer transfer,
                                          Journal &journal)
{
    if (transfer == Transfer::None) {
        return std::nullopt;
    }
    auto bytes = transfer == Transfer::Base64 ? fromBase64(content)
                                              : std::optional(fromQuotedPrintable(content));
    journal.step(content.data(),
                 bytes ? u"the transfer encoding of a part was undone"_s
                       : u"a part is labelled as base64 and is not"_s);
    return bytes;
}

/// The charset of a text: what was declared, else what an XML declaration says, which can be read
/// in a charset of single bytes alone.
Charset charsetOf(QByteArrayView bytes, const MediaType &type)
{
    const bool isOpen = !type.charset.isDeclared() || type.charset.number == Charset::kUsAscii;
    if (!isOpen || !type.isXml()) {
        return type.charset;
    }
    const Charset named = Charset::named(xmlEncoding(bytes));
    return named.isDeclared() && named.width() == 1 ? named : type.charset;
}

/// The text in UTF-8; null when it is that already.
std::optional<QByteArray> takeInText(QByteArrayView bytes, const MediaType &type)
{
    if (isReadableText(bytes, type.charset)) {
        return std::nullopt;
    }
    const Charset sniffed = type.charset.isDeclared() ? Charset() : utf16ByLooks(bytes);
    QByteArray text = toUtf8(bytes, sniffed.isDeclared() ? sniffed : charsetOf(bytes, type));
    if (text == bytes) {
        return std::nullopt;
    }
    if (type.isXml()) {
        text = withXmlEncodingUtf8(std::move(text));
    }
    // The codec takes one off itself; a text loses one at most.
    if (text.endsWith('\0') && !text.endsWith(QByteArrayView("\0\0", 2))) {
        text.chop(1);
    }
    return text;
}

class MultipartReader {
public:
    MultipartReader(Journal &journal, int depth) : m_journal(journal), m_depth(depth) { }

    std::optional<Pieces> read(QByteArrayView body, bool &isUnchanged)
    {
        WSP_Stream stream = streamOver(body);
        quint32 count = 0;
        if (!readCount(stream, body, count)) {
            return std::nullopt;
        }
        m_lastByte = lastNonZero(body);
        const bool hasAll = readParts(stream, 0, count);
        if (const quint32 more = hasAll ? partsBehind(stream) : 0; more > 0) {
            m_isUnchanged = false;
            m_journal.step(
                body.data(),
                u"the body announces %1 parts and has %2"_s.arg(count).arg(count + more));
            (void)readParts(stream, count, count + more);
        }
        if (stream.pos <= m_lastByte) {
            m_journal.step(body.data() + stream.pos, u"bytes behind the last part are not read"_s);
        }
        isUnchanged = m_isUnchanged;
        if (!isUnchanged) {
            return written(std::move(m_parts));
        }
        Pieces same;
        same.keep(body);
        return same;
    }

private:
    bool readCount(WSP_Stream &stream, QByteArrayView body, quint32 &count)
    {
        if (readOwnCount(stream, body, count)) {
            return true;
        }
        if (peekByte(stream) > kHighestShort) {
            m_isUnchanged = false;
            m_journal.step(body.data(), u"the number of parts was written anew"_s);
        }
        return stream.readUintvar(count);
    }
    /// How many parts there are behind those that were counted, if there is nothing else.
    [[nodiscard]] quint32 partsBehind(WSP_Stream stream) const
    {
        quint32 count = 0;
        while (stream.pos <= m_lastByte) {
            const auto extent = readExtent(stream);
            if (!extent || extent->missing > 0 || !readPartHeader(extent->header).hasType) {
                return 0;
            }
            ++count;
        }
        return count;
    }
    /// Reads the parts from the first to the last of that many; false when one is not there.
    bool readParts(WSP_Stream &stream, quint32 first, quint32 count)
    {
        for (quint32 i = first; i < count; ++i) {
            const qint32 start = stream.pos;
            const bool isPossible = start <= m_lastByte && i < kMostParts;
            const auto extent = isPossible ? readExtent(stream) : std::nullopt;
            if (!extent) {
                stream.pos = start;
                tellMissing(stream, i, count);
                return false;
            }
            if (extent->missing > 0) {
                m_journal.lost(
                    extent->data.data(),
                    u"part %1 lacks its last %2 bytes"_s.arg(i + 1).arg(extent->missing));
            }
            takePart(*extent, bytesBetween(stream, start, stream.pos));
        }
        return true;
    }
    void tellMissing(const WSP_Stream &stream, quint32 present, quint32 count)
    {
        m_isUnchanged = false;
        m_journal.lost(stream.data + stream.pos,
                       u"the body announces %1 parts and has %2"_s.arg(count).arg(present));
    }

    void takePart(const Extent &extent, QByteArrayView entry)
    {
        const PartHeader header = readPartHeader(extent.header);
        Part part;
        const bool isSame = takeData(extent.data, header, part.data) && extent.missing == 0;
        if (header.isPlain && isSame) {
            part.given = entry;
        } else {
            m_isUnchanged = false;
            part.header = writtenPartHeader(header);
        }
        if (!header.isPlain) {
            m_journal.step(extent.header.data(), u"the header of a part was written anew"_s);
        }
        m_parts.push_back(std::move(part));
    }
    /// Returns whether the data are as they were.
    bool takeData(QByteArrayView data, const PartHeader &header, Pieces &out)
    {
        if (header.type.isMultipart() && m_depth < kDeepest) {
            return takeNested(data, out);
        }
        auto content = takeInContent(data, header.type, header.transfer, m_journal);
        if (content) {
            out.add(std::move(*content));
            return false;
        }
        out.keep(data);
        return true;
    }
    bool takeNested(QByteArrayView data, Pieces &out)
    {
        bool isUnchanged = false;
        auto nested = MultipartReader(m_journal, m_depth + 1).read(data, isUnchanged);
        if (nested) {
            out = std::move(*nested);
        }
        return nested ? isUnchanged : data.isEmpty();
    }

    Journal &m_journal;
    int m_depth;
    qsizetype m_lastByte = -1;
    bool m_isUnchanged = true;
    std::vector<Part> m_parts;
};

} // namespace

std::optional<Extent> readExtent(WSP_Stream &stream)
{
    constexpr qint32 kLongestLength = 5;
    quint32 headerLength = 0;
    quint32 dataLength = 0;
    const qint32 start = stream.pos;
    if (!stream.readUintvar(headerLength) || stream.pos - start > kLongestLength) {
        return std::nullopt;
    }
    const qint32 second = stream.pos;
    if (!stream.readUintvar(dataLength) || stream.pos - second > kLongestLength
        || headerLength > quint32(stream.remaining())) {
        return std::nullopt;
    }
    const qint32 data = stream.pos + static_cast<qint32>(headerLength);
    const quint32 present = qMin(dataLength, quint32(stream.size - data));
    Extent extent{bytesBetween(stream, stream.pos, data),
                  bytesBetween(stream, data, data + static_cast<qint32>(present)),
                  dataLength - present};
    stream.pos = data + static_cast<qint32>(present);
    return extent;
}

bool beginsMultipart(QByteArrayView body)
{
    WSP_Stream stream = streamOver(body);
    quint32 count = 0;
    const bool isCounted = readOwnCount(stream, body, count) || stream.readUintvar(count);
    if (!isCounted || count == 0) {
        return false;
    }
    const auto extent = readExtent(stream);
    if (!extent || extent->header.isEmpty()) {
        return false;
    }
    // Most types are a number, bare or behind a length.
    constexpr quint8 kFirstNumber = 0x80;
    const auto first = static_cast<quint8>(extent->header.front());
    const auto second =
        static_cast<quint8>(extent->header.size() > 1 ? extent->header[1] : char(0));
    const bool isNumber =
        first > kFirstNumber || (first > 0 && first < kLengthQuote && second > kFirstNumber);
    return isNumber || readPartHeader(extent->header).hasType;
}

bool isWholeMultipart(QByteArrayView body)
{
    WSP_Stream stream = streamOver(body);
    quint8 count = 0;
    if (!stream.readByte(count)) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        const auto extent = readExtent(stream);
        if (!extent || extent->missing > 0) {
            return false;
        }
    }
    return isZeros(bytesBetween(stream, stream.pos, stream.size));
}

std::optional<Pieces> takeInMultipart(QByteArrayView body, bool &isUnchanged, Journal &journal)
{
    return MultipartReader(journal, 0).read(body, isUnchanged);
}

std::optional<QByteArray> takeInContent(QByteArrayView content, const MediaType &type,
                                        Transfer transfer, Journal &journal)
{
    std::optional<QByteArray> decoded = withoutTransfer(content, transfer, journal);
    const QByteArrayView bytes = decoded ? QByteArrayView(*decoded) : content;
    std::optional<QByteArray> text = type.isText() ? takeInText(bytes, type) : std::nullopt;
    if (!text) {
        return decoded;
    }
    journal.step(content.data(), u"a text became UTF-8"_s);
    return text;
}

bool isReadableText(QByteArrayView bytes, const Charset &charset)
{
    const bool looksUtf16 = !charset.isDeclared() && utf16ByLooks(bytes).isDeclared();
    if (charset.isUtf16() || looksUtf16) {
        return false;
    }
    const bool isCompatible = !charset.isDeclared() || charset.number == Charset::kUtf8
        || charset.number == Charset::kUsAscii;
    return isCompatible ? isUtf8(bytes) : charset.keepsAscii() && isAscii(bytes);
}

Pieces multipartOfOne(const MediaType &type, Pieces content)
{
    PartHeader header;
    header.type = type;
    header.location = withoutWrapping(type.name.isEmpty() ? type.fileName : type.name);
    Pieces body;
    body.add(QByteArray(1, 1));
    body.add(entryOf(writtenPartHeader(header), std::move(content)));
    return body;
}

} // namespace wmsg::intake

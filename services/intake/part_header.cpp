// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/part_header.h"

#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"

#include <algorithm>

// header := content-type { 0x8E text (Content-Location) | 0xC0 ['"'] text (Content-ID)
//                        | 0xAE disposition | 0xC5 disposition | (0x80..0xFF) value | text text }
//   disposition := value-length (number | text) *( 0x86 text | 0x98 text | token value )
//   A charset (0x81 number) may stand behind a content type that has no room for it.

namespace wmsg::intake {

namespace {

constexpr quint8 kDisposition = 0xAE;
constexpr quint8 kDispositionAgain = 0xC5;

bool isSame(const QByteArray &a, const char *b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

/// The codec steps over a header that it does not know byte by byte, and would stop at these.
bool isSteppedOver(QByteArrayView bytes)
{
    return std::none_of(bytes.begin(), bytes.end(), [](char c) {
        const auto byte = static_cast<quint8>(c);
        return byte == kLocation || byte == kContentId;
    });
}

class PartHeaderReader {
public:
    PartHeaderReader(QByteArrayView bytes, PartHeader &header)
        : m_stream(streamOver(bytes)), m_header(header)
    {
    }

    void readAll()
    {
        m_header.type = readMediaType(m_stream);
        m_header.isPlain = m_header.type.isPlainInPart;
        m_isBehindType = true;
        while (m_stream.hasMore()) {
            const qint32 start = m_stream.pos;
            if (!readOne()) {
                m_stream.pos = m_stream.size;
                stepOver(start);
            }
            m_isBehindType = false;
        }
        chooseLocation();
    }

private:
    bool readOne()
    {
        const int first = peekByte(m_stream);
        if (first == kLocation) {
            return readLocation();
        }
        if (first == kContentId) {
            return readId();
        }
        if (first == 0) {
            ++m_stream.pos; // the end of a text that its length leaves out
            return true;
        }
        const qint32 start = m_stream.pos;
        const bool isRead = first >= kHighBit ? readOther(static_cast<quint8>(first))
            : first > kLengthQuote            ? readTextHeader()
                                              : false;
        if (isRead) {
            stepOver(start);
        }
        return isRead;
    }
    void stepOver(qint32 start)
    {
        if (!isSteppedOver(bytesBetween(m_stream, start, m_stream.pos))) {
            m_header.isPlain = false;
        }
    }
    bool readLocation()
    {
        ++m_stream.pos;
        const auto text = readText(m_stream);
        if (!text) {
            return false;
        }
        m_location = text->utf8;
        // An empty one makes the codec forget the name.
        const bool hidesName = m_location.isEmpty() && !m_header.type.name.isEmpty();
        m_header.isPlain = m_header.isPlain && text->isPlain && !hidesName;
        return true;
    }
    bool readId()
    {
        ++m_stream.pos;
        if (peekByte(m_stream) == '"') {
            ++m_stream.pos;
        }
        const auto text = readText(m_stream);
        if (!text) {
            return false;
        }
        takeId(text->utf8);
        const bool isAsWritten = text->utf8 == m_header.id || text->utf8 == '<' + m_header.id + '>';
        m_header.isPlain = m_header.isPlain && text->isPlain && isAsWritten;
        return true;
    }
    void takeId(const QByteArray &text)
    {
        QByteArray id = text;
        if (id.endsWith('"')) {
            id.chop(1);
        }
        m_header.id = withoutWrapping(id);
    }
    bool readOther(quint8 token)
    {
        ++m_stream.pos;
        const qint32 begin = m_stream.pos;
        if (token == kParamCharset && m_isBehindType) {
            const auto charset = readCharset(m_stream);
            m_header.type.charset = charset.value_or(Charset());
            m_header.isPlain = false;
            return charset.has_value();
        }
        if (!skipValue(m_stream)) {
            return false;
        }
        if (token == kDisposition || token == kDispositionAgain) {
            WSP_Stream value(m_stream.data, m_stream.pos);
            value.pos = begin;
            readDisposition(value);
        }
        return true;
    }
    /// A disposition looks like a content type whose media is the disposition.
    void readDisposition(WSP_Stream &value)
    {
        const MediaType disposition = readMediaType(value);
        const QByteArray &file = disposition.fileName;
        m_fileName = file.isEmpty() ? disposition.name : file;
    }
    bool readTextHeader()
    {
        const auto name = readText(m_stream);
        if (peekByte(m_stream) >= kHighBit) {
            return true; // the end of a text whose length is too short, and the next header
        }
        const auto value = readText(m_stream);
        if (!value) {
            return false;
        }
        const QByteArray key = name->utf8.trimmed();
        if (isSame(key, "Content-Transfer-Encoding")) {
            takeTransfer(value->utf8.trimmed());
        } else if (isSame(key, "Content-ID") && m_header.id.isEmpty()) {
            takeId(value->utf8);
            m_header.isPlain = false;
        } else if (isSame(key, "Content-Location") && m_location.isEmpty()) {
            m_location = value->utf8;
            m_header.isPlain = false;
        } else if (isSame(key, "Content-Disposition")) {
            takeTextDisposition(value->utf8);
        }
        return true;
    }
    void takeTransfer(const QByteArray &encoding)
    {
        if (isSame(encoding, "base64")) {
            m_header.transfer = Transfer::Base64;
        } else if (isSame(encoding, "quoted-printable")) {
            m_header.transfer = Transfer::QuotedPrintable;
        }
    }
    /// The parameters of mail behind a disposition are those of mail behind a media type.
    void takeTextDisposition(const QByteArray &text)
    {
        const QByteArray value = text + '\0';
        WSP_Stream stream = streamOver(value);
        if (peekByte(stream) > kLengthQuote) {
            const MediaType disposition = readMediaType(stream);
            m_fileName = disposition.fileName.isEmpty() ? disposition.name : disposition.fileName;
        }
    }
    void chooseLocation()
    {
        const MediaType &type = m_header.type;
        if (m_location.isEmpty() && type.name.isEmpty()) {
            m_location = type.fileName.isEmpty() ? m_fileName : type.fileName;
            m_header.isPlain = m_header.isPlain && m_location.isEmpty();
        }
        m_header.location = withoutWrapping(m_location.isEmpty() ? type.name : m_location);
    }

    WSP_Stream m_stream;
    PartHeader &m_header;
    QByteArray m_location;
    QByteArray m_fileName;
    bool m_isBehindType = false;
};

bool isFollowed(const MediaType &type)
{
    return type.media == "application/vnd.wap.multipart.mixed"
        || type.media == "application/vnd.wap.multipart.related";
}

} // namespace

PartHeader readPartHeader(QByteArrayView bytes)
{
    PartHeader header;
    PartHeaderReader(bytes, header).readAll();
    MediaType &type = header.type;
    if (type.isEmpty()) {
        type.media = QByteArrayLiteral("application/octet-stream");
        header.hasType = false;
        header.isPlain = false;
    }
    if (type.isMultipart() && !isFollowed(type)) {
        header.isPlain = false;
    }
    if (header.transfer != Transfer::None) {
        header.isPlain = false;
    }
    return header;
}

QByteArray writtenPartHeader(const PartHeader &header)
{
    MediaType type = header.type;
    if (type.isMultipart()) {
        type = MediaType();
        type.media = QByteArrayLiteral("application/vnd.wap.multipart.mixed");
    }
    QByteArray out = writtenPartType(type, header.location);
    if (!header.location.isEmpty()) {
        out += char(kLocation) + writtenText(header.location);
    }
    if (!header.id.isEmpty()) {
        out += QByteArrayLiteral("\xC0\"") + writtenText('<' + header.id + '>');
    }
    return out;
}

} // namespace wmsg::intake

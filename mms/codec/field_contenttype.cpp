// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/charset.h"
#include "mms/codec/fields.h"

// content-type := media (0x81..0xFF) | value-length media *parameter
//   parameter  := 0x89 text (Type) | 0x8A ['"'] text (Start) | 0x81 integer (Charset) | text-name
//   text-value

namespace {

constexpr quint8 kHighBit = 0x80;
constexpr quint8 kTokenCharset = 1;
constexpr quint8 kTokenType = 9;
constexpr quint8 kTokenStart = 10;

QString applicationId()
{
    return QStringLiteral("Application-ID");
}
QString replyApplicationId()
{
    return QStringLiteral("Reply-To-Application-ID");
}

// Reads the parameters of a content type as long as the length that was announced lasts.
class ParameterReader {
public:
    ParameterReader(WSP_Stream &stream, WMMSContentType &type, qint64 length)
        : m_stream(stream), m_type(type), m_remaining(length)
    {
    }
    bool readAll()
    {
        quint8 first;
        while (m_remaining >= 1) {
            if (!m_stream.readByte(first) || !readOne(first)) {
                return false;
            }
        }
        return true;
    }

private:
    bool readOne(quint8 first)
    {
        if (first < kHighBit) {
            m_stream.back(1);
            return readNamed();
        }
        --m_remaining;
        switch (first & 0x7F) {
        case kTokenType:
            return readType();
        case kTokenStart:
            return readStart();
        case kTokenCharset:
            return readCharset();
        default:
            // Kept: the value of another parameter is not skipped. Its bytes are read as
            // parameters.
            return true;
        }
    }
    bool readType()
    {
        QString value;
        if (!readText(value)) {
            return false;
        }
        m_type.setParamType(value);
        return true;
    }
    bool readStart()
    {
        quint8 quote;
        if (!m_stream.readByte(quote)) {
            return false;
        }
        if (quote == '"') {
            --m_remaining;
        } else {
            m_stream.back(1);
        }
        QString value;
        if (!readText(value)) {
            return false;
        }
        m_type.setParamStart(value);
        return true;
    }
    bool readCharset()
    {
        const qint32 start = m_stream.pos;
        quint32 charset;
        if (!m_stream.readInteger(charset)) {
            return false;
        }
        m_remaining -= m_stream.pos - start;
        wmsg::codec::setCharset(m_type, charset);
        return true;
    }
    bool readNamed()
    {
        QString name;
        QString value;
        if (!readText(name) || !readText(value)) {
            return false;
        }
        logLine(4, "get param:%s value:%s", name, value);
        m_type.setParam(name, value);
        return true;
    }
    // Kept: a text takes its number of characters from what remains, and one for its end.
    bool readText(QString &text)
    {
        if (!m_stream.readTextString(text)) {
            return false;
        }
        m_remaining -= text.size() + 1;
        return true;
    }

    WSP_Stream &m_stream;
    WMMSContentType &m_type;
    qint64 m_remaining;
};

void writeNamed(WSP_Stream &stream, const WMMSContentType &type, const QString &name)
{
    const QString value = type.getParam(name);
    if (!value.isEmpty()) {
        stream.writeTextString(name);
        stream.writeTextString(value);
    }
}

void writeWellKnown(WSP_Stream &stream, quint8 token, const QString &value)
{
    if (!value.isEmpty()) {
        stream.writeInteger(token);
        stream.writeTextString(value);
    }
}

} // namespace

// Kept: 128 is a length here, not a media number.
quint32 Field_ContentType::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    quint8 first;
    if (!stream.readByte(first)) {
        return 0;
    }
    if (first > kHighBit) {
        header->contentType.setWellKnownMedia(first & 0x7F);
        return 1;
    }
    stream.back(1);
    quint32 length;
    quint32 media;
    if (!(stream.readValueLength(length) && stream.readInteger(media))) {
        return 0;
    }
    header->contentType.setWellKnownMedia(static_cast<quint8>(media));
    // The media is taken to be one byte long.
    return ParameterReader(stream, header->contentType, qint64(length) - 1).readAll() ? 1 : 0;
}

quint32 Field_ContentType::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    const WMMSContentType &type = header->contentType;
    if (type.isEmpty()) {
        return 1;
    }
    stream.writeInteger(kId);
    const int media = type.wellKnownId();
    if (media < 0) {
        return 0;
    }
    if (type.getParamCount() == 0) {
        stream.writeInteger(media);
        return 1;
    }
    char bytes[kScratchSize];
    WSP_Stream value(bytes, kScratchSize);
    value.writeByte(static_cast<quint8>(media | kHighBit));
    writeWellKnown(value, kTokenStart, type.getParamStart());
    writeWellKnown(value, kTokenType, type.getParamType());
    writeNamed(value, type, applicationId());
    writeNamed(value, type, replyApplicationId());
    writeLengthPrefixed(stream, value);
    return 1;
}

void Field_ContentType::printField(MMS_HDR_S *header)
{
    if (wmsg::log::isPrinted(4)) {
        FieldPrinter::text(kId, header->contentType.toString());
    }
}

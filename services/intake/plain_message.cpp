// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/plain_message.h"

#include "services/intake/body_intake.h"
#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"

#include <mms/codec/mms_hdr_s.h>

#include <algorithm>
#include <array>

// message := 0x8C type { field } [ 0x84 message-type body ]
//   field        := id (0x81..0x98) value, of the kind that the id asks for
//   text         := printable ASCII, at least one character, without "=?", 0
//   encoded      := text | value-length 0xEA utf-8 0
//   utf-8        := at least one byte, without a mark, 127 in front, 0 and "=?"
//   address      := text without blanks, quotes and brackets; a slash only in "/TYPE=PLMN" behind
//                   a number
//   from         := value-length (0x80 address | 0x81)
//   time         := value-length (0x80 | 0x81) number
//   message-type := multipart | value-length multipart { (0x89 | 0x8A) text without quotes }
//   multipart    := 0xA3 | 0xB3
// body := count (1..127) { header-length data-length header data }, and nothing behind it
//   header       := part-type { 0x8E text | 0xC0 ['"'] '<' text without quotes and brackets '>' }
//   part-type    := media | value-length media { 0x81 (0x83 | 0xEA) | 0x85 text }
//   media        := number (0x80..0xFF) | text with a slash inside, without blanks and semicolons
//
// Each of these is what the tolerant readers call plain. They decide; this may know less than they
// do, never more.

namespace wmsg::intake {

namespace {

/// The byte that a field begins with.
constexpr quint8 onWire(MMS_FIELD_ID_E id)
{
    return 0x80 | id;
}

enum Type : quint8 {
    SendConfirmation = 0x81,
    Notification = 0x82,
    RetrieveConfirmation = 0x84,
    Delivery = 0x86,
};

constexpr quint8 kFirstToken = 0x80;
constexpr quint8 kSecondToken = 0x81;
constexpr quint8 kUtf8 = 0xEA;
constexpr quint8 kUsAscii = 0x83;
constexpr QByteArrayView kEncodedWord("=?");

bool isPrintable(QByteArrayView text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

bool hasEncodedWord(QByteArrayView text)
{
    return text.contains('=') && text.contains(kEncodedWord);
}

/// Reads a text and its NUL; empty when it is none.
QByteArrayView readPlainText(WSP_Stream &stream)
{
    const QByteArrayView rest = bytesBetween(stream, stream.pos, stream.size);
    const qsizetype end = rest.indexOf('\0');
    if (end <= 0) {
        return {};
    }
    const QByteArrayView text = rest.first(end);
    stream.pos += static_cast<qint32>(end) + 1;
    return isPrintable(text) && !hasEncodedWord(text) ? text : QByteArrayView();
}

/// Opens the value behind a value-length as a stream of its own, and moves behind it.
bool openValue(WSP_Stream &stream, WSP_Stream &value)
{
    quint32 length = 0;
    if (peekByte(stream) > kLengthQuote || !stream.readValueLength(length) || length == 0
        || length > quint32(stream.remaining())) {
        return false;
    }
    value.pos = stream.pos;
    stream.pos += static_cast<qint32>(length);
    value.size = stream.pos;
    return true;
}

/// Opens a content type: a number alone, or what stands behind a length.
bool openType(WSP_Stream &stream, WSP_Stream &value)
{
    if (peekByte(stream) < kHighBit) {
        return openValue(stream, value);
    }
    value.pos = stream.pos++;
    value.size = stream.pos;
    return true;
}

bool isPlainAddress(QByteArrayView text)
{
    constexpr QByteArrayView kNumberSuffix("/TYPE=PLMN");
    const bool isBare = std::none_of(text.begin(), text.end(), [](char c) {
        return c == ' ' || c == '"' || c == '<' || c == '>';
    });
    const qsizetype slash = text.indexOf('/');
    const bool isSuffixPlain = slash < 0
        || (slash > 0 && text.sliced(slash) == kNumberSuffix && !text.first(slash).contains('@'));
    return !text.isEmpty() && isBare && isSuffixPlain;
}

/// What the content of a part is to be looked at for.
enum class Content : quint8 {
    Unknown, ///< The readers must decide.
    Data,
    Text, ///< It must be UTF-8.
};

Content contentOf(const MediaType &type)
{
    if (type.isMultipart()) {
        return Content::Unknown;
    }
    return type.isText() ? Content::Text : Content::Data;
}

Content contentOfNumber(quint8 number)
{
    char byte = static_cast<char>(number);
    WSP_Stream stream(&byte, 1);
    const MediaType type = readMediaType(stream);
    return type.isPlainInPart && !type.isEmpty() ? contentOf(type) : Content::Unknown;
}

/// What the readers say of the numbers of media types, in the order of the numbers.
const std::array<Content, kHighBit> &contents()
{
    static const std::array<Content, kHighBit> all = [] {
        std::array<Content, kHighBit> made{};
        for (size_t i = 0; i < made.size(); ++i) {
            made.at(i) = contentOfNumber(static_cast<quint8>(i | kHighBit));
        }
        return made;
    }();
    return all;
}

Content contentOfName(QByteArrayView name)
{
    const qsizetype slash = name.indexOf('/');
    if (slash <= 0 || slash + 1 == name.size() || name.contains(' ') || name.contains(';')) {
        return Content::Unknown;
    }
    MediaType type;
    type.media = QByteArray::fromRawData(name.data(), name.size());
    return contentOf(type);
}

Content readMedia(WSP_Stream &stream)
{
    if (peekByte(stream) < kHighBit) {
        return contentOfName(readPlainText(stream));
    }
    quint8 number = 0;
    stream.readByte(number);
    return contents().at(number & 0x7F);
}

bool readParameter(WSP_Stream &value, Charset &charset)
{
    constexpr quint8 kName = 0x85;
    quint8 token = 0;
    quint8 number = 0;
    value.readByte(token);
    if (token != kParamCharset) {
        return token == kName && !readPlainText(value).isEmpty();
    }
    value.readByte(number);
    charset.number = number & 0x7F;
    return number == kUtf8 || number == kUsAscii;
}

bool readPartType(WSP_Stream &stream, Content &content, Charset &charset)
{
    if (peekByte(stream) > kLengthQuote) {
        content = readMedia(stream);
        return content != Content::Unknown;
    }
    WSP_Stream value(stream.data, 0);
    if (!openValue(stream, value)) {
        return false;
    }
    content = readMedia(value);
    bool isPlain = content != Content::Unknown;
    while (isPlain && value.hasMore()) {
        isPlain = readParameter(value, charset);
    }
    return isPlain;
}

bool readContentId(WSP_Stream &stream)
{
    if (peekByte(stream) == '"') {
        ++stream.pos;
    }
    const QByteArrayView text = readPlainText(stream);
    return text.size() > 2 && text.front() == '<' && text.back() == '>'
        && std::none_of(text.begin() + 1, text.end() - 1,
                        [](char c) { return c == '"' || c == '<' || c == '>'; });
}

bool isPlainPart(const Extent &part)
{
    WSP_Stream stream = streamOver(part.header);
    Content content = Content::Unknown;
    Charset charset;
    if (!readPartType(stream, content, charset)) {
        return false;
    }
    quint8 token = 0;
    while (stream.readByte(token)) {
        const bool isPlain = token == kLocation ? !readPlainText(stream).isEmpty()
                                                : token == kContentId && readContentId(stream);
        if (!isPlain) {
            return false;
        }
    }
    return content == Content::Data || isReadableText(part.data, charset);
}

/// A first part that is plain also shows that the body begins where the header ends.
bool isPlainBody(WSP_Stream stream)
{
    constexpr quint8 kHighestShort = 127;
    quint8 count = 0;
    if (!stream.readByte(count) || count == 0 || count > kHighestShort) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        const auto part = readExtent(stream);
        if (!part || part->missing > 0 || !isPlainPart(*part)) {
            return false;
        }
    }
    return !stream.hasMore();
}

class PlainReader {
public:
    explicit PlainReader(QByteArrayView bytes) : m_stream(streamOver(bytes)) { }

    bool readAll()
    {
        // A push has its mark where the type stands, and no type looks like it.
        if (peekByte(m_stream) != onWire(MMS_FIELD_MSG_TYPE)) {
            return false;
        }
        quint8 id = 0;
        while (m_stream.readByte(id)) {
            if (id == onWire(MMS_FIELD_CONTENT_TYPE)) {
                return readContentType() && isPlainBody(m_stream) && isUsable();
            }
            if (!readValue(id)) {
                return false;
            }
        }
        return isUsable();
    }
    [[nodiscard]] Facts facts() const
    {
        Facts facts;
        facts.type = m_type;
        facts.transactionId = QString::fromLatin1(m_transactionId);
        facts.messageId = QString::fromLatin1(m_messageId);
        facts.location = QString::fromLatin1(m_location);
        facts.responseStatus = m_responseStatus;
        facts.messageStatus = m_messageStatus;
        return facts;
    }

private:
    bool readValue(quint8 id)
    {
        quint8 code = 0;
        switch (id) {
        case onWire(MMS_FIELD_BCC):
        case onWire(MMS_FIELD_CC):
        case onWire(MMS_FIELD_TO):
            return isPlainAddress(readPlainText(m_stream));
        case onWire(MMS_FIELD_FROM):
            return readFrom();
        case onWire(MMS_FIELD_CONTENT_LOCATION):
            return readTextTo(m_location) && !m_location.contains(' ');
        case onWire(MMS_FIELD_MSG_ID):
            return readTextTo(m_messageId);
        case onWire(MMS_FIELD_TRANSACTION_ID):
            return readTextTo(m_transactionId);
        case onWire(MMS_FIELD_SUBJECT):
        case onWire(MMS_FIELD_RESPONSE_TEXT):
            return readEncoded();
        case onWire(MMS_FIELD_DATE):
        case onWire(MMS_FIELD_MSG_SIZE):
        case onWire(MMS_FIELD_VERSION):
            return readNumber(m_stream).has_value();
        case onWire(MMS_FIELD_DELIVERY_TIME):
        case onWire(MMS_FIELD_EXPIRY):
            return readTime();
        case onWire(MMS_FIELD_DELIVERY_REPORT):
        case onWire(MMS_FIELD_READ_REPORT):
        case onWire(MMS_FIELD_REPORT_ALLOWED):
        case onWire(MMS_FIELD_SENDER_VISIBILITY):
            return readCode(code) && (code == kFirstToken || code == kSecondToken);
        case onWire(MMS_FIELD_MSG_CLASS):
        case onWire(MMS_FIELD_PRIORITY):
            return readCode(code);
        case onWire(MMS_FIELD_MSG_TYPE):
            return readCode(m_type);
        case onWire(MMS_FIELD_RESPONSE_STATUS):
            return readCode(m_responseStatus);
        case onWire(MMS_FIELD_MSG_STATUS):
            return readCode(m_messageStatus);
        default:
            return false;
        }
    }
    bool readCode(quint8 &code) { return m_stream.readByte(code) && code >= kHighBit; }
    bool readTextTo(QByteArrayView &text)
    {
        text = readPlainText(m_stream);
        return !text.isEmpty();
    }
    bool readFrom()
    {
        WSP_Stream value(m_stream.data, 0);
        quint8 token = 0;
        if (!openValue(m_stream, value) || !value.readByte(token)) {
            return false;
        }
        const bool isRead =
            token == kFirstToken ? isPlainAddress(readPlainText(value)) : token == kSecondToken;
        return isRead && !value.hasMore();
    }
    bool readTime()
    {
        WSP_Stream value(m_stream.data, 0);
        quint8 token = 0;
        return openValue(m_stream, value) && value.readByte(token)
            && (token == kFirstToken || token == kSecondToken) && readNumber(value)
            && !value.hasMore();
    }
    bool readEncoded()
    {
        if (peekByte(m_stream) > kLengthQuote) {
            return !readPlainText(m_stream).isEmpty();
        }
        constexpr char kQuote = '\x7F';
        constexpr QByteArrayView kMark("\xEF\xBB\xBF");
        constexpr qsizetype kShortest = 3;
        WSP_Stream value(m_stream.data, 0);
        if (!openValue(m_stream, value)) {
            return false;
        }
        const QByteArrayView bytes = bytesBetween(value, value.pos, value.size);
        if (bytes.size() < kShortest || quint8(bytes.front()) != kUtf8 || bytes.back() != 0) {
            return false;
        }
        const QByteArrayView text = bytes.sliced(1).chopped(1);
        return text.front() != kQuote && !text.startsWith(kMark) && !text.contains('\0')
            && !hasEncodedWord(text) && isUtf8(text);
    }
    bool readContentType()
    {
        constexpr quint8 kMixed = 0xA3;
        constexpr quint8 kRelated = 0xB3;
        constexpr quint8 kType = 0x89;
        constexpr quint8 kStart = 0x8A;
        WSP_Stream value(m_stream.data, 0);
        quint8 token = 0;
        if (!openType(m_stream, value) || !value.readByte(token)
            || (token != kMixed && token != kRelated)) {
            return false;
        }
        while (value.readByte(token)) {
            const QByteArrayView text = readPlainText(value);
            if ((token != kType && token != kStart) || text.isEmpty() || text.contains('"')) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] bool isUsable() const
    {
        return m_type == SendConfirmation || m_type == RetrieveConfirmation || m_type == Delivery
            || (m_type == Notification && !m_transactionId.isEmpty() && !m_location.isEmpty());
    }

    WSP_Stream m_stream;
    quint8 m_type = 0;
    quint8 m_responseStatus = 0;
    quint8 m_messageStatus = 0;
    QByteArrayView m_transactionId;
    QByteArrayView m_messageId;
    QByteArrayView m_location;
};

} // namespace

bool takeInPlain(QByteArrayView bytes, Result &result)
{
    PlainReader reader(bytes);
    if (!reader.readAll()) {
        return false;
    }
    result.verdict = Verdict::Readable;
    result.pdu.keep(bytes);
    result.facts = reader.facts();
    return true;
}

} // namespace wmsg::intake

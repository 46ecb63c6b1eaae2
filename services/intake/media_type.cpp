// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/media_type.h"

#include "services/intake/wire_bytes.h"
#include "services/intake/wire_values.h"

#include <WMMSContentType>

#include <algorithm>
#include <array>

// content-type := number (0x80..0xFF) | text
//               | value-length (number | long-integer | text) *parameter
//   parameter  := token (0x80..0xFF) value | text-name value
//   text       := media *( ";" name "=" value )   as mail has it; WSP has no parameters there

namespace wmsg::intake {

namespace {

constexpr int kRelated = 0x33;
constexpr int kMixed = 0x23;
constexpr int kHighestWritten = 62; // the library writes the higher ones as text

// Where the register of numbers and the library's table differ. Other numbers up to 0x4B mean the
// same in both; the library gives the higher ones to types of its own.
struct Registered {
    int number;
    const char *media;
};
constexpr std::array<Registered, 22> kRegistered = {{
    {0x0E, "multipart/byteranges"},
    {0x42, "application/vnd.syncml.dm+wbxml"},
    {0x43, "application/vnd.syncml.dm+xml"},
    {0x46, "application/vnd.wv.csp.cir"},
    {0x49, "application/vnd.oma.drm.content"},
    {0x4A, "application/vnd.oma.drm.rights+xml"},
    {0x4B, "application/vnd.oma.drm.rights+wbxml"},
    {0x4C, "application/vnd.wv.csp+xml"},
    {0x4D, "application/vnd.wv.csp+wbxml"},
    {0x4E, "application/vnd.syncml.ds.notification"},
    {0x4F, "audio/*"},
    {0x50, "video/*"},
    {0x51, "application/vnd.oma.dd2+xml"},
    {0x52, "application/mikey"},
    {0x53, "application/vnd.oma.dcd"},
    {0x54, "application/vnd.oma.dcdc"},
    {0x55, "text/x-vMessage"},
    {0x56, "application/vnd.omads-email+wbxml"},
    {0x57, "text/x-vBookmark"},
    {0x58, "application/vnd.syncml.dm.notification"},
    {0x59, "application/octet-stream"},
    {0x5A, "application/json"},
}};

QByteArray mediaOf(quint32 number)
{
    for (const Registered &row : kRegistered) {
        if (quint32(row.number) == number) {
            return row.media;
        }
    }
    const QString known =
        number <= 0xFF ? WMMSContentType::getMimeType(static_cast<quint8>(number)) : QString();
    return known.isEmpty() ? QByteArrayLiteral("application/octet-stream") : known.toLatin1();
}

int numberOf(const QByteArray &media)
{
    return WMMSContentType::getMimeID(QString::fromLatin1(media));
}

bool isSame(const QByteArray &a, const char *b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// These are asked often, and copy nothing.

bool beginsWith(const QByteArray &text, QByteArrayView begin)
{
    return text.size() >= begin.size()
        && qstrnicmp(text.constData(), begin.data(), size_t(begin.size())) == 0;
}

bool endsWith(const QByteArray &text, QByteArrayView end)
{
    return text.size() >= end.size()
        && qstrnicmp(text.constData() + text.size() - end.size(), end.data(), size_t(end.size()))
        == 0;
}

/// Reads the parameters of a content type into it.
class ParameterReader {
public:
    ParameterReader(WSP_Stream &stream, MediaType &type) : m_stream(stream), m_type(type) { }

    /// A part's headers may follow where the length of the content type is too long; no parameter
    /// has the number of those that matter.
    void readAll(bool isLengthTrue)
    {
        while (m_stream.hasMore()) {
            const int first = peekByte(m_stream);
            if (!isLengthTrue && (first == kLocation || first == kContentId)) {
                return;
            }
            if (first == 0) {
                ++m_stream.pos;
                notPlain();
            } else if (!(first >= kHighBit ? readToken() : readNamed())) {
                m_stream.pos = m_stream.size;
                notPlain();
            }
        }
    }

private:
    enum Token {
        Q = 0,
        CharsetToken = 1,
        TypeNumber = 3,
        Name = 5,
        FileName = 6,
        Type = 9,
        Start = 10,
        NameAgain = 0x17,
        FileNameAgain = 0x18,
        StartAgain = 0x19,
    };

    bool readToken()
    {
        quint8 byte = 0;
        m_stream.readByte(byte);
        switch (byte & 0x7F) {
        case Q: {
            notPlain();
            quint32 quality = 0;
            return m_stream.readUintvar(quality);
        }
        case CharsetToken:
            return readCharsetValue();
        case Name:
            m_type.isPlainInHeader = false;
            return readTextTo(m_type.name);
        case NameAgain:
            notPlain();
            return readTextTo(m_type.name);
        case FileName:
        case FileNameAgain:
            notPlain();
            return readTextTo(m_type.fileName);
        case TypeNumber:
            notPlain();
            return readTypeValue();
        case Type:
            m_type.isPlainInPart = false; // taken for the start there
            return readTypeValue();
        case Start:
            m_type.isPlainInPart = false; // taken for the type there
            return readStart();
        case StartAgain:
            notPlain();
            return readStart();
        default:
            notPlain();
            return skipValue(m_stream);
        }
    }
    bool readCharsetValue()
    {
        const int first = peekByte(m_stream);
        if (first > kLengthQuote && first < kHighBit) {
            // A name, or a number without its high bit; a name has more than one character.
            const bool isName = m_stream.remaining() > 1
                && static_cast<quint8>(m_stream.data[m_stream.pos + 1]) > kLengthQuote
                && static_cast<quint8>(m_stream.data[m_stream.pos + 1]) < kHighBit;
            notPlain();
            if (isName) {
                QByteArray name;
                const bool isRead = readTextTo(name);
                m_type.charset = Charset::named(name);
                return isRead;
            }
        }
        const bool isPlainNumber = first >= kHighBit || first == 1 || first == 2;
        const auto charset = readCharset(m_stream);
        if (!isPlainNumber) {
            notPlain();
        }
        m_type.charset = charset.value_or(Charset());
        return charset.has_value();
    }
    /// The type of a related multipart is a text, or a number.
    bool readTypeValue()
    {
        if (peekByte(m_stream) < kHighBit) {
            return readTextTo(m_type.type) && dropQuotes(m_type.type, 0);
        }
        notPlain();
        const auto number = readNumber(m_stream);
        m_type.type = number ? mediaOf(*number) : QByteArray();
        return number.has_value();
    }
    /// A start may be a quoted string of WSP, with one quote in front; the codec knows that.
    bool readStart() { return readTextTo(m_type.start) && dropQuotes(m_type.start, 1); }
    bool dropQuotes(QByteArray &text, qsizetype most)
    {
        const qsizetype quotes = text.count('"');
        if (quotes > most || (quotes == 1 && !text.startsWith('"'))) {
            notPlain();
        }
        text.replace('"', "");
        return true;
    }
    /// A name, and a text or a number.
    bool readNamed()
    {
        QByteArray name;
        if (peekByte(m_stream) <= kLengthQuote || !readTextTo(name)) {
            return false;
        }
        const int first = peekByte(m_stream);
        if (first >= kHighBit || (first > 0 && first <= kLengthQuote)) {
            notPlain();
            const auto number = readNumber(m_stream);
            if (number && isSame(name, "charset")) {
                m_type.charset = {*number, {}};
            }
            return number.has_value();
        }
        QByteArray value;
        if (!readTextTo(value)) {
            return false;
        }
        take(name, value);
        return true;
    }

public:
    /// Reads parameters up to a byte that begins none, where the length says something else.
    void readUpToBody()
    {
        notPlain();
        while (m_stream.hasMore()) {
            const int first = peekByte(m_stream);
            if (first == 0) {
                ++m_stream.pos;
            } else if (first <= kLengthQuote || !(first >= kHighBit ? readToken() : readNamed())) {
                return;
            }
        }
    }
    /// Takes a parameter by its name.
    void take(const QByteArray &name, const QByteArray &received)
    {
        const QByteArray value = withoutQuotes(received);
        if (value != received) {
            notPlain();
        }
        if (name == "boundary") {
            m_type.boundary = value;
            return; // a part has it, the header of a message too
        }
        m_type.isPlainInPart = false;
        if (name == "name") {
            m_type.name = value;
        } else if (name == "Application-ID") {
            m_type.application = value;
        } else if (name == "Reply-To-Application-ID") {
            m_type.replyApplication = value;
        } else if (name == "Auxillary-Application-Information") {
            m_type.applicationInfo = value;
        } else {
            notPlain();
            takeOther(name, value);
        }
    }

private:
    void takeOther(const QByteArray &name, const QByteArray &value)
    {
        if (isSame(name, "charset")) {
            m_type.charset = Charset::named(value);
        } else if (isSame(name, "name")) {
            m_type.name = value;
        } else if (isSame(name, "filename")) {
            m_type.fileName = value;
        } else if (isSame(name, "type")) {
            m_type.type = value;
        } else if (isSame(name, "start")) {
            m_type.start = value;
        } else if (isSame(name, "boundary")) {
            m_type.boundary = value;
        }
    }
    bool readTextTo(QByteArray &out)
    {
        const bool hasQuote = peekByte(m_stream) == kTextQuote;
        const auto text = readText(m_stream);
        if (!text) {
            return false;
        }
        if (!text->isPlain) {
            notPlain();
        }
        // It counts the characters of the text there, not bytes, and reads a text to its NUL.
        const bool hasEnd = m_stream.data[m_stream.pos - 1] == 0;
        if (!isAscii(text->utf8) || hasQuote || !hasEnd) {
            m_type.isPlainInHeader = false;
        }
        out = text->utf8;
        return true;
    }
    void notPlain() { m_type.isPlainInHeader = m_type.isPlainInPart = false; }

    WSP_Stream &m_stream;
    MediaType &m_type;
};

/// A text may have parameters behind it, as mail writes them.
void takeMailType(const QByteArray &text, MediaType &type)
{
    const qsizetype end = text.indexOf(';');
    type.media = (end < 0 ? text : text.first(end)).trimmed();
    if (end < 0) {
        return;
    }
    WSP_Stream nothing(nullptr, 0);
    ParameterReader reader(nothing, type);
    const QList<QByteArray> pairs = text.sliced(end + 1).split(';');
    for (const QByteArray &pair : pairs) {
        const qsizetype equals = pair.indexOf('=');
        if (equals > 0) {
            reader.take(pair.first(equals).trimmed(), pair.sliced(equals + 1).trimmed());
        }
    }
    type.isPlainInHeader = type.isPlainInPart = false;
}

void readTextMedia(WSP_Stream &stream, MediaType &type)
{
    const auto text = readText(stream);
    type.isPlainInHeader = false; // the codec reads numbers there
    type.isPlainInPart = type.isPlainInPart && text->isPlain;
    takeMailType(text->utf8, type);
    type.isPlainInPart = type.isPlainInPart && type.media == text->utf8;
}

/// Whether a text can be a media type at all.
bool isMediaName(const QByteArray &text)
{
    const qsizetype slash = text.indexOf('/');
    return slash > 0 && slash + 1 < text.size()
        && std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7F'; });
}

void takeNumber(quint32 number, MediaType &type)
{
    type.number = static_cast<int>(qMin<quint32>(number, 0xFFFF));
    type.media = mediaOf(number);
    if (!type.isSameNumber()) {
        type.isPlainInHeader = type.isPlainInPart = false;
    }
}

void readMedia(WSP_Stream &stream, MediaType &type)
{
    const int first = peekByte(stream);
    if (first > kLengthQuote && first < kHighBit) {
        readTextMedia(stream, type);
    } else if (const auto number = readNumber(stream)) {
        if (first < kHighBit) {
            type.isPlainInHeader = type.isPlainInPart = false;
        }
        takeNumber(*number, type);
    }
}

void readGeneralForm(WSP_Stream &stream, MediaType &type)
{
    quint32 length = 0;
    if (!stream.readValueLength(length)) {
        stream.pos = stream.size;
        type.isPlainInHeader = type.isPlainInPart = false;
        return;
    }
    const auto remaining = static_cast<quint32>(stream.remaining());
    if (length > remaining || length == 0) {
        type.isPlainInHeader = type.isPlainInPart = false;
    }
    WSP_Stream value(stream.data, stream.pos + static_cast<qint32>(qMin(length, remaining)));
    value.pos = stream.pos;
    readMedia(value, type);
    ParameterReader(value, type).readAll(length <= remaining);
    stream.pos = value.pos;
}

QByteArray namedParameter(const char *name, const QByteArray &value)
{
    return value.isEmpty() ? QByteArray() : writtenText(name) + writtenText(value);
}

/// The codec counts the characters of a text in the header of a message, and would read on behind a
/// text whose characters are not bytes; one that begins with a control character may be a number.
QByteArray headerText(const QByteArray &value)
{
    const bool isPrintable =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
    return isPrintable ? value : QByteArray();
}

QByteArray headerParameter(const char *name, const QByteArray &value)
{
    return namedParameter(name, withoutQuotes(headerText(value)));
}

QByteArray shortNumber(int number)
{
    return QByteArray(1, static_cast<char>(number | kHighBit));
}

} // namespace

bool MediaType::isText() const
{
    return beginsWith(media, "text/") || isXml();
}

bool MediaType::isXml() const
{
    return isSame(media, "application/smil") || endsWith(media, "/xml") || endsWith(media, "+xml");
}

bool MediaType::isMultipart() const
{
    return beginsWith(media, "multipart/") || beginsWith(media, "application/vnd.wap.multipart.");
}

bool MediaType::isRelated() const
{
    return isMultipart() && endsWith(media, "related");
}

bool MediaType::isSameNumber() const
{
    return number >= 0 && number <= 0xFF
        && WMMSContentType::getMimeType(static_cast<quint8>(number)).toLatin1() == media;
}

MediaType readMediaType(WSP_Stream &stream)
{
    MediaType type;
    const int first = peekByte(stream);
    if (first < 0) {
        return type;
    }
    type.isPlainInHeader = type.isPlainInPart = true;
    if (first > kLengthQuote) {
        if (first == kHighBit) {
            type.isPlainInHeader = false; // the codec takes it for a length there
        }
        readMedia(stream, type);
    } else {
        readGeneralForm(stream, type);
    }
    if (!isMediaName(type.media)) {
        type.media.clear();
        type.isPlainInHeader = type.isPlainInPart = false;
    }
    return type;
}

MediaType readMediaTypeUpToBody(WSP_Stream &stream)
{
    MediaType type;
    quint32 length = 0;
    if (peekByte(stream) <= kLengthQuote && stream.readValueLength(length)) {
        readMedia(stream, type);
        ParameterReader(stream, type).readUpToBody();
    }
    return type;
}

QByteArray writtenHeaderType(const MediaType &type)
{
    QByteArray parameters;
    int number = type.number;
    if (type.isMultipart()) {
        number = type.isRelated() ? kRelated : kMixed;
        if (!headerText(type.start).isEmpty()) {
            parameters += '\x8A' + writtenText(type.start);
        }
        if (!headerText(type.type).isEmpty()) {
            parameters += '\x89' + writtenText(type.type);
        }
    }
    if (!type.isMultipart()) {
        parameters += type.isText() ? QByteArrayLiteral("\x81\xEA") : QByteArray();
        parameters += headerParameter("boundary", type.boundary)
            + headerParameter("name", type.name.isEmpty() ? type.fileName : type.name);
    }
    parameters += headerParameter("Application-ID", type.application)
        + headerParameter("Reply-To-Application-ID", type.replyApplication)
        + headerParameter("Auxillary-Application-Information", type.applicationInfo);
    const bool fitsBare = parameters.isEmpty() && number > 0;
    return fitsBare ? shortNumber(number) : withValueLength(shortNumber(number) + parameters);
}

QByteArray writtenPartType(const MediaType &type, const QByteArray &name)
{
    const int number = numberOf(type.media);
    const bool isWrittenAsNumber = number > 0 && number <= kHighestWritten;
    const QByteArray media = isWrittenAsNumber ? shortNumber(number) : writtenText(type.media);
    QByteArray parameters;
    if (type.isText()) {
        parameters += QByteArrayLiteral("\x81\xEA");
    }
    if (!name.isEmpty()) {
        parameters += '\x85' + writtenText(name);
    }
    parameters += namedParameter("boundary", type.boundary);
    return isWrittenAsNumber && parameters.isEmpty() ? media : withValueLength(media + parameters);
}

} // namespace wmsg::intake

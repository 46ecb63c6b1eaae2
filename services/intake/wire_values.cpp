// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/wire_values.h"

#include "services/intake/wire_bytes.h"

#include "services/intake/transfer_encoding.h"

#include <algorithm>

namespace wmsg::intake {

namespace {

constexpr quint32 kLongestNumber = 30;

/// Puts a stream back where it was, unless the reading is kept.
class Attempt {
public:
    explicit Attempt(WSP_Stream &stream) : m_stream(stream), m_start(stream.pos) { }
    ~Attempt()
    {
        if (!m_isKept) {
            m_stream.pos = m_start;
        }
    }
    Q_DISABLE_COPY_MOVE(Attempt)

    bool keep() { return m_isKept = true; }

private:
    WSP_Stream &m_stream;
    qint32 m_start;
    bool m_isKept = false;
};

bool moveOver(WSP_Stream &stream, quint32 count)
{
    if (count > static_cast<quint32>(stream.remaining())) {
        return false;
    }
    stream.pos += static_cast<qint32>(count);
    return true;
}

/// Takes the bytes up to a NUL, which is passed, or up to the end.
QByteArrayView takeToNul(WSP_Stream &stream)
{
    const qint32 begin = stream.pos;
    const QByteArrayView rest = bytesBetween(stream, begin, stream.size);
    const qsizetype end = rest.indexOf('\0');
    stream.pos = end < 0 ? stream.size : begin + static_cast<qint32>(end) + 1;
    return end < 0 ? rest : rest.first(end);
}

QByteArrayView withoutQuote(QByteArrayView bytes)
{
    return bytes.startsWith(char(kTextQuote)) ? bytes.sliced(1) : bytes;
}

/// What stands in front of the first character that is a NUL.
QByteArrayView withoutEnd(QByteArrayView bytes, const Charset &charset)
{
    const int width = charset.width();
    if (width == 1) {
        const qsizetype end = bytes.indexOf('\0');
        return end < 0 ? bytes : bytes.first(end);
    }
    for (qsizetype i = 0; i + width <= bytes.size(); i += width) {
        const QByteArrayView character = bytes.sliced(i, width);
        if (std::all_of(character.begin(), character.end(), [](char c) { return c == 0; })) {
            return bytes.first(i);
        }
    }
    return bytes;
}

/// Whether nothing but zeros follows the first `count` bytes.
bool endsAt(QByteArrayView bytes, qsizetype count)
{
    return std::all_of(bytes.begin() + count, bytes.end(), [](char c) { return c == 0; });
}

/// A text begins with this byte rather than with its length, in any sender's hand.
bool beginsText(int byte)
{
    return byte == 0 || byte > kLengthQuote;
}

/// The codec takes a byte above 127 in front of a text for a length.
bool codecSeesLength(int byte)
{
    return byte > 127;
}

/// Whether what `length` bytes leave of a character is there behind them.
bool isCutInCharacter(QByteArrayView bytes, qsizetype length)
{
    const QByteArrayView counted = bytes.first(length);
    return !isUtf8(counted) && isUtf8(bytes);
}

/// Where a counted text of 8-bit characters ends. Its length is wrong when a NUL and a field stand
/// before its end, and when a text without a NUL goes on behind it.
qsizetype endOfText(QByteArrayView bytes, qsizetype length, const Charset &charset)
{
    constexpr char kFirstField = '\x80';
    constexpr char kFirstLetter = ' ';
    const qsizetype nul = bytes.indexOf('\0');
    if (nul < 0) {
        return qMin(length, bytes.size());
    }
    if (nul < length) {
        const bool takesFieldIn =
            nul + 1 < length && nul + 1 < bytes.size() && (bytes[nul + 1] & kFirstField) != 0;
        return takesFieldIn || length > bytes.size() ? nul + 1 : length;
    }
    const bool goesOn = bytes[length] >= kFirstLetter && bytes[length] < char(kTextQuote);
    const bool mayBeCut = !charset.isDeclared() || charset.number == Charset::kUtf8;
    return goesOn || (mayBeCut && isCutInCharacter(bytes.first(nul), length)) ? nul + 1 : length;
}

std::optional<Text> readCountedText(WSP_Stream &stream)
{
    Attempt attempt(stream);
    quint32 length = 0;
    if (!stream.readValueLength(length)) {
        return std::nullopt;
    }
    const qint32 begin = stream.pos;
    const bool isThere = length <= static_cast<quint32>(stream.remaining());
    WSP_Stream value(stream.data, isThere ? begin + static_cast<qint32>(length) : stream.size);
    value.pos = begin;
    const int first = peekByte(value);
    const auto charset = readCharset(value);
    const bool isCountable = charset && charset->width() == 1;
    if (!isThere && !isCountable) {
        return std::nullopt;
    }
    attempt.keep();
    if (!charset) {
        stream.pos = value.size;
        return Text{{}, false};
    }
    const QByteArrayView rest = bytesBetween(stream, value.pos, stream.size);
    const qsizetype counted = qsizetype(length) - (value.pos - begin);
    const qsizetype end = isCountable ? endOfText(rest, counted, *charset) : counted;
    stream.pos = value.pos + static_cast<qint32>(end);
    const QByteArrayView text = withoutQuote(rest.first(end));
    const QByteArrayView said = withoutEnd(text, *charset);
    Text result = textOf(said, *charset);
    const bool isNumberAsWritten = first >= 0x80 || first == 1 || first == 2;
    result.isPlain =
        result.isPlain && isNumberAsWritten && end == counted && endsAt(text, said.size());
    return result;
}

/// What `write` writes into a stream of so many bytes.
template <typename Write> QByteArray written(qsizetype room, Write write)
{
    QByteArray out(room, Qt::Uninitialized);
    WSP_Stream stream(out.data(), static_cast<qint32>(out.size()));
    write(stream);
    out.truncate(stream.pos);
    return out;
}

} // namespace

WSP_Stream streamOver(QByteArrayView bytes)
{
    return WSP_Stream(const_cast<char *>(bytes.data()), static_cast<qint32>(bytes.size()));
}

QByteArrayView bytesBetween(const WSP_Stream &stream, qint32 begin, qint32 end)
{
    return {stream.data + begin, end - begin};
}

int peekByte(const WSP_Stream &stream)
{
    return stream.hasMore() ? static_cast<quint8>(stream.data[stream.pos]) : -1;
}

bool skipValue(WSP_Stream &stream)
{
    Attempt attempt(stream);
    const int first = peekByte(stream);
    if (first < 0) {
        return false;
    }
    if (first >= 0x80) {
        ++stream.pos;
        return attempt.keep();
    }
    if (first > kLengthQuote) {
        takeToNul(stream);
        return attempt.keep();
    }
    quint32 length = 0;
    return stream.readValueLength(length) && moveOver(stream, length) && attempt.keep();
}

Text textOf(QByteArrayView bytes, const Charset &charset)
{
    const bool isSame = isAscii(bytes) && (charset.keepsAscii() || !charset.isDeclared());
    const QByteArray utf8 = isSame ? bytes.toByteArray() : toUtf8(bytes, charset);
    Text text{withEncodedWords(utf8), false};
    if (const qsizetype end = text.utf8.indexOf('\0'); end >= 0) {
        text.utf8.truncate(end);
    }
    text.isPlain = QByteArrayView(text.utf8) == bytes;
    return text;
}

std::optional<Text> readText(WSP_Stream &stream)
{
    if (!stream.hasMore()) {
        return std::nullopt;
    }
    return textOf(withoutQuote(takeToNul(stream)), {});
}

std::optional<Text> readEncodedText(WSP_Stream &stream)
{
    const int first = peekByte(stream);
    if (first < 0) {
        return std::nullopt;
    }
    if (!beginsText(first)) {
        return readCountedText(stream);
    }
    auto text = readText(stream);
    text->isPlain = text->isPlain && !codecSeesLength(first);
    return text;
}

std::optional<Charset> readCharset(WSP_Stream &stream)
{
    constexpr int kLongestNumber = 2; // of bytes; more begin with zeros, as no text does
    const int first = peekByte(stream);
    if (first < 0) {
        return std::nullopt;
    }
    const bool hasZeros = (first == 3 || first == 4) && stream.remaining() > first
        && stream.data[stream.pos + 1] == 0;
    if ((first >= 1 && first <= kLongestNumber) || hasZeros) {
        const auto number = readNumber(stream);
        return number ? std::optional(Charset{*number, {}}) : std::nullopt;
    }
    ++stream.pos;
    return Charset{static_cast<quint32>(first & 0x7F), {}};
}

std::optional<quint32> readNumber(WSP_Stream &stream)
{
    Attempt attempt(stream);
    const int first = peekByte(stream);
    quint32 number = 0;
    const bool isPossible = first >= 0x80 || (first >= 0 && first <= int(kLongestNumber));
    if (!isPossible || !stream.readInteger(number)) {
        return std::nullopt;
    }
    attempt.keep();
    return number;
}

QByteArray writtenText(const QByteArray &utf8)
{
    constexpr qsizetype kQuoteAndEnd = 2;
    return written(utf8.size() + kQuoteAndEnd, [&utf8](WSP_Stream &stream) {
        stream.writeTextString(QString::fromUtf8(utf8));
    });
}

QByteArray writtenEncodedText(const QByteArray &utf8)
{
    constexpr qsizetype kLengthCharsetQuoteAndEnd = 10;
    return written(utf8.size() + kLengthCharsetQuoteAndEnd, [&utf8](WSP_Stream &stream) {
        stream.writeEncodedString(QString::fromUtf8(utf8));
    });
}

QByteArray writtenNumber(quint32 number)
{
    constexpr qsizetype kMost = 5;
    return written(kMost, [number](WSP_Stream &stream) {
        if (number <= 127) {
            stream.writeInteger(static_cast<qint32>(number));
        } else {
            stream.writeLongInteger(number);
        }
    });
}

QByteArray withValueLength(const QByteArray &value)
{
    constexpr qsizetype kMost = 6;
    return written(kMost,
                   [&value](WSP_Stream &stream) {
                       stream.writeValueLength(static_cast<qint32>(value.size()));
                   })
        + value;
}

QByteArray withoutQuotes(QByteArray text)
{
    while (text.startsWith('"')) {
        text = text.sliced(1); // a quoted string of WSP has no second quote; others have
        if (text.endsWith('"')) {
            text.chop(1);
        }
    }
    return text;
}

QByteArray withoutWrapping(const QByteArray &wrapped)
{
    QByteArray text = withoutQuotes(wrapped.trimmed());
    if (text.size() >= 2 && text.startsWith('<') && text.endsWith('>')) {
        text = text.sliced(1, text.size() - 2);
    }
    return text;
}

} // namespace wmsg::intake

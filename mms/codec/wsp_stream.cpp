// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wsp_stream.h"

#include <algorithm>
#include <cstring>
#include <numeric>

// integer       := short-integer | long-integer
//   short-integer: one byte, 0x80 | value (0..127)   long-integer: length (1..127), value, most
//   significant byte first
// uintvar       := *(0x80 | 7 bits) 7 bits, most significant group first
// value-length  := length (0..30) | 31 uintvar
// text-string   := [127] *byte 0            127 (Quote) stands before a first byte of 128 or more
// encoded-string := text-string | value-length integer(charset) [127] *byte 0

namespace {

constexpr quint8 kQuote = 127;
constexpr quint8 kLengthQuote = 31;
constexpr qint32 kLongestShortLength = 30;
constexpr qint32 kCharsetUtf8 = 106;
constexpr quint8 kHighBit = 0x80;

} // namespace

// A text in UTF-8. What is ASCII alone is not converted before it is written.
class WSP_Stream::Utf8Text {
public:
    explicit Utf8Text(QStringView text)
        : m_ascii(isAscii(text) ? text : QStringView()),
          m_bytes(m_ascii.size() == text.size() ? QByteArray() : text.toUtf8())
    {
    }
    qsizetype size() const { return m_ascii.size() + m_bytes.size(); }
    // Asked of the bytes: half of a surrogate pair becomes a "?".
    bool isQuoted() const { return !m_bytes.isEmpty() && (m_bytes.front() & kHighBit) != 0; }
    void copyTo(char *out) const
    {
        std::transform(m_ascii.utf16(), m_ascii.utf16() + m_ascii.size(), out,
                       [](char16_t c) { return static_cast<char>(c); });
        std::copy(m_bytes.cbegin(), m_bytes.cend(), out);
    }

private:
    static bool isAscii(QStringView text)
    {
        // Without an early end the compiler takes many units at a time.
        return std::accumulate(text.utf16(), text.utf16() + text.size(), 0U,
                               [](unsigned seen, char16_t c) { return seen | c; })
            < 0x80;
    }

    QStringView m_ascii; // empty when the text is in m_bytes
    QByteArray m_bytes;
};

quint32 WSP_Stream::back(qint32 count)
{
    if (count > 0) {
        pos = count > pos ? 0 : pos - count;
    }
    return 1;
}

// Kept: a skip to the end or beyond stops one short of the end.
quint32 WSP_Stream::skip(qint32 count)
{
    if (count < 0) {
        return 1;
    }
    if (count >= size - pos) {
        pos = size > 0 ? size - 1 : 0;
    } else {
        pos += count;
    }
    return 1;
}

quint32 WSP_Stream::readBytes(char *out, qint32 count)
{
    if (count < 0 || count > size - pos) {
        return 0;
    }
    if (count > 0) {
        memcpy(out, data + pos, static_cast<size_t>(count));
        pos += count;
    }
    return 1;
}

quint32 WSP_Stream::writeBytes(const char *bytes, qint32 count)
{
    if (count < 0 || count > size - pos) {
        m_overflowed = true;
        return 0;
    }
    if (count > 0) {
        memcpy(data + pos, bytes, static_cast<size_t>(count));
        pos += count;
    }
    return 1;
}

// Kept: a long integer may be longer than four bytes. Its low 32 bits count.
quint32 WSP_Stream::readInteger(quint32 &out)
{
    quint8 first;
    if (!readByte(first)) {
        return 0;
    }
    if (first & kHighBit) {
        out = first & 0x7F;
        return 1;
    }
    quint32 value = 0;
    quint8 byte;
    for (int left = first; left > 0; --left) {
        if (!readByte(byte)) {
            return 0;
        }
        value = value << 8 | byte;
    }
    out = value;
    return 1;
}

quint32 WSP_Stream::writeLongInteger(quint32 value)
{
    int length = 1;
    while (length < 4 && value >> (8 * length) != 0) {
        ++length;
    }
    quint32 written = writeByte(static_cast<quint8>(length));
    for (int shift = 8 * (length - 1); written && shift >= 0; shift -= 8) {
        written = writeByte(static_cast<quint8>(value >> shift));
    }
    return written;
}

quint32 WSP_Stream::readUintvar(quint32 &out)
{
    quint32 value = 0;
    quint8 byte;
    do {
        if (!readByte(byte)) {
            return 0;
        }
        value = value << 7 | (byte & 0x7F);
    } while (byte & kHighBit);
    out = value;
    return 1;
}

quint32 WSP_Stream::writeUintvar(qint32 value)
{
    const qint64 wide = value; // the top group of a negative value keeps its sign bits
    int shift = 28;
    while (shift > 0 && (wide >> shift & 0x7F) == 0) {
        shift -= 7;
    }
    quint32 written = 1;
    for (; written && shift > 0; shift -= 7) {
        written = writeByte(static_cast<quint8>((wide >> shift & 0x7F) | kHighBit));
    }
    return written ? writeByte(static_cast<quint8>(wide & 0x7F)) : 0;
}

// Kept: 32 and more is a length, not an error. Do not tighten.
quint32 WSP_Stream::readValueLength(quint32 &out)
{
    quint8 first;
    if (!readByte(first)) {
        return 0;
    }
    if (first == kLengthQuote) {
        return readUintvar(out);
    }
    out = first;
    return 1;
}

quint32 WSP_Stream::writeValueLength(qint32 length)
{
    if (length > kLongestShortLength) {
        return writeByte(kLengthQuote) && writeUintvar(length) ? 1 : 0;
    }
    return writeByte(static_cast<quint8>(length));
}

quint32 WSP_Stream::readTextString(QString &out)
{
    if (!hasMore()) {
        return 0;
    }
    const char *first = data + pos;
    const auto *zero = static_cast<const char *>(memchr(first, 0, static_cast<size_t>(size - pos)));
    const char *end = zero ? zero : data + size;
    pos = static_cast<qint32>(end - data) + (zero ? 1 : 0);
    if (first == end) {
        out = QString();
        return 1;
    }
    if (static_cast<quint8>(*first) == kQuote) {
        ++first;
    }
    out = first == end ? QLatin1String("") : QString::fromUtf8(first, end - first);
    return 1;
}

// Kept: a first byte of 128 and more is a length too.
quint32 WSP_Stream::readEncodedString(QString &out)
{
    quint8 first;
    if (!readByte(first)) {
        return 0;
    }
    if (first == 0 || (first >= 32 && first <= 127)) {
        back(1);
        return readTextString(out);
    }
    quint32 length = first;
    if (first == kLengthQuote && !readUintvar(length)) {
        return 0;
    }
    return readCountedText(length, out);
}

// Kept: the charset is read and not used. The text is UTF-8 whatever it says.
quint32 WSP_Stream::readCountedText(quint32 length, QString &out)
{
    const qint32 start = pos;
    quint32 charset;
    if (!readInteger(charset)) {
        return 0;
    }
    const auto charsetSize = static_cast<quint32>(pos - start);
    if (length < charsetSize || length - charsetSize > static_cast<quint32>(size - pos)) {
        return 0;
    }
    const char *first = data + pos;
    const char *end = first + (length - charsetSize);
    pos += static_cast<qint32>(end - first);
    if (first != end && static_cast<quint8>(*first) == kQuote) {
        ++first;
    }
    while (end != first && end[-1] == 0) {
        --end;
    }
    out = first == end ? QLatin1String("") : QString::fromUtf8(first, end - first);
    return 1;
}

quint32 WSP_Stream::writeEncodedString(const QString &text)
{
    const Utf8Text utf8(text);
    if (utf8.size() > size - pos) {
        m_overflowed = true;
        return 0;
    }
    return writeValueLength(static_cast<qint32>(utf8.size()) + 2 + (utf8.isQuoted() ? 1 : 0))
            && writeInteger(kCharsetUtf8) && writeText(utf8, {})
        ? 1
        : 0;
}

quint32 WSP_Stream::writeTextString(const QString &text, QLatin1String suffix)
{
    // The wire ends a text at its first NUL; what stood behind it would be read as fields.
    return writeText(Utf8Text(QStringView(text).left(text.indexOf(QChar()))), suffix);
}

quint32 WSP_Stream::writeText(const Utf8Text &text, QLatin1String suffix)
{
    return (!text.isQuoted() || writeByte(kQuote)) && writeUtf8(text)
            && writeBytes(suffix.data(), static_cast<qint32>(suffix.size())) && writeByte(0)
        ? 1
        : 0;
}

quint32 WSP_Stream::writeUtf8(const Utf8Text &text)
{
    if (text.size() > size - pos) {
        m_overflowed = true;
        return 0;
    }
    if (text.size() > 0) {
        text.copyTo(data + pos);
        pos += static_cast<qint32>(text.size());
    }
    return 1;
}

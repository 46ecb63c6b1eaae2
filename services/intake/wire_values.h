// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/charsets.h"

#include <WSP_Stream>

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <optional>

namespace wmsg::intake {

// WSP values as real networks write them. All operations stand in front of a value, and move behind
// it; where one fails the stream is where it was.
//
// value := octet 0..30, that many octets | 31 uintvar, that many octets
//        | text (32..127) up to its NUL | octet 128..255

/// streamOver returns a stream that reads `bytes`, and never writes them.
[[nodiscard]] WSP_Stream streamOver(QByteArrayView bytes);
/// bytesBetween returns the bytes of `stream` from `begin` to `end`.
[[nodiscard]] QByteArrayView bytesBetween(const WSP_Stream &stream, qint32 begin, qint32 end);
/// peekByte returns the byte that is next; -1 at the end.
[[nodiscard]] int peekByte(const WSP_Stream &stream);

/// skipValue moves behind a value of any kind. It fails when the value reaches past the end; a text
/// may end with the data.
bool skipValue(WSP_Stream &stream);

/// A text, and whether the library's codec reads the very same text from the same bytes.
struct Text {
    QByteArray utf8;
    bool isPlain = true;

    [[nodiscard]] QString string() const { return QString::fromUtf8(utf8); }
};

/// textOf returns what `bytes` (without their NUL) say in `charset`, encoded words of mail decoded.
/// It is plain when the bytes are the UTF-8 that results.
[[nodiscard]] Text textOf(QByteArrayView bytes, const Charset &charset);

/// readText reads a Text-string: up to a NUL or the end of the data. It fails at the end.
std::optional<Text> readText(WSP_Stream &stream);
/// readEncodedText reads an Encoded-string-value, or a Text-string. The charset may be a number
/// with or without its high bit. It fails when the length reaches past the end.
std::optional<Text> readEncodedText(WSP_Stream &stream);
/// readCharset reads a number, with or without its high bit, or a name.
std::optional<Charset> readCharset(WSP_Stream &stream);
/// readNumber reads a Short-integer or a Long-integer of up to 30 bytes, which must all be there.
std::optional<quint32> readNumber(WSP_Stream &stream);

/// writtenText and writtenEncodedText return the value as the library's codec writes it.
[[nodiscard]] QByteArray writtenText(const QByteArray &utf8);
[[nodiscard]] QByteArray writtenEncodedText(const QByteArray &utf8);
[[nodiscard]] QByteArray writtenNumber(quint32 number);
/// withValueLength returns `value` behind its value-length.
[[nodiscard]] QByteArray withValueLength(const QByteArray &value);

/// withoutQuotes returns `text` without the quotes around it, of which the second may be missing.
[[nodiscard]] QByteArray withoutQuotes(QByteArray text);
/// withoutWrapping returns `text` without blanks, quotes, and then one pair of angle brackets,
/// around it.
[[nodiscard]] QByteArray withoutWrapping(const QByteArray &wrapped);

} // namespace wmsg::intake

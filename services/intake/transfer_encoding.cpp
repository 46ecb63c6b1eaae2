// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/transfer_encoding.h"

#include "services/intake/charsets.h"

#include <algorithm>

namespace wmsg::intake {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char upper = static_cast<char>(c & ~0x20);
    return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

/// The byte of the two hexadecimal digits at `at`, -1 when there are none.
int hexByte(QByteArrayView text, qsizetype at)
{
    if (at + 2 > text.size()) {
        return -1;
    }
    const int high = hexDigit(text[at]);
    const int low = hexDigit(text[at + 1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// The bytes of the line break at `at`, 0 when there is none.
qsizetype lineBreak(QByteArrayView text, qsizetype at)
{
    if (at < text.size() && text[at] == '\n') {
        return 1;
    }
    return at + 1 < text.size() && text[at] == '\r' && text[at + 1] == '\n' ? 2 : 0;
}

// word := "=?" charset "?" ("B" | "Q") "?" text "?="
struct EncodedWord {
    Charset charset;
    char encoding = 0;
    QByteArrayView text;
    qsizetype end = 0;
};

std::optional<EncodedWord> wordAt(QByteArrayView whole, qsizetype at)
{
    constexpr qsizetype kLongestWord = 1000; // mail allows 75
    if (!whole.sliced(at).startsWith("=?")) {
        return std::nullopt;
    }
    const QByteArrayView text = whole.first(std::min(whole.size(), at + kLongestWord));
    const qsizetype name = at + 2;
    const qsizetype encoding = text.indexOf('?', name);
    if (encoding < 0 || encoding + 2 >= text.size() || text[encoding + 2] != '?') {
        return std::nullopt;
    }
    const qsizetype begin = encoding + 3;
    const qsizetype end = text.indexOf("?=", begin);
    const char kind = static_cast<char>(text[encoding + 1] & ~0x20);
    if (end < 0 || (kind != 'B' && kind != 'Q') || !isAscii(text.sliced(at, end - at))) {
        return std::nullopt;
    }
    QByteArrayView charset = text.sliced(name, encoding - name);
    if (const qsizetype language = charset.indexOf('*'); language >= 0) {
        charset = charset.first(language);
    }
    return EncodedWord{Charset::named(charset), kind, text.sliced(begin, end - begin), end + 2};
}

std::optional<QByteArray> decoded(const EncodedWord &word)
{
    if (word.encoding == 'B') {
        const auto bytes = fromBase64(word.text);
        return bytes ? std::optional(toUtf8(*bytes, word.charset)) : std::nullopt;
    }
    QByteArray text = word.text.toByteArray();
    text.replace('_', ' ');
    return toUtf8(fromQuotedPrintable(text), word.charset);
}

QByteArray withWordsDecoded(const QByteArray &utf8)
{
    QByteArray out;
    QByteArray blanks; // behind a word: they go when another word follows
    bool isBehindWord = false;
    for (qsizetype i = 0; i < utf8.size();) {
        const auto word = wordAt(utf8, i);
        const auto text = word ? decoded(*word) : std::nullopt;
        if (text) {
            out += *text;
            i = word->end;
            isBehindWord = true;
            blanks.clear();
        } else if (isBehindWord && isBlank(utf8[i])) {
            blanks += utf8[i++];
        } else {
            out += blanks;
            out += utf8[i++];
            isBehindWord = false;
            blanks.clear();
        }
    }
    return out + blanks;
}

} // namespace

std::optional<QByteArray> fromBase64(QByteArrayView text)
{
    QByteArray digits;
    digits.reserve(text.size());
    bool hasEnded = false;
    for (const char c : text) {
        if (c == '=') {
            hasEnded = true;
        } else if (!isBlank(c)) {
            if (hasEnded) {
                return std::nullopt;
            }
            digits.append(c);
        }
    }
    if (digits.size() % 4 == 1) {
        digits.chop(1);
    }
    auto result = QByteArray::fromBase64Encoding(
        digits, QByteArray::OmitTrailingEquals | QByteArray::AbortOnBase64DecodingErrors);
    if (!result) {
        return std::nullopt;
    }
    return std::move(result.decoded);
}

QByteArray fromQuotedPrintable(QByteArrayView text)
{
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '=') {
            out.append(text[i]);
        } else if (const int byte = hexByte(text, i + 1); byte >= 0) {
            out.append(static_cast<char>(byte));
            i += 2;
        } else if (const qsizetype breakSize = lineBreak(text, i + 1); breakSize > 0) {
            i += breakSize;
        } else {
            out.append('=');
        }
    }
    return out;
}

QByteArray withEncodedWords(const QByteArray &utf8)
{
    // What a word says may make up another one with its neighbours; every round leaves fewer ASCII
    // characters.
    constexpr qsizetype kLongest = 16384;
    QByteArray text = utf8;
    while (text.size() <= kLongest && text.contains("=?")) {
        QByteArray next = withWordsDecoded(text);
        if (next == text) {
            break;
        }
        text = std::move(next);
    }
    return text;
}

} // namespace wmsg::intake

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <optional>

/// The header fields and their codes in words, for people and for programs.
namespace wmsg::cli {

/// The name of header field `id`, 1 to 63, as the protocol has it without its "X-Mms-" prefix. The
/// library has codecs for those up to 24.
[[nodiscard]] QString fieldName(int id);

/// One code of a field: how programs spell it and how people read it.
struct CodeWords {
    quint8 code;
    const char *key;
    const char *words;
};

/// The words for a code that the field `fieldId` holds; null for a code or a field without words.
[[nodiscard]] const CodeWords *codeWords(int fieldId, quint8 code);

/// "send request (128)", or "unknown code (200)".
[[nodiscard]] QString codeInWords(int fieldId, quint8 code);

/// The code that programs spell `key` in field `fieldId`.
[[nodiscard]] std::optional<quint8> codeOfKey(int fieldId, const QString &key);

/// "1.2" for 0x12.
[[nodiscard]] QString versionInWords(quint8 version);

/// What a result of decoding, encoding or saving means.
[[nodiscard]] QString resultInWords(quint32 result);

/// The name of a character set number; null for one that is not known here.
[[nodiscard]] const char *charsetName(quint32 mibEnum);

/// The kind of message that the prefix of a mail file names.
[[nodiscard]] QString mmsTypeInWords(quint8 type);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// Text as people see it on a terminal. What comes out of a message never reaches the terminal raw.
namespace wmsg::cli {

/// The text with everything escaped that could steer a terminal or mislead the eye: control
/// characters (\n, \x1B), marks that turn the direction of writing (\u{202E}), halves of
/// characters, and the backslash itself.
[[nodiscard]] QString printable(QStringView text);

/// As printable(), but the backslash stays: for lines that hold escaped text already.
[[nodiscard]] QString harmless(QStringView line);

/// As printable(), of the first `limit` characters; a longer text ends with a mark and the number
/// of characters left out. A `limit` of 0 cuts nothing.
[[nodiscard]] QString shortened(QStringView text, qsizetype limit);

/// "812 bytes", or "12.3 KiB (12604 bytes)".
[[nodiscard]] QString sizeInWords(qint64 bytes);

/// "2024-05-01 12:00:00 +0200 (CEST)", in local time.
[[nodiscard]] QString dateInWords(const QDateTime &date);

/// "2 days 3 hours (183600 s)".
[[nodiscard]] QString durationInWords(qint64 seconds);

/// "1 part", "2 parts".
[[nodiscard]] QString counted(qint64 number, QLatin1String thing);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>

namespace wmsg::cli {

/// Bytes that a text spells in hex.
struct HexLine {
    int line = 0; ///< Where they begin, from 1; 0 when they are the whole text.
    QByteArray bytes;
};

/// isPlainText tells of bytes that people can read: ASCII or UTF-8, with no control characters but
/// those of a terminal's log.
[[nodiscard]] bool isPlainText(QByteArrayView file);

/// hexLines returns what a plain text holds in hex; nothing for any other file. It is
/// - each dump with an offset in front of each line, as xxd, hexdump -C, od -tx1, packet analysers
///   and `wmsg decode --hex` print them, or
/// - all of a text of nothing but pairs of hex digits and, behind a "#", comments, when its first
///   line is no short message, and not each of several lines is a message, or
/// - each line of a modem's log that has such a run of at least 11 bytes.
[[nodiscard]] QList<HexLine> hexLines(QByteArrayView file);

} // namespace wmsg::cli

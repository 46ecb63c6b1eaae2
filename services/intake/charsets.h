// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

namespace wmsg::intake {

/// A charset as a message declares it: by the number that IANA assigned to it (MIBenum), or by
/// name. Number 0 without a name is a charset that was not declared, or declared as "any".
struct Charset {
    quint32 number = 0;
    QByteArray name;

    static constexpr quint32 kUsAscii = 3;
    static constexpr quint32 kUtf8 = 106;

    /// The charset of this name, in any spelling.
    static Charset named(QByteArrayView name);

    [[nodiscard]] bool isDeclared() const { return number != 0 || !name.isEmpty(); }
    /// Whether its characters have two bytes.
    [[nodiscard]] bool isUtf16() const;
    /// How many bytes a character has at least: 1, 2 or 4.
    [[nodiscard]] int width() const;
    /// Whether bytes below 128 are the characters of US-ASCII in it, wherever they stand.
    [[nodiscard]] bool keepsAscii() const;
};

/// isAscii tells whether all bytes are below 128 and none begins an escape sequence.
[[nodiscard]] bool isAscii(QByteArrayView bytes);

/// isUtf8 tells whether the bytes are UTF-8 as they stand.
[[nodiscard]] bool isUtf8(QByteArrayView bytes);

/// utf16ByLooks returns the order of UTF-16 that `bytes` are although nothing says so: that in
/// which half of the characters or more begin, or end, with a zero, as they do in no text of single
/// bytes. Nothing declared when they are not.
[[nodiscard]] Charset utf16ByLooks(QByteArrayView bytes);

/// toUtf8 returns the text that `bytes` are in `charset`, in UTF-8 and without a byte order mark.
///
/// UTF-16 goes by its mark, else by its declared order, else it is big-endian; an odd last byte is
/// dropped. A text that is declared as UTF-8, as US-ASCII, not at all, or in a charset that nobody
/// knows is UTF-16 if it begins with the mark of that, UTF-8 if it is well formed but for a cut
/// last character, and windows-1252 otherwise. In every other charset a byte that means nothing
/// becomes U+FFFD. Time and memory are in proportion to the bytes.
[[nodiscard]] QByteArray toUtf8(QByteArrayView bytes, const Charset &charset);

} // namespace wmsg::intake

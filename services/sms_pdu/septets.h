// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>

#include <optional>

namespace wmsg::smspdu {

/// Text in the 7-bit default alphabet. Septets are held in a byte each; packed, the first lies in
/// the lowest bits of the first octet.

/// packSeptets packs `septets` behind `fill` bits of 0, 0 to 7 of them.
[[nodiscard]] QByteArray packSeptets(QByteArrayView septets, int fill = 0);
/// unpackSeptets returns the `count` septets behind the first `fill` bits of `octets`, or as many
/// as these hold.
[[nodiscard]] QByteArray unpackSeptets(QByteArrayView octets, qsizetype count, int fill = 0);
/// packedSize returns how many octets `count` septets behind `fill` bits take.
[[nodiscard]] constexpr qsizetype packedSize(qsizetype count, int fill = 0)
{
    return (count * 7 + fill + 7) / 8;
}
/// fillBits returns how many bits bring the text behind a user data header of `size` octets, its
/// length included, to the next septet.
[[nodiscard]] constexpr int fillBits(qsizetype size)
{
    return static_cast<int>((7 - size * 8 % 7) % 7);
}

/// gsm7FromText returns `text` in septets; nothing when a character of it is not in the alphabet.
[[nodiscard]] std::optional<QByteArray> gsm7FromText(QStringView text);
/// textFromGsm7 returns what `septets` say. Behind an escape, a septet that the extension table
/// lacks stands for its character of the alphabet; two escapes are a blank, one at the end is
/// nothing.
[[nodiscard]] QString textFromGsm7(QByteArrayView septets);

} // namespace wmsg::smspdu

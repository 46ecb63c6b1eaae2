// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtEndian>

#include <array>

/// The prefix of a mail file.

namespace wmsg::model {

// mail-file := 0x12 0x10 mms-type 0x00 header-length body-length 0x00000000 pdu
//   header-length, body-length: uint32, little-endian   pdu: the stored form, header-length +
//   body-length bytes

inline constexpr int kMailFilePrefixSize = 16;
using MailFilePrefix = std::array<char, kMailFilePrefixSize>;

inline MailFilePrefix mailFilePrefix(quint8 mmsType, quint32 headerLength, quint32 bodyLength)
{
    MailFilePrefix prefix{};
    prefix[0] = 0x12; // layout mark
    prefix[1] = kMailFilePrefixSize;
    prefix[2] = static_cast<char>(mmsType);
    qToLittleEndian(headerLength, &prefix[4]);
    qToLittleEndian(bodyLength, &prefix[8]);
    return prefix;
}

/// Files of the old layout have no prefix, and a 0 in one of their first two bytes.
inline bool isOldLayout(const MailFilePrefix &prefix)
{
    return prefix[0] == 0 || prefix[1] == 0;
}

inline quint8 mmsTypeOf(const MailFilePrefix &prefix)
{
    return static_cast<quint8>(prefix[2]);
}

} // namespace wmsg::model

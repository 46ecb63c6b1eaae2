// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/gsm_alphabet.h"

#include <QtCore/QStringView>
#include <QtCore/QtGlobal>

/// How long a short message is, and what fits one. It is all inline, as the alphabet is.
///
/// One message holds 140 octets: 160 septets or 70 UTF-16 units. A pair of ports takes 7 octets of
/// these, and 133 octets are left: 152 septets or 66 units.

enum class SmsAlphabet {
    Gsm7, ///< text of the default alphabet, in septets
    Ucs2, ///< any other text, in UTF-16 units; what is beyond 16 bits takes two
    Octets, ///< data
};

/// SmsLength is what smsLengthOf() measures.
struct SmsLength {
    SmsAlphabet alphabet = SmsAlphabet::Gsm7;
    qint64 used = 0; ///< in the units of the alphabet
    int limit = 0; ///< what one message holds, in the same units

    [[nodiscard]] constexpr bool fits() const { return used <= limit; }
};

inline constexpr int kSmsOctets = 140;
inline constexpr int kSmsPortOctets = 7;

/// smsLimit returns how many units of `alphabet` one message holds.
[[nodiscard]] constexpr int smsLimit(SmsAlphabet alphabet, bool hasPorts)
{
    const int octets = hasPorts ? kSmsOctets - kSmsPortOctets : kSmsOctets;
    switch (alphabet) {
    case SmsAlphabet::Gsm7:
        return octets * 8 / 7;
    case SmsAlphabet::Ucs2:
        return octets / 2;
    case SmsAlphabet::Octets:
        break;
    }
    return octets;
}

/// smsLengthOf measures a text. It takes the default alphabet when that has all of its characters.
[[nodiscard]] inline SmsLength smsLengthOf(QStringView text, bool hasPorts)
{
    qint64 septets = 0;
    for (const QChar character : text) {
        const int count = gsmSeptets(character.unicode());
        if (count == 0) {
            return {SmsAlphabet::Ucs2, text.size(), smsLimit(SmsAlphabet::Ucs2, hasPorts)};
        }
        septets += count;
    }
    return {SmsAlphabet::Gsm7, septets, smsLimit(SmsAlphabet::Gsm7, hasPorts)};
}

/// smsLengthOfData measures `octets` bytes of data.
[[nodiscard]] constexpr SmsLength smsLengthOfData(qint64 octets, bool hasPorts)
{
    return {SmsAlphabet::Octets, octets, smsLimit(SmsAlphabet::Octets, hasPorts)};
}

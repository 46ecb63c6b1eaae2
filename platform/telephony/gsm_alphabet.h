// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

/// The 7-bit default alphabet of short messages: a character is one septet, or two when it stands
/// in the extension table, which the septet 27 opens. It is all inline, so that it is there
/// whichever library fulfils the telephony service.

/// The characters of the septets 0 to 127. Septet 27 is no character.
inline constexpr char16_t kGsmAlphabet[] =
    u"@\u00A3$\u00A5\u00E8\u00E9\u00F9\u00EC\u00F2\u00C7\n\u00D8\u00F8\r\u00C5\u00E5"
    u"\u0394_\u03A6\u0393\u039B\u03A9\u03A0\u03A8\u03A3\u0398\u039E\u001B\u00C6\u00E6\u00DF\u00C9"
    u" !\"#\u00A4%&'()*+,-./"
    u"0123456789:;<=>?"
    u"\u00A1ABCDEFGHIJKLMNO"
    u"PQRSTUVWXYZ\u00C4\u00D6\u00D1\u00DC\u00A7"
    u"\u00BFabcdefghijklmno"
    u"pqrstuvwxyz\u00E4\u00F6\u00F1\u00FC\u00E0";
inline constexpr int kGsmAlphabetSize = 128;
inline constexpr int kGsmEscape = 27;
static_assert(sizeof kGsmAlphabet / sizeof(char16_t) == kGsmAlphabetSize + 1);

/// A row of the extension table: the septet behind the septet 27, and what both stand for.
struct GsmExtension {
    quint8 septet;
    char16_t character;
};
inline constexpr GsmExtension kGsmExtensions[] = {
    {0x0A, u'\f'}, {0x14, u'^'}, {0x28, u'{'}, {0x29, u'}'}, {0x2F, u'\\'},
    {0x3C, u'['},  {0x3D, u'~'}, {0x3E, u']'}, {0x40, u'|'}, {0x65, u'\u20AC'},
};

/// gsmCode returns the septet that is `character`, or the septet of the extension table with the
/// septet 27 in the byte above it; -1 when it is in neither table.
[[nodiscard]] constexpr int gsmCode(char16_t character)
{
    for (int septet = 0; septet < kGsmAlphabetSize; ++septet) {
        if (kGsmAlphabet[septet] == character && septet != kGsmEscape) {
            return septet;
        }
    }
    for (const GsmExtension &row : kGsmExtensions) {
        if (row.character == character) {
            return kGsmEscape << 8 | row.septet;
        }
    }
    return -1;
}

/// gsmSeptets returns how many septets `character` takes: 1, 2, or 0 when it is in neither table.
[[nodiscard]] constexpr int gsmSeptets(char16_t character)
{
    const int code = gsmCode(character);
    if (code < 0) {
        return 0;
    }
    return code < kGsmAlphabetSize ? 1 : 2;
}

/// gsmExtension returns what `septet` stands for behind the septet 27; 0 when that is nothing.
[[nodiscard]] constexpr char16_t gsmExtension(quint8 septet)
{
    for (const GsmExtension &row : kGsmExtensions) {
        if (row.septet == septet) {
            return row.character;
        }
    }
    return 0;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/mms_char.h"

#include <algorithm>
#include <cstring>

namespace {

using Unit = unsigned short;

constexpr char32_t kHighestCharacter = 0x10FFFF;

/// One character and how much of the source it takes.
struct Character {
    char32_t value;
    unsigned int length;
};

bool isSurrogate(char32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}

/// How many bytes a character takes that begins with `byte`; 0 for one that begins none.
unsigned int sequenceLength(unsigned char byte)
{
    if (byte < 0x80) {
        return 1;
    }
    if (byte < 0xC2 || byte > 0xF4) {
        return 0;
    }
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Reads the character at `bytes`, of which `remaining` are there.
Character characterAt(const unsigned char *bytes, unsigned int remaining)
{
    static constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const Character single = {bytes[0], 1};
    const unsigned int length = sequenceLength(bytes[0]);
    if (length < 2 || length > remaining) {
        return single;
    }
    char32_t value = bytes[0] & (0x7FU >> length);
    for (unsigned int i = 1; i < length; ++i) {
        if ((bytes[i] & 0xC0) != 0x80) {
            return single;
        }
        value = value << 6 | (bytes[i] & 0x3FU);
    }
    const bool isValid =
        value >= kLowest[length] && value <= kHighestCharacter && !isSurrogate(value);
    return isValid ? Character{value, length} : single;
}

unsigned int writeUnits(char32_t value, Unit *target)
{
    if (value < 0x10000) {
        target[0] = static_cast<Unit>(value);
        return 1;
    }
    target[0] = static_cast<Unit>(0xD7C0 + (value >> 10));
    target[1] = static_cast<Unit>(0xDC00 | (value & 0x3FF));
    return 2;
}

/// Reads the character at `units`, of which `remaining` are there.
Character characterAt(const Unit *units, unsigned int remaining)
{
    const Unit first = units[0];
    if (!isSurrogate(first)) {
        return {first, 1};
    }
    const bool isPair = first < 0xDC00 && remaining > 1 && units[1] >= 0xDC00 && units[1] <= 0xDFFF;
    if (!isPair) {
        return {U'?', 1};
    }
    return {(char32_t{first} << 10) + units[1] - 0x35FDC00, 2};
}

unsigned int writeBytes(char32_t value, char *target)
{
    if (value < 0x80) {
        target[0] = static_cast<char>(value);
        return 1;
    }
    const unsigned int length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    for (unsigned int i = length - 1; i > 0; --i) {
        target[i] = static_cast<char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    target[0] = static_cast<char>((0xF00U >> length & 0xFF) | value);
    return length;
}

bool isOneOf(Unit unit, const Unit *set)
{
    while (*set != 0 && *set != unit) {
        ++set;
    }
    return *set != 0;
}

} // namespace

unsigned int MMS_Char_convUTF8toUCS2String(const char *source, unsigned int length,
                                           unsigned short *target, unsigned int room)
{
    if (!target || room == 0) {
        return 0;
    }
    const auto *bytes = reinterpret_cast<const unsigned char *>(source);
    const auto end = source ? static_cast<unsigned int>(strnlen(source, length)) : 0;
    unsigned int written = 0;
    for (unsigned int at = 0; at < end;) {
        const Character character = characterAt(bytes + at, end - at);
        Unit units[2];
        const unsigned int count = writeUnits(character.value, units);
        if (count > room - 1 - written) {
            break;
        }
        std::copy_n(units, count, target + written);
        written += count;
        at += character.length;
    }
    target[written] = 0;
    return written;
}

unsigned int MMS_Char_convUCS2toUTF8String(const unsigned short *source, unsigned int length,
                                           char *target, unsigned int room)
{
    if (!target) {
        return 0;
    }
    unsigned int end = 0;
    while (source && end < length && source[end] != 0) {
        ++end;
    }
    unsigned int written = 0;
    for (unsigned int at = 0; at < end;) {
        const Character character = characterAt(source + at, end - at);
        char bytes[4];
        const unsigned int count = writeBytes(character.value, bytes);
        if (count > room - written) {
            break;
        }
        std::copy_n(bytes, count, target + written);
        written += count;
        at += character.length;
    }
    if (written < room) {
        target[written] = 0;
    }
    return written;
}

unsigned short *MMS_device_wchar_strchr(unsigned short *string, unsigned short unit)
{
    while (string && *string != unit) {
        string = *string == 0 ? nullptr : string + 1;
    }
    return string;
}

unsigned short *MMS_device_wchar_strtok(unsigned short *string, const unsigned short *separators,
                                        unsigned short **rest)
{
    unsigned short *piece = string ? string : *rest;
    while (piece && *piece != 0 && isOneOf(*piece, separators)) {
        ++piece;
    }
    if (!piece || *piece == 0) {
        *rest = nullptr;
        return nullptr;
    }
    unsigned short *end = piece;
    while (*end != 0 && !isOneOf(*end, separators)) {
        ++end;
    }
    *rest = *end == 0 ? nullptr : end + 1;
    *end = 0;
    return piece;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

/// The bytes that have a meaning of their own in fields and in the headers of parts.
namespace wmsg::intake {

/// Of tokens, of numbers in one byte and of the ids of fields.
inline constexpr quint8 kHighBit = 0x80;
/// A length is a byte below this one, or stands behind it; from the next one on begin texts.
inline constexpr quint8 kLengthQuote = 31;
/// In front of a text whose first byte has its high bit set.
inline constexpr quint8 kTextQuote = 127;
inline constexpr quint8 kYes = 128;
inline constexpr quint8 kNo = 129;

// Headers of a part.
inline constexpr quint8 kLocation = 0x8E;
inline constexpr quint8 kContentId = 0xC0;

// Parameters of a content type.
inline constexpr quint8 kParamCharset = 0x81;
inline constexpr quint8 kParamName = 0x85;
inline constexpr quint8 kParamType = 0x89;
inline constexpr quint8 kParamStart = 0x8A;

} // namespace wmsg::intake

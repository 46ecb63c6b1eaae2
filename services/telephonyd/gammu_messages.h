// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/modem.h"

#include <QtCore/QByteArray>

#include <gammu.h>

#include <optional>

/// Short messages as libgammu has them. Its texts are UTF-16 in big-endian order, with an end.
namespace wmsg::telephonyd {

/// Why a message is refused that libgammu would send wrongly: the causes that modems give for a
/// thing that they cannot do, and for what is no message.
inline constexpr qint32 kCauseNotSupported = 303;
inline constexpr qint32 kCauseInvalid = 304;
/// Why a message is refused that names no service centre where the modem knows none.
inline constexpr qint32 kCauseNoServiceCenter = 330;

/// toGammu makes of `message` what libgammu sends, through `serviceCenter` if it names none itself.
/// It returns the cause for which it is refused; 0 when it is not. libgammu checks nothing, and
/// would cut or change such messages silently.
[[nodiscard]] qint32 toGammu(const OutgoingSms &message, const QByteArray &serviceCenter,
                             GSM_SMSMessage &out);

/// fromGammu returns what a delivered message says, without its place; nothing when libgammu could
/// not make sense of it.
[[nodiscard]] std::optional<IncomingSms> fromGammu(const GSM_SMSMessage &message);

/// numberFromGammu returns a number, or the name that a sender has in its place.
[[nodiscard]] QByteArray numberFromGammu(const unsigned char *text);

/// numberToGammu writes a number with its end; false when it has more than digits and a plus in
/// front, or none.
[[nodiscard]] bool numberToGammu(const QByteArray &number, unsigned char *text);

/// placeOf returns a word for where `message` lies that also tells it from others that lie there
/// at another time; locationOf the location in it, 0 when it is no such word.
[[nodiscard]] QByteArray placeOf(int location, const IncomingSms &message);
[[nodiscard]] int locationOf(const QByteArray &place);

} // namespace wmsg::telephonyd

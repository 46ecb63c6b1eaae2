// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/tpdu.h"

namespace wmsg::smspdu {

inline constexpr qsizetype kTimeSize = 7;
inline constexpr qsizetype kMostUserData = 140;
inline constexpr qsizetype kMostAddressOctets = 10;

/// addressValue returns what the octets of an address say, of which the first `digits` half octets
/// are meant.
[[nodiscard]] QString addressValue(quint8 type, QByteArrayView octets, qsizetype digits);
/// addressOctets returns the octets of an address, and sets `digits`; null when it is too long or
/// has a character that no address has.
[[nodiscard]] QByteArray addressOctets(const Address &address, qsizetype &digits);

/// timeOf returns the time that 7 octets tell, with its zone; an invalid one when they tell none.
[[nodiscard]] QDateTime timeOf(QByteArrayView octets);
/// timeOctets returns 7 octets, zeros for an invalid time.
[[nodiscard]] QByteArray timeOctets(const QDateTime &time);

} // namespace wmsg::smspdu

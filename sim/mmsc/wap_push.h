// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QDateTime>

// push := transaction 0x06 headers-length content-type application-id pdu

namespace wmsg::sim {

/// The number that pushes in short messages come from.
inline constexpr auto kPushSender = "+15550199";

/// wapPush returns `pdu` as a push to the application for multimedia messages.
[[nodiscard]] QByteArray wapPush(const QByteArray &pdu, quint8 transaction);

/// pushMessages returns `push` as the short messages in which a network delivers it: to port 2948,
/// several ones where it does not fit one. Each is a service centre and a TPDU. `reference` tells
/// pushes of several messages apart. There are none when it takes more than 255.
[[nodiscard]] QByteArrayList pushMessages(const QByteArray &push, quint8 reference,
                                          const QDateTime &time);

} // namespace wmsg::sim

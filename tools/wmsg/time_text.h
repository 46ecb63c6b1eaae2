// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <optional>

namespace wmsg::cli {

/// A date as "2024-05-01T12:00:00" (local time), with "Z" or "+02:00" behind it, or as seconds
/// since 1970; nothing when it is none, or none that a message can carry.
[[nodiscard]] std::optional<QDateTime> parseDate(const QString &text);

/// A duration of at least a second as "90", "90s", "15m", "12h", "3d" or "1w", in seconds.
[[nodiscard]] std::optional<qint32> parseDuration(const QString &text);

} // namespace wmsg::cli

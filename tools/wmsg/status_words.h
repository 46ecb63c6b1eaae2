// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

/// The statuses that requests and events of a session have, in words. docs/status-codes.md tells
/// the same with more about each.
namespace wmsg::cli {

/// Not the end of a request: the daemon will try again.
inline constexpr int kStatusWillRetry = 256;

/// What `status` means, in words that an application can show; also for numbers without a name.
[[nodiscard]] QString statusInWords(int status);

/// How programs spell `status`: "ok", "send-fail", "error-service-denied"; an empty text for a
/// number without a name.
[[nodiscard]] QString statusKey(int status);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <QtCore/QDateTime>

/// The time conversion service: local dates and times on one side, seconds since 1970-01-01
/// 00:00:00 UTC on the other. The time zone is the one that the process has at the moment of the
/// call.
class WMSG_PLATFORM_EXPORT UTIL_TimeConversion {
public:
    /// toUTC returns the seconds of `time`, negative before 1970; milliseconds are dropped. A time
    /// that the clocks skip in spring counts as the one shown an hour later. An invalid date or
    /// time gives -1.
    static long toUTC(const QDateTime &time);

    /// fromUTC returns the local date and time of `seconds`. Seconds that no date can express give
    /// an invalid date-time.
    static QDateTime fromUTC(long seconds);
};

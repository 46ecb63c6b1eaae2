// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/timeconversion/util_timeconversion.h"

long UTIL_TimeConversion::toUTC(const QDateTime &time)
{
    // Not isValid(): a time that the clocks skip is not valid for Qt, but a user can ask for it.
    const bool isTime = time.date().isValid() && time.time().isValid();
    return isTime ? long(time.toSecsSinceEpoch()) : -1;
}

QDateTime UTIL_TimeConversion::fromUTC(long seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds);
}

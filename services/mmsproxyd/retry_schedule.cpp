// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/retry_schedule.h"

#include <algorithm>

namespace wmsg::proxy {

std::optional<RetrySchedule::Pause> RetrySchedule::pauseAfter(int failures) const
{
    const auto n = static_cast<size_t>(std::max(failures, 1));
    return n <= m_pauses.size() ? std::optional(m_pauses[n - 1]) : std::nullopt;
}

RetrySchedule::Pause RetrySchedule::lastingPauseAfter(int failures) const
{
    const Pause last = m_pauses.empty() ? std::chrono::minutes(1) : m_pauses.back();
    return pauseAfter(failures).value_or(last);
}

RetrySchedule::Pause RetrySchedule::remaining(qint64 due, qint64 now, int failures) const
{
    if (failures <= 0 || due <= now) {
        return Pause(0);
    }
    const bool isPlausible = due - lastingPauseAfter(failures).count() <= now;
    return isPlausible ? Pause(due - now) : Pause(0);
}

} // namespace wmsg::proxy

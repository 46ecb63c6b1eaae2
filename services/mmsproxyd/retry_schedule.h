// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/time_of_day.h"

#include <QtCore/QtGlobal>

#include <chrono>
#include <optional>
#include <vector>

namespace wmsg::proxy {

/// RetrySchedule says when something that failed is tried again: after the first failure the first
/// pause is made, after the second the second, and after the last pause there is none. Points in
/// time are milliseconds since 1970, so that they can be kept in a file. A clock may be set back
/// meanwhile: a point that is farther away than the pause has passed.
class RetrySchedule {
public:
    using Pause = std::chrono::milliseconds;

    RetrySchedule() = default;
    explicit RetrySchedule(std::vector<Pause> pauses) : m_pauses(std::move(pauses)) { }

    /// pauseAfter returns the pause to make after that many failures, the last one included;
    /// nothing when that was the last attempt.
    [[nodiscard]] std::optional<Pause> pauseAfter(int failures) const;
    /// lastingPauseAfter is the same for what is tried until it succeeds or expires: the last pause
    /// repeats. A schedule without pauses gives a minute.
    [[nodiscard]] Pause lastingPauseAfter(int failures) const;

    /// remaining returns how long to wait at `now` for the point `due` that was set after that many
    /// failures; 0 when it has passed.
    [[nodiscard]] Pause remaining(qint64 due, qint64 now, int failures) const;

private:
    std::vector<Pause> m_pauses;
};

using service::currentTime;

} // namespace wmsg::proxy

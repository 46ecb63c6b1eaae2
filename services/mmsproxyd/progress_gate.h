// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

namespace wmsg::proxy {

/// ProgressGate lets the progress of one request through ten times a second at most, and its end
/// always: the first time that everything is done. It needs no timer, so that nothing wakes up for
/// a transfer that stands still.
class ProgressGate {
public:
    static constexpr qint64 kPause = 100; // milliseconds

    /// passes tells whether to tell that `done` of `total` bytes are done at `now`, in milliseconds
    /// of a clock that only goes forward.
    [[nodiscard]] bool passes(qint64 now, qint64 done, qint64 total)
    {
        const bool isEnd = total > 0 && done >= total;
        if (isEnd ? m_endWasTold : m_last >= 0 && now - m_last < kPause) {
            return false;
        }
        m_last = now;
        m_endWasTold = isEnd;
        return true;
    }

private:
    qint64 m_last = -1;
    bool m_endWasTold = false;
};

/// The milliseconds of such a clock.
[[nodiscard]] qint64 steadyTime();

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/record_boxes.h"
#include "services/common/time_of_day.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <chrono>

namespace wmsg::telephonyd {

using service::currentTime;
using service::RecordId;

/// Spool is the folder of all that outlives the daemon, and knows nothing of what its records mean:
/// records, and no files beside them. docs/formats/telephony-spool.md shows the folder.
class Spool : public service::RecordBoxes {
public:
    /// The longest record, in bytes: a body of 64 KiB in hex, and room.
    static constexpr qint64 kLongestRecord = 256LL * 1024;

    explicit Spool(QString folder);

    /// The same; what an unfinished step left is removed.
    [[nodiscard]] QString open();
};

/// timeLeft returns how much is left of `lifetime` for what began at the time of day `since`, when
/// a daemon that starts finds it. The clock may have been set meanwhile, so it is never more than
/// all, nor less than a 24th of it.
[[nodiscard]] std::chrono::milliseconds timeLeft(qint64 since, std::chrono::milliseconds lifetime);

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/time_of_day.h"

#include <QtCore/QDateTime>

#include <algorithm>

namespace wmsg::service {

qint64 currentTime()
{
    return std::max<qint64>(QDateTime::currentMSecsSinceEpoch(), 0);
}

} // namespace wmsg::service

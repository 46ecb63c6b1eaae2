// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

namespace wmsg::service {

/// The time of day in milliseconds since 1970, 0 by a clock that is before that.
[[nodiscard]] qint64 currentTime();

} // namespace wmsg::service

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace wmsg::engine {

/// Logs one line, "MMS engine: " and `why`, and returns `result`.
int refuse(int result, const QString &why);

/// The MMS_ENG_RESULT_E for a system error.
[[nodiscard]] int resultOfErrno(int error);

/// Logs that something failed with a system error, and returns its MMS_ENG_RESULT_E.
int refuseErrno(int error, const QString &what);

} // namespace wmsg::engine

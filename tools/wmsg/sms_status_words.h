// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace wmsg::cli {

/// What the status of a short message means, which the telephony service gives: of one that was
/// sent, or why it was not.
[[nodiscard]] QString smsStatusInWords(int status);

} // namespace wmsg::cli

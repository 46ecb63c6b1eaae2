// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/wmfmentry.h>

#include <QtCore/QString>

namespace wmsg::cli {

/// Makes `entry` the address that `text` is: a phone number, whose blanks, dots, dashes and
/// brackets are dropped, or an e-mail address. Returns why it is neither, or an empty text.
[[nodiscard]] QString parseAddress(const QString &text, WMFMEntry &entry);

} // namespace wmsg::cli

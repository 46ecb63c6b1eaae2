// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/wmfmentry.h>

#include <QtCore/QString>

namespace wmsg::sim {

/// What two addresses have in common that reach the same subscriber: a number without /TYPE=PLMN
/// and what people write between digits, with + for a leading 00; an e-mail address in lower case.
/// Empty for what is no address.
[[nodiscard]] QString addressKey(const QString &address);

/// The entry of an address as text: an e-mail address when it has an @, else a number.
[[nodiscard]] WMFMEntry entryOf(const QString &address);

} // namespace wmsg::sim

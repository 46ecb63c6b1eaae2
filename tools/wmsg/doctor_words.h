// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <sys/types.h>

/// Words that several checks of `wmsg doctor` have in common.
namespace wmsg::cli {

/// "ann (user 1000)".
[[nodiscard]] QString userInWords(uid_t user);
/// "755".
[[nodiscard]] QString modeInWords(mode_t mode);
/// A number of errno in words.
[[nodiscard]] QString errorInWords(int error);

/// The configuration file that the unit of a daemon reads.
[[nodiscard]] QString configOf(const QString &daemon);
/// How a daemon is started, and how it is started anew.
[[nodiscard]] QString startCommand(const QString &daemon);
[[nodiscard]] QString restartCommand(const QString &daemon);

} // namespace wmsg::cli

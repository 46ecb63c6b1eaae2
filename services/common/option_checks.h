// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>
#include <string>
#include <sys/types.h>

/// What the options of all daemons accept. A check returns the problem in words, and an empty text
/// when there is none.
namespace wmsg::service {

[[nodiscard]] std::string checkSocketPath(const std::string &path);
[[nodiscard]] std::string checkSocketMode(const std::string &mode);
/// A folder, which need not be there.
[[nodiscard]] std::string checkFolder(const std::string &path);

/// The mode that checkSocketMode() has found good.
[[nodiscard]] mode_t socketModeOf(const std::string &mode);

/// The number that a text is, when it is digits of this base and nothing else.
[[nodiscard]] std::optional<uint> plainNumber(const std::string &text, int base);

/// What the parser of the options says about an error, in one line and in the words of an INI file.
[[nodiscard]] QString optionError(const char *text);

/// The folder of a daemon's spool unless another is named: in $XDG_STATE_HOME, or ~/.local/state.
[[nodiscard]] QString defaultSpoolOf(QLatin1String daemon);

} // namespace wmsg::service

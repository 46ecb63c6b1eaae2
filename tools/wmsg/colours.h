// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <string>

namespace wmsg::cli {

/// Whether standard output gets colours: "always", "never", or "auto": on a terminal, unless the
/// environment has NO_COLOR with a value, or TERM=dumb.
[[nodiscard]] bool wantsColours(const std::string &choice);

/// What a stretch of a file is, as far as its colour goes.
enum class Tone { Plain, FieldId, Header, Part, Push, ShortMessage, Data, Trouble };

/// The text in the colour of its tone.
[[nodiscard]] QString coloured(const QString &text, Tone tone);

} // namespace wmsg::cli

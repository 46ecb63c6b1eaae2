// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"

namespace wmsg::cli {

/// How much of long texts and data is shown.
enum class Detail { Short, Full };

/// A decoded file for people: its header fields, its parts and the warnings.
[[nodiscard]] QString messageView(const DecodedFile &file, Detail detail);

/// The header fields and parts of a message, without a title.
[[nodiscard]] QString contentView(const WMMSMsg &message, Detail detail);

/// The line that a file's view begins with.
[[nodiscard]] QString titleOf(const DecodedFile &file);

/// The warnings, a line each; empty when there are none.
[[nodiscard]] QString warningsView(const PduWalk &walk);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// talk   := { command LF answer LF }   the next command follows the answer
// answer := "ok" [ SP text ] | "error" SP why
// All text is UTF-8.

namespace wmsg::sim {

/// The longest line on the control socket, without its end.
inline constexpr int kLongestControlLine = 4096;

} // namespace wmsg::sim

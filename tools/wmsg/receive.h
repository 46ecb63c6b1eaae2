// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg receive`, which waits for messages, shows and saves them. When it is
/// chosen it sets `exitCode`.
void addReceive(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

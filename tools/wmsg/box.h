// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg box`, a phone and its network on this machine. When it is chosen it sets `exitCode`.
void addBox(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

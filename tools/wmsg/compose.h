// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg compose`, which writes a new message. When it is chosen it sets `exitCode`.
void addCompose(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg settings`, which shows what the settings server of the device answers. When it is
/// chosen it sets `exitCode`.
void addSettings(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg drm`, which tells what protected files are and whether they may leave the device.
/// When it is chosen it sets `exitCode`.
void addDrm(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

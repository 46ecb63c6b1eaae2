// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg store`, which shows and changes the message store of the device. When it is chosen it
/// sets `exitCode`.
void addStore(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg send`, which hands a message to the proxy daemon and tells what becomes of it. When
/// it is chosen it sets `exitCode`.
void addSend(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

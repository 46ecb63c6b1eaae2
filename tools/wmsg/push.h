// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg push`, which hands PDUs to the proxy daemon as a network pushes them. When it is
/// chosen it sets `exitCode`.
void addPush(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

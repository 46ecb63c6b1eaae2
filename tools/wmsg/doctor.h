// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg doctor`, which looks at a system and says what is wrong with it. When it is chosen it
/// sets `exitCode`.
void addDoctor(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

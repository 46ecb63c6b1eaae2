// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg decode`, which shows what PDUs and mail files hold. When it is chosen it sets
/// `exitCode`.
void addDecode(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace CLI {
class App;
}

namespace wmsg::cli {

/// Adds `wmsg sms`, which sends short messages and waits for them. When it is chosen it sets
/// `exitCode`.
void addSms(CLI::App &program, int &exitCode);

} // namespace wmsg::cli

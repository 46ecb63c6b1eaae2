// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

/// What the options of the daemon accept. A check returns the problem in words, and an empty text
/// when there is none.
namespace wmsg::proxy {

/// The longest URI that the settings server can answer, in characters.
inline constexpr int kLongestSettingsUri = 60;

[[nodiscard]] std::string checkHttpUrl(const std::string &url);
[[nodiscard]] std::string checkSettingsUri(const std::string &uri);
/// Text for a header of HTTP, or for the name of an interface: printable ASCII.
[[nodiscard]] std::string checkPlainText(const std::string &text);
[[nodiscard]] std::string checkInterface(const std::string &name);
/// A file with certificates in PEM, which is there and may be read.
[[nodiscard]] std::string checkCertificates(const std::string &path);
[[nodiscard]] std::string checkPause(const std::string &pause);

/// The pauses that checkPause() has found good; "none" is no pause.
[[nodiscard]] std::vector<std::chrono::milliseconds> pausesOf(
    const std::vector<std::string> &pauses);

} // namespace wmsg::proxy

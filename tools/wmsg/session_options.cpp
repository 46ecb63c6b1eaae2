// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/session_options.h"

#include "tools/wmsg/time_text.h"

#include <CLI/CLI.hpp>

namespace wmsg::cli {

namespace {

constexpr qint32 kLongestTimeout = 7 * 24 * 3600;

qint32 secondsOf(const std::string &text)
{
    return parseDuration(QString::fromStdString(text)).value_or(0);
}

std::string timeoutProblem(const std::string &text)
{
    const qint32 seconds = secondsOf(text);
    return seconds > 0 && seconds <= kLongestTimeout
        ? std::string()
        : "\"" + text + "\" is no duration from a second to a week (90, 15m, 12h)";
}

} // namespace

void SessionOptions::addTo(CLI::App &command, const std::string &atTheEnd,
                           const std::string &object)
{
    command.add_option("--timeout", timeout, "Wait no longer than that: 90, 15m, 12h; " + atTheEnd)
        ->check(timeoutProblem)
        ->type_name("DURATION");
    command.add_flag("--json", json, "Print JSON: " + object);
}

std::chrono::seconds SessionOptions::timeLimit() const
{
    return std::chrono::seconds(secondsOf(timeout));
}

} // namespace wmsg::cli

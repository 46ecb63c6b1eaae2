// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/spool.h"

#include <algorithm>
#include <utility>

namespace wmsg::telephonyd {

namespace {

constexpr service::RecordFormat kFormat{
    1, Spool::kLongestRecord}; // in files: readers refuse what is above
constexpr int kShortestLife = 24; // its inverse, of a lifetime

} // namespace

Spool::Spool(QString folder) : RecordBoxes(std::move(folder), {"record", kFormat, {}}) { }

QString Spool::open()
{
    QString problem = RecordBoxes::open();
    if (problem.isEmpty()) {
        removeUnfinished(Box::Out);
        removeUnfinished(Box::In);
    }
    return problem;
}

std::chrono::milliseconds timeLeft(qint64 since, std::chrono::milliseconds lifetime)
{
    const std::chrono::milliseconds elapsed(currentTime() - since);
    return std::clamp(lifetime - elapsed, lifetime / kShortestLife, lifetime);
}

} // namespace wmsg::telephonyd

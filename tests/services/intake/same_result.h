// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/intake.h"

#include <algorithm>

/// Compares what the short way and the long way make of the same bytes.

inline bool isSame(const wmsg::intake::Remark &a, const wmsg::intake::Remark &b)
{
    return a.offset == b.offset && a.what == b.what;
}

inline bool isSame(const QList<wmsg::intake::Remark> &a, const QList<wmsg::intake::Remark> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto &one, const auto &other) { return isSame(one, other); });
}

inline bool isSame(const wmsg::intake::Facts &a, const wmsg::intake::Facts &b)
{
    return a.type == b.type && a.transactionId == b.transactionId && a.messageId == b.messageId
        && a.location == b.location && a.responseStatus == b.responseStatus
        && a.messageStatus == b.messageStatus && a.retrieveStatus == b.retrieveStatus
        && a.retrieveText == b.retrieveText && a.readStatus == b.readStatus
        && a.previousSenders == b.previousSenders && a.previousDates == b.previousDates;
}

/// Stretches that were kept lie where they were; what was written anew says the same.
inline bool isSame(const wmsg::intake::Pieces &a, const wmsg::intake::Pieces &b, bool isKept)
{
    const auto mine = a.views();
    const auto others = b.views();
    return a.size() == b.size()
        && std::equal(mine.begin(), mine.end(), others.begin(), others.end(),
                      [isKept](const auto &one, const auto &other) {
                          return one == other && (!isKept || one.data() == other.data());
                      });
}

/// differenceOf returns the name of the first member that differs; null when none does.
inline const char *differenceOf(const wmsg::intake::Result &a, const wmsg::intake::Result &b)
{
    return a.verdict != b.verdict              ? "the verdict differs"
        : a.isUnchanged != b.isUnchanged       ? "whether it is unchanged differs"
        : !isSame(a.pdu, b.pdu, a.isUnchanged) ? "the message differs"
        : !isSame(a.steps, b.steps)            ? "the steps differ"
        : !isSame(a.lost, b.lost)              ? "what is lost differs"
        : !isSame(a.problem, b.problem)        ? "the problem differs"
        : !isSame(a.facts, b.facts)            ? "the facts differ"
                                               : nullptr;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QProcess>
#include <QtTest/QtTest>

/// A program that is killed right before each step that somebody could see, by a library that is
/// preloaded: see tests/services/mmsproxyd/kill_at.cpp.

/// The environment of a program that is killed before a step; 0 for one that is not.
inline QProcessEnvironment killedAt(int step)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    if (step > 0) {
        environment.insert("LD_PRELOAD", WMSG_KILL_AT_LIBRARY);
        environment.insert("WMSG_KILL_AT", QString::number(step));
        // Nobody looks how one ends that was not killed after all.
        environment.insert("ASAN_OPTIONS",
                           environment.value("ASAN_OPTIONS")
                               + ":verify_asan_link_order=0:detect_leaks=0");
    }
    return environment;
}

/// What is done with a program that is killed before one step, and before another when it has been
/// started again. It returns whether it was killed for the first time.
using KilledExchange = bool(int killAt, int killAgainAt);

/// Kills before each step of an exchange, which has more than `leastSteps`, and then once more
/// while it starts, which takes fewer steps than `startAgain`.
inline void killAtEveryStep(KilledExchange *exchange, int leastSteps, int startAgain)
{
    constexpr int kMostSteps = 1000; // no exchange takes so many
    constexpr int kMore = 4; // one exchange has a step more than another, now and then
    int steps = 0;
    for (int n = 1; n < steps + kMore; ++n) {
        const int again = 1 + n % startAgain;
        const bool wasKilled = exchange(n, again);
        if (QTest::currentTestFailed()) {
            qInfo("killed before step %d, and then before step %d", n, again);
            return;
        }
        steps = wasKilled ? n : steps;
        QVERIFY(steps < kMostSteps);
    }
    qInfo("killed before each of %d steps", steps);
    QVERIFY(steps > leastSteps);
}

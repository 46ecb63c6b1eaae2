// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/progress_gate.h"
#include "services/mmsproxyd/retry_schedule.h"

#include <QtTest/QtTest>

using namespace wmsg::proxy;
using namespace std::chrono_literals;

class TestRetrySchedule : public QObject {
    Q_OBJECT

private slots:
    void growsAndEnds_data();
    void growsAndEnds();
    void withoutPausesThereIsOneAttempt();
    void waitsForWhatRemains_data();
    void waitsForWhatRemains();

    void progressComesTenTimesASecond();
    void theEndOfProgressIsAlwaysTold();
    void progressOfUnknownLengthHasNoEnd();
};

static const RetrySchedule kSchedule({10s, 60s, 300s});

void TestRetrySchedule::growsAndEnds_data()
{
    QTest::addColumn<int>("failures");
    QTest::addColumn<int>("pause"); // seconds; -1: none
    QTest::addColumn<int>("lasting");

    QTest::newRow("first failure") << 1 << 10 << 10;
    QTest::newRow("second") << 2 << 60 << 60;
    QTest::newRow("last pause") << 3 << 300 << 300;
    QTest::newRow("behind the last") << 4 << -1 << 300;
    QTest::newRow("far behind it") << 1000000 << -1 << 300;
    QTest::newRow("no failure counts as one") << 0 << 10 << 10;
    QTest::newRow("less than none") << -5 << 10 << 10;
}

void TestRetrySchedule::growsAndEnds()
{
    QFETCH(int, failures);
    QFETCH(int, pause);
    QFETCH(int, lasting);

    const auto found = kSchedule.pauseAfter(failures);
    QCOMPARE(found ? int(found->count() / 1000) : -1, pause);
    QCOMPARE(int(kSchedule.lastingPauseAfter(failures).count() / 1000), lasting);
}

void TestRetrySchedule::withoutPausesThereIsOneAttempt()
{
    const RetrySchedule none;
    QVERIFY(!none.pauseAfter(1));
    QVERIFY(none.lastingPauseAfter(1) == 1min);
}

void TestRetrySchedule::waitsForWhatRemains_data()
{
    QTest::addColumn<qint64>("due");
    QTest::addColumn<qint64>("now");
    QTest::addColumn<int>("failures");
    QTest::addColumn<qint64>("wait");

    const qint64 now = 1700000000000;
    const qint64 year = 31536000000;
    QTest::newRow("nothing failed") << now + 5000 << now << 0 << qint64(0);
    QTest::newRow("due") << now << now << 1 << qint64(0);
    QTest::newRow("long due") << qint64(0) << now << 1 << qint64(0);
    QTest::newRow("in a while") << now + 4000 << now << 1 << qint64(4000);
    QTest::newRow("the whole pause") << now + 10000 << now << 1 << qint64(10000);
    QTest::newRow("longer than the pause") << now + 10001 << now << 1 << qint64(0);
    QTest::newRow("the clock was set back a year") << now << now - year << 2 << qint64(0);
    QTest::newRow("the clock was set forward") << now << now + year << 2 << qint64(0);
    QTest::newRow("beyond all time") << std::numeric_limits<qint64>::max() << now << 9 << qint64(0);
    QTest::newRow("before 1970") << now << qint64(-5000) << 3 << qint64(0);
}

void TestRetrySchedule::waitsForWhatRemains()
{
    QFETCH(qint64, due);
    QFETCH(qint64, now);
    QFETCH(int, failures);

    QTEST(qint64(kSchedule.remaining(due, now, failures).count()), "wait");
}

void TestRetrySchedule::progressComesTenTimesASecond()
{
    ProgressGate gate;
    int passed = 0;
    for (qint64 now = 5000; now < 8000; ++now) {
        passed += gate.passes(now, now, 100000) ? 1 : 0;
    }
    QCOMPARE(passed, 30);
}

void TestRetrySchedule::theEndOfProgressIsAlwaysTold()
{
    ProgressGate gate;
    QVERIFY(gate.passes(0, 10, 100));
    QVERIFY(!gate.passes(1, 99, 100));
    QVERIFY(gate.passes(1, 100, 100));
    QVERIFY(!gate.passes(500, 100, 100)); // once
    QVERIFY(!gate.passes(50, 10, 100)); // another attempt, too early
    QVERIFY(gate.passes(101, 20, 100));
    QVERIFY(gate.passes(102, 100, 100));
}

void TestRetrySchedule::progressOfUnknownLengthHasNoEnd()
{
    ProgressGate gate;
    QVERIFY(gate.passes(1000, 10, 0));
    QVERIFY(!gate.passes(1001, 20, 0));
    QVERIFY(gate.passes(1100, 30, 0));
}

QTEST_GUILESS_MAIN(TestRetrySchedule)
#include "tst_retry_schedule.moc"

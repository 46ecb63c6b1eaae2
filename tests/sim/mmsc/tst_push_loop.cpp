// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/push_loop.h"
#include "tests/sim/mmsc/fake_path.h"

#include <QtTest/QtTest>

using namespace wmsg::sim;
using Outcome = NotificationPath::Outcome;

namespace {

// Pauses that a test can wait for, and one that it never sees the end of.
constexpr int kSoon = 1;
constexpr int kNever = 3600000;

} // namespace

class TestPushLoop : public QObject {
    Q_OBJECT

private slots:
    void taken();
    void triesUntilThePhoneIsThere();
    void repeatsUntilItGoes();
    void refused_data();
    void refused();
    void lost();
    void doubled();
    void freshContent();
    void laterThanATimerTakes();
};

void TestPushLoop::taken()
{
    FakePath path;
    FaultPlan plan;
    PushLoop loop(path, plan, Occasion::Report, {kSoon, 0}, [] { return QByteArray("R"); });
    QSignalSpy pushed(&loop, &PushLoop::pushed);
    QSignalSpy heard(&loop, &PushLoop::heard);
    QVERIFY(path.pushed.isEmpty());
    loop.start(0);
    QTRY_COMPARE(pushed.size(), 1);
    QCOMPARE(heard.size(), 1);
    QCOMPARE(path.pushed, QList<QByteArray>{"R"});
}

void TestPushLoop::triesUntilThePhoneIsThere()
{
    FakePath path;
    path.next = {Outcome::NotReached, Outcome::NotReached};
    FaultPlan plan;
    PushLoop loop(path, plan, Occasion::Report, {kSoon, 0}, [] { return QByteArray("R"); });
    QSignalSpy pushed(&loop, &PushLoop::pushed);
    QSignalSpy heard(&loop, &PushLoop::heard);
    loop.start(0);
    QTRY_COMPARE(pushed.size(), 1);
    QCOMPARE(path.tries, 3);
    QCOMPARE(heard.size(), 1);
}

void TestPushLoop::repeatsUntilItGoes()
{
    FakePath path;
    FaultPlan plan;
    auto loop =
        std::make_unique<PushLoop>(path, plan, Occasion::Notify, PushLoop::Pauses{kNever, kSoon},
                                   [] { return QByteArray("N"); });
    loop->start(0);
    QTRY_VERIFY(path.tries >= 4);
    loop.reset();
    const int tries = path.tries;
    QTest::qWait(10 * kSoon);
    QCOMPARE(path.tries, tries);
}

void TestPushLoop::refused_data()
{
    QTest::addColumn<int>("again");
    QTest::addColumn<int>("tries");

    QTest::newRow("a report is given up") << 0 << 1;
    QTest::newRow("a notification is repeated") << kSoon << 2;
}

void TestPushLoop::refused()
{
    QFETCH(int, again);
    QFETCH(int, tries);
    FakePath path;
    path.next = {Outcome::Refused};
    FaultPlan plan;
    PushLoop loop(path, plan, Occasion::Notify, {kNever, again}, [] { return QByteArray("N"); });
    QSignalSpy pushed(&loop, &PushLoop::pushed);
    loop.start(0);
    QTRY_VERIFY(pushed.size() >= tries);
    QVERIFY(path.tries >= tries);
    QVERIFY(again > 0 || path.tries == 1);
}

void TestPushLoop::lost()
{
    FakePath path;
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "notify 1 lost"), QString());
    PushLoop loop(path, plan, Occasion::Notify, {kNever, 0}, [] { return QByteArray("N"); });
    QSignalSpy pushed(&loop, &PushLoop::pushed);
    QSignalSpy heard(&loop, &PushLoop::heard);
    loop.start(0);
    QTRY_COMPARE(pushed.size(), 1);
    QCOMPARE(path.tries, 0);
    QCOMPARE(heard.size(), 0);
    loop.start(0); // a repetition is not lost
    QTRY_COMPARE(pushed.size(), 2);
    QCOMPARE(path.tries, 1);
}

void TestPushLoop::doubled()
{
    FakePath path;
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "notify 1 doubled"), QString());
    PushLoop loop(path, plan, Occasion::Notify, {kNever, 0}, [] { return QByteArray("N"); });
    QSignalSpy pushed(&loop, &PushLoop::pushed);
    QSignalSpy heard(&loop, &PushLoop::heard);
    loop.start(0);
    QTRY_COMPARE(pushed.size(), 1);
    QCOMPARE(path.pushed, (QList<QByteArray>{"N", "N"}));
    QCOMPARE(heard.size(), 2);
}

void TestPushLoop::freshContent()
{
    FakePath path;
    FaultPlan plan;
    int made = 0;
    PushLoop loop(path, plan, Occasion::Notify, {kSoon, kSoon},
                  [&made] { return QByteArray::number(++made); });
    loop.start(0);
    QTRY_VERIFY(path.pushed.size() >= 2);
    QCOMPARE(path.pushed.mid(0, 2), (QList<QByteArray>{"1", "2"}));
}

void TestPushLoop::laterThanATimerTakes()
{
    FakePath path;
    FaultPlan plan;
    PushLoop loop(path, plan, Occasion::Notify, {kSoon, kSoon}, [] { return QByteArray("N"); });
    loop.start(qint64(1) << 40);
    QTest::qWait(20);
    QCOMPARE(path.tries, 0);
}

QTEST_GUILESS_MAIN(TestPushLoop)
#include "tst_push_loop.moc"

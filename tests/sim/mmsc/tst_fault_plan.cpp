// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/fault_plan.h"

#include <QtTest/QtTest>

using namespace wmsg::sim;

class TestFaultPlan : public QObject {
    Q_OBJECT

private slots:
    void counting_data();
    void counting();
    void everyFault();
    void occasionsCountAlone();
    void laterLinesWin();
    void watchesUploads();
    void badLines_data();
    void badLines();
    void aBadTextChangesNothing();
};

void TestFaultPlan::counting_data()
{
    QTest::addColumn<QString>("which");
    QTest::addColumn<QList<int>>("hits");

    QTest::newRow("one") << "2" << QList<int>{2};
    QTest::newRow("from to") << "2-3" << QList<int>{2, 3};
    QTest::newRow("from to the same") << "4-4" << QList<int>{4};
    QTest::newRow("from on") << "4-" << QList<int>{4, 5};
    QTest::newRow("all") << "*" << QList<int>{1, 2, 3, 4, 5};
}

void TestFaultPlan::counting()
{
    QFETCH(QString, which);
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "send " + which + " http-status=503"), QString());
    QList<int> hits;
    for (int n = 1; n <= 5; ++n) {
        if (plan.next(Occasion::Send).httpStatus == 503) {
            hits.append(n);
        }
    }
    QTEST(hits, "hits");
}

void TestFaultPlan::everyFault()
{
    FaultPlan plan;
    QCOMPARE(plan.read("plan",
                       "# nothing\n\n"
                       "send 1 response-status=192 delay=1.5 up-rate=7\t down-rate=8 # and so on\n"
                       "request 1 http-status=404 redirect=http://other/x\n"
                       "acknowledge * cut-up-after=0\n"
                       "notify-response * cut-after=9\n"
                       "retrieve * garbage\n"
                       "notify * lost\n"
                       "report * doubled\n"),
             QString());
    const Faults send = plan.next(Occasion::Send);
    QCOMPARE(send.responseStatus, std::optional<quint8>(192));
    QCOMPARE(send.delay, std::optional<int>(1500));
    QCOMPARE(send.upRate, std::optional<qint64>(7));
    QCOMPARE(send.downRate, std::optional<qint64>(8));
    QVERIFY(!send.isAnsweredAtTheDoor());
    const Faults request = plan.next(Occasion::Request);
    QCOMPARE(request.httpStatus, std::optional<int>(404));
    QCOMPARE(request.redirect, std::optional<QByteArray>("http://other/x"));
    QVERIFY(request.isAnsweredAtTheDoor());
    QCOMPARE(plan.next(Occasion::Acknowledge).cutUpAfter, std::optional<qint64>(0));
    QCOMPARE(plan.next(Occasion::NotifyResponse).cutAfter, std::optional<qint64>(9));
    QVERIFY(plan.next(Occasion::Retrieve).garbage);
    const Faults notify = plan.next(Occasion::Notify);
    QVERIFY(notify.lost && !notify.doubled);
    const Faults report = plan.next(Occasion::Report);
    QVERIFY(report.doubled && !report.lost);
}

void TestFaultPlan::occasionsCountAlone()
{
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "retrieve 2 garbage"), QString());
    QVERIFY(!plan.next(Occasion::Retrieve).garbage);
    QVERIFY(!plan.next(Occasion::Send).garbage);
    QVERIFY(!plan.next(Occasion::Request).garbage);
    QVERIFY(plan.next(Occasion::Retrieve).garbage);
}

void TestFaultPlan::laterLinesWin()
{
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "send * http-status=500 delay=1\nsend 1 http-status=404"),
             QString());
    const Faults faults = plan.next(Occasion::Send);
    QCOMPARE(faults.httpStatus, std::optional<int>(404));
    QCOMPARE(faults.delay, std::optional<int>(1000));
    QCOMPARE(plan.next(Occasion::Send).httpStatus, std::optional<int>(500));
}

void TestFaultPlan::watchesUploads()
{
    FaultPlan plan;
    QCOMPARE(plan.read("plan", "send 1 down-rate=5"), QString());
    QVERIFY(!plan.watchesUploads());
    QCOMPARE(plan.read("plan", "send 1 up-rate=5"), QString());
    QVERIFY(plan.watchesUploads());
}

void TestFaultPlan::badLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("problem");

    const auto row = [](const char *line, const char *problem) {
        QTest::newRow(line) << line << problem;
    };
    row("sent 1 garbage", "\"sent\" is nothing that happens here");
    row("send", "a line has an occasion, which one, and what happens");
    row("send 1", "a line has an occasion, which one, and what happens");
    for (const char *which : {"0", "2-1", "x", "-", "1-2-3", "-1", "1,2", "9999999999"}) {
        QTest::newRow(which)
            << QString("send %1 garbage").arg(which)
            << QString("\"%1\" is not which one: N, N-M, N- or *, counted from 1").arg(which);
    }
    row("send 1 fail", "\"fail\" is no fault");
    row("send 1 lost", "\"lost\" cannot happen to this");
    row("notify 1 garbage", "\"garbage\" cannot happen to this");
    row("retrieve 1 response-status=130", "\"response-status\" cannot happen to this");
    for (const char *fault :
         {"http-status", "http-status=", "http-status=199", "http-status=600", "http-status=5x",
          "response-status=128", "response-status=256", "delay=-1", "delay=nan", "delay=3601",
          "up-rate=0", "down-rate=0", "cut-after=-1", "cut-up-after=1.5", "garbage=1",
          "redirect=there", "redirect="}) {
        QTest::newRow(fault) << QString("send 1 %1").arg(fault)
                             << QString("\"%1\" has no good value").arg(fault);
    }
}

void TestFaultPlan::badLines()
{
    QFETCH(QString, line);
    QFETCH(QString, problem);
    FaultPlan plan;
    QCOMPARE(plan.read("a.plan", "send 1 garbage\n" + line), "a.plan:2: " + problem);
}

void TestFaultPlan::aBadTextChangesNothing()
{
    FaultPlan plan;
    QVERIFY(!plan.read("plan", "send * garbage\nsend * nonsense").isEmpty());
    QVERIFY(!plan.next(Occasion::Send).garbage);
}

QTEST_GUILESS_MAIN(TestFaultPlan)
#include "tst_fault_plan.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"

#include <QtTest/QtTest>

#include <unistd.h>

using wmsg::service::StopSignals;

namespace {

volatile std::sig_atomic_t handled = 0;

void count(int)
{
    handled = handled + 1;
}

} // namespace

class TestStopSignals : public QObject {
    Q_OBJECT

private slots:
    void tells_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
    void tells()
    {
        QFETCH(int, number);
        const StopSignals stop;
        QSignalSpy spy(&stop, &StopSignals::stopped);
        QCOMPARE(::raise(number), 0);
        QCOMPARE(::raise(number), 0);
        QCOMPARE(spy.count(), 0);
        QTRY_COMPARE(spy.count(), 2);
        QCOMPARE(spy.at(0).at(0).toInt(), number);
    }

    void aPeerThatLeftKillsNobody()
    {
        const StopSignals stop;
        int ends[2];
        QCOMPARE(::pipe(ends), 0);
        ::close(ends[0]);
        QCOMPARE(::write(ends[1], "x", 1), ssize_t(-1));
        QCOMPARE(errno, EPIPE);
        ::close(ends[1]);
        QCOMPARE(::raise(SIGXFSZ), 0);
    }

    void restoresWhatWasThere()
    {
        std::signal(SIGTERM, count);
        {
            const StopSignals stop;
            QCOMPARE(::raise(SIGTERM), 0);
            QCOMPARE(int(handled), 0);
        }
        QCOMPARE(::raise(SIGTERM), 0);
        QCOMPARE(int(handled), 1);
        std::signal(SIGTERM, SIG_DFL);
    }
};

QTEST_GUILESS_MAIN(TestStopSignals)
#include "tst_stop_signals.moc"

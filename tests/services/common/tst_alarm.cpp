// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/alarm.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtTest/QtTest>

#include <ctime>

using namespace std::chrono_literals;
using wmsg::service::Alarm;

namespace {

/// What the system says about the timers of this process.
QByteArrayList timers()
{
    QByteArrayList found;
    const QDir folder("/proc/self/fdinfo");
    for (const QString &name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (text.contains("clockid:")) {
            found.append(text);
        }
    }
    return found;
}

} // namespace

class TestAlarm : public QObject {
    Q_OBJECT

private slots:
    void ringsOnce()
    {
        Alarm alarm;
        QSignalSpy rang(&alarm, &Alarm::rang);
        QElapsedTimer time;
        time.start();
        alarm.start(50ms);
        QVERIFY(alarm.isActive());
        QTRY_COMPARE(rang.size(), 1);
        QVERIFY(time.elapsed() >= 50);
        QVERIFY(!alarm.isActive());
        QTest::qWait(20);
        QCOMPARE(rang.size(), 1);
    }

    void ringsAtOnce_data()
    {
        QTest::addColumn<int>("time");
        QTest::newRow("no time") << 0;
        QTest::newRow("less than none") << -5;
    }
    void ringsAtOnce()
    {
        QFETCH(int, time);
        Alarm alarm;
        QSignalSpy rang(&alarm, &Alarm::rang);
        alarm.start(std::chrono::milliseconds(time));
        QCOMPARE(rang.size(), 0); // not from inside the call
        QTRY_COMPARE(rang.size(), 1);
    }

    void isSetAnew()
    {
        Alarm alarm;
        QSignalSpy rang(&alarm, &Alarm::rang);
        alarm.start(1h);
        alarm.start(0ms);
        QTRY_COMPARE(rang.size(), 1);
        connect(&alarm, &Alarm::rang, &alarm, [&] {
            if (rang.size() < 4) {
                alarm.start(0ms);
            }
        });
        alarm.start(0ms);
        QTRY_COMPARE(rang.size(), 4);
        QVERIFY(!alarm.isActive());
    }

    void stops()
    {
        Alarm alarm;
        QSignalSpy rang(&alarm, &Alarm::rang);
        alarm.stop();
        alarm.start(0ms);
        alarm.stop();
        QVERIFY(!alarm.isActive());
        QTest::qWait(20);
        QCOMPARE(rang.size(), 0);
        alarm.start(0ms);
        QTRY_COMPARE(rang.size(), 1);
    }

    /// The clock that does not stand still is asked for; a test cannot put the machine to sleep.
    void goesOnWhileTheDeviceSleeps()
    {
        QCOMPARE(timers().size(), 0);
        Alarm alarm;
        alarm.start(24h * 7);
        const QByteArrayList all = timers();
        QCOMPARE(all.size(), 1);
        QVERIFY2(all[0].contains("clockid: " + QByteArray::number(CLOCK_BOOTTIME) + "\n"),
                 all[0].constData());
        const QRegularExpression value("it_value: \\((\\d+), ");
        const qint64 seconds = value.match(QString::fromLatin1(all[0])).captured(1).toLongLong();
        QVERIFY2(seconds > 604700 && seconds <= 604800, all[0].constData());
    }
};

QTEST_GUILESS_MAIN(TestAlarm)
#include "tst_alarm.moc"

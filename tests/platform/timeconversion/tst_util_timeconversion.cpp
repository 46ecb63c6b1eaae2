// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/timeconversion/util_timeconversion.h"

#include <QtTest/QtTest>

#include <ctime>
#include <limits>

namespace {

struct Row {
    const char *name;
    const char *zone;
    long seconds;
    const char *local;
};

// clang-format off
const Row kRows[] = {
    // name                     zone                             seconds      local time
    {"the epoch",               "UTC0",                          0L,          "1970-01-01T00:00:00"},
    {"the second before it",    "UTC0",                          -1L,         "1969-12-31T23:59:59"},
    {"31 bits",                 "UTC0",                          2147483647L, "2038-01-19T03:14:07"},
    {"32 bits",                 "UTC0",                          4294967295L, "2106-02-07T06:28:15"},
    {"east of Greenwich",       "EST-8",                         1000000000L, "2001-09-09T09:46:40"},
    {"west of Greenwich",       "EST5",                          1000000000L, "2001-09-08T20:46:40"},
    {"winter time",             "CET-1CEST,M3.5.0,M10.5.0/3",    1704067200L, "2024-01-01T01:00:00"},
    {"summer time",             "CET-1CEST,M3.5.0,M10.5.0/3",    1719792000L, "2024-07-01T02:00:00"},
};
// clang-format on

void setZone(const char *zone)
{
    qputenv("TZ", zone);
    tzset();
}

} // namespace

class TestTimeConversion : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { setZone("UTC0"); }

    void bothWays_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<long>("seconds");
        QTest::addColumn<QString>("local");
        for (const Row &row : kRows) {
            QTest::newRow(row.name) << QByteArray(row.zone) << row.seconds << QString(row.local);
        }
    }

    void bothWays()
    {
        QFETCH(QByteArray, zone);
        QFETCH(long, seconds);
        QFETCH(QString, local);
        setZone(zone.constData());
        const QDateTime time = UTIL_TimeConversion::fromUTC(seconds);
        QCOMPARE(time.timeSpec(), Qt::LocalTime);
        QCOMPARE(time.toString("yyyy-MM-ddTHH:mm:ss"), local);
        QCOMPARE(UTIL_TimeConversion::toUTC(QDateTime::fromString(local, Qt::ISODate)), seconds);
        QCOMPARE(UTIL_TimeConversion::toUTC(time), seconds);
    }

    void millisecondsAreDropped()
    {
        setZone("UTC0");
        const QDateTime time(QDate(2001, 9, 9), QTime(1, 46, 40, 999));
        QCOMPARE(UTIL_TimeConversion::toUTC(time), 1000000000L);
    }

    void timeInAnotherSpecCountsAsItself()
    {
        setZone("EST-8");
        const QDateTime time(QDate(2001, 9, 9), QTime(1, 46, 40), Qt::UTC);
        QCOMPARE(UTIL_TimeConversion::toUTC(time), 1000000000L);
    }

    void skippedTimeIsAnHourLater()
    {
        setZone("CET-1CEST,M3.5.0,M10.5.0/3");
        const QDateTime time(QDate(2024, 3, 31), QTime(2, 30));
        QCOMPARE(UTIL_TimeConversion::toUTC(time), 1711848600L);
        QCOMPARE(UTIL_TimeConversion::fromUTC(1711848600L).time(), QTime(3, 30));
    }

    void invalidGivesMinusOne()
    {
        QCOMPARE(UTIL_TimeConversion::toUTC(QDateTime()), -1L);
        QCOMPARE(UTIL_TimeConversion::toUTC(QDateTime(QDate(2001, 2, 31), QTime(1, 0))), -1L);
    }

    void secondsBeyondAllDatesAreInvalid()
    {
        QVERIFY(!UTIL_TimeConversion::fromUTC(std::numeric_limits<long>::max()).isValid());
        QVERIFY(!UTIL_TimeConversion::fromUTC(std::numeric_limits<long>::min()).isValid());
    }
};

QTEST_GUILESS_MAIN(TestTimeConversion)
#include "tst_util_timeconversion.moc"

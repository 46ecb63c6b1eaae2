// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/text_view.h"

#include <QtTest/QtTest>

#include <ctime>

using namespace wmsg::cli;

class TestTextView : public QObject {
    Q_OBJECT

private slots:
    void escapes_data();
    void escapes();
    void cuts();
    void sizes();
    void durations();
    void dates();
};

void TestTextView::escapes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("plain") << "Hello \"you\""
                           << "Hello \"you\"";
    QTest::newRow("letters of the world")
        << QString::fromUtf8("Grüße 😀 日本") << QString::fromUtf8("Grüße 😀 日本");
    QTest::newRow("line break") << "a\r\n\tb"
                                << "a\\r\\n\\tb";
    QTest::newRow("backslash") << "a\\nb"
                               << "a\\\\nb";
    QTest::newRow("escape") << "\x1B[2J"
                            << "\\x1B[2J";
    QTest::newRow("NUL") << QString(QChar(0)) << "\\x00";
    QTest::newRow("delete") << "\x7F"
                            << "\\x7F";
    QTest::newRow("control of eight bits") << QString(QChar(0x9B)) << "\\x9B";
    QTest::newRow("turned direction") << QString(QChar(0x202E)) << "\\u{202E}";
    QTest::newRow("isolate") << QString(QChar(0x2066)) << "\\u{2066}";
    QTest::newRow("line separator") << QString(QChar(0x2028)) << "\\u{2028}";
    QTest::newRow("nothing to see") << QString(QChar(0x200B)) << "\\u{200B}";
    QTest::newRow("first half") << QString(QChar(0xD83D)) << "\\u{D83D}";
    QTest::newRow("second half") << QString(QChar(0xDE00)) + "a"
                                 << "\\u{DE00}a";
}

void TestTextView::escapes()
{
    QFETCH(QString, text);
    QTEST(printable(text), "shown");
    QCOMPARE(harmless(u"\x1B\\n"), "\\x1B\\n");
}

void TestTextView::cuts()
{
    QCOMPARE(shortened(u"abc", 3), "abc");
    QCOMPARE(shortened(u"abcd", 3), QString::fromUtf8("abc… (+1 characters)"));
    QCOMPARE(shortened(u"abcd", 0), "abcd");
    const QString smile = QString::fromUtf8("ab😀");
    QCOMPARE(shortened(smile, 3), QString::fromUtf8("ab… (+2 characters)"));
}

void TestTextView::sizes()
{
    QCOMPARE(sizeInWords(0), "0 bytes");
    QCOMPARE(sizeInWords(1), "1 byte");
    QCOMPARE(sizeInWords(1023), "1023 bytes");
    QCOMPARE(sizeInWords(1024), "1.0 KiB (1024 bytes)");
    QCOMPARE(sizeInWords(3 << 20), "3.0 MiB (3145728 bytes)");
}

void TestTextView::durations()
{
    QCOMPARE(durationInWords(0), "0 seconds (0 s)");
    QCOMPARE(durationInWords(1), "1 second (1 s)");
    QCOMPARE(durationInWords(183661), "2 days 3 hours 1 minute 1 second (183661 s)");
    QCOMPARE(durationInWords(-60), "past by 1 minute (-60 s)");
}

void TestTextView::dates()
{
    qputenv("TZ", "EST-05:30");
    tzset();
    QCOMPARE(dateInWords(QDateTime::fromSecsSinceEpoch(0)), "1970-01-01 05:30:00 +0530 (EST)");
    qputenv("TZ", "YYY3");
    tzset();
    QCOMPARE(dateInWords(QDateTime::fromSecsSinceEpoch(86400)), "1970-01-01 21:00:00 -0300 (YYY)");
    QCOMPARE(dateInWords(QDateTime()), "not a date");
}

QTEST_GUILESS_MAIN(TestTextView)
#include "tst_text_view.moc"

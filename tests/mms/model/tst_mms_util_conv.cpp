// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_util_conv.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/time_zone.h"

#include <QtTest/QtTest>

#include <ctime>
#include <memory>

namespace {

using Wide = unsigned short;
using WidePointer = std::unique_ptr<Wide, decltype(&free)>;

WidePointer wideOf(const QString &text)
{
    return WidePointer(wide(text), &free);
}

/// The units of a wide string, in hex.
QString unitsOf(const Wide *text)
{
    QStringList units;
    for (; *text != 0; ++text) {
        units += QString::number(*text, 16).toUpper();
    }
    return units.join(' ');
}

QString shownEntries(const QList<WMFMEntry> &entries)
{
    QStringList shown;
    for (const WMFMEntry &entry : entries) {
        shown += QString("%1:%2").arg(entry.getEntryType()).arg(entry.getEntryVal());
    }
    return shown.join(' ');
}

} // namespace

class TestMmsUtilConv : public QObject {
    Q_OBJECT

private slots:
    void lengths();
    void copyOfCharacters();
    void copyOfBytes();
    void entry_data();
    void entry();
    void entryOfNothing();
    void listToWide_data();
    void listToWide();
    void listToNowhere();
    void wideToList_data();
    void wideToList();
    void wideToNowhere();
    void times();
};

void TestMmsUtilConv::lengths()
{
    const WidePointer text = wideOf("abcde");
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(text.get(), 0), 5U);
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(text.get(), 1), 1U);
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(text.get(), 5), 5U);
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(text.get(), 6), 5U);
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(wideOf("").get(), 0), 0U);
    QCOMPARE(MMS_UTIL_Conv::wcsnlen(nullptr, 3), 0U);
}

void TestMmsUtilConv::copyOfCharacters()
{
    const auto copied = [](const QString &text, unsigned int n) {
        // Memory for these units alone, so that one too many is seen.
        const auto count = size_t(qMin<qsizetype>(text.size(), n)) + 1;
        const std::unique_ptr<Wide[]> target(new Wide[count]);
        MMS_UTIL_Conv::qwcsncpy(target.get(), text, n);
        return unitsOf(target.get());
    };
    QCOMPARE(copied("ab", 2), "61 62");
    QCOMPARE(copied("ab", 1), "61");
    QCOMPARE(copied("ab", 9), "61 62");
    QCOMPARE(copied("ab", 0), "");
    QCOMPARE(copied("é你🎉", 9), "E9 4F60 D83C DF89"); // all 16 bits of a unit
    QCOMPARE(copied(QString(), 3), "");
}

void TestMmsUtilConv::copyOfBytes()
{
    signed char *copy = nullptr;
    const char source[] = "abc";
    MMS_UTIL_Conv::copy_charToCHAR(&copy, source);
    QVERIFY(static_cast<const void *>(copy) != source);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(copy)), QByteArray("abc"));
    free(copy);
    MMS_UTIL_Conv::copy_charToCHAR(&copy, "");
    QVERIFY(copy);
    QCOMPARE(int(*copy), 0);
    free(copy);
    MMS_UTIL_Conv::copy_charToCHAR(&copy, nullptr);
    QVERIFY(!copy);
}

void TestMmsUtilConv::entry_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    const auto row = [](const char *name, const QString &text, int type, const QString &value) {
        QTest::newRow(name) << text << type << value;
    };
    row("e-mail", "ann@example.org", 0, "ann@example.org");
    row("an at sign alone", "@", 0, "@");
    row("number", "+4312345", 1, "+4312345");
    row("anything else", "Ann", 1, "Ann");
    row("empty", "", 1, "");
    row("arabic", "مرحبا@example.org", 0, "مرحبا@example.org");
    row("emoji", "🎉🎉🎉", 1, "🎉🎉🎉");
    row("short chinese", "你好", 1, "你好");
    row("an address of three-byte characters is cut", "你好世界你好世界", 1, "你好世界你好");
    row("mixed chinese", "你好@ab.c", 0, "你好@ab.c");
}

void TestMmsUtilConv::entry()
{
    QFETCH(QString, text);
    QFETCH(int, type);
    QFETCH(QString, value);
    const WidePointer source = wideOf(text);
    WMFMEntry entry(1, "old", "Name");
    LogCapture log;
    MMS_UTIL_Conv::setWMFMEntry(source.get(), &entry);
    QCOMPARE(int(entry.getEntryType()), type);
    QCOMPARE(entry.getEntryVal(), value);
    QVERIFY(!entry.getEntryVal().isNull());
    QCOMPARE(log.lines(), QStringList{"utf8_str=" + QString::fromLatin1(value.toUtf8())});
    QCOMPARE(shownText(source.get()), '"' + text + '"'); // it stays as it is
}

void TestMmsUtilConv::entryOfNothing()
{
    LogCapture log;
    WMFMEntry entry;
    MMS_UTIL_Conv::setWMFMEntry(nullptr, &entry);
    QCOMPARE(int(entry.getEntryType()), 127);
    MMS_UTIL_Conv::setWMFMEntry(wideOf("a").get(), nullptr);
    QCOMPARE(log.lines(), QStringList());
}

void TestMmsUtilConv::listToWide_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("units");
    QTest::newRow("one") << QStringList{"+43"} << "2B 34 33";
    QTest::newRow("two") << QStringList{"a", "b"} << "61 2C 62";
    QTest::newRow("no separator behind the last") << QStringList{"a", "b", "c"} << "61 2C 62 2C 63";
    QTest::newRow("wide") << QStringList{"你", "é", "🎉"} << "4F60 2C E9 2C D83C DF89";
    QTest::newRow("empty value") << QStringList{"", "b"} << "2C 62";
    QTest::newRow("one empty value") << QStringList{""} << "";
}

void TestMmsUtilConv::listToWide()
{
    QFETCH(QStringList, values);
    QList<WMFMEntry> list;
    for (const QString &value : values) {
        list += WMFMEntry(1, value);
    }
    Wide *out = nullptr;
    MMS_UTIL_Conv::copyAddress_AddrListToWchar(list, &out);
    QVERIFY(out);
    QTEST(unitsOf(out), "units");
    free(out);
}

void TestMmsUtilConv::listToNowhere()
{
    Wide unit = 7;
    Wide *out = &unit;
    MMS_UTIL_Conv::copyAddress_AddrListToWchar({}, &out); // leaves what it finds
    QCOMPARE(out, &unit);
    MMS_UTIL_Conv::copyAddress_AddrListToWchar({WMFMEntry(1, "a")}, nullptr);
}

void TestMmsUtilConv::wideToList_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("entries");
    QTest::newRow("one") << "a@b"
                         << "0:a@b";
    QTest::newRow("three") << "1,a@b,3"
                           << "1:1 0:a@b 1:3";
    QTest::newRow("empty pieces are skipped") << ",,1,,2,"
                                              << "1:1 1:2";
    QTest::newRow("a blank is no empty piece") << "1, ,2"
                                               << "1:1 1:  1:2";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("wide") << "你@好,🎉"
                          << "0:你@好 1:🎉";
}

void TestMmsUtilConv::wideToList()
{
    QFETCH(QString, text);
    const WidePointer source = wideOf(text);
    QList<WMFMEntry> list;
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(source.get(), &list);
    QTEST(shownEntries(list), "entries");
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(wideOf("9").get(), &list);
    QCOMPARE(list.last().getEntryVal(), "9"); // appended
}

void TestMmsUtilConv::wideToNowhere()
{
    QList<WMFMEntry> list = {WMFMEntry(1, "a")};
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(nullptr, &list);
    QCOMPARE(list.size(), 1);
    const WidePointer source = wideOf("a,b");
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(source.get(), nullptr);
    QCOMPARE(shownText(source.get()), "\"a,b\"");
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(source.get(), &list);
    QCOMPARE(shownText(source.get()), "\"a\""); // the input is cut
}

void TestMmsUtilConv::times()
{
    const TimeZone zone("UTC-2");
    const QDateTime noon(QDate(2024, 5, 1), QTime(12, 0));
    QCOMPARE(MMS_UTIL_Conv::toUTC(noon), 1714557600L);
    QCOMPARE(MMS_UTIL_Conv::fromUTC(1714557600), noon);
    const time_t before = time(nullptr);
    const long now = MMS_UTIL_Conv::getCurrentUTCTime();
    QVERIFY(now >= before && now <= time(nullptr));
}

QTEST_GUILESS_MAIN(TestMmsUtilConv)
#include "tst_mms_util_conv.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "util/mms_util_common.h"

#include <QtTest/QtTest>

#include <memory>

namespace {

constexpr int kUnset = 127;

/// What a test says of an entry: type, value and name in one text, so that a failure shows all
/// three.
QString spell(int type, const QString &value, const QString &name)
{
    return QStringLiteral("%1|%2|%3").arg(QString::number(type), value, name);
}

QString spell(const WMFMEntry &entry)
{
    return spell(entry.getEntryType(), entry.getEntryVal(), entry.getContactName());
}

QString spell(const QValueList<WMFMEntry> &entries)
{
    QStringList texts;
    for (const WMFMEntry &entry : entries) {
        texts.append(spell(entry));
    }
    return texts.join("; ");
}

enum Way { Read = 1, Write = 2, Both = 3 };

struct EntryRow {
    const char *name;
    const char *text;
    int type;
    const char *value;
    const char *contact;
    Way way;
};

// clang-format off
const EntryRow kEntries[] = {
    // name                        text                      type    value             contact   way
    {"e-mail with a name",         "<Ann>[EMAIL]ann@x",      0,      "ann@x",          "Ann",    Both},
    {"number without a name",      "<>[PLMN]+15550100",      1,      "+15550100",      "",       Both},
    {"value of one blank",         "<>[PLMN] ",              1,      " ",              "",       Both},
    {"blanks are kept",            "< A >[EMAIL] a@b ",      0,      " a@b ",          " A ",    Both},
    {"not Latin-1",                "<\u65e5>[EMAIL]\u672c",  0,      "\u672c",         "\u65e5", Both},
    {"commas",                     "<x,y>[EMAIL]a,b",        0,      "a,b",            "x,y",    Both},
    {"bracket in the value",       "<a>[PLMN]1]2",           1,      "1]2",            "a",      Both},
    {"entry in the value",         "<a>[PLMN]<b>[EMAIL]c",   1,      "<b>[EMAIL]c",    "a",      Both},
    {"name with >",                "<a>b>[PLMN]1",           1,      "1",              "a>b",    Write},
    {"name with > reads short",    "<a>b>[PLMN]1",           1,      "1",              "a",      Read},
    {"name with ] loses the rest", "<a]b>[PLMN]1",           kUnset, "b>[PLMN]1",      "a]b",    Read},
    {"unknown word",               "<n>[UNKNOWN]v",          kUnset, "v",              "n",      Read},
    {"other word",                 "<n>[FAX]v",              kUnset, "v",              "n",      Read},
    {"word in lower case",         "<n>[email]v",            kUnset, "v",              "n",      Read},
    {"word with blanks",           "<n>[ EMAIL ]v",          kUnset, "v",              "n",      Read},
    {"no value",                   "<n>[PLMN]",              1,      "",               "n",      Read},
    {"type before name",           "[PLMN]v<a>",             1,      "v<a>",           "a",      Read},
    {"text around",                "x<a>y[EMAIL]v",          0,      "v",              "a",      Read},
    {"no <",                       "a>[PLMN]1",              1,      "1",              "",       Read},
    {"no >",                       "<a[PLMN]1",              1,      "1",              "",       Read},
    {"no [",                       "<a>PLMN]1",              kUnset, "1",              "a",      Read},
    {"no ]",                       "<a>[PLMN1",              kUnset, "",               "a",      Read},
    {"> before <",                 ">a<[PLMN]1",             1,      "1",              "",       Read},
    {"] before [",                 "<a>]EMAIL[1",            kUnset, "EMAIL[1",        "a",      Read},
    {"nothing but brackets",       "<>[]",                   kUnset, "",               "",       Read},
    {"only <",                     "<",                      kUnset, "",               "",       Read},
    {"only >",                     ">",                      kUnset, "",               "",       Read},
    {"only [",                     "[",                      kUnset, "",               "",       Read},
    {"only ]",                     "]",                      kUnset, "",               "",       Read},
    {"no brackets",                "ann@x",                  kUnset, "",               "",       Read},
    {"empty",                      "",                       kUnset, "",               "",       Read},
};
// clang-format on

} // namespace

class TestUtilAddress : public QObject {
    Q_OBJECT

private slots:
    void entries_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("contact");
        QTest::addColumn<int>("way");
        for (const EntryRow &row : kEntries) {
            QTest::newRow(row.name)
                << QString::fromUtf8(row.text) << row.type << QString::fromUtf8(row.value)
                << QString::fromUtf8(row.contact) << int(row.way);
        }
    }

    void entries()
    {
        QFETCH(QString, text);
        QFETCH(int, type);
        QFETCH(QString, value);
        QFETCH(QString, contact);
        QFETCH(int, way);
        if (way & Write) {
            const WMFMEntry entry(static_cast<unsigned char>(type), value, contact);
            QCOMPARE(MMS_UTIL_Common::entryToString(entry), text);
        }
        if (way & Read) {
            const std::unique_ptr<WMFMEntry> fresh(MMS_UTIL_Common::stringToEntry(text));
            QCOMPARE(spell(*fresh), spell(type, value, contact));
            QVERIFY(!fresh->getContactName().isNull() && !fresh->getEntryVal().isNull());

            WMFMEntry used(0, "old", "old name"); // an unknown word gives type 127 here too
            MMS_UTIL_Common::stringToEntry(text, &used);
            QCOMPARE(spell(used), spell(type, value, contact));
        }
    }

    void everyPrefixOfAnEntryIsRead()
    {
        const QString whole = "<Ann>[EMAIL]ann@x";
        for (int size = 0; size < whole.size(); ++size) {
            WMFMEntry entry;
            MMS_UTIL_Common::stringToEntry(whole.left(size), &entry);
            const bool hasName = size > whole.indexOf('>');
            const bool hasType = size > whole.indexOf(']');
            QCOMPARE(spell(entry),
                     spell(hasType ? 0 : kUnset, hasType ? whole.mid(12, size - 12) : "",
                           hasName ? "Ann" : ""));
        }
    }

    void invalidEntryHasNoText()
    {
        QCOMPARE(MMS_UTIL_Common::entryToString(WMFMEntry()), QString(""));
        QCOMPARE(MMS_UTIL_Common::entryToString(WMFMEntry(0, "", "Ann")), QString(""));
        QCOMPARE(MMS_UTIL_Common::entryToString(WMFMEntry(127, "v", "n")), QString(""));
        QCOMPARE(MMS_UTIL_Common::entryToString(WMFMEntry(5, "v", "n")), QString(""));
    }

    void nullNameIsWrittenAsNone()
    {
        const WMFMEntry entry(1, "12", QString());
        QCOMPARE(MMS_UTIL_Common::entryToString(entry), QString("<>[PLMN]12"));
    }

    void nullTextIsRead()
    {
        const std::unique_ptr<WMFMEntry> entry(MMS_UTIL_Common::stringToEntry(QString()));
        QCOMPARE(spell(*entry), spell(kUnset, "", ""));
        QVERIFY(MMS_UTIL_Common::stringToEntryList(QString()).isEmpty());
    }

    void nullTargetsAreIgnored()
    {
        MMS_UTIL_Common::stringToEntry("<a>[PLMN]1", nullptr);
        MMS_UTIL_Common::stringToEntryList("<a>[PLMN]1", nullptr);
    }

    // the last entry is followed by a comma too
    void listIsWritten()
    {
        const WMFMEntry ann(0, "ann@x", "Ann");
        const WMFMEntry number(1, "12");
        QCOMPARE(MMS_UTIL_Common::entryListToString({}), QString(""));
        QCOMPARE(MMS_UTIL_Common::entryListToString({ann}), QString("<Ann>[EMAIL]ann@x,"));
        QCOMPARE(MMS_UTIL_Common::entryListToString({ann, number}),
                 QString("<Ann>[EMAIL]ann@x,<>[PLMN]12,"));
        QCOMPARE(MMS_UTIL_Common::entryListToString({WMFMEntry(), number, WMFMEntry(1, "")}),
                 QString(",<>[PLMN]12,,"));
    }

    void listIsRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("entries");
        const QString two = "0|a@b|A; 1|1|";
        QTest::newRow("as written") << "<A>[EMAIL]a@b,<>[PLMN]1," << two;
        QTest::newRow("no comma at the end") << "<A>[EMAIL]a@b,<>[PLMN]1" << two;
        QTest::newRow("blanks after the commas") << "<A>[EMAIL]a@b, <>[PLMN]1, " << two + "; 127||";
        QTest::newRow("white space around") << "\t<A>[EMAIL]a@b\n,\r\n<>[PLMN]1 ," << two;
        QTest::newRow("empty pieces") << ",,<A>[EMAIL]a@b,,,<>[PLMN]1,," << two;
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("commas alone") << ",,,"
                                      << "";
        QTest::newRow("a piece of blanks is not empty") << "<>[PLMN]1, ,"
                                                        << "1|1|; 127||";
        QTest::newRow("a value that contains a comma is split in two") << "<A>[PLMN]1,2"
                                                                       << "1|1|A; 127||";
        QTest::newRow("a name that contains a comma") << "<A,B>[PLMN]1"
                                                      << "127||; 1|1|";
        QTest::newRow("same entry twice") << "<>[PLMN]1,<>[PLMN]1,"
                                          << "1|1|; 1|1|";
    }

    void listIsRead()
    {
        QFETCH(QString, text);
        QFETCH(QString, entries);
        QCOMPARE(spell(MMS_UTIL_Common::stringToEntryList(text)), entries);

        QValueList<WMFMEntry> list = {WMFMEntry(1, "first")};
        MMS_UTIL_Common::stringToEntryList(text, &list);
        QCOMPARE(spell(list), entries.isEmpty() ? "1|first|" : "1|first|; " + entries);
    }

    void listComesBack()
    {
        const QValueList<WMFMEntry> list = {WMFMEntry(0, "ann@x", "Ann"), WMFMEntry(1, "+15550100"),
                                            WMFMEntry(1, "*100#", "Balance")};
        const QString text = MMS_UTIL_Common::entryListToString(list);
        QCOMPARE(spell(MMS_UTIL_Common::stringToEntryList(text)), spell(list));
    }

    void manyEntriesAreRead()
    {
        const int count = 100000;
        const QString text = QString("<>[PLMN]1,").repeated(count);
        QCOMPARE(MMS_UTIL_Common::stringToEntryList(text).size(), qsizetype(count));
    }
};

QTEST_GUILESS_MAIN(TestUtilAddress)
#include "tst_mms_util_common_address.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmentry.h"

#include <QtTest/QtTest>

/// All that an entry tells, for one comparison; null texts are told from empty ones.
static QString described(const WMFMEntry &entry)
{
    const auto shown = [](const QString &text) {
        return text.isNull() ? QString("null") : '"' + text + '"';
    };
    return QString("%1 %2 %3 %4")
        .arg(entry.getEntryType())
        .arg(shown(entry.getEntryVal()), shown(entry.getContactName()),
             entry.isValid() ? "valid" : "not valid");
}

class TestWMFMEntry : public QObject {
    Q_OBJECT

private slots:
    void aFreshEntry();
    void construct_data();
    void construct();
    void constructWithoutName();
    void setEntryType_data();
    void setEntryType();
    void textsAreKeptAsTheyAre_data();
    void textsAreKeptAsTheyAre();
    void displayValue_data();
    void displayValue();
    void copiesShareNothing();
    void assignmentSharesNothing();
    void assignmentToItself();
    void movedFrom();
    void movedFromComesBack_data();
    void movedFromComesBack();
    void listsOfEntries();
};

void TestWMFMEntry::aFreshEntry()
{
    const WMFMEntry entry;
    QCOMPARE(entry.getEntryType(), quint8(127));
    QVERIFY(entry.getEntryVal().isEmpty());
    QVERIFY(entry.getContactName().isEmpty());
    QVERIFY(!entry.isValid());
    QCOMPARE(entry.getDisplayValue(), QString());
}

void TestWMFMEntry::construct_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("e-mail address") << 0 << "a@b.c"
                                    << R"(0 "a@b.c" "name" valid)";
    QTest::newRow("phone number") << 1 << "+15551234567"
                                  << R"(1 "+15551234567" "name" valid)";
    QTest::newRow("the value is not checked") << 0 << "123"
                                              << R"(0 "123" "name" valid)";
    QTest::newRow("one blank is a value") << 1 << " "
                                          << R"(1 " " "name" valid)";
    QTest::newRow("empty value") << 1 << ""
                                 << R"(1 "" "name" not valid)";
    QTest::newRow("null value") << 1 << QString() << R"(1 null "name" not valid)";
    for (int type : {2, 5, 126, 127, 128, 255}) {
        QTest::addRow("a type above 1 leaves 127: %d", type) << type << "x"
                                                             << R"(127 "x" "name" not valid)";
    }
}

void TestWMFMEntry::construct()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QCOMPARE(described(WMFMEntry(quint8(type), value, "name")), expected);
}

void TestWMFMEntry::constructWithoutName()
{
    QCOMPARE(described(WMFMEntry(1, "5")), QString(R"(1 "5" "" valid)"));
    QCOMPARE(described(WMFMEntry(5, "5")), QString(R"(127 "5" "" not valid)"));
}

void TestWMFMEntry::setEntryType_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("result");
    for (int before : {0, 1, 127}) {
        for (int type : {0, 1, 2, 126, 127, 128, 255}) {
            QTest::addRow("%d, then %d", before, type) << before << type << (type <= 1);
        }
    }
}

void TestWMFMEntry::setEntryType()
{
    QFETCH(int, before);
    QFETCH(int, type);
    QFETCH(bool, result);
    WMFMEntry entry(quint8(before), "v", "n");
    QCOMPARE(entry.setEntryType(quint8(type)), result);
    QCOMPARE(int(entry.getEntryType()), result ? type : before);
    QCOMPARE(entry.getEntryVal(), QString("v"));
    QCOMPARE(entry.getContactName(), QString("n"));
    QCOMPARE(entry.isValid(), result || before != 127);
}

void TestWMFMEntry::textsAreKeptAsTheyAre_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("blanks around") << "  a b  ";
    QTest::newRow("outside Latin-1") << QStringLiteral("\u4e2d\u20ac");
    QTest::newRow("long") << QString(100000, 'x');
}

void TestWMFMEntry::textsAreKeptAsTheyAre()
{
    QFETCH(QString, text);
    WMFMEntry entry(0, "before", "before");
    entry.setEntryVal(text);
    QCOMPARE(entry.getEntryVal(), text);
    QCOMPARE(entry.getEntryVal().isNull(), text.isNull());
    QCOMPARE(entry.getContactName(), QString("before"));
    entry.setEntryVal("after");
    entry.setContactName(text);
    QCOMPARE(entry.getContactName(), text);
    QCOMPARE(entry.getContactName().isNull(), text.isNull());
    QCOMPARE(entry.getEntryVal(), QString("after"));
    QCOMPARE(int(entry.getEntryType()), 0);
}

void TestWMFMEntry::displayValue_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the name") << 0 << "a@b"
                              << "Ann"
                              << "Ann";
    QTest::newRow("a name with white space around") << 0 << "a@b"
                                                    << " \t Ann B\r\n "
                                                    << "Ann B";
    QTest::newRow("null name") << 0 << " a@b \n" << QString() << "a@b";
    QTest::newRow("empty name") << 0 << " a@b"
                                << ""
                                << "a@b";
    QTest::newRow("a name of blanks") << 1 << "  5 5  "
                                      << "   "
                                      << "5 5";
    QTest::newRow("a name of white space") << 1 << "5"
                                           << "\t\n\v\f\r "
                                           << "5";
    QTest::newRow("nothing at all") << 1 << ""
                                    << ""
                                    << "";
    QTest::newRow("blanks alone") << 1 << "  "
                                  << " "
                                  << "";
    QTest::newRow("the type is not asked") << 127 << " 5 "
                                           << ""
                                           << "5";
    QTest::newRow("a name without a value") << 127 << ""
                                            << " n "
                                            << "n";
}

void TestWMFMEntry::displayValue()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    const WMFMEntry entry(quint8(type), value, name);
    QCOMPARE(entry.getDisplayValue(), expected);
    QCOMPARE(entry.getEntryVal(), value);
    QCOMPARE(entry.getContactName(), name);
}

void TestWMFMEntry::copiesShareNothing()
{
    WMFMEntry first(0, "v", "n");
    WMFMEntry second(first);
    QCOMPARE(described(second), QString(R"(0 "v" "n" valid)"));
    first.setEntryType(1);
    first.setEntryVal("first");
    second.setContactName("second");
    QCOMPARE(described(first), QString(R"(1 "first" "n" valid)"));
    QCOMPARE(described(second), QString(R"(0 "v" "second" valid)"));
    QCOMPARE(described(WMFMEntry(WMFMEntry(9, "v", QString()))),
             QString(R"(127 "v" null not valid)"));
}

void TestWMFMEntry::assignmentSharesNothing()
{
    WMFMEntry first(0, "v", QString());
    WMFMEntry second(1, "w", "n");
    second = first;
    QCOMPARE(described(second), QString(R"(0 "v" null valid)"));
    first.setEntryVal("first");
    QCOMPARE(described(second), QString(R"(0 "v" null valid)"));
    second.setContactName("second");
    second.setEntryType(1);
    QCOMPARE(described(first), QString(R"(0 "first" null valid)"));

    // Assignment is the one way back to a type that is not set.
    second = WMFMEntry();
    QCOMPARE(int(second.getEntryType()), 127);
    const WMFMEntry fresh;
    first = fresh;
    QCOMPARE(int(first.getEntryType()), 127);
    QVERIFY(first.getEntryVal().isEmpty());
}

void TestWMFMEntry::assignmentToItself()
{
    WMFMEntry entry(0, "v", "n");
    WMFMEntry &same = entry;
    entry = same;
    QCOMPARE(described(entry), QString(R"(0 "v" "n" valid)"));
    entry = std::move(same);
    QCOMPARE(described(entry), QString(R"(0 "v" "n" valid)"));
}

void TestWMFMEntry::movedFrom()
{
    WMFMEntry first(0, "v", "n");
    WMFMEntry second(std::move(first));
    QCOMPARE(described(second), QString(R"(0 "v" "n" valid)"));
    QCOMPARE(described(first), QString("127 null null not valid"));
    QCOMPARE(first.getDisplayValue(), QString());
    QVERIFY(!first.setEntryType(2));

    const WMFMEntry copyOfNothing(first);
    QCOMPARE(described(copyOfNothing), QString("127 null null not valid"));
    WMFMEntry third(1, "w");
    third = first;
    QCOMPARE(described(third), QString("127 null null not valid"));
    third = std::move(second);
    QCOMPARE(described(third), QString(R"(0 "v" "n" valid)"));
    second = WMFMEntry(1, "5");
    QCOMPARE(described(third), QString(R"(0 "v" "n" valid)"));
}

void TestWMFMEntry::movedFromComesBack_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("expected");
    QTest::newRow("copy assignment") << "copy"
                                     << R"(1 "5" "" valid)";
    QTest::newRow("move assignment") << "move"
                                     << R"(1 "5" "" valid)";
    QTest::newRow("type") << "type"
                          << R"(1 null null not valid)";
    QTest::newRow("value") << "value"
                           << R"(127 "5" null not valid)";
    QTest::newRow("name") << "name"
                          << R"(127 null "n" not valid)";
}

void TestWMFMEntry::movedFromComesBack()
{
    QFETCH(QString, way);
    QFETCH(QString, expected);
    WMFMEntry entry(0, "v", "n");
    const WMFMEntry taken(std::move(entry));
    const WMFMEntry other(1, "5");
    if (way == "copy") {
        entry = other;
    } else if (way == "move") {
        entry = WMFMEntry(1, "5");
    } else if (way == "type") {
        QVERIFY(entry.setEntryType(1));
    } else if (way == "value") {
        entry.setEntryVal("5");
    } else {
        entry.setContactName("n");
    }
    QCOMPARE(described(entry), expected);
    QCOMPARE(described(taken), QString(R"(0 "v" "n" valid)"));
}

void TestWMFMEntry::listsOfEntries()
{
    QList<WMFMEntry> list;
    for (int i = 0; i < 100; ++i) {
        list.prepend(WMFMEntry(1, QString::number(i)));
        list.append(WMFMEntry(0, QString::number(i)));
    }
    QList<WMFMEntry> copy = list;
    copy[0].setEntryVal("changed");
    QCOMPARE(list.first().getEntryVal(), QString("99"));
    QCOMPARE(list.last().getEntryVal(), QString("99"));
    list.removeAt(50);
    QCOMPARE(copy.size(), 200);
    QCOMPARE(copy[0].getEntryVal(), QString("changed"));
}

QTEST_GUILESS_MAIN(TestWMFMEntry)
#include "tst_wmfmentry.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/user_data_header.h"

#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::smspdu;

namespace {

struct HeaderRow {
    const char *name;
    const char *header;
    const char *elements; // offset, id, data; nothing when it is no header
};
// clang-format off
const HeaderRow kHeaders[] = {
    {"no elements",               "00",                            ""},
    {"ports",                     "06 05 04 0B 84 23 F0",          "1 5 0B 84 23 F0"},
    {"two elements",              "0B 05 04 0B 84 23 F0 00 03 07 02 01",
     "1 5 0B 84 23 F0|7 0 07 02 01"},
    {"an empty element",          "02 70 00",                      "1 112 "},
    {"nothing at all",            "",                              nullptr},
    {"shorter than it tells",     "06 05 04 0B 84 23",             nullptr},
    {"longer than it tells",      "05 05 04 0B 84 23 F0",          nullptr},
    {"an id without a length",    "07 05 04 0B 84 23 F0 00",       nullptr},
    {"an element past the end",   "05 00 04 07 02 01",             nullptr},
};

struct PortsRow {
    const char *name;
    const char *header;
    int destination; // -1: none
    int source;
};
const PortsRow kPorts[] = {
    {"wide",                      "06 05 04 0B 84 23 F0",          2948, 9200},
    {"narrow",                    "04 04 02 F0 F1",                240,  241},
    {"the last one counts",       "0A 04 02 F0 F1 05 04 00 01 00 02", 1, 2},
    {"wide with a wrong length",  "05 05 03 0B 84 23",             -1,   0},
    {"narrow with a wrong length", "03 04 01 F0",                  -1,   0},
    {"none",                      "05 00 03 07 02 01",             -1,   0},
    {"no header",                 "06 05",                         -1,   0},
};

struct PartsRow {
    const char *name;
    const char *header;
    int reference; // -1: none
    int total;
    int part;
};
const PartsRow kParts[] = {
    {"a reference of 8 bits",     "05 00 03 07 02 01",             7,     2,   1},
    {"a reference of 16 bits",    "06 08 04 01 02 FF FF",          0x102, 255, 255},
    {"part 0",                    "05 00 03 07 02 00",             -1,    0,   0},
    {"a part behind the last",    "05 00 03 07 02 03",             -1,    0,   0},
    {"a part of none",            "05 00 03 07 00 00",             -1,    0,   0},
    {"a wrong length",            "04 00 02 07 02",                -1,    0,   0},
    {"the other one's length",    "05 08 03 07 02 01",             -1,    0,   0},
};
// clang-format on

} // namespace

class TestUserDataHeader : public QObject {
    Q_OBJECT

private slots:
    void elements_data();
    void elements();
    void ports_data();
    void ports();
    void concatenation_data();
    void concatenation();
    void written();
    void tooLong();
};

void TestUserDataHeader::elements_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kHeaders); ++i) {
        QTest::newRow(kHeaders[i].name) << int(i);
    }
}

void TestUserDataHeader::elements()
{
    QFETCH(int, row);
    const QByteArray header = fromHex(kHeaders[row].header);
    const auto found = headerElements(header);
    QCOMPARE(found.has_value(), kHeaders[row].elements != nullptr);
    QStringList lines;
    for (const HeaderElement &element : found.value_or(QList<HeaderElement>())) {
        lines += QString::number(element.offset) + ' ' + QString::number(element.id) + ' '
            + QString::fromLatin1(toHex(element.data));
    }
    QCOMPARE(lines.join('|'), QString(kHeaders[row].elements));
}

void TestUserDataHeader::ports_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kPorts); ++i) {
        QTest::newRow(kPorts[i].name) << int(i);
    }
}

void TestUserDataHeader::ports()
{
    QFETCH(int, row);
    const auto found = portsIn(fromHex(kPorts[row].header));
    QCOMPARE(found ? int(found->destination) : -1, kPorts[row].destination);
    QCOMPARE(found ? int(found->source) : 0, kPorts[row].source);
}

void TestUserDataHeader::concatenation_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kParts); ++i) {
        QTest::newRow(kParts[i].name) << int(i);
    }
}

void TestUserDataHeader::concatenation()
{
    QFETCH(int, row);
    const auto found = concatenationIn(fromHex(kParts[row].header));
    QCOMPARE(found ? int(found->reference) : -1, kParts[row].reference);
    QCOMPARE(found ? int(found->total) : 0, kParts[row].total);
    QCOMPARE(found ? int(found->part) : 0, kParts[row].part);
}

void TestUserDataHeader::written()
{
    QCOMPARE(toHex(userDataHeader({})), "00");
    QCOMPARE(toHex(userDataHeader({portsElement({2948, 9200, true})})), "06 05 04 0B 84 23 F0");
    QCOMPARE(toHex(userDataHeader({portsElement({240, 241, false})})), "04 04 02 F0 F1");
    QCOMPARE(toHex(userDataHeader({concatenationElement({7, 2, 1, false})})), "05 00 03 07 02 01");
    QCOMPARE(toHex(userDataHeader(
                 {portsElement({2948, 9200, true}), concatenationElement({0x102, 3, 2, true})})),
             "0C 05 04 0B 84 23 F0 08 04 01 02 03 02");
}

void TestUserDataHeader::tooLong()
{
    QCOMPARE(userDataHeader({QByteArray(139, 'a')}).size(), 140);
    QVERIFY(userDataHeader({QByteArray(140, 'a')}).isNull());
}

QTEST_GUILESS_MAIN(TestUserDataHeader)
#include "tst_user_data_header.moc"

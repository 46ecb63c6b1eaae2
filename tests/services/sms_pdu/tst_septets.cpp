// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"

#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::smspdu;

namespace {

struct PackedRow {
    const char *name;
    const char *septets;
    int fill;
    const char *octets;
};
// clang-format off
const PackedRow kPacked[] = {
    {"nothing",             "",                        0, ""},
    {"one",                 "31",                      0, "31"},
    {"two",                 "31 32",                   0, "31 19"},
    {"seven",               "31 32 33 34 35 36 37",    0, "31 D9 8C 56 B3 DD 00"},
    {"eight fill 7 octets", "31 32 33 34 35 36 37 38", 0, "31 D9 8C 56 B3 DD 70"},
    {"highest septet",      "7F 7F",                   0, "FF 3F"},
    {"hello",               "68 65 6C 6C 6F",          0, "E8 32 9B FD 06"},
    {"behind one bit",      "68",                      1, "D0"},
    {"behind six bits",     "68 65",                   6, "00 BA 0C"},
};

struct TextRow {
    const char *name;
    QString text;
    const char *septets;
};
const TextRow kTexts[] = {
    {"nothing",                u""_qs,                 ""},
    {"septet 0",               u"@"_qs,                "00"},
    {"letters",                u"aZ"_qs,               "61 5A"},
    {"accents",                u"àÄ§"_qs,              "7F 5B 5F"},
    {"the extension table",    u"\f^{}\\[~]|€"_qs,
     "1B 0A 1B 14 1B 28 1B 29 1B 2F 1B 3C 1B 3D 1B 3E 1B 40 1B 65"},
};
// clang-format on

} // namespace

class TestSeptets : public QObject {
    Q_OBJECT

private slots:
    void packed_data();
    void packed();
    void shortOctets();
    void fill();
    void texts_data();
    void texts();
    void foreignText();
    void escapes();
};

void TestSeptets::packed_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kPacked); ++i) {
        QTest::newRow(kPacked[i].name) << int(i);
    }
}

void TestSeptets::packed()
{
    QFETCH(int, row);
    const QByteArray septets = fromHex(kPacked[row].septets);
    const QByteArray octets = fromHex(kPacked[row].octets);
    const int fill = kPacked[row].fill;
    QCOMPARE(toHex(packSeptets(septets, fill)), toHex(octets));
    QCOMPARE(toHex(unpackSeptets(octets, septets.size(), fill)), toHex(septets));
    QCOMPARE(packedSize(septets.size(), fill), octets.size());
}

void TestSeptets::shortOctets()
{
    const QByteArray octets = fromHex("E8 32 9B");
    QCOMPARE(toHex(unpackSeptets(octets, 5)), "68 65 6C");
    QCOMPARE(toHex(unpackSeptets(octets, 160, 5)), "17 33");
    QCOMPARE(toHex(unpackSeptets({}, 5, 3)), "");
    QCOMPARE(toHex(unpackSeptets(octets, -1)), "");
}

void TestSeptets::fill()
{
    for (qsizetype size = 0; size <= 140; ++size) {
        const int bits = fillBits(size);
        QVERIFY(bits >= 0 && bits < 7);
        QCOMPARE((size * 8 + bits) % 7, 0);
    }
}

void TestSeptets::texts_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kTexts); ++i) {
        QTest::newRow(kTexts[i].name) << int(i);
    }
}

void TestSeptets::texts()
{
    QFETCH(int, row);
    const QByteArray septets = fromHex(kTexts[row].septets);
    const auto written = gsm7FromText(kTexts[row].text);
    QVERIFY(written.has_value());
    QCOMPARE(toHex(*written), toHex(septets));
    QCOMPARE(textFromGsm7(septets), kTexts[row].text);
}

void TestSeptets::foreignText()
{
    QVERIFY(!gsm7FromText(u"abcж"_qs));
    QVERIFY(!gsm7FromText(u"\u001B"_qs));
}

void TestSeptets::escapes()
{
    QCOMPARE(textFromGsm7(fromHex("61 1B 61")), u"aa"_qs); // the table lacks it
    QCOMPARE(textFromGsm7(fromHex("61 1B 1B 61")), u"a a"_qs);
    QCOMPARE(textFromGsm7(fromHex("61 1B")), u"a"_qs);
    QCOMPARE(textFromGsm7(fromHex("E1")), u"a"_qs); // the eighth bit is none of a septet
}

QTEST_GUILESS_MAIN(TestSeptets)
#include "tst_septets.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/charsets.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

using wmsg::intake::Charset;
using wmsg::intake::toUtf8;

namespace {

/// A text in a charset, by the number of that.
struct NumberRow {
    const char *name;
    uint number;
    const char *hex;
    const char *utf8;
};

const NumberRow kNumbers[] = {
    {"undeclared, ASCII", 0, "41 62", "Ab"},
    {"undeclared, UTF-8", 0, "C3 BC", "ü"},
    {"undeclared, neither: windows-1252", 0, "FC 80 93", "ü€“"},
    {"undeclared, open in windows-1252", 0, "81 8D 8F 90 9D",
     "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D"},
    {"undeclared, marked as UTF-16", 0, "FE FF 00 FC", "ü"},
    {"undeclared, marked as little-endian", 0, "FF FE FC 00", "ü"},
    {"US-ASCII that is UTF-8", 3, "C3 BC", "ü"},
    {"US-ASCII that is windows-1252", 3, "FC", "ü"},
    {"UTF-8", 106, "E2 82 AC", "€"},
    {"UTF-8 with its mark", 106, "EF BB BF 61", "a"},
    {"UTF-8 that is not", 106, "61 FC 62", "aüb"},
    {"ISO-8859-1", 4, "FC A4", "ü¤"},
    {"ISO-8859-2", 5, "E8", "č"},
    {"ISO-8859-5", 8, "D0", "а"},
    {"ISO-8859-7", 10, "E1", "α"},
    {"ISO-8859-9", 12, "FE", "ş"},
    {"ISO-8859-10", 13, "B9", "đ"},
    {"ISO-8859-13", 109, "F0", "š"},
    {"ISO-8859-14", 110, "F0", "ŵ"},
    {"ISO-8859-15", 111, "A4", "€"},
    {"Shift_JIS", 17, "93 FA 96 7B", "日本"},
    {"EUC-JP", 18, "C6 FC CB DC", "日本"},
    {"ISO-2022-JP", 39, "1B 24 42 46 7C 4B 5C 1B 28 42", "日本"},
    {"EUC-KR", 38, "B0 A1", "가"},
    {"KS_C_5601", 36, "B0 A1", "가"},
    {"GBK", 113, "D6 D0", "中"},
    {"GB18030", 114, "D6 D0", "中"},
    {"GB2312", 2025, "D6 D0", "中"},
    {"Big5", 2026, "A4 A4", "中"},
    {"KOI8-R", 2084, "D0 D2 C9", "при"},
    {"windows-1250", 2250, "E8", "č"},
    {"windows-1251", 2251, "EF", "п"},
    {"windows-1252", 2252, "80", "€"},
    {"windows-1253", 2253, "E1", "α"},
    {"windows-1254", 2254, "FE", "ş"},
    {"windows-1255", 2255, "E0", "א"},
    {"windows-1256", 2256, "C7", "ا"},
    {"windows-1257", 2257, "F0", "š"},
    {"windows-1258", 2258, "FE", "₫"},
    {"TIS-620", 2259, "A1", "ก"},
    {"UCS-2, big-endian without a mark", 1000, "00 FC", "ü"},
    {"UCS-2, little-endian by its mark", 1000, "FF FE FC 00", "ü"},
    {"UTF-16BE", 1013, "00 FC", "ü"},
    {"UTF-16LE", 1014, "FC 00", "ü"},
    {"UTF-16LE with the other mark", 1014, "FE FF 00 FC", "ü"},
    {"UTF-16, marked big-endian", 1015, "FE FF 00 FC", "ü"},
    {"UTF-16, marked little-endian", 1015, "FF FE FC 00", "ü"},
    {"UTF-16 without a mark is big-endian", 1015, "00 FC", "ü"},
    {"UTF-16, a pair of surrogates", 1015, "D8 3D DE 00", "😀"},
    {"UTF-16, half a pair", 1015, "D8 3D 00 61", "?a"},
    {"UTF-16, an odd byte", 1015, "00 61 00", "a"},
    {"UTF-16, two marks", 1015, "FE FF FE FF 00 61", "a"},
    {"UTF-32 without a mark is big-endian", 1017, "00 00 00 FC", "ü"},
    {"UTF-32, marked little-endian", 1017, "FF FE 00 00 FC 00 00 00", "ü"},
    {"a wrong number goes by its looks", 9999, "FC", "ü"},
    {"a byte that means nothing", 38, "41 FF 42",
     "A\xEF\xBF\xBD"
     "B"},
    {"nothing", 4, "", ""},
    {"shifts to a set that was not named", 105, "0E 0E 0E 61", "\xEF\xBF\xBD\xEF\xBF\xBD"},
};

} // namespace

class TestCharsets : public QObject {
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void names_data();
    void names();
    void cutCharacters();
    void manyBadBytes();
};

void TestCharsets::numbers_data()
{
    QTest::addColumn<uint>("number");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("utf8");
    for (const NumberRow &row : kNumbers) {
        QTest::newRow(row.name) << row.number << fromHex(row.hex) << QByteArray(row.utf8);
    }
}

void TestCharsets::numbers()
{
    QFETCH(uint, number);
    QFETCH(QByteArray, bytes);
    QTEST(toUtf8(bytes, Charset{number, {}}), "utf8");
}

void TestCharsets::names_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("utf8");
    const auto row = [](const char *name, const char *hex, const char *utf8) {
        QTest::newRow(name) << QByteArray(name) << fromHex(hex) << QByteArray(utf8);
    };
    row("ISO-8859-15", "A4", "€");
    row("iso-8859-1", "FC", "ü");
    row("Windows-1251", "EF", "п");
    row("koi8-r", "D0", "п");
    row("Shift_JIS", "93 FA", "日");
    row("UTF-16", "00 FC", "ü");
    row("UTF-16LE", "FC 00", "ü");
    row("UCS2", "00 FC", "ü");
    row("UTF-32LE", "FC 00 00 00", "ü");
    row("utf8", "C3 BC", "ü");
    row("US-ASCII", "FC", "ü");
    row("no such charset", "FC", "ü");
    row("UTF-16//TRANSLIT", "FC", "ü");
    row("../../etc/passwd", "FC", "ü");
}

void TestCharsets::names()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, bytes);
    QTEST(toUtf8(bytes, Charset::named(name)), "utf8");
}

void TestCharsets::cutCharacters()
{
    const QByteArray text("a€");
    QCOMPARE(toUtf8(text.first(3), Charset{106, {}}), QByteArray("a"));
    QCOMPARE(toUtf8(text.first(2), Charset{106, {}}), QByteArray("a"));
    const QByteArray face("ü😀");
    QCOMPARE(toUtf8(face.first(5), Charset()), QByteArray("ü"));
    // Without a declaration one letter at the end of ASCII is windows-1252.
    QCOMPARE(toUtf8(QByteArray("Caf\xE9"), Charset()), QByteArray("Café"));
    QCOMPARE(toUtf8(QByteArray("\x93\xFA\x96", 3), Charset{17, {}}), QByteArray("日"));
}

// Each byte is converted or replaced, and all of them are.
void TestCharsets::manyBadBytes()
{
    const QByteArray bad(100000, '\xFF');
    const QByteArray utf8 = toUtf8(bad + 'a', Charset{38, {}});
    QCOMPARE(utf8.size(), bad.size() * 3 + 1);
    QVERIFY(utf8.startsWith("\xEF\xBF\xBD\xEF\xBF\xBD"));
}

QTEST_GUILESS_MAIN(TestCharsets)
#include "tst_charsets.moc"

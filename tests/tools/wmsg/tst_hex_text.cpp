// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/hex_text.h"

#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::cli;

namespace {

struct TextRow {
    const char *name;
    const char *text;
    const char *lines; // "number: bytes|..."
};
// clang-format off
const TextRow kTexts[] = {
    {"no hex",              "Hello, this is a text.\n", ""},
    {"bytes",               "\x01\x02 0123456789ABCDEF01234567", ""},
    {"a short run",         "0123456789ABCDEF0123\n", "0: 01 23 45 67 89 AB CD EF 01 23"},
    {"the number of a SIM", "+CCID: 89430301234567890123\n", ""},
    {"pairs",               "8C 82 # notification\n98 7400\n", "0: 8C 82 98 74 00"},
    {"pairs behind a mark", "\xEF\xBB\xBF" "8C 82 # Erklärung\r\n98\n", "0: 8C 82 98"},
    {"half a pair",         "8C 8\n", ""},
    {"only comments",       "# 8C 82\n", ""},
    {"a modem's log",
     "AT+CMGL=4\r\n+CMGL: 1,1,,24\r\n" "0001000581214 3F5000001\r\n"
     "00012A0581 00\r\n00012A05812143F500000161\r\nOK\r\n",
     "5: 00 01 2A 05 81 21 43 F5 00 00 01 61"},
    {"a log with an escape", "\x1B\rAT\r\n012a05812143f500000161\n", "2: 01 2A 05 81 21 43 F5 00 00 01 61"},
    {"a log in a language", "Gerät: 012a05812143f500000161\n", "1: 01 2A 05 81 21 43 F5 00 00 01 61"},
    {"no UTF-8",            "Ger\xE4t: 012a05812143f500000161\n", ""},
    {"behind a prompt",     "> 012a05812143f500000161\x1a\n", "1: 01 2A 05 81 21 43 F5 00 00 01 61"},
    {"a word with hex",     "x012A05812143F500000161\n", ""},
    {"an odd count",        "012A05812143F50000016\n", ""},
    {"a dump in lines",     "8C8298740083687474703A2F2F612F\n31008D90\n",
     "0: 8C 82 98 74 00 83 68 74 74 70 3A 2F 2F 61 2F 31 00 8D 90"},
    {"messages in lines",   "012A05812143F500000161\n012B05812143F500000161\n",
     "1: 01 2A 05 81 21 43 F5 00 00 01 61|2: 01 2B 05 81 21 43 F5 00 00 01 61"},
    {"PDUs in lines",       "8C8298740083687474703A2F2F00\n\n8C8298750083687474703A2F2F00\n",
     "1: 8C 82 98 74 00 83 68 74 74 70 3A 2F 2F 00|3: 8C 82 98 75 00 83 68 74 74 70 3A 2F 2F 00"},

    {"words behind offsets",
     "00000000: 8c82 9874 0083 6874 7470 3a2f 2f61 2f31  ...t..http://a/1\n"
     "00000010: 008d 90                                  .be\n",
     "0: 8C 82 98 74 00 83 68 74 74 70 3A 2F 2F 61 2F 31 00 8D 90"},
    {"pairs behind offsets",
     "00000000  8c 82 98 74 00 83 68 74  74 70 3a 2f 2f 61 2f 31  |...t..http://a/1|\n"
     "00000010  00 8d 90                                          |...|\n"
     "00000013\n",
     "0: 8C 82 98 74 00 83 68 74 74 70 3A 2F 2F 61 2F 31 00 8D 90"},
    {"octal offsets",
     "0000000 8c 82 98 74 00 83 68 74 74 70 3a 2f 2f 61 2f 31\n"
     "0000020 00 8d 90\n"
     "0000023\n",
     "0: 8C 82 98 74 00 83 68 74 74 70 3A 2F 2F 61 2F 31 00 8D 90"},
    {"of an analyser",
     "Frame (3 bytes):\n\n0000  8c 82 98                                          ab\n",
     "0: 8C 82 98"},
    {"bytes with meanings",
     "m: 3 bytes\n"
     "00000000  8C                                               Message-Type: field id\n"
     "00000001  82                                               Message-Type: notification (130)\n"
     "00000002  98                                               Transaction-Id: field id\n",
     "0: 8C 82 98"},
    {"two dumps",           "0000  8c 82\n\n0000  8c 84\n0002  98\n", "1: 8C 82|3: 8C 84 98"},
    {"a line is missing",   "0000  8c 82\n0003  8c\n", ""},
    {"like the line before",
     "00000000  8c 82 98 74 00 83 00 00  00 00 00 00 00 00 00 00  |...t............|\n"
     "*\n"
     "00000020  61\n",
     "0: 8C 82 98 74 00 83 00 00 00 00 00 00 00 00 00 00"
     " 8C 82 98 74 00 83 00 00 00 00 00 00 00 00 00 00 61"},
    {"up to the end",
     "0000000 8c 82 98 74 00 83 00 00 00 00 00 00 00 00 00 00\n*\n0000040\n",
     "0: 8C 82 98 74 00 83 00 00 00 00 00 00 00 00 00 00"
     " 8C 82 98 74 00 83 00 00 00 00 00 00 00 00 00 00"},
    {"like half a line",    "00000000  8c 82\n*\n00000020  61\n", ""},
    {"like nothing",        "*\n00000020  61\n", ""},
    {"as far as can be",    "00000000  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00\n*\n"
                            "7ffffffffffff0  61\n", ""},
    {"all together too far", "00000000: 0000000000000000 0000000000000000\n*\n02800000\n"
                             "00000000: 0000000000000000 0000000000000000\n*\n02800000\n", ""},
    {"words of the machine", "0000000 828c 7498\n0000004\n", ""},
    {"offsets alone",       "00000000\n00000000\n", "0: 00 00 00 00 00 00 00 00"},
};
// clang-format on

} // namespace

class TestHexText : public QObject {
    Q_OBJECT

private slots:
    void lines_data();
    void lines();
};

void TestHexText::lines_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kTexts); ++i) {
        QTest::newRow(kTexts[i].name) << int(i);
    }
}

void TestHexText::lines()
{
    QFETCH(int, row);
    QStringList found;
    const QList<HexLine> lines = hexLines(kTexts[row].text);
    for (const HexLine &line : lines) {
        found += QString::number(line.line) + ": " + QString::fromLatin1(toHex(line.bytes));
    }
    QCOMPARE(found.join('|'), QString(kTexts[row].lines));
}

QTEST_GUILESS_MAIN(TestHexText)
#include "tst_hex_text.moc"

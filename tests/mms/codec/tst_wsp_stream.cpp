// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wsp_stream.h"
#include "tests/mms/codec/wire.h"

#include <QtTest/QtTest>

#include <climits>
#include <functional>

struct NumberRow {
    const char *name;
    QByteArray wire;
    qint64 value;
    Way way;
};

struct TextRow {
    const char *name;
    QByteArray wire;
    QString value;
    Way way;
};

/// A read that fails: where it stops is part of the contract.
struct FailingRow {
    const char *name;
    const char *wire;
    int stopsAt;
};

// clang-format off
static const NumberRow kIntegers[] = {
    {"short, lowest",            "80",             0,          Both},
    {"short",                    "81",             1,          Both},
    {"short, highest",           "FF",             127,        Both},
    {"long, lowest",             "01 80",          128,        Both},
    {"long, one byte, highest",  "01 FF",          255,        Both},
    {"long, two bytes, lowest",  "02 01 00",       256,        Both},
    {"long, two bytes",          "02 12 34",       0x1234,     Both},
    {"long, two bytes, highest", "02 FF FF",       65535,      Both},
    {"long, three bytes",        "03 01 00 00",    65536,      Both},
    {"long, three, highest",     "03 FF FF FF",    16777215,   Both},
    {"long, four bytes",         "04 01 00 00 00", 16777216,   Both},
    {"long, zero bytes inside",  "04 01 00 02 00", 16777728,   Both},
    {"long, highest written",    "04 7F FF FF FF", INT_MAX,    Both},
    {"long, highest read",       "04 FF FF FF FF", UINT_MAX,   Read},
    {"zero length reads 0",      "00",             0,          Read},
    {"long form of a short one", "01 05",          5,          Read},
    {"leading zero bytes",       "04 00 00 00 80", 128,        Read},
    {"a long integer may be longer than four bytes", "05 01 02 03 04 05", 0x02030405, Read},
    {"eight bytes",              "08 FF FF FF FF 00 00 00 01", 1, Read},
    {"30 bytes",  "1E" + QByteArray(" 11").repeated(29) + " 12", 0x11111112, Read},
    {"31 bytes",  "1F" + QByteArray(" FF").repeated(27) + " 0A 0B 0C 0D", 0x0A0B0C0D, Read},
    {"127 bytes", "7F" + QByteArray(" FF").repeated(123) + " 80 00 00 01", 0x80000001, Read},
    {"negative keeps 7 bits",    "FF",             -1,         Write},
    {"negative, 7 bits of 0",    "80",             -128,       Write},
    {"negative, far",            "98",             -1000,      Write},
    {"lowest",                   "80",             INT_MIN,    Write},
};

static const NumberRow kLongIntegers[] = {
    {"one byte for 0",     "01 00",          0,          Both},
    {"one byte for 127",   "01 7F",          127,        Both},
    {"one byte",           "01 FF",          255,        Both},
    {"two bytes",          "02 01 00",       256,        Both},
    {"three bytes",        "03 01 00 00",    65536,      Both},
    {"the sign bit",       "04 80 00 00 00", 0x80000000, Both},
    {"all bits",           "04 FF FF FF FF", UINT_MAX,   Both},
};

static const NumberRow kUintvars[] = {
    {"one byte, lowest",       "00",             0,         Both},
    {"one byte, highest",      "7F",             127,       Both},
    {"two bytes, lowest",      "81 00",          128,       Both},
    {"two bytes",              "85 39",          697,       Both},
    {"two bytes, highest",     "FF 7F",          16383,     Both},
    {"three bytes, lowest",    "81 80 00",       16384,     Both},
    {"three bytes, highest",   "FF FF 7F",       2097151,   Both},
    {"four bytes, lowest",     "81 80 80 00",    2097152,   Both},
    {"four bytes, highest",    "FF FF FF 7F",    268435455, Both},
    {"five bytes, lowest",     "81 80 80 80 00", 268435456, Both},
    {"groups of 0 inside",     "84 80 80 80 01", 1073741825, Both},
    {"highest written",        "87 FF FF FF 7F", INT_MAX,   Both},
    {"highest read",           "8F FF FF FF 7F", UINT_MAX,  Read},
    {"leading groups of 0",    "80 80 01",       1,         Read},
    {"bits above 32 fall off", "FF FF FF FF 7F", UINT_MAX,  Read},
    {"six bytes",              "81 80 80 80 80 05", 5,      Read},
    {"a thousand bytes",       QByteArray("FF ").repeated(995) + "80 80 80 80 09", 9, Read},
    {"negative takes five",    "FF FF FF FF 7F", -1,        Write},
    {"negative, low groups 0", "FF FF FF FF 00", -128,      Write},
    {"lowest",                 "F8 80 80 80 00", INT_MIN,   Write},
};

static const NumberRow kValueLengths[] = {
    {"lowest",                   "00",                0,       Both},
    {"one byte, highest",        "1E",                30,      Both},
    {"31 is quoted",             "1F 1F",             31,      Both},
    {"quoted, one byte",         "1F 7F",             127,     Both},
    {"quoted, two bytes",        "1F 81 00",          128,     Both},
    {"highest written",          "1F 87 FF FF FF 7F", INT_MAX, Both},
    {"highest read",             "1F 8F FF FF FF 7F", UINT_MAX, Read},
    {"quoted 0",                 "1F 00",             0,       Read},
    {"quoted, short enough not to be", "1F 05",       5,       Read},
    {"32 and more is a length",  "20",                32,      Read},
    {"32 and more is a length: 69", "45",             69,      Read},
    {"127 is a length",          "7F",                127,     Read},
    {"255 is a length",          "FF",                255,     Read},
    {"negative keeps 8 bits",    "FF",                -1,      Write},
};

static const TextRow kTexts[] = {
    {"null is a lone 0",            "00",                   QString(),                Both},
    {"empty is a lone 0",           "00",                   "",                       Write},
    {"one character",               "61 00",                "a",                      Both},
    {"ASCII",                       "61 62 63 20 3C 7E 00", "abc <~",                 Both},
    {"control characters",          "01 1F 09 00",          "\x01\x1F\t",             Both},
    {"begins outside ASCII",        "7F C3 A9 61 00",       QStringLiteral("\u00E9a"), Both},
    {"begins with the lowest quoted","7F C2 80 00",         QStringLiteral("\u0080"), Both},
    {"begins with three bytes",     "7F E2 82 AC 00",       QStringLiteral("\u20AC"), Both},
    {"begins with four bytes",      "7F F0 9F 98 80 21 00", QStringLiteral("\U0001F600!"), Both},
    {"outside ASCII later",         "61 C3 A9 E2 82 AC 00", QStringLiteral("a\u00E9\u20AC"), Both},
    {"begins with 126",             "7E 61 00",             "~a",                     Both},
    {"begins with 127, not quoted", "7F 61 00",             "\x7F" "a",               Write},
    {"ends at its first NUL",       "61 00",                QString("a") + QChar() + QString("b"), Write},
    {"nothing but a NUL",           "00",                   QString(QChar()),         Write},
    {"half a surrogate pair",       "3F 61 00",             QString(QChar(0xD83D)) + "a", Write},
    {"half a pair later",           "61 3F 00",             "a" + QString(QChar(0xDE00)), Write},
    {"quoted without need",         "7F 61 00",             "a",                      Read},
    {"one Quote is dropped",        "7F 7F 61 00",          "\x7F" "a",               Read},
    {"a lone Quote is empty",       "7F 00",                "",                       Read},
    {"not quoted though needed",    "C3 A9 00",             QStringLiteral("\u00E9"), Read},
    {"not UTF-8",                   "E9 41 00",             QStringLiteral("\uFFFDA"), Read},
    {"UTF-8 cut",                   "41 E2 82 00",          QStringLiteral("A\uFFFD\uFFFD"), Read},
    {"a byte order mark is dropped", "EF BB BF 41 00",      "A",                      Read},
};

static const TextRow kEncodedTexts[] = {
    {"ASCII",                  "05 EA 61 62 63 00",          "abc",                       Both},
    {"begins outside ASCII",   "06 EA 7F C3 A9 61 00",       QStringLiteral("\u00E9a"),   Both},
    {"outside ASCII later",    "05 EA 61 C3 A9 00",          QStringLiteral("a\u00E9"),   Both},
    {"four bytes",             "07 EA 7F F0 9F 98 80 00",    QStringLiteral("\U0001F600"), Both},
    {"empty",                  "02 EA 00",                   "",                          Both},
    {"null",                   "02 EA 00",                   QString(),                   Write},
    {"half a surrogate pair",  "04 EA 3F 61 00",             QString(QChar(0xDE00)) + "a", Write},
    {"length 30",  "1E EA" + QByteArray(" 78").repeated(28) + " 00", QString(28, 'x'),    Both},
    {"length 31",  "1F 1F EA" + QByteArray(" 78").repeated(29) + " 00", QString(29, 'x'), Both},
    {"length 31 because of the quote",
     "1F 1F EA 7F" + QByteArray(" C3 A9").repeated(14) + " 00", QString(14, QChar(0xE9)), Both},
    {"length 128", "1F 81 00 EA" + QByteArray(" 78").repeated(126) + " 00", QString(126, 'x'), Both},
    {"length-quote without need", "1F 04 EA 61 62 00",       "ab",                        Read},
    {"no 0 at the end",        "03 EA 61 62",                "ab",                        Read},
    {"all zeros at the end are dropped", "06 EA 61 62 00 00 00", "ab",                    Read},
    {"a 0 inside stays",       "05 EA 61 00 62 00",          QString("a") + QChar(0) + "b", Read},
    {"quoted ASCII",           "04 EA 7F 61 00",             "a",                         Read},
    {"one Quote is dropped",   "05 EA 7F 7F 61 00",          "\x7F" "a",                  Read},
    {"a lone Quote is empty",  "02 EA 7F",                   "",                          Read},
    {"Quote and 0 are empty",  "03 EA 7F 00",                "",                          Read},
    {"no text at all is empty","01 EA",                      "",                          Read},
    {"charset 3",              "04 83 61 62 00",             "ab",                        Read},
    {"the charset is read and not used", "04 84 C3 A9 00",   QStringLiteral("\u00E9"),    Read},
    {"Latin-1 is not known",   "03 84 E9 00",                QStringLiteral("\uFFFD"),    Read},
    {"charset of two bytes",   "06 02 03 E8 61 62 00",       "ab",                        Read},
    {"charset of length 0",    "03 00 61 00",                "a",                         Read},
    {"charset fills the length", "03 02 03 E8",              "",                          Read},
    {"a first byte of 128 and more is a length too",
     "80 EA" + QByteArray(" 78").repeated(126) + " 00",      QString(126, 'x'),           Read},
    {"a first byte of 255 is a length",
     "FF EA" + QByteArray(" 78").repeated(253) + " 00",      QString(253, 'x'),           Read},
    {"plain text",             "41 42 00",                   "AB",                        Read},
    {"plain text from 32 on",  "20 41 00",                   " A",                        Read},
    {"plain text, quoted",     "7F C3 A9 00",                QStringLiteral("\u00E9"),    Read},
    {"plain text of nothing is null", "00",                  QString(),                   Read},
};

static const FailingRow kFailingEncodedTexts[] = {
    {"nothing",                           "",                              0},
    {"no charset",                        "05",                            1},
    {"charset cut",                       "05 02 03",                      3},
    {"no length behind the length-quote", "1F",                            1},
    {"length cut",                        "1F 81",                         2},
    {"one byte past the end",             "05 EA 61 62 63",                2},
    {"far past the end",                  "1E EA 61 62 00",                2},
    {"a first byte of 255, past the end", "FF EA 61 62 00",                2},
    {"2 GB claimed",                      "1F 88 80 80 80 00 EA 61 00",    7},
    {"4 GB claimed",                      "1F 8F FF FF FF 7F EA 61 00",    7},
    {"length 0",                          "1F 00 EA 61 00",                3},
    {"length smaller than the charset",   "02 02 03 E8 61 00",             4},
    {"length smaller by much",            "01 04 00 00 00 6A 61 00",       6},
};
// clang-format on

class TestWspStream : public QObject {
    Q_OBJECT

private slots:
    void starts();
    void aNullArrayIsAnEmptyStream();
    void hasMore();
    void back_data();
    void back();
    void skip_data();
    void skip();
    void readByte();
    void writeByte();
    void readBytes_data();
    void readBytes();
    void writeBytes_data();
    void writeBytes();
    void arrays();

    void integer_data() { numbers(kIntegers); }
    void integer() { number(&WSP_Stream::readInteger, &WSP_Stream::writeInteger); }
    void longInteger_data() { numbers(kLongIntegers); }
    void longInteger() { number(&WSP_Stream::readInteger, &WSP_Stream::writeLongInteger); }
    void uintvar_data() { numbers(kUintvars); }
    void uintvar() { number(&WSP_Stream::readUintvar, &WSP_Stream::writeUintvar); }
    void valueLength_data() { numbers(kValueLengths); }
    void valueLength() { number(&WSP_Stream::readValueLength, &WSP_Stream::writeValueLength); }

    void textString_data() { texts(kTexts); }
    void textString();
    void textStringCut();
    void textStringWithSuffix_data();
    void textStringWithSuffix();
    void encodedString_data() { texts(kEncodedTexts); }
    void encodedString();
    void encodedStringFails_data();
    void encodedStringFails();
    void halfAPairIsNotQuoted();

    void overflow_data();
    void overflow();

private:
    template <size_t N> static void numbers(const NumberRow (&rows)[N]);
    template <size_t N> static void texts(const TextRow (&rows)[N]);
    template <typename ReadOne, typename WriteOne>
    static void number(ReadOne readOne, WriteOne writeOne);
    static void readNumber(quint32 (WSP_Stream::*readOne)(quint32 &));
};

using WriteStep = std::function<quint32(WSP_Stream &)>;

/// Writes into a buffer with room, one that fits exactly, and every smaller one.
static void compareWritten(const WriteStep &step, const QByteArray &wire)
{
    const QByteArray expected = toHex(fromHex(wire));
    const int size = int(fromHex(wire).size());
    for (int room : {size + 5, size}) {
        OutWire out(room);
        QCOMPARE(step(out.stream), 1U);
        QCOMPARE(out.written(), expected);
        QVERIFY(out.isCleanBehind());
        QVERIFY(!out.stream.hasOverflowed());
    }
    for (int room = 0; room < size; ++room) {
        OutWire out(room);
        QCOMPARE(step(out.stream), 0U);
        QVERIFY(out.stream.pos >= 0 && out.stream.pos <= room);
        QVERIFY(expected.startsWith(out.written()));
        QVERIFY(out.stream.hasOverflowed());
    }
}

void TestWspStream::starts()
{
    QArray<char> bytes(3);
    const WSP_Stream stream(bytes);
    QVERIFY(stream.data == bytes.data());
    QCOMPARE(stream.pos, 0);
    QCOMPARE(stream.size, 3);
    QCOMPARE(stream.remaining(), 3);
    QVERIFY(!stream.hasOverflowed());

    char memory[2] = {'a', 'b'};
    WSP_Stream part(memory, 1);
    QVERIFY(part.data == memory);
    QCOMPARE(part.size, 1);
    QCOMPARE(part.writeByte('x'), 1U);
    QCOMPARE(part.writeByte('y'), 0U);
    QCOMPARE(memory[1], 'b');
}

void TestWspStream::aNullArrayIsAnEmptyStream()
{
    QArray<char> null;
    WSP_Stream stream(null);
    QCOMPARE(stream.size, 0);
    QCOMPARE(stream.hasMore(), 0U);
    quint32 number = 7;
    QString text = "kept";
    QCOMPARE(stream.readInteger(number), 0U);
    QCOMPARE(stream.readUintvar(number), 0U);
    QCOMPARE(stream.readValueLength(number), 0U);
    QCOMPARE(stream.readTextString(text), 0U);
    QCOMPARE(stream.readEncodedString(text), 0U);
    QCOMPARE(number, 7U);
    QCOMPARE(text, QString("kept"));
    QCOMPARE(stream.writeTextString("a"), 0U);
    QCOMPARE(stream.writeEncodedString("a"), 0U);
    QCOMPARE(stream.readArray(null), 1U);
    QCOMPARE(stream.writeArray(null), 1U);
    QCOMPARE(stream.pos, 0);
}

void TestWspStream::hasMore()
{
    InWire in("ab");
    QCOMPARE(in.stream.hasMore(), 1U);
    in.stream.pos = 1;
    QCOMPARE(in.stream.hasMore(), 1U);
    QCOMPARE(in.stream.remaining(), 1);
    in.stream.pos = 2;
    QCOMPARE(in.stream.hasMore(), 0U);
    QCOMPARE(in.stream.remaining(), 0);
}

void TestWspStream::back_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("to");
    QTest::newRow("one") << 5 << 1 << 4;
    QTest::newRow("from the end") << 10 << 3 << 7;
    QTest::newRow("to the start") << 5 << 5 << 0;
    QTest::newRow("beyond the start") << 5 << 6 << 0;
    QTest::newRow("far beyond the start") << 5 << INT_MAX << 0;
    QTest::newRow("none") << 5 << 0 << 5;
    QTest::newRow("a negative count moves nothing") << 5 << -1 << 5;
    QTest::newRow("the lowest count moves nothing") << 5 << INT_MIN << 5;
}

void TestWspStream::back()
{
    QFETCH(int, from);
    QFETCH(int, count);
    InWire in(QByteArray(10, 'x'));
    in.stream.pos = from;
    QCOMPARE(in.stream.back(count), 1U);
    QTEST(in.stream.pos, "to");
}

void TestWspStream::skip_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("to");
    QTest::newRow("one") << 10 << 0 << 1 << 1;
    QTest::newRow("none") << 10 << 4 << 0 << 4;
    QTest::newRow("to the last byte") << 10 << 0 << 9 << 9;
    // A skip to the end or beyond stops one short of the end.
    QTest::newRow("to the end") << 10 << 0 << 10 << 9;
    QTest::newRow("beyond the end") << 10 << 0 << 100 << 9;
    QTest::newRow("far beyond the end") << 10 << 9 << INT_MAX << 9;
    QTest::newRow("none at the end") << 10 << 10 << 0 << 9;
    QTest::newRow("one at the end") << 10 << 10 << 1 << 9;
    QTest::newRow("a negative count moves nothing") << 10 << 4 << -1 << 4;
    QTest::newRow("a negative count at the end") << 10 << 10 << -1 << 10;
    QTest::newRow("the lowest count moves nothing") << 10 << 4 << INT_MIN << 4;
    QTest::newRow("one byte") << 1 << 0 << 1 << 0;
    QTest::newRow("an empty stream stays at 0") << 0 << 0 << 3 << 0;
    QTest::newRow("an empty stream, none") << 0 << 0 << 0 << 0;
}

void TestWspStream::skip()
{
    QFETCH(int, size);
    QFETCH(int, from);
    QFETCH(int, count);
    QFETCH(int, to);
    InWire in(QByteArray(size, 'x'));
    in.stream.pos = from;
    QCOMPARE(in.stream.skip(count), 1U);
    QCOMPARE(in.stream.pos, to);
    quint8 byte;
    QCOMPARE(in.stream.readByte(byte), to < size ? 1U : 0U);
}

void TestWspStream::readByte()
{
    InWire in(fromHex("00 FF"));
    quint8 byte = 7;
    QCOMPARE(in.stream.readByte(byte), 1U);
    QCOMPARE(int(byte), 0);
    QCOMPARE(in.stream.readByte(byte), 1U);
    QCOMPARE(int(byte), 255);
    QCOMPARE(in.stream.readByte(byte), 0U);
    QCOMPARE(int(byte), 255);
    QCOMPARE(in.stream.pos, 2);
}

void TestWspStream::writeByte()
{
    OutWire out(2);
    QCOMPARE(out.stream.writeByte(0), 1U);
    QCOMPARE(out.stream.writeByte(255), 1U);
    QVERIFY(!out.stream.hasOverflowed());
    QCOMPARE(out.stream.writeByte(1), 0U);
    QVERIFY(out.stream.hasOverflowed());
    QCOMPARE(out.written(), QByteArray("00 FF"));
}

void TestWspStream::readBytes_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("fits");
    QTest::newRow("all") << 0 << 4 << true;
    QTest::newRow("some") << 1 << 2 << true;
    QTest::newRow("the rest") << 3 << 1 << true;
    QTest::newRow("none") << 2 << 0 << true;
    QTest::newRow("none at the end") << 4 << 0 << true;
    QTest::newRow("one too many") << 0 << 5 << false;
    QTest::newRow("one at the end") << 4 << 1 << false;
    QTest::newRow("a sum that would wrap") << 4 << INT_MAX << false;
    QTest::newRow("a negative count") << 2 << -1 << false;
    QTest::newRow("the lowest count") << 2 << INT_MIN << false;
}

void TestWspStream::readBytes()
{
    QFETCH(int, from);
    QFETCH(int, count);
    QFETCH(bool, fits);
    const QByteArray all = "abcd";
    InWire in(all);
    in.stream.pos = from;
    QByteArray bytes(8, '-');
    QCOMPARE(in.stream.readBytes(bytes.data(), count), fits ? 1U : 0U);
    QCOMPARE(in.stream.pos, fits ? from + count : from);
    QCOMPARE(bytes, (fits ? all.mid(from, count) : QByteArray()).leftJustified(8, '-'));
}

void TestWspStream::writeBytes_data()
{
    readBytes_data();
}

void TestWspStream::writeBytes()
{
    QFETCH(int, from);
    QFETCH(int, count);
    QFETCH(bool, fits);
    OutWire out(4);
    out.stream.pos = from;
    QCOMPARE(out.stream.writeBytes("abcd", count), fits ? 1U : 0U);
    QCOMPARE(out.stream.pos, fits ? from + count : from);
    QCOMPARE(out.stream.hasOverflowed(), !fits);
    QByteArray expected(4, OutWire::kUnwritten);
    if (fits) {
        expected.replace(from, count, QByteArray("abcd").left(count));
    }
    QCOMPARE(toHex(out.array), toHex(expected));
}

void TestWspStream::arrays()
{
    QArray<char> three = QArray<char>::fromBytes("abc", 3);
    OutWire out(4);
    QCOMPARE(out.stream.writeArray(three), 1U);
    QCOMPARE(out.stream.writeArray(three), 0U);
    QCOMPARE(out.written(), toHex("abc"));
    QVERIFY(out.isCleanBehind());
    QCOMPARE(out.stream.writeArray(QArray<char>()), 1U);

    InWire in("wxyz");
    QCOMPARE(in.stream.readArray(three), 1U);
    QCOMPARE(three.toByteArray(), QByteArray("wxy"));
    QCOMPARE(in.stream.readArray(three), 0U);
    QCOMPARE(in.stream.pos, 3);
    QCOMPARE(three.toByteArray(), QByteArray("wxy"));
    QArray<char> none(0);
    QCOMPARE(in.stream.readArray(none), 1U);
    QCOMPARE(in.stream.pos, 3);
}

template <size_t N> void TestWspStream::numbers(const NumberRow (&rows)[N])
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<qint64>("value");
    QTest::addColumn<int>("way");
    for (const NumberRow &row : rows) {
        QTest::newRow(row.name) << row.wire << row.value << int(row.way);
    }
}

template <typename ReadOne, typename WriteOne>
void TestWspStream::number(ReadOne readOne, WriteOne writeOne)
{
    QFETCH(QByteArray, wire);
    QFETCH(qint64, value);
    QFETCH(int, way);
    if (way != Read) {
        compareWritten(
            [&](WSP_Stream &stream) {
                using Value =
                    std::conditional_t<std::is_same_v<WriteOne, quint32 (WSP_Stream::*)(quint32)>,
                                       quint32, qint32>;
                return (stream.*writeOne)(Value(value));
            },
            wire);
    }
    if (way != Write) {
        readNumber(readOne);
    }
}

void TestWspStream::readNumber(quint32 (WSP_Stream::*readOne)(quint32 &))
{
    QFETCH(QByteArray, wire);
    QFETCH(qint64, value);
    const QByteArray bytes = fromHex(wire);
    InWire in(bytes + "\x81");
    quint32 number = 99999;
    QCOMPARE((in.stream.*readOne)(number), 1U);
    QCOMPARE(qint64(number), value);
    QCOMPARE(in.stream.pos, int(bytes.size()));
    for (int size = 0; size < bytes.size(); ++size) {
        InWire cut(bytes.left(size));
        number = 99999;
        QCOMPARE((cut.stream.*readOne)(number), 0U);
        QCOMPARE(number, 99999U);
        QCOMPARE(cut.stream.pos, size);
    }
}

template <size_t N> void TestWspStream::texts(const TextRow (&rows)[N])
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("way");
    for (const TextRow &row : rows) {
        QTest::newRow(row.name) << row.wire << row.value << int(row.way);
    }
}

void TestWspStream::textString()
{
    QFETCH(QByteArray, wire);
    QFETCH(QString, value);
    QFETCH(int, way);
    if (way != Read) {
        compareWritten([&](WSP_Stream &stream) { return stream.writeTextString(value); }, wire);
    }
    if (way != Write) {
        const QByteArray bytes = fromHex(wire);
        InWire in(bytes + "next");
        QString text = "before";
        QCOMPARE(in.stream.readTextString(text), 1U);
        QCOMPARE(shown(text), shown(value));
        QCOMPARE(in.stream.pos, int(bytes.size()));
    }
}

/// The end of the stream ends a text too; only a stream without a byte fails.
void TestWspStream::textStringCut()
{
    const QByteArray bytes = fromHex("7F C3 A9 61 62 00");
    const char *const texts[] = {nullptr, "", "\uFFFD", "\u00E9", "\u00E9a", "\u00E9ab"};
    for (int size = 0; size < bytes.size(); ++size) {
        InWire in(bytes.left(size));
        QString text = "before";
        QCOMPARE(in.stream.readTextString(text), size == 0 ? 0U : 1U);
        QCOMPARE(shown(text), shown(size == 0 ? "before" : QString::fromUtf8(texts[size])));
        QCOMPARE(in.stream.pos, size);
    }
}

void TestWspStream::textStringWithSuffix_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("ASCII") << "+1" << QByteArray("2B 31 2F 54 00");
    QTest::newRow("null") << QString() << QByteArray("2F 54 00");
    QTest::newRow("empty") << "" << QByteArray("2F 54 00");
    QTest::newRow("begins outside ASCII")
        << QStringLiteral("\u00E9") << QByteArray("7F C3 A9 2F 54 00");
}

void TestWspStream::textStringWithSuffix()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, wire);
    compareWritten(
        [&](WSP_Stream &stream) { return stream.writeTextString(text, QLatin1String("/T")); },
        wire);
}

void TestWspStream::encodedString()
{
    QFETCH(QByteArray, wire);
    QFETCH(QString, value);
    QFETCH(int, way);
    if (way != Read) {
        compareWritten([&](WSP_Stream &stream) { return stream.writeEncodedString(value); }, wire);
    }
    if (way == Write) {
        return;
    }
    const QByteArray bytes = fromHex(wire);
    InWire in(bytes + "next");
    QString text = "before";
    QCOMPARE(in.stream.readEncodedString(text), 1U);
    QCOMPARE(shown(text), shown(value));
    QCOMPARE(in.stream.pos, int(bytes.size()));

    // Plain text is cut as a text string is; with a length every prefix fails.
    const quint8 first = quint8(bytes[0]);
    const bool isPlain = first == 0 || (first >= 32 && first <= 127);
    for (int size = 0; size < bytes.size(); ++size) {
        InWire cut(bytes.left(size));
        text = "before";
        QCOMPARE(cut.stream.readEncodedString(text), isPlain && size > 0 ? 1U : 0U);
        QVERIFY(text == "before" || (isPlain && size > 0));
    }
}

void TestWspStream::encodedStringFails_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<int>("stopsAt");
    for (const FailingRow &row : kFailingEncodedTexts) {
        QTest::newRow(row.name) << QByteArray(row.wire) << row.stopsAt;
    }
}

void TestWspStream::encodedStringFails()
{
    QFETCH(QByteArray, wire);
    InWire in(fromHex(wire));
    QString text = "before";
    QCOMPARE(in.stream.readEncodedString(text), 0U);
    QCOMPARE(text, QString("before"));
    QTEST(in.stream.pos, "stopsAt");
}

/// Half of a surrogate pair is written as "?", which needs no Quote and reads back.
void TestWspStream::halfAPairIsNotQuoted()
{
    OutWire out(16);
    QCOMPARE(out.stream.writeTextString(QString(QChar(0xD800))), 1U);
    QCOMPARE(out.written(), QByteArray("3F 00"));
}

void TestWspStream::overflow_data()
{
    QTest::addColumn<WriteStep>("step");
    QTest::newRow("writeByte") << WriteStep([](WSP_Stream &s) { return s.writeByte(1); });
    QTest::newRow("writeBytes") << WriteStep([](WSP_Stream &s) { return s.writeBytes("a", 1); });
    QTest::newRow("writeArray") << WriteStep(
        [](WSP_Stream &s) { return s.writeArray(QArray<char>::fromBytes("a", 1)); });
    QTest::newRow("writeInteger") << WriteStep([](WSP_Stream &s) { return s.writeInteger(1); });
    QTest::newRow("writeLongInteger")
        << WriteStep([](WSP_Stream &s) { return s.writeLongInteger(1); });
    QTest::newRow("writeUintvar") << WriteStep([](WSP_Stream &s) { return s.writeUintvar(1); });
    QTest::newRow("writeValueLength")
        << WriteStep([](WSP_Stream &s) { return s.writeValueLength(1); });
    QTest::newRow("writeTextString")
        << WriteStep([](WSP_Stream &s) { return s.writeTextString("ab"); });
    QTest::newRow("writeTextString, null")
        << WriteStep([](WSP_Stream &s) { return s.writeTextString(QString()); });
    QTest::newRow("writeTextString, not ASCII")
        << WriteStep([](WSP_Stream &s) { return s.writeTextString(QStringLiteral("a\u00E9")); });
    QTest::newRow("writeEncodedString")
        << WriteStep([](WSP_Stream &s) { return s.writeEncodedString("a"); });
    QTest::newRow("writeEncodedString, far too long")
        << WriteStep([](WSP_Stream &s) { return s.writeEncodedString(QString(100000, 'x')); });
    QTest::newRow("noteOverflow") << WriteStep([](WSP_Stream &s) {
        s.noteOverflow();
        return 0U;
    });
}

/// A refused write is remembered, also when a later one succeeds.
void TestWspStream::overflow()
{
    QFETCH(WriteStep, step);
    OutWire out(2);
    QCOMPARE(out.stream.writeBytes("ab", 2), 1U);
    QVERIFY(!out.stream.hasOverflowed());
    QCOMPARE(step(out.stream), 0U);
    QVERIFY(out.stream.hasOverflowed());
    out.stream.back(1);
    QCOMPARE(out.stream.writeByte('c'), 1U);
    QVERIFY(out.stream.hasOverflowed());
    QCOMPARE(out.written(), toHex("ac"));
}

QTEST_GUILESS_MAIN(TestWspStream)
#include "tst_wsp_stream.moc"

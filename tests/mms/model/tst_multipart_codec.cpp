// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

namespace {

struct ReadRow {
    const char *name;
    const char *headers;
    const char *data;
    const char *expected;
};

const char *const kFails = "fails";

// clang-format off
const ReadRow kEntries[] = {
    {"media number", "83", "61", "text/plain id=- at=- [61]"},
    {"lowest media number", "80", "", "*/* id=- at=- []"},
    {"highest media number", "FF", "61", "video/x-mpeg id=- at=- [61]"},
    {"media as text", "61 2F 62 00", "61", "a/b id=- at=- [61]"},
    {"media as text, lowest first byte", "20 2F 62 00", "", " /b id=- at=- []"},
    {"media as text without its end", "61 2F 62", "61", "a/b id=- at=- [61]"},
    {"media as text behind a quote", "7F 61 2F 62 00", "", "a/b id=- at=- []"},
    {"media as text without a slash", "61 00", "", "a/a id=- at=- []"},
    {"length and media number", "01 9D", "", "image/gif id=- at=- []"},
    {"length and media as text", "04 61 2F 62 00", "", "a/b id=- at=- []"},
    {"long form of the length", "1F 01 9D", "", "image/gif id=- at=- []"},
    {"longer form of the length", "1F 80 80 01 9D", "", "image/gif id=- at=- []"},
    {"no headers", "", "61", kFails},
    {"length 0", "00", "", kFails},
    {"length past the end", "02 9D", "", kFails},
    {"long length past the end", "1F 8F FF FF FF 7F 9D", "", kFails},
    {"long length cut", "1F 81", "", kFails},
    {"inner content type of 1F", "02 1F 9D", "", kFails},
    {"inner content type of 0", "02 00 9D", "", kFails},

    {"charset UTF-8 sets nothing", "03 9D 81 EA", "", "image/gif id=- at=- []"},
    {"charset ASCII sets nothing", "03 9D 81 83", "", "image/gif id=- at=- []"},
    {"charset 1000", "05 9D 81 02 03 E8", "", "image/gif;charset=UCS2 id=- at=- []"},
    {"charset 1013", "05 9D 81 02 03 F5", "", "image/gif;charset=UTF-16BE id=- at=- []"},
    {"charset 1014", "05 9D 81 02 03 F6", "", "image/gif;charset=UTF-16LE id=- at=- []"},
    {"charset 1015", "05 9D 81 02 03 F7", "", "image/gif;charset=UTF-16 id=- at=- []"},
    {"charset 1015 in five bytes", "08 9D 81 05 00 00 00 03 F7", "",
        "image/gif;charset=UTF-16 id=- at=- []"},
    {"charset 1001 sets nothing", "05 9D 81 02 03 E9", "", "image/gif id=- at=- []"},
    {"charset missing", "02 9D 81", "", kFails},
    {"charset cut", "04 9D 81 02 03", "", kFails},
    {"name", "04 9D 85 78 00", "", "image/gif id=- at=x []"},
    {"name without its end", "03 9D 85 78", "", "image/gif id=- at=x []"},
    {"null name", "03 9D 85 00", "", "image/gif id=- at=- []"},
    {"name missing", "02 9D 85", "", kFails},
    {"name with quotes and brackets", "08 9D 85 22 3C 78 3E 22 00", "",
        "image/gif id=- at=x []"},
    {"0x89 is stored as start and 0x8A as type", "07 9D 89 78 00 8A 79 00", "",
        "image/gif;start=x;type=y id=- at=- []"},
    {"null start and type", "05 9D 89 00 8A 00", "", "image/gif id=- at=- []"},
    {"start missing", "02 9D 89", "", kFails},
    {"type missing", "02 9D 8A", "", kFails},
    // of the parameters with a name only the boundary is read
    {"boundary", "0C 9D 62 6F 75 6E 64 61 72 79 00 62 00", "",
        "image/gif;boundary=b id=- at=- []"},
    {"boundary inside a name", "0E 9D 6D 62 6F 75 6E 64 61 72 79 73 00 62 00", "",
        "image/gif;boundary=b id=- at=- []"},
    {"boundary in capitals", "0C 9D 42 6F 75 6E 64 61 72 79 00 62 00", "",
        "image/gif id=- at=- []"},
    {"boundary without a value", "0A 9D 62 6F 75 6E 64 61 72 79 00", "", kFails},
    {"boundary without its end", "09 9D 62 6F 75 6E 64 61 72 79", "", kFails},
    {"boundary with a null value", "0B 9D 62 6F 75 6E 64 61 72 79 00 00", "",
        "image/gif id=- at=- []"},
    {"another name is dropped", "05 9D 61 00 62 00", "", "image/gif id=- at=- []"},
    {"the value of another name is the next name",
        "0E 9D 61 00 62 6F 75 6E 64 61 72 79 00 62 00", "", "image/gif;boundary=b id=- at=- []"},
    {"the value of another name is the next parameter", "06 9D 61 00 85 78 00", "",
        "image/gif id=- at=x []"},
    {"a name runs into the boundary", "0F 9D 7F 85 6E 62 6F 75 6E 64 61 72 79 00 62 00", "",
        "image/gif;boundary=b id=- at=n []"},
    {"a charset runs into the boundary", "11 9D 7F 81 02 03 E8 62 6F 75 6E 64 61 72 79 00 62 00",
        "", "image/gif;boundary=b;charset=UCS2 id=- at=- []"},
    {"another parameter runs into the boundary",
        "0F 9D 83 85 6E 62 6F 75 6E 64 61 72 79 00 62 00", "", "image/gif;boundary=b id=- at=- []"},
    {"a name without text runs into the boundary",
        "0E 9D 7F 85 62 6F 75 6E 64 61 72 79 00 62 00", "", kFails},
    {"a lone 0 is a name", "05 9D 00 85 78 00", "", "image/gif id=- at=x []"},

    {"location", "9D 8E 78 00", "", "image/gif id=- at=x []"},
    {"location over name", "04 9D 85 6E 00 8E 78 00", "", "image/gif id=- at=x []"},
    {"null location over name", "04 9D 85 6E 00 8E 00", "", "image/gif id=- at=- []"},
    {"the last location counts", "9D 8E 78 00 8E 79 00", "", "image/gif id=- at=y []"},
    {"location without its end", "9D 8E 78", "", "image/gif id=- at=x []"},
    {"location missing", "9D 8E", "", kFails},
    {"location in quotes and brackets", "9D 8E 22 3C 78 2E 6A 70 67 3E 22 00", "",
        "image/gif id=- at=x.jpg []"},
    {"location of quotes and brackets alone", "9D 8E 22 3C 3E 22 00", "",
        "image/gif id=- at='' []"},
    {"location in UTF-8", "9D 8E 7F C3 A4 00", "", "image/gif id=- at=\xC3\xA4 []"},
    {"id behind a quote", "9D C0 22 3C 61 31 3E 00", "", "image/gif id=<a1> at=<a1> []"},
    {"id", "9D C0 61 31 00", "", "image/gif id=a1 at=a1 []"},
    {"id and location", "9D C0 61 00 8E 78 00", "", "image/gif id=a at=x []"},
    {"id without its end", "9D C0 61", "", "image/gif id=a at=a []"},
    {"null id", "9D C0 00", "", "image/gif id=- at=- []"},
    {"null id behind a quote", "9D C0 22 00", "", "image/gif id=- at=- []"},
    {"id missing", "9D C0", "", kFails},
    {"id missing behind a quote", "9D C0 22", "", kFails},
    // bytes that are no location or content id are stepped over one at a time
    {"another header", "9D 91 31 32 00 8E 78 00", "", "image/gif id=- at=x []"},
    {"a value that looks like a location", "9D 91 8E 61 00", "", "image/gif id=- at=a []"},
    {"a value that looks like an id", "9D 91 C0 61 00", "", "image/gif id=a at=a []"},

    {"text loses its zero", "83", "61 00", "text/plain id=- at=- [61]"},
    {"smil loses its zero", "03 D1 81 EA", "61 00", "application/smil id=- at=- [61]"},
    {"a picture keeps its zero", "9D", "61 00", "image/gif id=- at=- [61 00]"},
    {"UTF-16 with a mark, units exchanged", "05 83 81 02 03 F7", "FE FF 00 61 00 62",
        "text/plain;charset=UTF-8 id=- at=- [E6 88 80 E6 84 80]"},
    {"UTF-16 of the little end", "05 83 81 02 03 F7", "FF FE 61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [61 62]"},
    {"UTF-16LE keeps its last character", "05 83 81 02 03 F6", "61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [61 62]"},
    {"UTF-16LE ends at its zero", "05 83 81 02 03 F6", "61 00 00 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [61]"},
    {"UCS2", "05 83 81 02 03 E8", "61 00 62 00", "text/plain;charset=UTF-8 id=- at=- [62 61]"},
    {"UTF-16BE", "05 83 81 02 03 F5", "61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [62 61]"},
    {"other text is converted", "05 82 81 02 03 F6", "61 00",
        "text/html;charset=UTF-8 id=- at=- [61]"},
    {"Text in capitals is converted", "0B 54 45 58 54 2F 62 00 81 02 03 F6", "61 00",
        "TEXT/b;charset=UTF-8 id=- at=- [61]"},
    {"smil is not converted", "05 D1 81 02 03 F6", "61 00",
        "application/smil;charset=UTF-16LE id=- at=- [61]"},
    {"no text to convert", "05 83 81 02 03 F6", "", "text/plain;charset=UTF-8 id=- at=- []"},
};
// clang-format on

QByteArray uintvar(quint32 value)
{
    QByteArray bytes(1, char(value & 0x7F));
    while (value >>= 7) {
        bytes.prepend(char(0x80 | (value & 0x7F)));
    }
    return bytes;
}

QByteArray entry(const QByteArray &headers, const QByteArray &data)
{
    return uintvar(quint32(headers.size())) + uintvar(quint32(data.size())) + headers + data;
}

QByteArray body(const QByteArrayList &entries)
{
    return QByteArray(1, char(entries.size())) + entries.join();
}

struct ReadBody {
    bool result;
    WMMSMultipart root;
};

ReadBody read(const QByteArray &bytes, int offset = 0)
{
    ReadBody made;
    QArray<char> array = bytesOf(bytes);
    made.result = made.root.construct(array, offset);
    return made;
}

qsizetype partCount(const WMMSMultipart &part)
{
    return part.subParts() ? part.subParts()->size() : 0;
}

// A body of `levels` multiparts, each the only part of the one around it.
QByteArray nestedBody(int levels)
{
    QByteArray bytes = body({entry(fromHex("9D"), "x")});
    for (int level = 1; level < levels; ++level) {
        bytes = body({entry(fromHex("B3"), bytes)});
    }
    return bytes;
}

QByteArray hexOfText(const char *text)
{
    return toHex(QByteArray(text));
}

// A root with `parts` whose export has room to spare.
WMMSMultipart roomyRoot(const QList<WMMSMultipart> &parts)
{
    WMMSMultipart root = parentOf(kMixed, parts);
    root.setData(bytesOf(QByteArray(20000, '.')));
    return root;
}

// The headers of the first entry of an exported body.
QByteArray firstHeaders(const QArray<char> &out)
{
    const QByteArray bytes = out.toByteArray();
    int at = 1;
    quint32 lengths[2] = {0, 0};
    for (quint32 &length : lengths) {
        do {
            length = length << 7 | (bytes.at(at) & 0x7F);
        } while (bytes.at(at++) & 0x80);
    }
    return bytes.mid(at, lengths[0]);
}

} // namespace

class TestMultipartCodec : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void readsOneEntry_data();
    void readsOneEntry();
    void readsBodies_data();
    void readsBodies();
    void readsBehindAnOffset();
    void anOffsetBeyondTheEndReadsTheLastByte();
    void appendsToThePartsThatAreThere();
    void theNumberOfEntriesIsOneByte();
    void everyTruncationFails();
    void everyTruncationOfTheHeaders();
    void nestedBodiesAreFollowedSixteenDeep();
    void aNestedBodyThatCannotBeRead_data();
    void aNestedBodyThatCannotBeRead();
    void theWorkGrowsWithTheInput();
    void partsHaveBytesOfTheirOwn();
    void readsItsOwnData();
    void logsWhatItReads();

    void writesOneEntry_data();
    void writesOneEntry();
    void aBodyIsItsCountAndItsEntries();
    void aPartWithoutSubPartsIsOneEntry();
    void theFirstBytesAreKept();
    void theRoomIsTheApproximateSize();
    void exportFails();
    void aContentTypeHasRoomFor1024Bytes();
    void headersThatDoNotFitAreCut();
    void moreThan255PartsAreCountedModulo256();
    void nestedPartsAreWrittenFirst();
    void exportingLeavesCopiesAlone();
    void exportsIntoItsOwnData();
    void whatIsWrittenReadsBack();
};

void TestMultipartCodec::readsOneEntry_data()
{
    QTest::addColumn<QByteArray>("headers");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("expected");
    for (const ReadRow &row : kEntries) {
        QTest::newRow(row.name) << fromHex(row.headers) << fromHex(row.data)
                                << QByteArray(row.expected);
    }
    for (const char *other : {"82", "83", "84", "86", "87", "88", "8B", "FF", "22", "01", "1F"}) {
        QTest::addRow("parameter %s is a name", other)
            << fromHex(QByteArray("04 9D ") + other + " 78 00") << QByteArray()
            << QByteArray("image/gif id=- at=- []");
    }
}

void TestMultipartCodec::readsOneEntry()
{
    QFETCH(QByteArray, headers);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, expected);
    const ReadBody made = read(body({entry(headers, data)}));
    QCOMPARE(made.result ? shown(made.root.subParts()->first()) : QByteArray("fails"), expected);
    QCOMPARE(partCount(made.root), made.result ? 1 : 0);
}

void TestMultipartCodec::readsBodies_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QByteArray>("parts");
    const auto row = [](const char *name, const char *hex, bool result, const char *parts) {
        QTest::newRow(name) << fromHex(hex) << result << QByteArray(parts);
    };
    row("nothing", "", false, "''");
    row("count 0", "00", true, "{}");
    row("count 0 and more bytes", "00 01 01 9D 61", true, "{}");
    row("one entry", "01  01 01 9D 61", true, "{[61]}");
    row("two entries", "02  01 01 9D 61  01 02 9D 62 63", true, "{[61][62 63]}");
    row("more bytes than entries", "01  01 01 9D 61  FF", true, "{[61]}");
    row("fewer entries than counted", "02  01 01 9D 61", false, "{[61]}");
    row("data past the end", "01  01 02 9D 61", false, "{}");
    row("headers past the end", "01  02 00 9D", false, "{}");
    row("largest headers length", "01  8F FF FF FF 7F 00 9D 61", false, "{}");
    row("largest data length", "01  01 8F FF FF FF 7F 9D 61", false, "{}");
    row("headers length of the sign bit", "01  88 80 80 80 00 00 9D", false, "{}");
    row("data length of the sign bit", "01  01 88 80 80 80 00 9D", false, "{}");
    row("length of ten bytes", "01  80 80 80 80 80 80 80 80 80 01 01 9D 61", true, "{[61]}");
    row("the second entry fails", "03  01 01 9D 61  01 00 1F  01 01 9D 61", false, "{[61]}");
    row("lengths missing", "01", false, "{}");
    row("data length missing", "01 01", false, "{}");
}

void TestMultipartCodec::readsBodies()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, result);
    QFETCH(QByteArray, parts);
    const ReadBody made = read(bytes);
    QByteArray found = made.root.subParts() ? "{" : "''";
    if (made.root.subParts()) {
        for (const WMMSMultipart &part : *made.root.subParts()) {
            found += '[' + hexOf(part.getData()) + ']';
        }
        found += '}';
    }
    QCOMPARE(found, parts);
    QCOMPARE(made.result, result);
}

void TestMultipartCodec::readsBehindAnOffset()
{
    const QByteArray bytes = fromHex("FF FF FF  01  01 01 9D 61");
    QVERIFY(read(bytes, 3).result);
    QCOMPARE(partCount(read(bytes, 3).root), 1);
    QVERIFY2(!read(bytes, -1).result, "a negative offset is none");
}

void TestMultipartCodec::anOffsetBeyondTheEndReadsTheLastByte()
{
    for (const int offset : {2, 3, 100, INT_MAX}) {
        QVERIFY(read(fromHex("05 06 00"), offset).result);
        QVERIFY(!read(fromHex("05 06 01"), offset).result);
    }
}

void TestMultipartCodec::appendsToThePartsThatAreThere()
{
    WMMSMultipart root = parentOf(kMixed, {partOf("image/gif", "first")});
    QArray<char> bytes = arrayOf("01  01 01 9D 61");
    QVERIFY(root.construct(bytes, 0));
    QVERIFY(root.construct(bytes, 0));
    QCOMPARE(partCount(root), 3);
    QCOMPARE(hexOf(root.subParts()->first().getData()), toHex("first"));
}

// The number of entries is one byte
void TestMultipartCodec::theNumberOfEntriesIsOneByte()
{
    for (const int count : {127, 128, 129, 255}) {
        const ReadBody made = read(body(QByteArrayList(count, entry(fromHex("9D"), "x"))));
        QVERIFY(made.result);
        QCOMPARE(partCount(made.root), count);
    }
}

void TestMultipartCodec::everyTruncationFails()
{
    const QByteArray first = entry(fromHex("0A 9D 85 61 00 62 6F 75 6E 64 61 8E 61 00"), "abc");
    const QByteArray second = entry(fromHex("83 C0 22 3C 62 3E 00"), "defg");
    const QByteArray whole = body({first, second});
    QVERIFY(read(whole).result);
    for (int size = 0; size < whole.size(); ++size) {
        const ReadBody made = read(whole.left(size));
        QVERIFY2(!made.result, qPrintable(QString::number(size)));
        QCOMPARE(partCount(made.root), size >= 1 + first.size() ? 1 : 0);
    }
}

void TestMultipartCodec::everyTruncationOfTheHeaders()
{
    // The lengths that read: behind the content type, and inside a text or behind it.
    const QByteArray whole = fromHex("0A 83 81 EA 85 61 62 00 8A 63 00  8E 64 65 00  C0 22 66 00");
    const QList<int> readable = {11, 13, 14, 15, 18, 19};
    for (int size = 0; size <= whole.size(); ++size) {
        QCOMPARE(qMakePair(size, read(body({entry(whole.left(size), "x")})).result),
                 qMakePair(size, readable.contains(size)));
    }
}

void TestMultipartCodec::nestedBodiesAreFollowedSixteenDeep()
{
    for (const int levels : {1, 2, 16, 17, 18, 40}) {
        const ReadBody made = read(nestedBody(levels));
        QVERIFY(made.result);
        int depth = 0;
        const WMMSMultipart *part = &made.root;
        while (partCount(*part) == 1) {
            part = &part->subParts()->first();
            ++depth;
        }
        QCOMPARE(depth, qMin(levels, 17));
        QCOMPARE(hexOf(part->getData()),
                 levels <= 17 ? QByteArray("78") : toHex(nestedBody(levels - 17)));
    }
}

void TestMultipartCodec::aNestedBodyThatCannotBeRead_data()
{
    QTest::addColumn<QByteArray>("headers");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const char *headers, const char *data,
                        const char *expected) {
        QTest::newRow(name) << fromHex(headers) << fromHex(data) << QByteArray(expected);
    };
    row("a nested body", "A3", "01 01 01 9D 61",
        "application/vnd.wap.multipart.mixed id=- at=- [01 01 01 9D 61] "
        "{(image/gif id=- at=- [61])}");
    row("a nested body that cannot be read is no failure", "B3", "02 01 01 9D 61 05",
        "application/vnd.wap.multipart.related id=- at=- [02 01 01 9D 61 05] "
        "{(image/gif id=- at=- [61])}");
    row("a nested body without bytes", "B3", "",
        "application/vnd.wap.multipart.related id=- at=- []");
    row("an alternative is not decoded", "A6", "01 01 01 9D 61",
        "application/vnd.wap.multipart.alternative id=- at=- [01 01 01 9D 61]");
    row("a protected message without a boundary is decoded", "C8", "01 01 01 9D 61",
        "application/vnd.oma.drm.message id=- at=- [01 01 01 9D 61] "
        "{(image/gif id=- at=- [61])}");
    row("a protected message with a boundary is not decoded",
        "0C C8 62 6F 75 6E 64 61 72 79 00 62 00", "01 01 01 9D 61",
        "application/vnd.oma.drm.message;boundary=b id=- at=- [01 01 01 9D 61]");
}

void TestMultipartCodec::aNestedBodyThatCannotBeRead()
{
    QFETCH(QByteArray, headers);
    QFETCH(QByteArray, data);
    const ReadBody made = read(body({entry(headers, data), entry(fromHex("9D"), "behind")}));
    QVERIFY(made.result);
    QTEST(shown(made.root.subParts()->first()), "expected");
    QCOMPARE(partCount(made.root), 2);
}

void TestMultipartCodec::theWorkGrowsWithTheInput()
{
    // Thousands of levels, each as large as what is left: read in sixteen steps, not in thousands.
    const QByteArray deep = nestedBody(3000);
    const ReadBody nested = read(deep);
    QVERIFY(nested.result);
    qint64 held = 0;
    for (const WMMSMultipart *part = &nested.root; partCount(*part) > 0;) {
        part = &part->subParts()->first();
        held += part->getData().size();
    }
    QVERIFY2(held <= 17 * deep.size(), qPrintable(QString::number(held)));

    // A count that the bytes cannot hold, at every level.
    const ReadBody made =
        read(QByteArray(1, char(0xFF)) + entry(fromHex("B3"), QByteArray(9, char(0xFF))));
    QVERIFY(!made.result);
    QCOMPARE(partCount(made.root), 1);
}

void TestMultipartCodec::partsHaveBytesOfTheirOwn()
{
    QArray<char> bytes = arrayOf("01  01 01 9D 61");
    WMMSMultipart root;
    QVERIFY(root.construct(bytes, 0));
    bytes.fill('z');
    QCOMPARE(hexOf(root.subParts()->first().getData()), QByteArray("61"));
    root.getSubMmsMultipartList().first().getData()[0] = 'q';
    QCOMPARE(hexOf(bytes), QByteArray("7A 7A 7A 7A 7A"));
}

void TestMultipartCodec::readsItsOwnData()
{
    WMMSMultipart root = partOf(kMixed, fromHex("01  01 01 9D 61"));
    QVERIFY(root.construct(root.getData(), 0));
    QCOMPARE(partCount(root), 1);
    WMMSMultipart &below = root.getSubMmsMultipartList().first();
    below.setData(bytesOf(body(QByteArrayList(100, entry(fromHex("9D"), "x")))));
    QVERIFY(root.construct(below.getData(), 0));
    QCOMPARE(partCount(root), 101);
}

void TestMultipartCodec::logsWhatItReads()
{
    LogCapture log;
    read(body({entry(fromHex("05 83 81 02 03 F7"), fromHex("FE FF 00 61 00 62")),
               entry(fromHex("B3"), fromHex("01 01 01 9D 61")), entry(fromHex("9D"), "x")}));
    QCOMPARE(
        log.lines(),
        QStringList({"numOfParts:3", "charset=UTF-16", "Little endian UTF-16",
                     "unicode to string: ??", "numOfParts:1", "charset=", "charset=", "charset="}));
    log.clear();
    read(fromHex("02 01 01 9D 61"));
    read(QByteArray());
    QCOMPARE(log.lines(), QStringList({"numOfParts:2", "charset="}));
}

void TestMultipartCodec::writesOneEntry_data()
{
    QTest::addColumn<WMMSContentType>("type");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("location");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, const WMMSContentType &type, const char *id,
                        const char *location, const char *data, const char *expected) {
        QTest::newRow(name) << type << QString::fromUtf8(id) << QString::fromUtf8(location)
                            << fromHex(data) << toHex(fromHex(expected));
    };

    row("bare media number", typeOf("image/gif"), "", "", "61", "01 01  9D 61");
    row("lowest number written", typeOf("text/*"), "", "", "", "04 00  03 81 81 EA");
    row("highest number written", typeOf("application/vnd.wap.mms-message"), "", "", "",
        "01 00  BE");
    row("number 0 is text", typeOf("*/*"), "", "", "", "05 00  04 2A 2F 2A 00");
    row("number 63 is text", typeOf("application/vnd.wap.rollover-certificate"), "", "", "",
        ("2B 00  1F 29 " + hexOfText("application/vnd.wap.rollover-certificate") + " 00")
            .constData());
    row("smil is text", typeOf("application/smil"), "", "", "61",
        ("12 01  11 " + hexOfText("application/smil") + " 00  61").constData());
    row("unknown type is text", typeOf("a/b"), "", "", "", "05 00  04 61 2F 62 00");
    // every text part is labelled UTF-8
    row("every text part is labelled UTF-8", typeOf("text/plain", {{"charset", "UTF-16"}}), "", "",
        "61", "04 01  03 83 81 EA  61");
    row("the main type counts with its case", typeOf("Text/b"), "", "", "",
        "08 00  07 54 65 78 74 2F 62 00");
    row("unknown text", typeOf("text/b"), "", "", "", "0A 00  09 74 65 78 74 2F 62 00 81 EA");
    row("location twice", typeOf("image/jpeg"), "", "x.jpg", "",
        "10 00  08 9E 85 78 2E 6A 70 67 00  8E 78 2E 6A 70 67 00");
    row("location outside ASCII", typeOf("image/jpeg"), "", "\xC3\xA4", "",
        "0C 00  06 9E 85 7F C3 A4 00  8E 7F C3 A4 00");
    row("boundary", typeOf("image/gif", {{"boundary", "b"}}), "", "", "",
        "0D 00  0C 9D 62 6F 75 6E 64 61 72 79 00 62 00");
    row("text, location and boundary", typeOf("text/plain", {{"boundary", "b"}}), "", "x", "",
        "15 00  11 83 81 EA 85 78 00 62 6F 75 6E 64 61 72 79 00 62 00  8E 78 00");
    row("no other parameter", typeOf("image/gif", {{"name", "n"}, {"type", "t"}, {"start", "s"}}),
        "", "", "", "01 00  9D");
    row("id with a bracket", typeOf("image/gif"), "<a1>", "", "", "08 00  9D C0 22 3C 61 31 3E 00");
    row("id without a bracket", typeOf("image/gif"), "a1", "", "", "05 00  9D C0 61 31 00");
    row("location before id", typeOf("image/gif"), "a", "x", "",
        "0B 00  04 9D 85 78 00  8E 78 00  C0 61 00");
    row("a type of 30 bytes", typeOf("image/gif"), "", "aaaaaaaaaaaaaaaaaaaaaaaaaaa", "",
        ("3C 00  1E 9D 85 " + hexOfText("aaaaaaaaaaaaaaaaaaaaaaaaaaa") + " 00 8E "
         + hexOfText("aaaaaaaaaaaaaaaaaaaaaaaaaaa") + " 00")
            .constData());
    row("a type of 31 bytes", typeOf("image/gif"), "", "aaaaaaaaaaaaaaaaaaaaaaaaaaaa", "",
        ("3F 00  1F 1F 9D 85 " + hexOfText("aaaaaaaaaaaaaaaaaaaaaaaaaaaa") + " 00 8E "
         + hexOfText("aaaaaaaaaaaaaaaaaaaaaaaaaaaa") + " 00")
            .constData());
}

void TestMultipartCodec::writesOneEntry()
{
    QFETCH(WMMSContentType, type);
    QFETCH(QString, id);
    QFETCH(QString, location);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, expected);
    WMMSMultipart part;
    part.setContentLocation("");
    part.setContentType(type);
    part.setContentID(id);
    part.setContentLocation(location);
    part.setData(bytesOf(data));
    QArray<char> out;
    QVERIFY(part.exportTo(out, 0));
    QCOMPARE(hexOf(out), expected);
    WMMSMultipart root = parentOf(kMixed, {part});
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), "01 " + expected);
}

void TestMultipartCodec::aBodyIsItsCountAndItsEntries()
{
    WMMSMultipart root =
        parentOf(kMixed, {partOf("image/gif", "a", "", ""), partOf("image/png", "bc", "", "")});
    QArray<char> out = arrayOf("FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF");
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("02 01 01 9D 61 01 02 A0 62 63"));
}

void TestMultipartCodec::aPartWithoutSubPartsIsOneEntry()
{
    WMMSMultipart part = partOf("image/gif", "a");
    QArray<char> out;
    QVERIFY(part.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("01 01 9D 61"));
    part.creatSubList();
    QVERIFY(part.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("01 01 9D 61"));
    WMMSMultipart back;
    QVERIFY2(!back.construct(out, 0), "the first byte is taken as the count");
}

void TestMultipartCodec::theFirstBytesAreKept()
{
    WMMSMultipart root = parentOf(kMixed, {partOf("image/gif", "a")});
    QArray<char> out = arrayOf("11 22 33 44");
    QVERIFY(root.exportTo(out, 2));
    QCOMPARE(hexOf(out), QByteArray("11 22 01 01 01 9D 61"));
    QVERIFY2(root.exportTo(out, -1), "a negative offset is none");
    QCOMPARE(hexOf(out), QByteArray("01 01 01 9D 61"));
}

void TestMultipartCodec::theRoomIsTheApproximateSize()
{
    WMMSMultipart root = parentOf(kMixed, {partOf("image/gif", "a")});
    const int fits = root.getApproxSize() - 5;
    QArray<char> out;
    QVERIFY(root.exportTo(out, fits));
    QCOMPARE(out.size(), fits + 5);
    for (const int offset : {fits + 1, fits + 4, fits + 5, fits + 6, 100000, INT_MAX}) {
        QVERIFY2(!root.exportTo(out, offset), qPrintable(QString::number(offset)));
    }
}

void TestMultipartCodec::exportFails()
{
    QArray<char> out;
    WMMSMultipart root = parentOf("", {partOf("image/gif", "a")});
    QVERIFY2(!root.exportTo(out, 0), "no content type");
    root.setContentType(typeOf(kMixed));
    QVERIFY(root.exportTo(out, 0));
    root.getSubMmsMultipartList().append(WMMSMultipart());
    QVERIFY2(!root.exportTo(out, 0), "a part without a content type");
    root.setSubMmsMultipart({parentOf(kMixed, {WMMSMultipart()})});
    QVERIFY2(!root.exportTo(out, 0), "a part without a content type, below");
    QVERIFY2(!WMMSMultipart().exportTo(out, 0), "nothing");
}

void TestMultipartCodec::aContentTypeHasRoomFor1024Bytes()
{
    // media number, name token, name, its end
    QArray<char> out;
    WMMSMultipart root = roomyRoot({partOf("image/gif", "d", "i", QString(1021, 'n'))});
    QVERIFY(root.exportTo(out, 0));
    const QByteArray whole = firstHeaders(out);
    QCOMPARE(toHex(whole.left(5)), QByteArray("1F 88 00 9D 85"));
    QCOMPARE(whole.size(), 3 + 1024 + 1 + 1022 + 3);

    root = roomyRoot({partOf("image/gif", "d", "i", QString(1022, 'n'))});
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("01 00 01 64"));
}

// headers that do not fit are cut
void TestMultipartCodec::headersThatDoNotFitAreCut()
{
    // content type, id token, id, its end
    QArray<char> out;
    WMMSMultipart root = roomyRoot({partOf("image/gif", "d", QString(5117, 'i'), "")});
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(toHex(firstHeaders(out)), "9D C0 " + toHex(QByteArray(5117, 'i')) + " 00");

    root = roomyRoot({partOf("image/gif", "d", QString(5118, 'i'), "")});
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(toHex(firstHeaders(out)), "9D C0 " + toHex(QByteArray(5118, 'i')));

    root = roomyRoot({partOf("image/gif", "d", QString(5119, 'i'), "")});
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("01 02 01 9D C0 64"));
}

void TestMultipartCodec::moreThan255PartsAreCountedModulo256()
{
    for (const int count : {255, 256, 257}) {
        WMMSMultipart root =
            parentOf(kMixed, QList<WMMSMultipart>(count, partOf("image/gif", "a")));
        QArray<char> out;
        QVERIFY(root.exportTo(out, 0));
        QCOMPARE(out.size(), 1 + 4 * count);
        QCOMPARE(quint8(out[0]), quint8(count));
        WMMSMultipart back;
        QVERIFY(back.construct(out, 0));
        QCOMPARE(partCount(back), count % 256);
    }
}

void TestMultipartCodec::nestedPartsAreWrittenFirst()
{
    WMMSMultipart inner = parentOf(kRelated, {partOf("image/gif", "a")});
    inner.setData(bytesOf("what was here before"));
    WMMSMultipart root = parentOf(kMixed, {inner, partOf("image/png", "b")});
    root.setData(bytesOf("root"));
    QArray<char> out;
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(hexOf(out), QByteArray("02 01 05 B3 01 01 01 9D 61 01 01 A0 62"));
    QCOMPARE(root.subParts()->first().getData().size(), 0);
    QCOMPARE(hexOf(root.subParts()->first().subParts()->first().getData()), QByteArray("61"));
    QCOMPARE(hexOf(root.getData()), toHex("root"));
    QArray<char> again;
    QVERIFY(root.exportTo(again, 0));
    QCOMPARE(hexOf(again), hexOf(out));
}

void TestMultipartCodec::exportingLeavesCopiesAlone()
{
    WMMSMultipart inner = parentOf(kRelated, {partOf("image/gif", "a")});
    inner.setData(bytesOf("bytes of the copy"));
    WMMSMultipart root = parentOf(kMixed, {inner});
    const WMMSMultipart copy = root;
    const WMMSMultipart innerCopy = root.subParts()->first();
    const QByteArray before = shown(copy);
    QArray<char> out;
    QVERIFY(root.exportTo(out, 0));
    QCOMPARE(shown(copy), before);
    QCOMPARE(hexOf(innerCopy.getData()), toHex("bytes of the copy"));
    QCOMPARE(hexOf(inner.getData()), toHex("bytes of the copy"));
}

void TestMultipartCodec::exportsIntoItsOwnData()
{
    // The output is the data of the part itself, shares it, or is that of a part below.
    WMMSMultipart part = partOf("image/gif", "abc");
    QVERIFY(part.exportTo(part.getData(), 0));
    QCOMPARE(hexOf(part.getData()), QByteArray("01 03 9D 61 62 63"));

    QArray<char> out = bytesOf("abc");
    WMMSMultipart root = parentOf(kMixed, {partOf("image/gif", "")});
    root.getSubMmsMultipartList().first().setData(out);
    QVERIFY(root.exportTo(out, 1));
    QCOMPARE(hexOf(out), QByteArray("61 01 01 03 9D 61 62 63"));
    QCOMPARE(hexOf(root.subParts()->first().getData()), QByteArray("61 62 63"));

    QVERIFY(root.exportTo(root.getSubMmsMultipartList().first().getData(), 0));
    QCOMPARE(hexOf(root.subParts()->first().getData()), QByteArray("01 01 03 9D 61 62 63"));

    WMMSMultipart parent = parentOf(kMixed, {partOf("image/gif", "x")});
    QVERIFY(parent.exportTo(parent.getData(), 0));
    QCOMPARE(hexOf(parent.getData()), QByteArray("01 01 01 9D 78"));
}

void TestMultipartCodec::whatIsWrittenReadsBack()
{
    WMMSMultipart root =
        parentOf(kMixed,
                 {partOf("text/plain", "h\xC3\xA9", "<t>", "t.txt"),
                  partOf("application/smil", "<smil/>", "<s>", "s.smil"),
                  parentOf(kRelated,
                           {partOf("image/jpeg", QByteArray(3000, 'j'), "<j>", "j.jpg"),
                            partOf("audio/amr", QByteArray("\0\1\2", 3), "a", "\xC3\xA4.amr")}),
                  partOf("a/b", "", "<e>", "e")});
    QArray<char> out;
    QVERIFY(root.exportTo(out, 0));
    WMMSMultipart back;
    QVERIFY(back.construct(out, 0));
    QCOMPARE(partCount(back), 4);
    QCOMPARE(shown(back.subParts()->at(0)), QByteArray("text/plain id=<t> at=t.txt [68 C3 A9]"));
    QCOMPARE(shown(back.subParts()->at(1)),
             "application/smil id=<s> at=s.smil [" + toHex("<smil/>") + "]");
    const WMMSMultipart &inner = back.subParts()->at(2);
    QCOMPARE(partCount(inner), 2);
    QCOMPARE(shown(inner.subParts()->at(0)),
             "image/jpeg id=<j> at=j.jpg [" + toHex(QByteArray(3000, 'j')) + "]");
    QCOMPARE(shown(inner.subParts()->at(1)),
             QByteArray("audio/amr id=a at=\xC3\xA4.amr [00 01 02]"));
    QCOMPARE(shown(back.subParts()->at(3)), QByteArray("a/b id=<e> at=e []"));
    QArray<char> again;
    back.setContentType(typeOf(kMixed));
    QVERIFY(back.exportTo(again, 0));
    QCOMPARE(hexOf(again), hexOf(out));
}

QTEST_GUILESS_MAIN(TestMultipartCodec)

#include "tst_multipart_codec.moc"

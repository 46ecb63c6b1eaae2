// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/intake/messages.h"

using namespace wmsg::intake;

namespace {

const char *const kUtf8Text = "03 83 81 EA";

/// A part as it comes, and as it is written anew.
struct WrittenRow {
    const char *name;
    const char *header;
    QByteArray data;
    const char *wantedHeader;
    QByteArray wantedData;
};

const WrittenRow kWritten[] = {
    {"ISO-8859-1 by number", "03 83 81 84", "\xFC", kUtf8Text, "ü"},
    {"ISO-8859-1 by name", "0D 83 81 69 73 6F 2D 38 38 35 39 2D 31 00", "\xFC", kUtf8Text, "ü"},
    {"a charset as a parameter with a name",
     "16 83 63 68 61 72 73 65 74 00 69 73 6F 2D 38 38 35 39 2D 31 35 00 00", "\xA4", kUtf8Text,
     "€"},
    {"a charset as a parameter with a name and a number", "0A 83 63 68 61 72 73 65 74 00 84",
     "\xFC", kUtf8Text, "ü"},
    {"a charset behind the type", "83 81 84", "\xFC", kUtf8Text, "ü"},
    {"a charset behind a type as text", "74 65 78 74 2F 70 6C 61 69 6E 00 81 84", "\xFC", kUtf8Text,
     "ü"},
    {"no charset and no UTF-8", "83", "\xFC", kUtf8Text, "ü"},
    {"US-ASCII that is none", "03 83 81 83", "\xFC", kUtf8Text, "ü"},
    {"a charset without its high bit", "03 83 81 6A", "\xC3\xBC", kUtf8Text, "ü"},
    {"UTF-16 with its mark", "05 83 81 02 03 F7", QByteArray("\xFF\xFE\xFC\0", 4), kUtf8Text, "ü"},
    {"UTF-16 without a mark", "05 83 81 02 03 F7", QByteArray("\0\xFC", 2), kUtf8Text, "ü"},
    {"UTF-16, odd", "05 83 81 02 03 F7", QByteArray("\0\xFC\0", 3), kUtf8Text, "ü"},
    {"UTF-16 with an end", "05 83 81 02 03 F7", QByteArray("\0a\0\0", 4), kUtf8Text, "a"},
    {"UTF-16 with two ends", "05 83 81 02 03 F7", QByteArray("\0a\0\0\0\0", 6), kUtf8Text,
     QByteArray("a\0\0", 3)},
    {"UTF-16 that nobody declared", "83", QByteArray("\0H\0i\4\x3F", 6), kUtf8Text, "Hiп"},
    {"UTF-16 that nobody declared, little-endian", "83", QByteArray("H\0i\0\0\0", 6), kUtf8Text,
     "Hi"},
    {"UTF-16 that is marked and nobody declared", "83", "\xFE\xFF\x04\x3F", kUtf8Text, "п"},
    {"XML that says in what it is", "A7", "<?xml version='1.0' encoding = 'koi8-r' ?><\xD0>",
     "03 A7 81 EA", "<?xml version='1.0' encoding = 'UTF-8' ?><п>"},
    {"XML that says what was declared otherwise", "03 A7 81 84", "<?xml encoding=\"koi8-r\"?>\xFC",
     "03 A7 81 EA", "<?xml encoding=\"UTF-8\"?>ü"},
    {"KOI8-R", "05 83 81 02 08 24", "\xD0", kUtf8Text, "п"},
    {"a presentation",
     "10 61 70 70 6C 69 63 61 74 69 6F 6E 2F 73 6D 69 6C 00"
     "81 84",
     "<\xFC>", "13 61 70 70 6C 69 63 61 74 69 6F 6E 2F 73 6D 69 6C 00 81 EA", "<ü>"},
    {"mail's parameters",
     "74 65 78 74 2F 70 6C 61 69 6E 3B 20 63 68 61 72 73 65 74 3D 69 73 6F 2D 38 38 35 39 2D 31"
     "3B 20 6E 61 6D 65 3D 22 61 2E 74 22 00",
     "\xFC", "08 83 81 EA 85 61 2E 74 00 8E 61 2E 74 00", "ü"},
    {"base64",
     "83 43 6F 6E 74 65 6E 74 2D 54 72 61 6E 73 66 65 72 2D 45 6E 63 6F 64 69 6E 67 00"
     "42 41 53 45 36 34 00",
     "w7w=", kUtf8Text, "ü"},
    {"base64 of ISO-8859-1",
     "03 83 81 84 63 6F 6E 74 65 6E 74 2D 74 72 61 6E 73 66 65 72 2D 65 6E 63 6F 64 69 6E 67 00"
     "62 61 73 65 36 34 00",
     "/A", kUtf8Text, "ü"},
    {"quoted-printable",
     "83 43 6F 6E 74 65 6E 74 2D 54 72 61 6E 73 66 65 72 2D 45 6E 63 6F 64 69 6E 67 00"
     "71 75 6F 74 65 64 2D 70 72 69 6E 74 61 62 6C 65 00",
     "=C3=\r\n=BC", kUtf8Text, "ü"},
    {"a disposition with a file name", "9E AE 08 81 86 61 2E 6A 70 67 00", "x",
     "08 9E 85 61 2E 6A 70 67 00 8E 61 2E 6A 70 67 00", "x"},
    {"a disposition of 1.3", "9E C5 08 81 98 61 2E 6A 70 67 00", "x",
     "08 9E 85 61 2E 6A 70 67 00 8E 61 2E 6A 70 67 00", "x"},
    {"a file name as a parameter", "08 9E 86 61 2E 6A 70 67 00", "x",
     "08 9E 85 61 2E 6A 70 67 00 8E 61 2E 6A 70 67 00", "x"},
    {"a name of 1.4", "05 9E 97 61 2E 00", "x", "05 9E 85 61 2E 00 8E 61 2E 00", "x"},
    {"the location beats the name", "05 9E 97 61 2E 00 8E 62 00", "x", "04 9E 85 62 00 8E 62 00",
     "x"},
    {"a name in mail's headers",
     "9E 43 6F 6E 74 65 6E 74 2D 49 44 00 3C 69 3E 00"
     "43 6F 6E 74 65 6E 74 2D 4C 6F 63 61 74 69 6F 6E 00 62 00",
     "x", "04 9E 85 62 00 8E 62 00 C0 22 3C 69 3E 00", "x"},
    {"an empty location and a name", "05 9E 85 61 2E 00 8E 00", "x",
     "05 9E 85 61 2E 00 8E 61 2E 00", "x"},
    {"an id in quotes", "9E C0 22 3C 69 3E 22 00", "x", "9E C0 22 3C 69 3E 00", "x"},
    {"a header with the byte of a location in it", "9E 8D 02 8E 00", "x", "9E", "x"},
    {"a parameter that the codec does not know", "05 9E 8B 61 62 00", "x", "9E", "x"},
    {"a number of two bytes", "04 02 00 1E", "x", "9E", "x"},
    {"a length past the end", "1E 9E", "x", "9E", "x"},
    {"a length past the end, and a location", "1E 9E 85 61 00 8E 62 00 C0 22 3C 69 3E 00", "x",
     "04 9E 85 62 00 8E 62 00 C0 22 3C 69 3E 00", "x"},
    {"no type", "", "x",
     "19 61 70 70 6C 69 63 61 74 69 6F 6E 2F 6F 63 74 65 74 2D 73 74 72 65 61 6D 00", "x"},
    {"no type at all", "61 62 00", "x",
     "19 61 70 70 6C 69 63 61 74 69 6F 6E 2F 6F 63 74 65 74 2D 73 74 72 65 61 6D 00", "x"},
};

} // namespace

class TestBodyIntake : public QObject {
    Q_OBJECT

private slots:
    void keptParts_data();
    void keptParts();
    void writtenParts_data();
    void writtenParts();
    void headerTypes_data();
    void headerTypes();
    void singleBodies_data();
    void singleBodies();
    void nothingBehindNoParts();
    void counts_data();
    void counts();
    void cutData();
    void nested();
    void deepNesting();
    void applicationWithQuote();
    void manyParts();
    void manyPartsBehindParameters();
    void drmNumbers_data();
    void drmNumbers();
    void picturesAreNotCopied();
    void everyTruncation();
};

// Headers of parts that the codec reads as they are meant.
void TestBodyIntake::keptParts_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("data");
    const auto row = [](const char *name, const char *header, const QByteArray &data = "a") {
        QTest::newRow(name) << fromHex(header) << data;
    };
    row("a number", "9E");
    row("text in UTF-8", "03 83 81 EA", "ü");
    row("text in US-ASCII", "03 83 81 83");
    row("text in ISO-8859-1 that is ASCII", "03 83 81 84");
    row("text of any charset", "83", "ü");
    row("text with a NUL in it", "83", QByteArray("abc\0def", 7));
    row("XML in UTF-8 that says otherwise", "A7", "<?xml encoding=\"koi8-r\"?>ü");
    row("a type as text", "61 75 64 69 6F 2F 61 6D 72 00");
    row("a name", "05 9E 85 61 2E 00");
    row("location and id", "9E 8E 61 2E 6A 00 C0 22 3C 69 3E 00");
    row("an id without brackets", "9E C0 69 00");
    row("a length that leaves the end of the name out", "04 9E 85 61 2E 00 8E 62 00");
    row("a length that is too short", "03 9E 85 61 2E 00 8E 62 00");
    row("a boundary", "0C C8 62 6F 75 6E 64 61 72 79 00 62 00");
    row("a header that the codec steps over", "9E 8D 02 10 00");
    row("a text header that the codec steps over", "9E 58 2D 41 00 62 00");
}

void TestBodyIntake::keptParts()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, data);
    const QByteArray pdu = retrievalOf(char(1) + partOf(header, data));
    const Taken result = taken(pdu);
    QCOMPARE(linesOf(result.steps), QStringList());
    QVERIFY(result.isUnchanged);
    QCOMPARE(toHex(result.pdu.joined()), toHex(pdu));
    QCOMPARE(decoded(result).getMultiParts().subParts()->size(), 1);
}

void TestBodyIntake::writtenParts_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("wantedHeader");
    QTest::addColumn<QByteArray>("wantedData");
    for (const WrittenRow &row : kWritten) {
        QTest::newRow(row.name) << fromHex(row.header) << row.data << fromHex(row.wantedHeader)
                                << row.wantedData;
    }
}

void TestBodyIntake::writtenParts()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, wantedHeader);
    QFETCH(QByteArray, wantedData);
    const Taken result = taken(retrievalOf(char(1) + partOf(header, data)));
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()),
             toHex(retrievalOf(char(1) + partOf(wantedHeader, wantedData))));
    QVERIFY(!result.isUnchanged);
    QVERIFY(!result.steps.isEmpty());
    QCOMPARE(linesOf(result.lost), QStringList());
    decoded(result);
}

void TestBodyIntake::headerTypes_data()
{
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *name, const char *given, const char *wanted) {
        QTest::newRow(name) << fromHex(given) << fromHex(wanted);
    };
    row("mixed", "A3", "A3");
    row("related", "B3", "B3");
    row("related with its root", "09 B3 8A 73 00 89 74 2F 75 00", "09 B3 8A 73 00 89 74 2F 75 00");
    row("the start in one quote", "07 B3 8A 22 3C 73 3E 00", "07 B3 8A 22 3C 73 3E 00");
    row("for an application", "12 A3 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 61 00",
        "12 A3 41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 61 00");
    row("alternative", "A6", "A3");
    row("any multipart", "A2", "A3");
    row("form data", "A4", "A3");
    row("a number without WAP", "8C", "A3");
    row("mixed as a text",
        "61 70 70 6C 69 63 61 74 69 6F 6E 2F 76 6E 64 2E 77 61 70 2E 6D 75 6C 74 69 70 61 72 74 2E"
        "6D 69 78 65 64 00",
        "A3");
    row("related as a text, counted",
        "1F 26 61 70 70 6C 69 63 61 74 69 6F 6E 2F 76 6E 64 2E 77 61 70 2E 6D 75 6C 74 69 70 61 72"
        "74 2E 72 65 6C 61 74 65 64 00",
        "B3");
    row("quotes around type and start", "0D B3 8A 22 3C 73 3E 22 00 89 22 74 22 00",
        "09 B3 8A 3C 73 3E 00 89 74 00");
    row("the type as a number", "03 B3 89 9E", "0D B3 89 69 6D 61 67 65 2F 6A 70 65 67 00");
    row("the type as a number, by its other name", "03 B3 83 9E",
        "0D B3 89 69 6D 61 67 65 2F 6A 70 65 67 00");
    row("the start of 1.4", "04 B3 99 73 00", "04 B3 8A 73 00");
    row("parameters with names", "0F B3 73 74 61 72 74 00 73 00 66 6F 6F 00 62 00",
        "04 B3 8A 73 00");
    row("a quality", "03 A3 80 0B", "A3");
    row("a quote in front of a text", "05 B3 89 7F 74 00", "04 B3 89 74 00");
    row("a wildcard", "80", "A3");
    row("a wildcard in its long form", "01 80", "A3");
    row("nothing at all", "00", "A3");
    row("a length that leaves its end out", "03 B3 8A 73 00", "04 B3 8A 73 00");
    row("a length that is too short", "03 B3 8A 73 2E 00 89 74 00", "08 B3 8A 73 2E 00 89 74 00");
    row("a length that takes the body in", "06 B3 8A 73 00", "04 B3 8A 73 00");
    row("a length that takes all of the body in", "0F B3 8A 73 00", "04 B3 8A 73 00");
    row("other parameters", "08 B3 8B 78 00 8A 73 00 00", "04 B3 8A 73 00");
}

void TestBodyIntake::headerTypes()
{
    QFETCH(QByteArray, given);
    QFETCH(QByteArray, wanted);
    const QByteArray body = char(1) + partOf(fromHex("9E"), "x");
    const Taken result = taken(retrievalHeader() + fromHex("84") + given + body);
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(retrievalHeader() + fromHex("84") + wanted + body));
    QCOMPARE(result.isUnchanged, given == wanted);
    QCOMPARE(decoded(result).getMultiParts().subParts()->size(), 1);
}

void TestBodyIntake::singleBodies_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("wantedType");
    QTest::addColumn<QByteArray>("wantedBody");
    const auto row = [](const char *name, const char *type, const QByteArray &data,
                        const char *wantedType, const QByteArray &wantedBody) {
        QTest::newRow(name) << fromHex(type) << data << fromHex(wantedType) << wantedBody;
    };
    const auto oneOf = [](const char *header, const QByteArray &data) {
        return char(1) + partOf(fromHex(header), data);
    };
    row("a number that means the same", "9E", "x", "9E", "x");
    row("text in UTF-8", "03 83 81 EA", "ü", "03 83 81 EA", "ü");
    row("text in ISO-8859-1", "03 83 81 84", "\xFC", "03 83 81 EA", "ü");
    row("text without a charset", "83", "\xFC", "03 83 81 EA", "ü");
    row("a number that means something else", "C9", "x", "A3",
        oneOf("1F 20 61 70 70 6C 69 63 61 74 69 6F 6E 2F 76 6E 64 2E 6F 6D 61 2E 64 72 6D 2E 63 6F "
              "6E 74"
              "65 6E 74 00",
              "x"));
    row("a type as a text", "61 2F 62 00", "x", "A3", oneOf("04 61 2F 62 00", "x"));
    row("a type as a text that has a number", "69 6D 61 67 65 2F 6A 70 65 67 00", "x", "A3",
        oneOf("9E", "x"));
    row("a DRM message without a boundary", "C8", "--b\r\n", "A3",
        oneOf("1F 20 61 70 70 6C 69 63 61 74 69 6F 6E 2F 76 6E 64 2E 6F 6D 61 2E 64 72 6D 2E 6D 65 "
              "73 73"
              "61 67 65 00",
              "--b\r\n"));
    row("a DRM message that looks like parts", "C8", QByteArray("\1\0\0", 3), "A3",
        oneOf("1F 20 61 70 70 6C 69 63 61 74 69 6F 6E 2F 76 6E 64 2E 6F 6D 61 2E 64 72 6D 2E 6D 65 "
              "73 73"
              "61 67 65 00",
              QByteArray("\1\0\0", 3)));
}

void TestBodyIntake::singleBodies()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, wantedType);
    QFETCH(QByteArray, wantedBody);
    const Taken result = taken(retrievalHeader() + fromHex("84") + type + data);
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()),
             toHex(retrievalHeader() + fromHex("84") + wantedType + wantedBody));
    QCOMPARE(result.isUnchanged, type == wantedType && data == wantedBody);
    decoded(result);
}

// With another content type in front a body without parts must not become another body.
void TestBodyIntake::nothingBehindNoParts()
{
    const QByteArray type =
        fromHex("84 1C B3 8A 22 3C 73 3E 22 00 32 89 22") + "application/smil\"";
    const Taken result = taken(retrievalHeader() + type + fromHex("00 01 04 01 03 83 81 EA 61"));
    QCOMPARE(toHex(result.pdu.joined()),
             toHex(retrievalHeader() + fromHex("84 06 B3 8A 3C 73 3E 00 00")));
    QVERIFY(taken(result.pdu.joined()).isUnchanged);
}

void TestBodyIntake::counts_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("wanted");
    QTest::addColumn<QStringList>("lost");
    const QByteArray part = partOf(fromHex("9E"), "x");
    const auto row = [](const char *name, const QByteArray &body, const QByteArray &wanted,
                        const QStringList &lost = {}) {
        QTest::newRow(name) << body << wanted << lost;
    };
    row("none", fromHex("00"), fromHex("00"));
    row("as told", char(2) + part + part, char(2) + part + part);
    row("more than there are", char(3) + part + part, char(2) + part + part,
        {"18 the body announces 3 parts and has 2"});
    row("more than there are, zeros behind", char(3) + part + part + QByteArray(9, '\0'),
        char(2) + part + part, {"18 the body announces 3 parts and has 2"});
    row("zeros behind", char(1) + part + QByteArray(9, '\0'), char(1) + part + QByteArray(9, '\0'));
    row("bytes behind", char(1) + part + "behind", char(1) + part + "behind");
    row("fewer than there are", char(1) + part + part + part, char(3) + part + part + part);
    row("none, and there are two", char(0) + part + part, char(2) + part + part);
    row("fewer, and something behind", char(1) + part + part + "behind",
        char(1) + part + part + "behind");
    row("fewer, and one without a type", char(1) + part + fromHex("01 01 00 41"),
        char(1) + part + fromHex("01 01 00 41"));
    row("a count of two bytes", fromHex("80 01") + part, char(1) + part);
    row("no count", QByteArray(), fromHex("00"), {"9 the message has no body"});
    row("a header that is not there", char(1) + fromHex("10 00 9E"), fromHex("00"),
        {"10 the body announces 1 parts and has 0"});
    row("a length of ten bytes", char(1) + QByteArray(9, '\x81') + fromHex("00 00"), fromHex("00"),
        {"10 the body announces 1 parts and has 0"});
}

void TestBodyIntake::counts()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, wanted);
    const Taken result = taken(retrievalOf(body));
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(retrievalOf(wanted)));
    QCOMPARE(result.isUnchanged, body == wanted);
    QTEST(linesOf(result.lost), "lost");
    decoded(result);
}

// What is there of a cut part is kept, and the loss is told. A length alone allocates nothing.
void TestBodyIntake::cutData()
{
    const QByteArray whole = partOf(fromHex("9E"), "x");
    const Taken result = taken(retrievalOf(char(2) + whole + fromHex("01 0A 9E 41 42")));
    QCOMPARE(toHex(result.pdu.joined()),
             toHex(retrievalOf(char(2) + whole + partOf(fromHex("9E"), "AB"))));
    QCOMPARE(linesOf(result.lost), QStringList{"17 part 2 lacks its last 8 bytes"});
    QVERIFY(!result.isUnchanged);

    const Taken huge = taken(retrievalOf(fromHex("01 01 8F FF FF FF 7F 9E 41")));
    QCOMPARE(toHex(huge.pdu.joined()), toHex(retrievalOf(char(1) + partOf(fromHex("9E"), "A"))));
    QCOMPARE(linesOf(huge.lost), QStringList{"17 part 1 lacks its last 4294967294 bytes"});
}

void TestBodyIntake::nested()
{
    const QByteArray plain = partOf(fromHex("9E"), "x");
    const QByteArray latin = partOf(fromHex("03 83 81 84"), "\xFC");
    const QByteArray utf8 = partOf(fromHex("03 83 81 EA"), "ü");
    const auto inside = [](const char *header, const QByteArray &body) {
        return retrievalOf(char(1) + partOf(fromHex(header), body));
    };
    const auto result = [](const QByteArray &pdu) {
        return toHex(taken(pdu).pdu.joined());
    };
    const QByteArray two = char(2) + plain + utf8;
    QVERIFY(taken(inside("B3", two)).isUnchanged);
    QCOMPARE(result(inside("B3", char(2) + plain + latin)), toHex(inside("A3", two)));
    QCOMPARE(result(inside("A6 C0 22 3C 69 3E 00", two)),
             toHex(inside("A3 C0 22 3C 69 3E 00", two)));
    // One that cannot be read is an empty part.
    QCOMPARE(result(inside("A6", QByteArray())), toHex(inside("A3", QByteArray())));
    QCOMPARE(
        decoded(taken(inside("A6", two))).getMultiParts().subParts()->first().subParts()->size(),
        2);
}

// As deep as the codec follows, and deeper.
void TestBodyIntake::deepNesting()
{
    QByteArray body = char(1) + partOf(fromHex("03 83 81 84"), "\xFC");
    for (int level = 0; level < 30; ++level) {
        body = char(1) + partOf(fromHex("A6"), body);
        const Taken result = taken(retrievalOf(body));
        QCOMPARE(result.verdict, Verdict::Readable);
        decoded(result);
        QVERIFY(taken(result.pdu.joined()).isUnchanged);
    }
}

void TestBodyIntake::manyParts()
{
    const QByteArray part = partOf(fromHex("9E"), "x");
    // The count in one byte is this system's own, the uintvar everybody's.
    const QByteArray own = retrievalOf(char(200) + part.repeated(200));
    QVERIFY(taken(own).isUnchanged);
    const QByteArray others = retrievalOf(fromHex("81 48") + part.repeated(200));
    QCOMPARE(toHex(taken(others).pdu.joined()), toHex(own));
    // What one byte cannot count comes in a multipart of its own.
    const Taken many = taken(retrievalOf(fromHex("82 2C") + part.repeated(300)));
    WMMSMsg message = decoded(many);
    QCOMPARE(message.getMultiParts().subParts()->size(), 255);
    QCOMPARE(message.getMultiParts().subParts()->last().subParts()->size(), 46);
    QCOMPARE(linesOf(many.lost), QStringList());
}

// A field may have the quote of a quoted string; a parameter of this system has none.
void TestBodyIntake::applicationWithQuote()
{
    const QByteArray body = char(1) + partOf(fromHex("9E"), "x");
    const Taken result = taken(retrievalHeader() + fromHex("B7 22 61 00 84 A3") + body);
    const QByteArray wanted =
        retrievalHeader() + fromHex("84 12 A3") + QByteArray("Application-ID\0a\0", 17) + body;
    QCOMPARE(toHex(result.pdu.joined()), toHex(wanted));
    QVERIFY(taken(wanted).isUnchanged);
}

// The count of this system is no parameter of the content type in front of it.
void TestBodyIntake::manyPartsBehindParameters()
{
    const QByteArray part = fromHex("1A 00 19") + QByteArray("application/octet-stream\0", 25);
    const Taken result =
        taken(retrievalHeader() + fromHex("84 04 B3 89 61 00") + char(137) + part.repeated(137));
    QCOMPARE(linesOf(result.steps), QStringList());
    QVERIFY(result.isUnchanged);
    QCOMPARE(decoded(result).getMultiParts().subParts()->size(), 137);
}

void TestBodyIntake::drmNumbers_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("type");
    const auto row = [](int number, const char *type) {
        QTest::addRow("%02X", number) << number << QString(type);
    };
    row(0x42, "application/vnd.syncml.dm+wbxml");
    row(0x43, "application/vnd.syncml.dm+xml");
    row(0x46, "application/vnd.wv.csp.cir");
    row(0x48, "application/vnd.oma.drm.message");
    row(0x49, "application/vnd.oma.drm.content");
    row(0x4A, "application/vnd.oma.drm.rights+xml");
    row(0x4B, "application/vnd.oma.drm.rights+wbxml");
    row(0x4F, "audio/*");
    row(0x59, "application/octet-stream");
}

// Makers differ about these; the registered names hold, written as text.
void TestBodyIntake::drmNumbers()
{
    QFETCH(int, number);
    const Taken result =
        taken(retrievalOf(char(1) + partOf(QByteArray(1, char(number | 0x80)), "x")));
    WMMSMsg message = decoded(result);
    QTEST(message.getMultiParts().subParts()->first().getContentType().getMimeType(), "type");
}

void TestBodyIntake::picturesAreNotCopied()
{
    const QByteArray picture(100, '\xFF');
    const QByteArray pdu =
        retrievalOf(char(2) + partOf(fromHex("83 81 84"), "\xFC") + partOf(fromHex("9E"), picture));
    const Taken result = taken(pdu);
    const std::vector<QByteArrayView> views = result.pdu.views();
    QVERIFY(views.back().data() >= pdu.data() && views.back().end() <= pdu.end());
    QVERIFY(views.back().endsWith(picture));
}

// Each prefix of a message gives the parts that are whole, or a reason.
void TestBodyIntake::everyTruncation()
{
    const QByteArray pdu =
        retrievalOf(char(3) + partOf(fromHex("03 83 81 84"), "\xFC")
                    + partOf(fromHex("9E AE 08 81 86 61 2E 6A 70 67 00"), "xyz")
                    + partOf(fromHex("A6"), char(1) + partOf(fromHex("9E"), "x")));
    for (qsizetype size = 0; size < pdu.size(); ++size) {
        const Taken result = taken(pdu.first(size));
        if (result.verdict == Verdict::Readable) {
            decoded(result);
            QVERIFY(taken(result.pdu.joined()).isUnchanged);
        }
    }
}

QTEST_GUILESS_MAIN(TestBodyIntake)
#include "tst_body_intake.moc"

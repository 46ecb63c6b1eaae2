// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/plain_message.h"
#include "tests/services/intake/messages.h"
#include "tests/services/intake/same_result.h"

#include <QtCore/QDirIterator>

using namespace wmsg::intake;

namespace {

QByteArray counted(const QByteArray &value)
{
    return QByteArray(1, char(value.size())) + value;
}
/// A text part in the form that this system writes.
QByteArray textPart(const QByteArray &data = "hi")
{
    return partOf(fromHex("08 83 81 EA 85 74 2E 74 00 8E 74 2E 74 00 C0 22 3C 74 3E 00"), data);
}
QByteArray bodyOf(const QByteArray &part)
{
    return retrievalOf('\1' + part);
}
QByteArray relatedWith(const char *parameters)
{
    return retrievalHeader() + '\x84' + counted(fromHex("B3") + fromHex(parameters)) + '\1'
        + textPart();
}

struct MessageRow {
    const char *name;
    QByteArray bytes;
};

const MessageRow kPlain[] = {
    {"nothing more", notificationWith({})},
    {"a confirmation", fromHex("8C 81 98 74 00 8D 92 92 80 93 4F 6B 00 8B 6D 00")},
    {"a delivery report", fromHex("8C 86 8D 92 8B 6D 00 97 2B 31 00 85 01 05 95 81")},
    {"a retrieval without a body", fromHex("8C 84 8D 92")},
    {"a retrieval without a transaction id", fromHex("8C 84 84 A3 01 01 00 9E")},
    {"codes", notificationWith(fromHex("86 80 90 81 91 80 94 81 8A 80 8F 82 95 81"))},
    {"numbers", notificationWith(fromHex("8E 01 00 8E 80 8E 04 FF FF FF FF 85 00"))},
    {"times", notificationWith(fromHex("88 05 81 03 03 F4 80 87 1F 03 80 01 07 88 02 81 80"))},
    {"subject", notificationWith(fromHex("96 41 20 3D 20 3F 00"))},
    {"subject of UTF-8", notificationWith(fromHex("96 04 EA C3 BC 00"))},
    {"subject with a long length", notificationWith(fromHex("96 1F 80 04 EA C3 BC 00"))},
    {"subject of UTF-8 with an escape", notificationWith(fromHex("96 04 EA 1B 41 00"))},
    {"number", notificationWith(fromHex("97 2B 31") + QByteArray("/TYPE=PLMN\0", 11))},
    {"mail address", notificationWith(fromHex("97 61 40 62 00 82 63 00 81 64 00"))},
    {"sender", notificationWith(fromHex("89 04 80 2B 31 00"))},
    {"sender with a long length", notificationWith(fromHex("89 1F 04 80 2B 31 00"))},
    {"sender to be put in", notificationWith(fromHex("89 01 81"))},
    {"two subjects", notificationWith(fromHex("96 61 00 96 62 00 98 75 00"))},
    {"text part", bodyOf(textPart())},
    {"text of UTF-8", bodyOf(textPart("\xC3\xBC"))},
    {"empty text", bodyOf(textPart(""))},
    {"text without a charset", bodyOf(partOf(fromHex("83"), "hi"))},
    {"text with an end", bodyOf(partOf(fromHex("83"), QByteArray("hi\0", 3)))},
    {"text of US-ASCII", bodyOf(partOf(fromHex("03 83 81 83"), "hi"))},
    {"picture", bodyOf(partOf(fromHex("9E 8E 61 00 C0 3C 61 3E 00"), "\xFF\xD8"))},
    {"picture with a charset", bodyOf(partOf(fromHex("03 9E 81 EA"), "\xFF\xD8"))},
    {"a number of our own", bodyOf(partOf(fromHex("FE"), "a"))},
    {"anything", bodyOf(partOf(fromHex("80"), "\xFF\xD8"))},
    {"type as text", bodyOf(partOf(fromHex("78 2D 6F 2F 70 00 8E 61 00"), "\xFF"))},
    {"type as text with a name", bodyOf(partOf(fromHex("08 78 2F 79 00 85 61 62 00"), "\xFF"))},
    {"text part whose type is a text",
     bodyOf(partOf(counted(QByteArray("application/smil\0", 17) + fromHex("81 EA")), "<s>"))},
    {"related", relatedWith("8A 3C 73 3E 00 89 61 2F 73 00")},
    {"related without more", relatedWith("")},
    {"two parts", retrievalOf('\2' + textPart() + partOf(fromHex("9E"), ""))},
    {"lengths with leading zeros", retrievalOf(fromHex("01 80 01 80 02 9E FF D8"))},
};

// Some of these are changed, some are left alone at second sight.
const MessageRow kOther[] = {
    {"nothing", {}},
    {"no type in front", fromHex("98 74 00 8C 82 83 6C 00")},
    {"no location", fromHex("8C 82 98 74 00 8D 90")},
    {"no transaction id", fromHex("8C 82 8D 90 83 6C 00")},
    {"a push", fromHex("01 06 01 BE") + notificationWith({})},
    {"a push with any transaction", fromHex("8C 06 01 BE") + notificationWith({})},
    {"a send request", fromHex("8C 80 98 74 00 8D 90")},
    {"a read report", fromHex("8C 88 8D 92 8B 6D 00")},
    {"a type twice", notificationWith(fromHex("8C 88"))},
    {"an unknown field", notificationWith(fromHex("99 80"))},
    {"a zero", notificationWith(fromHex("00"))},
    {"a text field", notificationWith(fromHex("61 00 62 00"))},
    {"a text that does not end", notificationWith({}).chopped(1)},
    {"a word of mail", notificationWith("\x96=?utf-8?Q?a?=" + QByteArray(1, 0))},
    {"a text with an escape", notificationWith(fromHex("96 61 1B 00"))},
    {"a text with a quote in front", notificationWith(fromHex("96 7F 61 00"))},
    {"an empty text", notificationWith(fromHex("96 00"))},
    {"UTF-8 without a charset", notificationWith(fromHex("96 C3 BC 00"))},
    {"UTF-8 that is none", notificationWith(fromHex("96 03 EA FC 00"))},
    {"UTF-8 with a mark", notificationWith(fromHex("96 06 EA EF BB BF 61 00"))},
    {"UTF-8 that ends too early", notificationWith(fromHex("96 05 EA 61 00 62 00"))},
    {"UTF-8 that does not end", notificationWith(fromHex("96 02 EA 61"))},
    {"UTF-8 with a quote in front", notificationWith(fromHex("96 04 EA 7F 80 00"))},
    {"UTF-8 with a word of mail", notificationWith(fromHex("96 04 EA 3D 3F 00"))},
    {"ISO-8859-1", notificationWith(fromHex("96 03 84 FC 00"))},
    {"a location with a blank", fromHex("8C 82 98 74 00 8D 90 83 6C 20 00")},
    {"an address with a name", notificationWith("\x97\"A\" <a@b>" + QByteArray(1, 0))},
    {"an address with another suffix",
     notificationWith("\x97"
                      "1/TYPE=plmn"
                      + QByteArray(1, 0))},
    {"a suffix alone", notificationWith("\x97/TYPE=PLMN" + QByteArray(1, 0))},
    {"a suffix behind mail",
     notificationWith("\x97"
                      "a@b/TYPE=PLMN"
                      + QByteArray(1, 0))},
    {"a sender that is longer than its length", notificationWith(fromHex("89 03 80 2B 31 00"))},
    {"a sender that is shorter than its length", notificationWith(fromHex("89 05 80 2B 31 00"))},
    {"a sender without a length", notificationWith(fromHex("89 80 2B 31 00"))},
    {"a flag that is none", notificationWith(fromHex("86 82"))},
    {"a code without its high bit", notificationWith(fromHex("8F 01"))},
    {"a time of two numbers", notificationWith(fromHex("88 03 81 80 80"))},
    {"a time that is cut", notificationWith({}) + fromHex("88 02 81")},
    {"a class as text", notificationWith(fromHex("8A 61 75 74 6F 00"))},
    {"a number that is cut", notificationWith({}) + fromHex("85 04 01")},
    {"an empty body", retrievalOf(fromHex("00"))},
    {"no count", retrievalHeader() + fromHex("84 A3")},
    {"a count of two bytes", retrievalOf(fromHex("80 01") + textPart())},
    {"a part too few", retrievalOf('\2' + textPart())},
    {"a part too many", retrievalOf('\1' + textPart() + textPart())},
    {"a byte behind", retrievalOf('\1' + textPart() + '\0')},
    {"a part that is cut", retrievalOf('\1' + textPart().chopped(1))},
    {"a part without a header", bodyOf(partOf({}, "a"))},
    {"another multipart", retrievalHeader() + fromHex("84 A6 01") + textPart()},
    {"one value", retrievalHeader() + fromHex("84 9E 01") + textPart()},
    {"a start with quotes", relatedWith("8A 22 3C 73 3E 00")},
    {"a type as number", relatedWith("89 9E")},
    {"an application", relatedWith("41 70 70 6C 69 63 61 74 69 6F 6E 2D 49 44 00 61 00")},
    {"a multipart inside", bodyOf(partOf(fromHex("A3"), '\1' + textPart()))},
    {"a number that the codec reads otherwise", bodyOf(partOf(fromHex("C9"), "a"))},
    {"a multipart as text", bodyOf(partOf("multipart/x" + QByteArray(1, 0), "a"))},
    {"a type with parameters of mail", bodyOf(partOf("x/y;name=a" + QByteArray(1, 0), "a"))},
    {"a type without a slash", bodyOf(partOf(fromHex("78 00"), "a"))},
    {"a type that ends with a slash", bodyOf(partOf(fromHex("78 2F 00"), "a"))},
    {"a type with a blank", bodyOf(partOf(fromHex("78 2F 79 20 00"), "a"))},
    {"text of ISO-8859-1", bodyOf(partOf(fromHex("03 83 81 84"), "a"))},
    {"text that is no UTF-8", bodyOf(textPart("\xFC"))},
    {"text that is UTF-16 by its looks", bodyOf(partOf(fromHex("83"), QByteArray("\0a", 2)))},
    {"an empty name", bodyOf(partOf(fromHex("03 9E 85 00"), "a"))},
    {"a file name", bodyOf(partOf(fromHex("04 9E 86 61 00"), "a"))},
    {"an empty location", bodyOf(partOf(fromHex("9E 8E 00"), "a"))},
    {"an id without brackets", bodyOf(partOf(fromHex("9E C0 22 61 00"), "a"))},
    {"an id with two quotes", bodyOf(partOf(fromHex("9E C0 22 3C 61 3E 22 00"), "a"))},
    {"an empty id", bodyOf(partOf(fromHex("9E C0 22 3C 3E 00"), "a"))},
    {"a disposition", bodyOf(partOf(fromHex("9E AE 01 81"), "a"))},
    {"a type longer than the header", bodyOf(partOf(fromHex("09 9E"), "a"))},
    {"a zero behind the header", bodyOf(partOf(fromHex("9E 00"), "a"))},
    {"an encoded part",
     bodyOf(partOf("\x9E"
                   "Content-Transfer-Encoding"
                       + fromHex("00 62 61 73 65 36 34 00"),
                   "YQ"))},
};

/// Whether both ways make the same of the bytes; `plain` counts those that the short one knows.
bool isSameBothWays(const QByteArray &bytes, int &plain)
{
    for (const Origin origin : {Origin::Network, Origin::File}) {
        const char *difference = differenceOf(takeIn(bytes, origin), takeInAnyForm(bytes, origin));
        if (difference != nullptr) {
            qWarning("%s: %s", toHex(bytes).constData(), difference);
            return false;
        }
    }
    Result result;
    plain += takeInPlain(bytes, result) ? 1 : 0;
    return true;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return path.endsWith(".hex") ? fromHex(bytes) : bytes;
}

} // namespace

class TestPlainMessage : public QObject {
    Q_OBJECT

    static void plain_data();

private slots:
    void known_data();
    void known();
    void changedBytes_data() { plain_data(); }
    void changedBytes();
    void removedBytes_data() { plain_data(); }
    void removedBytes();
    void keptInputs();
};

void TestPlainMessage::plain_data()
{
    QTest::addColumn<QByteArray>("bytes");
    for (const MessageRow &row : kPlain) {
        QTest::newRow(row.name) << row.bytes;
    }
}

void TestPlainMessage::known_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isPlain");
    for (const MessageRow &row : kPlain) {
        QTest::newRow(row.name) << row.bytes << true;
    }
    for (const MessageRow &row : kOther) {
        QTest::newRow(row.name) << row.bytes << false;
    }
}

void TestPlainMessage::known()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, isPlain);
    Result result;
    QCOMPARE(takeInPlain(bytes, result), isPlain);
    const Result same = isPlain ? takeInAnyForm(bytes, Origin::Network) : Result();
    const char *difference = differenceOf(result, same);
    QVERIFY2(difference == nullptr, difference);
    int plain = 0;
    QVERIFY(isSameBothWays(bytes, plain));
}

// Every byte becomes one that means something somewhere, and its neighbours.
void TestPlainMessage::changedBytes()
{
    QFETCH(QByteArray, bytes);
    const QByteArray others = fromHex("00 01 02 03 04 05 1B 1E 1F 20 22 2F 3B 3C 3D 3E 3F 40 61 7E"
                                      "7F 80 81 82 83 84 86 89 8A 8C 8E 9E A3 B3 C0 C3 EA EF FF");
    int plain = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        QByteArray changed = bytes;
        for (const char byte : others + char(bytes[i] + 1) + char(bytes[i] - 1)) {
            changed[i] = byte;
            QVERIFY(isSameBothWays(changed, plain));
        }
    }
    QVERIFY(plain > 0);
}

// Every stretch of up to four bytes is missing, or there twice.
void TestPlainMessage::removedBytes()
{
    QFETCH(QByteArray, bytes);
    int plain = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        QVERIFY(isSameBothWays(bytes.first(i), plain));
        for (qsizetype count = 1; count <= qMin<qsizetype>(4, bytes.size() - i); ++count) {
            QVERIFY(isSameBothWays(QByteArray(bytes).remove(i, count), plain));
            QVERIFY(isSameBothWays(QByteArray(bytes).insert(i, bytes.mid(i, count)), plain));
        }
    }
}

// All messages, and whatever else the tests and the fuzzers keep.
void TestPlainMessage::keptInputs()
{
    const QString data = QStringLiteral(WMSG_TEST_DATA);
    int plain = 0;
    int all = 0;
    for (const QString &folder : {data, data + "/../../fuzz/corpus"}) {
        QDirIterator files(folder, {"*.bin", "*.hex"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            QVERIFY2(isSameBothWays(contentOf(path), plain), qPrintable(path));
            ++all;
        }
    }
    QVERIFY(all > 100);
    QVERIFY(plain > 5);
}

QTEST_GUILESS_MAIN(TestPlainMessage)
#include "tst_plain_message.moc"

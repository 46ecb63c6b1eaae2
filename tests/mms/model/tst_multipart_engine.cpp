// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// How body records become parts: WMMSMultipart::constructWMMSBdy.

#include "mms/model/wmmsmultipart.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

#include <climits>
#include <memory>
#include <vector>

namespace {

constexpr const char *kPostcard = "text/x-brel-postcard_contacts";

/// Units as the bytes of a text in memory.
QByteArray unitsOf(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

/// Adds a text in memory as the engine hands it out: wide, and its size in units.
MMS_MSG_PART_T &addWide(BodyRecord &body, const QByteArray &mimeType, const QString &text)
{
    MMS_MSG_PART_T &part = body.add(mimeType, unitsOf(text));
    part.size = int(text.size());
    return part;
}

/// A file for the records to name.
class PartFile {
public:
    explicit PartFile(const QByteArray &bytes, const QString &name = "part")
        : m_path(m_folder.filePath(name))
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }
    [[nodiscard]] QString path() const { return m_path; }

    MMS_MSG_PART_T &addTo(BodyRecord &body, const QByteArray &mimeType, int storage, int offset,
                          int size) const
    {
        MMS_MSG_PART_T &part = body.add(mimeType, QByteArray());
        part.storage = storage;
        part.dataFile = wide(m_path);
        part.offset = offset;
        part.size = size;
        return part;
    }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

/// The parts of a root, as shown() shows them.
QList<QByteArray> parts(const WMMSMultipart &root)
{
    QList<QByteArray> all;
    if (root.subParts()) {
        for (const WMMSMultipart &part : *root.subParts()) {
            all += shown(part);
        }
    }
    return all;
}

QByteArray inHex(const QString &text)
{
    return toHex(text.toUtf8());
}

} // namespace

class TestMultipartEngine : public QObject {
    Q_OBJECT

private slots:
    void noRecord();
    void contentType_data();
    void contentType();
    void counts_data();
    void counts();
    void texts();
    void nullAndEmptyTexts();
    void textInMemory_data();
    void textInMemory();
    void tooLongATextInMemory();
    void otherInMemory();
    void withoutData();
    void files();
    void fileLog();
    void filesThatCannotBeRead();
    void unknownStorage();
    void charsets_data();
    void charsets();
    void namesOfFiles();
    void appended();
    void approximateSize();
};

void TestMultipartEngine::noRecord()
{
    WMMSMultipart root = partOf("a/b", "x");
    QVERIFY(!root.constructWMMSBdy(nullptr));
    BodyRecord body;
    body.contentType = narrow("c/d");
    body.partCount = 3;
    QVERIFY(!root.constructWMMSBdy(&body));
    body.partCount = 0;
    QCOMPARE(shown(root), QByteArray("a/b id=- at=- [78]"));
    QCOMPARE(root.storedApproxSize(), 0);
}

void TestMultipartEngine::contentType_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("root");
    const auto row = [](const char *name, const char *text, const char *root) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(root);
    };
    row("type", "a/b", "a/b id=- at=- []");
    row("parameters", "a/b;c=\"d\";e=f", "a/b;c=d;e=f id=- at=- []");
    // As the other direction writes it, when nobody between them drops the blank.
    row("blank before the parameters", "a/b ;c=\"d\";e=\"f\"", "a/b;;c=d;e=f id=- at=- []");
    row("a name is the location", "a/b;name=\"n\"", "a/b;name=n id=- at=n []");
    row("latin", "a/\xE9", "a/\xC3\xA9 id=- at=- []");
}

void TestMultipartEngine::contentType()
{
    QFETCH(QByteArray, text);
    BodyRecord body(text);
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QTEST(shown(root), "root");
    BodyRecord none;
    none.parts = static_cast<MMS_MSG_PART_T *>(calloc(40, sizeof(MMS_MSG_PART_T)));
    WMMSMultipart untyped;
    QVERIFY(untyped.constructWMMSBdy(&none));
    QVERIFY(untyped.getContentType().isEmpty());
}

// The low 8 bits of the count are read alone.
void TestMultipartEngine::counts_data()
{
    QTest::addColumn<uint>("count");
    QTest::addColumn<int>("visited");
    QTest::newRow("none") << 0U << 0;
    QTest::newRow("one") << 1U << 1;
    QTest::newRow("forty") << 40U << 40;
    QTest::newRow("forty-one") << 41U << 41;
    QTest::newRow("255") << 255U << 255;
    QTest::newRow("256 is none") << 256U << 0;
    QTest::newRow("257 is one") << 257U << 1;
    QTest::newRow("all bits set") << 0xFFFFFFFFU << 255;
}

void TestMultipartEngine::counts()
{
    QFETCH(uint, count);
    QFETCH(int, visited);
    std::vector<MMS_MSG_PART_T> records(static_cast<size_t>(visited), MMS_MSG_PART_T{});
    char type[] = "image/gif";
    for (MMS_MSG_PART_T &record : records) {
        record.mimeType = type;
    }
    MMS_MSG_PART_T none = {};
    MMS_MSG_BDY_T body = {nullptr, count, visited > 0 ? records.data() : &none};
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root).size(), visited);
    QCOMPARE(root.subParts() != nullptr, visited > 0);
}

void TestMultipartEngine::texts()
{
    BodyRecord body("a/b");
    MMS_MSG_PART_T &record = body.add("image/gif;name=n.gif;x=y", "x");
    record.contentId = narrow("<\xE9>");
    record.contentLocation = narrow("größe你🎉");
    record.fileName = narrow("/tmp/a");
    record.headerText = narrow("Content-Type:text/plain;charset=utf-8;");
    WMMSMultipart root;
    LogCapture log;
    QVERIFY(root.constructWMMSBdy(&body));
    const WMMSMultipart &part = root.subParts()->first();
    QCOMPARE(shown(part), QByteArray("image/gif;name=n.gif;x=y id=<é> at=größe你🎉 [78]"));
    QVERIFY(part.getLocalFileName().isNull());
    QCOMPARE(log.lines(), (QStringList{"ContentLocation=größe???", "Media recieved is not text"}));
    QVERIFY(root.getLocalFileName().isNull());
}

void TestMultipartEngine::nullAndEmptyTexts()
{
    BodyRecord body("a/b");
    body.add("a/b", "x");
    MMS_MSG_PART_T &empty = body.add("a/b;name=n", "x");
    empty.contentId = narrow("");
    empty.contentLocation = narrow("");
    body.add("a/b;name=n", "x");
    body.add("a/b;name=n", "x").contentId = narrow("<i>");
    body.add(QByteArray(), "x");
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root),
             (QList<QByteArray>{"a/b id=- at=- [78]", "a/b;name=n id='' at='' [78]",
                                "a/b;name=n id=- at=n [78]",
                                "a/b;name=n id=<i> at=<i> [78]", // the id comes before the type
                                "'' id=- at=- [78]"}));
}

// A text in memory is wide and its size counts units, whatever its charset says.
void TestMultipartEngine::textInMemory_data()
{
    QTest::addColumn<QByteArray>("mimeType");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("data");
    const auto row = [](const char *name, const char *type, const QString &text,
                        const QString &data) {
        QTest::newRow(name) << QByteArray(type) << text << data;
    };
    row("ascii", "text/plain", "Hello", "Hello");
    row("latin", "text/plain", "é", "é");
    row("arabic", "text/plain", "مرحبا", "مرحبا");
    row("emoji", "text/plain", "🎉🎉", "🎉🎉");
    row("postcard contacts", kPostcard, "é", "é");
    row("a charset plays no part", "text/plain;charset=utf-8", "é", "é");
    row("two bytes a unit", "text/plain", "你好", "你");
    row("one chinese character has no room", "text/plain", "你", "");
    row("up to a zero", "text/plain", QString::fromLatin1("a\0b", 3), "a");
    row("empty", "text/plain", "", "");
}

void TestMultipartEngine::textInMemory()
{
    QFETCH(QByteArray, mimeType);
    QFETCH(QString, text);
    QFETCH(QString, data);
    BodyRecord body("a/b");
    addWide(body, mimeType, text);
    WMMSMultipart root;
    LogCapture log;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(hexOf(root.subParts()->first().getData()), inHex(data));
    QCOMPARE(log.lines().last(), QString("will convert to utf8 in construct wmmsbdy\n"));
}

// There is no array for the bytes that so many units may take.
void TestMultipartEngine::tooLongATextInMemory()
{
    for (const int size : {INT_MAX / 2 + 1, INT_MAX}) {
        BodyRecord body("a/b");
        addWide(body, "text/plain", "a").size = size;
        WMMSMultipart root;
        QVERIFY(!root.constructWMMSBdy(&body));
        QVERIFY(!root.subParts());
    }
}

void TestMultipartEngine::otherInMemory()
{
    BodyRecord body("a/b");
    body.add("image/gif", QByteArray("GIF\0\xFF", 5));
    body.add("text/html", "<p>");
    body.add("Text/Plain", "abc"); // the case counts
    body.add("application/smil", QByteArray("<smil/>\0", 8)); // its end is no data
    WMMSMultipart root;
    LogCapture log;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root),
             (QList<QByteArray>{"image/gif id=- at=- [47 49 46 00 FF]",
                                "text/html id=- at=- [3C 70 3E]", "Text/Plain id=- at=- [61 62 63]",
                                "application/smil id=- at=- [3C 73 6D 69 6C 2F 3E]"}));
    QCOMPARE(log.lines().count("Media recieved is not text"), 4);
    // The bytes are the part's own.
    static_cast<char *>(body.parts[0].data)[0] = 'g';
    QCOMPARE(root.subParts()->first().getData().at(0), 'G');
}

void TestMultipartEngine::withoutData()
{
    BodyRecord body("a/b");
    body.add("image/gif", QByteArray()).size = 100;
    body.add("text/plain", QByteArray()).size = 100;
    body.add("image/gif", "abc").size = -1;
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root),
             (QList<QByteArray>{"image/gif id=- at=- []", "text/plain id=- at=- []",
                                "image/gif id=- at=- []"}));
}

void TestMultipartEngine::files()
{
    const PartFile file("0123456789");
    BodyRecord body("a/b");
    file.addTo(body, "image/gif", MMS_PART_IN_FILE, 5, 10); // the offset is for regions
    file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 4);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE_REGION, 4, 3);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE_REGION, 7, 100); // what is there
    file.addTo(body, "text/plain", MMS_PART_IN_FILE_REGION, 0, 2);
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(
        parts(root),
        (QList<QByteArray>{"image/gif id=- at=- [30 31 32 33 34 35 36 37 38 39]",
                           "image/gif id=- at=- [30 31 32 33]", "image/gif id=- at=- [34 35 36]",
                           "image/gif id=- at=- [37 38 39]", "text/plain id=- at=- [30 31]"}));
    QCOMPARE(root.getLocalFileName(), file.path());
    for (const WMMSMultipart &part : *root.subParts()) {
        QVERIFY(part.getLocalFileName().isNull());
    }
    // A zero at the end of a text in a file stays.
    const PartFile text(QByteArray("a\0", 2));
    BodyRecord other("a/b");
    text.addTo(other, "text/plain", MMS_PART_IN_FILE, 0, 2);
    WMMSMultipart root2;
    QVERIFY(root2.constructWMMSBdy(&other));
    QCOMPARE(hexOf(root2.subParts()->first().getData()), QByteArray("61 00"));
}

void TestMultipartEngine::fileLog()
{
    const PartFile file("abcd");
    BodyRecord body("a/b");
    file.addTo(body, "text/plain;charset=utf-8", MMS_PART_IN_FILE, 0, 4);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 4);
    WMMSMultipart root;
    LogCapture log;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(log.lines(),
             (QStringList{"ContentLocation=", "charset = utf-8",
                          "tempMpart.iContentType.getMimeType = text/plain", "ContentLocation=",
                          "charset = ", "tempMpart.iContentType.getMimeType = image/gif"}));
}

void TestMultipartEngine::filesThatCannotBeRead()
{
    const PartFile file("0123");
    const PartFile empty("");
    BodyRecord body("a/b");
    file.addTo(body, "image/gif", MMS_PART_IN_FILE_REGION, -1, 3);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE_REGION, 4, 3);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE_REGION, 400, 3);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 0);
    file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, -3);
    empty.addTo(body, "text/plain;charset=UTF-16", MMS_PART_IN_FILE, 0, 3);
    MMS_MSG_PART_T &nameless = file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 3);
    free(nameless.dataFile);
    nameless.dataFile = nullptr;
    body.add("image/png", "x"); // what can be read is there
    MMS_MSG_PART_T &missing = file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 3);
    free(missing.dataFile);
    missing.dataFile = wide("/no/where");
    WMMSMultipart root;
    LogCapture log;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root), QList<QByteArray>{"image/png id=- at=- [78]"});
    QStringList lines = log.lines();
    lines.removeAll("ContentLocation=");
    QCOMPARE(lines,
             (QStringList{"seek failed", "No data in the file", "No data in the file",
                          "No data in the file", "No data in the file", "No data in the file",
                          "Media recieved is not text", "Not able to open the file /no/where"}));
    // The last file stays as the local file name of the root part.
    QCOMPARE(root.getLocalFileName(), "/no/where");
}

void TestMultipartEngine::unknownStorage()
{
    BodyRecord body("a/b");
    for (const int storage : {3, 255, -1}) {
        body.add("image/gif", "x").storage = storage;
    }
    body.add("image/png", "x");
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(parts(root), QList<QByteArray>{"image/png id=- at=- [78]"});
}

void TestMultipartEngine::charsets_data()
{
    QTest::addColumn<QByteArray>("mimeType");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("log"); // behind the media type
    const QStringList none;
    const QStringList taken = {"in if", "For UTF16"};
    const QStringList marked = {"in if", "For UTF16", "For UTF16"};
    const QStringList exchanged = {"in if", "Little endian UTF-16"};
    const QStringList markedExchanged = {"in if", "For UTF16", "Little endian UTF-16"};
    const auto row = [](const char *name, const char *type, const char *bytes, const char *data,
                        const QStringList &log, const char *text = nullptr) {
        QTest::newRow(name)
            << QByteArray(type) << fromHex(bytes) << QByteArray(data)
            << (text ? log + QStringList{"unicode to string: " + QString::fromLatin1(text)} : log);
    };
    row("utf-16le", "text/plain;charset=UTF-16LE", "61 00 E9 00", "61 C3 A9", taken, "a\xE9");
    row("any case", "text/plain;charset=utf-16le", "61 00", "61", taken, "a");
    row("utf-16le with its mark", "text/plain;charset=UTF-16LE", "FF FE 61 00", "61", marked, "a");
    row("utf-16le with the other mark", "text/plain;charset=UTF-16LE", "FE FF 61 00", "61", marked,
        "a");
    // The charset of a file is "UCS-2" with a hyphen.
    row("ucs-2", "text/plain;charset=UCS-2", "61 00 60 4F", "61 E4 BD A0", {"in if"}, "a?");
    row("ucs-2 with a mark", "text/plain;charset=UCS-2", "FF FE 61 00", "61", marked, "a");
    row("ucs-2 with the other mark", "text/plain;charset=UCS-2", "FE FF 61 00", "61",
        {"in if", "For UTF16"}, "a");
    row("ucs2 is no charset here", "text/plain;charset=UCS2", "61 00", "61 00", none);
    row("utf-16 with its mark", "text/plain;charset=UTF-16", "FF FE 61 00 62 00", "61 62", marked,
        "ab");
    row("utf-16 without a mark: adjacent units change places and the bytes inside a unit do not",
        "text/plain;charset=UTF-16", "61 00 62 00", "62 61", exchanged, "ba");
    row("utf-16 with the other mark", "text/plain;charset=UTF-16", "FE FF 61 00 62 00", "62 61",
        markedExchanged, "ba");
    row("utf-16be", "text/plain;charset=UTF-16BE", "00 61 00 62", "E6 88 80 E6 84 80", exchanged,
        "??");
    row("utf-16be with the other mark", "text/plain;charset=UTF-16BE", "FF FE 61 00", "61", marked,
        "a");
    row("an odd unit", "text/plain;charset=UTF-16BE", "61 00 62 00 63 00", "62 61 00", exchanged,
        "ba");
    row("an odd byte", "text/plain;charset=UTF-16LE", "61 00 62", "61", taken, "a");
    row("one byte", "text/plain;charset=UTF-16LE", "61", "", taken, "");
    row("a mark alone", "text/plain;charset=UTF-16LE", "FF FE", "", marked, "");
    row("a zero inside", "text/plain;charset=UTF-16LE", "61 00 00 00 62 00", "61 00 62", taken,
        "a");
    row("a pair", "text/plain;charset=UTF-16LE", "3C D8 89 DF", "F0 9F 8E 89", taken, "??");
    row("half a pair", "text/plain;charset=UTF-16LE", "3C D8", "3F", taken, "?");
    row("postcard contacts", "text/x-brel-postcard_contacts;charset=UTF-16LE", "61 00", "61", taken,
        "a");
    row("other texts", "text/html;charset=UTF-16LE", "61 00", "61 00", none);
    row("the case of the type counts", "Text/Plain;charset=UTF-16LE", "61 00", "61 00", none);
    row("utf-8", "text/plain;charset=utf-8", "61 00", "61 00", none);
    row("no charset", "text/plain", "61 00", "61 00", none);
}

void TestMultipartEngine::charsets()
{
    QFETCH(QByteArray, mimeType);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, data);
    QFETCH(QStringList, log);
    const PartFile file(bytes);
    BodyRecord body("a/b");
    file.addTo(body, mimeType, MMS_PART_IN_FILE, 0, int(bytes.size()));
    WMMSMultipart root;
    LogCapture capture;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(hexOf(root.subParts()->first().getData()), data);
    QCOMPARE(capture.lines().mid(3), log);
}

void TestMultipartEngine::namesOfFiles()
{
    for (const char *name : {"a b", "größe", "你好世界", "🎉", "name-of-a-file-that-is-long"}) {
        const PartFile file("x", name);
        BodyRecord body("a/b");
        file.addTo(body, "image/gif", MMS_PART_IN_FILE, 0, 1);
        WMMSMultipart root;
        QVERIFY(root.constructWMMSBdy(&body));
        QCOMPARE(parts(root).size(), 1);
        QCOMPARE(root.getLocalFileName(), file.path());
    }
}

void TestMultipartEngine::appended()
{
    WMMSMultipart root = parentOf("c/d", {partOf("image/gif", "1")});
    root.getContentType().setParam("e", "f");
    BodyRecord body("a/b;g=h");
    body.add("image/png", "2");
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(shown(root),
             QByteArray("a/b;e=f;g=h id=- at=- [] {(image/gif id=- at=- [31])"
                        "(image/png id=- at=- [32])}"));
}

void TestMultipartEngine::approximateSize()
{
    BodyRecord body("a/b");
    body.add("image/gif", QByteArray(1000, 'x'));
    WMMSMultipart root;
    QVERIFY(root.constructWMMSBdy(&body));
    QCOMPARE(root.storedApproxSize(), 1000 + 512 + 512);
    const WMMSMultipart copy = root;
    QCOMPARE(copy.storedApproxSize(), 0);
}

QTEST_GUILESS_MAIN(TestMultipartEngine)
#include "tst_multipart_engine.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmultipart.h"

#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

#include <climits>
#include <sys/stat.h>

namespace {

struct NameRow {
    const char *name;
    const char *type;
    const char *id;
    const char *location;
    const char *dir;
    const char *expected;
};

// clang-format off
const NameRow kNames[] = {
    {"by location", "image/jpeg", "<i>", "a.jpg", "/d", "/d/a.jpg"},
    {"by id", "image/jpeg", "<i.jpg>", "", "/d/", "/d/i.jpg"},
    {"an extension of the type is kept", "image/jpeg", "", "a.jpeg", "/d", "/d/a.jpeg"},
    {"a foreign extension is replaced", "image/jpeg", "", "a.txt", "/d", "/d/a.jpg"},
    {"a missing extension is added", "image/jpeg", "", "a", "/d", "/d/a.jpg"},
    {"the case of the extension counts", "image/jpeg", "", "a.JPG", "/d", "/d/a.jpg"},
    {"quotes and brackets are removed", "image/jpeg", "", "\"<a>b\".jpg", "/d", "/d/ab.jpg"},
    {"an unknown type keeps the name", "x-no/such", "", "a.b", "/d", "/d/a.b"},
    {"an unknown type without extension", "x-no/such", "", "<a>", "/d", "/d/a"},
    {"directories are dropped", "image/jpeg", "", "../../etc/a.jpg", "/d", "/d/a.jpg"},
    {"a film of a foreign extension", "video/3gpp", "", "a.xyz", "/d", "/d/a.3gp"},
    {"a sound without extension", "audio/amr", "", "a", "/d", "/d/a.amr"},
};
// clang-format on

} // namespace

class TestWMMSMultipart : public QObject {
    Q_OBJECT

private slots:
    void startsEmpty();
    void dropsATerminatingZero_data();
    void dropsATerminatingZero();
    void sharesItsBytes();
    void theTypeSetsANullLocation_data();
    void theTypeSetsANullLocation();
    void theIdSetsANullLocation();
    void aNullLocationFallsBack();
    void fallingBackDoesNotAskWhetherItIsNull();
    void listsAreMadeOnDemand();
    void setSubMmsMultipartReplaces();
    void clearDropsTheSubPartsAlone();
    void copiesShareBytesAndList();
    void copiesLoseTheFormerList();
    void isAssignedFromItsOwnSubPart();
    void isMovedFromItsOwnSubPart();
    void isAssignedToItself();
    void getSrc_data();
    void getSrc();
    void isDrmObj_data();
    void isDrmObj();
    void isUPI_data();
    void isUPI();
    void isEmpty();
    void isMediaType_data();
    void isMediaType();
    void getApproxSize();
    void getApproxSizeStopsAtTheLargestInteger();
    void getSrcToLocalNameMap();
    void suggestsAFileName_data();
    void suggestsAFileName();
    void savesAndReadsItsFile();
    void savesOverALongerFile();
    void readFileFails_data();
    void readFileFails();
    void saveFileFails();
    void readingTakesMemoryOfItsOwn();
    void clearLocalFileNameGoesDown();
    void printInfo();
    void printInfoOfSubParts();
};

void TestWMMSMultipart::startsEmpty()
{
    WMMSMultipart part;
    QVERIFY(part.getContentType().isEmpty());
    QVERIFY(!part.subParts());
    QVERIFY(part.getContentLocation().isNull());
    QVERIFY(part.getContentID().isNull());
    QVERIFY(part.getLocalFileName().isNull());
    QCOMPARE(part.getData().size(), 0);
    QVERIFY(part.isEmpty());
}

void TestWMMSMultipart::dropsATerminatingZero_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("stored");

    QTest::newRow("plain text") << "text/plain" << QByteArray("61 62 63 00")
                                << QByteArray("61 62 63");
    QTest::newRow("smil") << "application/smil" << QByteArray("61 62 63 00")
                          << QByteArray("61 62 63");
    QTest::newRow("picture") << "image/gif" << QByteArray("61 62 63 00")
                             << QByteArray("61 62 63 00");
    QTest::newRow("other text") << "text/html" << QByteArray("61 00") << QByteArray("61 00");
    QTest::newRow("the case counts") << "Text/Plain" << QByteArray("61 00") << QByteArray("61 00");
    QTest::newRow("no type") << "" << QByteArray("61 00") << QByteArray("61 00");
    QTest::newRow("one of two zeros")
        << "text/plain" << QByteArray("61 00 00") << QByteArray("61 00");
    QTest::newRow("zero alone") << "text/plain" << QByteArray("00") << QByteArray("");
    QTest::newRow("no zero") << "text/plain" << QByteArray("61") << QByteArray("61");
    QTest::newRow("zero inside") << "text/plain" << QByteArray("00 61") << QByteArray("00 61");
    QTest::newRow("nothing") << "text/plain" << QByteArray("") << QByteArray("");
}

void TestWMMSMultipart::dropsATerminatingZero()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, given);
    QFETCH(QByteArray, stored);
    WMMSMultipart part;
    part.setContentType(typeOf(type));
    const QArray<char> bytes = arrayOf(given);
    part.setData(bytes);
    QCOMPARE(hexOf(part.getData()), stored);
    QCOMPARE(hexOf(bytes), given);
}

void TestWMMSMultipart::sharesItsBytes()
{
    WMMSMultipart part;
    part.setContentType(typeOf("text/plain"));
    QArray<char> bytes = arrayOf("61 62");
    part.setData(bytes);
    bytes[0] = 'x';
    QCOMPARE(hexOf(part.getData()), QByteArray("78 62"));

    QArray<char> terminated = arrayOf("61 62 00");
    part.setData(terminated);
    terminated[0] = 'x';
    QCOMPARE(hexOf(part.getData()), QByteArray("61 62"));
}

void TestWMMSMultipart::theTypeSetsANullLocation_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");

    QTest::newRow("by name") << QString() << QString() << "a.jpg"
                             << "a.jpg";
    QTest::newRow("nothing to take") << QString() << QString() << QString() << QString();
    QTest::newRow("a location stays") << QString() << "b.jpg"
                                      << "a.jpg"
                                      << "b.jpg";
    QTest::newRow("an empty location stays") << QString() << ""
                                             << "a.jpg"
                                             << "";
    QTest::newRow("an id is the location already") << "<i>" << QString() << "a.jpg"
                                                   << "<i>";
}

void TestWMMSMultipart::theTypeSetsANullLocation()
{
    QFETCH(QString, id);
    QFETCH(QString, location);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    WMMSMultipart part;
    if (!id.isNull()) {
        part.setContentID(id);
    }
    if (!location.isNull()) {
        part.setContentLocation(location);
    }
    part.setContentType(typeOf("image/jpeg", {{"name", name}}));
    QCOMPARE(part.getContentLocation(), expected);
    QCOMPARE(part.getContentLocation().isNull(), expected.isNull());
}

void TestWMMSMultipart::theIdSetsANullLocation()
{
    WMMSMultipart part;
    part.setContentID("<a>");
    QCOMPARE(part.getContentLocation(), QString("<a>"));
    part.setContentID("<b>");
    QCOMPARE(part.getContentID(), QString("<b>"));
    QCOMPARE(part.getContentLocation(), QString("<a>"));

    WMMSMultipart named;
    named.getContentType() = typeOf("image/gif", {{"name", "n.gif"}});
    QVERIFY(named.getContentLocation().isNull());
    named.setContentID("<a>");
    QCOMPARE(named.getContentLocation(), QString("n.gif"));
}

void TestWMMSMultipart::aNullLocationFallsBack()
{
    WMMSMultipart part;
    part.setContentID("<a>");
    part.setContentLocation("x.gif");
    part.setContentLocation(QString());
    QCOMPARE(part.getContentLocation(), QString("<a>"));

    part.getContentType() = typeOf("image/gif", {{"name", "n.gif"}});
    part.setContentLocation(QString());
    QCOMPARE(part.getContentLocation(), QString("n.gif"));

    part.setContentLocation("");
    QVERIFY(part.getContentLocation().isEmpty());
    QVERIFY(!part.getContentLocation().isNull());
}

void TestWMMSMultipart::fallingBackDoesNotAskWhetherItIsNull()
{
    WMMSMultipart part;
    part.setContentLocation("x.gif");
    part.setContentLocationIfNull();
    QVERIFY(part.getContentLocation().isNull());
}

void TestWMMSMultipart::listsAreMadeOnDemand()
{
    WMMSMultipart part;
    QVERIFY(!part.subParts());
    part.creatSubList();
    QVERIFY(part.subParts());
    part.getSubMmsMultipartList().append(partOf("image/gif", "x"));
    part.creatSubList();
    QCOMPARE(part.subParts()->size(), 1);

    WMMSMultipart other;
    QCOMPARE(other.getSubMmsMultipartList().size(), 0);
    QVERIFY(other.subParts());
}

void TestWMMSMultipart::setSubMmsMultipartReplaces()
{
    WMMSMultipart part;
    part.setSubMmsMultipart({partOf("image/gif", "1"), partOf("image/gif", "2")});
    QCOMPARE(part.subParts()->size(), 2);
    part.setSubMmsMultipart({partOf("image/gif", "3")});
    QCOMPARE(part.subParts()->size(), 1);
    QCOMPARE(hexOf(part.subParts()->first().getData()), QByteArray("33"));
}

// clear drops the sub-parts alone
void TestWMMSMultipart::clearDropsTheSubPartsAlone()
{
    WMMSMultipart part = partOf("image/gif", "x", "<a>", "a.gif");
    part.setLocalFileName("/tmp/a.gif");
    part.getSubMmsMultipartList().append(WMMSMultipart());
    part.clear();
    QVERIFY(!part.subParts());
    QCOMPARE(part.getContentType().getMimeType(), QString("image/gif"));
    QCOMPARE(part.getContentID(), QString("<a>"));
    QCOMPARE(part.getContentLocation(), QString("a.gif"));
    QCOMPARE(hexOf(part.getData()), QByteArray("78"));
    QCOMPARE(part.getLocalFileName(), QString("/tmp/a.gif"));
}

void TestWMMSMultipart::copiesShareBytesAndList()
{
    WMMSMultipart part = partOf("image/gif", "xy", "<a>", "a.gif");
    part.setLocalFileName("/tmp/a.gif");
    part.getSubMmsMultipartList().append(partOf("text/plain", "sub"));

    WMMSMultipart copy(part);
    QCOMPARE(copy.getContentType().getMimeType(), QString("image/gif"));
    QCOMPARE(copy.getContentID(), QString("<a>"));
    QCOMPARE(copy.getContentLocation(), QString("a.gif"));
    QCOMPARE(copy.getLocalFileName(), QString("/tmp/a.gif"));
    copy.getData()[0] = 'z';
    QCOMPARE(hexOf(part.getData()), QByteArray("7A 79"));

    QCOMPARE(static_cast<const void *>(copy.subParts()->constData()),
             static_cast<const void *>(part.subParts()->constData()));
    copy.getSubMmsMultipartList().append(WMMSMultipart());
    QCOMPARE(part.subParts()->size(), 1);
    copy.getSubMmsMultipartList().first().setContentID("<changed>");
    QVERIFY(part.subParts()->first().getContentID().isNull());
    copy.getSubMmsMultipartList().first().getData()[0] = 'S';
    QCOMPARE(hexOf(part.subParts()->first().getData()), QByteArray("53 75 62"));
}

void TestWMMSMultipart::copiesLoseTheFormerList()
{
    WMMSMultipart part = parentOf(kMixed, {WMMSMultipart()});
    part = partOf("image/gif", "x");
    QVERIFY(!part.subParts());
    const WMMSMultipart plain = partOf("text/plain", "t");
    part.creatSubList();
    part = plain;
    QVERIFY(!part.subParts());
    QCOMPARE(hexOf(part.getData()), QByteArray("74"));
}

void TestWMMSMultipart::isAssignedFromItsOwnSubPart()
{
    WMMSMultipart root = parentOf(kMixed, {parentOf(kRelated, {partOf("image/gif", "x", "<a>")})});
    root = root.getSubMmsMultipartList().first();
    QCOMPARE(root.getContentType().getMimeType(), kRelated);
    root = root.getSubMmsMultipartList().first();
    QCOMPARE(root.getContentID(), QString("<a>"));
    QCOMPARE(hexOf(root.getData()), QByteArray("78"));
    QVERIFY(!root.subParts());
}

void TestWMMSMultipart::isMovedFromItsOwnSubPart()
{
    WMMSMultipart root = parentOf(kMixed, {parentOf(kRelated, {partOf("image/gif", "x", "<a>")})});
    root = std::move(root.getSubMmsMultipartList().first());
    QCOMPARE(root.getContentType().getMimeType(), kRelated);
    root = std::move(root.getSubMmsMultipartList().first());
    QCOMPARE(root.getContentID(), QString("<a>"));
    QCOMPARE(hexOf(root.getData()), QByteArray("78"));
    QVERIFY(!root.subParts());
}

void TestWMMSMultipart::isAssignedToItself()
{
    WMMSMultipart part = parentOf(kMixed, {partOf("image/gif", "x")});
    const WMMSMultipart &same = part;
    part = same;
    QCOMPARE(part.subParts()->size(), 1);
    part.setSubMmsMultipart(part.getSubMmsMultipartList());
    QCOMPARE(part.subParts()->size(), 1);
}

void TestWMMSMultipart::getSrc_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("expected");

    QTest::newRow("the id first") << "<img1>"
                                  << "x.gif"
                                  << "img1";
    QTest::newRow("the location without an id") << ""
                                                << "x.gif"
                                                << "x.gif";
    QTest::newRow("a location with cid:") << ""
                                          << "cid:x.gif"
                                          << "x.gif";
    QTest::newRow("an id with cid:") << "cid:<i>"
                                     << ""
                                     << "<i";
    QTest::newRow("neither") << ""
                             << ""
                             << "";
}

void TestWMMSMultipart::getSrc()
{
    QFETCH(QString, id);
    QFETCH(QString, location);
    QFETCH(QString, expected);
    WMMSMultipart part;
    part.setContentID(id);
    part.setContentLocation(location);
    QCOMPARE(part.getSrc(), expected);
}

void TestWMMSMultipart::isDrmObj_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("expected");
    for (const char *type :
         {"application/vnd.oma.drm.message", "application/vnd.oma.drm.rights+xml",
          "application/vnd.oma.drm.rights+wbxml", "application/vnd.oma.drm.content",
          "application/vnd.oma.drm.dcf", "application/vnd.oma.drm.ro+xml"}) {
        QTest::newRow(type) << QString(type) << true;
    }
    QTest::newRow("the case counts") << "Application/vnd.oma.drm.dcf" << false;
    QTest::newRow("longer") << "application/vnd.oma.drm.dcfx" << false;
    QTest::newRow("picture") << "image/gif" << false;
    QTest::newRow("none") << "" << false;
}

void TestWMMSMultipart::isDrmObj()
{
    QFETCH(QString, type);
    WMMSMultipart part;
    part.setContentType(typeOf(type));
    QTEST(part.isDrmObj(), "expected");
}

void TestWMMSMultipart::isUPI_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("expected");
    QTest::newRow("yes") << "yes" << true;
    QTest::newRow("the case counts") << "Yes" << false;
    QTest::newRow("no") << "no" << false;
    QTest::newRow("not set") << QString() << false;
}

void TestWMMSMultipart::isUPI()
{
    QFETCH(QString, value);
    WMMSMultipart part;
    part.setContentType(typeOf("image/gif", {{"userPrompt", value}}));
    QTEST(part.isUPI(), "expected");
}

void TestWMMSMultipart::isEmpty()
{
    WMMSMultipart part;
    part.setData(bytesOf("x"));
    QVERIFY2(part.isEmpty(), "no type");
    part.setContentType(typeOf("image/gif"));
    QVERIFY(!part.isEmpty());
    part.setData(QArray<char>());
    QVERIFY2(part.isEmpty(), "a type, no bytes");
    part.creatSubList();
    QVERIFY2(part.isEmpty(), "an empty list");
    part.getSubMmsMultipartList().append(WMMSMultipart());
    QVERIFY2(!part.isEmpty(), "an empty sub-part");
    part.getContentType().setSubType(QString());
    QVERIFY2(part.isEmpty(), "sub-parts without a type");
}

void TestWMMSMultipart::isMediaType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("expected");

    QTest::newRow("picture") << "image/jpeg"
                             << "image" << true;
    QTest::newRow("kind in capitals") << "image/jpeg"
                                      << "IMAGE" << true;
    QTest::newRow("type in capitals") << "IMAGE/JPEG"
                                      << "image" << true;
    // vector images are not counted as images
    QTest::newRow("svg+xml") << "image/svg+xml"
                             << "IMAGE" << false;
    QTest::newRow("svg") << "image/svg"
                         << "image" << false;
    QTest::newRow("svgz") << "image/SVGZ"
                          << "image" << false;
    QTest::newRow("vector, not a picture type") << "text/svg"
                                                << "text" << true;
    QTest::newRow("film") << "video/3gpp"
                          << "Video" << true;
    QTest::newRow("film is no picture") << "video/3gpp"
                                        << "image" << false;
    QTest::newRow("sound") << "audio/amr"
                           << "audio" << true;
    QTest::newRow("smaf") << "application/vnd.smaf"
                          << "audio" << true;
    QTest::newRow("smaf in capitals") << "Application/VND.SMAF"
                                      << "AUDIO" << true;
    QTest::newRow("imelody") << "text/x-imelody"
                             << "audio" << true;
    QTest::newRow("imelody as application") << "application/x-imelody"
                                            << "audio" << false;
    QTest::newRow("smaf as text") << "text/vnd.smaf"
                                  << "audio" << false;
    QTest::newRow("text") << "text/plain"
                          << "text" << true;
    QTest::newRow("application") << "application/smil"
                                 << "application" << true;
    QTest::newRow("other kind") << "application/smil"
                                << "text" << false;
    QTest::newRow("unknown kind") << "image/gif"
                                  << "picture" << false;
}

void TestWMMSMultipart::isMediaType()
{
    QFETCH(QString, type);
    QFETCH(QString, kind);
    WMMSMultipart part;
    part.setContentType(typeOf(type));
    QTEST(part.isMediaType(kind), "expected");
}

void TestWMMSMultipart::getApproxSize()
{
    QCOMPARE(WMMSMultipart().getApproxSize(), 512);
    WMMSMultipart part = partOf("image/gif", QByteArray(1000, 'x'));
    QCOMPARE(part.getApproxSize(), 1512);
    part.setSubMmsMultipart({WMMSMultipart(), WMMSMultipart()});
    QCOMPARE(part.getApproxSize(), 2536);
    part.getSubMmsMultipartList().append(parentOf(kMixed, {partOf("text/plain", "abc")}));
    QCOMPARE(part.getApproxSize(), 2536 + 512 + 512 + 3);
}

void TestWMMSMultipart::getApproxSizeStopsAtTheLargestInteger()
{
    WMMSMultipart part;
    WMMSMultipart half = partOf("image/gif", QByteArray(1 << 20, 'x'));
    for (int n = 0; n < 2048; ++n) {
        part.getSubMmsMultipartList().append(half);
    }
    QCOMPARE(part.getApproxSize(), INT_MAX);
    part.setContentType(typeOf(kMixed));
    QArray<char> out;
    QVERIFY(!part.exportTo(out, 0));
}

void TestWMMSMultipart::getSrcToLocalNameMap()
{
    WMMSMultipart root;
    QVERIFY(root.getSrcToLocalNameMap().isEmpty());
    WMMSMultipart a = partOf("image/gif", "1", "<a>");
    a.setLocalFileName("/1");
    WMMSMultipart again = partOf("image/gif", "2", "a");
    again.setLocalFileName("/2");
    WMMSMultipart b = partOf("image/gif", "3", "", "b.gif");
    b.setLocalFileName("/3");
    WMMSMultipart below = partOf("image/gif", "4", "c");
    below.setLocalFileName("/4");
    b.getSubMmsMultipartList().append(below);
    root.setSubMmsMultipart({a, again, b});
    const QMap<QString, QString> expected = {{"a", "/2"}, {"b.gif", "/3"}};
    QCOMPARE(root.getSrcToLocalNameMap(), expected);
}

void TestWMMSMultipart::suggestsAFileName_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("expected");
    for (const NameRow &row : kNames) {
        QTest::newRow(row.name) << row.type << row.id << row.location << row.dir << row.expected;
    }
}

void TestWMMSMultipart::suggestsAFileName()
{
    QFETCH(QString, type);
    QFETCH(QString, id);
    QFETCH(QString, location);
    QFETCH(QString, dir);
    WMMSMultipart part;
    part.setContentType(typeOf(type));
    part.setContentID(id);
    part.setContentLocation(location);
    QTEST(part.getSuggestLocalFileName(dir), "expected");
}

void TestWMMSMultipart::savesAndReadsItsFile()
{
    QTemporaryDir dir;
    WMMSMultipart part = partOf("image/gif", "picture");
    QVERIFY(part.setLocalFileName(dir.filePath("a.gif")));
    QVERIFY(part.saveFile());
    QCOMPARE(hexOf(part.getData()), toHex("picture"));
    for (const bool argument : {true, false}) {
        part.setData(bytesOf("changed"));
        QVERIFY(part.readFile(argument));
        QCOMPARE(hexOf(part.getData()), toHex("picture"));
    }
    // What is read is the whole file, also of a text with a terminating zero.
    WMMSMultipart text = partOf("text/plain", "x");
    text.setLocalFileName(dir.filePath("a.txt"));
    QFile file(text.getLocalFileName());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("ab\0", 3);
    file.close();
    QVERIFY(text.readFile(true));
    QCOMPARE(hexOf(text.getData()), QByteArray("61 62 00"));
}

void TestWMMSMultipart::savesOverALongerFile()
{
    QTemporaryDir dir;
    WMMSMultipart part = partOf("image/gif", "a longer text");
    part.setLocalFileName(dir.filePath("f"));
    QVERIFY(part.saveFile());
    part.setData(bytesOf("short"));
    QVERIFY(part.saveFile());
    QCOMPARE(QFileInfo(dir.filePath("f")).size(), 5);
    part.setData(QArray<char>());
    QVERIFY(part.saveFile());
    QCOMPARE(QFileInfo(dir.filePath("f")).size(), 0);
    part.setData(bytesOf("x"));
    QVERIFY(part.readFile(true));
    QCOMPARE(part.getData().size(), 0);
}

void TestWMMSMultipart::readFileFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("no such file") << "/no/such/file";
    QTest::newRow("directory") << QDir::tempPath();
}

void TestWMMSMultipart::readFileFails()
{
    QFETCH(QString, name);
    WMMSMultipart part = partOf("image/gif", "kept");
    part.setLocalFileName(name);
    QVERIFY(!part.readFile(true));
    QCOMPARE(hexOf(part.getData()), toHex("kept"));
}

void TestWMMSMultipart::saveFileFails()
{
    WMMSMultipart part = partOf("image/gif", "x");
    QVERIFY2(!part.saveFile(), "no name");
    part.setLocalFileName("/no/such/directory/file");
    QVERIFY(!part.saveFile());
    part.setLocalFileName("/dev/full");
    QVERIFY2(!part.saveFile(), "no space");
    QCOMPARE(hexOf(part.getData()), toHex("x"));
}

void TestWMMSMultipart::readingTakesMemoryOfItsOwn()
{
    QTemporaryDir dir;
    WMMSMultipart part = partOf("image/gif", "file");
    part.setLocalFileName(dir.filePath("f"));
    QVERIFY(part.saveFile());
    part.setData(bytesOf("before"));
    const WMMSMultipart copy = part;
    QVERIFY(part.readFile(true));
    QCOMPARE(hexOf(part.getData()), toHex("file"));
    QCOMPARE(hexOf(copy.getData()), toHex("before"));
}

void TestWMMSMultipart::clearLocalFileNameGoesDown()
{
    WMMSMultipart below = partOf("image/gif", "x");
    below.setLocalFileName("/b");
    WMMSMultipart part = parentOf(kMixed, {parentOf(kMixed, {below})});
    part.setLocalFileName("/a");
    const WMMSMultipart copy = part;
    LogCapture log;
    part.clearLocalFileName();
    QVERIFY(part.getLocalFileName().isNull());
    const WMMSMultipart &cleared = part.subParts()->first().subParts()->first();
    QVERIFY(cleared.getLocalFileName().isNull());
    QCOMPARE(hexOf(cleared.getData()), toHex("x"));
    QCOMPARE(copy.subParts()->first().subParts()->first().getLocalFileName(), QString("/b"));
    QCOMPARE(log.lines(), QStringList());
}

void TestWMMSMultipart::printInfo()
{
    LogCapture log;
    WMMSMultipart().printInfo();
    WMMSMultipart part;
    part.setContentType(typeOf("image/gif", {{"name", "n.gif"}}));
    part.printInfo();
    QCOMPARE(log.lines(), QStringList());

    part.setData(bytesOf("abc"));
    part.setContentLocation("");
    part.printInfo();
    part.setContentLocation("l.gif");
    part.setContentID("<i>");
    part.printInfo();
    QCOMPARE(
        log.lines(),
        QStringList({"------------------------------------", "contentType:  image/gif ;name=n.gif;",
                     "dataLen:  3", "------------------------------------",
                     "contentType:  image/gif ;name=n.gif;", "contentLocation:  l.gif",
                     "contentID:  <i>", "dataLen:  3"}));
}

void TestWMMSMultipart::printInfoOfSubParts()
{
    WMMSMultipart part =
        parentOf(kMixed, {partOf("image/gif", "1"), WMMSMultipart(), partOf("image/png", "22")});
    part.setData(bytesOf("raw"));
    LogCapture log;
    part.printInfo();
    QCOMPARE(log.lines(),
             QStringList({"------------------------------------",
                          "contentType:  application/vnd.wap.multipart.mixed ",
                          "------------------------------------", "contentType:  image/gif ",
                          "dataLen:  1", "------------------------------------",
                          "contentType:  image/png ", "dataLen:  2"}));
}

QTEST_GUILESS_MAIN(TestWMMSMultipart)

#include "tst_wmmsmultipart.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/drm_containers.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

#include <unistd.h>

using namespace drm;

/// The checks with the DRM client of this library behind them and real containers in front.
class TestWMMSDrmUtilFiles : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void containers_data();
    void containers();
    void listOfFiles();
    void unreadableFile();
    void partWithoutFile();
    void brokenContainers_data();
    void brokenContainers();
    void storedMessage();
};

namespace {

QString tmpName()
{
    return QString("wmsg-drm-files-%1").arg(getpid());
}

const QByteArray kContent1 = content1("audio/amr", "cid:1@x", "Rights-Issuer: http://r.i/\r\n");

} // namespace

void TestWMMSDrmUtilFiles::cleanup()
{
    QCOMPARE(QDir("/tmp").entryList({tmpName() + '*'}), QStringList());
}

void TestWMMSDrmUtilFiles::containers_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("inside");
    QTest::addColumn<bool>("isDrm");
    QTest::addColumn<bool>("canForward");
    QTest::addColumn<bool>("hasIssuer");
    const auto container = [](const char *name, const QString &type, const QByteArray &bytes,
                              const QString &inside, bool isDrm, bool canForward, bool hasIssuer) {
        QTest::newRow(name) << type << bytes << inside << isDrm << canForward << hasIssuer;
    };
    const QString oma = "application/vnd.oma.drm.";
    container("forward-lock", oma + "message", message({bodyPart("image/jpeg", kJpeg)}),
              "image/jpeg", true, false, false);
    container("combined delivery", oma + "message",
              message({bodyPart("application/vnd.oma.drm.rights+xml", rights1("u")),
                       bodyPart("image/gif", "GIF89a")}),
              "image/gif", true, false, false);
    container("content of version 1", oma + "content", kContent1, "audio/amr", true, true, true);
    container("content of version 2", oma + "dcf", content2("video/3gpp", "u", ""), "video/3gpp",
              true, true, false);
    container("rights as XML", oma + "rights+xml", rights1("u"), "", true, false, false);
    container("rights as binary XML", oma + "rights+wbxml", binaryRights("u"), "", true, false,
              false);
    container("rights of version 2", oma + "ro+xml", rights2("u", "http://r.i/"), "", true, false,
              true);
    container("the type lies", oma + "message", kJpeg, "", false, true, false);
    container("the type is another one", oma + "dcf", kContent1, "audio/amr", true, true, true);
}

void TestWMMSDrmUtilFiles::containers()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, bytes);
    DrmFiles files;
    const QString path = QFile::decodeName(files.write(bytes, "a.bin"));
    const LogCapture log;
    QTEST(WMMSDrmUtil::MMS_IsDRMFile(path), "isDrm");
    QTEST(WMMSDrmUtil::MMS_CanForward(path), "canForward");
    QTEST(WMMSDrmUtil::canBeSentDrmCheck(path), "canForward");
    QTEST(WMMSDrmUtil::hasRightsIssuerURL(path), "hasIssuer");
    QTEST(WMMSDrmUtil::sendRequestRightsFromUI(path), "isDrm");

    WMMSMultipart part = partOf(type, bytes, tmpName());
    QTEST(WMMSDrmUtil::getDataMimeType(&part), "inside");
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart({partOf("text/plain", "hi", "t"), part});
    QTEST(WMMSDrmUtil::canBeForwardedDrmCheck(&message), "canForward");
    part.setLocalFileName(path);
    message.getMultiParts().setSubMmsMultipart({part});
    QTEST(message.canBeForwardedDrmCheck(), "canForward");
}

void TestWMMSDrmUtilFiles::listOfFiles()
{
    DrmFiles files;
    const QString picture = QFile::decodeName(files.write(kJpeg, "a.jpg"));
    const QString content = QFile::decodeName(files.write(kContent1, "b.dcf"));
    const QString locked =
        QFile::decodeName(files.write(message({bodyPart("image/jpeg", kJpeg)}), "c.jpg"));
    const LogCapture log;
    QVERIFY(WMMSDrmUtil::canBeSentDrmCheck(picture + "\r\n" + content + "\r\n"));
    QVERIFY(!WMMSDrmUtil::canBeSentDrmCheck(picture + '\r' + locked + '\r' + content));
    QVERIFY(WMMSDrmUtil::canBeSentFormatCheck(picture + '\n' + locked)); // its name tells nothing
}

void TestWMMSDrmUtilFiles::unreadableFile()
{
    const LogCapture log;
    QVERIFY(!WMMSDrmUtil::MMS_IsDRMFile("/nowhere/a.dm"));
    QVERIFY(WMMSDrmUtil::MMS_CanForward("/nowhere/a.dm"));
    QVERIFY(!WMMSDrmUtil::hasRightsIssuerURL("/nowhere/a.dm"));
    QVERIFY(!WMMSDrmUtil::sendRequestRightsFromUI("/nowhere/a.dm"));
}

/// A part whose file is gone counts as plain.
void TestWMMSDrmUtilFiles::partWithoutFile()
{
    const LogCapture log;
    WMMSMultipart part = partOf("application/vnd.oma.drm.message",
                                message({bodyPart("image/jpeg", kJpeg)}), tmpName());
    part.setLocalFileName("/nowhere/a.dm");
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart({part});
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
}

void TestWMMSDrmUtilFiles::brokenContainers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("headers past the end") << fromHex("01 03 01 61 2F 62 63 8F FF FF FF 7F 00");
    QTest::newRow("deep boxes") << fileType("odcf")
            + (number(0, 4) + "odrm" + kVersionFlags).repeated(5000);
    QTest::newRow("endless header") << "--b\r\n" + QByteArray("X: y\r\n").repeated(100000);
    QTest::newRow("a table of 4 GB") << fromHex("03 0E 6A 8F FF FF FF 7F 45 01");
}

void TestWMMSDrmUtilFiles::brokenContainers()
{
    QFETCH(QByteArray, bytes);
    const LogCapture log;
    WMMSMultipart part = partOf("application/vnd.oma.drm.dcf", bytes, tmpName());
    QCOMPARE(WMMSDrmUtil::getDataMimeType(&part), "");
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart({part});
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(&message));
}

void TestWMMSDrmUtilFiles::storedMessage()
{
    const StorageRoot root;
    const LogCapture log;
    const auto store = [](const QString &type, const QByteArray &bytes) {
        WMMSMsg message;
        message.setContentType(typeOf(kMixed));
        message.getMultiParts().setSubMmsMultipart({partOf(type, bytes, tmpName())});
        unsigned short id = MMS_ENG_INVALID_ID;
        message.constructEngMsg(&id, MMS_ENG_INBOX);
        return id;
    };
    const QByteArray locked = message({bodyPart("image/jpeg", kJpeg)});
    const unsigned short lockedId = store("application/vnd.oma.drm.message", locked);
    const unsigned short contentId = store("application/vnd.oma.drm.content", kContent1);
    QVERIFY(lockedId != MMS_ENG_INVALID_ID && contentId != MMS_ENG_INVALID_ID);
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(lockedId));
    QVERIFY(WMMSDrmUtil::canBeForwardedDrmCheck(contentId));
    const unsigned short absent = contentId + 100;
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(absent));
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(MMS_ENG_INVALID_ID));
    // The header alone does not do.
    QVERIFY(QFile::remove(root.store() + "parts/2.part"));
    QVERIFY(!WMMSDrmUtil::canBeForwardedDrmCheck(contentId));
}

QTEST_GUILESS_MAIN(TestWMMSDrmUtilFiles)
#include "tst_wmmsdrmutil_files.moc"

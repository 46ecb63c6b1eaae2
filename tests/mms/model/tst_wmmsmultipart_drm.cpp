// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmultipart.h"
#include "tests/support/fake_drmclient.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

#include <unistd.h>

namespace {

const QString kDrmMessage = "application/vnd.oma.drm.message";

QString tmpName()
{
    return QString("wmsg-drm-part-%1.dm").arg(getpid());
}

} // namespace

class TestWMMSMultipartDrm : public QObject {
    Q_OBJECT

private slots:
    void cleanup();
    void isMediaType_data();
    void isMediaType();
    void unknownContent();
    void everyDrmTypeIsLookedInto();
    void otherPartsAreNot();
    void suggestedName();
    void partStaysAsItIs();
};

void TestWMMSMultipartDrm::cleanup()
{
    QCOMPARE(QDir("/tmp").entryList({"wmsg-drm-part-" + QString::number(getpid()) + '*'}),
             QStringList());
}

void TestWMMSMultipartDrm::isMediaType_data()
{
    QTest::addColumn<QByteArray>("inside");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("expected");
    const auto kind = [](const char *name, const char *inside, const char *wanted, bool expected) {
        QTest::newRow(name) << QByteArray(inside) << QString(wanted) << expected;
    };
    kind("picture", "image/jpeg", "image", true);
    kind("picture, in capitals", "image/jpeg", "IMAGE", true);
    kind("picture is no sound", "image/jpeg", "audio", false);
    kind("picture is no application", "image/jpeg", "application", false);
    kind("vector image", "image/svg+xml", "image", false);
    kind("sound", "audio/amr", "audio", true);
    kind("ringtone", "text/x-imelody", "audio", true);
    kind("SMAF", "application/vnd.smaf", "audio", true);
    kind("film", "video/3gpp", "video", true);
    kind("text", "text/plain", "text", true);
    // What is inside a container is compared with its case.
    kind("picture with capitals inside", "Image/jpeg", "image", false);
    kind("vector image with capitals inside", "image/SVG", "image", true);
    kind("sound with capitals inside", "Audio/amr", "audio", false);
    kind("SMAF with capitals inside", "application/vnd.SMAF", "audio", false);
    kind("film with capitals inside", "Video/3gpp", "video", false);
    kind("other kinds with capitals inside", "Text/plain", "text", true);
}

void TestWMMSMultipartDrm::isMediaType()
{
    QFETCH(QByteArray, inside);
    QFETCH(QString, kind);
    FakeDrmClient client;
    client.contentType = inside;
    const WMMSMultipart part = partOf(kDrmMessage, "bytes", tmpName());
    QTEST(part.isMediaType(kind), "expected");
    QCOMPARE(client.contents, QList<QByteArray>({"bytes"}));
}

void TestWMMSMultipartDrm::unknownContent()
{
    FakeDrmClient client;
    client.status = 1;
    const WMMSMultipart part = partOf(kDrmMessage, "bytes", tmpName());
    for (const char *kind : {"image", "audio", "video", "application"}) {
        QVERIFY2(!part.isMediaType(kind), kind);
    }
    QVERIFY(part.isMediaType(""));
}

void TestWMMSMultipartDrm::everyDrmTypeIsLookedInto()
{
    const FakeDrmClient client;
    for (const char *type : {"message", "rights+xml", "rights+wbxml", "content", "dcf", "ro+xml"}) {
        const WMMSMultipart part =
            partOf(QString("application/vnd.oma.drm.") + type, "bytes", tmpName());
        QVERIFY2(part.isMediaType("image"), type);
        QVERIFY2(!part.isMediaType("application"), type);
    }
}

void TestWMMSMultipartDrm::otherPartsAreNot()
{
    const FakeDrmClient client;
    QVERIFY(partOf("application/vnd.oma.dd+xml", "bytes", tmpName()).isMediaType("application"));
    QVERIFY(partOf("Image/gif", "bytes", tmpName()).isMediaType("image"));
    QCOMPARE(client.calls, QStringList());
}

void TestWMMSMultipartDrm::suggestedName()
{
    const FakeDrmClient client;
    const LogCapture log;
    const WMMSMultipart part = partOf(kDrmMessage, "bytes", '<' + tmpName() + '>', "other.jpg");
    QCOMPARE(part.getSuggestLocalFileName("/d"), "/d/" + tmpName());
    QCOMPARE(part.getSuggestLocalFileName(""), "/tmp/" + tmpName());
    const WMMSMultipart unwritable = partOf(kDrmMessage, "bytes", QString(300, 'n'));
    QCOMPARE(unwritable.getSuggestLocalFileName("/d"), "");
}

void TestWMMSMultipartDrm::partStaysAsItIs()
{
    const FakeDrmClient client;
    const LogCapture log;
    WMMSMultipart part = partOf(kDrmMessage, "bytes", tmpName(), "l");
    part.setLocalFileName("/somewhere/else");
    const char *const bytes = part.getData().constData();
    const QByteArray before = shown(part);
    part.isMediaType("image");
    part.getSuggestLocalFileName("/d");
    QCOMPARE(part.getLocalFileName(), "/somewhere/else");
    QVERIFY(part.getData().constData() == bytes);
    QCOMPARE(shown(part), before);
}

QTEST_GUILESS_MAIN(TestWMMSMultipartDrm)
#include "tst_wmmsmultipart_drm.moc"

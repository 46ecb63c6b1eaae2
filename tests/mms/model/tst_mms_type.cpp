// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_msgdb_type.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

#include <climits>

namespace {

const QString kWrong = "Wrong content type";
const QString kSmil = "content type is application/smil";
const QString kLetter = "Setting the mms type to Letter Mixed";

QString notSmil(const char *type)
{
    return QString("pSmil=NULL as the content type is not application/smil.Its %1").arg(type);
}

} // namespace

class TestMmsType : public QObject {
    Q_OBJECT

private slots:
    void theValues();
    void byMediaType_data();
    void byMediaType();
    void everyMediaNumber();
    void related_data();
    void related();
    void withoutAList();
    void partsAreNotLookedAt();
    void otherTypesDoNotLookAtTheParts();
    void mapMmscResp_data();
    void mapMmscResp();
};

void TestMmsType::theValues()
{
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_POSTCARD), 1);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_MEDIA), 2);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_LETTER_MIXED), 3);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_XHTML), 4);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_ALTERNATIVE), 5);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_SMIL), 6);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_UNKNOWN), 13);
    QCOMPARE(int(MMS_MSGDB_MSG_TYPE_NONE), 255);
}

void TestMmsType::byMediaType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("expected");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const char *type, int expected, const QStringList &log = {}) {
        QTest::newRow(type) << type << expected << log;
    };
    row("text/plain", 3, {"Type for the main content type is text/plain"});
    row("image/gif", 2);
    row("image/jpeg", 2);
    row("image/png", 2);
    row("image/vnd.wap.wbmp", 2);
    row("image/bmp", 2);
    row("audio/imelody", 2);
    row("audio/midi", 2);
    row("audio/wav", 2);
    row("video/mp4", 2);
    row("audio/mp3", 2);
    QTest::newRow("image/tiff is not a single medium") << "image/tiff" << 13 << QStringList(kWrong);
    row("application/vnd.wap.multipart.mixed", 3);
    row("application/vnd.wap.multipart.alternative", 5);
    row("application/vnd.wap.multipart.related", 13);
    row("application/brelwick-mmstemplate", 13, {kWrong});
    row("application/smil", 13, {kWrong});
    row("application/xhtml+xml", 13, {kWrong});
    row("multipart/related", 13, {kWrong});
    row("image/jpg", 13, {kWrong});
    row("IMAGE/GIF", 13, {kWrong});
    row("no/such", 13, {kWrong});
    QTest::newRow("none") << "" << 13 << QStringList(kWrong);
}

void TestMmsType::byMediaType()
{
    QFETCH(QString, type);
    const WMMSMsg message;
    LogCapture log;
    QTEST(message.getMMSTypeByContentType(typeOf(type), true), "expected");
    QTEST(log.lines(), "log");
}

void TestMmsType::everyMediaNumber()
{
    const QMap<int, int> known = {{3, 3},  {29, 2}, {30, 2}, {32, 2}, {33, 2},  {35, 3},  {38, 5},
                                  {51, 6}, {83, 2}, {92, 2}, {95, 2}, {100, 2}, {112, 2}, {121, 2}};
    const WMMSMsg message;
    LogCapture log;
    for (int id = 0; id < 164; ++id) {
        const QString type = WMMSContentType::getMimeType(static_cast<unsigned char>(id));
        QCOMPARE(qMakePair(type, message.getMMSTypeByContentType(typeOf(type), false)),
                 qMakePair(type, known.value(id, 13)));
    }
}

void TestMmsType::related_data()
{
    QTest::addColumn<QString>("rootType");
    QTest::addColumn<QStringList>("parts");
    QTest::addColumn<int>("expected");
    QTest::addColumn<QStringList>("log");

    QTest::newRow("presentation first")
        << QString() << QStringList({"application/smil", "image/gif"}) << 6
        << QStringList({kSmil, "SMIL MMS"});
    QTest::newRow("presentation last")
        << QString() << QStringList({"image/gif", "text/plain", "application/smil"}) << 6
        << QStringList({notSmil("image/gif"), notSmil("text/plain"), kSmil, "SMIL MMS"});
    QTest::newRow("presentation in capitals")
        << QString() << QStringList({"Application/SMIL"}) << 6 << QStringList({kSmil, "SMIL MMS"});
    QTest::newRow("presentation and postcard")
        << QString() << QStringList({"text/x-brel-postcard_contacts", "application/smil"}) << 6
        << QStringList({notSmil("text/x-brel-postcard_contacts"), kSmil, "SMIL MMS"});
    QTest::newRow("a presentation that is not there")
        << "application/smil" << QStringList({"image/gif", "text/x-brel-postcard_contacts"}) << 3
        << QStringList({notSmil("image/gif"), notSmil("text/x-brel-postcard_contacts"),
                        "MMS_MSGDB_MSG_TYPE_LETTER_MIXED"});
    QTest::newRow("a presentation that is not there, no parts")
        << "application/smil" << QStringList() << 3
        << QStringList("MMS_MSGDB_MSG_TYPE_LETTER_MIXED");
    QTest::newRow("a root of XHTML")
        << "application/xhtml+xml" << QStringList({"text/x-brel-postcard_contacts"}) << 4
        << QStringList(notSmil("text/x-brel-postcard_contacts"));
    QTest::newRow("a root of XHTML with a presentation")
        << "application/xhtml+xml" << QStringList({"application/smil"}) << 6
        << QStringList({kSmil, "SMIL MMS"});
    QTest::newRow("postcard")
        << QString() << QStringList({"text/plain", "text/x-brel-postcard_contacts", "image/gif"})
        << 1
        << QStringList({notSmil("text/plain"), notSmil("text/x-brel-postcard_contacts"),
                        notSmil("image/gif"), kLetter, "Setting the mms type to POSTCARD"});
    QTest::newRow("postcard in capitals")
        << QString() << QStringList({"Text/X-Brel-Postcard_Contacts"}) << 1
        << QStringList(
               {notSmil("text/x-brel-postcard_contacts"), "Setting the mms type to POSTCARD"});
    QTest::newRow("letter") << "no/such" << QStringList({"text/plain", "image/gif"}) << 3
                            << QStringList(
                                   {notSmil("text/plain"), notSmil("image/gif"), kLetter, kLetter});
    QTest::newRow("a part without a type")
        << QString() << QStringList({""}) << 3 << QStringList({notSmil(""), kLetter});
    QTest::newRow("no parts") << QString() << QStringList() << 13 << QStringList();
}

void TestMmsType::related()
{
    QFETCH(QString, rootType);
    QFETCH(QStringList, parts);
    WMMSMsg message;
    message.getMultiParts().creatSubList();
    for (const QString &type : parts) {
        message.getMultiParts().getSubMmsMultipartList().append(partOf(type, "x"));
    }
    const WMMSContentType type = typeOf(kRelated, {{"type", rootType}});
    LogCapture log;
    QTEST(message.getMMSTypeByContentType(type, true), "expected");
    QTEST(log.lines(), "log");
    log.clear();
    QCOMPARE(message.getMMSTypeByContentType(type, false), 6);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(int(message.getMMSType()), 255);
}

void TestMmsType::withoutAList()
{
    const WMMSMsg message;
    QVERIFY(!message.getMultiParts().subParts());
    LogCapture log;
    QCOMPARE(message.getMMSTypeByContentType(typeOf(kRelated), true), 13);
    QCOMPARE(
        message.getMMSTypeByContentType(typeOf(kRelated, {{"type", "application/smil"}}), true), 3);
    QCOMPARE(message.getMMSTypeByContentType(typeOf(kRelated, {{"type", "application/xhtml+xml"}}),
                                             true),
             4);
    QCOMPARE(log.lines(), QStringList("MMS_MSGDB_MSG_TYPE_LETTER_MIXED"));
    QVERIFY(!message.getMultiParts().subParts());
}

void TestMmsType::partsAreNotLookedAt()
{
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart(
        {partOf(kMixed, "x"), parentOf(kRelated, {partOf("application/smil", "<smil/>")})});
    LogCapture log;
    // The parts of the parts are not looked at.
    QCOMPARE(message.getMMSTypeByContentType(typeOf(kRelated), true), 3);
}

void TestMmsType::otherTypesDoNotLookAtTheParts()
{
    WMMSMsg message;
    message.getMultiParts().setSubMmsMultipart({partOf("application/smil", "<smil/>")});
    LogCapture log;
    QCOMPARE(message.getMMSTypeByContentType(typeOf(kMixed), true), 3);
    QCOMPARE(log.lines(), QStringList());
}

void TestMmsType::mapMmscResp_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("status");
    QTest::newRow("negative") << -3 << -1 << -1;
    QTest::newRow("lowest") << SHRT_MIN << SHRT_MIN << -1;
    QTest::newRow("none") << 0 << 0 << -1;
    QTest::newRow("general") << 1 << 9 << 128;
    QTest::newRow("transient") << 10 << 14 << 192;
    QTest::newRow("permanent") << 15 << 25 << 224;
    QTest::newRow("beyond") << 26 << 300 << -1;
    QTest::newRow("highest") << SHRT_MAX << SHRT_MAX << -1;
}

void TestMmsType::mapMmscResp()
{
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(int, status);
    for (int code = first; code <= last; ++code) {
        QCOMPARE(int(WMMSMsg::mapMmscResp(static_cast<short>(code))),
                 status < 0 ? 127 : status + code - first);
    }
}

QTEST_GUILESS_MAIN(TestMmsType)

#include "tst_mms_type.moc"

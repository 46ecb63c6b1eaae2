// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_util_tool.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"
#include "tests/support/present_fields.h"

#include <QtTest/QtTest>

#include <numeric>
#include <sys/stat.h>

namespace {

const QStringList kHead = {"====================== printMsg ============================\n",
                           "============ MMS Message Header Fields & Value =============\n"};
const QString kBodyHead = "============ MMS Message Body Information= =============\n";
const QString kEnd = "============================================================\n";

QStringList attributes(int mmsType = 255, int upiType = 12, int audio = 0, int video = 0,
                       int attachment = 0)
{
    return {"==================== Misc Information ======================\n",
            QString("mmsType: %1").arg(mmsType),
            "msgDBID: -1",
            QString("UPIType: %1").arg(upiType),
            QString("audioExistence: %1").arg(audio),
            QString("videoExistence: %1").arg(video),
            QString("attachmentExistence: %1").arg(attachment),
            kEnd};
}

QStringList dumpOf(const QByteArray &bytes)
{
    LogCapture log;
    MMS_UTIL_Tool::logOut(reinterpret_cast<const unsigned char *>(bytes.constData()),
                          static_cast<unsigned int>(bytes.size()));
    return log.lines();
}

QStringList framed(qsizetype size, const QStringList &lines)
{
    return QStringList({"********** MMS data BEGIN **********\n",
                        QString("The data length=%1\n").arg(size)})
        + lines + QStringList("********** MMS data END **********\n");
}

const QString kGap(10, ' ');

} // namespace

class TestPrint : public QObject {
    Q_OBJECT

private slots:
    void printsAFreshMessage();
    void printsEveryField();
    void printsTheBody();
    void printsTheAttributes();
    void printingMarksFieldsAsPresent();
    void aDiscardedPrintMarksToo();

    void dumpsNothing();
    void dumpsLines_data();
    void dumpsLines();
    void dumpsEveryByte();
    void dumpsManyLines();
    void dumpsAFile();
    void dumpsNoFile_data();
    void dumpsNoFile();
};

void TestPrint::printsAFreshMessage()
{
    WMMSMsg message;
    LogCapture log;
    message.printMsg();
    QCOMPARE(log.lines(),
             kHead + QStringList({"msgClass: PERSONAL", "senderVisibility: 1"}) + attributes());
}

void TestPrint::printsEveryField()
{
    WMMSMsg message;
    message.setBcc(WMFMEntry(1, "11", "Ann"));
    message.setCc({WMFMEntry(1, "22"), WMFMEntry(0, "c@x")});
    message.setContentLocation("loc");
    message.setContentType(typeOf("image/gif", {{"name", "n"}}));
    message.setDate(QDateTime(QDate(2004, 2, 29), QTime(12, 34, 56)));
    message.setDeliveryReportNecessity(true);
    message.setDeliveryTime(QDateTime(QDate(2004, 3, 1), QTime(1, 2, 3)));
    message.setExpiryTime(3600);
    message.setFrom(WMFMEntry(0, "a@b", "Bob"));
    message.setMsgClass(129);
    message.setMsgID("mid");
    message.setPDUType(0x84);
    message.setVersion(0x12);
    message.setMsgSize(77);
    message.setPriority(130);
    message.setReadReportNecessity(false);
    message.setReportAllowedity(true);
    message.setResponseStatus(224);
    message.setResponseText("text");
    message.setSenderVisibility(false);
    message.setMsgStatus(132);
    message.setSubject("subject");
    message.setTo(WMFMEntry(1, "33"));
    message.setTransactionID("tid");
    LogCapture log;
    message.printMsg();
    QCOMPARE(log.lines(),
             kHead
                 + QStringList({"bcc: ",
                                "\t11 Ann",
                                "cc: ",
                                "\t22 ",
                                "\tc@x ",
                                "contentLocation: loc",
                                "contentType: image/gif ;name=n;",
                                "msgDate: Sun Feb 29 12:34:56 2004",
                                "deliveryReport: 1",
                                "eliveryTime: Mon Mar 1 01:02:03 2004",
                                "expiry: 3600",
                                "from: ",
                                "\ta@b Bob",
                                "msgClass: ADVERTISEMENT",
                                "msgID: mid",
                                "PDUType: RETRIEVE_CONF",
                                "version: 1.2",
                                "msgSize: 77",
                                "readReport: 0",
                                "reportAllowed: 1",
                                "responseStatus: RR_PERM_FAIL",
                                "responseText: text",
                                "senderVisibility: 0",
                                "msgStatus: UNRECOGNISED",
                                "subject: subject",
                                "to: ",
                                "\t33 ",
                                "transactionId: tid"})
                 + attributes());
}

void TestPrint::printsTheBody()
{
    WMMSMsg message;
    message.clear();
    message.setMultiParts(partOf("image/gif", "abc", "<i>"));
    LogCapture log;
    message.printMsg();
    QCOMPARE(log.lines(),
             kHead
                 + QStringList({kBodyHead, "------------------------------------",
                                "contentType:  image/gif ", "contentLocation:  <i>",
                                "contentID:  <i>", "dataLen:  3"})
                 + attributes());
}

void TestPrint::printsTheAttributes()
{
    WMMSMsg message;
    message.clear();
    message.setMMSType(6);
    message.setUPIType(200);
    message.setAudioExistence(true);
    LogCapture log;
    message.printMsg();
    QCOMPARE(log.lines(), kHead + attributes(6, 200, 1, 0, 0));
    log.clear();
    message.setAudioExistence(false);
    message.setVideoExistence(true);
    message.printMsg();
    QCOMPARE(log.lines(), kHead + attributes(6, 200, 0, 1, 0));
    log.clear();
    message.setVideoExistence(false);
    message.setAttachmentExistence(true);
    message.printMsg();
    QCOMPARE(log.lines(), kHead + attributes(6, 200, 0, 0, 1));
}

// printing marks fields as present
void TestPrint::printingMarksFieldsAsPresent()
{
    LogCapture log;
    WMMSMsg message;
    message.clear();
    message.printMsg();
    QCOMPARE(present(message), QList<int>{9});
    const QList<WMFMEntry> one = {WMFMEntry(1, "1")};
    message.getBcc() = one;
    message.printMsg();
    QCOMPARE(present(message), (QList<int>{1, 9}));
    message.getCc() = one;
    message.printMsg();
    QCOMPARE(present(message), (QList<int>{1, 2, 9}));
    message.getTo() = one;
    message.printMsg();
    QCOMPARE(present(message), (QList<int>{1, 2, 9, 23}));

    WMMSMsg typed;
    typed.clear();
    typed.setAppID("a parameter is no content type");
    typed.printMsg();
    QCOMPARE(present(typed), QList<int>{9});
    QArray<char> pdu = arrayOf("84 9D");
    QCOMPARE(typed.construct(pdu, false), 100U);
    WMMSMsg copy(typed);
    QCOMPARE(present(copy), (QList<int>{4, 9}));
}

void TestPrint::aDiscardedPrintMarksToo()
{
    FILE *const former = std::exchange(appLogModuleStream, appLogDiscardStream());
    WMMSMsg message;
    message.clear();
    message.printMsg();
    appLogModuleStream = former;
    QCOMPARE(present(message), QList<int>{9});
}

void TestPrint::dumpsNothing()
{
    const QStringList nothing = {"the pData==NULL || sz==0 ,return"};
    LogCapture log;
    const unsigned char byte = 'x';
    MMS_UTIL_Tool::logOut(&byte, 0);
    QCOMPARE(log.lines(), nothing);
    log.clear();
    MMS_UTIL_Tool::logOut(nullptr, 5);
    QCOMPARE(log.lines(), nothing);
    log.clear();
    MMS_UTIL_Tool::logOut(nullptr, 0);
    QCOMPARE(log.lines(), nothing);
}

void TestPrint::dumpsLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    const QString full =
        "30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 " + kGap + "0123456789abcdef\n";
    QTest::newRow("one byte") << QByteArray("A")
                              << QStringList("41 " + QString(15 * 3, ' ') + kGap + "A\n");
    QTest::newRow("fifteen bytes") << QByteArray("0123456789abcde")
                                   << QStringList("30 31 32 33 34 35 36 37 38 39 61 62 63 64 65    "
                                                  + kGap + "0123456789abcde\n");
    QTest::newRow("sixteen bytes") << QByteArray("0123456789abcdef") << QStringList(full);
    QTest::newRow("seventeen bytes")
        << QByteArray("0123456789abcdefA")
        << QStringList({full, "41 " + QString(15 * 3, ' ') + kGap + "A\n"});
    QTest::newRow("thirty-two bytes")
        << QByteArray("0123456789abcdef0123456789abcdef") << QStringList({full, full});
    QTest::newRow("format characters are characters")
        << QByteArray("%s%n")
        << QStringList("25 73 25 6e " + QString(12 * 3, ' ') + kGap + "%s%n\n");
    QTest::newRow("lower case digits")
        << QByteArray("\xAB\xCD\xEF")
        << QStringList("ab cd ef " + QString(13 * 3, ' ') + kGap + "...\n");
}

void TestPrint::dumpsLines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, lines);
    QCOMPARE(dumpOf(bytes), framed(bytes.size(), lines));
}

void TestPrint::dumpsEveryByte()
{
    // 127 is shown as it is
    for (int byte = 0; byte < 256; ++byte) {
        const QStringList lines = dumpOf(QByteArray(1, char(byte)));
        const QChar shown = byte < 32 || byte > 127 ? QChar('.') : QChar(byte);
        QCOMPARE(lines.at(2),
                 QString("%1 ").arg(byte, 2, 16, QChar('0')) + QString(15 * 3, ' ') + kGap + shown
                     + '\n');
    }
}

void TestPrint::dumpsManyLines()
{
    QByteArray bytes(100000, '\0');
    std::iota(bytes.begin(), bytes.end(), char(0));
    const QStringList lines = dumpOf(bytes);
    QCOMPARE(lines.size(), 2 + 100000 / 16 + 1);
    QCOMPARE(lines.at(1), QString("The data length=100000\n"));
}

void TestPrint::dumpsAFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("A\0B", 3);
    file.close();
    LogCapture log;
    MMS_UTIL_Tool::logOutFrFile(file.fileName());
    QCOMPARE(log.lines(),
             QStringList(QString("print data from file:%1\n").arg(file.fileName()))
                 + framed(3, {"41 00 42 " + QString(13 * 3, ' ') + kGap + "A.B\n"}));
    QVERIFY(file.open());
    QVERIFY(file.resize(0));
    file.close();
    log.clear();
    MMS_UTIL_Tool::logOutFrFile(file.fileName());
    QCOMPARE(log.lines(),
             QStringList({QString("print data from file:%1\n").arg(file.fileName()),
                          "the pData==NULL || sz==0 ,return"}));
}

void TestPrint::dumpsNoFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"nothing", "directory", "pipe", "no name"}) {
        QTest::newRow(kind) << kind;
    }
}

void TestPrint::dumpsNoFile()
{
    QFETCH(QString, kind);
    QTemporaryDir dir;
    QString name = dir.filePath("f");
    if (kind == "directory") {
        name = dir.path();
    } else if (kind == "pipe") {
        QCOMPARE(mkfifo(name.toLocal8Bit().constData(), 0600), 0);
    } else if (kind == "no name") {
        name = QString();
    }
    LogCapture log;
    MMS_UTIL_Tool::logOutFrFile(name);
    QCOMPARE(log.lines(),
             QStringList({QString("print data from file:%1\n").arg(name), "File not exists!\n"}));
}

QTEST_GUILESS_MAIN(TestPrint)

#include "tst_print.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/intake/messages.h"

#include <QtCore/QDirIterator>

using namespace wmsg::intake;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestIntake : public QObject {
    Q_OBJECT

private slots:
    void ownMessages_data();
    void ownMessages();
    void corpus_data();
    void corpus();
    void hugeInput();
};

void TestIntake::ownMessages_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87}) {
        QTest::addRow("%02X", type) << type;
    }
}

// What this system writes is readable, and comes out as it went in.
void TestIntake::ownMessages()
{
    QFETCH(int, type);
    WMMSMsg message;
    message.setPDUType(static_cast<unsigned char>(type));
    message.setTransactionID("t1");
    message.setVersion(0x12);
    message.setMsgID("m1");
    message.setResponseStatus(128);
    message.setContentLocation("http://mmsc.example/1");
    message.setSubject("Grüße");
    message.setFrom(WMFMEntry(0, "ü@example.org"));
    message.setTo(WMFMEntry(1, "+43123"));
    message.setCc(WMFMEntry(0, "ann@example.org"));
    message.setDate(QDateTime::fromSecsSinceEpoch(1100000000));
    message.setExpiryTime(3600);
    message.setDeliveryReportNecessity(true);
    WMMSContentType related;
    related.setMimeType("application/vnd.wap.multipart.related");
    related.setParamStart("<s>");
    related.setParamType("application/smil");
    message.setContentType(related);
    message.setAppID("app");
    const bool hasBody = type == 0x80 || type == 0x84 || type == 0x87;
    for (const char *media : {"application/smil", "text/plain", "image/jpeg", "x-own/type"}) {
        WMMSMultipart part;
        WMMSContentType partType;
        partType.setMimeType(media);
        part.setContentType(partType);
        part.setContentLocation(QString("ü.%1").arg(media[0]));
        part.setContentID("<s>");
        part.setData(QArray<char>::fromBytes("\xC3\xBC", 2));
        if (hasBody) {
            message.getMultiParts().getSubMmsMultipartList().append(part);
        }
    }
    QArray<char> pdu;
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), quint32(MMS_ENCODE_OK));
    const QByteArray bytes(pdu.constData(), pdu.size());
    const Taken result = taken(bytes, Origin::File);
    QVERIFY2(result.problem.what.isEmpty(),
             qPrintable(linesOf({result.problem}).first() + toHex(bytes)));
    QCOMPARE(linesOf(result.steps), QStringList());
    QCOMPARE(result.verdict, Verdict::Readable);
    QVERIFY(result.isUnchanged);
    QCOMPARE(toHex(result.pdu.joined()), toHex(bytes));
}

/// The messages of real handsets and carriers, which are not part of the project: the folder is
/// named by WMSG_CORPUS, or lies beside the checkout.
void TestIntake::corpus_data()
{
    QTest::addColumn<QString>("path");
    const QString folder = qEnvironmentVariable(
        "WMSG_CORPUS", QStringLiteral(WMSG_TEST_DATA "/../../../shared/corpus"));
    QDirIterator files(folder, {"*.mms", "*.MMS"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        QTest::addRow("%s", qPrintable(QFileInfo(path).fileName())) << path;
    }
    if (!files.hasNext() && !QFileInfo::exists(folder)) {
        QSKIP("there are no real messages here");
    }
}

void TestIntake::corpus()
{
    QFETCH(QString, path);
    const QByteArray bytes = contentOf(path);
    const Taken result = taken(bytes, Origin::File);
    QCOMPARE(result.problem.what, QString());
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(linesOf(result.lost), QStringList());
    WMMSMsg message = decoded(result);
    QVERIFY(message.getPDUType() == 0x82 || !message.getMultiParts().subParts()->isEmpty());
    const Taken again = taken(result.pdu.joined(), Origin::File);
    QVERIFY(again.isUnchanged);
}

// A message of nothing but zeros, or of nothing but parts that say nothing, is read in time.
void TestIntake::hugeInput()
{
    const QByteArray zeros =
        retrievalOf(fromHex("8F FF FF FF 7F") + QByteArray(4 << 20, '\0') + 'a');
    const Taken result = taken(zeros);
    QCOMPARE(result.verdict, Verdict::Readable);
    QVERIFY(result.lost.size() <= 501 && result.steps.size() <= 501);
    decoded(result);
    const QByteArray fields = notificationWith(fromHex("99 80").repeated(1 << 20));
    QCOMPARE(toHex(taken(fields).pdu.joined()), toHex(notificationWith({})));
}

QTEST_GUILESS_MAIN(TestIntake)
#include "tst_intake.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/sim/mmsc/messages.h"

using namespace wmsg::sim;

namespace {

QByteArray phoneRequest()
{
    return sendRequest("85 04 01 02 03 04" + kInsertFrom + to("+431/TYPE=PLMN") + to("a@b.c")
                       + cc("+432/TYPE=PLMN") + bcc("+433/TYPE=PLMN") + "96 " + textHex("Hi")
                       + "8A 82 8F 82 94 81 86 80 90 81");
}

RetrieveConf confOf(const WMFMEntry &from)
{
    RetrieveConf conf;
    conf.transactionId = "R1";
    conf.messageId = "m1";
    conf.from = from;
    conf.received = QDateTime::fromSecsSinceEpoch(0x05060708, Qt::UTC);
    return conf;
}

} // namespace

class TestPdus : public QObject {
    Q_OBJECT

private slots:
    void sendConf();
    void notification();
    void notificationOfAHiddenSender();
    void deliveryReport();
    void retrieveConf();
    void retrieveConfOfAHiddenSender();
    void whatASenderLeavesOut();
    void codesThatAreNone();
    void datesThatNoPduCarries();
    void aHeaderThatDoesNotFit();
    void reading();
    void problems_data();
    void problems();
    void everyTruncation();
    void types_data();
    void types();
};

void TestPdus::sendConf()
{
    QCOMPARE(toHex(encoded(SendConf{"T1", 128, QString(), "m1"})),
             toHex(fromHex("8C 81 98 54 31 00 8D 92 92 80 8B 6D 31 00")));
    QCOMPARE(toHex(encoded(SendConf{"T1", 226, "no", QString()})),
             toHex(fromHex("8C 81 98 54 31 00 8D 92 92 E2 93 04 EA 6E 6F 00")));
}

void TestPdus::notification()
{
    NotificationInd notification;
    notification.transactionId = "N1";
    notification.from = WMFMEntry(1, "+1");
    notification.subject = "Hi";
    notification.messageClass = 130;
    notification.size = 300000;
    notification.expiresIn = 3600;
    notification.location = "http://m/a";
    QCOMPARE(toHex(encoded(notification)),
             toHex(fromHex("8C 82 98 4E 31 00 8D 92"
                           "89 0E 80 2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00" // from +1
                           "96 04 EA 48 69 00" // subject
                           "8A 82 8E 03 04 93 E0 88 04 81 02 0E 10"
                           "83 68 74 74 70 3A 2F 2F 6D 2F 61 00")));
}

void TestPdus::notificationOfAHiddenSender()
{
    NotificationInd notification;
    notification.transactionId = "N1";
    notification.location = "x";
    QCOMPARE(toHex(encoded(notification)),
             toHex(fromHex("8C 82 98 4E 31 00 8D 92 8A 80 8E 80 88 02 81 80 83 78 00")));
}

void TestPdus::deliveryReport()
{
    DeliveryInd report;
    report.messageId = "m1";
    report.to = WMFMEntry(0, "a@b.c");
    report.date = QDateTime::fromSecsSinceEpoch(0x01020304, Qt::UTC);
    report.status = 130;
    QCOMPARE(
        toHex(encoded(report)),
        toHex(fromHex("8C 86 8D 92 8B 6D 31 00 97 61 40 62 2E 63 00 85 04 01 02 03 04 95 82")));
}

void TestPdus::retrieveConf()
{
    const ReceivedPdu request = decoded(phoneRequest());
    const QByteArray head = encodedHead(confOf(WMFMEntry(1, "+9")), request);
    QCOMPARE(toHex(head),
             toHex(fromHex("8C 84 98 52 31 00 8D 92 8B 6D 31 00 85 04 01 02 03 04"
                           "89 0E 80 2B 39 2F 54 59 50 45 3D 50 4C 4D 4E 00" // from +9
                           "97 2B 34 33 31 2F 54 59 50 45 3D 50 4C 4D 4E 00" // to +431
                           "97 61 40 62 2E 63 00" // to a@b.c
                           "82 2B 34 33 32 2F 54 59 50 45 3D 50 4C 4D 4E 00" // cc +432; no bcc
                           "96 04 EA 48 69 00 8A 82 8F 82 86 80 90 81")));
    QCOMPARE(toHex(request.bytes().sliced(request.contentStart())), toHex(content()));

    const ReceivedPdu whole = decoded(head + content());
    QCOMPARE(whole.header().contentType.getParam("Application-ID"), QString("a.b"));
}

void TestPdus::retrieveConfOfAHiddenSender()
{
    const QByteArray head = encodedHead(confOf(WMFMEntry()), decoded(phoneRequest()));
    const ReceivedPdu read = decoded(head + content());
    QVERIFY(!read.has(MMS_FIELD_FROM));
    QCOMPARE(read.header().to.size(), 2);
    QCOMPARE(read.header().subject, QString("Hi"));
}

void TestPdus::whatASenderLeavesOut()
{
    const QByteArray head =
        encodedHead(confOf(WMFMEntry(1, "+9")), decoded(sendRequest(to("+1/TYPE=PLMN"))));
    QCOMPARE(toHex(head),
             toHex(fromHex("8C 84 98 52 31 00 8D 92 8B 6D 31 00 85 04 05 06 07 08"
                           "89 0E 80 2B 39 2F 54 59 50 45 3D 50 4C 4D 4E 00"
                           "97 2B 31 2F 54 59 50 45 3D 50 4C 4D 4E 00 8A 80")));
}

void TestPdus::codesThatAreNone()
{
    const QByteArray head = encodedHead(confOf(WMFMEntry(1, "+9")),
                                        decoded(sendRequest(to("+1/TYPE=PLMN") + "8A 05 8F 01")));
    const ReceivedPdu read = decoded(head);
    QCOMPARE(int(read.header().msgClass), 128);
    QVERIFY(!read.has(MMS_FIELD_PRIORITY));
}

void TestPdus::datesThatNoPduCarries()
{
    const QByteArray head = encodedHead(confOf(WMFMEntry(1, "+9")),
                                        decoded(sendRequest("85 04 FF FF FF FF" + to("+1"))));
    QCOMPARE(decoded(head).header().msgDate.toSecsSinceEpoch(), 0x05060708);
}

void TestPdus::aHeaderThatDoesNotFit()
{
    QByteArray fields;
    for (int n = 0; n < 1000; ++n) {
        fields += to("+4312345" + QByteArray::number(n) + "/TYPE=PLMN");
    }
    QCOMPARE(encodedHead(confOf(WMFMEntry(1, "+9")), decoded(sendRequest(fields))), QByteArray());
}

void TestPdus::reading()
{
    const ReceivedPdu read = decoded(phoneRequest());
    QVERIFY(read.has(MMS_FIELD_DATE));
    QVERIFY(!read.has(MMS_FIELD_EXPIRY));
    QCOMPARE(read.header().transactionId, QString("T1"));
    QCOMPARE(read.header().bcc.size(), 1);
    QVERIFY(!read.header().from.isValid());
    QCOMPARE(decoded(notifyResponse("N", 131)).contentStart(), -1);
}

void TestPdus::problems_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<QString>("problem");

    QTest::newRow("empty") << QByteArray() << "offset 0: this is no PDU";
    QTest::newRow("one byte") << fromHex("8C") << "offset 0: this is no PDU";
    QTest::newRow("other field first") << fromHex("8D 92") << "offset 0: this is no PDU";
    QTest::newRow("type is no code") << fromHex("8C 7F") << "offset 0: this is no PDU";
    QTest::newRow("field 25") << fromHex("8C 80 99 80") << "offset 2: field 25 is unknown";
    QTest::newRow("field 0") << fromHex("8C 80 80") << "offset 2: field 0 is unknown";
    QTest::newRow("long field id") << fromHex("8C 80 02 01 04") << "offset 2: field 260 is unknown";
    QTest::newRow("no value") << fromHex("8C 80 98")
                              << "offset 2: the value of field 24 cannot be read";
    QTest::newRow("from behind the end")
        << fromHex("8C 80 89 7F 80") << "offset 2: the value of field 9 cannot be read";
    QTest::newRow("no media type")
        << fromHex("8C 80 84") << "offset 2: the value of field 4 cannot be read";
}

void TestPdus::problems()
{
    QFETCH(QByteArray, pdu);
    ReceivedPdu read;
    QTEST(read.read(pdu), "problem");
}

void TestPdus::everyTruncation()
{
    const QByteArray whole = phoneRequest();
    const qsizetype start = decoded(whole).contentStart();
    for (qsizetype size = 0; size < whole.size(); ++size) {
        // A block of its own, so that reading behind the end is seen.
        const QByteArray cut(whole.constData(), size);
        ReceivedPdu read;
        const QString problem = read.read(cut);
        if (size <= start + 1) {
            QCOMPARE(read.contentStart(), -1);
        }
        QCOMPARE(problem.isEmpty() && size < 2, false);
    }
}

void TestPdus::types_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");

    QTest::newRow("send") << 0x80 << "send-req";
    QTest::newRow("confirmation") << 0x81 << "send-conf";
    QTest::newRow("notification") << 0x82 << "notification-ind";
    QTest::newRow("notify-response") << 0x83 << "notifyresp-ind";
    QTest::newRow("retrieval") << 0x84 << "retrieve-conf";
    QTest::newRow("acknowledge") << 0x85 << "acknowledge-ind";
    QTest::newRow("delivery") << 0x86 << "delivery-ind";
    QTest::newRow("stored form") << 0x87 << "unknown";
    QTest::newRow("highest") << 0xFF << "unknown";
}

void TestPdus::types()
{
    QFETCH(int, type);
    const QByteArray pdu = QByteArray("\x8C") + char(type);
    QCOMPARE(int(pduType(pdu)), type);
    QTEST(pduName(quint8(type)), "name");
}

QTEST_GUILESS_MAIN(TestPdus)
#include "tst_pdus.moc"

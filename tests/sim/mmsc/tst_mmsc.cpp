// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/sim/mmsc/network.h"

using namespace wmsg::sim;

class TestMmsc : public QObject {
    Q_OBJECT

private slots:
    void messageForTwo();
    void everyRecipientOnce();
    void senders_data();
    void senders();
    void hiddenSender();
    void sameAgain();
    void sameTransactionOfAnother();
    void refusals_data();
    void refusals();
    void tooManyRecipients();
    void headerTooLarge();
    void noRoom();
    void responseStatusOfThePlan();
    void notForAnMmsc_data();
    void notForAnMmsc();
    void strayAnswers();
    void wrongPaths();
};

void TestMmsc::messageForTwo()
{
    Network network;
    const QByteArray request =
        sendRequest(kInsertFrom + to("+431/TYPE=PLMN") + cc("bob@x.org") + "96 " + textHex("Hi"));
    const MMS_HDR_S conf = network.send(request, "+439");
    QCOMPARE(int(conf.msgType), 0x81);
    QCOMPARE(conf.transactionId, QString("T1"));
    QCOMPARE(int(conf.responseStatus), 128);
    QVERIFY(!conf.msgID.isEmpty());
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QTRY_COMPARE(network.bob.pushed.size(), 1);

    const MMS_HDR_S notified = decoded(network.ann.pushed[0]).header();
    QCOMPARE(int(notified.msgType), 0x82);
    QCOMPARE(notified.from.getEntryVal(), QString("+439"));
    QCOMPARE(notified.subject, QString("Hi"));
    QVERIFY(notified.expiry > 3500 && notified.expiry <= 3600);
    const QByteArray fetched = network.fetch(network.ann.pushed[0]);
    QCOMPARE(notified.msgSize, qint32(fetched.size()));
    const ReceivedPdu message = decoded(fetched);
    QCOMPARE(int(message.header().msgType), 0x84);
    QCOMPARE(message.header().msgID, conf.msgID);
    QCOMPARE(message.header().from.getEntryVal(), QString("+439"));
    QCOMPARE(message.header().to[0].getEntryVal(), QString("+431"));
    QCOMPARE(message.header().cc[0].getEntryVal(), QString("bob@x.org"));
    QCOMPARE(toHex(fetched.sliced(message.contentStart())), toHex(content()));

    // Each of the two has transactions and a place of its own.
    const QByteArray other = network.fetch(network.bob.pushed[0]);
    QVERIFY(transactionOf(other) != transactionOf(fetched));
    QVERIFY(transactionOf(network.bob.pushed[0]) != transactionOf(network.ann.pushed[0]));
    QVERIFY(decoded(network.bob.pushed[0]).header().contentLocation != notified.contentLocation);
}

void TestMmsc::everyRecipientOnce()
{
    Network network;
    network.send(sendRequest(to("+431/TYPE=PLMN") + to("+43 1") + cc("00431") + bcc("+4-31")));
    QTRY_VERIFY(!network.ann.pushed.isEmpty());
    QTest::qWait(20);
    QCOMPARE(network.ann.tries, 1);
}

void TestMmsc::senders_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("shown");

    const QByteArray insert = kInsertFrom;
    const QByteArray present = "89 04 80 " + textHex("+7");
    QTest::newRow("the network knows") << QByteArray("+439") << insert << 1 << "+439";
    QTest::newRow("the network knows better") << QByteArray("+439") << present << 1 << "+439";
    QTest::newRow("with its type") << QByteArray("+439/TYPE=PLMN") << insert << 1 << "+439";
    QTest::newRow("a mail address") << QByteArray("c@d.e") << insert << 0 << "c@d.e";
    QTest::newRow("the message says") << QByteArray() << present << 1 << "+7";
    QTest::newRow("nobody says") << QByteArray() << insert << 1 << "+431";
    QTest::newRow("no field") << QByteArray() << QByteArray() << 1 << "+431";
    QTest::newRow("blank header") << QByteArray("  ") << insert << 1 << "+431";
}

void TestMmsc::senders()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, from);
    Network network;
    network.send(sendRequest(from + to("bob@x.org")), header);
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    const WMFMEntry notified = decoded(network.bob.pushed[0]).header().from;
    QTEST(int(notified.getEntryType()), "type");
    QTEST(notified.getEntryVal(), "shown");
    const WMFMEntry fetched = decoded(network.fetch(network.bob.pushed[0])).header().from;
    QTEST(fetched.getEntryVal(), "shown");
}

void TestMmsc::hiddenSender()
{
    Network network;
    network.send(sendRequest(to("bob@x.org") + "94 80" + kWantReport), "+431");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QVERIFY(!decoded(network.bob.pushed[0]).has(MMS_FIELD_FROM));
    const QByteArray fetched = network.fetch(network.bob.pushed[0]);
    QVERIFY(!decoded(fetched).has(MMS_FIELD_FROM));
    // The network still knows who is told what became of it.
    network.post(acknowledge(transactionOf(fetched)));
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(int(decoded(network.ann.pushed[0]).header().msgType), 0x86);
}

void TestMmsc::sameAgain()
{
    Network network;
    const QByteArray request = sendRequest(to("bob@x.org"));
    const QByteArray first = network.post(request, "+431").head;
    const QByteArray second = network.post(request, "+43 1").head;
    QCOMPARE(toHex(second), toHex(first));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QTest::qWait(20);
    QCOMPARE(network.bob.tries, 1);
    // Also when it has been delivered.
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129));
    QCOMPARE(toHex(network.post(request, "+431").head), toHex(first));
    QCOMPARE(network.deliveries->bytes(), 0);
}

void TestMmsc::sameTransactionOfAnother()
{
    Network network;
    const QByteArray request = sendRequest(to("bob@x.org"));
    QVERIFY(network.send(request, "+431").msgID != network.send(request, "+432").msgID);
    QTRY_COMPARE(network.bob.pushed.size(), 2);
}

void TestMmsc::refusals_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");

    const QByteArray known = to("+431/TYPE=PLMN");
    QTest::newRow("no transaction id")
        << fromHex("8C 80 8D 92" + known) + content() << 226 << "there is no transaction id";
    QTest::newRow("no version") << fromHex("8C 80 98 54 31 00" + known) + content() << 226
                                << "there is no version";
    QTest::newRow("no content type")
        << fromHex("8C 80 98 54 31 00 8D 92" + known) << 226 << "there is no content type";
    QTest::newRow("no recipient") << sendRequest("") << 227 << "there is no recipient";
    QTest::newRow("empty recipient") << sendRequest(to("")) << 227 << "there is no recipient";
    QTest::newRow("unknown recipient")
        << sendRequest(to("+999/TYPE=PLMN")) << 227 << "no recipient is known here";
    QTest::newRow("unknown field")
        << fromHex("8C 80 98 54 31 00 8D 92 99 80") << 226 << "offset 8: field 25 is unknown";
}

void TestMmsc::refusals()
{
    QFETCH(QByteArray, pdu);
    Network network;
    const MMS_HDR_S conf = network.send(pdu);
    QCOMPARE(int(conf.msgType), 0x81);
    QTEST(int(conf.responseStatus), "status");
    QTEST(conf.responseText, "text");
    QVERIFY(conf.msgID.isEmpty());
    QCOMPARE(network.deliveries->bytes(), 0);
}

void TestMmsc::tooManyRecipients()
{
    QByteArray fields;
    for (int n = 0; n <= 1000; ++n) {
        fields += to(QByteArray::number(n + 1));
    }
    Network network;
    network.subscribers.setOthers(&network.bob);
    const MMS_HDR_S conf = network.send(sendRequest(fields));
    QCOMPARE(int(conf.responseStatus), 224);
    QCOMPARE(conf.responseText, QString("there are too many recipients"));
}

void TestMmsc::headerTooLarge()
{
    Network network;
    const MMS_HDR_S conf =
        network.send(sendRequest(to("bob@x.org") + "96 " + textHex(QByteArray(20000, 'x'))));
    QCOMPARE(int(conf.responseStatus), 224);
    QCOMPARE(conf.responseText, QString("the header is too large"));
    QVERIFY(conf.msgID.isEmpty());
    QCOMPARE(network.deliveries->bytes(), 0);
}

void TestMmsc::noRoom()
{
    const QByteArray request = sendRequest(to("bob@x.org"));
    Network network({}, Network::kNever, request.size() + 3000);
    QCOMPARE(int(network.send(request, "+1").responseStatus), 128);
    QVERIFY(network.deliveries->bytes() > request.size());
    const MMS_HDR_S full = network.send(request, "+2");
    QCOMPARE(int(full.responseStatus), 192);
    QCOMPARE(full.responseText, QString("too many messages wait"));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129));
    QCOMPARE(int(network.send(request, "+2").responseStatus), 128);
}

void TestMmsc::responseStatusOfThePlan()
{
    Network network;
    const QByteArray request = sendRequest(to("bob@x.org"));
    Faults faults;
    faults.responseStatus = 192;
    const MMS_HDR_S conf = decoded(network.post(request, {}, faults).head).header();
    QCOMPARE(int(conf.responseStatus), 192);
    QCOMPARE(conf.transactionId, QString("T1"));
    QVERIFY(conf.msgID.isEmpty());
    QCOMPARE(int(network.send(request).responseStatus), 128);
}

void TestMmsc::notForAnMmsc_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<int>("status");

    const QByteArray mms = "application/vnd.wap.mms-message";
    QTest::newRow("method") << QByteArray("PUT") << mms << sendRequest(to("+431")) << 405;
    QTest::newRow("type") << QByteArray("POST") << QByteArray("text/plain")
                          << sendRequest(to("+431")) << 415;
    QTest::newRow("no type") << QByteArray("POST") << QByteArray() << sendRequest(to("+431"))
                             << 415;
    QTest::newRow("type with a parameter")
        << QByteArray("POST") << QByteArray("Application/vnd.wap.mms-message; x=y")
        << sendRequest(to("+431")) << 200;
    QTest::newRow("empty") << QByteArray("POST") << mms << QByteArray() << 400;
    QTest::newRow("no PDU") << QByteArray("POST") << mms << QByteArray("hello") << 400;
    QTest::newRow("a notification") << QByteArray("POST") << mms << fromHex("8C 82") << 400;
    QTest::newRow("a stored message") << QByteArray("POST") << mms << fromHex("8C 87") << 400;
    QTest::newRow("a broken answer") << QByteArray("POST") << mms << fromHex("8C 83 98") << 400;
}

void TestMmsc::notForAnMmsc()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, pdu);
    Network network;
    HttpRequest request;
    request.method = method;
    request.path = "/";
    request.contentType = type;
    request.body = pdu;
    QTEST(network.mmsc->answer(request).status, "status");
}

void TestMmsc::strayAnswers()
{
    Network network;
    for (const QByteArray &pdu : {notifyResponse("N1", 129), acknowledge("R1")}) {
        const HttpAnswer answer = network.post(pdu);
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.size(), 0);
    }
}

void TestMmsc::wrongPaths()
{
    Network network;
    network.send(sendRequest(to("bob@x.org")));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    for (const char *path : {"", "/", "/x", "//", "/../", "/%00", "*"}) {
        QCOMPARE(network.get(path).status, 404);
    }
    QVERIFY(!network.fetch(network.bob.pushed[0]).isEmpty());
}

QTEST_GUILESS_MAIN(TestMmsc)
#include "tst_mmsc.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/sim/mmsc/network.h"

using namespace wmsg::sim;

namespace {

// Of a message from Ann to Bob who wants to know: the report that Ann gets.
MMS_HDR_S reportTo(const FakePath &phone)
{
    return phone.pushed.isEmpty() ? MMS_HDR_S() : decoded(phone.pushed[0]).header();
}

} // namespace

class TestDeliveries : public QObject {
    Q_OBJECT

private slots:
    void notifiedUntilAnswered();
    void triedUntilThePhoneIsThere();
    void immediateRetrieval();
    void deferredRetrieval();
    void rejected();
    void unrecognised();
    void fetchedTwice();
    void reportsThatNobodyWants_data();
    void reportsThatNobodyWants();
    void reportOfAnUnknownRecipient();
    void reportUntilThePhoneIsThere();
    void aSenderWithoutAPhone();
    void expiry_data();
    void expiry();
    void deliveryTime();
    void farDeliveryTime();
    void sharedByRecipients();
    void endsWithMessages();
};

void TestDeliveries::notifiedUntilAnswered()
{
    Network network({}, 1);
    network.send(sendRequest(to("bob@x.org")));
    QTRY_VERIFY(network.bob.pushed.size() >= 3);
    const QString transaction = transactionOf(network.bob.pushed[0]);
    for (const QByteArray &pushed : network.bob.pushed) {
        QCOMPARE(transactionOf(pushed), transaction);
    }
    network.post(notifyResponse(transaction, 131));
    const int tries = network.bob.tries;
    QTest::qWait(20);
    QCOMPARE(network.bob.tries, tries);
}

void TestDeliveries::triedUntilThePhoneIsThere()
{
    Network network;
    using Outcome = NotificationPath::Outcome;
    network.bob.next = {Outcome::NotReached, Outcome::NotReached};
    network.send(sendRequest(to("bob@x.org")));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QCOMPARE(network.bob.tries, 3);
}

void TestDeliveries::immediateRetrieval()
{
    Network network;
    const QString id = network.send(sendRequest(to("bob@x.org") + kWantReport), "+431").msgID;
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QVERIFY(!network.fetch(network.bob.pushed[0]).isEmpty());
    QVERIFY(network.ann.pushed.isEmpty());
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129, "91 80"));
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    const MMS_HDR_S report = reportTo(network.ann);
    QCOMPARE(int(report.msgType), 0x86);
    QCOMPARE(report.msgID, id);
    QCOMPARE(int(report.msgStatus), 129);
    QCOMPARE(report.to[0].getEntryVal(), QString("bob@x.org"));
    QVERIFY(qAbs(report.msgDate.secsTo(QDateTime::currentDateTimeUtc())) < 60);
    QCOMPARE(network.fetch(network.bob.pushed[0]), QByteArray());
    QCOMPARE(network.deliveries->bytes(), 0);
}

void TestDeliveries::deferredRetrieval()
{
    Network network;
    network.send(sendRequest(to("bob@x.org") + kWantReport), "+431");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 131));
    const QByteArray fetched = network.fetch(network.bob.pushed[0]);
    QVERIFY(!fetched.isEmpty());
    QTest::qWait(5);
    QVERIFY(network.ann.pushed.isEmpty());
    network.post(acknowledge(transactionOf(fetched)));
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(int(reportTo(network.ann).msgStatus), 129);
    QCOMPARE(network.deliveries->bytes(), 0);
    // What comes twice changes nothing.
    network.post(acknowledge(transactionOf(fetched)));
    QTest::qWait(5);
    QCOMPARE(network.ann.tries, 1);
}

void TestDeliveries::rejected()
{
    Network network;
    network.send(sendRequest(to("bob@x.org") + kWantReport), "+431");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 130));
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(int(reportTo(network.ann).msgStatus), 130);
    QCOMPARE(network.fetch(network.bob.pushed[0]), QByteArray());
}

void TestDeliveries::unrecognised()
{
    Network network({}, 1);
    network.send(sendRequest(to("bob@x.org") + kWantReport), "+431");
    QTRY_VERIFY(!network.bob.pushed.isEmpty());
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 132));
    const int tries = network.bob.tries;
    QTest::qWait(20);
    QCOMPARE(network.bob.tries, tries);
    QVERIFY(network.ann.pushed.isEmpty());
    QVERIFY(!network.fetch(network.bob.pushed[0]).isEmpty()); // it waits until it expires
}

void TestDeliveries::fetchedTwice()
{
    Network network;
    network.send(sendRequest(to("bob@x.org")));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    const QByteArray fetched = network.fetch(network.bob.pushed[0]);
    QCOMPARE(toHex(network.fetch(network.bob.pushed[0])), toHex(fetched));
}

void TestDeliveries::reportsThatNobodyWants_data()
{
    QTest::addColumn<QByteArray>("asked");
    QTest::addColumn<QByteArray>("allowed");
    QTest::addColumn<int>("reports");

    QTest::newRow("not asked") << QByteArray() << QByteArray() << 0;
    QTest::newRow("asked not") << QByteArray("86 81") << QByteArray() << 0;
    QTest::newRow("asked") << kWantReport << QByteArray() << 1;
    QTest::newRow("asked and allowed") << kWantReport << QByteArray("91 80") << 1;
    QTest::newRow("asked and not allowed") << kWantReport << QByteArray("91 81") << 0;
}

void TestDeliveries::reportsThatNobodyWants()
{
    QFETCH(QByteArray, asked);
    QFETCH(QByteArray, allowed);
    QFETCH(int, reports);
    Network network;
    network.send(sendRequest(to("bob@x.org") + asked), "+431");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129, allowed));
    QTest::qWait(20);
    QCOMPARE(network.ann.pushed.size(), reports);
}

void TestDeliveries::reportOfAnUnknownRecipient()
{
    Network network;
    const MMS_HDR_S conf =
        network.send(sendRequest(to("+999/TYPE=PLMN") + to("bob@x.org") + kWantReport), "+431");
    QCOMPARE(int(conf.responseStatus), 128);
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(int(reportTo(network.ann).msgStatus), 135);
    QCOMPARE(reportTo(network.ann).to[0].getEntryVal(), QString("+999"));
    QTRY_COMPARE(network.bob.pushed.size(), 1);
}

void TestDeliveries::reportUntilThePhoneIsThere()
{
    Network network;
    using Outcome = NotificationPath::Outcome;
    network.ann.next = {Outcome::NotReached, Outcome::NotReached};
    network.send(sendRequest(to("bob@x.org") + kWantReport), "+431");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129));
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(network.ann.tries, 3);
    QTest::qWait(20);
    QCOMPARE(network.ann.tries, 3);
}

void TestDeliveries::aSenderWithoutAPhone()
{
    Network network;
    network.send(sendRequest(to("bob@x.org") + kWantReport), "+7");
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QCOMPARE(network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129)).status, 200);
    QVERIFY(network.ann.pushed.isEmpty());
}

void TestDeliveries::expiry_data()
{
    QTest::addColumn<QByteArray>("field");

    QTest::newRow("at once") << QByteArray("88 02 81 80");
    QTest::newRow("a second") << QByteArray("88 02 81 81");
    QTest::newRow("a date in the past") << QByteArray("88 06 80 04 00 00 00 10");
}

void TestDeliveries::expiry()
{
    QFETCH(QByteArray, field);
    Network network;
    network.bob.next =
        QList<NotificationPath::Outcome>(1000, NotificationPath::Outcome::NotReached);
    network.send(sendRequest(to("bob@x.org") + kWantReport + field), "+431");
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    QCOMPARE(int(reportTo(network.ann).msgStatus), 128);
    QCOMPARE(network.deliveries->bytes(), 0);
    const int tries = network.bob.tries;
    QTest::qWait(20);
    QCOMPARE(network.bob.tries, tries);
}

void TestDeliveries::deliveryTime()
{
    Network network;
    QElapsedTimer clock;
    clock.start();
    network.send(sendRequest(to("bob@x.org") + "87 03 81 01 02"), "+431"); // two seconds from now
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QVERIFY(clock.elapsed() >= 900); // a time on the wire has whole seconds
}

void TestDeliveries::farDeliveryTime()
{
    Network network;
    network.send(sendRequest(to("bob@x.org") + "87 05 81 03 1E 84 80")); // 23 days from now
    QTest::qWait(20);
    QCOMPARE(network.bob.tries, 0);
    QVERIFY(network.deliveries->bytes() > 0);
}

void TestDeliveries::sharedByRecipients()
{
    Network network;
    const QByteArray request = sendRequest(to("bob@x.org") + to("+431")) + QByteArray(50000, 'x');
    network.send(request);
    const qint64 both = network.deliveries->bytes();
    QVERIFY(both > request.size() && both < 2 * request.size());
    QTRY_COMPARE(network.bob.pushed.size(), 1);
    QTRY_COMPARE(network.ann.pushed.size(), 1);
    network.post(notifyResponse(transactionOf(network.bob.pushed[0]), 129));
    QVERIFY(network.deliveries->bytes() > request.size());
    QVERIFY(network.deliveries->bytes() < both);
    QVERIFY(!network.fetch(network.ann.pushed[0]).isEmpty());
    network.post(notifyResponse(transactionOf(network.ann.pushed[0]), 129));
    QCOMPARE(network.deliveries->bytes(), 0);
}

void TestDeliveries::endsWithMessages()
{
    Network network({}, 1);
    for (int n = 0; n < 20; ++n) {
        network.send(sendRequest(to("bob@x.org"), QByteArray::number(n)));
    }
    QTRY_VERIFY(network.bob.pushed.size() > 20); // pushes are under way when it goes
}

QTEST_GUILESS_MAIN(TestDeliveries)
#include "tst_deliveries.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/notification.h"

#include "platform/applog/applog.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

using wmsg::proxy::kLargestPush;
using wmsg::proxy::Notification;
using wmsg::proxy::readNotification;
using Kind = Notification::Kind;

namespace {

const QDateTime kNow = QDateTime::currentDateTimeUtc();

// The fields of a notification, and of a delivery report.
const QByteArray kNotice = "8C 82 98 54 31 00 8D 90";
const QByteArray kLocation = "83 68 74 74 70 3A 2F 2F 6D 2F 61 00"; // http://m/a
const QByteArray kReport = "8C 86 8D 90";

Notification readHex(const QByteArray &hex)
{
    return readNotification(fromHex(hex), kNow);
}

} // namespace

class TestNotification : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void messageThatWaits();
    void whatMayBeMissing();
    void expiries_data();
    void expiries();
    void sizes_data();
    void sizes();
    void deliveryReport();
    void deliveryReportWithoutDetails();
    void readReport();
    void pushEnvelope();
    void unknown_data();
    void unknown();
    void everyPrefix();
    void sizeLimit();
};

void TestNotification::messageThatWaits()
{
    const Notification read = readHex(kNotice
                                      + "89 05 80 2B 31 32 00  96 04 EA 48 69 00  8A 81"
                                        "8E 03 04 93 E0  88 04 81 02 0E 10"
                                      + kLocation);
    QCOMPARE(read.kind, Kind::MessageWaits);
    QCOMPARE(read.reason, QString());
    QCOMPARE(read.transactionId, "T1");
    QCOMPARE(read.location, "http://m/a");
    QCOMPARE(read.size, 300000U);
    QCOMPARE(read.expires, kNow.addSecs(3600));
    QCOMPARE(read.expires.timeSpec(), Qt::UTC);
    QCOMPARE(int(read.messageClass), 129);
}

void TestNotification::whatMayBeMissing()
{
    const Notification read = readHex(kNotice + kLocation);
    QCOMPARE(read.kind, Kind::MessageWaits);
    QCOMPARE(read.size, 0U);
    QVERIFY(!read.expires.isValid());
    QCOMPARE(int(read.messageClass), 128);
}

void TestNotification::expiries_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<qint64>("seconds");
    const auto seconds = quint32(kNow.toSecsSinceEpoch() + 1000);
    const QByteArray date = QByteArray::number(seconds, 16).rightJustified(8, '0');
    QTest::newRow("from now") << QByteArray("88 05 81 03 01 51 80") << qint64(86400);
    QTest::newRow("now") << QByteArray("88 03 81 01 00") << qint64(0);
    QTest::newRow("a date") << QByteArray("88 06 80 04 " + date) << qint64(1000);
    QTest::newRow("long ago") << QByteArray("88 03 80 01 01") << 1 - kNow.toSecsSinceEpoch();
}

void TestNotification::expiries()
{
    QFETCH(QByteArray, field);
    QFETCH(qint64, seconds);
    const Notification read = readHex(kNotice + field + kLocation);
    QCOMPARE(read.kind, Kind::MessageWaits);
    // The codec counts a date from its own clock.
    const qint64 difference = kNow.secsTo(read.expires) - seconds;
    QVERIFY2(difference <= 0 && difference > -120, QByteArray::number(difference).constData());
}

void TestNotification::sizes_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<quint32>("size");
    QTest::newRow("small") << QByteArray("8E 8A") << 10U;
    QTest::newRow("large") << QByteArray("8E 04 7F FF FF FF") << 0x7FFFFFFFU;
    QTest::newRow("absurd") << QByteArray("8E 04 FF FF FF FF") << 0U;
}

void TestNotification::sizes()
{
    QFETCH(QByteArray, field);
    const Notification read = readHex(kNotice + field + kLocation);
    QCOMPARE(read.kind, Kind::MessageWaits);
    QTEST(read.size, "size");
}

void TestNotification::deliveryReport()
{
    const Notification read =
        readHex(kReport
                + "8B 6D 31 00  97 2B 31 32 2F 54 59 50 45 3D 50 4C 4D 4E 00  85 04 65 43 21 00"
                  "95 81");
    QCOMPARE(read.kind, Kind::DeliveryReport);
    QCOMPARE(read.messageId, "m1");
    QCOMPARE(read.recipient, "+12");
    QCOMPARE(read.date, QDateTime::fromSecsSinceEpoch(0x65432100, Qt::UTC));
    QCOMPARE(int(read.status), 129);
}

void TestNotification::deliveryReportWithoutDetails()
{
    const Notification read = readHex(kReport + "8B 6D 31 00");
    QCOMPARE(read.kind, Kind::DeliveryReport);
    QCOMPARE(read.recipient, QString());
    QCOMPARE(read.date, kNow);
    QCOMPARE(int(read.status), 0);
}

void TestNotification::readReport()
{
    const QByteArray report("8D 91 8B 6D 31 00 97 2B 31 00 89 01 81 85 04 65 43 21 00 9B 80");
    QCOMPARE(readHex("8C 88" + report).kind, Kind::ReadReport);
    // From the network it is none of our stored messages.
    QCOMPARE(readHex("8C 87" + report).kind, Kind::ReadReport);
}

void TestNotification::pushEnvelope()
{
    // Transaction 1, push, 11 bytes of headers: the content type and the application.
    const Notification read = readHex("01 06 03 BE AF 84 " + kNotice + kLocation);
    QCOMPARE(read.kind, Kind::MessageWaits);
    QCOMPARE(read.transactionId, "T1");
    QCOMPARE(read.location, "http://m/a");
}

void TestNotification::unknown_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("text") << QByteArray("hello");
    QTest::newRow("no transaction id") << fromHex("8C 82 8D 90" + kLocation);
    QTest::newRow("empty transaction id") << fromHex("8C 82 98 00 8D 90" + kLocation);
    QTest::newRow("no location") << fromHex(kNotice);
    QTest::newRow("empty location") << fromHex(kNotice + "83 00");
    QTest::newRow("a report without message") << fromHex(kReport + "95 81");
    QTest::newRow("a send confirmation") << fromHex("8C 81 98 54 31 00 8D 90 92 80");
    QTest::newRow("a message") << fromHex(
        "8C 84 98 54 31 00 8D 90 89 01 81 84 A3 01 04 02 03 83 81 EA 48 69");
    QTest::newRow("an error") << fromHex("8C 84 98 54 31 00 8D 90 99 E2");
    QTest::newRow("a send request")
        << fromHex("8C 80 98 54 31 00 8D 90 89 01 81 97 2B 31 00 84 A3 00");
}

void TestNotification::unknown()
{
    QFETCH(QByteArray, pdu);
    const Notification read = readNotification(pdu, kNow);
    QCOMPARE(read.kind, Kind::Unknown);
    QVERIFY(!read.reason.isEmpty());
    QCOMPARE(read.transactionId, QString());
    QCOMPARE(read.location, QString());
}

/// Whatever is called a notification can be acted on.
void TestNotification::everyPrefix()
{
    const QByteArray pdu = fromHex(kNotice + "8A 80 8E 03 04 93 E0 88 04 81 02 0E 10" + kLocation);
    for (qsizetype size = 0; size < pdu.size(); ++size) {
        const Notification read = readNotification(pdu.first(size), kNow);
        QVERIFY(read.kind == Kind::Unknown
                || (read.transactionId == "T1" && !read.location.isEmpty()));
    }
}

void TestNotification::sizeLimit()
{
    const QByteArray pdu = fromHex(kNotice + kLocation);
    const Notification fits =
        readNotification(pdu + QByteArray(kLargestPush - pdu.size(), '\0'), kNow);
    QVERIFY(!fits.reason.contains("65536"));
    const Notification read =
        readNotification(pdu + QByteArray(kLargestPush + 1 - pdu.size(), '\0'), kNow);
    QCOMPARE(read.kind, Kind::Unknown);
    QCOMPARE(read.reason, "the push has more than 65536 bytes");
}

QTEST_GUILESS_MAIN(TestNotification)
#include "tst_notification.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "sms/wsmsmsg.h"
#include "sms/wsmsmsg_p.h"
#include "tests/support/hex.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

#include <climits>

namespace {

/// A message whose record can be reached.
class OpenMessage : public WSMSMsg {
public:
    using WSMSMsg::record;
};

QArray<char> bytesOf(const QByteArray &bytes)
{
    return QArray<char>(QByteArrayView(bytes.constData(), bytes.size()));
}

QString dataOf(WSMSMsg &message)
{
    return toHex(message.getData().view());
}

} // namespace

class TestWSMSMsg : public QObject {
    Q_OBJECT

private slots:
    void init() { appLogModuleStream = appLogDiscardStream(); }

    void fresh();
    void sender_data();
    void sender();
    void recipient_data();
    void recipient();
    void serviceCenter();
    void timeStamp();
    void ports();
    void bodyTypes();

    void text_data();
    void text();
    void textLimits_data();
    void textLimits();
    void dataLimits_data();
    void dataLimits();
    void bytesAreShared();
    void textTakesBytesOfItsOwn();
    void bodyOfAnotherType();
    void eightBitText();
    void textOutOfAnyBytes_data();
    void textOutOfAnyBytes();
    void stringToBuf_data();
    void stringToBuf();

    void copies();
};

void TestWSMSMsg::fresh()
{
    OpenMessage message;
    QCOMPARE(int(message.getMsgType()), 1);
    QCOMPARE(message.record().bodyType, 0);
    QCOMPARE(message.getEncodeType(), 0);
    QCOMPARE(int(message.getBodyType()), 0);
    QVERIFY(!message.getPortNumberValid());
    QVERIFY(message.getServiceCenter().isEmpty());
    QVERIFY(message.getTimeStamp().isNull());
    QVERIFY(message.getData().isNull());
    for (WMFMEntry entry : {message.getFrom(), message.getTo()}) {
        QCOMPARE(int(entry.getEntryType()), 1);
        QCOMPARE(entry.getEntryVal(), QString());
        QCOMPARE(entry.getContactName(), QString());
        QVERIFY(!entry.isValid());
    }
    QString text = "x";
    QVERIFY(message.getBody(text));
    QCOMPARE(text, QString(""));
}

void TestWSMSMsg::sender_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::newRow("a number") << 1 << "+43664";
    QTest::newRow("a mail address") << 0 << "a@b";
    QTest::newRow("without a type") << 127 << "12";
    QTest::newRow("empty") << 1 << "";
    QTest::newRow("long") << 1 << QString(500, '1');
}

void TestWSMSMsg::sender()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    WSMSMsg message;
    QVERIFY(message.setFrom(WMFMEntry(quint8(type), value, "Ann")));
    QCOMPARE(int(message.getFrom().getEntryType()), 1);
    QCOMPARE(message.getFrom().getEntryVal(), value);
    QCOMPARE(message.getFrom().getContactName(), QString());
}

void TestWSMSMsg::recipient_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("a number") << 1 << "+43664" << true;
    QTest::newRow("one character") << 1 << "1" << true;
    QTest::newRow("a mail address") << 0 << "12" << false;
    QTest::newRow("without a type") << 127 << "12" << false;
    QTest::newRow("empty") << 1 << "" << false;
    QTest::newRow("41 digits") << 1 << QString(41, '1') << true;
    QTest::newRow("42 digits") << 1 << QString(42, '1') << false;
    QTest::newRow("an at sign in second place") << 1 << "1@2" << false;
    QTest::newRow("an at sign at the end") << 1 << "12@" << false;
    QTest::newRow("an at sign as the very first character is accepted") << 1 << "@12" << true;
    QTest::newRow("an at sign alone") << 1 << "@" << true;
    QTest::newRow("two at signs") << 1 << "@@" << false;
    QTest::newRow("no number at all") << 1 << "Ann, at home" << true;
}

void TestWSMSMsg::recipient()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    QFETCH(bool, isTaken);
    WSMSMsg message;
    QVERIFY(message.setTo(WMFMEntry(1, "before")));
    WMFMMsg &base = message;
    QCOMPARE(base.setTo(WMFMEntry(quint8(type), value, "Ann")), isTaken);
    QCOMPARE(int(message.getTo().getEntryType()), 1);
    QCOMPARE(message.getTo().getEntryVal(), isTaken ? value : QString("before"));
    QCOMPARE(message.getTo().getContactName(), QString());
}

void TestWSMSMsg::serviceCenter()
{
    WSMSMsg message;
    QVERIFY(message.setServiceCenter("+43"));
    QCOMPARE(message.getServiceCenter(), QString("+43"));
    QVERIFY(!message.setServiceCenter(""));
    QVERIFY(!message.setServiceCenter(QString()));
    QCOMPARE(message.getServiceCenter(), QString("+43"));
    QVERIFY(message.setServiceCenter(QString(1000, '1')));
}

void TestWSMSMsg::timeStamp()
{
    WSMSMsg message;
    const QDateTime time(QDate(2004, 11, 9), QTime(11, 33, 20));
    message.setTimeStamp(time);
    QCOMPARE(message.getTimeStamp(), time);
    message.setTimeStamp(QDateTime());
    QVERIFY(message.getTimeStamp().isNull());
}

void TestWSMSMsg::ports()
{
    WSMSMsg message;
    unsigned short p1 = 7;
    unsigned short p2 = 7;
    QVERIFY(!message.getPortNumber(nullptr, &p2));
    QVERIFY(!message.getPortNumber(&p1, nullptr));
    QVERIFY(!message.getPortNumber(nullptr, nullptr));
    QCOMPARE(int(p1), 7);
    QCOMPARE(int(p2), 7);
    // The ports are written whether or not a pair was ever set.
    QVERIFY(message.getPortNumber(&p1, &p2));
    QCOMPARE(int(p1), 0);
    QCOMPARE(int(p2), 0);
    QVERIFY(!message.getPortNumberValid());

    message.setPortNumber(2948, 65535);
    QVERIFY(message.getPortNumberValid());
    QVERIFY(message.getPortNumber(&p1, &p2));
    QCOMPARE(int(p1), 2948);
    QCOMPARE(int(p2), 65535);
    message.setPortNumber(0, 0);
    QVERIFY(message.getPortNumberValid());
}

void TestWSMSMsg::bodyTypes()
{
    OpenMessage message;
    for (int type : {1, 0, 1, 2, 1, -1, 1, INT_MAX}) {
        message.setBodyType(SMS_ENCODE_TYPE_E(type));
        QCOMPARE(message.record().bodyType, type == 1 ? 2 : 0);
        QCOMPARE(int(message.getBodyType()), type == 1 ? 1 : 0);
        QCOMPARE(message.getEncodeType(), type == 1 ? 1 : 0);
    }
}

void TestWSMSMsg::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("data");
    QTest::newRow("two letters") << "Hi"
                                 << "48 00 69 00 00 00";
    QTest::newRow("empty") << ""
                           << "00 00";
    QTest::newRow("null") << QString() << "00 00";
    QTest::newRow("beyond Latin-1") << u"Жé"_qs << "16 04 E9 00 00 00";
    QTest::newRow("a surrogate pair") << u"\U0001F600"_qs << "3D D8 00 DE 00 00";
    QTest::newRow("a NUL inside") << QString("a") + QChar() + "b"
                                  << "61 00 00 00 62 00 00 00";
}

void TestWSMSMsg::text()
{
    QFETCH(QString, text);
    QFETCH(QString, data);
    WSMSMsg message;
    QVERIFY(message.setBody(text));
    QCOMPARE(dataOf(message), data);
    LogCapture log;
    QString read = "x";
    QVERIFY(message.getBody(read));
    QCOMPARE(read, text.isNull() ? QString("") : text);
    QCOMPARE(log.lines(), QStringList{"text"});
    QArray<char> bytes = bytesOf("x");
    QVERIFY(!message.getBody(bytes));
    QCOMPARE(bytes, bytesOf("x"));
}

void TestWSMSMsg::textLimits_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("3199") << 3199 << true;
    QTest::newRow("a text has 3200 characters at most and data 3201 bytes") << 3200 << true;
    QTest::newRow("3201") << 3201 << false;
    QTest::newRow("many") << 100000 << false;
}

void TestWSMSMsg::textLimits()
{
    QFETCH(int, length);
    QFETCH(bool, isTaken);
    WSMSMsg message;
    QVERIFY(message.setBody(bytesOf("before")));
    LogCapture log;
    QCOMPARE(message.setBody(QString(length, 'x')), isTaken);
    QCOMPARE(message.getData().size(), isTaken ? length * 2 + 2 : 6);
    QCOMPARE(int(message.getBodyType()), isTaken ? 0 : 1);
    QCOMPARE(log.lines(),
             isTaken ? QStringList()
                     : QStringList{QString("the string length overflow, length=%1").arg(length)});
}

void TestWSMSMsg::dataLimits_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("none") << 0 << true;
    QTest::newRow("3200") << 3200 << true;
    QTest::newRow("3201") << 3201 << true;
    QTest::newRow("3202") << 3202 << false;
    QTest::newRow("many") << 100000 << false;
}

void TestWSMSMsg::dataLimits()
{
    QFETCH(int, size);
    QFETCH(bool, isTaken);
    WSMSMsg message;
    QVERIFY(message.setBody(QString("before")));
    LogCapture log;
    const QArray<char> bytes = bytesOf(QByteArray(size, 'x'));
    QCOMPARE(message.setBody(bytes), isTaken);
    QArray<char> read;
    QCOMPARE(message.getBody(read), isTaken);
    QCOMPARE(read, isTaken ? bytes : QArray<char>());
    QCOMPARE(int(message.getBodyType()), isTaken ? 1 : 0);
    QCOMPARE(log.lines(),
             isTaken ? QStringList()
                     : QStringList{QString("the data size overflow, size=%1").arg(size)});
}

void TestWSMSMsg::bytesAreShared()
{
    WSMSMsg message;
    QArray<char> given = bytesOf("abc");
    QVERIFY(message.setBody(given));
    given[0] = 'x';
    QCOMPARE(dataOf(message), QString("78 62 63"));
    QArray<char> read;
    QVERIFY(message.getBody(read));
    QVERIFY(read.constData() == given.constData());
}

void TestWSMSMsg::textTakesBytesOfItsOwn()
{
    WSMSMsg message;
    QArray<char> given = bytesOf("abc");
    QVERIFY(message.setBody(given));
    QVERIFY(message.setBody(QString("Hi")));
    QCOMPARE(given, bytesOf("abc"));
}

void TestWSMSMsg::bodyOfAnotherType()
{
    // The bytes stay as they are.
    WSMSMsg message;
    QVERIFY(message.setBody(bytesOf(fromHex("4800 6900 0000"))));
    QString text = "x";
    QVERIFY(!message.getBody(text));
    QCOMPARE(text, QString("x"));
    message.setBodyType(SMS_ENCODE_TYPE_TEXT);
    QVERIFY(message.getBody(text));
    QCOMPARE(text, QString("Hi"));
    QCOMPARE(dataOf(message), QString("48 00 69 00 00 00"));
}

void TestWSMSMsg::eightBitText()
{
    OpenMessage message;
    message.record().bodyType = WSMSMsgPrivate::kText8;
    // A body of 8-bit text is text here and not text for getEncodeType().
    QCOMPARE(int(message.getBodyType()), 0);
    QCOMPARE(message.getEncodeType(), 1);
    LogCapture log;
    QString text = "x";
    QVERIFY(message.getBody(text));
    QCOMPARE(text, QString(""));
    message.getData() = bytesOf(fromHex("48 E9 00"));
    QVERIFY(message.getBody(text));
    QCOMPARE(text, u"Hé"_qs);
    QCOMPARE(log.lines(), QStringList({"bin", "bin"}));
    QArray<char> bytes;
    QVERIFY(!message.getBody(bytes));
}

void TestWSMSMsg::textOutOfAnyBytes_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("length");
    for (int size = 0; size < 8; ++size) {
        QTest::addRow("%d bytes", size) << size << qMax(size / 2 - 1, 0);
    }
}

void TestWSMSMsg::textOutOfAnyBytes()
{
    QFETCH(int, size);
    QFETCH(int, length);
    WSMSMsg message;
    message.getData() = bytesOf(QByteArray(size, 'x'));
    QString text;
    QVERIFY(message.getBody(text));
    QCOMPARE(text, QString(length, QChar(0x7878)));
}

void TestWSMSMsg::stringToBuf_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("buffer");
    QTest::newRow("negative") << -1 << 0 << "FF FF FF FF FF FF FF FF";
    QTest::newRow("no room") << 0 << 0 << "FF FF FF FF FF FF FF FF";
    QTest::newRow("room for the zero") << 1 << 0 << "00 00 FF FF FF FF FF FF";
    QTest::newRow("a character less") << 2 << 1 << "48 00 00 00 FF FF FF FF";
    QTest::newRow("just the room") << 3 << 2 << "48 00 69 00 00 00 FF FF";
    QTest::newRow("more room") << 4 << 2 << "48 00 69 00 00 00 FF FF";
    QTest::newRow("most") << INT_MAX << 2 << "48 00 69 00 00 00 FF FF";
}

void TestWSMSMsg::stringToBuf()
{
    QFETCH(int, size);
    QFETCH(int, count);
    QFETCH(QString, buffer);
    WSMSMsg message;
    unsigned short units[4] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
    QCOMPARE(message.stringToBuf("Hi", units, size), count);
    QCOMPARE(QString(toHex({reinterpret_cast<const char *>(units), sizeof units})), buffer);
    QCOMPARE(message.stringToBuf("Hi", nullptr, size), 0);
}

void TestWSMSMsg::copies()
{
    OpenMessage original;
    original.setFrom(WMFMEntry(1, "1"));
    original.setTo(WMFMEntry(1, "2"));
    original.setServiceCenter("3");
    original.setPortNumber(4, 5);
    original.setTimeStamp(QDateTime(QDate(2004, 11, 9), QTime(11, 33, 20)));
    original.setBody(bytesOf("abc"));

    WSMSMsg copy(original);
    WSMSMsg assigned;
    assigned.setBody(QString("before"));
    assigned = original;
    original.getData()[0] = 'x';
    original.setTo(WMFMEntry(1, "other"));
    original.setPortNumber(9, 9);
    for (WSMSMsg *message : {&copy, &assigned}) {
        QCOMPARE(message->getFrom().getEntryVal(), QString("1"));
        QCOMPARE(message->getTo().getEntryVal(), QString("2"));
        QCOMPARE(message->getServiceCenter(), QString("3"));
        unsigned short p1 = 0;
        unsigned short p2 = 0;
        QVERIFY(message->getPortNumberValid() && message->getPortNumber(&p1, &p2));
        QCOMPARE(int(p1), 4);
        QCOMPARE(int(p2), 5);
        QCOMPARE(message->getTimeStamp(), QDateTime(QDate(2004, 11, 9), QTime(11, 33, 20)));
        QCOMPARE(int(message->getBodyType()), 1);
        QCOMPARE(dataOf(*message), QString("61 62 63"));
    }
    WSMSMsg &self = copy;
    copy = self;
    QCOMPARE(dataOf(copy), QString("61 62 63"));
}

QTEST_GUILESS_MAIN(TestWSMSMsg)
#include "tst_wsmsmsg.moc"

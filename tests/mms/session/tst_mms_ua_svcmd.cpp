// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_svcmd.h"
#include "tests/support/hex.h"
#include "tests/support/socket_pair.h"

#include <QtTest/QtTest>

#include <climits>
#include <memory>

/// The bytes of a text in the variable part.
static QByteArray units(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

static const QDateTime kDate(QDate(1999, 5, 20), QTime(3, 40, 13));
static const QString kDateText("Thu May 20 03:40:13 1999");

class TestEvents : public QObject {
    Q_OBJECT

private slots:
    void factory_data();
    void factory();

    void requestCompleted();
    void registrationCompleted();
    void retrievalCompleted();
    void progress();
    void statusReturned();
    void notification();
    void deliveryReport();

    void lengthsAreCutToWhatArrived_data();
    void lengthsAreCutToWhatArrived();
    void reportLengthsAreCutToWhatArrived_data();
    void reportLengthsAreCutToWhatArrived();

    void datesOfAReport_data();
    void datesOfAReport();
    void aDateOfAnotherZone();
    void aDateThatIsNone();
    void readReportPlaces_data();
    void readReportPlaces();
    void aReadReportThatReadsBack();

private:
    /// Writes `event`, checks its bytes and feeds what follows the type to `pair`.
    void send(MMS_UA_SvCmd &event, const QByteArray &wire, SocketPair &pair);
};

void TestEvents::send(MMS_UA_SvCmd &event, const QByteArray &wire, SocketPair &pair)
{
    event.write(pair.socket());
    QCOMPARE(toHex(pair.taken()), toHex(wire));
    pair.feed(wire.mid(4));
}

void TestEvents::factory_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("dataLen"); // 0: no such event
    const QMap<int, int> known{{1, 16}, {2, 12}, {3, 4}, {4, 12}, {5, 8}, {6, 8}, {7, 20}};
    for (int type : {INT_MIN, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 255, 256, 257, 65537, INT_MAX}) {
        QTest::addRow("%d", type) << type << known.value(type);
    }
}

void TestEvents::factory()
{
    QFETCH(int, type);
    QFETCH(int, dataLen);
    const std::unique_ptr<MMS_UA_SvCmd> event(MMS_UA_SvCmd::factory(type));
    QCOMPARE(event != nullptr, dataLen != 0);
    if (event) {
        QCOMPARE(event->type(), type);
        QCOMPARE(event->dataLen(), dataLen);
        QCOMPARE(event->extraLen(), -1);
        QVERIFY(!event->ownsExtra());
        QVERIFY(!event->extra());
        QCOMPARE(event->readState(), 0);
        QVERIFY(!dynamic_cast<MMS_UA_SvReadRecCmd *>(event.get()));
    }
}

void TestEvents::requestCompleted()
{
    SocketPair pair;
    MMS_UA_SvReqCompleteCmd written;
    written.setRequestId(3);
    written.setStatus(-1);
    written.setUri("ab");
    send(written, fromHex("01000000 04000000  03000000 00000000 04000000 FFFFFFFF  61006200"),
         pair);
    MMS_UA_SvReqCompleteCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getRequestId(), 3);
    QCOMPARE(event.getStatus(), -1);
    QCOMPARE(event.getUri(), QString("ab"));
    QVERIFY(event.ownsExtra());
}

void TestEvents::registrationCompleted()
{
    SocketPair pair;
    MMS_UA_SvRegCompleteCmd written;
    written.setRequestId(0);
    written.setResult(5);
    send(written, fromHex("02000000 00000000  00000000 00000000 05000000"), pair);
    MMS_UA_SvRegCompleteCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getRequestId(), 0);
    QCOMPARE(event.getResult(), 5);
}

void TestEvents::retrievalCompleted()
{
    SocketPair pair;
    MMS_UA_SvRetrCompleteCmd written;
    written.setUri("/tmp/m");
    send(written, fromHex("03000000 0C000000  0C000000") + units("/tmp/m"), pair);
    MMS_UA_SvRetrCompleteCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getUri(), QString("/tmp/m"));
}

void TestEvents::progress()
{
    SocketPair pair;
    MMS_UA_SvProgCmd written;
    written.setRequestId(1);
    written.setValue1(INT_MIN);
    written.setValue2(INT_MAX);
    send(written, fromHex("04000000 00000000  01000000 00000080 FFFFFF7F"), pair);
    MMS_UA_SvProgCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getRequestId(), 1);
    QCOMPARE(event.getValue1(), INT_MIN);
    QCOMPARE(event.getValue2(), INT_MAX);
}

void TestEvents::statusReturned()
{
    SocketPair pair;
    MMS_UA_SvStsRetCmd written;
    written.setRequestId(9);
    written.setStatus(130);
    send(written, fromHex("05000000 00000000  09000000 82000000"), pair);
    MMS_UA_SvStsRetCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getRequestId(), 9);
    QCOMPARE(event.getStatus(), 130);
}

void TestEvents::notification()
{
    SocketPair pair;
    MMS_UA_SvNotiCmd written;
    written.setUriAndTranID("uri", "t1");
    QCOMPARE(written.getUri(), QString("uri"));
    QCOMPARE(written.getTranID(), QString("t1"));
    send(written, fromHex("06000000 0A000000  06000000 04000000") + units("t1uri"), pair);
    MMS_UA_SvNotiCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getUri(), QString("uri"));
    QCOMPARE(event.getTranID(), QString("t1"));
}

void TestEvents::deliveryReport()
{
    SocketPair pair;
    MMS_UA_SvDeliCmd written;
    written.setMsgIDAndToAndDate("id", "to1", kDate);
    QCOMPARE(written.getMsgID(), QString("id"));
    QCOMPARE(written.getTo(), QString("to1"));
    QCOMPARE(written.getDate(), kDate);
    send(written,
         fromHex("07000000 3A000000  00000000 06000000 04000000 30000000 00000000")
             + units("to1" + kDateText + "id"),
         pair);
    MMS_UA_SvDeliCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getTo(), QString("to1"));
    QCOMPARE(event.getDate(), kDate);
    QCOMPARE(event.getMsgID(), QString("id"));
}

void TestEvents::lengthsAreCutToWhatArrived_data()
{
    QTest::addColumn<int>("uriLength");
    QTest::addColumn<int>("tranIdLength");
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("tranId");
    // Five characters arrive: "abcde".
    QTest::newRow("as said") << 6 << 4 << "cde"
                             << "ab";
    QTest::newRow("less than arrived") << 2 << 2 << "b"
                                       << "a";
    QTest::newRow("more than arrived") << 100 << 4 << "cde"
                                       << "ab";
    QTest::newRow("the first takes all") << 4 << 10 << ""
                                         << "abcde";
    QTest::newRow("the first wants more") << 4 << INT_MAX << ""
                                          << "abcde";
    QTest::newRow("both want more") << INT_MAX << INT_MAX << ""
                                    << "abcde";
    QTest::newRow("odd, rounded down") << 5 << 3 << "bc"
                                       << "a";
    QTest::newRow("one byte") << 1 << 1 << ""
                              << "";
    QTest::newRow("negative first") << 4 << -2 << "ab"
                                    << "";
    QTest::newRow("negative second") << -1 << 4 << ""
                                     << "ab";
    QTest::newRow("lowest") << INT_MIN << INT_MIN << ""
                            << "";
    QTest::newRow("none") << 0 << 0 << ""
                          << "";
}

void TestEvents::lengthsAreCutToWhatArrived()
{
    QFETCH(int, uriLength);
    QFETCH(int, tranIdLength);
    QByteArray record = fromHex("0A000000");
    record.append(reinterpret_cast<const char *>(&uriLength), 4);
    record.append(reinterpret_cast<const char *>(&tranIdLength), 4);
    SocketPair pair;
    pair.feed(record + units("abcde"));
    MMS_UA_SvNotiCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QTEST(event.getUri(), "uri");
    QTEST(event.getTranID(), "tranId");

    // The same for an event with one text.
    SocketPair single;
    single.feed(fromHex("0A000000") + record.mid(4, 4) + units("abcde"));
    MMS_UA_SvRetrCompleteCmd retrieved;
    QCOMPARE(retrieved.read(single.socket()), 1);
    QCOMPARE(retrieved.getUri(), QString("abcde").left(qBound(0, uriLength / 2, 5)));
    SocketPair completed;
    completed.feed(fromHex("0A000000 00000000 00000000") + record.mid(4, 4) + fromHex("00000000")
                   + units("abcde"));
    MMS_UA_SvReqCompleteCmd request;
    QCOMPARE(request.read(completed.socket()), 1);
    QCOMPARE(request.getUri(), retrieved.getUri());
}

void TestEvents::reportLengthsAreCutToWhatArrived_data()
{
    QTest::addColumn<QList<int>>("lengths"); // To, message id, date
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("hasDate");
    QTest::addColumn<QString>("msgId");
    // To, the date of 48 bytes and "ids" arrive.
    QTest::newRow("as said") << QList<int>{4, 6, 48} << "to" << true << "ids";
    QTest::newRow("the message id wants more")
        << QList<int>{4, INT_MAX, 48} << "to" << true << "ids";
    QTest::newRow("the date wants more") << QList<int>{4, 6, INT_MAX} << "to" << false << "";
    QTest::newRow("To wants more")
        << QList<int>{INT_MAX, 6, 48} << "to" + kDateText + "ids" << false << "";
    QTest::newRow("all negative") << QList<int>{-1, -2, INT_MIN} << "" << false << "";
    QTest::newRow("odd, rounded down") << QList<int>{5, 3, 49} << "to" << true << "i";
    QTest::newRow("no date") << QList<int>{4, 6, 0} << "to" << false << "Thu";
}

void TestEvents::reportLengthsAreCutToWhatArrived()
{
    QFETCH(QList<int>, lengths);
    QFETCH(bool, hasDate);
    QByteArray record = fromHex("3A000000 EEEEEEEE");
    for (int length : std::as_const(lengths)) {
        record.append(reinterpret_cast<const char *>(&length), 4);
    }
    SocketPair pair;
    pair.feed(record + fromHex("EEEEEEEE") + units("to" + kDateText + "ids"));
    MMS_UA_SvDeliCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QTEST(event.getTo(), "to");
    QTEST(event.getMsgID(), "msgId");
    QCOMPARE(event.getDate().isValid(), hasDate);
    if (hasDate) {
        QCOMPARE(event.getDate(), kDate);
    }
}

void TestEvents::datesOfAReport_data()
{
    QTest::addColumn<QDateTime>("date");
    QTest::newRow("a day of one digit") << QDateTime(QDate(2024, 2, 3), QTime(0, 0, 0));
    QTest::newRow("a leap day") << QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59));
    QTest::newRow("the last month") << QDateTime(QDate(2038, 12, 31), QTime(12, 0, 1));
}

void TestEvents::datesOfAReport()
{
    QFETCH(QDateTime, date);
    SocketPair pair;
    MMS_UA_SvDeliCmd written;
    written.setMsgIDAndToAndDate("m", "t", date);
    written.write(pair.socket());
    pair.feed(pair.taken().mid(4));
    MMS_UA_SvDeliCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getDate(), date);
}

void TestEvents::aDateOfAnotherZone()
{
    // The text has no zone: the moment is told in local time.
    const QDateTime moment(QDate(2024, 1, 1), QTime(12, 0, 0), Qt::OffsetFromUTC, 3 * 3600);
    MMS_UA_SvDeliCmd written;
    written.setMsgIDAndToAndDate("m", "t", moment);
    SocketPair pair;
    written.write(pair.socket());
    pair.feed(pair.taken().mid(4));
    MMS_UA_SvDeliCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QCOMPARE(event.getDate().timeSpec(), Qt::LocalTime);
    QCOMPARE(event.getDate(), moment);
}

void TestEvents::aDateThatIsNone()
{
    MMS_UA_SvDeliCmd written;
    written.setMsgIDAndToAndDate("m", "t", QDateTime());
    SocketPair pair;
    send(written,
         fromHex("07000000 04000000  00000000 02000000 02000000 00000000 00000000  7400 6D00"),
         pair);
    MMS_UA_SvDeliCmd event;
    QCOMPARE(event.read(pair.socket()), 1);
    QVERIFY(!event.getDate().isValid());
    QCOMPARE(event.getTo(), QString("t"));
    QCOMPARE(event.getMsgID(), QString("m"));
}

void TestEvents::readReportPlaces_data()
{
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("msgId");
    QTest::addColumn<bool>("hasDate");
    QTest::addColumn<QString>("characters"); // '.' for one of 0
    const QString date = kDateText;
    // the date and the message id of a read report lie at offsets of their own lengths
    QTest::newRow("where a reader looks")
        << 24 << 48 << true << QString(24, 't') + date + QString(48, 'm');
    QTest::newRow("a gap") << 30 << 40 << true
                           << QString(24, 't') + date.left(16) + QString(40, 'm')
            + QString(14, '.');
    QTest::newRow("the date is cut") << 3 << 2 << true << "ttmm" + QString(20, '.') + date.left(5);
    QTest::newRow("the date has no room") << 0 << 0 << true << QString(24, '.');
    QTest::newRow("the message id is cut") << 1 << 60 << false << "t" + QString(59, '.') + "m";
    QTest::newRow("the message id has no room") << 0 << 7 << false << QString(7, '.');
    QTest::newRow("the message id over the rest") << 5 << 3 << false << "tttmmm..";
    QTest::newRow("To alone") << 5 << 0 << false << "ttttt";
    QTest::newRow("nothing") << 0 << 0 << false << "";
}

void TestEvents::readReportPlaces()
{
    QFETCH(int, to);
    QFETCH(int, msgId);
    QFETCH(bool, hasDate);
    QFETCH(QString, characters);
    MMS_UA_SvReadRecCmd report;
    const QDateTime date = hasDate ? kDate : QDateTime();
    report.setMsgIDAndToAndDate(QString(msgId, 'm'), QString(to, 't'), date);
    const int dateLength = hasDate ? 48 : 0;
    QCOMPARE(report.extraLen(), 2 * to + dateLength + 2 * msgId);
    QCOMPARE(toHex(QByteArrayView(report.extra(), report.extraLen())),
             toHex(units(characters.replace('.', QChar(0)))));
    const QList<qint32> words{0, 2 * to, 2 * msgId, dateLength, 0};
    QCOMPARE(toHex(report.fixedPart()),
             toHex(QByteArrayView(reinterpret_cast<const char *>(words.constData()), 20)));
    QCOMPARE(report.getTo(), QString(to, 't'));
    QCOMPARE(report.getMsgID(), QString(msgId, 'm'));
    QCOMPARE(report.getDate(), date);
}

void TestEvents::aReadReportThatReadsBack()
{
    MMS_UA_SvReadRecCmd written;
    written.setMsgIDAndToAndDate(QString(48, 'm'), QString(24, 't'), kDate);
    SocketPair pair;
    written.write(pair.socket());
    pair.feed(pair.taken().mid(4));
    MMS_UA_SvReadRecCmd report;
    QCOMPARE(report.read(pair.socket()), 1);
    QCOMPARE(report.getTo(), QString(24, 't'));
    QCOMPARE(report.getDate(), kDate);
    QCOMPARE(report.getMsgID(), QString(48, 'm'));
}

QTEST_GUILESS_MAIN(TestEvents)
#include "tst_mms_ua_svcmd.moc"

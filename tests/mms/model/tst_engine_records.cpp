// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// How messages become records: WMMSMsg::engDataInitHdr, engDataInitMsgbdy, engDataAppendParts.

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/mms_util_conv.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

#include <climits>

namespace {

constexpr const char *kAppId = "Application-ID";
constexpr const char *kReplyAppId = "Reply-To-Application-ID";

QDateTime in(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch() + seconds);
}

/// The record of a text part with these texts; the body releases it.
struct OnePart {
    explicit OnePart(WMMSMultipart part) : body("a/b")
    {
        log.clear();
        result = WMMSMsg().engDataAppendParts(&part, &body);
    }
    LogCapture log;
    BodyRecord body;
    quint32 result = 0;
    [[nodiscard]] const MMS_MSG_PART_T &record() const { return body.parts[0]; }
};

} // namespace

class TestEngineRecords : public QObject {
    Q_OBJECT

private slots:
    void newMessage();
    void numbers();
    void dates_data();
    void dates();
    void deliveryTime_data();
    void deliveryTime();
    void headerLog();
    void presentation_data();
    void presentation();
    void addresses();
    void texts_data();
    void texts();
    void replyApplication_data();
    void replyApplication();
    void formerContent();
    void bodyRecord();
    void part();
    void partTexts_data();
    void partTexts();
    void headerText_data();
    void headerText();
    void partLog();
    void fullBody();
    void nothingToAppend();
};

void TestEngineRecords::newMessage()
{
    WMMSMsg message;
    HeaderRecord record;
    message.engDataInitHdr(&record);
    const long now = MMS_UTIL_Conv::getCurrentUTCTime();
    QVERIFY(qAbs(record.date - now) < 60); // no date: now
    record.date = 0;
    QCOMPARE(record.shown(),
             QString("from -\nto -\ncc -\nbcc -\nsubject -\nreserved 0\n"
                     "priority -127\nclass 0\nexpiry 4294967295\ndate 0\n"
                     "delivery-report 0\nread-report 0\nsize 0\n"
                     "delivery-time -1\npresentation -\nforwardable 0\n"
                     "app -\nreply-app -\naux -"));
}

void TestEngineRecords::numbers()
{
    WMMSMsg message;
    message.setPriority(130);
    message.setMsgClass(131);
    message.setExpiryTime(3600);
    message.setDate(QDateTime::fromSecsSinceEpoch(1714563072));
    message.setDeliveryReportNecessity(true);
    message.setReadReportNecessity(true);
    message.setMsgSize(-5);
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QCOMPARE(record.priority, 2);
    QCOMPARE(record.msgClass, 3);
    QCOMPARE(record.expiry, 3600U);
    QCOMPARE(record.date, 1714563072);
    QCOMPARE(record.deliveryReport, 1);
    QCOMPARE(record.readReport, 1);
    QCOMPARE(record.size, -5);
    QCOMPARE(record.reserved, 0);
    QCOMPARE(record.forwardable, 0); // constructEngMsg sets it
    message.setPriority(0);
    message.setMsgClass(255);
    HeaderRecord limits;
    message.engDataInitHdr(&limits);
    QCOMPARE(limits.priority, -128);
    QCOMPARE(limits.msgClass, 127);
}

void TestEngineRecords::dates_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<int>("word");
    QTest::newRow("epoch") << qint64(0) << 0;
    QTest::newRow("before") << qint64(-1) << -1;
    QTest::newRow("highest") << qint64(INT_MAX) << INT_MAX;
    QTest::newRow("beyond the word") << qint64(INT_MAX) + 1 << INT_MAX;
    QTest::newRow("long ago") << qint64(INT_MIN) - 1 << INT_MIN;
}

void TestEngineRecords::dates()
{
    QFETCH(qint64, seconds);
    WMMSMsg message;
    message.setDate(QDateTime::fromSecsSinceEpoch(seconds));
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QTEST(record.date, "word");
}

void TestEngineRecords::deliveryTime_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<uint>("expiry");
    QTest::addColumn<uint>("expiryWord"); // less the delivery time, when that counts
    QTest::addColumn<bool>("counts");
    QTest::newRow("none") << QDateTime() << 60U << 60U << false;
    QTest::newRow("past") << in(-1000) << 60U << 60U << false;
    QTest::newRow("to come") << in(100000) << 60U << 60U << true;
    QTest::newRow("to come, without expiry") << in(100000) << UINT_MAX << UINT_MAX << true;
    QTest::newRow("beyond the word")
        << QDateTime::fromSecsSinceEpoch(qint64(INT_MAX) + 10) << 0U << 0U << true;
}

void TestEngineRecords::deliveryTime()
{
    QFETCH(QDateTime, time);
    QFETCH(uint, expiry);
    QFETCH(uint, expiryWord);
    QFETCH(bool, counts);
    WMMSMsg message;
    message.setDeliveryTime(time);
    message.setExpiryTime(expiry);
    HeaderRecord record;
    LogCapture log;
    message.engDataInitHdr(&record);
    const int word = counts ? int(qMin<qint64>(time.toSecsSinceEpoch(), INT_MAX)) : -1;
    QCOMPARE(record.deliveryTime, word);
    if (counts && expiry != UINT_MAX) {
        expiryWord += unsigned(word);
    }
    QCOMPARE(record.expiry, expiryWord);
    QStringList lines;
    if (counts) {
        lines << "Setting the scheduled delivery time"
              << QString("engDataInitHdr:: final expiry_period =  %1").arg(int(expiryWord));
    }
    lines << QString("Setting the delivery time to value = %1").arg(word);
    QCOMPARE(log.lines(), lines);
}

// The entry is logged at level 8, which is not printed.
void TestEngineRecords::headerLog()
{
    LogCapture log;
    HeaderRecord record;
    WMMSMsg().engDataInitHdr(&record);
    QCOMPARE(log.lines(), QStringList{"Setting the delivery time to value = -1"});
}

void TestEngineRecords::presentation_data()
{
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("word");
    QTest::newRow("related") << kRelated << "application/smil"
                             << "\"application/smil\"";
    QTest::newRow("any case") << kRelated.toUpper() << "Application/SMIL"
                              << "\"Application/SMIL\"";
    QTest::newRow("related without type") << kRelated << QString() << "-";
    QTest::newRow("mixed") << kMixed << "application/smil"
                           << "-";
    QTest::newRow("short name") << "multipart/related"
                                << "application/smil"
                                << "-";
}

void TestEngineRecords::presentation()
{
    QFETCH(QString, mimeType);
    QFETCH(QString, type);
    WMMSMsg message;
    message.setContentType(typeOf(mimeType, {{"type", type}}));
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QTEST(shownText(record.presentation), "word");
}

void TestEngineRecords::addresses()
{
    WMMSMsg message;
    message.setFrom(WMFMEntry(0, "你@例子", "Name"));
    message.setTo(WMFMEntry(1, "+431"));
    message.setTo(WMFMEntry(0, "ann@example.org", "Ann"));
    message.setCc(WMFMEntry(1, "+432"));
    message.setBcc(WMFMEntry(1, "🎉"));
    message.setBcc(WMFMEntry(1, ""));
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QCOMPARE(shownText(record.from), "\"你@例子\"");
    QCOMPARE(shownText(record.to), "\"+431,ann@example.org\"");
    QCOMPARE(shownText(record.cc), "\"+432\"");
    QCOMPARE(shownText(record.bcc), "\"🎉,\"");
    QCOMPARE(message.getTo().size(), 2);
}

void TestEngineRecords::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("word");
    QTest::newRow("null") << QString() << "-";
    QTest::newRow("empty") << ""
                           << "-";
    QTest::newRow("ascii") << "Sunset"
                           << "\"Sunset\"";
    QTest::newRow("latin") << "Größe"
                           << "\"Größe\"";
    // Subject and application ids go through Latin-1.
    QTest::newRow("chinese") << "你好"
                             << "\"??\"";
    QTest::newRow("arabic") << "مر a"
                            << "\"?? a\"";
    QTest::newRow("emoji") << "🎉"
                           << "\"??\"";
    QTest::newRow("latin letters that are UTF-8") << "Ã©"
                                                  << "\"é\"";
    QTest::newRow("up to a zero") << QString::fromLatin1("a\0b", 3) << "\"a\"";
}

void TestEngineRecords::texts()
{
    QFETCH(QString, text);
    QFETCH(QString, word);
    WMMSMsg message;
    message.setSubject(text);
    message.setAppID(text);
    message.setReplyAppID(text);
    message.setAuxAppInfo(text);
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QCOMPARE(shownText(record.subject), word);
    QCOMPARE(shownText(record.appId), word);
    QCOMPARE(shownText(record.replyAppId), word);
    QCOMPARE(shownText(record.auxAppInfo), word);
}

// The reply application id is cut to the length of the application id.
void TestEngineRecords::replyApplication_data()
{
    QTest::addColumn<QString>("appId");
    QTest::addColumn<QString>("word");
    QTest::newRow("same length") << "abcde"
                                 << "\"reply\"";
    QTest::newRow("shorter") << "abc"
                             << "\"rep\"";
    QTest::newRow("longer") << QString(5000, 'a') << "\"reply\"";
    QTest::newRow("none") << QString() << "\"\"";
}

void TestEngineRecords::replyApplication()
{
    QFETCH(QString, appId);
    WMMSMsg message;
    message.setContentType(typeOf(kMixed, {{kAppId, appId}, {kReplyAppId, "reply"}}));
    HeaderRecord record;
    message.engDataInitHdr(&record);
    QTEST(shownText(record.replyAppId), "word");
}

void TestEngineRecords::formerContent()
{
    unsigned short text[] = {'x', 0};
    char presentation[] = "x";
    MMS_MSG_HDR_T record = {text, text, text, text, text,         1, 1,    1,    1,   1,
                            1,    1,    1,    1,    presentation, 1, text, text, text};
    WMMSMsg message;
    message.setDate(QDateTime::fromSecsSinceEpoch(0));
    message.engDataInitHdr(&record);
    QVERIFY(!record.from && !record.to && !record.cc && !record.bcc && !record.subject);
    QVERIFY(!record.presentation && !record.appId && !record.replyAppId && !record.auxAppInfo);
    QCOMPARE(record.reserved, 0);
    QCOMPARE(record.forwardable, 0);
}

void TestEngineRecords::bodyRecord()
{
    for (const QString &type : {QString("a/b;c=\"é\""), QString(""), QString()}) {
        MMS_MSG_BDY_T *body = nullptr;
        WMMSMsg().engDataInitMsgbdy(type, &body);
        QVERIFY(body);
        QCOMPARE(QString::fromLatin1(body->contentType), type);
        QCOMPARE(body->contentType == nullptr, type.isNull());
        QCOMPARE(body->partCount, 0U);
        const QByteArray records(reinterpret_cast<const char *>(body->parts),
                                 int(40 * sizeof(MMS_MSG_PART_T)));
        QCOMPARE(records, QByteArray(records.size(), 0));
        MMS_ENG_Controller::Instance()->FreeMMSBdy(body);
        free(body);
    }
}

void TestEngineRecords::part()
{
    WMMSMultipart whole = partOf("Image/GIF", QByteArray("GIF\0\xFF", 5), "<é>", "größe你.gif");
    whole.setLocalFileName("/tmp/dir/é.gif");
    const OnePart one(whole);
    QCOMPARE(one.result, 200U);
    QCOMPARE(one.body.partCount, 1U);
    const MMS_MSG_PART_T &record = one.record();
    QCOMPARE(shownText(record.mimeType), "\"image/gif\"");
    QCOMPARE(QByteArray(record.contentId), QByteArray("<\xE9>"));
    QCOMPARE(shownText(record.contentLocation), "\"größe你.gif\"");
    QCOMPARE(QByteArray(record.fileName), QByteArray("/tmp/dir/\xE9.gif"));
    QCOMPARE(one.body.bytes(0), QByteArray("GIF\0\xFF", 5));
    QVERIFY(record.data != static_cast<const void *>(whole.getData().constData()));
    QCOMPARE(record.size, 5);
    QCOMPARE(
        record.reserved0 | record.reserved1 | record.reserved5 | record.storage | record.offset, 0);
    QVERIFY(!record.dataFile);
    QCOMPARE(one.body.parts[1].size, 0);
    QVERIFY(!one.body.parts[1].mimeType);
}

void TestEngineRecords::partTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("word");
    QTest::newRow("null") << QString() << "-";
    QTest::newRow("empty") << QString("") << "\"\"";
    QTest::newRow("some") << QString("a") << "\"a\"";
}

void TestEngineRecords::partTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, word);
    WMMSMultipart part;
    part.setContentLocation(text);
    part.setContentID(text);
    part.setLocalFileName(text);
    const OnePart one(part);
    QCOMPARE(shownText(one.record().contentId), word);
    QCOMPARE(shownText(one.record().contentLocation), word);
    QCOMPARE(shownText(one.record().fileName), word);
    QCOMPARE(shownText(one.record().mimeType), "\"\"");
    QVERIFY(!one.record().data);
}

void TestEngineRecords::headerText_data()
{
    QTest::addColumn<WMMSMultipart>("part");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const WMMSMultipart &part, const char *text) {
        QTest::newRow(name) << part << QString(text);
    };
    row("type alone", partOf("Text/Plain", "x"), "Content-Type:text/plain;");
    WMMSMultipart part = partOf("text/plain", "x");
    part.getContentType().setParam("charset", "UTF-16");
    row("any charset", part, "Content-Type:text/plain;charset=utf-8;");
    part.setLocalFileName("/tmp/a b.txt");
    row("charset and file", part, "Content-Type:text/plain;charset=utf-8;name=a b.txt");
    part = partOf("image/gif", "x");
    part.setLocalFileName("a.gif");
    row("file without folder", part, "Content-Type:image/gif;name=a.gif");
    part.setLocalFileName("/tmp/");
    row("folder alone", part, "Content-Type:image/gif;name=");
    part.setLocalFileName("");
    row("empty file name", part, "Content-Type:image/gif;");
    row("id and location", partOf("image/gif", "x", "<a>", "a.gif"),
        "Content-Type:image/gif;\r\nContent-ID:<a>\r\nContent-Location:a.gif");
    row("id is the location", partOf("image/gif", "x", "<a>"),
        "Content-Type:image/gif;\r\nContent-ID:<a>\r\nContent-Location:<a>");
    row("location alone", partOf("image/gif", "x", QString(), "a.gif"),
        "Content-Type:image/gif;\r\nContent-Location:a.gif");
    row("empty id and location", partOf("image/gif", "x", "", ""), "Content-Type:image/gif;");
    part = partOf("image/gif", "x", "<a>", "b");
    part.setLocalFileName("/c/d");
    row("all", part, "Content-Type:image/gif;name=d\r\nContent-ID:<a>\r\nContent-Location:b");
}

void TestEngineRecords::headerText()
{
    QFETCH(WMMSMultipart, part);
    const OnePart one(part);
    QTEST(QString::fromLatin1(one.record().headerText), "text");
}

void TestEngineRecords::partLog()
{
    WMMSMultipart part = partOf("text/plain", "abc", "<a>", "b");
    part.getContentType().setParam("charset", "UTF-16");
    part.setLocalFileName("/c/d");
    const OnePart one(part);
    QCOMPARE(one.log.lines(),
             (QStringList{"ContentId = <a>", "getContentLocation= b\n", "Localfilename= /c/d\n",
                          "charset to give to part_hdr =UTF-16",
                          "part Hdr= Content-Type:text/plain;charset=utf-8;name=d\r\n"
                          "Content-ID:<a>\r\nContent-Location:b",
                          "part size is 3\n"}));
}

void TestEngineRecords::fullBody()
{
    WMMSMsg message;
    BodyRecord body("a/b");
    WMMSMultipart part = partOf("image/gif", "x");
    for (int i = 0; i < 40; ++i) {
        QCOMPARE(message.engDataAppendParts(&part, &body), 200U);
        QCOMPARE(body.partCount, unsigned(i + 1));
    }
    LogCapture log;
    QCOMPARE(message.engDataAppendParts(&part, &body), 207U);
    QCOMPARE(body.partCount, 40U);
    QCOMPARE(log.lines(), QStringList());
}

void TestEngineRecords::nothingToAppend()
{
    WMMSMsg message;
    BodyRecord body("a/b");
    WMMSMultipart part;
    LogCapture log;
    QCOMPARE(message.engDataAppendParts(nullptr, &body), 209U);
    QCOMPARE(message.engDataAppendParts(&part, nullptr), 209U);
    QCOMPARE(message.engDataAppendParts(nullptr, nullptr), 209U);
    QCOMPARE(log.lines(), QStringList(3, "Body and multiparts are NULL"));
    QCOMPARE(body.partCount, 0U);
    BodyRecord withoutParts; // its memory could not be had
    QCOMPARE(message.engDataAppendParts(&part, &withoutParts), 209U);
}

QTEST_GUILESS_MAIN(TestEngineRecords)
#include "tst_engine_records.moc"

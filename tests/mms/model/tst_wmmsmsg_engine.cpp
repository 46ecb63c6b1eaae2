// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Messages through the real store, there and back.

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/engine_records.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"

#include <QtTest/QtTest>

namespace {

using Id = unsigned short;

Id stored(WMMSMsg message, Id folder = MMS_ENG_INBOX)
{
    Id id = MMS_ENG_INVALID_ID;
    return message.constructEngMsg(&id, folder) == 300 ? id : MMS_ENG_INVALID_ID;
}

WMMSMsg read(Id id)
{
    WMMSMsg message;
    message.clear();
    if (message.constructWMMSMsg(id, nullptr, true, 0) != 100) {
        message.setSubject("CANNOT BE READ");
    }
    return message;
}

QString shownEntries(const QList<WMFMEntry> &entries)
{
    QStringList shown;
    for (const WMFMEntry &entry : entries) {
        shown += QString("%1:%2").arg(entry.getEntryType()).arg(entry.getEntryVal());
    }
    return shown.join(' ');
}

/// The values of a message that a store keeps.
QString shownHeader(WMMSMsg message)
{
    const QStringList lines = {
        "from " + shownEntries({message.getFrom()}),
        "to " + shownEntries(message.getTo()),
        "cc " + shownEntries(message.getCc()),
        "bcc " + shownEntries(message.getBcc()),
        "subject " + message.getSubject(),
        QString("priority %1, class %2").arg(message.getPriority()).arg(message.getMsgClass()),
        QString("expiry %1, size %2").arg(message.getExpiryTime()).arg(message.getMsgSize()),
        "date " + message.getDate().toUTC().toString(Qt::ISODate),
        "delivery " + message.getDeliveryTime().toUTC().toString(Qt::ISODate),
        QString("reports %1 %2")
            .arg(message.getDeliveryReportNecessity())
            .arg(message.getReadReportNecessity()),
        "type " + message.getContentType().toStringWithQuotes(),
    };
    return lines.join('\n');
}

QByteArray shownBody(const WMMSMsg &message)
{
    return shown(message.getMultiParts());
}

/// A related message with all that a store keeps.
WMMSMsg wholeMessage()
{
    WMMSMsg message;
    message.setFrom(WMFMEntry(0, "ann@example.org"));
    message.setTo(WMFMEntry(1, "+431"));
    message.setTo(WMFMEntry(0, "bob@مثال.org"));
    message.setCc(WMFMEntry(1, "+432"));
    message.setBcc(WMFMEntry(1, "+433"));
    message.setSubject("Größe");
    message.setPriority(130);
    message.setMsgClass(129);
    message.setDate(QDateTime::fromSecsSinceEpoch(1714563072));
    message.setDeliveryReportNecessity(true);
    message.setReadReportNecessity(true);
    message.setMsgSize(4711);
    message.setContentType(typeOf(kRelated, {{"type", "application/smil"}}));
    WMMSMultipart text = partOf("text/plain", "你好🎉 مرحبا", "<t>", "t.txt");
    text.getContentType().setParam("charset", "utf-8");
    message.getMultiParts() =
        parentOf(kRelated,
                 {partOf("application/smil", "<smil/>", "<s>", "s.smil"), text,
                  partOf("image/gif", QByteArray("GIF\0\xFF", 5), "<größe>", "größe你.gif"),
                  partOf("image/png", QByteArray(), QString(), "empty.png")});
    message.getMultiParts().getContentType().setParam("type", "application/smil");
    return message;
}

} // namespace

class TestWmmsmsgEngine : public QObject {
    Q_OBJECT

private slots:
    void wholeMessageThereAndBack();
    void reports_data();
    void reports();
    void expiryAndDeliveryTime();
    void newMessage();
    void singlePart();
    void mixedMessageSentAgain();
    void texts_data();
    void texts();
    void applicationIds_data();
    void applicationIds();
    void update();
    void readAndStoredAgain();
    void idsAtTheirLimits();
    void folders();
    void manyParts();
    void nestedParts();
    void status();
    void largeBody();
    void rootKeepsThePathOfTheLastFile();
    void bodyThatIsGone();
    void storeRefuses();
};

void TestWmmsmsgEngine::wholeMessageThereAndBack()
{
    const StorageRoot root;
    const WMMSMsg out = wholeMessage();
    const Id id = stored(out);
    QCOMPARE(id, Id(1));
    const WMMSMsg in = read(id);
    QCOMPARE(shownHeader(in), shownHeader(out));
    QCOMPARE(shownBody(in), shownBody(out));
    QCOMPARE(in.engineMsgId(), id);
    QCOMPARE(int(in.getMMSType()), 6);
    HeaderRecord record;
    WMMSMsg headerAlone;
    QCOMPARE(headerAlone.constructWMMSMsg(id, &record, false, 0), 100U);
    QVERIFY(!headerAlone.getMultiParts().subParts());
    QCOMPARE(headerAlone.getSubject(), "Größe");
    QCOMPARE(record.forwardable, 1);
}

void TestWmmsmsgEngine::reports_data()
{
    QTest::addColumn<bool>("delivery");
    QTest::addColumn<bool>("read");
    QTest::newRow("neither") << false << false;
    QTest::newRow("delivery") << true << false;
    QTest::newRow("read") << false << true;
}

void TestWmmsmsgEngine::reports()
{
    QFETCH(bool, delivery);
    QFETCH(bool, read);
    const StorageRoot root;
    WMMSMsg out = wholeMessage();
    out.setDeliveryReportNecessity(delivery);
    out.setReadReportNecessity(read);
    const WMMSMsg in = ::read(stored(out));
    QCOMPARE(in.getDeliveryReportNecessity(), delivery);
    QCOMPARE(in.getReadReportNecessity(), read);
}

// The stored expiry counts from the delivery time.
void TestWmmsmsgEngine::expiryAndDeliveryTime()
{
    const StorageRoot root;
    WMMSMsg out = wholeMessage();
    out.setExpiryTime(3600);
    QCOMPARE(read(stored(out)).getExpiryTime(), 3600U);
    const qint64 seconds = QDateTime::currentSecsSinceEpoch() + 100000;
    out.setDeliveryTime(QDateTime::fromSecsSinceEpoch(seconds));
    const WMMSMsg later = read(stored(out));
    QCOMPARE(later.getDeliveryTime().toSecsSinceEpoch(), seconds);
    QVERIFY(later.fieldIsPresent(MMS_FIELD_DELIVERY_TIME));
    QCOMPARE(later.getExpiryTime(), unsigned(seconds + 3600));
    out.setDeliveryTime(QDateTime::fromSecsSinceEpoch(1000));
    QVERIFY(read(stored(out)).getDeliveryTime().isNull());
}

void TestWmmsmsgEngine::newMessage()
{
    const StorageRoot root;
    WMMSMsg out;
    const Id id = stored(out);
    QCOMPARE(id, Id(1));
    const WMMSMsg in = read(id);
    QCOMPARE(int(in.getPriority()), 1);
    QCOMPARE(int(in.getMsgClass()), 128);
    QCOMPARE(in.getExpiryTime(), 0xFFFFFFFFU);
    QVERIFY(qAbs(in.getDate().secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(shownBody(in), QByteArray("'' id=- at=- [] {('' id=- at=- [])}"));
}

void TestWmmsmsgEngine::singlePart()
{
    const StorageRoot root;
    WMMSMsg out;
    out.setContentType(typeOf("text/plain"));
    out.getMultiParts() = partOf("text/plain", "你好", "<i>", "l");
    const WMMSMsg in = read(stored(out));
    QCOMPARE(shownBody(in),
             "text/plain id=- at=- [] {(text/plain id=<i> at=l [" + toHex("你好") + "])}");
    QVERIFY(in.getContentType().isEmpty());
    QCOMPARE(int(in.getMMSType()), 13);
}

// Its content type is with its root part.
void TestWmmsmsgEngine::mixedMessageSentAgain()
{
    const StorageRoot root;
    WMMSMsg out = wholeMessage();
    out.setContentType(typeOf(kMixed, {{"x", "y"}}));
    out.setAppID("app");
    out.getMultiParts().setContentType(out.getContentType());
    WMMSMsg in = read(stored(out));
    in.setPDUType(MMS_PDU_STORED); // what clear() took away
    QArray<char> pdu;
    QCOMPARE(in.packTo(pdu, nullptr, nullptr), 202U);
    in.setMultiParts(read(stored(out)).getMultiParts());
    in.setContentType(in.getMultiParts().getContentType());
    QCOMPARE(in.getContentType().toStringWithQuotes(), out.getContentType().toStringWithQuotes());
    QCOMPARE(in.packTo(pdu, nullptr, nullptr), 200U);
}

// The bytes of texts stay as they are.
void TestWmmsmsgEngine::texts_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("chinese") << QByteArray("你好，世界你好世界");
    QTest::newRow("arabic") << QByteArray("مرحبا بالعالم");
    QTest::newRow("emoji") << QByteArray("🎉👩‍👩‍👧🎉");
    QTest::newRow("no UTF-8") << QByteArray("caf\xE9");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE\x61\0\x62\1", 6);
    QTest::newRow("a zero inside") << QByteArray("a\0b", 3);
    QTest::newRow("one byte") << QByteArray("a");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("long") << QByteArray("你").repeated(100000);
}

void TestWmmsmsgEngine::texts()
{
    QFETCH(QByteArray, bytes);
    const StorageRoot root;
    for (const char *type : {"text/plain", "text/x-brel-postcard_contacts", "text/html"}) {
        WMMSMsg out;
        out.setContentType(typeOf(kMixed));
        out.getMultiParts() = parentOf(kMixed, {partOf(type, bytes)});
        const WMMSMsg in = read(stored(out));
        QVERIFY(in.getMultiParts().subParts());
        QCOMPARE(in.getMultiParts().subParts()->size(), 1);
        QCOMPARE(hexOf(in.getMultiParts().subParts()->first().getData()), toHex(bytes));
    }
}

void TestWmmsmsgEngine::applicationIds_data()
{
    QTest::addColumn<QString>("appId");
    QTest::addColumn<QString>("replyAppId");
    QTest::addColumn<QString>("auxAppInfo");
    QTest::addColumn<QString>("readReply");
    QTest::newRow("none") << ""
                          << ""
                          << ""
                          << "";
    QTest::newRow("same length") << "abc"
                                 << "xyz"
                                 << "aux"
                                 << "xyz";
    QTest::newRow("shorter") << "ab"
                             << "wxyz"
                             << ""
                             << "wx";
    QTest::newRow("longer") << "abcdefgh"
                            << "xyz"
                            << "größe"
                            << "xyz";
    QTest::newRow("reply alone") << ""
                                 << "xyz"
                                 << ""
                                 << "";
}

void TestWmmsmsgEngine::applicationIds()
{
    QFETCH(QString, appId);
    QFETCH(QString, replyAppId);
    QFETCH(QString, auxAppInfo);
    const StorageRoot root;
    WMMSMsg out = wholeMessage();
    out.setAppID(appId);
    out.setReplyAppID(replyAppId);
    out.setAuxAppInfo(auxAppInfo);
    const Id id = stored(out);
    const WMMSMsg in = read(id);
    QCOMPARE(in.getAppID(), appId);
    QTEST(in.getReplyAppID(), "readReply");
    QCOMPARE(in.getAuxAppInfo(), auxAppInfo);
}

void TestWmmsmsgEngine::update()
{
    const StorageRoot root;
    WMMSMsg message = wholeMessage();
    Id id = MMS_ENG_INVALID_ID;
    QCOMPARE(message.constructEngMsg(&id, MMS_ENG_DRAFTS), 300U);
    message.setSubject("Second");
    message.getMultiParts().setSubMmsMultipart({partOf("image/gif", "2")});
    QCOMPARE(message.constructEngMsg(&id, MMS_ENG_OUTBOX), 300U);
    QCOMPARE(id, Id(1));
    const WMMSMsg in = read(id);
    QCOMPARE(in.getSubject(), "Second");
    QCOMPARE(in.getMultiParts().subParts()->size(), 1);
    unsigned int count = 9;
    QCOMPARE(root->CountMMS(MMS_ENG_DRAFTS, &count), int(MMS_ENG_OK));
    QCOMPARE(count, 0U);
    // What is not there cannot be changed, and is not made.
    Id other = 2;
    QCOMPARE(message.constructEngMsg(&other, MMS_ENG_OUTBOX), 301U);
    QCOMPARE(other, Id(2));
    other = MMS_ENG_INVALID_ID;
    QCOMPARE(message.constructEngMsg(&other, MMS_ENG_OUTBOX), 300U);
    QCOMPARE(other, Id(2));
}

void TestWmmsmsgEngine::readAndStoredAgain()
{
    const StorageRoot root;
    for (const QString &type : {kRelated, kMixed}) {
        WMMSMsg out = wholeMessage();
        out.setContentType(typeOf(type, {{"type", "application/smil"}}));
        out.getMultiParts().setContentType(out.getContentType());
        Id id = stored(out);
        const QString header = shownHeader(read(id));
        const QByteArray body = shownBody(read(id));
        WMMSMsg again = read(id);
        again.setContentType(again.getMultiParts().getContentType());
        QCOMPARE(again.constructEngMsg(&id, MMS_ENG_INBOX), 300U);
        QCOMPARE(shownHeader(read(id)), header);
        QCOMPARE(shownBody(read(id)), body);
    }
}

void TestWmmsmsgEngine::idsAtTheirLimits()
{
    const StorageRoot root;
    WMMSMsg message;
    for (const Id wrong : {Id(0), Id(1), Id(65534)}) {
        Id id = wrong;
        QCOMPARE(message.constructEngMsg(&id, 1), 301U); // no such message
        QCOMPARE(message.constructWMMSMsg(wrong, nullptr, true, 0), 113U);
    }
    LogCapture log;
    QCOMPARE(message.constructWMMSMsg(65535, nullptr, true, 0), 113U);
    QCOMPARE(log.lines(), QStringList{"Invalid Msg Id"});
}

void TestWmmsmsgEngine::folders()
{
    const StorageRoot root;
    for (const Id folder : {Id(0), Id(MMS_ENG_INBOX), Id(65534)}) {
        const Id id = stored(wholeMessage(), folder);
        Id found = 9;
        QCOMPARE(root->FindMMS(id, &found), int(MMS_ENG_OK));
        QCOMPARE(found, folder);
    }
    QCOMPARE(stored(wholeMessage(), 65535), MMS_ENG_INVALID_ID);
}

void TestWmmsmsgEngine::manyParts()
{
    const StorageRoot root;
    for (const int count : {40, 41}) {
        WMMSMsg message;
        message.setContentType(typeOf(kMixed));
        for (int i = 0; i < count; ++i) {
            message.getMultiParts().getSubMmsMultipartList().append(
                partOf("text/plain", QByteArray::number(i)));
        }
        Id id = MMS_ENG_INVALID_ID;
        QCOMPARE(message.constructEngMsg(&id, 1), count == 40 ? 300U : 209U);
        if (count == 40) {
            const WMMSMsg in = read(id);
            QCOMPARE(in.getMultiParts().subParts()->size(), 40);
            QCOMPARE(hexOf(in.getMultiParts().subParts()->last().getData()), QByteArray("33 39"));
        }
    }
    QCOMPARE(root.partFiles().size(), 1);
}

// Parts below parts are kept as the bytes of their parent alone.
void TestWmmsmsgEngine::nestedParts()
{
    const StorageRoot root;
    WMMSMultipart inner = parentOf(kMixed, {partOf("image/gif", "x")});
    inner.setData(bytesOf("raw"));
    WMMSMsg message;
    message.setContentType(typeOf(kMixed));
    message.getMultiParts() = parentOf(kMixed, {inner});
    QCOMPARE(shownBody(read(stored(message))),
             kMixed.toLatin1() + " id=- at=- [] {(" + kMixed.toLatin1()
                 + " id=- at=- [72 61 77])}");
}

void TestWmmsmsgEngine::status()
{
    const StorageRoot root;
    const Id id = stored(wholeMessage());
    WMMSMsg fresh = read(id);
    QCOMPARE(int(fresh.getResponseStatus()), 0);
    QVERIFY(fresh.fieldIsPresent(MMS_FIELD_RESPONSE_STATUS));
    QVERIFY(!fresh.fieldIsPresent(MMS_FIELD_RESPONSE_TEXT));
    char text[] = "größe 你好";
    const MMS_MOMT_STATUS_T failed = {15, text, 128, nullptr, 0};
    QCOMPARE(root->SetMMSMoMtStatus(id, &failed), int(MMS_ENG_OK));
    QCOMPARE(int(read(id).getResponseStatus()), 224);
    QCOMPARE(read(id).getResponseText(), "größe 你好");
    const MMS_MOMT_STATUS_T sent = {0, nullptr, 128, text, 0};
    QCOMPARE(root->SetMMSMoMtStatus(id, &sent), int(MMS_ENG_OK));
    QCOMPARE(int(read(id).getResponseStatus()), 128);
    QCOMPARE(read(id).getResponseText(), "größe 你好");
}

void TestWmmsmsgEngine::largeBody()
{
    const StorageRoot root;
    QByteArray film(5 * 1000 * 1000, Qt::Uninitialized);
    for (qsizetype i = 0; i < film.size(); ++i) {
        film[i] = char(i * i >> 7);
    }
    WMMSMsg out;
    out.setContentType(typeOf(kMixed));
    out.getMultiParts() = parentOf(kMixed, {partOf("video/mp4", film), partOf("text/plain", "a")});
    const WMMSMsg in = read(stored(out));
    QVERIFY(in.getMultiParts().subParts()->first().getData() == bytesOf(film));
    QCOMPARE(hexOf(in.getMultiParts().subParts()->last().getData()), QByteArray("61"));
}

void TestWmmsmsgEngine::rootKeepsThePathOfTheLastFile()
{
    const StorageRoot root;
    const WMMSMsg in = read(stored(wholeMessage()));
    QCOMPARE(in.getMultiParts().getLocalFileName(), root.store() + "parts/1.part");
}

void TestWmmsmsgEngine::bodyThatIsGone()
{
    const StorageRoot root;
    const Id id = stored(wholeMessage());
    QVERIFY(QFile::remove(root.store() + "parts/1.part"));
    WMMSMsg message;
    QCOMPARE(message.constructWMMSMsg(id, nullptr, true, 0), 111U);
    QCOMPARE(message.constructWMMSMsg(id, nullptr, false, 0), 100U);
}

void TestWmmsmsgEngine::storeRefuses()
{
    const StorageRoot root;
    QFile file(root.path() + "/mms");
    QVERIFY(file.open(QIODevice::WriteOnly));
    WMMSMsg message = wholeMessage();
    Id id = MMS_ENG_INVALID_ID;
    QCOMPARE(message.constructEngMsg(&id, 1), 301U);
    QCOMPARE(id, MMS_ENG_INVALID_ID);
    QCOMPARE(message.constructWMMSMsg(1, nullptr, true, 0), 113U);
}

QTEST_GUILESS_MAIN(TestWmmsmsgEngine)
#include "tst_wmmsmsg_engine.moc"

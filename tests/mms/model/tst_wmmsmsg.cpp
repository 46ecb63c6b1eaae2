// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmsg.h"

#include "mms/codec/fields.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"
#include "tests/support/present_fields.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>

namespace {

QString addresses(const QList<WMFMEntry> &entries)
{
    QStringList texts;
    for (const WMFMEntry &entry : entries) {
        texts += QString("%1 %2 %3")
                     .arg(entry.getEntryType())
                     .arg(entry.getEntryVal(), entry.getContactName());
    }
    return texts.join("; ");
}

QString text(const QString &value)
{
    return value;
}
QString text(const QList<WMFMEntry> &value)
{
    return addresses(value);
}
QString text(const WMFMEntry &value)
{
    return addresses({value});
}
QString text(const WMMSContentType &value)
{
    return value.getMimeType();
}
QString text(const QDateTime &value)
{
    return value.toString(Qt::ISODate);
}
template <typename Number> QString text(Number value)
{
    return QString::number(value);
}

// One header field: a value set, how it reads, and how it reads in a message without values.
struct Field {
    int id;
    const char *name;
    std::function<bool(WMMSMsg &)> set;
    std::function<QString(WMMSMsg &)> get;
    QString shown;
    QString cleared;
};

template <typename Setter, typename Value, typename Getter>
Field field(int id, const char *name, Setter setter, const Value &value, Getter getter,
            const char *shown, const char *cleared)
{
    return {id,
            name,
            [=](WMMSMsg &message) { return (message.*setter)(value); },
            [=](WMMSMsg &message) { return text((message.*getter)()); },
            shown,
            cleared};
}

using M = WMMSMsg;
using SetList = bool (M::*)(const QList<WMFMEntry> &);

const QDateTime kDate(QDate(2004, 2, 29), QTime(12, 34, 56));
const QList<WMFMEntry> kTwo = {WMFMEntry(1, "123", "Ann"), WMFMEntry(0, "b@x")};
const char *const kTwoShown = "1 123 Ann; 0 b@x ";
const char *const kNull = nullptr;

// clang-format off
const QList<Field> kFields = {
    field(1, "bcc", SetList(&M::setBcc), kTwo, &M::getBcc, kTwoShown, kNull),
    field(2, "cc", SetList(&M::setCc), kTwo, &M::getCc, kTwoShown, kNull),
    field(3, "content location", &M::setContentLocation, "http://x", &M::getContentLocation, "http://x", kNull),
    field(4, "content type", &M::setContentType, typeOf("a/b"), &M::getContentType, "a/b", ""),
    field(5, "date", &M::setDate, kDate, &M::getDate, "2004-02-29T12:34:56", kNull),
    field(6, "delivery report", &M::setDeliveryReportNecessity, true, &M::getDeliveryReportNecessity, "1", "0"),
    field(7, "delivery time", &M::setDeliveryTime, kDate, &M::getDeliveryTime, "2004-02-29T12:34:56", kNull),
    field(8, "expiry", &M::setExpiryTime, 0xFFFFFFFE, &M::getExpiryTime, "4294967294", "4294967295"),
    field(9, "from", &M::setFrom, kTwo[0], &M::getFrom, "1 123 Ann", "127  "),
    field(10, "class", &M::setMsgClass, 131, &M::getMsgClass, "131", "0"),
    field(11, "message id", &M::setMsgID, "id", &M::getMsgID, "id", kNull),
    field(12, "PDU type", &M::setPDUType, 0x84, &M::getPDUType, "132", "0"),
    field(13, "version", &M::setVersion, 0x12, &M::getVersion, "18", "0"),
    field(14, "size", &M::setMsgSize, -5, &M::getMsgSize, "-5", "0"),
    field(15, "priority", &M::setPriority, 130, &M::getPriority, "130", "0"),
    field(16, "read report", &M::setReadReportNecessity, true, &M::getReadReportNecessity, "1", "0"),
    field(17, "report allowed", &M::setReportAllowedity, true, &M::getReportAllowedity, "1", "0"),
    field(18, "response status", &M::setResponseStatus, 224, &M::getResponseStatus, "224", "0"),
    field(19, "response text", &M::setResponseText, "no", &M::getResponseText, "no", kNull),
    field(20, "sender visibility", &M::setSenderVisibility, true, &M::getSenderVisibility, "1", "0"),
    field(21, "status", &M::setMsgStatus, 129, &M::getMsgStatus, "129", "0"),
    field(22, "subject", &M::setSubject, "s", &M::getSubject, "s", kNull),
    field(23, "to", SetList(&M::setTo), kTwo, &M::getTo, kTwoShown, kNull),
    field(24, "transaction id", &M::setTransactionID, "t", &M::getTransactionID, "t", kNull),
};
// clang-format on

void setAll(WMMSMsg &message)
{
    for (const Field &field : kFields) {
        field.set(message);
    }
}

} // namespace

class TestWMMSMsg : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void startsAsAStoredMessage();
    void everyFieldIsListed();
    void settersMarkTheirField_data() { rows(); }
    void settersMarkTheirField();
    void gettersDoNotAskTheMask();
    void copiesHaveEveryField_data() { rows(); }
    void copiesHaveEveryField();
    void copiesAreDeep();
    void copiesHaveTheAttributes();
    void isAssignedToItself();
    void clearLeavesNoField_data() { rows(); }
    void clearLeavesNoField();
    void clearLeavesTheRest();
    void initGivesTheDefaults();
    void entriesAreAppended();
    void anEntryOfTheListItself();
    void appendingLeavesACopyAlone();
    void replacingLists();
    void applicationIdentifiers();
    void theContentTypeKeepsThem();
    void theContentTypeReplacesOneOfThem();
    void noIdentifierIsNoParameter();
    void theBody();
    void theBodyFromItsOwnPart();
    void selectField_data() { rows(); }
    void selectField();
    void selectFieldOfNoField();
    void theCodecsAreThoseOfTheFields();
    void partCopiesOutliveTheMessage();
    void nothingIsLogged();

private:
    static void rows()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < kFields.size(); ++row) {
            QTest::newRow(kFields[row].name) << row;
        }
    }
};

void TestWMMSMsg::startsAsAStoredMessage()
{
    WMMSMsg message;
    QCOMPARE(present(message), (QList<int>{10, 15, 20}));
    QCOMPARE(int(message.getMsgType()), 0);
    QCOMPARE(int(message.getPDUType()), 135);
    QCOMPARE(int(message.getPriority()), 1);
    QCOMPARE(int(message.getMsgClass()), 128);
    QVERIFY(message.getSenderVisibility());
    QCOMPARE(message.getExpiryTime(), 0xFFFFFFFFU);
    QCOMPARE(message.headerLength(), 0);
    QCOMPARE(message.bodyLength(), 0);
    QCOMPARE(int(message.getUPIType()), 12);
    QCOMPARE(int(message.getMMSType()), 255);
    QVERIFY(!message.getAudioExistence());
    QVERIFY(!message.getVideoExistence());
    QVERIFY(!message.getAttachmentExistence());
    QVERIFY(message.getMultiParts().isEmpty());
    for (const Field &field : kFields) {
        if (!QList<int>{10, 12, 15, 20}.contains(field.id)) {
            QCOMPARE(field.get(message), field.cleared);
        }
    }
}

void TestWMMSMsg::everyFieldIsListed()
{
    for (int n = 0; n < 24; ++n) {
        QCOMPARE(kFields[n].id, n + 1);
    }
    QCOMPARE(kFields.size(), 24);
}

void TestWMMSMsg::settersMarkTheirField()
{
    QFETCH(int, row);
    const Field &field = kFields[row];
    WMMSMsg message;
    message.clear();
    QVERIFY(field.set(message));
    QCOMPARE(present(message), QList<int>{field.id});
    QCOMPARE(field.get(message), field.shown);
    for (const Field &other : kFields) {
        if (other.id != field.id) {
            QCOMPARE(other.get(message), other.cleared);
        }
    }
}

void TestWMMSMsg::gettersDoNotAskTheMask()
{
    WMMSMsg message;
    message.getTo().append(kTwo[0]);
    QCOMPARE(addresses(message.getTo()), QString("1 123 Ann"));
    QVERIFY(!message.fieldIsPresent(23));
    message.setSubject("");
    QVERIFY(!message.getSubject().isNull());
    message.setSubject(QString());
    QVERIFY(message.getSubject().isNull());
    QVERIFY(message.fieldIsPresent(22));
}

void TestWMMSMsg::copiesHaveEveryField()
{
    QFETCH(int, row);
    const Field &field = kFields[row];
    WMMSMsg message;
    message.clear();
    field.set(message);
    WMMSMsg copy(message);
    WMMSMsg assigned;
    assigned = message;
    for (WMMSMsg *same : {&copy, &assigned}) {
        QCOMPARE(present(*same), QList<int>{field.id});
        QCOMPARE(field.get(*same), field.shown);
        QCOMPARE(field.get(message), field.shown);
    }
}

void TestWMMSMsg::copiesAreDeep()
{
    WMMSMsg message;
    setAll(message);
    WMMSMsg copy(message);
    copy.clear();
    for (const Field &field : kFields) {
        QCOMPARE(field.get(message), field.shown);
        QVERIFY(message.fieldIsPresent(static_cast<unsigned char>(field.id)));
    }
}

void TestWMMSMsg::copiesHaveTheAttributes()
{
    WMMSMsg message;
    message.setAudioExistence(true);
    message.setVideoExistence(true);
    message.setAttachmentExistence(true);
    message.setUPIType(7);
    message.setMMSType(6);
    message.setContentType(typeOf("image/gif"));
    message.getMultiParts().setData(bytesOf("abc"));
    QArray<char> pdu;
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), 200U);

    WMMSMsg copy(message);
    WMMSMsg assigned;
    assigned = message;
    for (WMMSMsg *same : {&copy, &assigned}) {
        QVERIFY(same->getAudioExistence());
        QVERIFY(same->getVideoExistence());
        QVERIFY(same->getAttachmentExistence());
        QCOMPARE(int(same->getUPIType()), 7);
        QCOMPARE(int(same->getMMSType()), 6);
        QCOMPARE(same->headerLength(), message.headerLength());
        QCOMPARE(same->bodyLength(), 3);
        QCOMPARE(shown(same->getMultiParts()), shown(message.getMultiParts()));
    }
    LogCapture log;
    copy.printMsg();
    QVERIFY(log.lines().contains("msgDBID: -1"));
}

void TestWMMSMsg::isAssignedToItself()
{
    WMMSMsg message;
    setAll(message);
    message.getMultiParts().setData(bytesOf("abc"));
    const WMMSMsg &same = message;
    message = same;
    QCOMPARE(message.getSubject(), QString("s"));
    QCOMPARE(hexOf(message.getMultiParts().getData()), toHex("abc"));
    QCOMPARE(present(message).size(), 24);
}

void TestWMMSMsg::clearLeavesNoField()
{
    QFETCH(int, row);
    const Field &field = kFields[row];
    WMMSMsg message;
    setAll(message);
    message.clear();
    QCOMPARE(present(message), QList<int>());
    QCOMPARE(field.get(message), field.cleared);
    QCOMPARE(field.get(message).isNull(), field.cleared.isNull());
}

void TestWMMSMsg::clearLeavesTheRest()
{
    WMMSMsg message;
    message.setUPIType(7);
    message.setMMSType(6);
    message.setAudioExistence(true);
    message.setVideoExistence(true);
    message.setAttachmentExistence(true);
    message.setContentType(typeOf(kMixed));
    message.getMultiParts().getSubMmsMultipartList().append(partOf("image/gif", "abc"));
    message.getMultiParts().setContentID("<root>");
    message.getMultiParts().setData(bytesOf("root"));
    QArray<char> pdu;
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), 200U);
    const int headerLength = message.headerLength();
    const int bodyLength = message.bodyLength();

    message.clear();
    QCOMPARE(int(message.getUPIType()), 7);
    QCOMPARE(int(message.getMMSType()), 6);
    QVERIFY(message.getAudioExistence());
    QVERIFY(message.getVideoExistence());
    QVERIFY(message.getAttachmentExistence());
    QCOMPARE(message.headerLength(), headerLength);
    QCOMPARE(message.bodyLength(), bodyLength);
    QVERIFY(!message.getMultiParts().subParts());
    QCOMPARE(message.getMultiParts().getContentID(), QString("<root>"));
    QCOMPARE(hexOf(message.getMultiParts().getData()), toHex("root"));
    QCOMPARE(int(message.getPDUType()), 0);
}

void TestWMMSMsg::initGivesTheDefaults()
{
    WMMSMsg message;
    setAll(message);
    message.setUPIType(7);
    message.setMMSType(6);
    message.setAudioExistence(true);
    message.setVideoExistence(true);
    message.setAttachmentExistence(true);
    message.getMultiParts().setData(bytesOf("abc"));
    QArray<char> pdu;
    message.setContentType(typeOf("image/gif"));
    message.setPDUType(0x80);
    message.setMsgSize(1);
    QCOMPARE(message.packTo(pdu, nullptr, nullptr), 200U);
    QCOMPARE(message.bodyLength(), 3);

    message.init();
    QCOMPARE(present(message), (QList<int>{10, 15, 20}));
    QCOMPARE(int(message.getPDUType()), 135);
    QCOMPARE(int(message.getPriority()), 1);
    QCOMPARE(int(message.getMsgClass()), 128);
    QVERIFY(message.getSenderVisibility());
    QVERIFY(message.getSubject().isNull());
    QCOMPARE(message.getTo().size(), 0);
    QCOMPARE(int(message.getUPIType()), 12);
    QCOMPARE(int(message.getMMSType()), 255);
    QVERIFY(!message.getAudioExistence());
    QVERIFY(!message.getVideoExistence());
    QVERIFY(!message.getAttachmentExistence());
    QCOMPARE(message.headerLength(), 0);
    QCOMPARE(message.bodyLength(), 0);
    QCOMPARE(hexOf(message.getMultiParts().getData()), toHex("abc"));
}

void TestWMMSMsg::entriesAreAppended()
{
    WMMSMsg message;
    message.clear();
    WMFMMsg &base = message;
    QVERIFY(base.setTo(WMFMEntry(1, "1")));
    QCOMPARE(present(message), QList<int>{23});
    QVERIFY(message.setTo(WMFMEntry(1, "2")));
    QVERIFY(message.setTo(WMFMEntry(1, "3")));
    QCOMPARE(addresses(message.getTo()), QString("1 1 ; 1 2 ; 1 3 "));
    QVERIFY(message.setCc(WMFMEntry(0, "c@x")));
    QCOMPARE(present(message), (QList<int>{2, 23}));
    QVERIFY(message.setBcc(WMFMEntry(0, "b@x")));
    QCOMPARE(present(message), (QList<int>{1, 2, 23}));
    QCOMPARE(addresses(message.getCc()), QString("0 c@x "));
    QCOMPARE(addresses(message.getBcc()), QString("0 b@x "));
}

void TestWMMSMsg::anEntryOfTheListItself()
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, "1"));
    for (int n = 0; n < 20; ++n) {
        message.setTo(message.getTo().first());
    }
    QCOMPARE(message.getTo().size(), 21);
    QCOMPARE(message.getTo().last().getEntryVal(), QString("1"));
    message.setTo(message.getTo());
    QCOMPARE(message.getTo().size(), 21);
}

void TestWMMSMsg::appendingLeavesACopyAlone()
{
    WMMSMsg message;
    setAll(message);
    WMMSMsg copy(message);
    message.setTo(WMFMEntry(1, "new"));
    message.setCc(WMFMEntry(1, "new"));
    message.setBcc(WMFMEntry(1, "new"));
    message.getTo().first().setEntryVal("changed");
    QCOMPARE(addresses(copy.getTo()), QString(kTwoShown));
    QCOMPARE(addresses(copy.getCc()), QString(kTwoShown));
    QCOMPARE(addresses(copy.getBcc()), QString(kTwoShown));
    QCOMPARE(message.getTo().size(), 3);
}

void TestWMMSMsg::replacingLists()
{
    WMMSMsg message;
    message.setTo(kTwo);
    message.setTo(QList<WMFMEntry>{WMFMEntry(1, "9")});
    QCOMPARE(addresses(message.getTo()), QString("1 9 "));
    message.setTo(QList<WMFMEntry>());
    QCOMPARE(message.getTo().size(), 0);
    QVERIFY(message.fieldIsPresent(23));
}

// the name is spelled "Auxillary-Application-Information"
void TestWMMSMsg::applicationIdentifiers()
{
    WMMSMsg message;
    message.clear();
    QVERIFY(message.getAppID().isNull());
    QVERIFY(message.setAppID("app"));
    QVERIFY(message.setReplyAppID("reply"));
    QVERIFY(message.setAuxAppInfo("aux"));
    QCOMPARE(message.getAppID(), QString("app"));
    QCOMPARE(message.getReplyAppID(), QString("reply"));
    QCOMPARE(message.getAuxAppInfo(), QString("aux"));
    const QMap<QString, QString> expected = {{"Application-ID", "app"},
                                             {"Reply-To-Application-ID", "reply"},
                                             {"Auxillary-Application-Information", "aux"}};
    QCOMPARE(message.getContentType().params(), expected);
    QCOMPARE(present(message), QList<int>());
}

void TestWMMSMsg::theContentTypeKeepsThem()
{
    WMMSMsg message;
    message.setAppID("app");
    message.setReplyAppID("reply");
    message.setAuxAppInfo("aux");
    QVERIFY(message.setContentType(typeOf("image/gif")));
    QCOMPARE(message.getContentType().getMimeType(), QString("image/gif"));
    QCOMPARE(message.getAppID(), QString("app"));
    QCOMPARE(message.getReplyAppID(), QString("reply"));
    QCOMPARE(message.getAuxAppInfo(), QString("aux"));
    QVERIFY(message.setContentType(message.header().contentType));
    QCOMPARE(message.getContentType().params().size(), 3);
}

void TestWMMSMsg::theContentTypeReplacesOneOfThem()
{
    for (const char *name :
         {"Application-ID", "Reply-To-Application-ID", "Auxillary-Application-Information"}) {
        WMMSMsg message;
        message.setAppID("app");
        message.setReplyAppID("reply");
        message.setAuxAppInfo("aux");
        message.setContentType(typeOf("image/gif", {{name, "new"}, {"name", "n"}}));
        QMap<QString, QString> expected = {{"Application-ID", "app"},
                                           {"Reply-To-Application-ID", "reply"},
                                           {"Auxillary-Application-Information", "aux"},
                                           {"name", "n"}};
        expected[name] = "new";
        QCOMPARE(message.getContentType().params(), expected);
    }
}

void TestWMMSMsg::noIdentifierIsNoParameter()
{
    WMMSMsg message;
    message.setContentType(typeOf("image/gif"));
    QCOMPARE(message.getContentType().getParamCount(), 0);
    message.setAppID("app");
    message.setAppID("");
    QCOMPARE(message.getContentType().getParamCount(), 0);
}

void TestWMMSMsg::theBody()
{
    WMMSMsg message;
    message.clear();
    const WMMSMultipart root = parentOf(kMixed, {partOf("image/gif", "x")});
    QVERIFY(message.setMultiParts(root));
    QCOMPARE(shown(message.getMultiParts()), shown(root));
    QCOMPARE(present(message), QList<int>());
    const WMMSMsg copy(message);
    message.getMultiParts().getSubMmsMultipartList().clear();
    QCOMPARE(copy.getMultiParts().subParts()->size(), 1);
}

void TestWMMSMsg::theBodyFromItsOwnPart()
{
    WMMSMsg message;
    message.setMultiParts(parentOf(kMixed, {partOf("image/gif", "x", "<i>")}));
    message.setMultiParts(message.getMultiParts().subParts()->first());
    QCOMPARE(shown(message.getMultiParts()), QByteArray("image/gif id=<i> at=<i> [78]"));
}

void TestWMMSMsg::selectField()
{
    QFETCH(int, row);
    const Field &field = kFields[row];
    WMMSMsg message;
    setAll(message);
    const std::unique_ptr<MsgFieldBase> codec(
        WMMSMsg::selectField(static_cast<unsigned char>(field.id)));
    QVERIFY(codec);
    const std::unique_ptr<MsgFieldBase> another(
        WMMSMsg::selectField(static_cast<unsigned char>(field.id)));
    QVERIFY(codec != another);
    MMS_HDR_S header = message.header();
    header.contentType = typeOf("image/gif");
    header.msgSize = 5;
    char bytes[200];
    WSP_Stream stream(bytes, sizeof bytes);
    QCOMPARE(codec->write(stream, &header), 1U);
    QCOMPARE(int(quint8(bytes[0])), field.id | 0x80);
}

void TestWMMSMsg::selectFieldOfNoField()
{
    QVERIFY(!WMMSMsg::selectField(0));
    for (int id = 25; id < 256; ++id) {
        QVERIFY(!WMMSMsg::selectField(static_cast<unsigned char>(id)));
    }
}

void TestWMMSMsg::theCodecsAreThoseOfTheFields()
{
    const auto is = [](auto *codec, unsigned char id) {
        const std::unique_ptr<MsgFieldBase> made(WMMSMsg::selectField(id));
        return dynamic_cast<decltype(codec)>(made.get()) != nullptr;
    };
    // clang-format off
    QVERIFY(is(static_cast<Field_Bcc *>(nullptr), 1));
    QVERIFY(is(static_cast<Field_Cc *>(nullptr), 2));
    QVERIFY(is(static_cast<Field_ContentLocation *>(nullptr), 3));
    QVERIFY(is(static_cast<Field_ContentType *>(nullptr), 4));
    QVERIFY(is(static_cast<Field_MsgDate *>(nullptr), 5));
    QVERIFY(is(static_cast<Field_DeliveryReport *>(nullptr), 6));
    QVERIFY(is(static_cast<Field_DeliveryTime *>(nullptr), 7));
    QVERIFY(is(static_cast<Field_Expiry *>(nullptr), 8));
    QVERIFY(is(static_cast<Field_From *>(nullptr), 9));
    QVERIFY(is(static_cast<Field_MsgClass *>(nullptr), 10));
    QVERIFY(is(static_cast<Field_MsgID *>(nullptr), 11));
    QVERIFY(is(static_cast<Field_MsgType *>(nullptr), 12));
    QVERIFY(is(static_cast<Field_Version *>(nullptr), 13));
    QVERIFY(is(static_cast<Field_MsgSize *>(nullptr), 14));
    QVERIFY(is(static_cast<Field_Priority *>(nullptr), 15));
    QVERIFY(is(static_cast<Field_ReadReport *>(nullptr), 16));
    QVERIFY(is(static_cast<Field_ReportAllowed *>(nullptr), 17));
    QVERIFY(is(static_cast<Field_ResponseStatus *>(nullptr), 18));
    QVERIFY(is(static_cast<Field_ResponseText *>(nullptr), 19));
    QVERIFY(is(static_cast<Field_SenderVisibility *>(nullptr), 20));
    QVERIFY(is(static_cast<Field_MsgStatus *>(nullptr), 21));
    QVERIFY(is(static_cast<Field_Subject *>(nullptr), 22));
    QVERIFY(is(static_cast<Field_To *>(nullptr), 23));
    QVERIFY(is(static_cast<Field_TID *>(nullptr), 24));
    // clang-format on
}

void TestWMMSMsg::partCopiesOutliveTheMessage()
{
    WMMSMultipart part;
    {
        WMMSMsg message;
        QArray<char> pdu = arrayOf("84 A3  01 01 03 9D 61 62 63");
        QCOMPARE(message.construct(pdu, true), 100U);
        part = message.getMultiParts().subParts()->first();
    }
    QCOMPARE(hexOf(part.getData()), toHex("abc"));
    part.getData()[0] = 'x';
    QVERIFY(part.getData().resize(1000));
    QCOMPARE(part.getData()[0], 'x');
}

void TestWMMSMsg::nothingIsLogged()
{
    LogCapture log;
    WMMSMsg message;
    setAll(message);
    message.clear();
    message.init();
    const WMMSMsg copy(message);
    delete WMMSMsg::selectField(25);
    QCOMPARE(log.lines(), QStringList());
}

QTEST_GUILESS_MAIN(TestWMMSMsg)

#include "tst_wmmsmsg.moc"

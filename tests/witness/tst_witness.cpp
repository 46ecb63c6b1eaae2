// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/support/hex.h"
#include "tests/witness/witness.h"

#include <QtTest/QtTest>

#include <ctime>

/// tshark reads a PDU of every type that leaves the device, and must find what was set. The stored
/// form (0x87) never leaves it and is unknown to others.

using Fields = QMap<QString, QStringList>;

namespace {

const QString kSmil = QStringLiteral("<smil><body><par dur=\"5s\"><img src=\"cat.jpg\"/>"
                                     "<text src=\"text.txt\"/></par></body></smil>");
const QString kText = QStringLiteral("Grüße aus Köln, 5 €");
const QString kSubject = QStringLiteral("Grüße");

/// A picture that needs several TCP segments: a JPEG with a long comment.
QByteArray picture()
{
    constexpr int kCommentSize = 5000;
    return fromHex("FF D8  FF E0 00 10 4A 46 49 46 00 01 01 00 00 01 00 01 00 00  FF FE 13 8A")
        + QByteArray(kCommentSize, 'c') + fromHex("FF D9");
}

/// Audio is none of the media that go out as a number.
QByteArray sound()
{
    return "#!AMR\n" + QByteArray(100, '\x3C');
}

QArray<char> arrayOf(const QByteArray &bytes)
{
    return QArray<char>(QByteArrayView(bytes));
}

WMMSMultipart part(const QString &type, const QString &id, const QString &location,
                   const QByteArray &data)
{
    WMMSContentType contentType;
    contentType.setMimeType(type);
    WMMSMultipart made;
    made.setContentID(id);
    made.setContentLocation(location);
    made.setContentType(contentType);
    made.setData(arrayOf(data));
    return made;
}

/// A root with a presentation, a picture, a text and a sound.
WMMSMultipart slideShow()
{
    WMMSMultipart root;
    root.setSubMmsMultipart({part("application/smil", "<smil>", "slides.smil", kSmil.toUtf8()),
                             part("image/jpeg", "<cat>", "cat.jpg", picture()),
                             part("text/plain", "<text>", "text.txt", kText.toUtf8()),
                             part("audio/amr", "<purr>", "purr.amr", sound())});
    return root;
}

WMMSContentType relatedType()
{
    WMMSContentType type;
    type.setMimeType("application/vnd.wap.multipart.related");
    type.setParamStart("<smil>");
    type.setParamType("application/smil");
    return type;
}

/// What every PDU begins with.
WMMSMsg messageOf(unsigned char pduType, const QString &transactionId)
{
    WMMSMsg message;
    message.setPDUType(pduType);
    message.setTransactionID(transactionId);
    message.setVersion(0x10);
    return message;
}

QByteArray encode(WMMSMsg message)
{
    QArray<char> pdu;
    return message.packTo(pdu, nullptr, nullptr) == MMS_ENCODE_OK ? pdu.toByteArray()
                                                                  : QByteArray();
}

/// An encoded string on the wire, in the form of toHex(): for values below 29 bytes. A quote stands
/// before a text that does not begin in ASCII.
QString encodedField(unsigned char id, const QString &text)
{
    const QByteArray bytes = (text.front() > QChar(0x7F) ? "\x7F" : "") + text.toUtf8();
    return toHex(QByteArray(1, char(id | 0x80)) + char(bytes.size() + 2) + '\xEA' + bytes + '\0');
}

/// tshark writes the quote of a quoted string around a text once more.
QString quoted(const QString &text)
{
    return '"' + text + '"';
}

} // namespace

class TestWitness : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void sendRequest();
    void sendConfirmation();
    void notification();
    void notifyResponse();
    void retrieveConfirmation();
    void retrievedPicture();
    void acknowledge();
    void deliveryIndication();
    void truncationIsSeen();

private:
    /// Lets tshark read `pdu`, which must be encoded, free of complaints and an MMS message. The
    /// header fields must be `expected`; `inBytes` holds those to compare by their bytes.
    void compareFields(const QByteArray &pdu, Direction direction, const Fields &expected,
                       const Fields &inBytes, Testimony &testimony);
    void compareSlideShow(const Testimony &testimony);

    Witness m_witness;
};

void TestWitness::initTestCase()
{
    // Dates are set in local time and must leave in UTC.
    qputenv("TZ", "CET-1");
    tzset();
    appLogModuleStream = appLogDiscardStream();
    QVERIFY2(Witness::isPresent(), "tshark is not installed: run scripts/install-deps");
}

void TestWitness::compareFields(const QByteArray &pdu, Direction direction, const Fields &expected,
                                const Fields &inBytes, Testimony &testimony)
{
    QVERIFY2(!pdu.isEmpty(), "the message was not encoded");
    QCOMPARE(m_witness.complaintsAbout(pdu, direction), 0);
    testimony = m_witness.read(pdu, direction);
    QVERIFY2(!testimony.isEmpty(), "tshark saw no MMS message");
    Fields fields = testimony.fields();
    for (auto field = inBytes.cbegin(); field != inBytes.cend(); ++field) {
        QVERIFY2(fields.remove(field.key()) == 1, qPrintable(field.key()));
        QCOMPARE(testimony.bytesOf(field.key()), field.value());
    }
    QCOMPARE(fields.keys(), expected.keys());
    for (auto field = expected.cbegin(); field != expected.cend(); ++field) {
        QCOMPARE(fields.value(field.key()), field.value());
    }
}

void TestWitness::compareSlideShow(const Testimony &testimony)
{
    struct Row {
        QString type;
        QString charset;
        QString name;
        QString id;
        QByteArray data;
    };
    const Row kParts[] = {
        {"application/smil", "", "slides.smil", "<smil>", kSmil.toUtf8()},
        {"image/jpeg", "", "cat.jpg", "<cat>", picture()},
        {"text/plain", "UTF-8", "text.txt", "<text>", kText.toUtf8()},
        {"audio/amr", "", "purr.amr", "<purr>", sound()},
    };
    QCOMPARE(testimony.contentType(), "application/vnd.wap.multipart.related");
    QCOMPARE(testimony.start(), "<smil>");
    QCOMPARE(testimony.startType(), "application/smil");
    const QList<WitnessedPart> parts = testimony.parts();
    QCOMPARE(parts.size(), qsizetype(std::size(kParts)));
    for (qsizetype n = 0; n < parts.size(); ++n) {
        QCOMPARE(parts[n].type, kParts[n].type);
        QCOMPARE(parts[n].charset, kParts[n].charset);
        QCOMPARE(parts[n].name, kParts[n].name);
        QCOMPARE(parts[n].location, kParts[n].name);
        QCOMPARE(parts[n].id, quoted(kParts[n].id));
        QCOMPARE(parts[n].data.size(), kParts[n].data.size());
        QCOMPARE(toHex(parts[n].data), toHex(kParts[n].data));
    }
}

void TestWitness::sendRequest()
{
    WMMSMsg message = messageOf(MMS_PDU_SEND_REQ, "send-1");
    message.setDate(QDateTime(QDate(2004, 11, 9), QTime(12, 33, 20)));
    message.setFrom(WMFMEntry(1, "+4915112345"));
    message.setTo(WMFMEntry(1, "+4915154321", "Bo"));
    message.setTo(WMFMEntry(0, "ann@example.org", "Ann"));
    message.setCc(WMFMEntry(1, "12345"));
    message.setCc(WMFMEntry(0, "cc@example.org"));
    message.setBcc(WMFMEntry(0, "jürgen@example.org"));
    message.setSubject(kSubject);
    message.setMsgClass(129);
    message.setExpiryTime(3600);
    message.setDeliveryTime(QDateTime(QDate(2004, 11, 10), QTime(0, 0, 0)));
    message.setPriority(130);
    message.setSenderVisibility(false);
    message.setDeliveryReportNecessity(true);
    message.setReadReportNecessity(false);
    message.setContentType(relatedType());
    message.setMultiParts(slideShow());

    const Fields expected = {{"message_type", {"0x80"}},
                             {"transaction_id", {"send-1"}},
                             {"mms_version", {"1.0"}},
                             {"date", {"Nov  9, 2004 11:33:20.000000000 UTC"}},
                             {"from", {"+4915112345/TYPE=PLMN"}},
                             {"to", {"+4915154321/TYPE=PLMN", "ann@example.org"}},
                             {"cc", {"12345/TYPE=PLMN", "cc@example.org"}},
                             {"message_class.id", {"0x81"}},
                             {"expiry.rel", {"3600.000000000"}},
                             {"delivery_time.abs", {"Nov  9, 2004 23:00:00.000000000 UTC"}},
                             {"priority", {"0x82"}},
                             {"sender_visibility", {"0x80"}},
                             {"delivery_report", {"0x80"}},
                             {"read_report", {"0x81"}}};
    const Fields inBytes = {{"subject", {encodedField(22, kSubject)}},
                            {"bcc", {encodedField(1, "jürgen@example.org")}}};
    Testimony testimony({});
    compareFields(encode(message), Direction::Request, expected, inBytes, testimony);
    compareSlideShow(testimony);
}

void TestWitness::sendConfirmation()
{
    WMMSMsg message = messageOf(MMS_PDU_SEND_CONF, "send-1");
    message.setResponseStatus(225);
    message.setResponseText("denied");
    message.setMsgID("id-1@mmsc.example.org");
    Testimony testimony({});
    compareFields(encode(message), Direction::Response,
                  {{"message_type", {"0x81"}},
                   {"transaction_id", {"send-1"}},
                   {"mms_version", {"1.0"}},
                   {"response_status", {"0xe1"}},
                   {"response_text", {"denied"}},
                   {"message_id", {"id-1@mmsc.example.org"}}},
                  {}, testimony);
}

void TestWitness::notification()
{
    WMMSMsg message = messageOf(MMS_PDU_NOTIFICATION_IND, "push-1");
    message.setVersion(0x12);
    message.setFrom(WMFMEntry(0, "ann@example.org"));
    message.setSubject("Überraschung");
    message.setMsgClass(131);
    message.setMsgSize(300000);
    message.setExpiryTime(604800);
    message.setContentLocation("http://mmsc.example.org/m?id=1");
    Testimony testimony({});
    compareFields(encode(message), Direction::Response,
                  {{"message_type", {"0x82"}},
                   {"transaction_id", {"push-1"}},
                   {"mms_version", {"1.2"}},
                   {"from", {"ann@example.org"}},
                   {"message_class.id", {"0x83"}},
                   {"message_size", {"300000"}},
                   {"expiry.rel", {"604800.000000000"}},
                   {"content_location", {"http://mmsc.example.org/m?id=1"}}},
                  {{"subject", {encodedField(22, "Überraschung")}}}, testimony);
}

void TestWitness::notifyResponse()
{
    WMMSMsg message = messageOf(MMS_PDU_NOTIFYRESP_IND, "push-1");
    message.setMsgStatus(131);
    message.setReportAllowedity(false);
    Testimony testimony({});
    compareFields(encode(message), Direction::Request,
                  {{"message_type", {"0x83"}},
                   {"transaction_id", {"push-1"}},
                   {"mms_version", {"1.0"}},
                   {"status", {"0x83"}},
                   {"report_allowed", {"0x81"}}},
                  {}, testimony);
}

void TestWitness::retrieveConfirmation()
{
    WMMSMsg message = messageOf(MMS_PDU_RETRIEVE_CONF, "get-1");
    message.setMsgID("id-2@mmsc.example.org");
    message.setDate(QDateTime(QDate(2004, 11, 9), QTime(12, 33, 20)));
    message.setFrom(WMFMEntry(0, "ann@example.org"));
    message.setTo(WMFMEntry(1, "+4915112345"));
    message.setTo(WMFMEntry(1, "+4915154321"));
    message.setTo(WMFMEntry(0, "bo@example.org"));
    message.setCc(WMFMEntry(1, "12345"));
    message.setSubject(kSubject);
    message.setMsgClass(128);
    message.setPriority(128);
    message.setDeliveryReportNecessity(false);
    message.setReadReportNecessity(true);
    message.setContentType(relatedType());
    message.setMultiParts(slideShow());

    const Fields expected = {
        {"message_type", {"0x84"}},
        {"transaction_id", {"get-1"}},
        {"mms_version", {"1.0"}},
        {"message_id", {"id-2@mmsc.example.org"}},
        {"date", {"Nov  9, 2004 11:33:20.000000000 UTC"}},
        {"from", {"ann@example.org"}},
        {"to", {"+4915112345/TYPE=PLMN", "+4915154321/TYPE=PLMN", "bo@example.org"}},
        {"cc", {"12345/TYPE=PLMN"}},
        {"message_class.id", {"0x80"}},
        {"priority", {"0x80"}},
        {"delivery_report", {"0x81"}},
        {"read_report", {"0x80"}}};
    Testimony testimony({});
    compareFields(encode(message), Direction::Response, expected,
                  {{"subject", {encodedField(22, kSubject)}}}, testimony);
    compareSlideShow(testimony);
}

/// A body that is one picture, without a presentation.
void TestWitness::retrievedPicture()
{
    WMMSContentType type;
    type.setMimeType("image/jpeg");
    WMMSMultipart root;
    root.setData(arrayOf(picture()));
    WMMSMsg message = messageOf(MMS_PDU_RETRIEVE_CONF, "get-2");
    message.setDate(QDateTime(QDate(2004, 11, 9), QTime(12, 33, 20)));
    message.setPriority(129);
    message.setContentType(type);
    message.setMultiParts(root);
    Testimony testimony({});
    const QByteArray pdu = encode(message);
    compareFields(pdu, Direction::Response,
                  {{"message_type", {"0x84"}},
                   {"transaction_id", {"get-2"}},
                   {"mms_version", {"1.0"}},
                   {"date", {"Nov  9, 2004 11:33:20.000000000 UTC"}},
                   {"from", {"<insert address>"}},
                   {"message_class.id", {"0x80"}},
                   {"priority", {"0x81"}}},
                  {}, testimony);
    QCOMPARE(testimony.contentType(), "image/jpeg");
    QVERIFY(testimony.parts().isEmpty());
    QVERIFY(pdu.endsWith(picture()));
}

void TestWitness::acknowledge()
{
    WMMSMsg message = messageOf(MMS_PDU_ACKNOWLEDGE_IND, "get-1");
    message.setReportAllowedity(true);
    Testimony testimony({});
    compareFields(encode(message), Direction::Request,
                  {{"message_type", {"0x85"}},
                   {"transaction_id", {"get-1"}},
                   {"mms_version", {"1.0"}},
                   {"report_allowed", {"0x80"}}},
                  {}, testimony);
}

void TestWitness::deliveryIndication()
{
    WMMSMsg message = messageOf(MMS_PDU_DELIVERY_IND, "not-written");
    message.setMsgID("id-1@mmsc.example.org");
    message.setTo(WMFMEntry(1, "+4915154321"));
    message.setDate(QDateTime(QDate(2004, 11, 9), QTime(12, 33, 20)));
    message.setMsgStatus(129);
    Testimony testimony({});
    compareFields(encode(message), Direction::Response,
                  {{"message_type", {"0x86"}},
                   {"mms_version", {"1.0"}},
                   {"message_id", {"id-1@mmsc.example.org"}},
                   {"to", {"+4915154321/TYPE=PLMN"}},
                   {"date", {"Nov  9, 2004 11:33:20.000000000 UTC"}},
                   {"status", {"0x81"}}},
                  {}, testimony);
}

/// The check that nothing is malformed can fail: tshark complains of PDUs that are cut off.
void TestWitness::truncationIsSeen()
{
    WMMSMsg message = messageOf(MMS_PDU_RETRIEVE_CONF, "get-1");
    message.setFrom(WMFMEntry(0, "ann@example.org"));
    message.setContentType(relatedType());
    message.setMultiParts(slideShow());
    const QByteArray pdu = encode(message);
    QCOMPARE(m_witness.complaintsAbout(pdu, Direction::Response), 0);
    const qsizetype insideFrom = pdu.indexOf("ann@example.org") + 3;
    for (const qsizetype size : {pdu.size() - 1, pdu.size() - 200, insideFrom}) {
        QVERIFY2(m_witness.complaintsAbout(pdu.first(size), Direction::Response) > 0,
                 qPrintable(QString::number(size)));
    }
}

QTEST_GUILESS_MAIN(TestWitness)
#include "tst_witness.moc"

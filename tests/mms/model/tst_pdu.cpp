// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/support/parts.h"
#include "tests/support/present_fields.h"
#include "tests/support/time_zone.h"

#include <QtTest/QtTest>

#include <climits>

namespace {

// Every header field with a value, as it stands on the wire, and the first and the last number of
// bytes to which it may be cut and still reads: a text may lack its end, a subject counts as read.
struct WireField {
    int id;
    const char *hex;
    int readsFrom;
    int readsTo;
};

const WireField kWire[] = {
    {1, "81 31 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", 2, 99},
    {2, "82 32 32 2F 54 59 50 45 3D 50 4C 4D 4E 00", 2, 99},
    {3, "83 6C 6F 63 00", 2, 99},
    {4, "84 A3", 0, 0},
    {5, "85 02 03 E8", 0, 0},
    {6, "86 80", 0, 0},
    {7, "87 04 80 02 03 E9", 0, 0},
    {8, "88 04 81 02 0E 10", 0, 0},
    {9, "89 05 80 61 40 62 00", 4, 99},
    {10, "8A 81", 0, 0},
    {11, "8B 6D 69 64 00", 2, 99},
    {12, "8C 80", 0, 0},
    {13, "8D 90", 0, 0},
    {14, "8E 82", 0, 0},
    {15, "8F 82", 0, 0},
    {16, "90 81", 0, 0},
    {17, "91 80", 0, 0},
    {18, "92 E0", 0, 0},
    {19, "93 03 EA 72 00", 0, 0},
    {20, "94 80", 0, 0},
    {21, "95 81", 0, 0},
    {22, "96 03 EA 73 00", 1, 3},
    {23, "97 33 33 2F 54 59 50 45 3D 50 4C 4D 4E 00", 2, 99},
    {24, "98 74 00", 2, 99},
};

// Which fields a PDU of each type carries, in their order.
const QList<int> kOrders[] = {
    {12, 24, 13, 5, 9, 23, 2, 1, 22, 10, 8, 7, 15, 20, 6, 16, 4},
    {12, 24, 13, 18, 19, 11},
    {12, 24, 13, 9, 22, 10, 14, 8, 3},
    {12, 24, 13, 21, 17},
    {12, 24, 13, 11, 5, 9, 23, 2, 1, 22, 10, 15, 6, 16, 4},
    {12, 24, 13, 17},
    // the delivery indication has no transaction id
    {12, 13, 11, 23, 5, 21},
    // the stored form names DeliveryReport twice
    {9, 23, 2, 1, 22, 10, 7, 15, 21, 14, 3, 8, 20, 6, 16, 6, 5, 11, 18, 4},
};

const char *const kBody = "02  01 01 9D 61  04 02 03 83 81 EA 62 63";

QByteArray wireOf(int id, int pduType)
{
    return id == 12 ? "8C " + QByteArray::number(pduType, 16).toUpper()
                    : QByteArray(kWire[id - 1].hex);
}

QByteArray headerOf(int pduType)
{
    QByteArrayList fields;
    for (const int id : kOrders[pduType - 0x80]) {
        fields += wireOf(id, pduType);
    }
    return fields.join(' ');
}

// A message with a value in every field: those of kWire.
WMMSMsg fullMessage(int pduType)
{
    WMMSMsg message;
    message.setBcc(WMFMEntry(1, "11"));
    message.setCc(WMFMEntry(1, "22", "shown, not written"));
    message.setContentLocation("loc");
    message.setContentType(typeOf(kMixed));
    message.setDate(QDateTime::fromSecsSinceEpoch(1000));
    message.setDeliveryReportNecessity(true);
    message.setDeliveryTime(QDateTime::fromSecsSinceEpoch(1001));
    message.setExpiryTime(3600);
    message.setFrom(WMFMEntry(0, "a@b"));
    message.setMsgClass(129);
    message.setMsgID("mid");
    message.setPDUType(static_cast<unsigned char>(pduType));
    message.setVersion(0x10);
    message.setMsgSize(2);
    message.setPriority(130);
    message.setReadReportNecessity(false);
    message.setReportAllowedity(true);
    message.setResponseStatus(224);
    message.setResponseText("r");
    message.setSenderVisibility(false);
    message.setMsgStatus(129);
    message.setSubject("s");
    message.setTo(WMFMEntry(1, "33"));
    message.setTransactionID("t");
    return message;
}

void addBody(WMMSMsg &message)
{
    message.getMultiParts().setSubMmsMultipart(
        {partOf("image/gif", "a"), partOf("text/plain", "bc")});
}

// A message with nothing but a PDU type.
WMMSMsg bareMessage(int pduType)
{
    WMMSMsg message;
    message.clear();
    message.setPDUType(static_cast<unsigned char>(pduType));
    return message;
}

struct Packed {
    quint32 result;
    QByteArray hex;
    int headerLength = -7;
    int bodyLength = -7;
};

Packed pack(WMMSMsg &message)
{
    Packed packed;
    QArray<char> out;
    packed.result = message.packTo(out, &packed.headerLength, &packed.bodyLength);
    packed.hex = hexOf(out);
    return packed;
}

quint32 decode(WMMSMsg &message, const QByteArray &bytes, bool decodeBody = true)
{
    QArray<char> pdu = bytesOf(bytes);
    return message.construct(pdu, decodeBody);
}

quint32 decodeHex(WMMSMsg &message, QByteArrayView hex, bool decodeBody = true)
{
    return decode(message, fromHex(hex), decodeBody);
}

QByteArray spaced(QByteArrayView hex)
{
    return toHex(fromHex(hex));
}

void pduTypes()
{
    QTest::addColumn<int>("type");
    const char *const names[] = {
        "send request",          "send confirmation", "notification indication", "notify-response",
        "retrieve confirmation", "acknowledge",       "delivery indication",     "stored message"};
    for (int n = 0; n < 8; ++n) {
        QTest::newRow(names[n]) << 0x80 + n;
    }
}

} // namespace

class TestPdu : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void writesFieldsInTheirOrder_data() { pduTypes(); }
    void writesFieldsInTheirOrder();
    void writesOnlyWhatIsPresent_data() { pduTypes(); }
    void writesOnlyWhatIsPresent();
    void readsWhatItWrites_data() { pduTypes(); }
    void readsWhatItWrites();
    void fiveFieldsAreAlwaysMarked();
    void refusesOtherTypes();
    void withoutABodyTheLengthsAreNotStored();
    void theLengths();
    void getMessageLength();
    void getMessageLengthFails();
    void logsWhatItWrites();
    void fieldsThatCannotBeWritten_data();
    void fieldsThatCannotBeWritten();
    void aBodyNeedsAContentType();
    void theRootGetsTheContentType();
    void oneUnstructuredPart();
    void aBodyOfATypeThatIsNotDecoded();
    void headersThatFitExactly_data();
    void headersThatFitExactly();
    void aBodyBehindALongHeader();
    void partsWithLongHeaders();
    void partsWhoseHeadersCannotBeWritten();
    void encodingLeavesCopiesAlone();
    void encodesIntoItsOwnData_data();
    void encodesIntoItsOwnData();

    void decodes_data();
    void decodes();
    void marksAFieldBeforeItIsRead();
    void aPduThatEndsBeforeItsContentType();
    void decodesTheHeaderAlone();
    void decodesEveryType_data();
    void decodesEveryType();
    void datesAreLocalWhenAskedFor();
    void addsToAUsedMessage();
    void everyTruncationOfEveryType_data() { pduTypes(); }
    void everyTruncationOfEveryType();
    void bodies_data();
    void bodies();
    void aMultipartWithoutABody();
    void theLogOfADecode();
    void partsHaveBytesOfTheirOwn();
    void theSinglePartHasBytesOfItsOwn();
    void decodesItsOwnData();
};

void TestPdu::writesFieldsInTheirOrder()
{
    QFETCH(int, type);
    WMMSMsg message = fullMessage(type);
    Packed packed = pack(message);
    QCOMPARE(packed.result, 200U);
    QCOMPARE(packed.hex, spaced(headerOf(type)));

    addBody(message);
    packed = pack(message);
    QCOMPARE(packed.result, 200U);
    QCOMPARE(packed.hex, spaced(headerOf(type) + kBody));
}

void TestPdu::writesOnlyWhatIsPresent()
{
    QFETCH(int, type);
    for (const int id : kOrders[type - 0x80]) {
        WMMSMsg message = bareMessage(type);
        QArray<char> field = arrayOf(wireOf(id, type));
        QCOMPARE(message.construct(field, false), 100U);
        QByteArray expected;
        for (const int other : kOrders[type - 0x80]) {
            if (other == id || other == 12) {
                expected += wireOf(other, type) + ' ';
            } else if (other == 9) {
                expected += "89 01 81 ";
            }
        }
        const Packed packed = pack(message);
        QCOMPARE(packed.result, 200U);
        QCOMPARE(packed.hex, spaced(expected));
    }
}

void TestPdu::readsWhatItWrites()
{
    QFETCH(int, type);
    WMMSMsg message = fullMessage(type);
    const bool hasContentType = kOrders[type - 0x80].contains(4);
    if (hasContentType) {
        addBody(message);
    }
    const Packed packed = pack(message);
    WMMSMsg back;
    back.clear();
    QCOMPARE(decodeHex(back, packed.hex), 100U);
    QList<int> ids = kOrders[type - 0x80];
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    QCOMPARE(present(back), ids);
    QCOMPARE(back.headerLength(), hasContentType ? message.headerLength() : 0);
    QCOMPARE(back.bodyLength(), hasContentType ? message.bodyLength() : 0);
    if (type == 0x87) {
        back.setPDUType(0x87);
    }
    QCOMPARE(pack(back).hex, packed.hex);
}

void TestPdu::fiveFieldsAreAlwaysMarked()
{
    WMMSMsg message = bareMessage(0x80);
    QCOMPARE(pack(message).hex, QByteArray("8C 80 89 01 81"));
    QCOMPARE(present(message), (QList<int>{1, 2, 4, 9, 12, 23}));
    WMMSMsg acknowledge = bareMessage(0x85);
    QCOMPARE(pack(acknowledge).hex, QByteArray("8C 85"));
    QCOMPARE(present(acknowledge), (QList<int>{1, 2, 4, 9, 12, 23}));
}

void TestPdu::refusesOtherTypes()
{
    for (const int type : {0, 1, 0x7F, 0x88, 0xFF}) {
        for (const bool withBody : {false, true}) {
            WMMSMsg message = bareMessage(type);
            if (withBody) {
                addBody(message);
            }
            LogCapture log;
            int headerLength = -7;
            int bodyLength = -7;
            QArray<char> out;
            QCOMPARE(message.packTo(out, &headerLength, &bodyLength), 203U);
            QCOMPARE(log.lines(),
                     QStringList(QString("PDU type error! hdr->msgType:%1").arg(type)));
            QCOMPARE(headerLength, -7);
            QCOMPARE(bodyLength, -7);
            QCOMPARE(present(message), QList<int>{12});
        }
    }
}

// without a body the two lengths are not stored
void TestPdu::withoutABodyTheLengthsAreNotStored()
{
    WMMSMsg message = bareMessage(0x83);
    message.setMsgStatus(129);
    addBody(message);
    message.setContentType(typeOf(kMixed));
    QCOMPARE(pack(message).result, 200U);
    message.getMultiParts().clear();
    const Packed packed = pack(message);
    QCOMPARE(packed.result, 200U);
    QCOMPARE(packed.hex, QByteArray("8C 83 95 81"));
    QCOMPARE(packed.headerLength, -7);
    QCOMPARE(packed.bodyLength, -7);
    QCOMPARE(message.headerLength(), 4);
    QCOMPARE(message.bodyLength(), 0);
    message.getMultiParts().creatSubList();
    QCOMPARE(pack(message).hex, QByteArray("8C 83 95 81"));
    QArray<char> roomy(100000);
    QCOMPARE(message.packTo(roomy, nullptr, nullptr), 200U);
    QCOMPARE(hexOf(roomy), QByteArray("8C 83 95 81"));
}

void TestPdu::theLengths()
{
    WMMSMsg message = bareMessage(0x84);
    message.setContentType(typeOf(kMixed));
    addBody(message);
    const Packed packed = pack(message);
    QCOMPARE(packed.headerLength, 7);
    QCOMPARE(packed.bodyLength, 13);
    QCOMPARE(message.headerLength(), 7);
    QCOMPARE(message.bodyLength(), 13);
    QArray<char> out;
    int length = 0;
    QCOMPARE(message.packTo(out, nullptr, nullptr), 200U);
    QCOMPARE(message.packTo(out, &length, nullptr), 200U);
    QCOMPARE(length, 7);
    QCOMPARE(message.packTo(out, nullptr, &length), 200U);
    QCOMPARE(length, 13);
}

void TestPdu::getMessageLength()
{
    WMMSMsg message = bareMessage(0x83);
    int headerLength = -7;
    int bodyLength = -7;
    QVERIFY(message.getMessageLength(headerLength, bodyLength));
    QCOMPARE(headerLength, 2);
    QCOMPARE(bodyLength, 0);
    QCOMPARE(int(message.getPDUType()), 0x83);
    message.setContentType(typeOf(kMixed));
    addBody(message);
    QVERIFY(message.getMessageLength(headerLength, bodyLength));
    QCOMPARE(headerLength, 2);
    QCOMPARE(bodyLength, 13);
}

void TestPdu::getMessageLengthFails()
{
    WMMSMsg message = bareMessage(0x88);
    int headerLength = -7;
    int bodyLength = -8;
    QVERIFY(!message.getMessageLength(headerLength, bodyLength));
    QCOMPARE(headerLength, -7);
    QCOMPARE(bodyLength, -8);
}

void TestPdu::logsWhatItWrites()
{
    WMMSMsg message = bareMessage(0x84);
    LogCapture log;
    pack(message);
    QCOMPARE(log.lines(), QStringList("encode header len:5"));
    message.setContentType(typeOf(kMixed));
    addBody(message);
    log.clear();
    pack(message);
    QCOMPARE(log.lines(), QStringList({"encode header len:7", "encode body len:13"}));
}

void TestPdu::fieldsThatCannotBeWritten_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<WMMSMsg>("message");
    const auto row = [](const char *name, int type, auto change) {
        WMMSMsg message = bareMessage(type);
        change(message);
        QTest::newRow(name) << type << message;
    };
    const QString tooLong(1100, 'x');
    row("negative size", 0x82, [](WMMSMsg &m) { m.setMsgSize(-1); });
    row("invalid date", 0x80, [](WMMSMsg &m) { m.setDate(QDateTime(QDate(), QTime(12, 0))); });
    row("invalid delivery time", 0x80,
        [](WMMSMsg &m) { m.setDeliveryTime(QDateTime(QDate(), QTime(12, 0))); });
    row("a content type without a number", 0x80,
        [](WMMSMsg &m) { m.setContentType(typeOf("no/such")); });
    row("a sender longer than its scratch", 0x80,
        [&](WMMSMsg &m) { m.setFrom(WMFMEntry(1, tooLong)); });
    row("content type parameters longer than their scratch", 0x80, [&](WMMSMsg &m) {
        m.setContentType(typeOf(kMixed, {{"start", tooLong}}));
    });
    row("recipients beyond the room", 0x80,
        [](WMMSMsg &m) { m.setTo(QList<WMFMEntry>(1000, WMFMEntry(1, "5551234567"))); });
    row("copies beyond the room", 0x80,
        [](WMMSMsg &m) { m.setCc(QList<WMFMEntry>(1000, WMFMEntry(1, "5551234567"))); });
    row("a subject beyond the room", 0x80, [](WMMSMsg &m) { m.setSubject(QString(20000, 'x')); });
    row("a code beyond the room", 0x81, [](WMMSMsg &m) {
        m.setTransactionID(QString(10240 + 512 - 4, 'x'));
        m.setResponseStatus(128);
    });
}

void TestPdu::fieldsThatCannotBeWritten()
{
    QFETCH(WMMSMsg, message);
    int headerLength = -7;
    int bodyLength = -8;
    QArray<char> out;
    LogCapture log;
    QCOMPARE(message.packTo(out, &headerLength, &bodyLength), 209U);
    QCOMPARE(log.lines(), QStringList("field handler write fail!"));
    QCOMPARE(headerLength, -7);
    QCOMPARE(bodyLength, -8);
}

void TestPdu::aBodyNeedsAContentType()
{
    WMMSMsg message = bareMessage(0x80);
    message.getMultiParts().setData(bytesOf("abc"));
    LogCapture log;
    QCOMPARE(pack(message).result, 202U);
    QCOMPARE(log.lines(), QStringList("encode header len:5"));
    message.getMultiParts().setData(QArray<char>());
    QCOMPARE(pack(message).result, 200U);
    addBody(message);
    QCOMPARE(pack(message).result, 202U);
    message.setContentType(typeOf(kMixed));
    QCOMPARE(pack(message).result, 200U);
    WMMSMsg halfType = bareMessage(0x80);
    halfType.getMultiParts().setData(bytesOf("abc"));
    WMMSContentType half;
    half.setMainType("text");
    halfType.setContentType(half);
    QCOMPARE(pack(halfType).result, 202U);
}

void TestPdu::theRootGetsTheContentType()
{
    WMMSMsg message = bareMessage(0x80);
    message.setContentType(typeOf(kMixed, {{"start", "<s>"}}));
    message.getMultiParts().setContentType(typeOf("image/gif"));
    pack(message);
    QCOMPARE(message.getMultiParts().getContentType().getMimeType(), kMixed);
    QCOMPARE(message.getMultiParts().getContentType().getParamStart(), QString("<s>"));
}

void TestPdu::oneUnstructuredPart()
{
    WMMSMsg message = bareMessage(0x84);
    message.setContentType(typeOf("image/gif"));
    message.getMultiParts().setData(bytesOf("abc"));
    const Packed packed = pack(message);
    QCOMPARE(packed.hex, QByteArray("8C 84 89 01 81 84 9D 61 62 63"));
    QCOMPARE(packed.headerLength, 7);
    QCOMPARE(packed.bodyLength, 3);
}

// a body of a type that is not decoded is the data alone
void TestPdu::aBodyOfATypeThatIsNotDecoded()
{
    WMMSMsg message = bareMessage(0x84);
    message.setContentType(typeOf("application/vnd.wap.multipart.alternative"));
    addBody(message);
    QCOMPARE(pack(message).hex, QByteArray("8C 84 89 01 81 84 A6"));
    message.getMultiParts().setData(bytesOf("x"));
    const Packed packed = pack(message);
    QCOMPARE(packed.hex, QByteArray("8C 84 89 01 81 84 A6 78"));
    QCOMPARE(packed.bodyLength, 1);
}

void TestPdu::headersThatFitExactly_data()
{
    QTest::addColumn<int>("dataSize");
    QTest::newRow("no body") << 0;
    QTest::newRow("a body") << 3;
    QTest::newRow("a large body") << 100000;
}

void TestPdu::headersThatFitExactly()
{
    QFETCH(int, dataSize);
    // PDU type 2 bytes, field id, text and its end
    const int longest = 10240 + 512 + dataSize - 4;
    WMMSMsg message = bareMessage(0x85);
    message.setContentType(typeOf("image/gif"));
    message.getMultiParts().setData(bytesOf(QByteArray(dataSize, 'd')));
    message.setTransactionID(QString(longest, 't'));
    const Packed packed = pack(message);
    QCOMPARE(packed.result, 200U);
    QCOMPARE(packed.hex,
             "8C 85 98 " + toHex(QByteArray(longest, 't')) + " 00"
                 + (dataSize > 0 ? ' ' + toHex(QByteArray(dataSize, 'd')) : QByteArray()));
    message.setTransactionID(QString(longest + 1, 't'));
    QCOMPARE(pack(message).result, 209U);
}

void TestPdu::aBodyBehindALongHeader()
{
    for (const int recipients : {20, 60, 61, 62, 63, 64, 65, 200, 380}) {
        WMMSMsg message = bareMessage(0x80);
        message.setContentType(typeOf(kMixed));
        message.setTo(QList<WMFMEntry>(recipients, WMFMEntry(1, "5551234567")));
        addBody(message);
        const Packed packed = pack(message);
        QCOMPARE(packed.result, 200U);
        QVERIFY(packed.hex.endsWith(spaced(kBody)));
        WMMSMsg back;
        QCOMPARE(decodeHex(back, packed.hex), 100U);
        QCOMPARE(back.getTo().size(), recipients);
        QCOMPARE(back.getMultiParts().subParts()->size(), 2);
        QCOMPARE(packed.headerLength, back.headerLength());
        QCOMPARE(packed.bodyLength, 13);
    }
}

void TestPdu::partsWithLongHeaders()
{
    // Each name stands twice, so that the headers of a part are longer than its allowance.
    const QString name(500, 'n');
    WMMSMsg message = bareMessage(0x80);
    message.setContentType(typeOf(kMixed));
    WMMSMultipart nested = parentOf(kRelated, {});
    for (int n = 0; n < 5; ++n) {
        message.getMultiParts().getSubMmsMultipartList().append(
            partOf("image/gif", "a", QString(4000, 'i'), name));
        nested.getSubMmsMultipartList().append(partOf("image/gif", "b", "<i>", name));
    }
    message.getMultiParts().getSubMmsMultipartList().append(nested);
    const Packed packed = pack(message);
    QCOMPARE(packed.result, 200U);
    WMMSMsg back;
    QCOMPARE(decodeHex(back, packed.hex), 100U);
    const auto &parts = *back.getMultiParts().subParts();
    QCOMPARE(parts.size(), 6);
    QCOMPARE(shown(parts[4]),
             ("image/gif id=" + QString(4000, 'i') + " at=" + name + " [61]").toUtf8());
    QCOMPARE(parts[5].subParts()->size(), 5);
    QCOMPARE(shown(parts[5].subParts()->at(4)), ("image/gif id=<i> at=" + name + " [62]").toUtf8());
}

void TestPdu::partsWhoseHeadersCannotBeWritten()
{
    const auto result = [](const WMMSMultipart &part) {
        WMMSMsg message = bareMessage(0x80);
        message.setContentType(typeOf(kMixed));
        message.getMultiParts().setSubMmsMultipart({part});
        return pack(message).result;
    };
    const QString fits(1021, 'n');
    QCOMPARE(result(partOf("image/gif", "a", "i", fits)), 200U);
    QCOMPARE(result(partOf("image/gif", "a", "i", fits + 'n')), 209U);
    QCOMPARE(result(partOf("image/gif", "a", QString(5117, 'i'), "")), 200U);
    QCOMPARE(result(partOf("image/gif", "a", QString(5118, 'i'), "")), 209U);
    QCOMPARE(result(WMMSMultipart()), 209U);
    QCOMPARE(result(parentOf(kRelated, {partOf("image/gif", "a", "i", fits)})), 200U);
    QCOMPARE(result(parentOf(kRelated, {partOf("image/gif", "a", "i", fits + 'n')})), 209U);
    QCOMPARE(result(parentOf(kRelated, {WMMSMultipart()})), 209U);
}

void TestPdu::encodingLeavesCopiesAlone()
{
    WMMSMultipart nested = parentOf(kRelated, {partOf("image/gif", "a")});
    nested.setData(bytesOf("bytes of the copy"));
    WMMSMsg message = bareMessage(0x80);
    message.setContentType(typeOf(kMixed));
    message.getMultiParts().setSubMmsMultipart({nested});
    WMMSMsg copy(message);
    const QByteArray before = shown(copy.getMultiParts());
    QCOMPARE(pack(message).result, 200U);
    QCOMPARE(shown(copy.getMultiParts()), before);
    QCOMPARE(message.getMultiParts().subParts()->first().getData().size(), 0);
    QCOMPARE(present(copy), (QList<int>{4, 12}));
}

void TestPdu::encodesIntoItsOwnData_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("one part") << "image/gif";
    QTest::newRow("a multipart") << kMixed;
}

void TestPdu::encodesIntoItsOwnData()
{
    QFETCH(QString, type);
    const auto message = [&type] {
        WMMSMsg made = bareMessage(0x84);
        made.setContentType(typeOf(type));
        made.getMultiParts().setData(bytesOf("abc"));
        if (type == kMixed) {
            addBody(made);
        }
        return made;
    };
    WMMSMsg apart = message();
    const QByteArray expected = pack(apart).hex;

    // The output is the data itself, shares it, or is that of a part.
    WMMSMsg itself = message();
    QCOMPARE(itself.packTo(itself.getMultiParts().getData(), nullptr, nullptr), 200U);
    QCOMPARE(hexOf(itself.getMultiParts().getData()), expected);

    WMMSMsg shared = message();
    QArray<char> out = shared.getMultiParts().getData();
    QCOMPARE(shared.packTo(out, nullptr, nullptr), 200U);
    QCOMPARE(hexOf(out), expected);
    QCOMPARE(hexOf(shared.getMultiParts().getData()), toHex("abc"));

    if (type == kMixed) {
        WMMSMsg ofPart = message();
        QArray<char> bytes = ofPart.getMultiParts().subParts()->last().getData();
        QCOMPARE(ofPart.packTo(bytes, nullptr, nullptr), 200U);
        QCOMPARE(hexOf(bytes), expected);
        QCOMPARE(hexOf(ofPart.getMultiParts().subParts()->last().getData()), toHex("bc"));
    }

    WMMSMsg empty = bareMessage(0x84);
    QCOMPARE(empty.packTo(empty.getMultiParts().getData(), nullptr, nullptr), 200U);
    QCOMPARE(hexOf(empty.getMultiParts().getData()), QByteArray("8C 84 89 01 81"));
}

void TestPdu::decodes_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<quint32>("result");
    QTest::addColumn<QList<int>>("ids");
    QTest::addColumn<QStringList>("log");
    const auto row = [](const char *name, const char *hex, quint32 result, const QList<int> &ids,
                        const QStringList &log) {
        QTest::newRow(name) << QByteArray(hex) << result << ids << log;
    };
    const QString end = "no more data,parse header end";
    row("nothing", "", 100, {}, {end});
    row("a send confirmation", "8C 81 98 74 00 8D 92 92 80 8B 6D 00", 100, {11, 12, 13, 18, 24},
        {"PDUType: SEND_CONFT", "transactionId: t", "version: 1.2", "responseStatus: OK",
         "msgID: m", end});
    row("id 0 as a short integer", "80", 110, {}, {"decode fail,fielID: 0"});
    row("id 0 as a length", "00", 110, {}, {"decode fail,fielID: 0"});
    row("id 25", "8C 80 99", 104, {12}, {"PDUType: SEND_REQ", "error fieldID: 25"});
    row("id 127", "FF", 104, {}, {"error fieldID: 127"});
    row("id as a long integer", "01 0C 80", 100, {12}, {"PDUType: SEND_REQ", end});
    row("id 25 as a long integer", "02 00 19 80", 104, {}, {"error fieldID: 25"});
    row("id of 32 bits", "04 FF FF FF FF", 104, {}, {"error fieldID: -1"});
    row("the low 32 bits of an id", "05 01 00 00 00 0C 80", 100, {12}, {"PDUType: SEND_REQ", end});
    row("an id as text is a long integer", "41 42 00", 113, {}, {"error to read fieldID"});
    row("an id that is cut", "8C 80 02 00", 113, {12},
        {"PDUType: SEND_REQ", "error to read fieldID"});
    row("no value", "8C 80 98", 113, {12, 24}, {"PDUType: SEND_REQ", "error handler,fieldID: 24"});
    row("a wrong value", "86 82", 113, {6}, {"error handler,fieldID: 6"});
    row("no value of the content type", "84", 113, {4}, {"error handler,fieldID: 4"});
    row("a content type that is cut", "84 05 A3 81", 113, {4}, {"error handler,fieldID: 4"});
    row("the header ends at the content type", "84 A3 00", 100, {4},
        {"contentType: application/vnd.wap.multipart.mixed ", "parse header end", "numOfParts:0"});
    row("a body that cannot be read", "84 A3 01", 111, {4},
        {"contentType: application/vnd.wap.multipart.mixed ", "parse header end", "numOfParts:1"});
    row("three recipients", "97 31 00 97 32 00 97 33 00", 100, {23},
        {"to: ", "\t1 ", "to: ", "\t1 ", "\t2 ", "to: ", "\t1 ", "\t2 ", "\t3 ", end});
    row("a priority is not printed", "8F 81", 100, {15}, {end});
    row("a field twice", "96 61 00 96 62 00", 100, {22}, {"subject: a", "subject: b", end});
}

void TestPdu::decodes()
{
    QFETCH(QByteArray, hex);
    QFETCH(QList<int>, ids);
    WMMSMsg message;
    message.clear();
    LogCapture log;
    QTEST(decodeHex(message, hex), "result");
    QCOMPARE(present(message), ids);
    QTEST(log.lines(), "log");
}

// a field is marked as present before its value is read
void TestPdu::marksAFieldBeforeItIsRead()
{
    for (int id = 1; id <= 24; ++id) {
        WMMSMsg message;
        message.clear();
        const quint32 result = decode(message, QByteArray(1, char(0x80 | id)));
        QCOMPARE(result, id == 22 ? 100U : 113U);
        QCOMPARE(present(message), QList<int>{id});
    }
}

// a PDU that ends before its content type is decoded
void TestPdu::aPduThatEndsBeforeItsContentType()
{
    WMMSMsg message;
    QCOMPARE(decodeHex(message, "84 9D 78 78"), 100U);
    QCOMPARE(message.headerLength(), 2);
    QCOMPARE(message.bodyLength(), 2);
    QCOMPARE(decodeHex(message, "8C 81 98 74 00"), 100U);
    QCOMPARE(message.headerLength(), 2);
    QCOMPARE(message.bodyLength(), 2);
    QCOMPARE(hexOf(message.getMultiParts().getData()), QByteArray("78 78"));
}

void TestPdu::decodesTheHeaderAlone()
{
    WMMSMsg message;
    QCOMPARE(decodeHex(message, "8C 84 84 A3", false), 100U);
    QCOMPARE(message.headerLength(), 4);
    QCOMPARE(message.bodyLength(), 0);
    QVERIFY(message.getMultiParts().getContentType().isEmpty());
    QCOMPARE(decodeHex(message, "8C 84 84 9D 61 62", false), 100U);
    QCOMPARE(message.headerLength(), 4);
    QCOMPARE(message.bodyLength(), 0);
    QVERIFY(message.getMultiParts().isEmpty());
    QCOMPARE(decodeHex(message, "84 9D 61 62", true), 100U);
    QCOMPARE(decodeHex(message, "8C 84 84 9D 61 62 63", false), 100U);
    QCOMPARE(message.headerLength(), 4);
    QCOMPARE(message.bodyLength(), 2);
}

void TestPdu::decodesEveryType_data()
{
    QTest::addColumn<int>("type");
    for (int type = 0x80; type <= 0x86; ++type) {
        QTest::addRow("%x", type) << type;
    }
}

void TestPdu::decodesEveryType()
{
    QFETCH(int, type);
    WMMSMsg message;
    message.clear();
    QByteArray hex = headerOf(type);
    const QList<int> &ids = kOrders[type - 0x80];
    QCOMPARE(decodeHex(message, hex + (ids.contains(4) ? kBody : "")), 100U);
    const auto has = [&ids](int id) {
        return ids.contains(id);
    };
    QCOMPARE(message.getBcc().size(), has(1) ? 1 : 0);
    QCOMPARE(message.getCc().size(), has(2) ? 1 : 0);
    QCOMPARE(message.getContentLocation(), has(3) ? "loc" : QString());
    QCOMPARE(message.getContentType().getMimeType(), has(4) ? kMixed : QString());
    QCOMPARE(message.getDate(), has(5) ? QDateTime::fromSecsSinceEpoch(1000) : QDateTime());
    QCOMPARE(message.getDeliveryReportNecessity(), has(6));
    QCOMPARE(message.getDeliveryTime(), has(7) ? QDateTime::fromSecsSinceEpoch(1001) : QDateTime());
    QCOMPARE(message.getExpiryTime(), has(8) ? 3600U : 0xFFFFFFFFU);
    QCOMPARE(message.getFrom().getEntryVal(), has(9) ? "a@b" : QString());
    QCOMPARE(int(message.getMsgClass()), has(10) ? 129 : 0);
    QCOMPARE(message.getMsgID(), has(11) ? "mid" : QString());
    QCOMPARE(int(message.getPDUType()), type);
    QCOMPARE(int(message.getVersion()), has(13) ? 0x10 : 0);
    QCOMPARE(message.getMsgSize(), has(14) ? 2 : 0);
    QCOMPARE(int(message.getPriority()), has(15) ? 130 : 0);
    QCOMPARE(message.getReadReportNecessity(), false);
    QCOMPARE(message.getReportAllowedity(), has(17));
    QCOMPARE(int(message.getResponseStatus()), has(18) ? 224 : 0);
    QCOMPARE(message.getResponseText(), has(19) ? "r" : QString());
    QCOMPARE(message.getSenderVisibility(), false);
    QCOMPARE(int(message.getMsgStatus()), has(21) ? 129 : 0);
    QCOMPARE(message.getSubject(), has(22) ? "s" : QString());
    QCOMPARE(message.getTo().size(), has(23) ? 1 : 0);
    QCOMPARE(message.getTransactionID(), has(24) ? "t" : QString());
    QCOMPARE(message.getMultiParts().subParts() != nullptr, has(4));
}

void TestPdu::datesAreLocalWhenAskedFor()
{
    const TimeZone east("XST-3");
    WMMSMsg message;
    QCOMPARE(decodeHex(message, "85 04 65 D3 A1 80 87 06 80 04 65 D3 A1 80"), 100U);
    const QDateTime expected(QDate(2024, 2, 19), QTime(21, 44, 16));
    QCOMPARE(message.getDate().timeSpec(), Qt::LocalTime);
    QCOMPARE(message.getDate(), expected);
    QCOMPARE(message.getDate().time(), expected.time());
    QCOMPARE(message.getDeliveryTime().timeSpec(), Qt::LocalTime);
    QCOMPARE(message.getDeliveryTime().time(), expected.time());
}

void TestPdu::addsToAUsedMessage()
{
    WMMSMsg message;
    message.setSubject("before");
    message.setMsgID("kept");
    message.setTo(WMFMEntry(1, "1"));
    message.setAppID("app");
    for (int n = 0; n < 2; ++n) {
        QCOMPARE(decodeHex(message, "97 32 00 96 73 00 84 A3  01 01 01 9D 61"), 100U);
    }
    QCOMPARE(message.getTo().size(), 3);
    QCOMPARE(message.getSubject(), QString("s"));
    QCOMPARE(message.getMsgID(), QString("kept"));
    QCOMPARE(message.getAppID(), QString("app"));
    QCOMPARE(message.getMultiParts().subParts()->size(), 2);
    QCOMPARE(present(message), (QList<int>{4, 10, 11, 15, 20, 22, 23}));
}

void TestPdu::everyTruncationOfEveryType()
{
    QFETCH(int, type);
    QByteArray start;
    for (const int id : kOrders[type - 0x80]) {
        const QByteArray field = fromHex(wireOf(id, type));
        const WireField &wire = kWire[id - 1];
        for (int cut = 0; cut < field.size(); ++cut) {
            WMMSMsg message;
            const bool reads =
                cut == 0 || (wire.readsFrom > 0 && cut >= wire.readsFrom && cut <= wire.readsTo);
            QVERIFY2(decode(message, start + field.left(cut)) == (reads ? 100U : 113U),
                     qPrintable(QString("%1 bytes of field %2").arg(cut).arg(id)));
        }
        start += field;
    }
    if (!kOrders[type - 0x80].contains(4)) {
        WMMSMsg message;
        QCOMPARE(decode(message, start), 100U);
        return;
    }
    const QByteArray body = fromHex(kBody);
    for (int cut = 0; cut <= body.size(); ++cut) {
        WMMSMsg message;
        QCOMPARE(decode(message, start + body.left(cut)), cut == body.size() ? 100U : 111U);
    }
}

void TestPdu::bodies_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<QString>("charset");
    const auto row = [](const char *name, const char *hex, const char *root,
                        const char *charset = nullptr) {
        QTest::newRow(name) << QByteArray(hex) << QByteArray(root) << QString::fromLatin1(charset);
    };
    row("a picture", "84 9D 61 62 00", "image/gif id=- at=- [61 62 00]");
    row("a picture without bytes", "84 9D", "image/gif id=- at=- []");
    row("an alternative is one part", "84 A6 01 02",
        "application/vnd.wap.multipart.alternative id=- at=- [01 02]");
    row("a related multipart", "84 B3 01 01 01 9D 61",
        "application/vnd.wap.multipart.related id=- at=- [] {(image/gif id=- at=- [61])}");
    row("a protected message", "84 C8 01 01 01 9D 61",
        "application/vnd.oma.drm.message id=- at=- [] {(image/gif id=- at=- [61])}");
    row("a protected message with a boundary",
        "84 0C C8 62 6F 75 6E 64 61 72 79 00 62 00  01 01 01 9D 61",
        "application/vnd.oma.drm.message;boundary=b id=- at=- [01 01 01 9D 61]");
    row("the name is the location", "84 08 9D 6E 61 6D 65 00 78 00  61",
        "image/gif;name=x id=- at=x [61]");
    row("text", "84 83 61 62", "text/plain id=- at=- [61 62]", "charset =");
    // The type of the root is set behind its data.
    row("text keeps its zero", "84 83 61 62 00", "text/plain id=- at=- [61 62 00]", "charset =");
    row("UTF-8 text", "84 03 83 81 EA  61", "text/plain id=- at=- [61]", "charset =");
    row("UTF-16LE text", "84 05 83 81 02 03 F6  61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [61 62]", "charset =UTF-16LE");
    row("UTF-16BE text, units exchanged", "84 05 83 81 02 03 F5  61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [62 61]", "charset =UTF-16BE");
    row("UTF-16 text with a mark", "84 05 83 81 02 03 F7  FF FE 61 00",
        "text/plain;charset=UTF-8 id=- at=- [61]", "charset =UTF-16");
    row("UCS2 text", "84 05 83 81 02 03 E8  61 00 62 00",
        "text/plain;charset=UTF-8 id=- at=- [62 61]", "charset =UCS2");
    row("the case of the charset does not count",
        "84 12 83 63 68 61 72 73 65 74 00 75 74 66 2D 31 36 6C 65 00  61 00",
        "text/plain;charset=UTF-8 id=- at=- [61]", "charset =UTF-16LE");
    row("another charset stays", "84 0F 83 63 68 61 72 73 65 74 00 6B 6F 69 38 2D 00  61 00",
        "text/plain;charset=koi8- id=- at=- [61 00]", "charset =KOI8-");
    row("a picture with a charset", "84 05 9D 81 02 03 F6  61 00",
        "image/gif;charset=UTF-16LE id=- at=- [61 00]");
}

void TestPdu::bodies()
{
    QFETCH(QByteArray, hex);
    QFETCH(QByteArray, root);
    QFETCH(QString, charset);
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(decodeHex(message, hex), 100U);
    QCOMPARE(shown(message.getMultiParts()), root);
    QCOMPARE(message.getContentType().toString(),
             message.getMultiParts().getContentType().toString());
    QCOMPARE(message.headerLength() + message.bodyLength(), int(fromHex(hex).size()));
    QString logged;
    for (const QString &line : log.lines()) {
        logged += line.startsWith("charset =") ? line : QString();
    }
    QCOMPARE(logged, charset);
}

void TestPdu::aMultipartWithoutABody()
{
    // The last byte of the header is taken as the count.
    WMMSMsg message;
    QCOMPARE(decodeHex(message, "8C 84 84 A3"), 111U);
    QVERIFY(message.getMultiParts().getContentType().isEmpty());
    QCOMPARE(message.headerLength(), 4);
    QCOMPARE(message.bodyLength(), 0);
    QCOMPARE(decodeHex(message, "8C 84 84 05 A3 8A 3C 3E 00"), 100U);
    QCOMPARE(message.getMultiParts().subParts()->size(), 0);
}

void TestPdu::theLogOfADecode()
{
    WMMSMsg message;
    LogCapture log;
    QCOMPARE(decodeHex(message,
                       "8C 84 89 07 80 61 40 62 00 8A 80 90 80"
                       "84 0D A3 8A 3C 73 3E 00 61 70 70 00 69 64 00"
                       "02 01 01 9D 61 04 02 03 83 81 EA 62 63"),
             100U);
    QCOMPARE(log.lines(),
             QStringList({"PDUType: RETRIEVE_CONF", "from: ", "\ta@b ", "msgClass: PERSONAL",
                          "readReport: 1", "get param:app value:id",
                          "contentType: application/vnd.wap.multipart.mixed ;app=id;start=<s>;",
                          "parse header end", "numOfParts:2", "charset=", "charset="}));
    log.clear();
    QCOMPARE(decodeHex(message, "84 05 83 81 02 03 F7 61 00"), 100U);
    QCOMPARE(log.lines(),
             QStringList({"contentType: text/plain ;app=id;charset=UTF-16;start=<s>;",
                          "parse header end", "charset =UTF-16", "Little endian UTF-16",
                          "unicode to string: "}));
}

void TestPdu::partsHaveBytesOfTheirOwn()
{
    WMMSMsg message;
    QArray<char> pdu = arrayOf("84 A3 01 01 01 9D 61");
    QCOMPARE(message.construct(pdu, true), 100U);
    pdu.fill('z');
    QCOMPARE(hexOf(message.getMultiParts().subParts()->first().getData()), QByteArray("61"));
}

void TestPdu::theSinglePartHasBytesOfItsOwn()
{
    WMMSMsg message;
    QArray<char> pdu = arrayOf("84 9D 61 62");
    QCOMPARE(message.construct(pdu, true), 100U);
    pdu.fill('z');
    QCOMPARE(hexOf(message.getMultiParts().getData()), QByteArray("61 62"));
    message.getMultiParts().getData()[0] = 'q';
    QCOMPARE(hexOf(pdu), QByteArray("7A 7A 7A 7A"));
}

void TestPdu::decodesItsOwnData()
{
    WMMSMsg message;
    message.getMultiParts().setData(arrayOf("84 9D 61 62"));
    QCOMPARE(message.construct(message.getMultiParts().getData(), true), 100U);
    QCOMPARE(hexOf(message.getMultiParts().getData()), QByteArray("61 62"));
}

QTEST_GUILESS_MAIN(TestPdu)

#include "tst_pdu.moc"

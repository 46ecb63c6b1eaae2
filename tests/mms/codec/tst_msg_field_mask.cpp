// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "tests/mms/codec/wire.h"

#include <QtTest/QtTest>

class TestMsgFieldMask : public QObject {
    Q_OBJECT

private slots:
    void everyId_data();
    void everyId();
    void clear();
    void copies();
    void fieldsCount();
    void aHeaderStartsEmpty();
    void fieldIds_data();
    void fieldIds();
    void pduTypes();
};

/// All 256 ids: 1 to 24 are fields, 0 and 25 to 255 are not.
void TestMsgFieldMask::everyId_data()
{
    QTest::addColumn<int>("id");
    for (int id = 0; id <= 255; ++id) {
        QTest::addRow("%d", id) << id;
    }
}

void TestMsgFieldMask::everyId()
{
    QFETCH(int, id);
    const quint32 isField = id >= 1 && id <= 24 ? 1 : 0;
    Msg_Field_Mask mask;
    QCOMPARE(mask.getMask(quint8(id)), 0U);
    QCOMPARE(mask.setMask(quint8(id)), isField);
    QCOMPARE(mask.setMask(quint8(id)), isField);
    for (int other = 0; other <= 255; ++other) {
        QCOMPARE(mask.getMask(quint8(other)), other == id ? isField : 0U);
    }
}

void TestMsgFieldMask::clear()
{
    Msg_Field_Mask mask;
    for (int id = 1; id <= 24; ++id) {
        mask.setMask(quint8(id));
    }
    QCOMPARE(mask.clear(), 1U);
    for (int id = 0; id <= 255; ++id) {
        QCOMPARE(mask.getMask(quint8(id)), 0U);
    }
    QCOMPARE(mask.setMask(3), 1U);
    QCOMPARE(mask.getMask(3), 1U);
}

void TestMsgFieldMask::copies()
{
    Msg_Field_Mask mask;
    mask.setMask(24);
    Msg_Field_Mask copy = mask;
    copy.setMask(1);
    QCOMPARE(copy.getMask(24), 1U);
    QCOMPARE(mask.getMask(1), 0U);
}

void TestMsgFieldMask::fieldsCount()
{
    Msg_Field_Mask mask;
    QCOMPARE(mask.getFieldsCount(), 24U);
    mask.setMask(7);
    QCOMPARE(mask.getFieldsCount(), 24U);
}

/// Nothing in a fresh header is unset: numbers are 0, flags false, the expiry -1.
void TestMsgFieldMask::aHeaderStartsEmpty()
{
    const MMS_HDR_S header;
    QVERIFY(header.bcc.isEmpty() && header.cc.isEmpty() && header.to.isEmpty());
    QCOMPARE(shown(header.contentLocation), "null");
    QVERIFY(header.contentType.isEmpty());
    QCOMPARE(header.contentType.getParamCount(), 0);
    QVERIFY(header.msgDate.isNull());
    QCOMPARE(header.deliveryReport, false);
    QVERIFY(header.deliveryTime.isNull());
    QCOMPARE(header.expiry, -1);
    QVERIFY(!header.from.isValid());
    QCOMPARE(int(header.from.getEntryType()), 127);
    QCOMPARE(int(header.msgClass), 0);
    QCOMPARE(shown(header.msgID), "null");
    QCOMPARE(int(header.msgType), 0);
    QCOMPARE(int(header.version), 0);
    QCOMPARE(header.msgSize, 0);
    QCOMPARE(int(header.priority), 0);
    QCOMPARE(header.readReport, false);
    QCOMPARE(header.reportAllowed, false);
    QCOMPARE(int(header.responseStatus), 0);
    QCOMPARE(shown(header.responseText), "null");
    QCOMPARE(header.senderVisibility, false);
    QCOMPARE(int(header.msgStatus), 0);
    QCOMPARE(shown(header.subject), "null");
    QCOMPARE(shown(header.transactionId), "null");
}

void TestMsgFieldMask::fieldIds_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("number");
    const MMS_FIELD_ID_E ids[] = {
        MMS_FIELD_BCC,
        MMS_FIELD_CC,
        MMS_FIELD_CONTENT_LOCATION,
        MMS_FIELD_CONTENT_TYPE,
        MMS_FIELD_DATE,
        MMS_FIELD_DELIVERY_REPORT,
        MMS_FIELD_DELIVERY_TIME,
        MMS_FIELD_EXPIRY,
        MMS_FIELD_FROM,
        MMS_FIELD_MSG_CLASS,
        MMS_FIELD_MSG_ID,
        MMS_FIELD_MSG_TYPE,
        MMS_FIELD_VERSION,
        MMS_FIELD_MSG_SIZE,
        MMS_FIELD_PRIORITY,
        MMS_FIELD_READ_REPORT,
        MMS_FIELD_REPORT_ALLOWED,
        MMS_FIELD_RESPONSE_STATUS,
        MMS_FIELD_RESPONSE_TEXT,
        MMS_FIELD_SENDER_VISIBILITY,
        MMS_FIELD_MSG_STATUS,
        MMS_FIELD_SUBJECT,
        MMS_FIELD_TO,
        MMS_FIELD_TRANSACTION_ID,
    };
    int number = 0;
    for (const MMS_FIELD_ID_E id : ids) {
        ++number;
        QTest::addRow("%d", number) << int(id) << number;
    }
    QCOMPARE(number, 24);
}

void TestMsgFieldMask::fieldIds()
{
    QFETCH(int, id);
    QTEST(id, "number");
}

void TestMsgFieldMask::pduTypes()
{
    QCOMPARE(int(MMS_PDU_SEND_REQ), 128);
    QCOMPARE(int(MMS_PDU_SEND_CONF), 129);
    QCOMPARE(int(MMS_PDU_NOTIFICATION_IND), 130);
    QCOMPARE(int(MMS_PDU_NOTIFYRESP_IND), 131);
    QCOMPARE(int(MMS_PDU_RETRIEVE_CONF), 132);
    QCOMPARE(int(MMS_PDU_ACKNOWLEDGE_IND), 133);
    QCOMPARE(int(MMS_PDU_DELIVERY_IND), 134);
    QCOMPARE(int(MMS_PDU_STORED), 135);
}

QTEST_GUILESS_MAIN(TestMsgFieldMask)
#include "tst_msg_field_mask.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/fields.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

using Names = QMap<int, QString>;

/// The names are seen where they are used: in the line that a field prints.
// clang-format off
// 0x81 prints as "SEND_CONFT".
static const Names kPduTypes{
    {128, "SEND_REQ"},
    {129, "SEND_CONFT"},
    {130, "NOTIFICATION_IND"},
    {131, "NOTIFYRESP_IND"},
    {132, "RETRIEVE_CONF"},
    {133, "ACKNOWLEDGE_IND"},
    {134, "DELIVERY_IND"},
};

static const Names kMessageClasses{
    {128, "PERSONAL"},
    {129, "ADVERTISEMENT"},
    {130, "INFORMATIONAL"},
    {131, "AUTO"},
};

static const Names kStatuses{
    {128, "EXPIRED"},
    {129, "RETRIEVED"},
    {130, "REJECTED"},
    {131, "DEFERRED"},
    {132, "UNRECOGNISED"},
    {133, "INDETERMINATE"},
    {134, "FORWARDED"},
    {135, "UNREACHABLE"},
};

// The names of 131, 224 and 231 are spelled as they stand.
static const Names kResponseStatuses{
    {128, "OK"},
    {129, "ERR_UNSPECIFIED"},
    {130, "ERR_SERVICE_DENIED"},
    {131, "ERR_MSG_FORMAT_CURRUPT"},
    {132, "ERR_SEND_ADDRESS_UNRESOLVED"},
    {133, "ERR_MSG_NOT_FOUND"},
    {134, "ERR_NETWORK_PROBLEM"},
    {135, "ERR_CONTENT_NOT_ACCEPTED"},
    {136, "ERR_UNSUPPORTED_MSG"},
    {192, "ERR_TRANS_FAIL"},
    {193, "ERR_TRANS_ADDR_UNRESOLVED"},
    {194, "ERR_TRANS_MSG_NOT_FOUND"},
    {195, "ERR_TRANS_NET_PROBLEM"},
    {196, "ERR_TRANS_PARTIAL_SUCCESS"},
    {224, "RR_PERM_FAIL"},
    {225, "ERR_PERM_SERVICE_DENIED"},
    {226, "ERR_PERM_MSG_FORMAT_CORRUPT"},
    {227, "ERR_PERM_ADDR_UNRESOLVED"},
    {228, "ERR_PERM_MSG_NOT_FOUND"},
    {229, "ERR_PERM_CONTENT_NOT_ACCEPTED"},
    {230, "ERR_PERM_REP_LIMIT_NOT_MET"},
    {231, "ERR_PERM_REP_REQ_NOT_ACCPETED"},
    {232, "ERR_PERM_REP_FWD_DENIED"},
    {233, "ERR_PERM_REP_NOT_SUPPORTED"},
    {234, "ERR_PERM_ADDR_HID_NOT_SUPPORTED"},
};
// clang-format on

class TestValueNames : public QObject {
    Q_OBJECT

private slots:
    void tableSizes();
    void names_data();
    void names();
};

void TestValueNames::tableSizes()
{
    QCOMPARE(kPduTypes.size(), 7);
    QCOMPARE(kMessageClasses.size(), 4);
    QCOMPARE(kStatuses.size(), 8);
    QCOMPARE(kResponseStatuses.size(), 25);
}

template <class Codec>
static void addNames(const char *label, quint8 MMS_HDR_S::*member, const Names &names)
{
    for (int code = 0; code <= 255; ++code) {
        MMS_HDR_S header;
        header.*member = quint8(code);
        LogCapture log;
        Codec().printField(&header);
        QTest::addRow("%s %d", label, code)
            << log.lines() << label + QString(": ") + names.value(code, "unknown");
    }
}

void TestValueNames::names_data()
{
    QTest::addColumn<QStringList>("printed");
    QTest::addColumn<QString>("expected");
    addNames<Field_MsgType>("PDUType", &MMS_HDR_S::msgType, kPduTypes);
    addNames<Field_MsgClass>("msgClass", &MMS_HDR_S::msgClass, kMessageClasses);
    addNames<Field_MsgStatus>("msgStatus", &MMS_HDR_S::msgStatus, kStatuses);
    addNames<Field_ResponseStatus>("responseStatus", &MMS_HDR_S::responseStatus, kResponseStatuses);
}

void TestValueNames::names()
{
    QFETCH(QStringList, printed);
    QFETCH(QString, expected);
    QCOMPARE(printed, QStringList{expected});
}

QTEST_GUILESS_MAIN(TestValueNames)
#include "tst_value_names.moc"

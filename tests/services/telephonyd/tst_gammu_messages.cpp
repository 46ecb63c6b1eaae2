// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/gammu_messages.h"
#include "tests/services/telephonyd/outgoing_sms.h"
#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::telephonyd;
using wmsg::telephony::Coding;

namespace {

struct ReceivedRow {
    const char *name;
    const char *pdu; // a service centre, and a message to the phone
    Coding coding;
    const char *header;
    const char *body; // as it is told
};

// From 12345 at 2026-11-21 22:00:00, six hours behind UTC.
#define TIME "6211122200004A"

// clang-format off
const ReceivedRow kReceived[] = {
    {"7-bit text",          "03913466" "0005812143F500" "00" TIME "02" "E834",
                            Coding::Ucs2, "", "68 00 69 00"},
    {"7-bit text, euro",    "03913466" "0005812143F500" "00" TIME "02" "9B32",
                            Coding::Ucs2, "", "AC 20"},
    {"7-bit text, at",      "03913466" "0005812143F500" "00" TIME "02" "0000",
                            Coding::Ucs2, "", "40 00 40 00"},
    {"7-bit text, nothing", "03913466" "0005812143F500" "00" TIME "00",
                            Coding::Ucs2, "", ""},
    {"7-bit text, class 0", "03913466" "0005812143F500" "10" TIME "02" "E834",
                            Coding::Ucs2, "", "68 00 69 00"},
    {"7-bit, header of 6",  "03913466" "4005812143F500" "00" TIME "09" "050003AA0201D069",
                            Coding::Ucs2, "05 00 03 AA 02 01", "68 00 69 00"},
    {"7-bit, header of 7",  "03913466" "4005812143F500" "00" TIME "0A" "06050423282329E834",
                            Coding::Ucs2, "06 05 04 23 28 23 29", "68 00 69 00"},
    {"UCS-2",               "03913466" "0005812143F500" "08" TIME "04" "D83DDE00",
                            Coding::Ucs2, "", "3D D8 00 DE"},
    {"UCS-2, tildes",       "03913466" "0005812143F500" "08" TIME "08" "007E007E0061007E",
                            Coding::Ucs2, "", "7E 00 7E 00 61 00 7E 00"},
    {"UCS-2, blinking",     "03913466" "0005812143F500" "08" TIME "06" "000100610001",
                            Coding::Ucs2, "", "01 00 61 00 01 00"},
    {"UCS-2, units of 0",   "03913466" "0005812143F500" "08" TIME "06" "006100000062",
                            Coding::Ucs2, "", "61 00 00 00 62 00"},
    {"octets",              "03913466" "0005812143F500" "04" TIME "03" "00FF80",
                            Coding::Binary, "", "00 FF 80"},
    {"octets, no octets",   "03913466" "4005812143F500" "04" TIME "07" "06050423282329",
                            Coding::Binary, "06 05 04 23 28 23 29", ""},
    {"octets, two elements", "03913466" "4005812143F500" "F5" TIME "0D" "0B05040B8423F0000303020100",
                            Coding::Binary, "0B 05 04 0B 84 23 F0 00 03 03 02 01", "00"},
};

struct UnreadableRow {
    const char *name;
    const char *pdu;
};

const UnreadableRow kUnreadable[] = {
    {"compressed",                         "03913466" "0005812143F500" "20" TIME "02" "E834"},
    {"header longer than a message, text", "03913466" "4005812143F500" "00" TIME "03" "FFAABB"},
    {"header longer than a message",       "03913466" "4005812143F500" "04" TIME "03" "FFAABB"},
    {"header of 140 in 3",                 "03913466" "4005812143F500" "04" TIME "03" "8BAABB"},
};
// clang-format on

/// What libgammu makes of a PDU; nothing when it makes nothing of it.
std::optional<IncomingSms> readByGammu(const QByteArray &hex)
{
    const QByteArray pdu = QByteArray::fromHex(hex);
    const auto message = std::make_unique<GSM_SMSMessage>();
    // The end of the heap block is the end of the message, so that reading past it is seen by us
    // at least where our own code does it.
    const GSM_Error error = GSM_DecodePDUFrame(
        GSM_GetGlobalDebug(), message.get(),
        reinterpret_cast<const unsigned char *>(pdu.constData()), size_t(pdu.size()), nullptr, 1);
    return error == ERR_NONE ? fromGammu(*message) : std::nullopt;
}

} // namespace

class TestGammuMessages : public QObject {
    Q_OBJECT

private slots:
    void received_data()
    {
        QTest::addColumn<int>("row");
        for (int row = 0; row < int(std::size(kReceived)); ++row) {
            QTest::newRow(kReceived[row].name) << row;
        }
    }
    void received()
    {
        QFETCH(int, row);
        const ReceivedRow &wanted = kReceived[row];
        const auto sms = readByGammu(wanted.pdu);
        QVERIFY(sms);
        QCOMPARE(int(sms->coding), int(wanted.coding));
        QCOMPARE(toHex(sms->header), QByteArray(wanted.header));
        QCOMPARE(toHex(sms->body), QByteArray(wanted.body));
        QCOMPARE(sms->serviceCenter, QByteArray("+4366"));
        QCOMPARE(sms->sender, QByteArray("12345"));
        QCOMPARE(QDateTime::fromSecsSinceEpoch(sms->time, Qt::UTC).toString(Qt::ISODate),
                 QString("2026-11-22T04:00:00Z"));
    }

    void unreadable_data()
    {
        QTest::addColumn<QByteArray>("pdu");
        for (const UnreadableRow &row : kUnreadable) {
            QTest::newRow(row.name) << QByteArray(row.pdu);
        }
    }
    void unreadable()
    {
        QFETCH(QByteArray, pdu);
        QVERIFY(!readByGammu(pdu));
    }

    void namesOfSenders()
    {
        const auto sms = readByGammu("03913466"
                                     "000BD0CDB0BC0E0200"
                                     "0004" TIME "0100");
        QVERIFY(sms);
        QVERIFY2(!sms->sender.isEmpty(), sms->sender);
    }

    void noTime()
    {
        const auto sms = readByGammu("03913466"
                                     "0005812143F50004"
                                     "FFFFFFFFFFFFFF"
                                     "0100");
        QVERIFY(sms);
        QCOMPARE(sms->time, qint64(0));
    }

    void refused_data()
    {
        QTest::addColumn<OutgoingSms>("sms");
        QTest::addColumn<int>("cause");
        const QByteArray longHeader = QByteArray::fromHex("0B05040B8423F00003030201");
        QTest::newRow("160 septets") << outgoing(Coding::Gsm7, utf16(QString(160, 'a'))) << 0;
        QTest::newRow("161 septets") << outgoing(Coding::Gsm7, utf16(QString(161, 'a'))) << 304;
        QTest::newRow("80 euros") << outgoing(Coding::Gsm7, utf16(QString(80, u'€'))) << 0;
        QTest::newRow("81 euros") << outgoing(Coding::Gsm7, utf16(QString(81, u'€'))) << 304;
        QTest::newRow("152 septets and ports")
            << outgoing(Coding::Gsm7, utf16(QString(152, 'a')), kPorts) << 0;
        QTest::newRow("153 septets and ports")
            << outgoing(Coding::Gsm7, utf16(QString(153, 'a')), kPorts) << 304;
        QTest::newRow("septets behind a long header")
            << outgoing(Coding::Gsm7, utf16("a"), longHeader) << 303;
        QTest::newRow("not in the alphabet") << outgoing(Coding::Gsm7, utf16("ç")) << 304;
        QTest::newRow("70 units") << outgoing(Coding::Ucs2, utf16(QString(70, u'я'))) << 0;
        QTest::newRow("71 units") << outgoing(Coding::Ucs2, utf16(QString(71, u'я'))) << 304;
        QTest::newRow("35 tildes") << outgoing(Coding::Ucs2, utf16(QString(35, '~'))) << 0;
        QTest::newRow("36 tildes") << outgoing(Coding::Ucs2, utf16(QString(36, '~'))) << 303;
        QTest::newRow("66 units and ports")
            << outgoing(Coding::Ucs2, utf16(QString(66, u'я')), kPorts) << 0;
        QTest::newRow("67 units and ports")
            << outgoing(Coding::Ucs2, utf16(QString(67, u'я')), kPorts) << 304;
        QTest::newRow("half a unit") << outgoing(Coding::Ucs2, "a") << 304;
        QTest::newRow("a unit of 0") << outgoing(Coding::Ucs2, QByteArray(2, '\0')) << 303;
        QTest::newRow("140 octets") << outgoing(Coding::Binary, QByteArray(140, '\xFF')) << 0;
        QTest::newRow("141 octets") << outgoing(Coding::Binary, QByteArray(141, '\xFF')) << 304;
        QTest::newRow("133 octets and ports")
            << outgoing(Coding::Binary, QByteArray(133, '\xFF'), kPorts) << 0;
        QTest::newRow("134 octets and ports")
            << outgoing(Coding::Binary, QByteArray(134, '\xFF'), kPorts) << 304;
        QTest::newRow("header of a wrong length")
            << outgoing(Coding::Binary, "a", "\x05\x01") << 304;
        QTest::newRow("8-bit text") << outgoing(Coding::Text8, "a") << 304;
        OutgoingSms sms = outgoing(Coding::Binary, "a");
        for (const QByteArray number :
             {"*100#", "12a", "", "+", "++4366", "123456789012345678901"}) {
            sms.destination = number;
            QTest::newRow(("to " + number).constData()) << sms << 303;
        }
        sms.destination = "12345678901234567890";
        QTest::newRow("to 20 digits") << sms << 0;
    }
    void refused()
    {
        QFETCH(OutgoingSms, sms);
        const auto message = std::make_unique<GSM_SMSMessage>();
        QTEST(toGammu(sms, "+4366", *message), "cause");
    }

    void serviceCentres()
    {
        const auto message = std::make_unique<GSM_SMSMessage>();
        OutgoingSms sms = outgoing(Coding::Binary, "a");
        QCOMPARE(toGammu(sms, "", *message), 330);
        QCOMPARE(toGammu(sms, "+4366", *message), 0);
        QCOMPARE(numberFromGammu(message->SMSC.Number), QByteArray("+4366"));
        sms.serviceCenter = "+4367";
        QCOMPARE(toGammu(sms, "+4366", *message), 0);
        QCOMPARE(numberFromGammu(message->SMSC.Number), QByteArray("+4367"));
    }

    void places()
    {
        IncomingSms sms;
        sms.sender = "1";
        sms.body = "23";
        const QByteArray place = placeOf(100001, sms);
        QCOMPARE(locationOf(place), 100001);
        QCOMPARE(placeOf(100001, sms), place);
        sms.sender = "12";
        sms.body = "3";
        QVERIFY(placeOf(100001, sms) != place);
        QCOMPARE(locationOf(""), 0);
        QCOMPARE(locationOf("x-1"), 0);
        QCOMPARE(locationOf("12"), 0);
    }
};

QTEST_GUILESS_MAIN(TestGammuMessages)
#include "tst_gammu_messages.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu.h"

#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::smspdu;

namespace {

// +491234567890, and 2026-11-21 12:34:56 in a zone an hour before UTC.
#define SENDER "0C 91 94 21 43 65 87 09"
#define TIME "62 11 12 21 43 65 40"

struct TpduRow {
    const char *name;
    Origin origin;
    const char *wire;
    QString says;
};
// clang-format off
const TpduRow kTpdus[] = {
    {"a text from the network", Origin::Network,
     "04 " SENDER " 00 00 " TIME " 05 E8 32 9B FD 06",
     u"deliver +491234567890 pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"hello\""_qs},
    {"without a text", Origin::Network,
     "04 " SENDER " 00 00 " TIME " 00",
     u"deliver +491234567890 pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"\""_qs},
    {"all flags", Origin::Network,
     "A8 " SENDER " 00 00 " TIME " 01 61",
     u"deliver more looped report reply-path +491234567890 pid 0 dcs 0 "
     "2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"an odd count of digits", Origin::Network,
     "04 05 81 21 43 F5 00 00 " TIME " 01 61",
     u"deliver 12345 pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"keys of a phone as digits", Origin::Network,
     "04 05 81 BA DC FE 00 00 " TIME " 01 61",
     u"deliver *#abc pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"a name as sender", Origin::Network,
     "04 07 D0 41 E1 30 08 00 00 " TIME " 01 61",
     u"deliver \"ABCA\" pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"no sender", Origin::Network,
     "04 00 81 00 00 " TIME " 01 61",
     u"deliver  pid 0 dcs 0 2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"a zone behind UTC", Origin::Network,
     "04 05 81 21 43 F5 00 00 62 11 12 21 43 65 2A 01 61",
     u"deliver 12345 pid 0 dcs 0 2026-11-21T12:34:56-05:30 gsm7 \"a\""_qs},
    {"a year of the last century", Origin::Network,
     "04 05 81 21 43 F5 00 00 99 21 13 32 95 95 00 01 61",
     u"deliver 12345 pid 0 dcs 0 1999-12-31T23:59:59Z gsm7 \"a\""_qs},
    {"a text in UCS-2", Origin::Network,
     "04 05 81 21 43 F5 00 08 " TIME " 06 04 16 D8 3D DE 00",
     u"deliver 12345 pid 0 dcs 8 2026-11-21T12:34:56+01:00 ucs2 \"Ж😀\""_qs},
    {"octets", Origin::Network,
     "04 05 81 21 43 F5 00 04 " TIME " 03 00 FF 7F",
     u"deliver 12345 pid 0 dcs 4 2026-11-21T12:34:56+01:00 octets 00 FF 7F"_qs},
    {"octets to a port", Origin::Network,
     "44 05 81 21 43 F5 00 F5 " TIME " 09 06 05 04 0B 84 23 F0 01 02",
     u"deliver 12345 pid 0 dcs 245 2026-11-21T12:34:56+01:00 ports 2948 9200 octets 01 02"_qs},
    {"a text behind a header", Origin::Network,
     "44 05 81 21 43 F5 00 00 " TIME " 0C 05 00 03 07 02 01 D0 65 36 FB 0D",
     u"deliver 12345 pid 0 dcs 0 2026-11-21T12:34:56+01:00 part 1 of 2 of 7 gsm7 \"hello\""_qs},
    {"a header alone, in septets", Origin::Network,
     "44 05 81 21 43 F5 00 00 " TIME " 07 05 00 03 07 02 01 00",
     u"deliver 12345 pid 0 dcs 0 2026-11-21T12:34:56+01:00 part 1 of 2 of 7 gsm7 \"\""_qs},
    {"a header that ends with a septet", Origin::Network,
     "44 05 81 21 43 F5 00 00 " TIME " 09 06 05 04 0B 84 23 F0 61",
     u"deliver 12345 pid 0 dcs 0 2026-11-21T12:34:56+01:00 ports 2948 9200 gsm7 \"a\""_qs},
    {"a text to the network", Origin::Phone,
     "01 2A " SENDER " 00 00 05 E8 32 9B FD 06",
     u"submit 42 +491234567890 pid 0 dcs 0 gsm7 \"hello\""_qs},
    {"all flags to the network", Origin::Phone,
     "A5 2A " SENDER " 00 00 01 61",
     u"submit no-duplicates report reply-path 42 +491234567890 pid 0 dcs 0 gsm7 \"a\""_qs},
    {"worth a day", Origin::Phone,
     "11 00 " SENDER " 00 00 A7 01 61",
     u"submit 0 +491234567890 pid 0 dcs 0 for 86400 gsm7 \"a\""_qs},
    {"worth until a day", Origin::Phone,
     "19 00 " SENDER " 00 00 " TIME " 01 61",
     u"submit 0 +491234567890 pid 0 dcs 0 until 2026-11-21T12:34:56+01:00 gsm7 \"a\""_qs},
    {"worth some seconds", Origin::Phone,
     "09 00 " SENDER " 00 00 02 1E 00 00 00 00 00 01 61",
     u"submit 0 +491234567890 pid 0 dcs 0 for 30 gsm7 \"a\""_qs},
    {"delivered", Origin::Network,
     "06 2A " SENDER " " TIME " 62 11 12 21 43 75 40 00",
     u"report 42 +491234567890 2026-11-21T12:34:56+01:00 2026-11-21T12:34:57+01:00 status 0"_qs},
    {"not delivered, with a text", Origin::Network,
     "06 2A " SENDER " " TIME " 62 11 12 21 43 75 40 46 07 00 00 01 61",
     u"report 42 +491234567890 2026-11-21T12:34:56+01:00 2026-11-21T12:34:57+01:00 status 70 gsm7 \"a\""_qs},
};

struct WrongRow {
    const char *name;
    Origin origin;
    const char *wire;
    int offset;
    const char *problem;
};
const WrongRow kWrong[] = {
    {"nothing", Origin::Network, "", 0, "the short message ends inside its first octet"},
    {"a deliver report", Origin::Phone, "00 00", 0, "0x00 begins no short message"},
    {"a submit report", Origin::Network, "01 00", 0, "0x01 begins no short message"},
    {"a command", Origin::Phone, "02 00", 0, "0x02 begins no short message"},
    {"a reserved kind", Origin::Network, "03 00", 0, "0x03 begins no short message"},
    {"an address too long", Origin::Network, "04 15 91", 1, "the address has 21 digits, 20 are the most"},
    {"an address of no type", Origin::Network, "04 05 11 21 43 F5", 2, "0x11 is no type of an address"},
    {"161 septets", Origin::Phone, "01 00 05 81 21 43 F5 00 00 A1", 9,
     "the user data have 161 septets, 160 are the most"},
    {"141 octets", Origin::Phone, "01 00 05 81 21 43 F5 00 04 8D", 9,
     "the user data have 141 octets, 140 are the most"},
    {"a header longer than the data", Origin::Phone, "41 00 05 81 21 43 F5 00 04 03 06 05 04", 10,
     "the user data header is longer than the user data"},
    {"a header and no data", Origin::Phone, "41 00 05 81 21 43 F5 00 04 00", 10,
     "the short message has no user data header"},
    {"elements of wrong lengths", Origin::Phone, "41 00 05 81 21 43 F5 00 04 04 03 05 04 00", 10,
     "the user data header has elements of wrong lengths"},
    {"bytes behind it", Origin::Phone, "01 00 05 81 21 43 F5 00 04 01 61 00 00", 11,
     "there are 2 bytes behind the short message"},
};

struct SchemeRow {
    int first;
    int last;
    Alphabet alphabet;
};
const SchemeRow kSchemes[] = { // but for the bits of the class
    {0x00, 0x03, Alphabet::Gsm7},       {0x04, 0x07, Alphabet::Octets},
    {0x08, 0x0B, Alphabet::Ucs2},       {0x0C, 0x0F, Alphabet::Gsm7},
    {0x10, 0x13, Alphabet::Gsm7},       {0x14, 0x17, Alphabet::Octets},
    {0x18, 0x1B, Alphabet::Ucs2},       {0x20, 0x3F, Alphabet::Compressed},
    {0x40, 0x43, Alphabet::Gsm7},       {0x44, 0x47, Alphabet::Octets},
    {0x58, 0x5B, Alphabet::Ucs2},       {0x60, 0x7F, Alphabet::Compressed},
    {0x80, 0xBF, Alphabet::Gsm7},       {0xC0, 0xDF, Alphabet::Gsm7},
    {0xE0, 0xEF, Alphabet::Ucs2},       {0xF0, 0xF3, Alphabet::Gsm7},
    {0xF4, 0xF7, Alphabet::Octets},     {0xF8, 0xFB, Alphabet::Gsm7},
    {0xFC, 0xFF, Alphabet::Octets},
};

struct PeriodRow {
    int octet;
    qint64 minutes;
};
const PeriodRow kPeriods[] = {
    {0, 5},                 {1, 10},                {143, 12 * 60},
    {144, 12 * 60 + 30},    {167, 24 * 60},         {168, 2 * 24 * 60},
    {196, 30 * 24 * 60},    {197, 5 * 7 * 24 * 60}, {255, 63 * 7 * 24 * 60},
};
// clang-format on

QString periodOf(const Validity &validity)
{
    if (validity.form == Validity::Form::None) {
        return {};
    }
    const QDateTime until = validity.until();
    return until.isValid() ? " until " + until.toString(Qt::ISODate)
                           : " for " + QString::number(validity.seconds());
}

QString dataOf(const Tpdu &tpdu)
{
    QString said;
    if (const auto ports = tpdu.ports()) {
        said += QString(" ports %1 %2").arg(ports->destination).arg(ports->source);
    }
    if (const auto part = tpdu.concatenation()) {
        said +=
            QString(" part %1 of %2 of %3").arg(part->part).arg(part->total).arg(part->reference);
    }
    switch (tpdu.alphabet()) {
    case Alphabet::Gsm7:
        return said + " gsm7 \"" + tpdu.text() + '"';
    case Alphabet::Ucs2:
        return said + " ucs2 \"" + tpdu.text() + '"';
    case Alphabet::Octets:
        return said + " octets " + toHex(tpdu.userData);
    case Alphabet::Compressed:
        break;
    }
    return said + " compressed " + toHex(tpdu.userData);
}

QString addressOf(const Address &address)
{
    return address.isAlphanumeric() ? '"' + address.toString() + '"' : address.toString();
}

/// What a message says, on a line.
QString said(const Tpdu &tpdu)
{
    static const char *const kNames[] = {"deliver", "submit", "report"};
    QString out = kNames[int(tpdu.kind)];
    out += tpdu.hasMore ? " more" : "";
    out += tpdu.isLooped ? " looped" : "";
    out += tpdu.rejectsDuplicates ? " no-duplicates" : "";
    out += tpdu.hasReport ? " report" : "";
    out += tpdu.hasReplyPath ? " reply-path" : "";
    if (tpdu.kind != Kind::Deliver) {
        out += ' ' + QString::number(tpdu.reference);
    }
    out += ' ' + addressOf(tpdu.address);
    if (tpdu.kind != Kind::StatusReport) {
        out += QString(" pid %1 dcs %2").arg(tpdu.pid).arg(tpdu.dcs);
    }
    if (tpdu.timeStamp.isValid()) {
        out += ' ' + tpdu.timeStamp.toString(Qt::ISODate);
    }
    if (tpdu.kind == Kind::StatusReport) {
        out += ' ' + tpdu.dischargeTime.toString(Qt::ISODate) + " status "
            + QString::number(tpdu.status);
        return tpdu.userData.isEmpty() ? out : out + dataOf(tpdu);
    }
    return out + periodOf(tpdu.validity) + dataOf(tpdu);
}

const Address kSender = Address::fromString("+491234567890");

} // namespace

class TestTpdu : public QObject {
    Q_OBJECT

private slots:
    void bothWays_data();
    void bothWays();
    void wrong_data();
    void wrong();
    void timesThatAreNone_data();
    void timesThatAreNone();
    void schemes();
    void classes();
    void periods();
    void periodsThatAreNone();
    void addresses();
    void serviceCentres_data();
    void serviceCentres();
    void whatFits_data();
    void whatFits();
    void whatCannotBeWritten();
};

void TestTpdu::bothWays_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kTpdus); ++i) {
        QTest::newRow(kTpdus[i].name) << int(i);
    }
}

void TestTpdu::bothWays()
{
    QFETCH(int, row);
    const QByteArray wire = fromHex(kTpdus[row].wire);
    const ReadResult result = readTpdu(wire, kTpdus[row].origin);
    QCOMPARE(result.problem, QString());
    QCOMPARE(said(result.tpdu), kTpdus[row].says);
    QCOMPARE(toHex(writeTpdu(result.tpdu)), toHex(wire));

    // Every byte is marked, in order.
    qsizetype end = 0;
    for (const Mark &mark : result.tpdu.marks) {
        QCOMPARE(mark.offset, end);
        end += mark.size;
    }
    QCOMPARE(end, wire.size());

    // A report may end behind its status.
    for (qsizetype size = 0; size < wire.size(); ++size) {
        const bool isReport = result.tpdu.kind == Kind::StatusReport && size == 25;
        QCOMPARE(readTpdu(wire.left(size), kTpdus[row].origin).isRead(), isReport);
    }
}

void TestTpdu::wrong_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kWrong); ++i) {
        QTest::newRow(kWrong[i].name) << int(i);
    }
}

void TestTpdu::wrong()
{
    QFETCH(int, row);
    const ReadResult result = readTpdu(fromHex(kWrong[row].wire), kWrong[row].origin);
    QCOMPARE(result.problem, QString(kWrong[row].problem));
    QCOMPARE(int(result.offset), kWrong[row].offset);
}

void TestTpdu::timesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::newRow("zeros") << fromHex("00 00 00 00 00 00 00");
    QTest::newRow("month 13") << fromHex("62 31 12 21 43 65 40");
    QTest::newRow("30 February") << fromHex("62 20 03 21 43 65 40");
    QTest::newRow("hour 24") << fromHex("62 11 12 42 43 65 40");
    QTest::newRow("no digit") << fromHex("62 11 12 21 43 6A 40");
    QTest::newRow("no digit in the zone") << fromHex("62 11 12 21 43 65 A0");
}

void TestTpdu::timesThatAreNone()
{
    QFETCH(QByteArray, time);
    const ReadResult result =
        readTpdu(fromHex("04 05 81 21 43 F5 00 00") + time + fromHex("01 61"), Origin::Network);
    QVERIFY(result.isRead());
    QVERIFY(!result.tpdu.timeStamp.isValid());
    QCOMPARE(result.tpdu.text(), u"a"_qs);
}

void TestTpdu::schemes()
{
    for (const SchemeRow &row : kSchemes) {
        for (int dcs = row.first; dcs <= row.last; ++dcs) {
            QVERIFY2(alphabetOf(quint8(dcs)) == row.alphabet, qPrintable(QString::number(dcs, 16)));
        }
    }
}

void TestTpdu::classes()
{
    QCOMPARE(messageClassOf(0x00), -1);
    QCOMPARE(messageClassOf(0x03), -1);
    QCOMPARE(messageClassOf(0x10), 0);
    QCOMPARE(messageClassOf(0x5A), 2);
    QCOMPARE(messageClassOf(0xF5), 1);
    QCOMPARE(messageClassOf(0xC3), -1);
}

void TestTpdu::periods()
{
    for (const PeriodRow &row : kPeriods) {
        const Validity validity{Validity::Form::Relative, QByteArray(1, char(row.octet))};
        QCOMPARE(validity.seconds(), row.minutes * 60);
        QCOMPARE(toHex(Validity::relative(row.minutes * 60).octets), toHex(validity.octets));
        if (row.octet > 0) {
            QCOMPARE(toHex(Validity::relative(row.minutes * 60 - 1).octets),
                     toHex(validity.octets));
        }
    }
    QCOMPARE(toHex(Validity::relative(std::numeric_limits<qint64>::max()).octets), "FF");
    QCOMPARE(toHex(Validity::relative(-1).octets), "00");
}

void TestTpdu::periodsThatAreNone()
{
    const auto enhanced = [](const char *octets) {
        return Validity{Validity::Form::Enhanced, fromHex(octets)}.seconds();
    };
    QCOMPARE(enhanced("00 00 00 00 00 00 00"), -1);
    QCOMPARE(enhanced("01 A7 00 00 00 00 00"), 86400);
    QCOMPARE(enhanced("41 A7 00 00 00 00 00"), 86400); // tried once
    QCOMPARE(enhanced("03 10 20 30 00 00 00"), 3600 + 120 + 3);
    QCOMPARE(enhanced("03 1A 20 30 00 00 00"), -1);
    QCOMPARE(enhanced("04 00 00 00 00 00 00"), -1);
    QCOMPARE(enhanced("81 40 00 00 00 00 00"), -1); // an extension
}

void TestTpdu::addresses()
{
    QCOMPARE(int(kSender.type), 0x91);
    QCOMPARE(kSender.value, "491234567890");
    QCOMPARE(kSender.toString(), "+491234567890");
    QCOMPARE(int(Address::fromString("12#").type), 0x81);
    QCOMPARE(int(Address::fromString("Shop").type), 0xD0);
    QCOMPARE(int(Address::fromString("").type), 0x81);
    QCOMPARE(Address::fromString("").toString(), "");

    // An eleventh letter fills the last octets.
    const auto sent = [](const QString &name) {
        return writeTpdu(textMessage(Kind::Deliver, Address::fromString(name), "a"));
    };
    const ReadResult result = readTpdu(sent("Lorem ipsum"), Origin::Network);
    QCOMPARE(result.tpdu.address.toString(), "Lorem ipsum");
    QVERIFY(sent("Lorem ipsum!").isNull());
    QVERIFY(sent("Ж").isNull());
    QVERIFY(!sent("12345678901234567890").isNull());
    QVERIFY(sent("123456789012345678901").isNull());
}

void TestTpdu::serviceCentres_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<int>("size"); // -1: none
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("isWritten");
    QTest::newRow("the modem's own") << fromHex("00") << 1 << "" << true;
    QTest::newRow("a number") << fromHex("07 91 44 77 00 09 00 00") << 8 << "+447700900000" << true;
    QTest::newRow("odd digits") << fromHex("03 81 21 F3") << 4 << "123" << true;
    QTest::newRow("with a message behind") << fromHex("03 81 21 F3 01 00") << 4 << "123" << false;
    QTest::newRow("nothing") << QByteArray() << -1 << "" << false;
    QTest::newRow("cut off") << fromHex("03 81 21") << -1 << "" << false;
    QTest::newRow("no digits") << fromHex("01 81") << -1 << "" << false;
    QTest::newRow("only fill") << fromHex("02 81 FF") << -1 << "" << false;
    QTest::newRow("no type") << fromHex("03 11 21 F3") << -1 << "" << false;
    QTest::newRow("too long") << fromHex("0C 91") + QByteArray(11, 0x11) << -1 << "" << false;
}

void TestTpdu::serviceCentres()
{
    QFETCH(QByteArray, octets);
    QFETCH(int, size);
    QFETCH(QString, number);
    QFETCH(bool, isWritten);
    const auto centre = readServiceCentre(octets);
    QCOMPARE(centre ? int(centre->size) : -1, size);
    QCOMPARE(centre ? centre->address.toString() : QString(), number);
    if (isWritten) {
        QCOMPARE(toHex(writtenServiceCentre(centre->address)), toHex(octets));
    }
}

void TestTpdu::whatFits_data()
{
    QTest::addColumn<Tpdu>("tpdu");
    QTest::addColumn<bool>("fits");
    const QByteArray ports = userDataHeader({portsElement({2948, 9200, true})});
    const QByteArray part = userDataHeader({concatenationElement({7, 2, 1, false})});
    const auto text = [](int size, const QByteArray &header, QChar character) {
        Tpdu tpdu = textMessage(Kind::Submit, kSender, QString(size, character));
        tpdu.udh = header;
        return tpdu;
    };
    const auto data = [](int size, const QByteArray &header) {
        Tpdu tpdu = dataMessage(Kind::Submit, kSender, QByteArray(size, 'a'));
        tpdu.udh = header;
        return tpdu;
    };
    QTest::newRow("160 septets") << text(160, {}, 'a') << true;
    QTest::newRow("161 septets") << text(161, {}, 'a') << false;
    QTest::newRow("152 septets to a port") << text(152, ports, 'a') << true;
    QTest::newRow("153 septets to a port") << text(153, ports, 'a') << false;
    QTest::newRow("153 septets of a part") << text(153, part, 'a') << true;
    QTest::newRow("154 septets of a part") << text(154, part, 'a') << false;
    QTest::newRow("70 units") << text(70, {}, QChar(0x416)) << true;
    QTest::newRow("71 units") << text(71, {}, QChar(0x416)) << false;
    QTest::newRow("67 units of a part") << text(67, part, QChar(0x416)) << true;
    QTest::newRow("68 units of a part") << text(68, part, QChar(0x416)) << false;
    QTest::newRow("140 octets") << data(140, {}) << true;
    QTest::newRow("141 octets") << data(141, {}) << false;
    QTest::newRow("133 octets to a port") << data(133, ports) << true;
    QTest::newRow("134 octets to a port") << data(134, ports) << false;
}

void TestTpdu::whatFits()
{
    QFETCH(Tpdu, tpdu);
    QFETCH(bool, fits);
    QCOMPARE(tpdu.fits(), fits);
    const QByteArray wire = writeTpdu(tpdu);
    QCOMPARE(!wire.isNull(), fits);
    if (fits) {
        const ReadResult result = readTpdu(wire, Origin::Phone);
        QCOMPARE(result.problem, QString());
        QCOMPARE(toHex(result.tpdu.userData), toHex(tpdu.userData));
        QCOMPARE(toHex(result.tpdu.udh), toHex(tpdu.udh));
    }
}

void TestTpdu::whatCannotBeWritten()
{
    Tpdu tpdu = textMessage(Kind::Submit, kSender, "a");
    tpdu.udh = fromHex("06 05 04");
    QVERIFY(writeTpdu(tpdu).isNull());
    tpdu.udh.clear();
    tpdu.validity.form = Validity::Form::Absolute;
    tpdu.validity.octets = fromHex("A7");
    QVERIFY(writeTpdu(tpdu).isNull());
    tpdu.validity = Validity::relative(0);
    QVERIFY(!writeTpdu(tpdu).isNull());
}

QTEST_GUILESS_MAIN(TestTpdu)
#include "tst_tpdu.moc"

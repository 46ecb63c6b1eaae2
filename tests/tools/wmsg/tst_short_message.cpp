// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/short_message.h"

#include "tests/support/hex.h"

#include <QtTest/QtTest>

using namespace wmsg::cli;
using namespace wmsg::smspdu;

namespace {

// "hello" from +491234567890, at 2026-11-21 12:34:56 in a zone an hour before UTC.
#define DELIVER "04 0C 91 94 21 43 65 87 09 00 00 62 11 12 21 43 65 40 05 E8 32 9B FD 06"
#define SUBMIT "01 2A 05 81 21 43 F5 00 00 01 61"
#define CENTRE "07 91 44 77 00 09 00 00"

struct ReadRow {
    const char *name;
    const char *bytes;
    int kind; // -1: not read
    int start; // else the offset of the problem
    const char *problem;
};
// clang-format off
const ReadRow kRead[] = {
    {"deliver",                           DELIVER,          int(Kind::Deliver), 0, ""},
    {"deliver behind a centre",           CENTRE DELIVER,   int(Kind::Deliver), 8, ""},
    {"deliver behind no number",          "00" DELIVER,     int(Kind::Deliver), 1, ""},
    {"submit",                            SUBMIT,           int(Kind::Submit),  0, ""},
    {"submit behind a centre",            CENTRE SUBMIT,    int(Kind::Submit),  8, ""},
    {"submit behind no number",           "00" SUBMIT,      int(Kind::Submit),  1, ""},
    {"nothing",                           "",               -1, 0, "the short message ends inside its first octet"},
    {"a centre alone",                    CENTRE,           -1, 8, "the short message ends inside its first octet"},
    {"cut behind a centre",               CENTRE "01 2A 05 81 21 43 F5 00 00 01", -1, 18,
     "the short message ends inside its user data"},
    {"a byte behind it",                  SUBMIT "00",      -1, 11, "there is a byte behind the short message"},
};
// clang-format on

/// A part of a message in UCS-2.
ShortMessage partOf(int reference, int total, int part, const QByteArray &data,
                    const QString &sender = "+491234567890")
{
    Tpdu tpdu = dataMessage(Kind::Deliver, Address::fromString(sender), data);
    tpdu.dcs = 8;
    tpdu.udh = userDataHeader(
        {concatenationElement({quint16(reference), quint8(total), quint8(part), false})});
    const ShortMessageResult read = readShortMessage(writeTpdu(tpdu));
    return read.message.value_or(ShortMessage());
}

QString said(const std::optional<JoinedMessage> &message)
{
    return message ? message->text() : "nothing yet";
}

} // namespace

class TestShortMessage : public QObject {
    Q_OBJECT

private slots:
    void read_data();
    void read();
    void joined();
    void joinedAcrossCharacters();
    void keptApart();
    void incomplete();
    void alone();
};

void TestShortMessage::read_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kRead); ++i) {
        QTest::newRow(kRead[i].name) << int(i);
    }
}

void TestShortMessage::read()
{
    QFETCH(int, row);
    const ReadRow &expected = kRead[row];
    const QByteArray bytes = fromHex(expected.bytes);
    const ShortMessageResult result = readShortMessage(bytes);
    QCOMPARE(result.problem, QString(expected.problem));
    QCOMPARE(result.message ? int(result.message->tpdu.kind) : -1, expected.kind);
    QCOMPARE(result.message ? int(result.message->start()) : int(result.offset), expected.start);
    QCOMPARE(toHex(result.message ? result.message->bytes : bytes), toHex(bytes));
}

void TestShortMessage::joined()
{
    ShortMessageJoiner joiner;
    QVERIFY(!joiner.add(partOf(7, 3, 3, fromHex("0063"))));
    QVERIFY(!joiner.add(partOf(7, 3, 1, fromHex("0061"))));
    QVERIFY(!joiner.add(partOf(7, 3, 1, fromHex("0078")))); // comes again
    const auto whole = joiner.add(partOf(7, 3, 2, fromHex("0062")));
    QCOMPARE(said(whole), "abc");
    QVERIFY(whole->isWhole());
    QVERIFY(joiner.takeIncomplete().isEmpty());
}

void TestShortMessage::joinedAcrossCharacters()
{
    ShortMessageJoiner joiner;
    QVERIFY(!joiner.add(partOf(7, 2, 1, fromHex("0061 D83D"))));
    QCOMPARE(said(joiner.add(partOf(7, 2, 2, fromHex("DE00 0062")))), u"a😀b"_qs);
}

void TestShortMessage::keptApart()
{
    ShortMessageJoiner joiner;
    const QByteArray data = fromHex("0061");
    QVERIFY(!joiner.add(partOf(7, 2, 1, data)));
    QVERIFY(!joiner.add(partOf(8, 2, 2, data)));
    QVERIFY(!joiner.add(partOf(7, 3, 2, data)));
    QVERIFY(!joiner.add(partOf(7, 2, 2, data, "12345")));
    QCOMPARE(joiner.takeIncomplete().size(), 4);
}

void TestShortMessage::incomplete()
{
    ShortMessageJoiner joiner;
    QVERIFY(!joiner.add(partOf(9, 4, 2, fromHex("0062"))));
    QVERIFY(!joiner.add(partOf(7, 2, 1, fromHex("0061"))));
    const QList<JoinedMessage> left = joiner.takeIncomplete();
    QCOMPARE(left.size(), 2);
    QCOMPARE(left[0].missingParts(), "1, 3, 4 of 4");
    QCOMPARE(left[1].missingParts(), "2 of 2");
    QVERIFY(!joiner.add(partOf(8, 255, 254, fromHex("0062"))));
    QVERIFY(!joiner.add(partOf(8, 255, 3, fromHex("0062"))));
    QCOMPARE(joiner.takeIncomplete()[0].missingParts(), "1, 2, 4 to 253, 255 of 255");
    QVERIFY(!left[0].isWhole());
    QVERIFY(!left[0].isPush());
    QVERIFY(joiner.takeIncomplete().isEmpty());
}

void TestShortMessage::alone()
{
    ShortMessageJoiner joiner;
    QCOMPARE(said(joiner.add(*readShortMessage(fromHex(DELIVER)).message)), "hello");
    QCOMPARE(said(joiner.add(partOf(7, 1, 1, fromHex("0061")))), "a"); // the only part
}

QTEST_GUILESS_MAIN(TestShortMessage)
#include "tst_short_message.moc"

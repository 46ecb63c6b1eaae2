// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/intake/messages.h"

#include "core/wmfmentry.h"

using namespace wmsg::intake;

namespace {

constexpr int kFieldsAt = 7; // where the fields begin in a notification of messages.h

} // namespace

namespace {

/// A field as it comes, as it is written anew, and the remark about it.
struct ChangedRow {
    const char *name;
    const char *given;
    const char *wanted;
    const char *step;
};

const ChangedRow kChanged[] = {
    {"a field above 24, one byte", "99 80", "", "field 0x99 was left out"},
    {"a field above 24, counted", "A3 02 80 81", "", "field 0xA3 was left out"},
    {"a field above 24, counted by a uintvar", "A3 1F 02 80 81", "", "field 0xA3 was left out"},
    {"a field above 24, a text", "A6 61 62 00", "", "field 0xA6 was left out"},
    {"a field above 24, a quoted text", "A6 22 61 62 00", "", "field 0xA6 was left out"},
    {"a field above 24, a text with a quote", "A6 7F E4 00", "", "field 0xA6 was left out"},
    {"field 0", "80 80", "", "field 0x80 was left out"},
    {"a text field", "58 2D 41 00 62 00", "", "the text field \"X-A\" was left out"},
    {"a text field that is no token", "20 00 62 00", "", "the text field \" \" was left out"},
    {"a text field with a counted value", "58 00 02 80 81 8A 80", "8A 80",
     "the text field \"X\" was left out"},
    {"a text without a value", "58 2D 41 00 8A 80", "8A 80", "the text field \"X-A\" was left out"},
    {"a text field in UTF-8", "58 2D 41 00 C3 BC 00 8A 80", "8A 80",
     "the text field \"X-A\" was left out"},
    {"a text field with an empty value", "58 00 00 8A 80", "8A 80",
     "the text field \"X\" was left out"},
    {"reply charging", "9C 80 9D 06 80 04 5F 00 00 00 9E 61 00 9F 02 10 00", "",
     "field 0x9C was left out"},
    {"forwarders", "A0 05 01 80 61 62 00 A1 06 81 04 5F 00 00 00", "", "field 0xA0 was left out"},
    {"what message boxes know", "A2 80 A3 80 A4 05 80 03 EA 61 00 A5 80 A6 61 00", "",
     "field 0xA2 was left out"},
    {"an element descriptor", "B2 08 61 00 86 62 00 81 EA 00", "", "field 0xB2 was left out"},
    {"zeros", "00 00 8A 80", "8A 80", "zeros between the fields were skipped"},
    {"a class as text", "8A 61 75 74 6F 00", "8A 83", "field 0x8A: the message class is a text"},
    {"a class in other letters", "8A 41 64 76 65 72 74 69 73 65 6D 65 6E 74 00", "8A 81",
     "field 0x8A: the message class is a text"},
    {"a class of somebody's own", "8A 4E 65 77 00", "8A 80",
     "field 0x8A: the message class \"New\" became personal"},
    {"a priority as a text", "8F 48 69 67 68 00", "8F 82", "field 0x8F: a code was a text"},
    {"a flag as a text", "86 59 65 73 00", "86 80", "field 0x86: a code was a text"},
    {"a flag as a text, no", "90 6E 6F 00", "90 81", "field 0x90: a code was a text"},
    {"a flag as another text", "86 61 00", "",
     "field 0x86: a field that has another form was left out"},
    {"a flag that is none", "86 05 01 02 03 04 05", "",
     "field 0x86: a field that has another form was left out"},
    {"a flag of another value", "86 82", "",
     "field 0x86: a field that has another form was left out"},
    {"a code as a text", "8F 61 00", "", "field 0x8F: a field that has another form was left out"},
    {"a subject in ISO-8859-1", "96 04 84 FC 61 00", "96 06 EA 7F C3 BC 61 00",
     "field 0x96: a text became UTF-8"},
    {"a subject in UTF-16", "96 07 02 03 F7 FE FF 00 FC", "96 05 EA 7F C3 BC 00",
     "field 0x96: a text became UTF-8"},
    {"a subject in UTF-16 with its end", "96 09 02 03 F7 00 61 00 00 00 00", "96 03 EA 61 00",
     "field 0x96: a text became UTF-8"},
    {"a charset without its high bit", "96 03 6A 61 00", "96 03 EA 61 00",
     "field 0x96: a text became UTF-8"},
    {"any charset", "96 03 80 FC 00", "96 05 EA 7F C3 BC 00", "field 0x96: a text became UTF-8"},
    {"a text that is no UTF-8", "96 61 FC 00", "96 05 EA 61 C3 BC 00",
     "field 0x96: a text became UTF-8"},
    {"a text that begins above 127", "96 FC 61 00", "96 06 EA 7F C3 BC 61 00",
     "field 0x96: a text became UTF-8"},
    {"a word of mail", "96 3D 3F 75 74 66 2D 38 3F 51 3F 61 3F 3D 00", "96 03 EA 61 00",
     "field 0x96: a text became UTF-8"},
    {"a mark in front", "96 06 EA EF BB BF 61 00", "96 03 EA 61 00",
     "field 0x96: a text became UTF-8"},
    {"a cut character", "96 04 EA 61 C3 00", "96 03 EA 61 00", "field 0x96: a text became UTF-8"},
    {"a subject whose length leaves its NUL out", "96 03 84 FC 61 00", "96 06 EA 7F C3 BC 61 00",
     "field 0x96: a text became UTF-8"},
    {"a subject whose length ends in a letter", "96 03 EA 61 62 63 00 8A 80",
     "96 05 EA 61 62 63 00 8A 80", "field 0x96: a text became UTF-8"},
    {"a subject whose length ends in a character", "96 03 EA 61 C3 BC 00 8A 80",
     "96 05 EA 61 C3 BC 00 8A 80", "field 0x96: a text became UTF-8"},
    {"a subject whose length takes the next field in", "96 05 EA 61 00 8A 80",
     "96 03 EA 61 00 8A 80", "field 0x96: a text became UTF-8"},
    {"a subject that reaches past the end", "96 1E EA 61 00 8A 80", "96 03 EA 61 00 8A 80",
     "field 0x96: a text became UTF-8"},
    {"a subject in UTF-32", "96 0B 02 03 FA 00 00 00 FC 00 00 00 00", "96 05 EA 7F C3 BC 00",
     "field 0x96: a text became UTF-8"},
    {"a charset with zeros in front", "96 07 03 00 00 6A 61 00 00", "96 03 EA 61 00",
     "field 0x96: a text became UTF-8"},
    {"ISO-8859-1 without its high bit", "96 04 04 FC 61 00", "96 06 EA 7F C3 BC 61 00",
     "field 0x96: a text became UTF-8"},
    {"a charset that has no number", "96 05 02 27 0F FC 00", "96 05 EA 7F C3 BC 00",
     "field 0x96: a text became UTF-8"},
    {"two words of mail and a blank",
     "96 3D 3F 75 74 66 2D 38 3F 42 3F 77 37 77 3D 3F 3D 20 3D 3F 69 73 6F 2D 38 38 35 39 2D 31 3F"
     "71 3F 3D 46 43 3F 3D 00",
     "96 07 EA 7F C3 BC C3 BC 00", "field 0x96: a text became UTF-8"},
    {"an empty subject", "96 02 6A 00", "", "field 0x96: an empty text was left out"},
    {"a sender without its length", "89 2B 34 39 00", "89 05 80 2B 34 39 00",
     "field 0x89: a sender had no length"},
    {"a sender without length, with token", "89 80 61 40 78 00", "89 05 80 61 40 78 00",
     "field 0x89: a sender had no length"},
    {"nobody without a length", "89 81", "", "field 0x89: a sender that is none was left out"},
    {"nobody with more bytes", "89 03 81 61 00", "",
     "field 0x89: a sender that is none was left out"},
    {"a sender that reaches past the end", "89 1E 80 61 40 78 00", "",
     "field 0x89: a sender that reaches past the end was left out"},
    {"a sender with bytes behind it", "89 07 80 61 40 78 00 41 42", "89 05 80 61 40 78 00",
     "field 0x89: the sender was written anew"},
    {"a sender whose length leaves its NUL out", "89 04 80 61 40 78 00", "89 05 80 61 40 78 00",
     "field 0x89: the sender was written anew"},
    {"a sender whose length is too short", "89 03 80 61 40 78 00 8A 80",
     "89 05 80 61 40 78 00 8A 80", "field 0x89: the sender was written anew"},
    {"a sender whose length takes the next field in", "89 07 80 61 40 78 00 8A 80",
     "89 05 80 61 40 78 00 8A 80", "field 0x89: the sender was written anew"},
    {"a sender without its token", "89 04 61 40 78 00", "89 05 80 61 40 78 00",
     "field 0x89: the sender was written anew"},
    {"nobody with the next field", "89 03 81 8A 80", "8A 80",
     "field 0x89: a sender that is none was left out"},
    {"a sender in ISO-8859-1", "89 0B 80 09 84 FC 20 3C 61 40 78 3E 00",
     "89 0D 80 0B EA 7F C3 BC 20 3C 61 40 78 3E 00", "field 0x89: the sender was written anew"},
    {"an empty sender", "89 02 80 00", "", "field 0x89: the sender was written anew"},
    {"a suffix in small letters", "97 2B 34 2F 74 79 70 65 3D 70 6C 6D 6E 00",
     "97 2B 34 2F 54 59 50 45 3D 50 4C 4D 4E 00", "field 0x97: an address was written anew"},
    {"IPv4", "97 31 2E 32 2F 54 59 50 45 3D 49 50 76 34 00",
     "97 31 2E 32 2F 54 59 50 45 3D 50 4C 4D 4E 00", "field 0x97: an address was written anew"},
    {"IPv6", "97 3A 3A 31 2F 54 59 50 45 3D 49 50 76 36 00",
     "97 3A 3A 31 2F 54 59 50 45 3D 50 4C 4D 4E 00", "field 0x97: an address was written anew"},
    {"mail with a suffix", "97 61 40 78 2F 54 59 50 45 3D 50 4C 4D 4E 00", "97 61 40 78 00",
     "field 0x97: an address was written anew"},
    {"a number with a name", "97 41 20 3C 2B 34 2F 54 59 50 45 3D 50 4C 4D 4E 3E 00",
     "97 2B 34 2F 54 59 50 45 3D 50 4C 4D 4E 00", "field 0x97: an address was written anew"},
    {"a quoted name", "97 22 41 22 20 3C 61 40 78 3E 00", "97 41 20 3C 61 40 78 3E 00",
     "field 0x97: an address was written anew"},
    {"an empty address", "97 00", "", "field 0x97: an empty address was left out"},
    {"an address with a suffix behind a quote", "97 2B 34 2F 22 54 59 50 45 3D 78 00",
     "97 2B 34 2F 54 59 50 45 3D 50 4C 4D 4E 00", "field 0x97: an address was written anew"},
    {"an address that begins with a control character",
     "97 0D EA 05 2F 74 79 70 65 3D 70 6C 6D 6E 00", "97 0D EA 05 2F 54 59 50 45 3D 50 4C 4D 4E 00",
     "field 0x97: an address was written anew"},
    {"a time with bytes behind it", "88 06 81 02 0E 10 00 00", "88 04 81 02 0E 10",
     "field 0x88: the length of a time was wrong"},
    {"a time whose length is too short", "88 03 81 02 0E 10", "88 04 81 02 0E 10",
     "field 0x88: the length of a time was wrong"},
    {"a time whose length takes the next field in", "88 06 81 02 0E 10 86 80",
     "88 04 81 02 0E 10 86 80", "field 0x88: the length of a time was wrong"},
    {"a time without its length", "88 81 02 0E 10", "88 04 81 02 0E 10",
     "field 0x88: a time had no length"},
    {"a time that is a token alone", "88 81 8A 80", "8A 80",
     "field 0x88: a field that has another form was left out"},
    {"a time of another form", "88 02 85 80", "",
     "field 0x88: a time of another form was left out"},
    {"a time as a text", "88 61 00", "", "field 0x88: a field that has another form was left out"},
    {"a version as a text", "8D 31 2E 30 00", "",
     "field 0x8D: a field that has another form was left out"},
};

} // namespace

class TestHeaderIntake : public QObject {
    Q_OBJECT

private slots:
    void kept_data();
    void kept();
    void changed_data();
    void changed();
    void junk();
    void anyOrder();
    void types_data();
    void types();
    void wanting_data();
    void wanting();
    void facts();
    void errorsInsteadOfMessages();
    void readReports();
    void everyTruncation();
};

// What the codec reads as it is meant.
void TestHeaderIntake::kept_data()
{
    QTest::addColumn<QByteArray>("fields");
    const auto row = [](const char *name, const char *hex) {
        QTest::newRow(name) << fromHex(hex);
    };
    row("nothing more", "");
    row("the sender", "89 05 80 61 40 78 00");
    row("a sender with name", "89 09 80 41 20 3C 61 40 78 3E 00");
    row("nobody", "89 01 81");
    row("a subject in UTF-8", "96 05 EA C3 BC 61 00");
    row("a subject as a text", "96 61 62 00");
    row("a subject in ISO-8859-1 that is ASCII", "96 04 84 61 62 00");
    row("a subject in a charset of two bytes' number", "96 05 02 08 24 61 00");
    row("a subject with a quote", "96 05 EA 7F C3 BC 00");
    row("a number", "97 2B 34 39 2F 54 59 50 45 3D 50 4C 4D 4E 00");
    row("a number without suffix", "97 2B 34 39 00");
    row("a sender of letters", "97 41 42 43 00");
    row("an address of mail", "97 61 40 78 00");
    row("class, priority, reports", "8A 80 8F 81 86 80 90 81");
    row("the priority of a fresh message", "8F 01");
    row("an expiry from now", "88 04 81 02 0E 10");
    row("an absolute expiry", "88 06 80 04 5F 00 00 00");
    row("a size", "8E 02 10 00");
    row("a date", "85 04 5F 00 00 00");
}

void TestHeaderIntake::kept()
{
    QFETCH(QByteArray, fields);
    const QByteArray pdu = notificationWith(fields);
    const Taken result = taken(pdu);
    QCOMPARE(result.problem.what, QString());
    QCOMPARE(linesOf(result.steps), QStringList());
    QVERIFY(result.isUnchanged);
    QCOMPARE(toHex(result.pdu.joined()), toHex(pdu));
    decoded(result);
}

void TestHeaderIntake::changed_data()
{
    QTest::addColumn<QByteArray>("given");
    QTest::addColumn<QByteArray>("wanted");
    QTest::addColumn<QString>("step");
    for (const ChangedRow &row : kChanged) {
        QTest::newRow(row.name) << fromHex(row.given) << fromHex(row.wanted) << QString(row.step);
    }
}

void TestHeaderIntake::changed()
{
    QFETCH(QByteArray, given);
    QFETCH(QByteArray, wanted);
    QFETCH(QString, step);
    const Taken result = taken(notificationWith(given));
    QCOMPARE(result.problem.what, QString());
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(notificationWith(wanted)));
    QVERIFY(!result.isUnchanged);
    QVERIFY2(linesOf(result.steps).contains(QString::number(kFieldsAt) + ' ' + step),
             qPrintable(linesOf(result.steps).join(u'\n')));
    decoded(result);
}

// A notification that is complete may have anything behind it; one that is not goes aside.
void TestHeaderIntake::junk()
{
    const Taken complete = taken(notificationWith({}) + fromHex("07 01"));
    QCOMPARE(complete.verdict, Verdict::Readable);
    QCOMPARE(toHex(complete.pdu.joined()), toHex(notificationWith({})));
    QCOMPARE(linesOf(complete.steps), QStringList{"10 the bytes behind the header were left out"});

    const Taken cut = taken(notificationWith(fromHex("07 01")));
    QCOMPARE(cut.verdict, Verdict::Unreadable);
    QCOMPARE(linesOf({cut.problem}),
             QStringList{"7 what begins here is no header field, and the header is not whole"});
    const Taken noBody = taken(retrievalHeader() + fromHex("07 84 A3 00"));
    QCOMPARE(noBody.verdict, Verdict::Unreadable);
}

// A message that is written anew begins with its type.
void TestHeaderIntake::anyOrder()
{
    const Taken kept = taken(fromHex("98 74 00 83 6C 00 8D 90 8C 82"));
    QVERIFY(kept.isUnchanged);
    const Taken written = taken(fromHex("98 74 00 83 6C 00 8D 90 99 80 8C 82"));
    QCOMPARE(toHex(written.pdu.joined()), "8C 82 98 74 00 83 6C 00 8D 90");
}

void TestHeaderIntake::types_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("isFromNetwork");
    const QList<int> network = {0x81, 0x82, 0x84, 0x86, 0x87, 0x88};
    for (int type = 0x80; type <= 0x97; ++type) {
        QTest::addRow("%02X", type) << type << network.contains(type);
    }
}

void TestHeaderIntake::types()
{
    QFETCH(int, type);
    QFETCH(bool, isFromNetwork);
    const QByteArray pdu =
        fromHex("8C") + char(type) + fromHex("98 74 00 8D 90 8B 6D 00 92 80 83 6C 00");
    QCOMPARE(taken(pdu).verdict != Verdict::Unreadable, isFromNetwork);
    QVERIFY(taken(pdu, Origin::File).verdict != Verdict::Unreadable);
}

void TestHeaderIntake::wanting_data()
{
    QTest::addColumn<QByteArray>("pdu");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *name, const char *hex, const char *problem) {
        QTest::newRow(name) << fromHex(hex) << QString(problem);
    };
    row("no location", "8C 82 98 74 00", "0 the notification has no location");
    row("a blank location", "8C 82 98 74 00 83 20 20 00", "0 the notification has no location");
    row("no transaction id", "8C 82 83 6C 00", "0 the notification has no transaction id");
    row("no type", "98 74 00 83 6C 00", "0 there is no message type");
    row("a send request", "8C 80 98 74 00", "0 no network sends a message of type 0x80");
}

void TestHeaderIntake::wanting()
{
    QFETCH(QByteArray, pdu);
    const Taken result = taken(pdu);
    QCOMPARE(result.verdict, Verdict::Unreadable);
    QTEST(linesOf({result.problem}).first(), "problem");
}

void TestHeaderIntake::facts()
{
    const Taken result = taken(fromHex("8C 84 98 74 31 00 8B 6D 31 00 99 80 9A 04 EA 6F 6B 00")
                               + fromHex("B7 61 70 70 00 B8 72 65 00 84 A3 00"));
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(int(result.facts.type), 0x84);
    QCOMPARE(result.facts.transactionId, QString("t1"));
    QCOMPARE(result.facts.messageId, QString("m1"));
    QCOMPARE(int(result.facts.retrieveStatus), 0x80);
    QCOMPARE(result.facts.retrieveText, QString("ok"));
    // The fields of the applications become the parameters that the codec knows.
    WMMSMsg message = decoded(result);
    QCOMPARE(message.getAppID(), QString("app"));
    QCOMPARE(message.getReplyAppID(), QString("re"));
    QCOMPARE(taken(notificationWith(fromHex("83 20 6C 20 00"))).facts.location, QString("l"));
    const Taken forwarded =
        taken(notificationWith(fromHex("A0 05 01 01 61 62 00 A0 05 82 03 84 FC 00"
                                       "A1 06 81 04 5F 00 00 00 A1 02 81 82 A1 01 81 A0 00")));
    QCOMPARE(forwarded.facts.previousSenders, (QStringList{"ab", "ü"}));
    QCOMPARE(forwarded.facts.previousDates, (QList<quint32>{0x5F000000, 2}));
}

void TestHeaderIntake::errorsInsteadOfMessages()
{
    const Taken error = taken(retrievalHeader() + fromHex("99 E2 9A 04 EA 6E 6F 00"));
    QCOMPARE(error.verdict, Verdict::NotRetrieved);
    QCOMPARE(int(error.facts.retrieveStatus), 0xE2);
    QCOMPARE(error.facts.retrieveText, QString("no"));
    QCOMPARE(taken(retrievalHeader() + fromHex("99 C0 84 A3 00")).verdict, Verdict::NotRetrieved);
    const Taken empty = taken(retrievalHeader() + fromHex("99 80"));
    QCOMPARE(empty.verdict, Verdict::Readable);
    QCOMPARE(toHex(empty.pdu.joined()), toHex(retrievalHeader()));
}

void TestHeaderIntake::readReports()
{
    const QByteArray report =
        fromHex("8D 92 8B 6D 31 00 97 2B 34 00 89 01 81 85 04 5F 00 00 00 9B 80");
    const Taken result = taken(fromHex("8C 88") + report);
    QCOMPARE(result.verdict, Verdict::ReadReport);
    QCOMPARE(result.facts.messageId, QString("m1"));
    QCOMPARE(int(result.facts.readStatus), 0x80);
    // 0x87 is a read report there, and the stored form of this system in a file.
    QCOMPARE(taken(fromHex("8C 87") + report).verdict, Verdict::ReadReport);
    QCOMPARE(taken(fromHex("8C 87") + report, Origin::File).verdict, Verdict::Readable);
}

// Each prefix of a message is read by the codec, or refused with its place.
void TestHeaderIntake::everyTruncation()
{
    const QByteArray pdu = notificationWith(
        fromHex("89 05 80 61 40 78 00 96 04 84 FC 61 00 99 80 58 00 62 00 88 04 81 02 0E 10"));
    for (qsizetype size = 0; size < pdu.size(); ++size) {
        const Taken result = taken(pdu.first(size));
        QVERIFY(result.problem.offset <= size);
        if (result.verdict == Verdict::Readable) {
            decoded(result);
        } else {
            QVERIFY(!result.problem.what.isEmpty());
        }
    }
}

QTEST_GUILESS_MAIN(TestHeaderIntake)
#include "tst_header_intake.moc"

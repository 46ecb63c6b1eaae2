// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/intake/messages.h"

using namespace wmsg::intake;

namespace {

const QByteArray kPdu = notificationWith({});

QByteArray push(const char *headers, int length = -1)
{
    const QByteArray bytes = fromHex(headers);
    return fromHex("01 06") + char(length < 0 ? bytes.size() : length) + bytes + kPdu;
}

} // namespace

class TestPushEnvelope : public QObject {
    Q_OBJECT

private slots:
    void unwrapped_data();
    void unwrapped();
    void anyOrder();
    void versionInFront();
    void refused_data();
    void refused();
};

void TestPushEnvelope::unwrapped_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isUnchanged");
    QTest::addColumn<QStringList>("steps");
    const auto row = [](const char *name, const QByteArray &bytes, bool isUnchanged = false,
                        const QStringList &steps = {}) {
        QTest::newRow(name) << bytes << isUnchanged << steps;
    };
    row("bare", kPdu, true);
    row("push", push("BE"));
    row("push with the application id of MMS", push("BE AF 84"));
    row("push with another application id", push("BE AF 81"));
    row("confirmed push", fromHex("01 07 01 BE") + kPdu);
    row("push of the transaction 8C", fromHex("8C 06 03 BE AF 84") + kPdu);
    row("push of the highest transaction", fromHex("FF 06 03 BE AF 84") + kPdu);
    row("length of the push headers in two bytes", fromHex("01 06 80 03 BE AF 84") + kPdu);
    row("type in its long form", push("02 01 3E"));
    row("type in its general form, by name",
        push("1F 22 6170706C69636174696F6E2F766E642E7761702E6D6D732D6D65737361676500 81 EA"));
    row("application id as a text",
        push("BE AF 782D7761702D6170706C69636174696F6E3A6D6D732E756100"));
    row("application id as a long number", push("BE AF 01 04"));
    row("headers in text", push("BE 582D41 00 62 00"));
    row("other headers before and behind", push("BE 8D 90 AF 84 B4 84"));
    row("type in its general form", push("03 BE 81 EA AF 84"));
    row("type as a text", push("6170706C69636174696F6E2F766E642E7761702E6D6D732D6D65737361676500"));
    row("type as a text in other letters",
        push("4170706C69636174696F6E2F766E642E5741502E6D6D732D6D65737361676500"));
    row("push headers longer than told", push("BE AF 84", 1), false,
        {"2 the length of the push headers is wrong"});
    row("push headers shorter than told", push("BE AF 84", 5), false,
        {"2 the length of the push headers is wrong"});
    row("push headers without a length", push("BE AF 84", 0), false,
        {"2 the length of the push headers is wrong"});
    row("behind the ports of a short message", fromHex("06 05 04 0B 84 23 F0") + push("BE AF 84"));
    row("behind a concatenation of one",
        fromHex("0B 05 04 0B 84 23 F0 00 03 07 01 01") + push("BE"));
}

void TestPushEnvelope::unwrapped()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, isUnchanged);
    const Taken result = taken(bytes);
    QCOMPARE(result.problem.what, QString());
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(kPdu));
    QCOMPARE(result.isUnchanged, isUnchanged);
    QTEST(linesOf(result.steps), "steps");
}

// Behind headers of the right length a message may begin with any of its fields.
void TestPushEnvelope::anyOrder()
{
    const QByteArray pdu = fromHex("98 74 00 8D 90 8C 82 83 6C 00");
    const Taken result = taken(fromHex("01 06 01 BE") + pdu);
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(pdu));
}

// Its version is no length of a user data header, though elements and a push seem to follow it.
void TestPushEnvelope::versionInFront()
{
    QByteArray pdu = fromHex("8D 90 8B 6D 00 8C 84 98 74 00 84 9E");
    pdu += QByteArray(0x8D + 1 - pdu.size(), 'x') + push("BE AF 84");
    const Taken result = taken(pdu);
    QCOMPARE(result.verdict, Verdict::Readable);
    QCOMPARE(toHex(result.pdu.joined()), toHex(pdu));
}

void TestPushEnvelope::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *name, const QByteArray &bytes, const char *problem) {
        QTest::newRow(name) << bytes << QString(problem);
    };
    row("a push of something else", push("AE"), "3 this is a push of \"application/vnd.wap.sic\"");
    row("its first part", fromHex("0B 05 04 0B 84 23 F0 00 03 07 02 01") + push("BE"),
        "0 this is part 1 of 2 of a short message");
    row("its first part, long reference",
        fromHex("0C 05 04 0B 84 23 F0 08 04 00 07 03 02") + push("BE"),
        "0 this is part 2 of 3 of a short message");
    row("headers without a message", fromHex("01 06 01 BE 41 42"),
        "4 there is no message behind the push headers");
    row("a cut length", fromHex("01 06 81 81"), "2 the push ends inside its length");
    row("nothing", QByteArray(), "0 there is no message type");
}

void TestPushEnvelope::refused()
{
    QFETCH(QByteArray, bytes);
    const Taken result = taken(bytes);
    QCOMPARE(result.verdict, Verdict::Unreadable);
    QTEST(linesOf({result.problem}).first(), "problem");
}

QTEST_GUILESS_MAIN(TestPushEnvelope)
#include "tst_push_envelope.moc"

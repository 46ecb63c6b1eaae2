// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/tapi_sms.h"
#include "tests/support/telephony_peer.h"
#include "tests/tools/wmsg/program.h"

using namespace wmsg::telephony;

namespace {

QByteArray utf16(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

/// How the peer writes a record down that it hears.
template <typename Record> QString heardAs(const Record &record)
{
    return QString("%1: %2")
        .arg(int(Record::kType))
        .arg(QString(toHex(toFrame(record).mid(kHeadSize))));
}

Send sending(Coding coding, const QByteArray &body)
{
    Send send;
    send.reference = 1;
    send.coding = coding;
    send.serviceCenter = "+4366"; // the default one of the peer
    send.destination = "+43664";
    send.body = body;
    return send;
}

Send toPort(Send send, quint16 destination, quint16 source)
{
    send.hasPorts = true;
    send.destinationPort = destination;
    send.sourcePort = source;
    return send;
}

QByteArray resultOf(qint32 status)
{
    Result result;
    result.reference = 1;
    result.networkReference = 7;
    result.status = status;
    return toFrame(result);
}

Message incoming(quint64 id, const QString &text)
{
    Message message;
    message.id = id;
    message.coding = Coding::Ucs2;
    message.sender = "+43664";
    message.time = 1714563072;
    message.body = utf16(text);
    return message;
}

Message incomingData(quint64 id, const QByteArray &body)
{
    Message message = incoming(id, QString());
    message.coding = Coding::Binary;
    message.hasPorts = true;
    message.destinationPort = 9000;
    message.sourcePort = 9001;
    message.body = body;
    return message;
}

QString answered(quint64 id, bool isTaken)
{
    MessageAnswer answer;
    answer.id = id;
    answer.isTaken = isTaken;
    return heardAs(answer);
}

QStringList to(const QStringList &more)
{
    return QStringList{"sms", "send", "--to", "+43 664"} + more;
}

} // namespace

/// `wmsg sms`, with a telephony daemon made of bytes.
class TestSms : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_desk = std::make_unique<Desk>();
        m_phone = std::make_unique<TelephonyPeer>();
        m_phone->answer(RecordType::Send, resultOf(0));
    }
    void cleanup() { m_phone = nullptr; }

    void sends_data();
    void sends();
    void whatDoesNotFitIsRefused_data();
    void whatDoesNotFitIsRefused();
    void tellsTheOutcome_data();
    void tellsTheOutcome();
    void tellsTheOutcomeAsJson();
    void tellsAFailureAsJson();
    void endsWhenItIsHandedOver();
    void cannotTellThatItIsHandedOver();
    void waitsNoLongerThanItMay();
    void canBeInterrupted();
    void leavesMessagesToOthers();
    void withoutAService();
    void wrongUse_data();
    void wrongUse();
    void badInput_data();
    void badInput();

    void receives_data();
    void receives();
    void receivesFromAPort();
    void aPortThatIsTaken();
    void endsAfterSoMany();
    void endsEarly_data();
    void endsEarly();
    void endsAtAnInterrupt();
    void whatCannotBeShownIsNotTaken();

private:
    /// Lets the messages be there as soon as somebody greets.
    void offer(const QByteArray &frames)
    {
        Welcome welcome;
        welcome.modem = TAPI_MODEM_READY;
        m_phone->answer(RecordType::Hello, toFrame(welcome) + frames);
    }

    std::unique_ptr<Desk> m_desk;
    std::unique_ptr<TelephonyPeer> m_phone;
};

void TestSms::sends_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("record");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const QStringList &options, const Send &send,
                        const QString &line) {
        QTest::newRow(name) << options << heardAs(send) << line;
    };
    row("text", {"--text", "Hi"}, sending(Coding::Gsm7, utf16("Hi")), "2 of 160 septets, 158 left");
    row("no text", {"--text", ""}, sending(Coding::Gsm7, ""), "0 of 160 septets, 160 left");
    row("160 septets", {"--text", QString(158, 'x') + "€"},
        sending(Coding::Gsm7, utf16(QString(158, 'x') + "€")), "160 of 160 septets, 0 left");
    row("units", {"--text", "Hi ы"}, sending(Coding::Ucs2, utf16("Hi ы")),
        "4 of 70 units, 66 left (16-bit units, for the 7-bit alphabet has no \"ы\")");
    row("70 units, the last two an emoji", {"--text", QString(68, 'x') + "😀"},
        sending(Coding::Ucs2, utf16(QString(68, 'x') + "😀")),
        "70 of 70 units, 0 left (16-bit units, for the 7-bit alphabet has no \"😀\")");
    row("a character that steers", {"--text", "\u009B"}, sending(Coding::Ucs2, utf16("\u009B")),
        "1 of 70 units, 69 left (16-bit units, for the 7-bit alphabet has no \"\\x9B\")");
    row("text to a port", {"--text", "Hi", "--port", "9000:9001"},
        toPort(sending(Coding::Gsm7, utf16("Hi")), 9000, 9001), "2 of 152 septets, 150 left");
    row("one port is both", {"--text", "Hi", "--port", "9000"},
        toPort(sending(Coding::Gsm7, utf16("Hi")), 9000, 9000), "2 of 152 septets, 150 left");
    row("the port 0 as source", {"--text", "Hi", "--port", "65535:0"},
        toPort(sending(Coding::Gsm7, utf16("Hi")), 65535, 0), "2 of 152 septets, 150 left");
    row("data", {"--data", "four"}, sending(Coding::Binary, fromHex("00 FF 80 0A")),
        "4 of 140 octets, 136 left");
    row("data to a port", {"--data", "four", "--port", "9000:9001"},
        toPort(sending(Coding::Binary, fromHex("00 FF 80 0A")), 9000, 9001),
        "4 of 133 octets, 129 left");
    Send other = sending(Coding::Gsm7, utf16("Hi"));
    other.serviceCenter = "+431";
    row("a service centre", {"--text", "Hi", "--smsc", "+43-1"}, other,
        "2 of 160 septets, 158 left");
}

void TestSms::sends()
{
    QFETCH(QStringList, options);
    QFETCH(QString, record);
    QFETCH(QString, line);
    m_desk->write("four", fromHex("00 FF 80 0A"));
    const Run run = m_desk->run(to(options));
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, line + "\nsent\n");
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(m_phone->heard().value(1), record);
}

void TestSms::whatDoesNotFitIsRefused_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const QStringList &options, const QString &line) {
        QTest::newRow(name) << options << "wmsg: not sent: " + line;
    };
    row("161 septets", {"--text", QString(159, 'x') + "€"},
        "the text has 161 septets, and one short message holds 160");
    row("153 septets to a port", {"--text", QString(153, 'x'), "--port", "9000"},
        "the text has 153 septets, and one short message to a port holds 152");
    row("71 units, the last two an emoji", {"--text", QString(69, 'x') + "😀"},
        "the text has 71 units, and one short message holds 70 (16-bit units, for the 7-bit "
        "alphabet has no \"😀\")");
    row("67 units to a port", {"--text", QString(67, QChar(0x44B)), "--port", "9000"},
        "the text has 67 units, and one short message to a port holds 66 (16-bit units, for the "
        "7-bit alphabet has no \"ы\")");
    row("141 octets", {"--data", "141"},
        "141: the data has 141 octets, and one short message holds 140");
    row("134 octets to a port", {"--data", "134", "--port", "9000"},
        "134: the data has 134 octets, and one short message to a port holds 133");
}

void TestSms::whatDoesNotFitIsRefused()
{
    QFETCH(QStringList, options);
    QFETCH(QString, line);
    m_desk->write("141", QByteArray(141, 'x'));
    m_desk->write("134", QByteArray(134, 'x'));
    const Run run = m_desk->run(to(options));
    QCOMPARE(run.errorLine(), line);
    QCOMPARE(run.out, QString());
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(m_phone->clients(), 0);
}

void TestSms::tellsTheOutcome_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line");
    QTest::newRow("a cause of the network")
        << 38 << "not sent: the network is out of order (status 38)";
    QTest::newRow("a cause of the modem") << 331 << "not sent: there is no network (status 331)";
    QTest::newRow("a cause without a name") << 77 << "not sent: a cause without a name (status 77)";
    QTest::newRow("malformed") << int(TAPI_SMS_MALFORMED)
                               << "not sent: the message makes no sense: a number that is none, or "
                                  "a body too long (status 65536)";
    QTest::newRow("given up") << int(TAPI_SMS_GIVEN_UP)
                              << "not sent: the modem did not take it for too long (status 65537)";
    QTest::newRow("lost") << int(TAPI_SMS_LOST)
                          << "the telephony service went; nobody knows whether the message was "
                             "sent (status 65538)";
}

void TestSms::tellsTheOutcome()
{
    QFETCH(int, status);
    QFETCH(QString, line);
    m_phone->answer(RecordType::Send, resultOf(status));
    const Run run = m_desk->run(to({"--text", "Hi"}));
    QCOMPARE(run.errorLine(), "wmsg: " + line);
    QCOMPARE(run.out, QString("2 of 160 septets, 158 left\n"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::tellsTheOutcomeAsJson()
{
    const Run run = m_desk->run(to({"--text", "Hi", "--json"}));
    QCOMPARE(run.json(),
             (QJsonObject{{"outcome", "sent"},
                          {"to", "+43664"},
                          {"unit", "septets"},
                          {"used", 2},
                          {"limit", 160},
                          {"left", 158},
                          {"status", 0},
                          {"words", "sent"}}));
    QCOMPARE(run.out.count('\n'), 1);
    QCOMPARE(run.exitCode, 0);
}

void TestSms::tellsAFailureAsJson()
{
    m_phone->answer(RecordType::Send, resultOf(38));
    const Run run = m_desk->run(to({"--text", "ы", "--json"}));
    QCOMPARE(run.json(),
             (QJsonObject{{"outcome", "not-sent"},
                          {"to", "+43664"},
                          {"unit", "units"},
                          {"used", 1},
                          {"limit", 70},
                          {"left", 69},
                          {"status", 38},
                          {"words", "the network is out of order"}}));
    QCOMPARE(run.errorLine(), QString("wmsg: not sent: the network is out of order (status 38)"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::endsWhenItIsHandedOver()
{
    m_phone->answer(RecordType::Send, QByteArray());
    const Run run = m_desk->run(to({"--text", "Hi", "--no-wait"}));
    QCOMPARE(run.out, QString("2 of 160 septets, 158 left\nhanded over\n"));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(m_phone->heard().value(1), heardAs(sending(Coding::Gsm7, utf16("Hi"))));
}

void TestSms::cannotTellThatItIsHandedOver()
{
    m_phone->answer(RecordType::Send, QByteArray());
    Done refusal;
    refusal.answer = Answer::PortTaken;
    m_phone->answer(RecordType::RegisterPort, toFrame(refusal));
    const Run run = m_desk->run(to({"--text", "Hi", "--no-wait", "--json"}));
    QCOMPARE(run.json().value("outcome").toString(), QString("unknown"));
    QVERIFY(run.errorLine().startsWith("wmsg: the telephony service does not say"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::waitsNoLongerThanItMay()
{
    m_phone->answer(RecordType::Send, QByteArray());
    const Run run = m_desk->run(to({"--text", "Hi", "--timeout", "1"}));
    QCOMPARE(run.errorLine(),
             QString("wmsg: no outcome in time; the message stays with the telephony service"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::canBeInterrupted()
{
    m_phone->answer(RecordType::Send, QByteArray());
    const auto running = m_desk->begin(to({"--text", "Hi"}));
    QTRY_COMPARE_WITH_TIMEOUT(m_phone->heard().size(), 2, 30000);
    running->signal(SIGINT);
    const Run run = running->end();
    QCOMPARE(run.errorLine(),
             QString("wmsg: the outcome was not waited for; the message stays with the telephony "
                     "service"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::leavesMessagesToOthers()
{
    m_phone->answer(RecordType::Send, toFrame(incoming(5, "for somebody")) + resultOf(0));
    const Run run = m_desk->run(to({"--text", "Hi"}));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(m_phone->heard().contains(answered(5, false)));
}

void TestSms::withoutAService()
{
    m_phone->stopListening();
    for (const QStringList &arguments : {to({"--text", "Hi"}), QStringList{"sms", "receive"}}) {
        const Run run = m_desk->run(arguments);
        QCOMPARE(run.errorLine(),
                 QString("wmsg: no telephony service answers at %1 (is wmsg-telephonyd running?)")
                     .arg(QString(m_phone->path())));
        QCOMPARE(run.exitCode, 1);
    }
}

void TestSms::wrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const QStringList &arguments) {
        QTest::newRow(name) << QStringList{"sms"} + arguments;
    };
    row("neither", {});
    row("nothing to send", {"send", "--to", "+1"});
    row("text and data", {"send", "--to", "+1", "--text", "a", "--data", "b"});
    row("nobody", {"send", "--text", "a"});
    row("no port", {"send", "--to", "+1", "--text", "a", "--port", "x"});
    row("the port 0", {"send", "--to", "+1", "--text", "a", "--port", "0"});
    row("too high", {"send", "--to", "+1", "--text", "a", "--port", "65536"});
    row("three ports", {"send", "--to", "+1", "--text", "a", "--port", "1:2:3"});
    row("half of two", {"send", "--to", "+1", "--text", "a", "--port", "1:"});
    row("a port with a sign", {"send", "--to", "+1", "--text", "a", "--port", "+1"});
    row("no count", {"receive", "--count", "0"});
    row("receive from the port 0", {"receive", "--port", "0"});
    row("receive from a high port", {"receive", "--port", "65536"});
    row("no time", {"receive", "--timeout", "soon"});
}

void TestSms::wrongUse()
{
    QFETCH(QStringList, arguments);
    const Run run = m_desk->run(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
    QCOMPARE(m_phone->clients(), 0);
}

void TestSms::badInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const QStringList &arguments, const char *line) {
        QTest::newRow(name) << QStringList{"sms", "send"} + arguments
                            << "wmsg: not sent: " + QString(line);
    };
    row("no number", {"--to", "Ann", "--text", "a"}, "--to: \"Ann\" is no phone number");
    row("an address", {"--to", "a@b.c", "--text", "a"}, "--to: \"a@b.c\" is no phone number");
    row("no service centre", {"--to", "+1", "--text", "a", "--smsc", "x"},
        "--smsc: \"x\" is no phone number");
    row("no file", {"--to", "+1", "--data", "gone"},
        "gone: cannot be opened: No such file or directory");
    row("a folder", {"--to", "+1", "--data", "."}, ".: is a directory");
    row("an empty file", {"--to", "+1", "--data", "empty"}, "empty: is empty");
}

void TestSms::badInput()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    m_desk->write("empty", QByteArray());
    const Run run = m_desk->run(arguments);
    QCOMPARE(run.errorLine(), line);
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(m_phone->clients(), 0);
}

void TestSms::receives_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char *name, const Message &message, const char *words,
                        const char *json) {
        QTest::newRow(name) << toFrame(message) << QString(words) << QByteArray(json);
    };
    const QString date = "2024-05-01 11:31:12 +0000 (UTC)";
    row("text", incoming(1, "Hi"),
        "message 1, from +43664, 2024-05-01 11:31:12 +0000 (UTC)\nHi\n\n",
        R"({"number": 1, "from": "+43664", "date": 1714563072, "text": "Hi"})");
    row("lines, and what steers", incoming(1, "Hi\n\x1B[2J ы😀"),
        "message 1, from +43664, 2024-05-01 11:31:12 +0000 (UTC)\nHi\n\\x1B[2J ы😀\n\n",
        R"({"number": 1, "from": "+43664", "date": 1714563072, "text": "Hi\n\u001B[2J ы😀"})");
    Message plain = incoming(1, "");
    plain.sender = "";
    plain.time = 0;
    row("nothing but a body", plain, "message 1\n\n\n", R"({"number": 1, "text": ""})");
    Message latin = incoming(1, "");
    latin.coding = Coding::Text8;
    latin.body = "\xC4h";
    row("8-bit text", latin, "message 1, from +43664, 2024-05-01 11:31:12 +0000 (UTC)\nÄh\n\n",
        R"({"number": 1, "from": "+43664", "date": 1714563072, "text": "Äh"})");
    Message named = incoming(1, "Hi");
    named.sender = "Bank\x1B";
    row("a sender by name", named,
        "message 1, from Bank\\x1B, 2024-05-01 11:31:12 +0000 (UTC)\nHi\n\n",
        R"({"number": 1, "from": "Bank\u001B", "date": 1714563072, "text": "Hi"})");
    row("data to a port", incomingData(1, fromHex("00010203 04050607 08090A0B 0C0D0E0F FF")),
        "message 1, from +43664, 2024-05-01 11:31:12 +0000 (UTC), to port 9000 from port 9001, 17 "
        "octets of data\n00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\nFF\n\n",
        R"({"number": 1, "from": "+43664", "date": 1714563072, "destinationPort": 9000,
            "sourcePort": 9001, "data": "000102030405060708090a0b0c0d0e0fff"})");
    row("one octet", incomingData(1, "a"),
        "message 1, from +43664, 2024-05-01 11:31:12 +0000 (UTC), to port 9000 from port 9001, 1 "
        "octet of data\n61\n\n",
        R"({"number": 1, "from": "+43664", "date": 1714563072, "destinationPort": 9000,
            "sourcePort": 9001, "data": "61"})");
}

void TestSms::receives()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, words);
    QFETCH(QByteArray, json);
    offer(frame);
    QStringList arguments{"sms", "receive", "--count", "1"};
    const bool isToAPort = json.contains("Port");
    if (isToAPort) {
        arguments += {"--port", "9000"};
    }
    const Run run = m_desk->run(arguments);
    QCOMPARE(run.err, QString());
    QCOMPARE(run.out, words);
    QCOMPARE(run.exitCode, 0);
    QTRY_VERIFY(m_phone->heard().contains(answered(1, true)));
    const Run again = m_desk->run(arguments + QStringList{"--json"});
    QCOMPARE(again.json(), QJsonDocument::fromJson(json).object());
    QCOMPARE(again.out.count('\n'), 1);
}

void TestSms::receivesFromAPort()
{
    // Only what is for its ports is taken.
    offer(toFrame(incoming(1, "for people")) + toFrame(incomingData(2, "a")));
    const Run run = m_desk->run(
        {"sms", "receive", "--port", "9000", "--port", "9001", "--count", "1", "--json"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.json().value("data").toString(), QString("61"));
    QTRY_VERIFY(m_phone->heard().contains(answered(2, true)));
    QVERIFY(m_phone->heard().contains(answered(1, false)));
    QCOMPARE(m_phone->heard().mid(1, 2), (QStringList{"3: 28 23 01", "3: 29 23 01"}));
}

void TestSms::aPortThatIsTaken()
{
    Done refusal;
    refusal.answer = Answer::PortTaken;
    m_phone->answer(RecordType::RegisterPort, toFrame(refusal));
    const Run run = m_desk->run({"sms", "receive", "--port", "9000"});
    QCOMPARE(run.errorLine(),
             QString("wmsg: port 9000 cannot be had: another program has it, or the telephony "
                     "service does not answer"));
    QCOMPARE(run.exitCode, 1);
}

void TestSms::endsAfterSoMany()
{
    QByteArray frames;
    for (int i = 1; i <= 5; ++i) {
        frames += toFrame(incoming(quint64(i), QString::number(i)));
    }
    offer(frames);
    const Run run = m_desk->run({"sms", "receive", "--count", "3", "--json"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out.count('\n'), 3);
    QTRY_VERIFY(m_phone->heard().contains(answered(3, true)));
    // The others stay.
    QVERIFY(!m_phone->heard().contains(answered(4, true)));
}

void TestSms::endsEarly_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("err");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("any number") << QStringList() << QString() << 0;
    QTest::newRow("of three") << QStringList{"--count", "3"} << "wmsg: 1 of 3 messages came\n" << 1;
}

void TestSms::endsEarly()
{
    QFETCH(QStringList, options);
    QFETCH(QString, err);
    QFETCH(int, exitCode);
    offer(toFrame(incoming(1, "Hi")));
    const Run run = m_desk->run(QStringList{"sms", "receive", "--timeout", "2"} + options);
    QCOMPARE(run.err, err);
    QVERIFY(run.out.endsWith("Hi\n\n"));
    QCOMPARE(run.exitCode, exitCode);
}

void TestSms::endsAtAnInterrupt()
{
    offer(toFrame(incoming(1, "Hi")));
    const auto running = m_desk->begin({"sms", "receive"});
    QTRY_VERIFY_WITH_TIMEOUT(m_phone->heard().contains(answered(1, true)), 30000);
    running->signal(SIGTERM);
    const Run run = running->end();
    QCOMPARE(run.err, QString());
    QCOMPARE(run.exitCode, 0);
}

void TestSms::whatCannotBeShownIsNotTaken()
{
    offer(toFrame(incoming(1, "Hi")));
    const Run run = m_desk->shell("\"$0\" sms receive --count 1 > /dev/full");
    QCOMPARE(run.errorLine(),
             QString("wmsg: standard output: cannot be written: No space left on device"));
    QCOMPARE(run.exitCode, 1);
    QTRY_COMPARE(m_phone->gone(), 1);
    QVERIFY(!m_phone->heard().contains(answered(1, true)));
}

QTEST_GUILESS_MAIN(TestSms)
#include "tst_sms.moc"

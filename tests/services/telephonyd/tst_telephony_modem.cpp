// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmsession.h"
#include "platform/applog/applog.h"
#include "services/sms_pdu/tpdu.h"
#include "sim/modem/control_client.h"
#include "sms/wsmssession.h"
#include "tests/services/telephonyd/client_peer.h"
#include "tests/sms/recording_listener.h"
#include "tests/support/program.h"

#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace std::chrono_literals;
using namespace wmsg;

namespace {

constexpr int kPatience = 120000; // libgammu takes seconds to begin, and the machine may be busy

/// A modem simulator, and the daemon that has it.
class World {
public:
    explicit World(const QStringList &modemArguments = {})
    {
        startModem(modemArguments);
        startDaemon();
    }

    void startModem(const QStringList &arguments = {})
    {
        start(m_modem, WMSG_SIM_MODEM,
              QStringList{"--pty", path("modem"), "--control", path("control"), "--pdu-log",
                          path("log"), "--service-center", "+4366"}
                  + arguments);
    }
    void startDaemon()
    {
        start(m_daemon, WMSG_TELEPHONYD,
              {"--socket", path("telephony"), "--spool", path("spool"), "--backend", "gammu",
               "--device", path("modem")});
    }
    Program &modem() { return *m_modem; }
    Program &daemon() { return *m_daemon; }
    QString path(const QString &name) const { return m_folder.filePath(name); }

    /// Gives commands to the simulator and returns the last answer.
    QString command(const QByteArrayList &commands) const
    {
        sim::ControlRequest request(path("control"), commands, 60s);
        sim::ControlOutcome outcome;
        bool hasEnded = false;
        QObject::connect(&request, &sim::ControlRequest::finished,
                         [&](const sim::ControlOutcome &it) {
                             outcome = it;
                             hasEnded = true;
                         });
        (void)QTest::qWaitFor([&hasEnded] { return hasEnded; }, kPatience);
        return outcome.kind == sim::ControlOutcome::Done ? outcome.text
                                                         : QString("failed: " + outcome.text);
    }
    /// A number out of the simulator's status.
    QString status(const QString &key) const
    {
        const QRegularExpression value("\\b" + key + "=(\\S+)");
        return value.match(command({"status"})).captured(1);
    }

private:
    /// Starts a program, and waits until it is ready.
    static void start(std::unique_ptr<Program> &program, const QString &path,
                      const QStringList &arguments)
    {
        program = std::make_unique<Program>();
        program->process().setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program->start(path, arguments);
        const QByteArray line = program->line();
        QVERIFY2(line.startsWith("listening on "), line);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<Program> m_modem;
    std::unique_ptr<Program> m_daemon;
};

/// A client of the records alone, which takes all messages. What it hears of the modem it skips.
class Client {
public:
    explicit Client(const World &world, char letter = 'a') : m_peer(world.path("telephony"))
    {
        m_peer.greet(letter);
    }
    ClientPeer &peer() { return m_peer; }
    QString next()
    {
        QString line = m_peer.next(kPatience);
        while (line.startsWith("modem ") || line.startsWith("welcome ")) {
            line = m_peer.next(kPatience);
        }
        return line;
    }
    /// Waits for the modem to be ready.
    bool becomesReady()
    {
        for (QString line; line != "nothing" && line != "end"; line = m_peer.next(kPatience)) {
            if (line == "modem 2 +4366" || line == "welcome 2 +4366") {
                return true;
            }
        }
        return false;
    }
    /// The results of so many messages, each confirmed, as their references and statuses.
    QStringList results(int count)
    {
        QStringList all;
        while (all.size() < count) {
            const QStringList words = next().split(' ');
            if (words.value(0) != "result") {
                return {words.join(' ')};
            }
            m_peer.resultTaken(words[1].toInt());
            all.append(words[1] + ": " + words[3]);
        }
        all.sort();
        return all;
    }
    /// Takes the next message; the line that tells it.
    QString takeMessage()
    {
        const QString line = next();
        m_peer.answer(m_peer.messageId(), true);
        return line;
    }

private:
    ClientPeer m_peer;
};

QByteArray delivery(const QByteArray &data, const QByteArray &header = {})
{
    auto tpdu =
        smspdu::dataMessage(smspdu::Kind::Deliver, smspdu::Address::fromString("12345"), data);
    tpdu.timeStamp = QDateTime(QDate(2026, 11, 21), QTime(22, 0), Qt::UTC);
    tpdu.udh = header;
    return sim::deliverCommand(QByteArray(1, '\0') + smspdu::writeTpdu(tpdu));
}

/// A part of three, to port 2948.
QByteArray part(quint8 number, const QByteArray &data)
{
    return delivery(data,
                    smspdu::userDataHeader({smspdu::portsElement({2948, 9200}),
                                            smspdu::concatenationElement({7, 3, number})}));
}

/// A notification as a network pushes it.
QByteArray push()
{
    return fromHex("01 06 03 BE AF 84  8C 82 98 54 31 00 8D 90 8A 80 8E 02 03 E8 88 05 81 03 02 A3 "
                   "00 83")
        + QByteArray("http://m/a", 11);
}

/// Runs a program of others; what it says, and nothing when it fails.
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    const bool isFine = process.waitForFinished(kPatience) && process.exitCode() == 0;
    return isFine ? process.readAll() : QByteArray();
}

/// What tshark says of these fields of each message that was sent, by way of text2pcap.
QStringList witnessed(const World &world, const QStringList &fields)
{
    QByteArray text;
    const QDir log(world.path("log"));
    const QStringList names = log.entryList({"*-submit.pdu"}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        QFile file(log.filePath(name));
        const QByteArray pdu = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const auto centre = smspdu::readServiceCentre(pdu);
        // From the phone to the network.
        text += "I\n000000 " + pdu.mid(centre ? centre->size : 0).toHex(' ') + "\n\n";
    }
    QFile dump(world.path("dump"));
    if (!dump.open(QIODevice::WriteOnly) || dump.write(text) != text.size()) {
        return {"no dump"};
    }
    dump.close();
    const QString capture = world.path("capture");
    (void)outputOf("text2pcap", {"-q", "-D", "-P", "gsm_sms", dump.fileName(), capture});
    QStringList arguments{"-r", capture, "-T", "fields"};
    for (const QString &field : fields) {
        arguments << "-e" << field;
    }
    return QString::fromUtf8(outputOf("tshark", arguments)).chopped(1).split('\n');
}

} // namespace

/// The daemon over a modem: programs, a line, and real PDUs.
class TestTelephonyModem : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }
    void applications();
    void severalParts();
    void theNetworkRefuses();
    void theModemVanishes();
    void theModemIsKilled();
    void theDaemonIsKilled();
    void theDaemonIsKilledWhileItSends();
    void theDaemonIsKilledWithAMessage();

private:
    static void compareWithWitness(const World &world, const QStringList &texts);
};

/// What tshark reads in what was sent: the texts, the data behind them, and the push.
void TestTelephonyModem::compareWithWitness(const World &world, const QStringList &texts)
{
    if (QStandardPaths::findExecutable("tshark").isEmpty()
        || QStandardPaths::findExecutable("text2pcap").isEmpty()) {
        QSKIP("tshark is not there");
    }
    QStringList expected;
    for (const QString &text : texts) {
        const bool is16 = text.contains(u'я');
        expected << QString("1\t43664\t%1\t\t\t%2\t\t\t").arg(is16 ? "8" : "0", text);
    }
    expected << "1\t43664\t4\t9000\t9001\t\t\t\t"
             << "1\t43664\t4\t2948\t9200\t\tx-wap-application:mms.ua\tT1\thttp://m/a";
    QCOMPARE(
        witnessed(world,
                  {"gsm_sms.tp-mti", "gsm_sms.tp-da", "gsm_sms.tp-dcs", "gsm_sms.destination_port",
                   "gsm_sms.originator_port", "gsm_sms.sms_text", "wsp.header.x_wap_application_id",
                   "mmse.transaction_id", "mmse.content_location"}),
        expected);
}

/// What two applications send goes over the line and comes back, as it was.
void TestTelephonyModem::applications()
{
    World world({"--loopback"});
    qputenv("WMSG_TELEPHONY_SOCKET", QFile::encodeName(world.path("telephony")));
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    auto *session = static_cast<WSMSSession *>(WMFMSession::open(WMFM::MSG_TYPE_SMS, status));
    QCOMPARE(int(status), 0);
    RecordingListener listener(session);
    QVERIFY(session->setListener(&listener, status));

    const QString emoji = QString::fromUcs4(U"\U0001F600");
    const QStringList texts{"Hi", QString(158, 'a') + u'€', QString(68, u'я') + emoji,
                            QString("~я~")};
    for (const QString &text : texts) {
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "+43664"));
        QVERIFY(message.setBody(text));
        QVERIFY(session->send(&message, status) > 0);
    }
    const QByteArray data(133, '\xA5');
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "+43664"));
    message.setPortNumber(9000, 9001);
    QVERIFY(message.setBody(QArray<char>(QByteArrayView(data))));
    QVERIFY(session->send(&message, status) > 0);
    message.setPortNumber(2948, 9200);
    QVERIFY(message.setBody(QArray<char>(QByteArrayView(push()))));
    QVERIFY(session->send(&message, status) > 0);

    QTRY_COMPARE_WITH_TIMEOUT(listener.statuses.size(), 6, kPatience);
    QCOMPARE(listener.statuses, (QStringList{"1: 0", "2: 0", "3: 0", "4: 0", "5: 0", "6: 0"}));
    QTRY_COMPARE_WITH_TIMEOUT(listener.messages.size(), size_t(6), kPatience);
    for (int i = 0; i < 4; ++i) {
        QString text;
        QVERIFY(listener.messages[size_t(i)]->getBody(text));
        QCOMPARE(text, texts[i]);
        QCOMPARE(listener.messages[size_t(i)]->getFrom().getEntryVal(), QString("+43664"));
    }
    unsigned short destination = 0;
    unsigned short source = 0;
    QVERIFY(listener.messages[4]->getPortNumber(&destination, &source));
    QCOMPARE(int(destination), 9000);
    QCOMPARE(int(source), 9001);
    QArray<char> bytes;
    QVERIFY(listener.messages[4]->getBody(bytes));
    QCOMPARE(toHex(QByteArray(bytes.data(), bytes.size())), toHex(data));
    QVERIFY(listener.messages[5]->getBody(bytes));
    QCOMPARE(toHex(QByteArray(bytes.data(), bytes.size())), toHex(push()));
    QTRY_COMPARE_WITH_TIMEOUT(world.status("SM"), QString("0/20"), kPatience);
    WMFMSession::close(session);
    QCOMPARE(world.daemon().stop(), 0);
    compareWithWitness(world, texts);
}

void TestTelephonyModem::severalParts()
{
    const World world;
    Client client(world);
    client.peer().registerPort(1, 2948);
    QCOMPARE(client.next(), QString("done 1 0"));
    QCOMPARE(world.command({part(3, "cc"), part(1, "aa"), part(3, "cc"), part(2, "bb")}),
             QString());
    QCOMPARE(client.takeMessage(), QString("message 12345 61 61 62 62 63 63 2948<9200"));
    QTRY_COMPARE_WITH_TIMEOUT(world.status("SM"), QString("0/20"), kPatience);
    // Nothing of it comes again.
    QCOMPARE(world.command({delivery("x")}), QString());
    QCOMPARE(client.takeMessage(), QString("message 12345 78"));
}

void TestTelephonyModem::theNetworkRefuses()
{
    const World world;
    Client client(world);
    QVERIFY(client.becomesReady());
    QCOMPARE(world.command({"fail-next 1"}), QString());
    client.peer().sendData(1, "+43664", "a");
    client.peer().sendData(2, "+43664", "b");
    QCOMPARE(client.results(2), (QStringList{"1: 1", "2: 0"}));
    QCOMPARE(world.status("sent"), QString("1"));
}

void TestTelephonyModem::theModemVanishes()
{
    const World world;
    Client client(world);
    QVERIFY(client.becomesReady());
    QCOMPARE(world.command({"vanish"}), QString());
    for (int i = 1; i <= 3; ++i) {
        client.peer().sendData(i, "+43664", "a");
    }
    QCOMPARE(world.command({delivery("x"), "return"}), QString());
    QStringList heard;
    for (int i = 0; i < 4; ++i) {
        const QString line = client.next();
        heard.append(line.section(' ', 0, 1));
        if (line.startsWith("message")) {
            client.peer().answer(client.peer().messageId(), true);
        } else {
            client.peer().resultTaken(line.section(' ', 1, 1).toInt());
        }
    }
    heard.sort();
    QCOMPARE(heard, (QStringList{"message 12345", "result 1", "result 2", "result 3"}));
    QCOMPARE(world.status("sent"), QString("3"));
}

void TestTelephonyModem::theModemIsKilled()
{
    World world;
    Client client(world);
    QVERIFY(client.becomesReady());
    world.modem().kill();
    client.peer().sendData(1, "+43664", "a");
    client.peer().sendData(2, "+43664", "b");
    world.startModem();
    QCOMPARE(client.results(2), (QStringList{"1: 0", "2: 0"}));
    QCOMPARE(world.status("sent"), QString("2"));
}

/// The daemon has the messages, and the modem is away; what comes meanwhile waits in the modem.
void TestTelephonyModem::theDaemonIsKilled()
{
    World world;
    QCOMPARE(world.command({"vanish"}), QString());
    {
        Client client(world);
        for (int i = 1; i <= 3; ++i) {
            client.peer().sendData(i, "+43664", "a");
        }
        // It has taken them when it answers what was asked behind them.
        client.peer().registerPort(1, 9000);
        QCOMPARE(client.next(), QString("done 1 0"));
        world.daemon().kill();
    }
    QCOMPARE(world.command({"return", delivery("x"), delivery("y")}), QString());
    world.startDaemon();
    Client client(world);
    QStringList messages;
    QStringList results;
    while (messages.size() + results.size() < 5) {
        const QString line = client.next();
        QVERIFY2(line != "nothing" && line != "end", qPrintable(line));
        if (line.startsWith("message")) {
            client.peer().answer(client.peer().messageId(), true);
            messages.append(line);
        } else {
            client.peer().resultTaken(line.section(' ', 1, 1).toInt());
            results.append(line.section(' ', 1, 1) + ": " + line.section(' ', 3));
        }
    }
    QCOMPARE(messages, (QStringList{"message 12345 78", "message 12345 79"}));
    QCOMPARE(results, (QStringList{"1: 0", "2: 0", "3: 0"}));
    QCOMPARE(world.status("sent"), QString("3"));
    QTRY_COMPARE_WITH_TIMEOUT(world.status("SM"), QString("0/20"), kPatience);
}

/// The network has the first message; whether the daemon had noted that is a matter of moments, so
/// the message may go out a second time, but none is lost.
void TestTelephonyModem::theDaemonIsKilledWhileItSends()
{
    World world;
    {
        Client client(world);
        QVERIFY(client.becomesReady());
        for (int i = 1; i <= 3; ++i) {
            client.peer().sendData(i, "+43664", "a");
        }
        QTRY_VERIFY_WITH_TIMEOUT(world.status("sent").toInt() >= 1, kPatience);
        world.daemon().kill();
    }
    world.startDaemon();
    Client client(world);
    QCOMPARE(client.results(3), (QStringList{"1: 0", "2: 0", "3: 0"}));
    const int sent = world.status("sent").toInt();
    QVERIFY2(sent == 3 || sent == 4, qPrintable(QString::number(sent)));
}

/// The message was told and not taken when the daemon went; the next one tells it once more, with
/// the same id, and then nobody does.
void TestTelephonyModem::theDaemonIsKilledWithAMessage()
{
    World world;
    quint64 id = 0;
    {
        Client client(world);
        QCOMPARE(world.command({delivery("x")}), QString());
        QCOMPARE(client.next(), QString("message 12345 78"));
        id = client.peer().messageId();
        world.daemon().kill();
    }
    world.startDaemon();
    {
        Client client(world);
        QCOMPARE(client.takeMessage(), QString("message 12345 78"));
        QCOMPARE(client.peer().messageId(), id);
        client.peer().registerPort(1, 9000);
        QCOMPARE(client.next(), QString("done 1 0"));
        world.daemon().kill();
    }
    world.startDaemon();
    Client client(world);
    QVERIFY(client.becomesReady());
    QCOMPARE(world.command({delivery("y")}), QString());
    QCOMPARE(client.takeMessage(), QString("message 12345 79"));
    QTRY_COMPARE_WITH_TIMEOUT(world.status("SM"), QString("0/20"), kPatience);
}

QTEST_GUILESS_MAIN(TestTelephonyModem)
#include "tst_telephony_modem.moc"

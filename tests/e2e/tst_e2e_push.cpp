// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/tpdu.h"
#include "tests/e2e/world.h"

namespace {

/// An address so long that a notification with it fits no two short messages.
const QString kLongSender = QString(150, 'a') + "@example.org";

/// Short messages as they are sent by a modem, to a phone that has one: the modem, its network, and
/// the telephony daemon. The programs of this process find it.
class Phone {
public:
    Phone()
    {
        QVERIFY(m_folder.isValid());
        qputenv("WMSG_TELEPHONY_SOCKET", path("telephony").toLocal8Bit());
        m_modem.start(WMSG_SIM_MODEM,
                      {"--pty", path("modem"), "--control", path("control"), "--loopback",
                       "--pdu-log", path("sms")},
                      "listening on ", path("modem.log"));
        startTelephony();
    }
    ~Phone()
    {
        qunsetenv("WMSG_TELEPHONY_SOCKET");
        if (QTest::currentTestFailed()) {
            qWarning("---- modem\n%s---- telephony\n%s", read("modem.log").constData(),
                     read("telephony.log").constData());
        }
    }

    void startTelephony()
    {
        m_telephony = std::make_unique<Program>();
        m_telephony->start(
            WMSG_TELEPHONYD,
            {"--backend", "gammu", "--device", path("modem"), "--spool", path("telephony-spool")},
            "listening on " + path("telephony"), path("telephony.log"));
    }
    /// SIGKILL.
    void killTelephony() { m_telephony->kill(); }

    /// The network of this phone, which has patience: a notification is not to come twice.
    [[nodiscard]] Network network(const QString &sender = "+15550100") const
    {
        return {"sms:" + path("control"), sender, "600"};
    }
    /// What the network has delivered to the modem.
    [[nodiscard]] QList<wmsg::smspdu::Tpdu> delivered() const
    {
        QList<wmsg::smspdu::Tpdu> all;
        const QDir folder(path("sms"));
        for (const QString &name : folder.entryList({"*-deliver.pdu"}, QDir::Files, QDir::Name)) {
            const QByteArray bytes = read("sms/" + name);
            const auto centre = wmsg::smspdu::readServiceCentre(bytes);
            const auto read =
                wmsg::smspdu::readTpdu(QByteArrayView(bytes).sliced(centre ? centre->size : 0),
                                       wmsg::smspdu::Origin::Network);
            if (!centre || !read.isRead()) {
                QTest::qFail(qPrintable(name + ": " + read.problem), __FILE__, __LINE__);
            }
            all += read.tpdu;
        }
        return all;
    }

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
    Program m_modem;
    std::unique_ptr<Program> m_telephony;
};

/// The run of `wmsg` with these arguments.
class Command {
public:
    explicit Command(const QStringList &arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(WMSG_PROGRAM, arguments);
    }
    /// Waits for its end; what it has said.
    QString output()
    {
        if (!m_process.waitForFinished(120000) || m_process.exitStatus() != QProcess::NormalExit
            || m_process.exitCode() != 0) {
            QTest::qFail("the command has failed", __FILE__, __LINE__);
        }
        return QString::fromUtf8(m_process.readAllStandardOutput());
    }

private:
    QProcess m_process;
};

QStringList sending(const QString &file)
{
    return {"send", "--to", "+15550122", "--subject", "Hut", "--text", "Hi", "--attach", file};
}

} // namespace

/// Picture messages that are announced as on a phone: by a push in short messages, through the
/// modem, the telephony daemon and the proxy daemon.
class TestE2ePush : public QObject {
    Q_OBJECT

private slots:
    void inTwoShortMessages();
    void inThreeShortMessages();
    void telephonyDaemonKilledMeanwhile();
    void bothDaemonsKilledMeanwhile();
    void beforeThereIsATelephonyDaemon();
    void besidesShortMessagesOfPeople();
};

void TestE2ePush::inTwoShortMessages()
{
    Phone phone;
    World world({}, {}, phone.network());
    const QString photo = world.photo(40000);
    Command receive({"receive", "--count", "1", "--extract", world.path("out")});
    QVERIFY(Command(sending(photo)).output().startsWith("sent: "));
    QVERIFY(receive.output().contains("Hut"));
    QCOMPARE(World::hashOf(world.path("out/message-1/photo-40000.jpg")), World::hashOf(photo));
    QCOMPARE(phone.delivered().size(), 2);
    for (const auto &part : phone.delivered()) {
        QVERIFY(part.ports() && part.ports()->destination == 2948);
        QVERIFY(part.concatenation() && part.concatenation()->total == 2);
    }
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-notifyresp-ind"), 1, 60000);
    QCOMPARE(world.pdus("out-notification-ind"), 1);
}

void TestE2ePush::inThreeShortMessages()
{
    Phone phone;
    World world({}, {}, phone.network(kLongSender));
    Command receive({"receive", "--count", "1"});
    QVERIFY(Command(sending(world.photo(1000))).output().startsWith("sent: "));
    QVERIFY(receive.output().contains(kLongSender));
    QCOMPARE(phone.delivered().size(), 3);
}

void TestE2ePush::telephonyDaemonKilledMeanwhile()
{
    Phone phone;
    World world({}, {}, phone.network());
    Command receive({"receive", "--count", "1"});
    phone.killTelephony();
    QVERIFY(Command(sending(world.photo(1000))).output().startsWith("sent: "));
    QTRY_COMPARE_WITH_TIMEOUT(phone.delivered().size(), 2, 60000);
    // The modem has both parts, and the next daemon finds them there.
    phone.startTelephony();
    QVERIFY(receive.output().contains("Hut"));
    QCOMPARE(phone.delivered().size(), 2);
}

void TestE2ePush::bothDaemonsKilledMeanwhile()
{
    Phone phone;
    World world({}, {}, phone.network());
    phone.killTelephony();
    QVERIFY(Command(sending(world.photo(1000))).output().startsWith("sent: "));
    QTRY_COMPARE_WITH_TIMEOUT(phone.delivered().size(), 2, 60000);
    world.killDaemon();
    phone.startTelephony();
    world.startDaemon();
    QVERIFY(Command({"receive", "--count", "1"}).output().contains("Hut"));
    QCOMPARE(phone.delivered().size(), 2);
}

void TestE2ePush::beforeThereIsATelephonyDaemon()
{
    Phone phone;
    phone.killTelephony();
    World world({}, {}, phone.network());
    Command receive({"receive", "--count", "1"});
    QVERIFY(Command(sending(world.photo(1000))).output().startsWith("sent: "));
    phone.startTelephony();
    QVERIFY(receive.output().contains("Hut"));
}

void TestE2ePush::besidesShortMessagesOfPeople()
{
    Phone phone;
    World world({}, {}, phone.network());
    Command people({"sms", "receive", "--count", "1", "--json"});
    Command receive({"receive", "--count", "1"});
    QVERIFY(Command(sending(world.photo(1000))).output().startsWith("sent: "));
    QCOMPARE(Command({"sms", "send", "--to", "+15550122", "--text", "Hi €"}).output(),
             QString("5 of 160 septets, 155 left\nsent\n"));
    QVERIFY(receive.output().contains("Hut"));
    const QString line = people.output();
    QVERIFY2(line.contains("\"text\":\"Hi €\""), qPrintable(line));
    QVERIFY2(line.contains("\"from\":\"+15550122\""), qPrintable(line));
}

QTEST_GUILESS_MAIN(TestE2ePush)
#include "tst_e2e_push.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/telephony_daemon.h"
#include "tests/services/telephonyd/client_peer.h"
#include "tests/services/telephonyd/fake_modem.h"

using namespace wmsg::telephonyd;
using namespace wmsg::telephony;

namespace {

/// Data of one short message, to a port or to none.
IncomingSms dataOf(const QByteArray &data, const QByteArray &port = {})
{
    IncomingSms sms;
    sms.coding = Coding::Binary;
    sms.sender = "+43664";
    sms.body = data;
    sms.header = port.isEmpty() ? port : QByteArray::fromHex("060504" + port + "0001");
    return sms;
}

} // namespace

/// The daemon in this process, with a modem of the test.
class TestTelephonyDaemon : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QLoggingCategory::setFilterRules("wmsg.*.info=false");
        begin();
    }
    void cleanup() { m_daemon.reset(); }

    void itGreets()
    {
        ClientPeer first(path());
        first.greet('a');
        QCOMPARE(first.next(), QString("welcome 0 "));
        m_modem->ready();
        QCOMPARE(first.next(), QString("modem 2 +4366"));
        ClientPeer second(path());
        second.greet('b');
        QCOMPARE(second.next(), QString("welcome 2 +4366"));
        m_modem->absent();
        QCOMPARE(first.next(), QString("modem 0 "));
        QCOMPARE(second.next(), QString("modem 0 "));
    }

    void anotherVersionIsRefused()
    {
        ClientPeer client(path());
        client.peer().send("04 00 00 00 01 00 00 00  02 00 00 00");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("it speaks another version"));
        QCOMPARE(client.next(), QString("refused 1"));
        QCOMPARE(client.next(), QString("end"));
    }

    void whatMakesNoSenseEndsTheSession_data()
    {
        QTest::addColumn<bool>("hasGreeted");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char *name, bool hasGreeted, const QByteArray &bytes) {
            QTest::newRow(name) << hasGreeted << bytes;
        };
        row("no greeting first", false, "04 00 00 00 07 00 00 00  01 00 00 00");
        row("an unknown record first", false, "00 00 00 00 99 00 00 00");
        row("a greeting that is too short", false, "05 00 00 00 01 00 00 00  01 00 00 00 00");
        row("an impossible length", false, "01 08 01 00");
        row("an impossible length later", true, "FF FF FF FF");
        row("a second greeting", true,
            "19 00 00 00 01 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "02 00 00 00 00");
        row("a body that is not there", true,
            "11 00 00 00 02 00 00 00  01 00 00 00 02 00 00 00 00 00 00 01 31 FF FF 00 00");
        row("half a character", true,
            "10 00 00 00 02 00 00 00  01 00 00 00 00 00 00 00 00 00 00 01 31 01 00 41");
        row("a coding that is none", true,
            "0F 00 00 00 02 00 00 00  01 00 00 00 09 00 00 00 00 00 00 01 31 00 00");
        row("8-bit text", true,
            "0F 00 00 00 02 00 00 00  01 00 00 00 01 00 00 00 00 00 00 01 31 00 00");
        row("a port that is too short", true, "02 00 00 00 03 00 01 00  28 23");
        row("a port that is too long", true, "04 00 00 00 04 00 01 00  28 23 00 00");
        row("a NUL in a number", true, "02 00 00 00 05 00 01 00  01 00");
        row("an answer of two", true, "09 00 00 00 06 00 00 00  01 00 00 00 00 00 00 00 02");
        row("a confirmation of nothing", true, "00 00 00 00 07 00 00 00");
    }
    void whatMakesNoSenseEndsTheSession()
    {
        QFETCH(bool, hasGreeted);
        QFETCH(QByteArray, bytes);
        ClientPeer other(path());
        other.greet('o');
        QCOMPARE(other.next(), QString("welcome 0 "));
        ClientPeer client(path());
        if (hasGreeted) {
            client.greet('a');
            QCOMPARE(client.next(), QString("welcome 0 "));
        }
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("session 2 is ended: "));
        client.peer().send(bytes);
        QCOMPARE(client.next(), QString("end"));
        QCOMPARE(other.afterAQuestion(), QString("done 9999 2"));
        QCOMPARE(filesIn(spool() + "/out"), QStringList());
    }

    void unknownRecordsAreSkipped()
    {
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 0 "));
        client.peer().send("03 00 00 00 20 00 00 00 01 02 03");
        client.peer().send("00 00 00 00 81 00 00 00");
        QCOMPARE(client.afterAQuestion(), QString("done 9999 2"));
    }

    void recordsMayComeByteByByte()
    {
        ClientPeer client(path());
        Hello hello;
        hello.clientId = QByteArray(kClientIdSize, 'a');
        for (const char byte : toFrame(hello)) {
            client.peer().sendBytes(QByteArray(1, byte));
            QCoreApplication::processEvents();
        }
        QCOMPARE(client.next(), QString("welcome 0 "));
    }

    void aMessageGoesOutAndItsResultComesBack()
    {
        m_modem->ready();
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 2 +4366"));
        client.sendData(5, "+43664", "x", 9000);
        QTRY_COMPARE(m_modem->sends.size(), 1);
        m_modem->isSent(77);
        QCOMPARE(client.next(), QString("result 5 77 0"));
        QCOMPARE(filesIn(spool() + "/out").size(), 1);
        client.resultTaken(5);
        QTRY_COMPARE(filesIn(spool() + "/out"), QStringList());
    }

    void whatAClientSentBeforeItWentIsSent()
    {
        m_modem->ready();
        {
            ClientPeer client(path());
            client.greet('a');
            for (int i = 1; i <= 40; ++i) {
                client.sendData(i, "+43664", "x");
            }
        }
        QTRY_COMPARE(filesIn(spool() + "/out").size(), 40);
        QCOMPARE(m_modem->sends.size(), 1);
    }

    /// The client answers nothing, and comes again.
    void aClientThatComesAgainIsToldOnce()
    {
        m_modem->ready();
        {
            ClientPeer client(path());
            client.greet('a');
            QCOMPARE(client.next(), QString("welcome 2 +4366"));
            client.sendData(1, "+43664", "x");
            QTRY_COMPARE(m_modem->sends.size(), 1);
        }
        m_modem->isSent(7);
        ClientPeer client(path());
        client.greet('a');
        client.sendData(1, "+43664", "x"); // as it has no result
        QCOMPARE(client.next(), QString("welcome 2 +4366"));
        QCOMPARE(client.next(), QString("result 1 7 0"));
        QCOMPARE(client.afterAQuestion(), QString("done 9999 2"));
        QCOMPARE(m_modem->sends.size(), 1);
    }

    void aSecondConnectionTakesThePlaceOfTheFirst()
    {
        ClientPeer first(path());
        first.greet('a');
        QCOMPARE(first.next(), QString("welcome 0 "));
        first.registerPort(1, 9000);
        QCOMPARE(first.next(), QString("done 1 0"));
        ClientPeer second(path());
        second.greet('a');
        QCOMPARE(second.next(), QString("welcome 0 "));
        QCOMPARE(first.next(), QString("end"));
        // The ports went with the first.
        ClientPeer other(path());
        other.greet('b');
        QCOMPARE(other.next(), QString("welcome 0 "));
        other.registerPort(1, 9000);
        QCOMPARE(other.next(), QString("done 1 0"));
        // And the end of the first does not take the second along.
        QCOMPARE(second.afterAQuestion(), QString("done 9999 2"));
    }

    void aPortBelongsToOne()
    {
        ClientPeer one(path());
        one.greet('a');
        ClientPeer two(path());
        two.greet('b');
        QCOMPARE(one.next(), QString("welcome 0 "));
        QCOMPARE(two.next(), QString("welcome 0 "));
        one.registerPort(1, 0);
        QCOMPARE(one.next(), QString("done 1 3"));
        one.registerPort(2, 9000, 2);
        QCOMPARE(one.next(), QString("done 2 3"));
        one.registerPort(3, 9000);
        QCOMPARE(one.next(), QString("done 3 0"));
        one.registerPort(4, 9000, 1);
        QCOMPARE(one.next(), QString("done 4 0"));
        two.registerPort(5, 9000);
        QCOMPARE(two.next(), QString("done 5 1"));
        two.deregisterPort(6, 9000);
        QCOMPARE(two.next(), QString("done 6 2"));
        one.deregisterPort(7, 9000);
        QCOMPARE(one.next(), QString("done 7 0"));
        one.deregisterPort(8, 9000);
        QCOMPARE(one.next(), QString("done 8 2"));
        two.registerPort(9, 9000);
        QCOMPARE(two.next(), QString("done 9 0"));
        two.close();
        QVERIFY(QTest::qWaitFor([&] {
            one.registerPort(10, 9000);
            return one.next() == "done 10 0";
        }));
    }

    void aMessageGoesToWhomItIsFor_data()
    {
        QTest::addColumn<QByteArray>("port");
        QTest::addColumn<QString>("whoGetsIt"); // of: plain, other plain, none, port, port alone
        QTest::newRow("without a port") << QByteArray() << "plain,other,port";
        QTest::newRow("to a port that one has") << QByteArray("2328") << "port";
        QTest::newRow("to a port of one who wants ports alone") << QByteArray("2329") << "alone";
        QTest::newRow("to a port that nobody has") << QByteArray("2330") << "plain,other,port";
    }
    void aMessageGoesToWhomItIsFor()
    {
        QFETCH(QByteArray, port);
        QFETCH(QString, whoGetsIt);
        const QStringList names = {"plain", "other", "none", "port", "alone"};
        std::map<QString, std::unique_ptr<ClientPeer>> clients;
        for (const QString &name : names) {
            clients[name] = std::make_unique<ClientPeer>(path());
            clients[name]->greet(name[0].toLatin1() + char(name == "port"), name == "none" ? 0 : 2);
            QCOMPARE(clients[name]->next(), QString("welcome 0 "));
        }
        clients["port"]->registerPort(1, 0x2328);
        QCOMPARE(clients["port"]->next(), QString("done 1 0"));
        clients["alone"]->registerPort(1, 0x2329, 1);
        QCOMPARE(clients["alone"]->next(), QString("done 1 0"));
        Q_EMIT m_modem->arrived(dataOf("x", port));
        for (const QString &name : names) {
            const QString line = clients[name]->afterAQuestion();
            QVERIFY2(whoGetsIt.split(',').contains(name) ? line.startsWith("message +43664 78")
                                                         : line == "done 9999 2",
                     qPrintable(name + ": " + line));
        }
    }

    void aMessageWaitsForSomebodyWhoTakesIt()
    {
        Q_EMIT m_modem->arrived(dataOf("x", "2328"));
        ClientPeer plain(path());
        plain.greet('a');
        QCOMPARE(plain.next(), QString("welcome 0 "));
        QCOMPARE(plain.next(), QString("message +43664 78 9000<1"));
        plain.answer(plain.messageId(), false);
        // Once for each connection.
        QCOMPARE(plain.afterAQuestion(), QString("done 9999 2"));
        ClientPeer owner(path());
        owner.greet('b', 0);
        QCOMPARE(owner.next(), QString("welcome 0 "));
        owner.registerPort(1, 9000, 1);
        QCOMPARE(owner.next(), QString("done 1 0"));
        QCOMPARE(owner.next(), QString("message +43664 78 9000<1"));
        QCOMPARE(owner.messageId(), plain.messageId());
        QCOMPARE(filesIn(spool() + "/in").size(), 1);
        owner.answer(owner.messageId(), true);
        QTRY_COMPARE(filesIn(spool() + "/in"), QStringList());
        plain.close();
        ClientPeer next(path());
        next.greet('c');
        QCOMPARE(next.next(), QString("welcome 0 "));
        QCOMPARE(next.afterAQuestion(), QString("done 9999 2"));
    }

    void aMessageThatWasNotAnsweredIsOfferedAgain()
    {
        Q_EMIT m_modem->arrived(dataOf("x"));
        quint64 id = 0;
        for (int i = 0; i < 3; ++i) {
            ClientPeer client(path());
            client.greet('a');
            QCOMPARE(client.next(), QString("welcome 0 "));
            QCOMPARE(client.next(), QString("message +43664 78"));
            id = id != 0 ? id : client.messageId();
            QCOMPARE(client.messageId(), id);
            if (i == 1) {
                begin(); // another daemon
            }
        }
    }

    void aMessageThatOneHasIsNotAnothersToTake()
    {
        ClientPeer stranger(path());
        stranger.greet('a', 0);
        QCOMPARE(stranger.next(), QString("welcome 0 "));
        ClientPeer plain(path());
        plain.greet('b');
        QCOMPARE(plain.next(), QString("welcome 0 "));
        Q_EMIT m_modem->arrived(dataOf("x"));
        QCOMPARE(plain.next(), QString("message +43664 78"));
        stranger.answer(plain.messageId(), true);
        stranger.answer(12345, true);
        QCOMPARE(stranger.afterAQuestion(), QString("done 9999 2"));
        QCOMPARE(filesIn(spool() + "/in").size(), 1);
        plain.answer(plain.messageId(), true);
        plain.answer(plain.messageId(), true);
        plain.answer(plain.messageId(), false);
        QCOMPARE(plain.afterAQuestion(), QString("done 9999 2"));
        QCOMPARE(filesIn(spool() + "/in"), QStringList());
    }

    void aPortThatIsGivenBackLeavesItsMessagesToOthers()
    {
        ClientPeer owner(path());
        owner.greet('a', 0);
        QCOMPARE(owner.next(), QString("welcome 0 "));
        owner.registerPort(1, 9000);
        QCOMPARE(owner.next(), QString("done 1 0"));
        ClientPeer plain(path());
        plain.greet('b');
        QCOMPARE(plain.next(), QString("welcome 0 "));
        Q_EMIT m_modem->arrived(dataOf("x", "2328"));
        QCOMPARE(owner.next(), QString("message +43664 78 9000<1"));
        QCOMPARE(plain.afterAQuestion(), QString("done 9999 2"));
        owner.deregisterPort(2, 9000);
        QCOMPARE(owner.next(), QString("done 2 0"));
        QCOMPARE(plain.next(), QString("message +43664 78 9000<1"));
    }

    void theServiceCenterIsTheModems()
    {
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 0 "));
        SetServiceCenter record;
        record.number = "+431";
        client.send(record, 1);
        QCOMPARE(client.next(), QString("done 1 4"));
        m_modem->ready();
        QCOMPARE(client.next(), QString("modem 2 +4366"));
        record.number = "none";
        client.send(record, 2);
        QCOMPARE(client.next(), QString("done 2 3"));
        record.number = "+431";
        client.send(record, 3);
        client.send(record, 4);
        QTRY_COMPARE(m_modem->centers, QList<QByteArray>{"+431"});
        Q_EMIT m_modem->serviceCenterSet(true);
        QCOMPARE(client.next(), QString("done 3 0"));
        QCOMPARE(m_modem->centers.size(), 2);
        Q_EMIT m_modem->serviceCenterSet(false);
        QCOMPARE(client.next(), QString("done 4 4"));
        Q_EMIT m_modem->serviceCenterSet(true); // of nobody
    }

    void aClientThatDoesNotReadGetsItAllWhenItDoes()
    {
        for (int i = 0; i < 40; ++i) { // together more than a connection holds
            writeMessage(i, QByteArray(60000, 'x'));
        }
        begin();
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 0 "));
        QSet<quint64> ids;
        for (int i = 0; i < 40; ++i) {
            QVERIFY(client.next().startsWith("message 1 78 78 78"));
            ids.insert(client.messageId());
        }
        QCOMPARE(ids.size(), 40);
        QCOMPARE(client.afterAQuestion(), QString("done 9999 2"));
    }

    void whoNeverReadsIsDropped()
    {
        int ends[2];
        QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
        LocalPeer deaf(ends[1]);
        ClientSession session(1, ends[0]);
        QSignalSpy ended(&session, &ClientSession::ended);
        Message message;
        message.coding = Coding::Binary;
        message.body = QByteArray(60000, 'x');
        while (!session.isBusy()) {
            session.send(message);
        }
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not read what it is told"));
        for (int i = 0; i < 20; ++i) {
            session.send(message);
        }
        QTRY_COMPARE(ended.count(), 1);
    }

    void aClientThatConfirmsNothingIsDropped()
    {
        QLoggingCategory::setFilterRules("wmsg.*=false");
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 0 "));
        QByteArray sends;
        for (int i = 1; i <= int(Outbox::kMost) + 2; ++i) {
            Send send;
            send.reference = i;
            sends += toFrame(send); // to nobody
        }
        bool isDropped = !client.peer().sendBytes(sends);
        while (!isDropped) {
            const QString line = client.next();
            QVERIFY(line == "end" || line.endsWith(" 0 65536"));
            isDropped = line == "end";
        }
    }

    void whoDoesNotGreetIsDropped()
    {
        ClientPeer client(path());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("session 1 is ended: it does not"));
        QCOMPARE(client.next(60000), QString("end"));
    }

    void moreSessionsThanThereMayBeAreShownOut()
    {
        std::vector<std::unique_ptr<ClientPeer>> clients;
        for (size_t i = 0; i < ClientSocket::kMostSessions; ++i) {
            clients.push_back(std::make_unique<ClientPeer>(path()));
            QCoreApplication::processEvents();
        }
        clients[0]->greet('a');
        QCOMPARE(clients[0]->next(), QString("welcome 0 "));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("a session is refused"));
        ClientPeer tooMany(path());
        QCOMPARE(tooMany.next(), QString("end"));
        clients[1]->close();
        QVERIFY(QTest::qWaitFor([this] {
            ClientPeer another(path());
            another.greet('z');
            return another.next() == "welcome 0 ";
        }));
    }

    void aPlaceIsForgottenWhenTheMessageIsKept()
    {
        auto sms = dataOf("x");
        Q_EMIT m_modem->arrived(sms);
        QCOMPARE(m_modem->forgets, QList<QByteArray>());
        sms.place = "SM:1";
        Q_EMIT m_modem->arrived(sms);
        QCOMPARE(m_modem->forgets, QList<QByteArray>{"SM:1"});
    }

    void itStopsWhenTheModemHasAnswered()
    {
        QSignalSpy stopped(m_daemon.get(), &TelephonyDaemon::stopped);
        m_modem->ready();
        ClientPeer client(path());
        client.greet('a');
        QCOMPARE(client.next(), QString("welcome 2 +4366"));
        client.sendData(1, "+43664", "x");
        QTRY_COMPARE(m_modem->sends.size(), 1);
        m_daemon->stop();
        QTest::qWait(0);
        QCOMPARE(stopped.count(), 0);
        m_modem->isSent(3);
        QTRY_COMPARE(stopped.count(), 1);
        QCOMPARE(client.next(), QString("result 1 3 0"));
    }

    void askedTwiceItDoesNotWait()
    {
        QSignalSpy stopped(m_daemon.get(), &TelephonyDaemon::stopped);
        m_modem->ready();
        ClientPeer client(path());
        client.greet('a');
        client.sendData(1, "+43664", "x");
        QTRY_COMPARE(m_modem->sends.size(), 1);
        m_daemon->stop();
        m_daemon->stop();
        QTRY_COMPARE(stopped.count(), 1);
    }

    void aSpoolThatIsInUseIsAProblem()
    {
        DaemonSettings settings;
        settings.socket = m_folder->filePath("other");
        settings.spool = spool();
        TelephonyDaemon second(settings, std::make_unique<FakeModem>());
        QCOMPARE(second.start(), spool() + ": another daemon uses it");
        settings.spool = m_folder->filePath("spool2");
        settings.socket = path();
        TelephonyDaemon third(settings, std::make_unique<FakeModem>());
        QCOMPARE(third.start(), path() + " is in use");
    }

private:
    QString path() const { return m_folder->filePath("socket"); }
    QString spool() const { return m_folder->filePath("spool"); }
    void begin()
    {
        m_daemon.reset();
        DaemonSettings settings;
        settings.socket = path();
        settings.spool = spool();
        auto modem = std::make_unique<FakeModem>();
        m_modem = modem.get();
        m_daemon = std::make_unique<TelephonyDaemon>(settings, std::move(modem));
        QCOMPARE(m_daemon->start(), QString());
        QCOMPARE(m_modem->started, 1);
    }

    /// A message that waits since the daemon before.
    void writeMessage(int number, const QByteArray &body) const
    {
        QFile file(spool() + QString("/in/%1.json").arg(number + 1, 20, 10, QChar('0')));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"version\":1,\"kind\":\"whole\",\"id\":\""
                   + QByteArray::number(number).rightJustified(16, '0')
                   + "\",\"coding\":\"data\",\"sender\":\"31\",\"body\":\"" + body.toHex()
                   + "\",\"segments\":[{\"digest\":\"aa\",\"time\":0}]}");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TelephonyDaemon> m_daemon;
    FakeModem *m_modem = nullptr;
};

QTEST_GUILESS_MAIN(TestTelephonyDaemon)
#include "tst_telephony_daemon.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/telephonyd/client_peer.h"
#include "tests/services/telephonyd/program.h"
#include "tests/support/other_user.h"
#include "tests/support/program_checks.h"

/// The program, from outside.
class TestTelephonyd : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void runsUntilASignal_data() { addStopSignals(); }
    void runsUntilASignal()
    {
        QFETCH(int, number);
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start());
        QCOMPARE(modeOf(at("socket")), mode_t(0600));
        QCOMPARE(modeOf(at("spool")), mode_t(0700));
        ClientPeer client(at("socket"));
        client.greet('a');
        QVERIFY(client.next().startsWith("welcome "));
        program.program().signal(number);
        QCOMPARE(program.program().end(), 0);
        QVERIFY(!QFile::exists(at("socket")));
    }

    void aSecondOneEndsWithALine()
    {
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start());
        Program second(WMSG_TELEPHONYD, {"--socket", at("socket"), "--spool", at("other")});
        QCOMPARE(second.end(), 1);
        QCOMPARE(second.err(), "wmsg-telephonyd: " + at("socket") + " is in use\n");
        QVERIFY(program.stop());
    }

    void wrongUseIsALineAndExitCode2_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("unknown option") << QStringList{"--sockets", "/tmp/a"};
        QTest::newRow("relative socket") << QStringList{"--socket", "a"};
        QTest::newRow("mode") << QStringList{"--socket-mode", "777"};
        QTest::newRow("back end") << QStringList{"--backend", "smoke"};
        QTest::newRow("no device") << QStringList{"--backend", "gammu"};
        QTest::newRow("connection")
            << QStringList{"--backend", "gammu", "--device", "/dev/null", "--connection", "fbus"};
        QTest::newRow("cause 0") << QStringList{"--loopback-fail", "0"};
        QTest::newRow("cause of letters") << QStringList{"--loopback-fail", "x"};
        QTest::newRow("count 0") << QStringList{"--loopback-fail", "38:0"};
        QTest::newRow("no count") << QStringList{"--loopback-fail", "38:"};
        QTest::newRow("negative delay") << QStringList{"--loopback-delay", "-1"};
        QTest::newRow("no time") << QStringList{"--give-up", "0"};
        QTest::newRow("no file") << QStringList{"--config", "/nowhere/at/all"};
    }
    void wrongUseIsALineAndExitCode2()
    {
        QFETCH(QStringList, options);
        checkWrongUse(WMSG_TELEPHONYD, options);
    }

    void optionsComeFromAFile()
    {
        QFile file(at("ini"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("# a comment\nloopback-fail = 41:1\ngive-up = 60\nbackend = loopback\n");
        file.close();
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start({"--config", at("ini")}));
        ClientPeer client(at("socket"));
        client.greet('a', 0);
        QVERIFY(client.next().startsWith("welcome "));
        client.sendData(1, "12", "x");
        QString line = client.next();
        line = line.startsWith("modem") ? client.next() : line;
        QCOMPARE(line, QString("result 1 0 41"));
        QVERIFY(program.stop());
    }

    void theModemComesWhenItWasAskedTo()
    {
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start({"--loopback-absent", "300"}));
        ClientPeer client(at("socket"));
        client.greet('a');
        client.sendData(1, "12", "x");
        const QString welcome = client.next();
        QVERIFY(welcome == "welcome 0 " ? client.next() == "modem 2 " : welcome == "welcome 2 ");
        QCOMPARE(client.next(), QString("message 12 78"));
        QCOMPARE(client.next(), QString("result 1 1 0"));
    }

    void helpAndVersionGoToStandardOutput() { checkHelpAndVersion(WMSG_TELEPHONYD); }
    void everyOptionIsToldInTheManual()
    {
        checkOptionsAreTold(WMSG_TELEPHONYD, WMSG_DOCS "/telephonyd.md", 13);
    }

    void theLogGoesToAFile()
    {
        TelephonyProgram program(*m_folder);
        Program bad(WMSG_TELEPHONYD, program.options() + QStringList{"--log", at("gone/log")});
        QCOMPARE(bad.end(), 1);
        QCOMPARE(bad.err(), "wmsg-telephonyd: " + at("gone/log") + ": No such file or directory\n");
        QVERIFY(program.start({"--log", at("log"), "--verbose"}));
        ClientPeer client(at("socket"));
        client.greet('a');
        QVERIFY(client.next().startsWith("welcome "));
        QVERIFY(program.stop());
        QFile log(at("log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("session 1 is that of a"));
        QCOMPARE(modeOf(at("log")), mode_t(0600));
    }

    void nothingWakesItWhileNothingHappens()
    {
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start());
        ClientPeer client(at("socket"));
        client.greet('a', 0);
        QVERIFY(client.next().startsWith("welcome "));
        // With a message that waits, and a result: nothing is to be done about either for a day.
        client.sendData(1, "12", "x");
        QString line = client.next();
        line = line.startsWith("modem") ? client.next() : line;
        QCOMPARE(line, QString("result 1 1 0"));
        QVERIFY(comesToRest(program.program().process().processId()));
        QVERIFY(program.stop());
    }

    void othersAreShownOut()
    {
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start({"--socket-mode", "666"}));
        QCOMPARE(modeOf(at("socket")), mode_t(0666));
        if (OtherUser::isPossible()) {
            QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
            OtherUser other(at("socket"));
            QTRY_VERIFY(other.isOver());
            QCOMPARE(other.result(), int(OtherUser::HungUpOn));
        }
        QVERIFY(program.stop());
    }

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestTelephonyd)
#include "tst_telephonyd.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/services/telephonyd/client_peer.h"
#include "tests/services/telephonyd/program.h"
#include "tests/support/other_user.h"

#include <csignal>
#include <sys/stat.h>

/// The program, from outside.
class TestTelephonyd : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void runsUntilASignal_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }
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
        QCOMPARE(::kill(pid_t(program.process().processId()), number), 0);
        QVERIFY(program.process().waitForFinished());
        QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.process().exitCode(), 0);
        QVERIFY(!QFile::exists(at("socket")));
    }

    void aSecondOneEndsWithALine()
    {
        TelephonyProgram program(*m_folder);
        QVERIFY(program.start());
        QProcess second;
        second.start(WMSG_TELEPHONYD, {"--socket", at("socket"), "--spool", at("other")});
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        QCOMPARE(second.readAllStandardError(),
                 "wmsg-telephonyd: " + at("socket").toUtf8() + " is in use\n");
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
        QProcess program;
        program.start(WMSG_TELEPHONYD, options);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 2);
        const QByteArray line = program.readAllStandardError();
        QVERIFY2(line.startsWith("wmsg-telephonyd: ") && line.count('\n') == 1, line.constData());
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

    void helpAndVersionGoToStandardOutput()
    {
        for (const char *wish : {"--help", "--version"}) {
            QProcess program;
            program.start(WMSG_TELEPHONYD, {wish});
            QVERIFY(program.waitForFinished());
            QCOMPARE(program.exitCode(), 0);
            QVERIFY(program.readAllStandardOutput().size() > 10);
            QCOMPARE(program.readAllStandardError(), QByteArray());
        }
    }

    void everyOptionIsToldInTheManual()
    {
        QProcess program;
        program.start(WMSG_TELEPHONYD, {"--help"});
        QVERIFY(program.waitForFinished());
        QFile manual(WMSG_DOCS "/telephonyd.md");
        QVERIFY(manual.open(QIODevice::ReadOnly));
        const QByteArray text = manual.readAll();
        static const QRegularExpression option("(?:^|,)\\s*(--[a-z-]+)",
                                               QRegularExpression::MultilineOption);
        auto found = option.globalMatch(QString::fromUtf8(program.readAllStandardOutput()));
        int count = 0;
        while (found.hasNext()) {
            const QByteArray name = found.next().captured(1).toUtf8();
            if (name != "--help" && name != "--version") {
                QVERIFY2(text.contains('`' + name + '`') || text.contains('`' + name + ' '), name);
                ++count;
            }
        }
        QVERIFY(count > 12);
    }

    void theLogGoesToAFile()
    {
        QProcess bad;
        TelephonyProgram program(*m_folder);
        bad.start(WMSG_TELEPHONYD, program.options() + QStringList{"--log", at("gone/log")});
        QVERIFY(bad.waitForFinished());
        QCOMPARE(bad.exitCode(), 1);
        QCOMPARE(bad.readAllStandardError(),
                 "wmsg-telephonyd: " + at("gone/log").toUtf8() + ": No such file or directory\n");
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
        bool isQuiet = false;
        for (int i = 0; i < 10 && !isQuiet; ++i) {
            const QByteArray before = switchesOf(program.process().processId());
            QTest::qWait(1000);
            isQuiet = !before.isEmpty() && switchesOf(program.process().processId()) == before;
        }
        QVERIFY(isQuiet);
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
    static mode_t modeOf(const QString &path)
    {
        struct stat state = {};
        return ::lstat(qPrintable(path), &state) == 0 ? state.st_mode & 07777 : 0;
    }
    /// How often the threads of a process went to sleep, or were made to.
    static QByteArray switchesOf(qint64 process)
    {
        QByteArray all;
        QDirIterator threads(QString("/proc/%1/task").arg(process),
                             QDir::Dirs | QDir::NoDotAndDotDot);
        while (threads.hasNext()) {
            QFile file(threads.next() + "/status");
            const bool isOpen = file.open(QIODevice::ReadOnly);
            const QByteArray status = isOpen ? file.readAll() : QByteArray();
            all += status.mid(status.indexOf("voluntary_ctxt_switches"));
        }
        return all;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestTelephonyd)
#include "tst_telephonyd.moc"

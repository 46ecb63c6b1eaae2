// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/other_user.h"
#include "tests/support/program_checks.h"
#include "tests/support/session_peer.h"

/// The program, from outside.
class TestMmsproxyd : public QObject {
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void runsUntilASignal_data() { addStopSignals(); }
    void runsUntilASignal()
    {
        QFETCH(int, number);
        Program program;
        start(program);
        for (const char *name : {"proxy", "settings", "push"}) {
            QVERIFY2(LocalPeer(at(name)).isConnected(), name);
            QCOMPARE(modeOf(at(name)), mode_t(0600));
        }
        SessionPeer session(at("proxy"));
        session.registerApp(0, "a");
        QCOMPARE(session.next(), QString("registered 0 0"));
        program.signal(number);
        QCOMPARE(program.end(), 0);
        for (const char *name : {"proxy", "settings", "push"}) {
            QVERIFY2(!QFile::exists(at(name)), name);
        }
    }

    void startsAfterItWasKilled()
    {
        Program killed;
        start(killed);
        killed.kill();
        QVERIFY2(QFile::exists(at("proxy")), "nobody was there to remove it");
        Program program;
        start(program);
        SessionPeer session(at("proxy"));
        session.abort(0, 0);
        QCOMPARE(session.next(), QString("completed 0 15"));
        QCOMPARE(program.stop(), 0);
    }

    void aSecondOneEndsWithALine()
    {
        Program program;
        start(program);
        Program second(WMSG_PROGRAM, options("other"));
        QCOMPARE(second.end(), 1);
        QCOMPARE(second.err(), "wmsg-mmsproxyd: " + at("proxy") + " is in use\n");
        QCOMPARE(second.out(), QString());
        QCOMPARE(program.stop(), 0);
    }

    void wrongUseIsALineAndExitCode2_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("unknown option") << QStringList{"--mmcs", "http://a/"};
        QTest::newRow("bad value") << QStringList{"--mmsc", "ftp://a/"};
        QTest::newRow("no file") << QStringList{"--config", "/nowhere/at/all"};
    }
    void wrongUseIsALineAndExitCode2()
    {
        QFETCH(QStringList, options);
        checkWrongUse(WMSG_PROGRAM, options);
    }

    void helpAndVersionGoToStandardOutput() { checkHelpAndVersion(WMSG_PROGRAM); }
    void everyOptionIsToldInTheManual()
    {
        checkOptionsAreTold(WMSG_PROGRAM, WMSG_DOCS "/mmsproxyd.md", 16);
    }

    void aLogThatCannotBeOpenedIsALine()
    {
        Program program(WMSG_PROGRAM, options() + QStringList{"--log", at("gone/log")});
        QCOMPARE(program.end(), 1);
        QCOMPARE(program.err(),
                 "wmsg-mmsproxyd: " + at("gone/log") + ": No such file or directory\n");
    }

    void nothingWakesItWhileNothingHappens()
    {
        Program program;
        start(program);
        SessionPeer session(at("proxy"));
        session.registerApp(0, "a");
        QCOMPARE(session.next(), QString("registered 0 0"));
        QVERIFY(comesToRest(program.process().processId()));
        QCOMPARE(program.stop(), 0);
    }

    void theSocketModeIsAsAskedAndOthersAreShownOut()
    {
        Program program;
        start(program, {"--socket-mode", "666"});
        QCOMPARE(modeOf(at("proxy")), mode_t(0666));
        if (OtherUser::isPossible()) {
            QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
            for (const char *name : {"proxy", "settings", "push"}) {
                OtherUser other(at(name));
                QTRY_VERIFY(other.isOver());
                QCOMPARE(other.result(), int(OtherUser::HungUpOn));
            }
        }
        QCOMPARE(program.stop(), 0);
    }

private:
    QString at(const QString &name) const { return m_folder->filePath(name); }
    QStringList options(const QString &spool = "spool") const
    {
        return {"--proxy-socket",
                at("proxy"),
                "--settings-socket",
                at("settings"),
                "--push-socket",
                at("push"),
                "--spool",
                at(spool),
                "--mmsc",
                "http://127.0.0.1:1/",
                "--telephony",
                "no"};
    }
    void start(Program &program, const QStringList &more = {})
    {
        program.start(WMSG_PROGRAM, options() + more);
        QCOMPARE(program.line(), "listening on " + at("proxy").toUtf8() + '\n');
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestMmsproxyd)
#include "tst_mmsproxyd.moc"

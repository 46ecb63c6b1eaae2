// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/other_user.h"
#include "tests/support/session_peer.h"

#include <QtTest/QtTest>

#include <csignal>
#include <sys/stat.h>

/// The program, from outside.
class TestMmsproxyd : public QObject {
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
        QProcess program;
        start(program);
        for (const char *name : {"proxy", "settings", "push"}) {
            QVERIFY2(LocalPeer(at(name)).isConnected(), name);
            QCOMPARE(modeOf(at(name)), mode_t(0600));
        }
        SessionPeer session(at("proxy"));
        session.registerApp(0, "a");
        QCOMPARE(session.next(), QString("registered 0 0"));
        QCOMPARE(::kill(pid_t(program.processId()), number), 0);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        for (const char *name : {"proxy", "settings", "push"}) {
            QVERIFY2(!QFile::exists(at(name)), name);
        }
    }

    void startsAfterItWasKilled()
    {
        QProcess killed;
        start(killed);
        killed.kill();
        QVERIFY(killed.waitForFinished());
        QVERIFY2(QFile::exists(at("proxy")), "nobody was there to remove it");
        QProcess program;
        start(program);
        SessionPeer session(at("proxy"));
        session.abort(0, 0);
        QCOMPARE(session.next(), QString("completed 0 15"));
        stop(program);
    }

    void aSecondOneEndsWithALine()
    {
        QProcess program;
        start(program);
        QProcess second;
        second.start(WMSG_PROGRAM, options("other"));
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        QCOMPARE(second.readAllStandardError(),
                 "wmsg-mmsproxyd: " + at("proxy").toUtf8() + " is in use\n");
        QCOMPARE(second.readAllStandardOutput(), QByteArray());
        stop(program);
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
        QProcess program;
        program.start(WMSG_PROGRAM, options);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 2);
        const QByteArray line = program.readAllStandardError();
        QVERIFY2(line.startsWith("wmsg-mmsproxyd: ") && line.count('\n') == 1, line.constData());
    }

    void helpAndVersionGoToStandardOutput()
    {
        for (const char *wish : {"--help", "--version"}) {
            QProcess program;
            program.start(WMSG_PROGRAM, {wish});
            QVERIFY(program.waitForFinished());
            QCOMPARE(program.exitCode(), 0);
            QVERIFY(program.readAllStandardOutput().size() > 10);
            QCOMPARE(program.readAllStandardError(), QByteArray());
        }
    }

    void everyOptionIsToldInTheManual()
    {
        QProcess program;
        program.start(WMSG_PROGRAM, {"--help"});
        QVERIFY(program.waitForFinished());
        QFile manual(WMSG_DOCS "/mmsproxyd.md");
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
        QVERIFY(count > 15);
    }

    void aLogThatCannotBeOpenedIsALine()
    {
        QProcess program;
        program.start(WMSG_PROGRAM, options() + QStringList{"--log", at("gone/log")});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 1);
        QCOMPARE(program.readAllStandardError(),
                 "wmsg-mmsproxyd: " + at("gone/log").toUtf8() + ": No such file or directory\n");
    }

    void nothingWakesItWhileNothingHappens()
    {
        QProcess program;
        start(program);
        SessionPeer session(at("proxy"));
        session.registerApp(0, "a");
        QCOMPARE(session.next(), QString("registered 0 0"));
        // Sooner or later there is a second in which it did not run at all.
        bool isQuiet = false;
        for (int i = 0; i < 10 && !isQuiet; ++i) {
            const QByteArray before = switchesOf(program.processId());
            QTest::qWait(1000);
            isQuiet = !before.isEmpty() && switchesOf(program.processId()) == before;
        }
        QVERIFY(isQuiet);
        stop(program);
    }

    void theSocketModeIsAsAskedAndOthersAreShownOut()
    {
        QProcess program;
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
        stop(program);
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
    void start(QProcess &program, const QStringList &more = {})
    {
        program.start(WMSG_PROGRAM, options() + more);
        QVERIFY(QTest::qWaitFor([&program] { return program.canReadLine(); }, 30000));
        QCOMPARE(program.readLine(), "listening on " + at("proxy").toUtf8() + '\n');
    }
    static void stop(QProcess &program)
    {
        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 0);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestMmsproxyd)
#include "tst_mmsproxyd.moc"

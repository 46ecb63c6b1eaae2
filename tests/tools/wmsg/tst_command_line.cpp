// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/support/drm_containers.h"
#include "tests/tools/wmsg/program.h"

#include <QtCore/QRegularExpression>

/// The program as a whole: its help, its version, its exit codes, and that its manual is true.
class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void version();
    void help_data();
    void help();
    void wrongUsage_data();
    void wrongUsage();
    void manualNamesEveryOption();
    void manualShowsTheTruth_data();
    void manualShowsTheTruth();

private:
    static QString manual();
    static void addSessionHelp();
};

QString TestCommandLine::manual()
{
    QFile file(WMSG_DOCS "/cli.md");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void TestCommandLine::version()
{
    const Run run = Desk().run({"--version"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(QRegularExpression("^wmsg \\d+\\.\\d+\\.\\d+\n$").match(run.out).hasMatch());
}

// The options of what makes a message.
static const QStringList kMessageOptions{"--to",
                                         "--cc",
                                         "--bcc",
                                         "--from",
                                         "--subject",
                                         "--text",
                                         "--text-file",
                                         "--attach",
                                         "--no-smil",
                                         "--date",
                                         "--expiry",
                                         "--delivery-report",
                                         "--no-delivery-report",
                                         "--read-report",
                                         "--no-read-report",
                                         "--priority",
                                         "--class",
                                         "--app-id",
                                         "--max-size"};

// The subcommands that talk to the daemon.
void TestCommandLine::addSessionHelp()
{
    QTest::newRow("send") << QStringList{"send", "--help"}
                          << kMessageOptions + QStringList{"--file",   "--no-wait", "--store",
                                                           "--folder", "--timeout", "--json",
                                                           "--log",    "--verbose"};
    QTest::newRow("receive") << QStringList{"receive", "--help"}
                             << QStringList{"--app-id", "--count",  "--save",   "--extract",
                                            "--store",  "--folder", "--full",   "--timeout",
                                            "--json",   "--log",    "--verbose"};
    QTest::newRow("settings") << QStringList{"settings", "--help"}
                              << QStringList{"--json", "--log", "--verbose"};
    QTest::newRow("push") << QStringList{"push", "--help"}
                          << QStringList{"FILE", "--socket", "--timeout"};
    QTest::newRow("box") << QStringList{"box", "--help"}
                         << QStringList{"--folder", "--keep", "--fault", "--faults", "--no-modem",
                                        "--demo",   "--json", "--log",   "--verbose"};
    QTest::newRow("sms send") << QStringList{"sms", "send", "--help"}
                              << QStringList{"--to",   "--text",    "--data",    "--port",
                                             "--smsc", "--no-wait", "--timeout", "--json",
                                             "--log",  "--verbose"};
    QTest::newRow("sms receive") << QStringList{"sms", "receive", "--help"}
                                 << QStringList{"--port", "--count", "--timeout",
                                                "--json", "--log",   "--verbose"};
}

void TestCommandLine::help_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("named");
    QTest::newRow("program") << QStringList{
        "--help"} << QStringList{"decode",    "compose",           "send", "receive", "settings",
                                 "--version", "Exit codes: 0 fine"};
    QTest::newRow("decode") << QStringList{"decode", "--help"}
                            << QStringList{"FILE",     "--json", "--hex",      "--color",
                                           "--strict", "--full", "--extract",  "--html",
                                           "--force",  "--as",   "--max-size", "--log",
                                           "--verbose"};
    QTest::newRow("compose") << QStringList{"compose", "-h"}
                             << kMessageOptions
            + QStringList{"--pdu",        "--output", "--transaction-id",
                          "--message-id", "--log",    "--verbose"};
    addSessionHelp();
}

void TestCommandLine::help()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, named);
    const Run run = Desk().run(arguments);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err, QString());
    for (const QString &name : named) {
        QVERIFY2(run.out.contains(name), qPrintable(name));
    }
}

void TestCommandLine::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    const char *const unknown = "is neither a subcommand nor an option";
    QTest::newRow("nothing") << QStringList{} << "A subcommand is required";
    QTest::newRow("unknown subcommand") << QStringList{"show"} << QString("\"show\" ") + unknown;
    QTest::newRow("unknown below another")
        << QStringList{"store", "show-all"} << QString("\"show-all\" ") + unknown;
    QTest::newRow("unknown option")
        << QStringList{"--colour"} << QString("\"--colour\" ") + unknown;
    QTest::newRow("decode without a file") << QStringList{"decode"} << "FILE";
    QTest::newRow("decode with an unknown option")
        << QStringList{"decode", "--colour", "x"} << "--colour";
    QTest::newRow("both views") << QStringList{"decode", "--json", "--hex", "x"} << "--json";
    QTest::newRow("size in words")
        << QStringList{"decode", "--max-size", "much", "x"} << "--max-size";
    QTest::newRow("folder missing") << QStringList{"decode", "x", "--extract"} << "--extract";
}

void TestCommandLine::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const Run run = Desk().run(arguments);
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.out, QString());
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
    QVERIFY2(run.errorLine().contains(named), qPrintable(run.err));
}

void TestCommandLine::manualNamesEveryOption()
{
    const QRegularExpression option("(?<![\\w-])--[a-z][a-z-]+");
    for (const char *command : {"decode", "compose", "send", "receive", "settings", "push", "box",
                                "doctor", "sms send", "sms receive"}) {
        auto found =
            option.globalMatch(Desk().run(QString(command).split(' ') + QStringList("--help")).out);
        QVERIFY(found.hasNext());
        while (found.hasNext()) {
            const QString name = found.next().captured();
            QVERIFY2(manual().contains('`' + name), qPrintable(name));
        }
    }
}

void TestCommandLine::manualShowsTheTruth_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("shown");
    // Each example is a line "$ wmsg ..." of a code block with what the program prints below it.
    const QRegularExpression block("```(?:console|json)\\n(.*?)```",
                                   QRegularExpression::DotMatchesEverythingOption);
    auto blocks = block.globalMatch(manual());
    while (blocks.hasNext()) {
        const QStringList examples = blocks.next().captured(1).split("$ wmsg ", Qt::SkipEmptyParts);
        for (const QString &example : examples) {
            const QString command = example.section('\n', 0, 0);
            QTest::newRow(qPrintable(command)) << command << example.section('\n', 1);
        }
    }
}

// The examples build on each other, so that each is run behind those before it.
void TestCommandLine::manualShowsTheTruth()
{
    static const Desk desk;
    static bool isSetUp = false;
    if (!isSetUp) {
        desk.bring("pdu/retrieve-confirmation");
        desk.bring("pdu/cut-in-picture");
        QVERIFY(QFile::rename(desk.path("retrieve-confirmation"), desk.path("message.pdu")));
        QVERIFY(QFile::rename(desk.path("cut-in-picture"), desk.path("broken.pdu")));
        desk.write("photo.png", fromHex("89504E470D0A1A0A 0000000D49484452"));
        desk.write("photo.dm", drm::message({drm::bodyPart("image/jpeg", drm::kJpeg)}));
        desk.write("song.dcf",
                   drm::content1("audio/amr", "cid:1@x",
                                 "Rights-Issuer: http://r.i/\r\nContent-Name: Song\r\n"
                                 "Encryption-Method: AES128CBC;x\r\n"));
        desk.write("sunset.jpg", drm::kJpeg);
        qputenv("UVO_EXTRA_SYS_DATA_PATH", QFile::encodeName(desk.folder().path()));
        isSetUp = true;
    }
    QFETCH(QString, command);
    QFETCH(QString, shown);
    const Run run = desk.shell("\"$0\" " + command);
    if (command.contains("--json")) {
        const QJsonDocument expected = QJsonDocument::fromJson(shown.toUtf8());
        QVERIFY(expected.isObject());
        QCOMPARE(QJsonDocument(run.json()).toJson(), expected.toJson());
    } else {
        QCOMPARE(run.out + run.err, shown);
    }
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/control_socket.h"
#include "tests/sim/modem/modem_line.h"
#include "tests/support/local_peer.h"
#include "tests/support/program_checks.h"

namespace {

QString docs()
{
    QFile file(WMSG_DOCS "/simulators.md");
    const QString text = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : "";
    return text.mid(text.indexOf("## `wmsg-sim-modem`"));
}

} // namespace

class TestSimModemProgram : public QObject {
    Q_OBJECT

private slots:
    void wholeWay();
    void configuration();
    void allOptionsAreDocumented();
    void allCommandsAreDocumented();
    void wrongUsage_data();
    void wrongUsage();
    void pathsThatCannotBeUsed();
};

void TestSimModemProgram::wholeWay()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("modem");
    Program program(WMSG_SIM_MODEM,
                    {"--pty", link, "--control", folder.filePath("control"), "--pdu-log",
                     folder.filePath("log"), "--loopback", "--number", "+4366"});
    QCOMPARE(program.line(), "listening on " + link.toUtf8() + "\n");
    ModemLine line(link);
    QCOMPARE(line.ask("ATE0"), QByteArray("ATE0\r/OK"));
    QCOMPARE(line.ask("AT+CNUM"), QByteArray("+CNUM: ,\"+4366\",145/OK"));
    QCOMPARE(line.ask("AT+CMGS=12"), QByteArray("> "));
    QCOMPARE(line.ask("00010005812143F5000002E834\x1A"), QByteArray("+CMGS: 0/OK"));
    QVERIFY(line.ask("AT+CMGL=4").startsWith("+CMGL: 1,0,,18/"));
    QCOMPARE(QDir(folder.filePath("log")).entryList({"*.pdu"}),
             (QStringList{"0001-submit.pdu", "0002-deliver.pdu"}));
    LocalPeer peer(folder.filePath("control"));
    peer.sendBytes("status\n");
    QCOMPARE(peer.take(9), QByteArray("ok modem="));
    program.signal(SIGTERM);
    QCOMPARE(program.end(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
    QVERIFY(!QFileInfo::exists(folder.filePath("control")));
}

void TestSimModemProgram::configuration()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("sim.conf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("pty=\"" + folder.filePath("modem").toUtf8() + "\"\npin=1234\nstorage=3\n");
    file.close();
    Program program(WMSG_SIM_MODEM, {"--config", file.fileName()});
    QVERIFY(program.line().startsWith("listening on "));
    ModemLine line(folder.filePath("modem"));
    line.ask("ATE0");
    QCOMPARE(line.ask("AT+CPIN=\"1234\""), QByteArray("OK"));
    QCOMPARE(line.ask("AT+CPMS=\"ME\""), QByteArray("+CPMS: 0,3,0,3,0,3/OK"));
}

void TestSimModemProgram::allOptionsAreDocumented()
{
    checkOptionsAreTold(WMSG_SIM_MODEM, WMSG_DOCS "/simulators.md", 10);
}

/// Each command in the table of the page is one, and there are so many.
void TestSimModemProgram::allCommandsAreDocumented()
{
    const QTemporaryDir folder;
    wmsg::sim::Modem::Settings settings;
    settings.link = folder.filePath("modem");
    wmsg::sim::PduFiles log;
    wmsg::sim::Modem modem(settings, log);
    wmsg::sim::ControlSocket control(modem);
    static const QRegularExpression row("^\\| `([a-z][a-z-]*)[^`]*` \\|",
                                        QRegularExpression::MultilineOption);
    auto rows = row.globalMatch(docs());
    int count = 0;
    while (rows.hasNext()) {
        const QString name = rows.next().captured(1);
        ++count;
        QVERIFY2(control.obey(name.toUtf8()) != "error there is no such command", qPrintable(name));
    }
    QCOMPARE(count, 9);
}

void TestSimModemProgram::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");

    QTest::newRow("nothing") << QStringList{} << "--pty is required";
    QTest::newRow("unknown") << QStringList{"--pty", "/m", "--nonsense"} << "--nonsense";
    QTest::newRow("relative") << QStringList{"--pty", "modem"} << "--pty: the path is not absolute";
    QTest::newRow("number") << QStringList{"--pty", "/m", "--number", "me"}
                            << "--number: this is no telephone number";
    QTest::newRow("centre") << QStringList{"--pty", "/m", "--service-center", "me"}
                            << "--service-center: this is no telephone number";
    QTest::newRow("storage") << QStringList{"--pty", "/m", "--storage", "256"} << "--storage";
}

void TestSimModemProgram::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    checkWrongUse(WMSG_SIM_MODEM, arguments, line);
}

void TestSimModemProgram::pathsThatCannotBeUsed()
{
    const QTemporaryDir folder;
    Program first(WMSG_SIM_MODEM, {"--pty", folder.path()});
    QCOMPARE(first.end(), 1);
    QCOMPARE(first.err(), "wmsg-sim-modem: " + folder.path() + " is there and is no link\n");
    Program second(WMSG_SIM_MODEM, {"--pty", folder.filePath("modem"), "--control", folder.path()});
    QCOMPARE(second.end(), 1);
    QCOMPARE(second.err(), "wmsg-sim-modem: " + folder.path() + " is there and is no socket\n");
}

QTEST_GUILESS_MAIN(TestSimModemProgram)
#include "tst_sim_modem_program.moc"

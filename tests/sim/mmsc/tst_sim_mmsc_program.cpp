// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/fault_plan.h"
#include "tests/sim/mmsc/http_call.h"
#include "tests/sim/mmsc/messages.h"
#include "tests/sim/mmsc/phone.h"
#include "tests/support/program_checks.h"

namespace {

// A run of the program.
class Simulator : public Program {
public:
    explicit Simulator(const QStringList &arguments) : Program(WMSG_SIM_MMSC, arguments) { }

    /// Waits for the line that says where it listens; the port.
    quint16 port()
    {
        static const QRegularExpression form("^listening on http://127\\.0\\.0\\.1:(\\d+)/\n$");
        return quint16(form.match(line()).captured(1).toUInt());
    }
};

QString docs()
{
    QFile file(WMSG_DOCS "/simulators.md");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString planOfTheDocs()
{
    static const QRegularExpression block("```plan\n(.*?)```",
                                          QRegularExpression::DotMatchesEverythingOption);
    return block.match(docs()).captured(1);
}

} // namespace

class TestSimMmscProgram : public QObject {
    Q_OBJECT

private slots:
    void wholeWay();
    void endsAtSignals_data() { addStopSignals(); }
    void endsAtSignals();
    void configuration();
    void planOfTheDocumentation();
    void allOptionsAreDocumented();
    void wrongUsage_data();
    void wrongUsage();
    void portInUse();
};

void TestSimMmscProgram::wholeWay()
{
    const Phone phone;
    const QTemporaryDir folder;
    Simulator program({"--subscriber", "+431=" + phone.path(), "--pdu-log", folder.path()});
    const quint16 port = program.port();
    QVERIFY(port > 0);
    HttpCall call(port);
    call.post(sendRequest(to("+431/TYPE=PLMN"))).wait();
    QCOMPARE(int(decoded(call.body()).header().responseStatus), 128);
    QTRY_COMPARE(phone.pushed.size(), 1);
    QCOMPARE(decoded(phone.pushed[0]).header().from.getEntryVal(), QString("+15550100"));
    QTRY_COMPARE(QDir(folder.path()).entryList({"*.pdu"}).size(), 3);
    program.signal(SIGTERM);
    QCOMPARE(program.end(), 0);
}

void TestSimMmscProgram::endsAtSignals()
{
    QFETCH(int, number);
    Simulator program({"--fault", "retrieve 1 delay=3600"});
    const quint16 port = program.port();
    QVERIFY(port > 0);
    HttpCall call(port); // waits for its answer when the end comes
    call.get("/x");
    HttpCall other(port);
    QCOMPARE(other.get("/x").wait().status(), 404);
    program.signal(number);
    QCOMPARE(program.end(), 0);
}

void TestSimMmscProgram::configuration()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("sim.conf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("fault=\"retrieve 1 http-status=503\"\nkeep=60\n");
    file.close();
    Simulator program({"--config", file.fileName()});
    const quint16 port = program.port();
    QVERIFY(port > 0);
    HttpCall call(port);
    QCOMPARE(call.get("/x").wait().status(), 503);
}

void TestSimMmscProgram::planOfTheDocumentation()
{
    const QString plan = planOfTheDocs();
    QVERIFY(plan.count('\n') > 15);
    wmsg::sim::FaultPlan read;
    QCOMPARE(read.read("docs", plan), QString());
    using wmsg::sim::Occasion;
    QCOMPARE(read.next(Occasion::Send).httpStatus, std::optional<int>(503));
    QVERIFY(read.next(Occasion::Notify).lost);
    QCOMPARE(read.next(Occasion::Retrieve).delay, std::optional<int>(500));

    const QTemporaryDir folder;
    QFile file(folder.filePath("plan"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(plan.toUtf8());
    file.close();
    Simulator program({"--faults", file.fileName(), "--default-push", "/nowhere"});
    const quint16 port = program.port();
    QVERIFY(port > 0);
    for (const int responseStatus : {0, 192, 192}) {
        HttpCall call(port);
        call.post(sendRequest(to("+431"))).wait();
        QCOMPARE(call.status(), responseStatus == 0 ? 503 : 200);
        if (responseStatus > 0) {
            QCOMPARE(int(decoded(call.body()).header().responseStatus), responseStatus);
        }
    }
    HttpCall fourth(port);
    QCOMPARE(fourth.post(sendRequest(to("+431"))).wait().status(), 0);
}

void TestSimMmscProgram::allOptionsAreDocumented()
{
    checkOptionsAreTold(WMSG_SIM_MMSC, WMSG_DOCS "/simulators.md", 13);
}

void TestSimMmscProgram::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");

    QTest::newRow("unknown") << QStringList{"--nonsense"} << "--nonsense";
    QTest::newRow("port") << QStringList{"--port", "65536"} << "--port";
    QTest::newRow("no number") << QStringList{"--keep", "x"} << "--keep";
    QTest::newRow("pause") << QStringList{"--notify-again", "0"} << "--notify-again";
    QTest::newRow("subscriber") << QStringList{"--subscriber", "+431"}
                                << "--subscriber +431: this is not ADDRESS=SOCKET with an "
                                   "absolute path";
    QTest::newRow("relative socket")
        << QStringList{"--subscriber", "+431=push"} << "--subscriber +431=push: this is not";
    QTest::newRow("relative, in short messages")
        << QStringList{"--subscriber", "+431=sms:push"} << "--subscriber +431=sms:push: this is";
    QTest::newRow("relative, for all")
        << QStringList{"--default-push", "sms:push"} << "--default-push: the path is not absolute";
    QTest::newRow("nobody") << QStringList{"--subscriber", "=/push"} << "there is no address";
    QTest::newRow("default push") << QStringList{"--default-push", "push"}
                                  << "--default-push: the path is not absolute";
    QTest::newRow("sender") << QStringList{"--sender", " "} << "--sender: this is no address";
    QTest::newRow("fault") << QStringList{"--fault", "send 1 lost"}
                           << "--fault:1: \"lost\" cannot happen to this";
    QTest::newRow("no plan") << QStringList{"--faults", "/nowhere/plan"} << "/nowhere/plan: ";
    QTest::newRow("no configuration")
        << QStringList{"--config", "/nowhere/conf"} << "/nowhere/conf";
}

void TestSimMmscProgram::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    checkWrongUse(WMSG_SIM_MMSC, arguments, line);
}

void TestSimMmscProgram::portInUse()
{
    Simulator first({});
    const QString port = QString::number(first.port());
    Simulator second({"--port", port});
    QCOMPARE(second.end(), 1);
    QCOMPARE(second.err(),
             "wmsg-sim-mmsc: port " + port
                 + " of 127.0.0.1 cannot be used: Address already in use\n");
}

QTEST_GUILESS_MAIN(TestSimMmscProgram)
#include "tst_sim_mmsc_program.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

namespace {

// Whether a process still does anything; one that waits to be buried does not.
bool isAlive(qint64 pid)
{
    QFile file(QString("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray stat = file.readAll();
    return stat.mid(stat.lastIndexOf(')') + 2, 1) != "Z";
}

// A run of the box, with the programs of this build in PATH, temporary files in a folder, and the
// telephony daemon at a path of its own, or at that of another box.
class Box {
public:
    explicit Box(const QStringList &arguments, const QString &path = WMSG_PROGRAM_PATH,
                 const QString &telephony = QString())
        : m_telephony(telephony.isEmpty() ? m_sockets.filePath("telephony") : telephony)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PATH", path);
        environment.insert("WMSG_TELEPHONY_SOCKET", m_telephony);
        environment.insert("TMPDIR", m_temporary.path());
        environment.insert("TZ", "UTC");
        environment.insert("LC_ALL", "C.UTF-8");
        m_process.setProcessEnvironment(environment);
        m_process.start(WMSG_PROGRAM, QStringList{"box"} + arguments);
    }
    ~Box()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    /// Waits for the object that tells what was started.
    QJsonObject ready()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(60000)) { }
        m_told = QJsonDocument::fromJson(m_process.readLine()).object();
        return m_told;
    }
    QList<qint64> pids() const
    {
        QList<qint64> list;
        for (const auto program : m_told["programs"].toArray()) {
            list.append(program.toObject()["pid"].toInteger());
        }
        return list;
    }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }
    /// Waits for the end; the exit code, -1 for none.
    int end()
    {
        const bool ended =
            m_process.state() == QProcess::NotRunning || m_process.waitForFinished(60000);
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    QString telephony() const { return m_telephony; }
    QString out() { return m_process.readAllStandardOutput(); }
    QString err() { return m_process.readAllStandardError(); }
    QStringList leftovers() const
    {
        return QDir(m_temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

private:
    QTemporaryDir m_temporary;
    QTemporaryDir m_sockets;
    QString m_telephony;
    QProcess m_process;
    QJsonObject m_told;
};

bool noneIsAlive(const QList<qint64> &pids)
{
    return std::none_of(pids.begin(), pids.end(), isAlive);
}

// The programs of a box, in the order in which they start.
QStringList programs(bool hasModem)
{
    const QStringList network{"wmsg-sim-mmsc", "wmsg-mmsproxyd"};
    return hasModem ? QStringList{"wmsg-sim-modem", "wmsg-telephonyd"} + network : network;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("NO FILE");
}

} // namespace

class TestBox : public QObject {
    Q_OBJECT

private slots:
    void startsAndStops_data();
    void startsAndStops();
    void tellsInWords();
    void killed();
    void aProgramDies_data();
    void aProgramDies();
    void demo();
    void demoWithoutAModem();
    void demoIsNotifiedByShortMessage();
    void demoOverABadNetwork();
    void demoThatFails();
    void twoBoxes();
    void twoModems();
    void badFault();
    void noProgram_data();
    void noProgram();
    void badFolder_data();
    void badFolder();
    void keepsTheFolder();
    void tellsWhatIsSetAside();
};

void TestBox::startsAndStops_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("hasModem");

    QTest::newRow("Ctrl-C") << SIGINT << true;
    QTest::newRow("SIGTERM") << SIGTERM << true;
    QTest::newRow("the terminal closes") << SIGHUP << true;
    QTest::newRow("without a modem") << SIGINT << false;
}

void TestBox::startsAndStops()
{
    QFETCH(int, number);
    QFETCH(bool, hasModem);
    const QTemporaryDir folder;
    Box box(QStringList{"--json", "--folder", folder.path()}
            + (hasModem ? QStringList() : QStringList{"--no-modem"}));
    const QJsonObject told = box.ready();
    QCOMPARE(told["folder"].toString(), folder.path());
    QVERIFY(told["mmsc"].toString().startsWith("http://127.0.0.1:"));
    QCOMPARE(told["proxySocket"].toString(), QString("/tmp/mmsproxy"));
    QCOMPARE(told["pushSocket"].toString(), folder.filePath("push"));
    QCOMPARE(told["pdus"].toString(), folder.filePath("pdus"));
    QStringList started;
    for (const auto program : told["programs"].toArray()) {
        started += program.toObject()["name"].toString();
    }
    QCOMPARE(started, programs(hasModem));
    QCOMPARE(told.contains("telephonySocket"), hasModem);
    if (hasModem) {
        QCOMPARE(told["telephonySocket"].toString(), box.telephony());
        QCOMPARE(told["modem"].toString(), folder.filePath("modem"));
        QVERIFY(QFile::exists(told["modemControl"].toString()));
        QVERIFY(QDir(told["shortMessages"].toString()).exists());
    }
    const QList<qint64> pids = box.pids();
    QVERIFY(std::all_of(pids.begin(), pids.end(), isAlive));
    QVERIFY(QFile::exists("/tmp/mmsproxy"));
    QCOMPARE(QFile::exists(box.telephony()), hasModem);
    QCOMPARE(contentOf(folder.filePath("wmsg-sim-mmsc.log")),
             "listening on " + told["mmsc"].toString().toUtf8() + '\n');

    box.signal(number);
    QCOMPARE(box.end(), 0);
    QVERIFY(noneIsAlive(pids));
    QVERIFY(!QFile::exists("/tmp/mmsproxy"));
    QVERIFY(!QFile::exists(box.telephony()));
    QVERIFY(!QFile::exists(folder.filePath("push")));
    QCOMPARE(box.err(), QString());
}

void TestBox::tellsInWords()
{
    const QTemporaryDir folder;
    Box box({"--folder", folder.path()});
    QString out;
    QTRY_VERIFY_WITH_TIMEOUT((out += box.out()).contains("Ctrl-C ends it."), 60000);
    QVERIFY(out.startsWith("The box is ready in " + folder.path() + '\n'));
    QVERIFY(out.contains("wmsg send --to"));
    QVERIFY(out.contains("wmsg sms send --to"));
    for (const QString &program : programs(true)) {
        QVERIFY2(out.contains("  " + program + ' '), qPrintable(program));
    }
    box.signal(SIGINT);
    QCOMPARE(box.end(), 0);
}

void TestBox::killed()
{
    Box box({"--json"});
    box.ready();
    const QList<qint64> pids = box.pids();
    QCOMPARE(pids.size(), 4);
    QVERIFY(std::all_of(pids.begin(), pids.end(), isAlive));
    box.signal(SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(noneIsAlive(pids), 30000);
}

void TestBox::aProgramDies_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QString>("name");

    QTest::newRow("the modem") << 0 << "wmsg-sim-modem";
    QTest::newRow("the telephony daemon") << 1 << "wmsg-telephonyd";
    QTest::newRow("the network") << 2 << "wmsg-sim-mmsc";
    QTest::newRow("the proxy daemon") << 3 << "wmsg-mmsproxyd";
}

void TestBox::aProgramDies()
{
    QFETCH(int, which);
    QFETCH(QString, name);
    const QTemporaryDir folder;
    Box box({"--json", "--folder", folder.path()});
    box.ready();
    const QList<qint64> pids = box.pids();
    QCOMPARE(pids.size(), 4);
    ::kill(pid_t(pids[which]), SIGKILL);
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(),
             QString("wmsg: %1 was killed by signal 9 (see %2)\n")
                 .arg(name, folder.filePath(name + ".log")));
    QVERIFY(noneIsAlive(pids));
}

void TestBox::demo()
{
    Box box({"--demo"});
    const int exitCode = box.end();
    const QString out = box.out();
    QCOMPARE(box.err(), QString());
    QCOMPARE(exitCode, 0);
    QVERIFY2(out.contains("wmsg.demo.sender: sent.\n"), qPrintable(out));
    QVERIFY2(out.contains("wmsg.demo.receiver has received:\n"), qPrintable(out));
    QVERIFY2(out.contains("Hello from the box!"), qPrintable(out));
    QVERIFY2(out.contains("image/gif"), qPrintable(out));
    QVERIFY2(out.contains("+15550100 (phone number)"), qPrintable(out));
    QVERIFY2(out.contains("sends a short message to +15550101: 25 of 160 septets, 135 left.\n"),
             qPrintable(out));
    QVERIFY2(out.contains("wmsg.demo.receiver has received a short message, from +15550101, "),
             qPrintable(out));
    QVERIFY2(out.endsWith("sent.\n") || out.endsWith("Hello in a short message!\n"),
             qPrintable(out));
    QCOMPARE(box.leftovers(), QStringList());
    QVERIFY(!QFile::exists("/tmp/mmsproxy"));
}

void TestBox::demoWithoutAModem()
{
    const QTemporaryDir folder;
    Box box({"--demo", "--no-modem", "--folder", folder.path()});
    QCOMPARE(box.end(), 0);
    const QString out = box.out();
    QVERIFY2(out.contains("wmsg.demo.receiver has received:\n"), qPrintable(out));
    QVERIFY2(!out.contains("short message"), qPrintable(out));
    QVERIFY(!QFile::exists(folder.filePath("sms")));
}

void TestBox::demoIsNotifiedByShortMessage()
{
    const QTemporaryDir folder;
    Box box({"--demo", "--folder", folder.path()});
    QCOMPARE(box.end(), 0);
    // The notification, and the short message that comes back; nothing but that one was sent.
    const QDir messages(folder.filePath("sms"));
    QVERIFY(messages.entryList({"*-deliver.pdu"}).size() >= 2);
    QCOMPARE(messages.entryList({"*-submit.pdu"}).size(), 1);
}

void TestBox::demoOverABadNetwork()
{
    const QTemporaryDir folder;
    Box box({"--demo", "--folder", folder.path(), "--fault", "send 1 http-status=503", "--fault",
             "retrieve 1 cut-after=50", "--fault", "notify 1 doubled"});
    QCOMPARE(box.end(), 0);
    const QString out = box.out();
    QVERIFY2(out.contains("wmsg.demo.sender: sent.\n"), qPrintable(out));
    QCOMPARE(out.count("wmsg.demo.receiver has received:\n"), 1);
    QCOMPARE(QDir(folder.filePath("pdus")).entryList({"*notification-ind.pdu"}).size(), 2);
}

void TestBox::demoThatFails()
{
    Box box({"--demo", "--fault", "send * response-status=225"});
    QCOMPARE(box.end(), 1);
    const QStringList lines = box.err().split('\n');
    QVERIFY2(lines[0].startsWith("wmsg: not sent: "), qPrintable(lines[0]));
    QVERIFY2(lines[1].startsWith("wmsg: logs and PDUs are kept in "), qPrintable(lines[1]));
    QCOMPARE(box.leftovers().size(), 1);
}

void TestBox::twoBoxes()
{
    Box first({"--json"});
    QVERIFY(!first.ready().isEmpty());
    const QTemporaryDir folder;
    Box second({"--json", "--folder", folder.path()});
    QCOMPARE(second.end(), 1);
    const QString err = second.err();
    QVERIFY2(err.startsWith("wmsg: wmsg-mmsproxyd: /tmp/mmsproxy") && err.contains("in use")
                 && err.count('\n') == 1,
             qPrintable(err));
    QCOMPARE(second.out(), QString());
    QVERIFY(!noneIsAlive(first.pids()));
}

void TestBox::twoModems()
{
    Box first({"--json"});
    QVERIFY(!first.ready().isEmpty());
    const QTemporaryDir folder;
    Box second({"--json", "--folder", folder.path()}, WMSG_PROGRAM_PATH, first.telephony());
    QCOMPARE(second.end(), 1);
    QCOMPARE(second.err(), "wmsg: wmsg-telephonyd: " + first.telephony() + " is in use\n");
    QVERIFY(!noneIsAlive(first.pids()));
}

void TestBox::badFault()
{
    const QTemporaryDir folder;
    Box box({"--folder", folder.path(), "--fault", "send 1 lost"});
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(),
             QString("wmsg: wmsg-sim-mmsc: --fault:1: \"lost\" cannot happen to this\n"));
}

void TestBox::noProgram_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("name");

    QTest::newRow("the modem") << QStringList() << "wmsg-sim-modem";
    QTest::newRow("the network") << QStringList{"--no-modem"} << "wmsg-sim-mmsc";
}

void TestBox::noProgram()
{
    QFETCH(QStringList, options);
    QFETCH(QString, name);
    const QTemporaryDir folder;
    Box box(QStringList{"--folder", folder.path()} + options, "/nowhere");
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(),
             "wmsg: " + name + ": there is no such program, neither beside wmsg nor in PATH\n");
}

void TestBox::badFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("problem");

    const QString longName = "/tmp/" + QString(120, 'x');
    QTest::newRow("no folder") << "/dev/null/box"
                               << "the folder cannot be made";
    QTest::newRow("long") << longName << "the name is too long for a socket in this folder";
}

void TestBox::badFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, problem);
    Box box({"--folder", folder});
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(), "wmsg: " + folder + ": " + problem + '\n');
}

void TestBox::tellsWhatIsSetAside()
{
    const QTemporaryDir folder;
    Box box({"--json", "--folder", folder.path()});
    const QString socket = box.ready()["pushSocket"].toString();
    QFile notification(folder.filePath("notification"));
    QVERIFY(notification.open(QIODevice::WriteOnly));
    notification.write(QByteArray::fromHex("8C8298743100 8D92 83") + "ftp://127.0.0.1/m" + '\0');
    notification.close();
    QCOMPARE(QProcess::execute(WMSG_PROGRAM, {"push", "--socket", socket, notification.fileName()}),
             0);
    QString err;
    QTRY_VERIFY_WITH_TIMEOUT((err += box.err()).endsWith('\n'), 60000);
    QVERIFY2(err.startsWith("wmsg: a message that came was set aside: the location is no URL of "
                            "http or https ("
                            + folder.path() + "/spool/kept/in-"),
             qPrintable(err));
    box.signal(SIGINT);
    QCOMPARE(box.end(), 0);
}

void TestBox::keepsTheFolder()
{
    Box box({"--json", "--keep"});
    const QString folder = box.ready()["folder"].toString();
    QVERIFY(!folder.isEmpty());
    box.signal(SIGINT);
    QCOMPARE(box.end(), 0);
    QVERIFY(QFile::exists(folder + "/wmsg-mmsproxyd.log"));
    QCOMPARE(box.err(), "wmsg: logs and PDUs are kept in " + folder + '\n');
}

QTEST_GUILESS_MAIN(TestBox)
#include "tst_box.moc"

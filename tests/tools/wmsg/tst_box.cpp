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

// A run of the box, with the programs of this build in PATH and temporary files in a folder.
class Box {
public:
    explicit Box(const QStringList &arguments, const QString &path = WMSG_PROGRAM_PATH)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PATH", path);
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
    QString out() { return m_process.readAllStandardOutput(); }
    QString err() { return m_process.readAllStandardError(); }
    QStringList leftovers() const
    {
        return QDir(m_temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

private:
    QTemporaryDir m_temporary;
    QProcess m_process;
    QJsonObject m_told;
};

bool noneIsAlive(const QList<qint64> &pids)
{
    return std::none_of(pids.begin(), pids.end(), isAlive);
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
    void demoOverABadNetwork();
    void demoThatFails();
    void twoBoxes();
    void badFault();
    void noProgram();
    void badFolder_data();
    void badFolder();
    void keepsTheFolder();
};

void TestBox::startsAndStops_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("the terminal closes") << SIGHUP;
}

void TestBox::startsAndStops()
{
    QFETCH(int, number);
    const QTemporaryDir folder;
    Box box({"--json", "--folder", folder.path()});
    const QJsonObject told = box.ready();
    QCOMPARE(told["folder"].toString(), folder.path());
    QVERIFY(told["mmsc"].toString().startsWith("http://127.0.0.1:"));
    QCOMPARE(told["proxySocket"].toString(), QString("/tmp/mmsproxy"));
    QCOMPARE(told["pushSocket"].toString(), folder.filePath("push"));
    QCOMPARE(told["pdus"].toString(), folder.filePath("pdus"));
    QCOMPARE(told["programs"][0]["name"].toString(), QString("wmsg-sim-mmsc"));
    QCOMPARE(told["programs"][1]["name"].toString(), QString("wmsg-mmsproxyd"));
    const QList<qint64> pids = box.pids();
    QCOMPARE(pids.size(), 2);
    QVERIFY(isAlive(pids[0]) && isAlive(pids[1]));
    QVERIFY(QFile::exists("/tmp/mmsproxy"));
    QCOMPARE(contentOf(told["programs"][0]["log"].toString()),
             "listening on " + told["mmsc"].toString().toUtf8() + '\n');

    box.signal(number);
    QCOMPARE(box.end(), 0);
    QVERIFY(noneIsAlive(pids));
    QVERIFY(!QFile::exists("/tmp/mmsproxy"));
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
    box.signal(SIGINT);
    QCOMPARE(box.end(), 0);
}

void TestBox::killed()
{
    Box box({"--json"});
    box.ready();
    const QList<qint64> pids = box.pids();
    QCOMPARE(pids.size(), 2);
    QVERIFY(isAlive(pids[0]) && isAlive(pids[1]));
    box.signal(SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(noneIsAlive(pids), 30000);
}

void TestBox::aProgramDies_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<QString>("name");

    QTest::newRow("the network") << 0 << "wmsg-sim-mmsc";
    QTest::newRow("the daemon") << 1 << "wmsg-mmsproxyd";
}

void TestBox::aProgramDies()
{
    QFETCH(int, which);
    QFETCH(QString, name);
    const QTemporaryDir folder;
    Box box({"--json", "--folder", folder.path()});
    box.ready();
    const QList<qint64> pids = box.pids();
    QCOMPARE(pids.size(), 2);
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
    QCOMPARE(box.leftovers(), QStringList());
    QVERIFY(!QFile::exists("/tmp/mmsproxy"));
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

void TestBox::badFault()
{
    const QTemporaryDir folder;
    Box box({"--folder", folder.path(), "--fault", "send 1 lost"});
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(),
             QString("wmsg: wmsg-sim-mmsc: --fault:1: \"lost\" cannot happen to this\n"));
}

void TestBox::noProgram()
{
    const QTemporaryDir folder;
    Box box({"--folder", folder.path()}, "/nowhere");
    QCOMPARE(box.end(), 1);
    QCOMPARE(box.err(),
             QString("wmsg: wmsg-sim-mmsc: there is no such program, neither beside wmsg nor in "
                     "PATH\n"));
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

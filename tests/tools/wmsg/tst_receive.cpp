// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/support/parts.h"
#include "tests/support/proxy_peer.h"
#include "tests/support/proxy_records.h"
#include "tests/tools/wmsg/program.h"

#include <sys/stat.h>

namespace {

WMMSMsg messageOf(const QString &subject)
{
    WMMSMsg message;
    message.setPDUType(MMS_PDU_RETRIEVE_CONF);
    message.setFrom(WMFMEntry(1, "+431"));
    message.setSubject(subject);
    message.setContentType(typeOf(kMixed));
    message.getMultiParts().setSubMmsMultipart(
        {partOf("text/plain", subject.toUtf8(), "<t>", "text.txt"),
         partOf("image/png", fromHex("89504E47"), "<p>", "../p.png")});
    return message;
}

/// Puts a mail file where the daemon hands messages out, and returns its path.
QString handOut(const Desk &desk, const QString &subject)
{
    static int number = 0;
    const QString path = desk.path(QString("handed-%1").arg(++number));
    if (messageOf(subject).saveAs(path, nullptr, nullptr) != MMS_SAVE_OK) {
        QTest::qFail("the message cannot be saved", __FILE__, __LINE__);
    }
    return path;
}

} // namespace

/// The program against a scripted daemon.
class TestReceive : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        appLogModuleStream = appLogDiscardStream();
        qputenv("UVO_EXTRA_SYS_DATA_PATH", "root"); // on the desk of each test
        qputenv("XDG_STATE_HOME", "/nonexistent");
    }
    void shows();
    void json();
    void applicationIds();
    void applicationIdRefused();
    void saves();
    void savesParts();
    void savesOnThePresentOnes();
    void whatCannotBeSavedStays_data();
    void whatCannotBeSavedStays();
    void stores();
    void storesAsJson();
    void whatCannotBeStoredStays();
    void noStore();
    void noFolder_data();
    void noFolder();
    void countedOnesOnly();
    void undecodable();
    void tellsWhatIsSetAside();
    void interrupt();
    void timeouts();
    void daemonGoesAway();
    void noDaemon();
    void wrongUsage_data();
    void wrongUsage();
};

void TestReceive::shows()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--count", "2"});
    proxy.expectNothing(); // who registers nothing is given the messages to nobody
    const QString path = handOut(desk, "Hut");
    proxy.sendBytes(record::retrievalCompleted(path));
    QTRY_VERIFY(QString(run->process.peek(10000)).contains("image/png"));
    QVERIFY(!QFile::exists(path));
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Lake\x1B[2J")));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QCOMPARE(ended.err, "");
    QVERIFY(ended.out.startsWith("message 1, "));
    QVERIFY(ended.out.contains("  From               +431 (phone number)\n"));
    QVERIFY(ended.out.contains("  Subject            Hut\n"));
    QVERIFY(ended.out.contains("  2 parts\n"));
    QVERIFY(ended.out.contains("\"Hut\""));
    QVERIFY(ended.out.contains("\nmessage 2, "));
    QVERIFY(ended.out.contains("  Subject            Lake\\x1B[2J\n"));
    QVERIFY(!ended.out.contains('\x1B'));
    proxy.expectEnd();
}

void TestReceive::json()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run =
        desk.begin({"receive", "--json", "--count", "2", "--save", "in", "--extract", "out"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut"))
                    + record::retrievalCompleted(handOut(desk, "Lake")));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    const QStringList lines = ended.out.split('\n');
    QCOMPARE(lines.size(), 3);
    const QJsonObject first = QJsonDocument::fromJson(lines[0].toUtf8()).object();
    const QJsonObject second = QJsonDocument::fromJson(lines[1].toUtf8()).object();
    QCOMPARE(first["number"].toInt(), 1);
    QCOMPARE(first["file"].toString(), "in/message-1.mms");
    QCOMPARE(first["headers"]["subject"].toString(), "Hut");
    QCOMPARE(first["parts"].toArray().size(), 2);
    QVERIFY(first["bytes"].toInt() > 20);
    QCOMPARE(second["number"].toInt(), 2);
    QCOMPARE(second["file"].toString(), "in/message-2.mms");
    QCOMPARE(second["headers"]["subject"].toString(), "Lake");
    QVERIFY(ended.err.contains("wrote out/message-2/p.png, 4 bytes\n"));
}

void TestReceive::applicationIds()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run =
        desk.begin({"receive", "--app-id", "my.app", "--app-id", "other", "--count", "1"});
    QCOMPARE(proxy.takeRegistered(0), "my.app");
    QCOMPARE(proxy.takeRegistered(1), "other");
    proxy.sendBytes(record::registrationCompleted(0, 0) + record::registrationCompleted(1, 0)
                    + record::retrievalCompleted(handOut(desk, "Hut")));
    QCOMPARE(run->end().exitCode, 0);
}

void TestReceive::applicationIdRefused()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--app-id", "my.app"});
    QCOMPARE(proxy.takeRegistered(0), "my.app");
    proxy.sendBytes(record::registrationCompleted(0, 15));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(),
             "wmsg: --app-id my.app: not accepted: the request cannot be carried out as it is "
             "(status 15)");
    QCOMPARE(ended.exitCode, 1);
}

void TestReceive::saves()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--save", "in", "--count", "1"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut")));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.out.endsWith("wrote in/message-1.mms\n"));
    const QJsonObject saved = desk.run({"decode", "--json", "in/message-1.mms"}).json();
    QCOMPARE(saved["kind"].toString(), "mailfile");
    QCOMPARE(saved["headers"]["subject"].toString(), "Hut");
    QCOMPARE(saved["parts"].toArray().at(1)["contentType"]["type"].toString(), "image/png");
    QCOMPARE(QDir(desk.path("in")).entryList(QDir::Files | QDir::Hidden),
             QStringList{"message-1.mms"});
}

void TestReceive::savesParts()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--extract", "out", "--count", "2"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut"))
                    + record::retrievalCompleted(handOut(desk, "Lake")));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QCOMPARE(desk.read("out/message-1/text.txt"), "Hut");
    QCOMPARE(toHex(desk.read("out/message-1/p.png")), "89 50 4E 47");
    QCOMPARE(desk.read("out/message-2/text.txt"), "Lake");
    QVERIFY(ended.out.contains("wrote out/message-1/p.png, 4 bytes\n"));
    QCOMPARE(QDir(desk.path("out")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 2);
}

void TestReceive::savesOnThePresentOnes()
{
    const Desk desk;
    QVERIFY(desk.folder().mkdir("in"));
    desk.write("in/message-1.mms", "mine");
    QVERIFY(QFile::link("/tmp/wmsg-nowhere", desk.path("in/message-2.mms")));
    QVERIFY(desk.folder().mkpath("in/message-1"));
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--save", "in", "--extract", "in", "--count", "1"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut")));
    QCOMPARE(run->end().exitCode, 0);
    QCOMPARE(desk.read("in/message-1.mms"), "mine");
    QVERIFY(!QFile::exists("/tmp/wmsg-nowhere"));
    QVERIFY(desk.read("in/message-3.mms").startsWith(fromHex("1210")));
    QCOMPARE(desk.read("in/message-2/text.txt"), "Hut");
}

void TestReceive::whatCannotBeSavedStays_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("line");
    QTest::newRow("message") << "--save"
                             << "wmsg: in/message-1.mms: cannot be made: Permission denied";
    QTest::newRow("parts") << "--extract"
                           << "wmsg: in/message-1: cannot be made: Permission denied";
}

// The daemon takes the end of the session without the removal of the file as a message that was not
// delivered.
void TestReceive::whatCannotBeSavedStays()
{
    QFETCH(QString, option);
    QFETCH(QString, line);
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", option, "in", "--app-id", "a"});
    proxy.takeRegistered(0); // the folder was looked at before
    QVERIFY(QFile::setPermissions(desk.path("in"), QFile::ReadOwner | QFile::ExeOwner));
    const QString path = handOut(desk, "Hut");
    proxy.sendBytes(record::registrationCompleted(0, 0) + record::retrievalCompleted(path));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(), line);
    QCOMPARE(ended.out, "");
    QCOMPARE(ended.exitCode, 1);
    QVERIFY(QFile::exists(path));
    proxy.expectEnd();
}

void TestReceive::stores()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--store", "--save", "in", "--count", "2"});
    const QString path = handOut(desk, "Hut");
    proxy.sendBytes(record::retrievalCompleted(path)
                    + record::retrievalCompleted(handOut(desk, "Lake")));
    const Run ended = run->end();
    QCOMPARE(ended.err, "");
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.out.contains("wrote in/message-1.mms\nstored as message 1 in inbox\n"));
    QVERIFY(ended.out.endsWith("wrote in/message-2.mms\nstored as message 2 in inbox\n"));
    QVERIFY(!QFile::exists(path));
    QCOMPARE(desk.run({"store", "list", "inbox"}).out.count('\n'), 2);
    const QJsonObject stored = desk.run({"store", "show", "--json", "1"}).json();
    QCOMPARE(stored["headers"]["subject"].toString(), "Hut");
    QCOMPARE(stored["headers"]["from"]["value"].toString(), "+431");
    QCOMPARE(stored["parts"].toArray().at(1)["contentType"]["type"].toString(), "image/png");
    QCOMPARE(stored["parts"].toArray().at(1)["size"].toInt(), 4);
}

void TestReceive::storesAsJson()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--store", "--folder", "77", "--json", "--count", "1"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut")));
    const Run ended = run->end();
    QCOMPARE(ended.err, "");
    QCOMPARE(ended.json()["id"].toInt(), 1);
    QCOMPARE(ended.json()["folder"].toString(), "77");
    QCOMPARE(ended.json()["headers"]["subject"].toString(), "Hut");
    QCOMPARE(desk.run({"store", "list", "77"}).out.count('\n'), 1);
}

void TestReceive::whatCannotBeStoredStays()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--store", "--app-id", "a"});
    proxy.takeRegistered(0); // the store was looked at before
    const QByteArray parts = desk.path("root/mms/engine/parts").toLocal8Bit();
    QCOMPARE(chmod(parts.constData(), 0555), 0);
    const QString path = handOut(desk, "Hut");
    proxy.sendBytes(record::registrationCompleted(0, 0) + record::retrievalCompleted(path));
    const Run ended = run->end();
    QVERIFY2(ended.errorLine().startsWith("wmsg: not stored: "), qPrintable(ended.err));
    QVERIFY2(ended.err.contains("Permission denied"), qPrintable(ended.err));
    QCOMPARE(ended.out, "");
    QCOMPARE(ended.exitCode, 1);
    QVERIFY(QFile::exists(path));
    proxy.expectEnd();
    QCOMPARE(chmod(parts.constData(), 0755), 0);
    QCOMPARE(desk.run({"store", "list"}).out, "no messages\n");
}

void TestReceive::noStore()
{
    const Desk desk;
    desk.write("root", "a file in its way");
    const Run run = desk.run({"receive", "--store"});
    QCOMPARE(run.errorLine(),
             "wmsg: --store: the store root/mms/engine/ cannot be made: Not a directory");
    QCOMPARE(run.exitCode, 1);
}

void TestReceive::noFolder_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("line");
    for (const char *option : {"--save", "--extract"}) {
        QTest::addRow("%s in a file", option)
            << option << "file"
            << "wmsg: file: cannot be written to: Not a directory";
        QTest::addRow("%s nowhere", option)
            << option << "no/where"
            << "wmsg: no/where: cannot be made: No such file or directory";
        QTest::addRow("%s in a closed folder", option)
            << option << "closed"
            << "wmsg: closed: cannot be written to: Permission denied";
    }
}

void TestReceive::noFolder()
{
    QFETCH(QString, option);
    QFETCH(QString, directory);
    QFETCH(QString, line);
    const Desk desk;
    desk.write("file", "x");
    QVERIFY(desk.folder().mkdir("closed"));
    QVERIFY(QFile::setPermissions(desk.path("closed"), QFile::ReadOwner | QFile::ExeOwner));
    const Run run = desk.run({"receive", option, directory});
    QCOMPARE(run.errorLine(), line);
    QCOMPARE(run.exitCode, 1);
}

void TestReceive::countedOnesOnly()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--count", "2"});
    const QString third = handOut(desk, "Third");
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "First"))
                    + record::retrievalCompleted(handOut(desk, "Second"))
                    + record::retrievalCompleted(third));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.out.contains("Second"));
    QVERIFY(!ended.out.contains("Third"));
    QVERIFY(QFile::exists(third));
}

void TestReceive::undecodable()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--count", "1"});
    desk.write("bad", "12 10, and nothing of the kind");
    proxy.sendBytes(record::retrievalCompleted(desk.path("bad"))
                    + record::retrievalCompleted(handOut(desk, "Hut")));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.out.startsWith("message 1, "));
    QVERIFY(ended.out.contains("Hut"));
}

// The daemon writes the reason as a file of its own, as a whole.
void TestReceive::tellsWhatIsSetAside()
{
    const Desk desk;
    ProxyPeer proxy;
    QVERIFY(desk.folder().mkpath("spool/kept"));
    desk.write("spool/kept/in-00000000000000000001.txt", "of before\n");
    desk.write("spool/kept/in-00000000000000000001.pdu", "x");
    const auto program = desk.begin({"receive", "--spool", "spool"});
    QProcess &process = program->process;
    process.setReadChannel(QProcess::StandardError);
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(QString(process.readLine()), "wmsg: a message was set aside before: see spool/kept\n");
    const auto setAside = [&](const char *name, const char *reason) {
        desk.write("new", reason);
        QVERIFY(QFile::rename(desk.path("new"), desk.path(QString("spool/kept/") + name)));
    };
    setAside("in-00000000000000000002.txt", "no\x1B message (at offset 3)\n");
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(QString(process.readLine()),
             "wmsg: a message that came was set aside: no\\x1B message (at offset 3) "
             "(spool/kept/in-00000000000000000002.txt)\n");
    setAside("in-00000000000000000002.pdu", "x");
    setAside("out-00000000000000000003.txt", "");
    QTRY_VERIFY(process.canReadLine());
    QCOMPARE(QString(process.readLine()),
             "wmsg: a message to be sent was set aside: "
             " (spool/kept/out-00000000000000000003.txt)\n");
    program->signal(SIGINT);
    QCOMPARE(program->end().exitCode, 0);
}

void TestReceive::interrupt()
{
    const Desk desk;
    ProxyPeer proxy;
    auto run = desk.begin({"receive", "--app-id", "a"});
    proxy.takeRegistered(0);
    run->signal(SIGINT);
    Run ended = run->end();
    QCOMPARE(ended.err, "");
    QCOMPARE(ended.exitCode, 0);

    proxy.close();
    run = desk.begin({"receive", "--app-id", "a", "--count", "2"});
    proxy.takeRegistered(0);
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut")));
    QTRY_VERIFY(QString(run->process.peek(10000)).contains("Hut"));
    run->signal(SIGTERM);
    ended = run->end();
    QCOMPARE(ended.errorLine(), "wmsg: 1 of 2 messages came");
    QCOMPARE(ended.exitCode, 1);
}

void TestReceive::timeouts()
{
    const Desk desk;
    ProxyPeer proxy;
    QCOMPARE(desk.run({"receive", "--timeout", "1"}).exitCode, 0);
    const Run run = desk.run({"receive", "--timeout", "1", "--count", "1"});
    QCOMPARE(run.errorLine(), "wmsg: 0 of 1 message came");
    QCOMPARE(run.exitCode, 1);
}

void TestReceive::daemonGoesAway()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin({"receive", "--count", "2"});
    proxy.sendBytes(record::retrievalCompleted(handOut(desk, "Hut")));
    proxy.close();
    const Run ended = run->end();
    QVERIFY(ended.out.contains("Hut"));
    QCOMPARE(ended.errorLine(), "wmsg: the proxy daemon has ended the connection");
    QCOMPARE(ended.exitCode, 1);
}

void TestReceive::noDaemon()
{
    const Run run = Desk().run({"receive"});
    QCOMPARE(run.errorLine(),
             "wmsg: no proxy daemon listens at /tmp/mmsproxy (is wmsg-mmsproxyd running?)");
    QCOMPARE(run.exitCode, 1);
}

void TestReceive::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no messages") << QStringList{"receive", "--count", "0"};
    QTest::newRow("no id") << QStringList{"receive", "--app-id", ""};
    QTest::newRow("a long id") << QStringList{"receive", "--app-id", QString(257, 'a')};
    QTest::newRow("folder and no store") << QStringList{"receive", "--folder", "inbox"};
    QTest::newRow("unknown folder") << QStringList{"receive", "--store", "--folder", "attic"};
    QTest::newRow("no time") << QStringList{"receive", "--timeout", "soon"};
}

void TestReceive::wrongUsage()
{
    QFETCH(QStringList, arguments);
    const Run run = Desk().run(arguments);
    QVERIFY2(run.errorLine().startsWith("wmsg: "), qPrintable(run.err));
    QCOMPARE(run.out, "");
    QCOMPARE(run.exitCode, 2);
}

QTEST_GUILESS_MAIN(TestReceive)
#include "tst_receive.moc"

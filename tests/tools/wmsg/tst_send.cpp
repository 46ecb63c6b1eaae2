// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "tests/support/proxy_peer.h"
#include "tests/support/proxy_records.h"
#include "tests/tools/wmsg/program.h"

#include <cstdlib>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace {

QStringList sending(const QStringList &arguments = {})
{
    return QStringList{"send", "--to", "+431", "--subject", "Hut", "--text", "Hi"} + arguments;
}

/// The daemon's part up to the moment where it has the message: the registration is request 0, the
/// message request 1.
QString takeMessage(ProxyPeer &proxy)
{
    const QString name = proxy.takeRegistered(0);
    if (!name.startsWith("wmsg.send.")) {
        QTest::qFail("no name of its own", __FILE__, __LINE__);
    }
    proxy.sendBytes(record::registrationCompleted(0, 0));
    return proxy.takeSent(1);
}

WMMSMsg read(const QString &path)
{
    WMMSMsg message;
    if (message.construct(path, true) != MMS_DECODE_OK) {
        QTest::qFail("the message cannot be read", __FILE__, __LINE__);
    }
    QFile::remove(path);
    return message;
}

} // namespace

/// The program against a scripted daemon.
class TestSend : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        appLogModuleStream = appLogDiscardStream();
        qputenv("UVO_EXTRA_SYS_DATA_PATH", "root"); // on the desk of each test
    }
    void sends();
    void sendsAFile_data();
    void sendsAFile();
    void badFile_data();
    void badFile();
    void wrongUsage_data();
    void wrongUsage();
    void registersBeforeAnythingElse();
    void outcomes_data();
    void outcomes();
    void retries();
    void othersAreNotHeard();
    void noWait();
    void noWaitAndRefused();
    void json();
    void interrupt_data();
    void interrupt();
    void interruptTooLate();
    void interruptTwice();
    void interruptBeforeTheMessage();
    void timeouts();
    void daemonGoesAway();
    void noDaemon();
    void progressBar();
    void stores_data();
    void stores();
    void storesWhatIsSentAlone();
    void storesNothingUnlessAsked();
    void sentButNotStored();
    void handsOverNothingThatCannotBeStored();
    void handsOverNoMessageWithTooManyParts();
};

void TestSend::sends()
{
    const Desk desk;
    ProxyPeer proxy;
    desk.write("a.txt", "attached");
    const auto run = desk.begin(sending({"--attach", "a.txt", "--priority", "high", "--app-id",
                                         "my.app", "--delivery-report", "--date", "1714564800"}));
    const WMMSMsg message = read(takeMessage(proxy));
    QCOMPARE(message.getSubject(), "Hut");
    QCOMPARE(message.header().to.value(0).getEntryVal(), "+431");
    QCOMPARE(message.getPriority(), 130);
    QCOMPARE(message.getAppID(), "my.app");
    QVERIFY(message.getDeliveryReportNecessity());
    QCOMPARE(message.getDate().toSecsSinceEpoch(), 1714564800);
    const auto parts = *message.getMultiParts().subParts();
    QCOMPARE(parts.size(), 3);
    QCOMPARE(parts[0].getContentType().getMimeType(), "application/smil");
    QCOMPARE(parts[1].getData().toByteArray(), "Hi");
    QCOMPARE(parts[2].getData().toByteArray(), "attached");
    proxy.sendBytes(record::progress(1, 10, 100));
    proxy.sendBytes(record::requestCompleted(1, 0));
    const Run ended = run->end();
    QCOMPARE(ended.err, "");
    QVERIFY2(QRegularExpression("^sent: \\d+ bytes\n$").match(ended.out).hasMatch(),
             qPrintable(ended.out));
    QCOMPARE(ended.exitCode, 0);
    proxy.expectEnd();
}

void TestSend::sendsAFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("mail file") << "stored";
    QTest::newRow("send request") << "send-req";
    QTest::newRow("retrieve confirmation") << "retrieve-conf";
}

void TestSend::sendsAFile()
{
    QFETCH(QString, kind);
    const Desk desk;
    QCOMPARE(desk.run({"compose", "--to", "12", "--subject", "Kept", "--text", "old", "--pdu", kind,
                       "-o", "m"})
                 .exitCode,
             0);
    ProxyPeer proxy;
    const auto run = desk.begin({"send", "--file", "m"});
    const WMMSMsg message = read(takeMessage(proxy));
    QCOMPARE(message.getSubject(), "Kept");
    QCOMPARE(message.getMultiParts().subParts()->value(1).getData().toByteArray(), "old");
    proxy.sendBytes(record::requestCompleted(1, 0));
    QCOMPARE(run->end().exitCode, 0);
    QVERIFY(QFile::exists(desk.path("m")));
}

void TestSend::badFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("line");
    QTest::newRow("absent") << "nowhere"
                            << "wmsg: nowhere: cannot be opened: No such file or directory";
    QTest::newRow("directory") << "."
                               << "wmsg: .: is a directory";
    QTest::newRow("broken")
        << "cut-in-picture"
        << "wmsg: cut-in-picture: result 111 (the multipart body cannot be "
           "read: the data say 16 bytes and 3 remain) at offset 8, field part 1";
    QTest::newRow("no recipient") << "draft"
                                  << "wmsg: draft: has no recipient";
    QTest::newRow("no content") << "empty"
                                << "wmsg: empty: has no content";
    QTest::newRow("recipient malformed")
        << "--to"
        << "wmsg: --to: \"somebody\" is neither a phone number nor an e-mail address";
}

void TestSend::badFile()
{
    QFETCH(QString, name);
    QFETCH(QString, line);
    const Desk desk;
    desk.bring("pdu/cut-in-picture");
    desk.write("empty", fromHex("8C 80 97 31 32 2F 54 59 50 45 3D 50 4C 4D 4E 00"));
    QCOMPARE(desk.run({"compose", "--text", "Hi", "--pdu", "stored", "-o", "draft"}).exitCode, 0);
    const Run run = name == "--to" ? desk.run({"send", "--to", "somebody", "--text", "Hi"})
                                   : desk.run({"send", "--file", name});
    QCOMPARE(run.errorLine(), line);
    QCOMPARE(run.out, "");
    QCOMPARE(run.exitCode, 1);
}

void TestSend::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("line");
    QTest::newRow("nothing to send")
        << QStringList{"send", "--to", "12"}
        << "wmsg: send: there is nothing to send; give --text, --text-file, --attach or --file "
           "(see wmsg send --help)";
    QTest::newRow("nobody") << QStringList{"send", "--text", "Hi"}
                            << "wmsg: send: a message needs a recipient; give --to, --cc or --bcc "
                               "(see wmsg send --help)";
    QTest::newRow("file and text")
        << sending({"--file", "m"})
        << "wmsg: send: --to has no place beside --file (see wmsg send --help)";
    QTest::newRow("folder and no store")
        << sending({"--folder", "sent"}) << "wmsg: --folder requires --store (see wmsg --help)";
    QTest::newRow("unknown folder")
        << sending({"--store", "--folder", "attic"})
        << "wmsg: --folder: 'attic' is no folder: inbox, outbox, sent, drafts, templates, or a "
           "number up to 65534 (see wmsg --help)";
    QTest::newRow("timeout") << sending({"--timeout", "8d"})
                             << "wmsg: --timeout: \"8d\" is no duration from a second to a week "
                                "(90, 15m, 12h) (see wmsg --help)";
}

void TestSend::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, line);
    const Run run = Desk().run(arguments);
    QCOMPARE(run.errorLine(), line);
    QCOMPARE(run.exitCode, 2);
}

void TestSend::registersBeforeAnythingElse()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    QVERIFY(proxy.takeRegistered(0).startsWith("wmsg.send."));
    proxy.expectNothing();
    proxy.sendBytes(record::registrationCompleted(0, 15));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(),
             "wmsg: not sent: the proxy daemon gives no name to this session: not accepted: the "
             "request cannot be carried out as it is (status 15)");
    QCOMPARE(ended.exitCode, 1);
    proxy.expectEnd();
}

void TestSend::outcomes_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line");
    QTest::newRow("service denied")
        << 130 << "wmsg: not sent: refused: service denied (status 130)";
    QTest::newRow("for now") << 195
                             << "wmsg: not sent: failed for now: network problem (status 195)";
    QTest::newRow("for good") << 19 << "wmsg: not sent: failed for good (status 19)";
    QTest::newRow("not taken") << 15
                               << "wmsg: not sent: the proxy daemon does not take the message; it "
                                  "may be too large (see wmsg settings) (status 15)";
    QTest::newRow("no name")
        << 4711 << "wmsg: not sent: failed, for a reason that is not known (status 4711)";
}

void TestSend::outcomes()
{
    QFETCH(int, status);
    QFETCH(QString, line);
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestCompleted(1, status));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(), line);
    QCOMPARE(ended.out, "");
    QCOMPARE(ended.exitCode, 1);
}

void TestSend::retries()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestStatus(1, 256));
    QTRY_COMPARE(QString(run->process.peek(1000)), "not done yet, it will be tried again\n");
    proxy.sendBytes(record::requestCompleted(1, 0));
    const Run ended = run->end();
    QVERIFY(ended.out.startsWith("not done yet, it will be tried again\nsent: "));
    QCOMPARE(ended.exitCode, 0);
}

void TestSend::othersAreNotHeard()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.sendBytes(record::registrationCompleted(0, 0) + record::requestCompleted(7, 19)
                    + record::progress(7, 1, 2) + record::requestStatus(7, 256)
                    + record::requestCompleted(1, 0));
    const Run ended = run->end();
    QCOMPARE(ended.exitCode, 0);
    QVERIFY(ended.out.startsWith("sent: "));
    QCOMPARE(ended.err, "");
}

void TestSend::noWait()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending({"--no-wait"}));
    read(takeMessage(proxy));
    QVERIFY(proxy.takeRegistered(2).startsWith("wmsg.send."));
    proxy.sendBytes(record::registrationCompleted(2, 0));
    const Run ended = run->end();
    QVERIFY(ended.out.startsWith("handed over: "));
    QCOMPARE(ended.exitCode, 0);
}

void TestSend::noWaitAndRefused()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending({"--no-wait"}));
    read(takeMessage(proxy));
    proxy.takeRegistered(2);
    proxy.sendBytes(record::requestCompleted(1, 15) + record::registrationCompleted(2, 0));
    const Run ended = run->end();
    QVERIFY(ended.errorLine().startsWith("wmsg: not sent: the proxy daemon does not take"));
    QCOMPARE(ended.out, "");
    QCOMPARE(ended.exitCode, 1);
}

void TestSend::json()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending({"--json"}));
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestStatus(1, 256) + record::progress(1, 50, 100)
                    + record::requestCompleted(1, 227));
    const Run ended = run->end();
    QJsonObject object = ended.json();
    QVERIFY(object.take("bytes").toInt() > 100);
    const QJsonObject expected{{"outcome", "not-sent"},
                               {"retries", 1},
                               {"status", 227},
                               {"statusKey", "error-permanent-sending-address-unresolved"},
                               {"words", "failed for good: an address is not known"}};
    QCOMPARE(QJsonDocument(object).toJson(), QJsonDocument(expected).toJson());
    QCOMPARE(ended.exitCode, 1);
}

void TestSend::interrupt_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("terminated") << SIGTERM;
}

void TestSend::interrupt()
{
    QFETCH(int, signal);
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    run->signal(signal);
    proxy.expect("06000000 00000000  02000000 01000000");
    QCOMPARE(run->process.state(), QProcess::Running);
    proxy.sendBytes(record::requestCompleted(1, 19) + record::requestCompleted(2, 0));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(), "wmsg: aborted, the message is not sent");
    QCOMPARE(ended.out, "aborting; interrupt again to wait no longer\n");
    QCOMPARE(ended.exitCode, 1);
}

void TestSend::interruptTooLate()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    run->signal(SIGINT);
    proxy.expect("06000000 00000000  02000000 01000000");
    proxy.sendBytes(record::requestCompleted(1, 0) + record::requestCompleted(2, 15));
    const Run ended = run->end();
    QVERIFY(ended.out.contains("\nsent: "));
    QCOMPARE(ended.exitCode, 0);
}

void TestSend::interruptTwice()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    run->signal(SIGINT);
    proxy.expect("06000000 00000000  02000000 01000000");
    run->signal(SIGINT);
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(),
             "wmsg: the end of the request was not waited for; what becomes of the message is not "
             "known");
    QCOMPARE(ended.exitCode, 1);
}

void TestSend::interruptBeforeTheMessage()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    proxy.takeRegistered(0);
    run->signal(SIGINT);
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(), "wmsg: not sent: interrupted before the message was handed over");
    QCOMPARE(ended.exitCode, 1);
    proxy.expectEnd();
}

void TestSend::timeouts()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto early = desk.begin(sending({"--timeout", "1"}));
    QCOMPARE(early->end().errorLine(), "wmsg: not sent: the proxy daemon did not answer in time");
    proxy.takeRegistered(0);
    proxy.expectEnd();

    proxy.close();
    const auto late = desk.begin(sending({"--timeout", "4"}));
    read(takeMessage(proxy));
    const Run ended = late->end();
    QCOMPARE(ended.errorLine(),
             "wmsg: no outcome in time; the message stays with the proxy daemon");
    QCOMPARE(ended.exitCode, 1);
    proxy.expectEnd(); // and nothing was aborted
}

void TestSend::daemonGoesAway()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto early = desk.begin(sending());
    proxy.takeRegistered(0);
    proxy.close();
    Run ended = early->end();
    QCOMPARE(ended.errorLine(), "wmsg: not sent: the proxy daemon has ended the connection");
    QCOMPARE(ended.exitCode, 1);

    const auto late = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.close();
    ended = late->end();
    QCOMPARE(ended.errorLine(),
             "wmsg: the proxy daemon has ended the connection; what becomes of the message is not "
             "known");
    QCOMPARE(ended.exitCode, 1);

    // What it said before it went counts.
    const auto last = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestCompleted(1, 0));
    proxy.close();
    QCOMPARE(last->end().exitCode, 0);
}

void TestSend::noDaemon()
{
    const Desk desk;
    const QString expected =
        "wmsg: not sent: no proxy daemon listens at /tmp/mmsproxy (is wmsg-mmsproxyd running?)";
    Run run = desk.run(sending());
    QCOMPARE(run.errorLine(), expected);
    QCOMPARE(run.exitCode, 1);
    ProxyPeer proxy;
    proxy.server().stop(); // leaves the file
    run = desk.run(sending());
    QCOMPARE(run.errorLine(), expected);
    QCOMPARE(run.exitCode, 1);
}

void TestSend::progressBar()
{
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
    const QByteArray name = ::ptsname(terminal);
    const int side = ::open(name.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(side >= 0);
    const winsize size = {24, 60, 0, 0};
    QCOMPARE(::ioctl(side, TIOCSWINSZ, &size), 0);

    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending(), [side] { ::dup2(side, STDERR_FILENO); });
    read(takeMessage(proxy));
    const auto shown = [terminal] {
        char bytes[4096];
        pollfd ready = {terminal, POLLIN, 0};
        const bool isReady = ::poll(&ready, 1, 10000) == 1;
        const ssize_t count = isReady ? ::read(terminal, bytes, sizeof bytes) : 0;
        return QByteArray(bytes, qMax<ssize_t>(count, 0));
    };
    proxy.sendBytes(record::progress(1, 51200, 102400));
    QCOMPARE(shown(), "\r\x1B[K[==============              ]  50%   50.0 KiB of 100.0 KiB");
    proxy.sendBytes(record::progress(1, 102400, 102400));
    QCOMPARE(shown(), "\r\x1B[K[============================] 100%  100.0 KiB of 100.0 KiB");
    proxy.sendBytes(record::requestCompleted(1, 0));
    QCOMPARE(shown(), "\r\x1B[K");
    QCOMPARE(run->end().exitCode, 0);
    ::close(side);
    ::close(terminal);
}

void TestSend::stores_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("done");
    QTest::addColumn<QString>("folder");
    QTest::newRow("sent") << QStringList() << "sent"
                          << "sent";
    QTest::newRow("handed over") << QStringList{"--no-wait"} << "handed over"
                                 << "outbox";
    QTest::newRow("sent, folder") << QStringList{"--folder", "77"} << "sent"
                                  << "77";
    QTest::newRow("handed over, folder")
        << QStringList{"--no-wait", "--folder", "sent"} << "handed over"
        << "sent";
}

void TestSend::stores()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, done);
    QFETCH(QString, folder);
    const Desk desk;
    ProxyPeer proxy;
    const auto send = [&](const QStringList &more) {
        const auto run = desk.begin(sending(QStringList{"--store"} + arguments + more));
        read(takeMessage(proxy));
        if (done == "sent") {
            proxy.sendBytes(record::requestCompleted(1, 0));
        } else {
            proxy.takeRegistered(2);
            proxy.sendBytes(record::registrationCompleted(2, 0));
        }
        Run ended = run->end();
        proxy.close();
        return ended;
    };
    const Run words = send({"--date", "1714564800"});
    QCOMPARE(words.err, "");
    QVERIFY2(words.out.startsWith(done + ": "), qPrintable(words.out));
    QVERIFY2(words.out.endsWith(" bytes\nstored as message 1 in " + folder + '\n'),
             qPrintable(words.out));
    QCOMPARE(words.exitCode, 0);
    const Run json = send({"--json"});
    QCOMPARE(json.json()["id"].toInt(), 2);
    QCOMPARE(json.json()["folder"].toString(), folder);
    QCOMPARE(json.exitCode, 0);

    QCOMPARE(desk.run({"store", "list", folder}).out.count('\n'), 2);
    const QJsonObject stored = desk.run({"store", "show", "--json", "1"}).json();
    QCOMPARE(stored["headers"]["subject"].toString(), "Hut");
    QCOMPARE(stored["headers"]["date"].toInteger(), 1714564800);
    QCOMPARE(stored["headers"]["to"].toArray().size(), 1);
    QCOMPARE(stored["parts"].toArray().at(1)["size"].toInt(), 2);
}

void TestSend::storesWhatIsSentAlone()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending({"--store", "--json"}));
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestCompleted(1, 130));
    const Run ended = run->end();
    QCOMPARE(ended.errorLine(), "wmsg: not sent: refused: service denied (status 130)");
    QVERIFY(!ended.json().contains("id"));
    QCOMPARE(ended.exitCode, 1);
    QCOMPARE(desk.run({"store", "list"}).out, "no messages\n");
}

void TestSend::storesNothingUnlessAsked()
{
    const Desk desk;
    ProxyPeer proxy;
    const auto run = desk.begin(sending());
    read(takeMessage(proxy));
    proxy.sendBytes(record::requestCompleted(1, 0));
    QCOMPARE(run->end().exitCode, 0);
    QVERIFY(!QFile::exists(desk.path("root/mms/engine")));
}

void TestSend::sentButNotStored()
{
    const Desk desk;
    ProxyPeer proxy;
    for (const bool isJson : {false, true}) {
        const auto run = desk.begin(sending({"--store"}) + QStringList(isJson ? 1 : 0, "--json"));
        read(takeMessage(proxy)); // the store was looked at before
        const QByteArray parts = desk.path("root/mms/engine/parts").toLocal8Bit();
        QCOMPARE(chmod(parts.constData(), 0555), 0);
        proxy.sendBytes(record::requestCompleted(1, 0));
        const Run ended = run->end();
        QVERIFY2(ended.errorLine().startsWith("wmsg: sent, but not stored: "),
                 qPrintable(ended.err));
        QVERIFY2(ended.err.contains("Permission denied"), qPrintable(ended.err));
        QCOMPARE(isJson ? ended.json()["outcome"].toString() : ended.out.section(':', 0, 0),
                 "sent");
        QVERIFY(!ended.out.contains("stored as") && !ended.json().contains("id"));
        QCOMPARE(ended.exitCode, 1);
        QCOMPARE(chmod(parts.constData(), 0755), 0);
        QCOMPARE(desk.run({"store", "list"}).out, "no messages\n");
        proxy.close();
    }
}

// There is no daemon here: who tried to send would be told so.
void TestSend::handsOverNothingThatCannotBeStored()
{
    const Desk desk;
    desk.write("root", "a file in its way");
    const Run run = desk.run(sending({"--store"}));
    QCOMPARE(run.errorLine(),
             "wmsg: not sent: the store root/mms/engine/ cannot be made: Not a directory");
    QCOMPARE(run.exitCode, 1);
}

void TestSend::handsOverNoMessageWithTooManyParts()
{
    const Desk desk;
    QByteArray pdu = fromHex("8C 80 97 31 32 2F 54 59 50 45 3D 50 4C 4D 4E 00 8D 92 84 A3");
    pdu += char(41) + fromHex("01 00 9D").repeated(41);
    desk.write("many", pdu);
    const Run run = desk.run({"send", "--store", "--file", "many"});
    QCOMPARE(run.errorLine(), "wmsg: not sent: has 41 parts, and the store keeps 40");
    QCOMPARE(run.exitCode, 1);
}

QTEST_GUILESS_MAIN(TestSend)
#include "tst_send.moc"

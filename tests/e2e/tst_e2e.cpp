// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/e2e/world.h"

namespace {

const QString kNumber = "+15550122";

QString sending(const QString &message)
{
    return "send " + kNumber + ' ' + message;
}

/// An application that sends, and is never given a message: it has a name of its own.
class Sender : public Application {
public:
    Sender()
    {
        const int registration = request("register e2e.sender");
        waitFor([&] { return statuses(registration) == "0"; }, "the registration");
    }
};

/// An application that has registered a name, and is given what is for that one.
class Registered : public Application {
public:
    explicit Registered(const QString &name)
    {
        const int registration = request("register " + name);
        waitFor([&] { return statuses(registration) == "0"; }, "the registration");
    }
};

} // namespace

/// Applications, the proxy daemon and an MMSC, all in processes of their own: what one application
/// sends is what another receives, once, whatever happens between them.
class TestE2e : public QObject {
    Q_OBJECT

private slots:
    void pictureMessage();
    void manyMessages();
    void commandLine();
    void applicationIds();
    void waitsForItsApplication();
    void pauseAndResume();
    void abort();
    void abortWhileWaiting();
    void daemonKilledWhileSending();
    void daemonKilledBeforeTheAnswer();
    void daemonKilledWithAMessageWaiting();
    void daemonKilledWhileRetrieving();
    void sendingFails_data();
    void sendingFails();
    void retrievalFails_data();
    void retrievalFails();
};

void TestE2e::pictureMessage()
{
    World world;
    Sender ann;
    Application ben;
    const QString photo = world.photo(200000);
    const int request = ann.request(sending(world.compose("Sunset", photo)));
    ann.waitFor([&] { return ann.statuses(request) == "0"; }, "the outcome");
    ben.waitFor([&] { return ben.messages().size() == 1; }, "the message");
    const QStringList message = ben.messages().value(0).split(' ');
    QCOMPARE(message.size(), 5); // its subject, the presentation, the text and the picture
    QCOMPARE(message[1], "Sunset");
    QVERIFY(message.contains(World::hashOf(photo)));
    QVERIFY(ann.messages().isEmpty());
    QVERIFY(ann.total(request) > 200000);
    QCOMPARE(ann.progress(request), ann.total(request));
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-notifyresp-ind"), 1, 60000);
    QCOMPARE(world.pdus("in-send-req"), 1);
}

void TestE2e::manyMessages()
{
    World world;
    Sender ann;
    Application ben;
    const QString photo = world.photo(5000);
    QFile one(world.compose("Number-00", photo));
    QVERIFY(one.open(QIODevice::ReadOnly));
    const QByteArray letter = one.readAll();
    QStringList expected;
    for (int n = 0; n < 20; ++n) {
        const QString subject = QString("Number-%1").arg(n, 2, 10, QChar('0'));
        expected += subject;
        QFile file(world.path(subject + ".mail"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(letter).replace("Number-00", subject.toLatin1()));
        file.close();
        ann.request(sending(file.fileName()));
    }
    ben.waitFor([&] { return ben.messages().size() >= 20; }, "all messages");
    QStringList heard;
    for (const QString &message : ben.messages()) {
        heard += message.section(' ', 1, 1);
        QVERIFY(message.contains(World::hashOf(photo)));
    }
    heard.sort();
    expected.sort();
    QCOMPARE(heard, expected);
}

void TestE2e::commandLine()
{
    World world;
    const QString photo = world.photo(40000);
    QProcess receiving;
    receiving.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    receiving.start(
        WMSG_PROGRAM,
        {"receive", "--count", "1", "--save", world.path("in"), "--extract", world.path("out")});
    QProcess sent;
    sent.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    sent.start(WMSG_PROGRAM,
               {"send", "--to", kNumber, "--subject", "Hut", "--text", "Hi", "--attach", photo});
    QVERIFY(sent.waitForFinished(60000));
    QCOMPARE(sent.exitCode(), 0);
    QVERIFY(sent.readAllStandardOutput().startsWith("sent: "));
    QVERIFY(receiving.waitForFinished(60000));
    QCOMPARE(receiving.exitCode(), 0);
    const QByteArray out = receiving.readAllStandardOutput();
    QVERIFY2(out.contains("  Subject            Hut\n"), out.constData());
    QCOMPARE(World::hashOf(world.path("out/message-1/photo-40000.jpg")), World::hashOf(photo));
    QVERIFY(QFile::exists(world.path("in/message-1.mms")));

    QProcess settings;
    settings.start(WMSG_PROGRAM, {"settings"});
    QVERIFY(settings.waitForFinished(60000));
    QVERIFY(settings.readAllStandardOutput().contains("server           http://127.0.0.1:"));
}

void TestE2e::applicationIds()
{
    World world;
    Sender ann;
    Application nameless;
    Registered chess("chess");
    Registered chess2("chess");
    Registered radio("radio");
    const QString photo = world.photo(1000);
    ann.request(sending(world.compose("Move", photo, {"--app-id", "chess"})));
    ann.request(sending(world.compose("Song", photo, {"--app-id", "radio"})));
    ann.request(sending(world.compose("Letter", photo)));
    const auto has = [](Application &who, const QString &subject) {
        who.waitFor([&] { return !who.messages().isEmpty(); }, subject);
        QCOMPARE(who.messages().size(), 1);
        QCOMPARE(who.messages().value(0).section(' ', 1, 1), subject);
    };
    has(chess, "Move");
    has(chess2, "Move");
    has(radio, "Song");
    has(nameless, "Letter");
    // Who gives its name up is given no more.
    const int request = radio.request("deregister radio");
    radio.waitFor([&] { return radio.statuses(request) == "0"; }, "the end of the registration");
    Registered radio2("radio");
    ann.request(sending(world.compose("Tune", photo, {"--app-id", "radio"})));
    has(radio2, "Tune");
    has(radio, "Song");
    has(nameless, "Letter");
    QVERIFY(ann.messages().isEmpty());
}

void TestE2e::waitsForItsApplication()
{
    World world;
    Sender ann;
    Application nameless;
    const QString photo = world.photo(3000);
    const int request = ann.request(sending(world.compose("Later", photo, {"--app-id", "late"})));
    ann.waitFor([&] { return ann.statuses(request) == "0"; }, "the outcome");
    // The network need not wait for the application.
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-notifyresp-ind"), 1, 60000);
    QVERIFY(nameless.messages().isEmpty());
    Registered late("late");
    late.waitFor([&] { return late.messages().size() == 1; }, "the message");
    QVERIFY(late.messages().value(0).contains(World::hashOf(photo)));
    QVERIFY(nameless.messages().isEmpty());
}

void TestE2e::pauseAndResume()
{
    World world({"send 1 up-rate=60000"});
    Sender ann;
    Application ben;
    const int request = ann.request(sending(world.compose("Slow", world.photo(250000))));
    ann.waitFor([&] { return ann.progress(request) > 0; }, "progress");
    ann.say(QString("pause %1").arg(request));
    const int pause = request + 1;
    ann.waitFor([&] { return ann.statuses(pause) == "0"; }, "the pause");
    const int reached = ann.progress(request);
    QVERIFY(reached < ann.total(request));
    QTest::qWait(1000); // at its pace it would be far from here
    QCOMPARE(ann.progress(request), reached);
    QCOMPARE(ann.statuses(request), "");
    ann.say(QString("resume %1").arg(request));
    ann.waitFor([&] { return ann.statuses(request) == "0"; }, "the outcome");
    QCOMPARE(ann.statuses(pause + 1), "0");
    ben.waitFor([&] { return ben.messages().size() == 1; }, "the message");
    QVERIFY(ben.messages().value(0).contains(World::hashOf(world.photo(250000))));
    QCOMPARE(world.pdus("in-send-req"), 1);
}

void TestE2e::abort()
{
    World world({"send 1 up-rate=20000"});
    Sender ann;
    Application ben;
    const int request = ann.request(sending(world.compose("Never", world.photo(250000))));
    ann.waitFor([&] { return ann.progress(request) > 0; }, "progress");
    ann.say(QString("abort %1").arg(request));
    ann.waitFor([&] { return ann.statuses(request + 1) == "0"; }, "the abort");
    QCOMPARE(ann.statuses(request), "19");
    // Again it is too late.
    ann.say(QString("abort %1").arg(request));
    ann.waitFor([&] { return ann.statuses(request + 2) == "15"; }, "the second abort");
    ann.request(sending(world.compose("Next", world.photo(1000))));
    ben.waitFor([&] { return !ben.messages().isEmpty(); }, "the next message");
    QCOMPARE(ben.messages().size(), 1);
    QVERIFY(ben.messages().value(0).startsWith("message Next "));
    QCOMPARE(ann.statuses(request), "19");
}

void TestE2e::abortWhileWaiting()
{
    World world({"send 1 up-rate=40000"});
    Sender ann;
    Application ben;
    const int first = ann.request(sending(world.compose("First", world.photo(100000))));
    const int second = ann.request(sending(world.compose("Second", world.photo(1000))));
    ann.say(QString("abort %1").arg(second));
    ann.waitFor([&] { return ann.statuses(second) == "19"; }, "the end of the second");
    ann.waitFor([&] { return ann.statuses(first) == "0"; }, "the end of the first");
    ben.waitFor([&] { return ben.messages().size() == 1; }, "the message");
    QVERIFY(ben.messages().value(0).startsWith("message First "));
    QCOMPARE(world.pdus("in-send-req"), 1);
}

void TestE2e::daemonKilledWhileSending()
{
    World world({"send 1 up-rate=40000"});
    Sender ann;
    const QString photo = world.photo(250000);
    const int request = ann.request(sending(world.compose("Safe", photo)));
    ann.waitFor([&] { return ann.progress(request) > 0; }, "progress");
    world.killDaemon();
    ann.waitFor([&] { return ann.isClosed(); }, "the end of the connection");
    world.startDaemon();
    Application ben;
    ben.waitFor([&] { return ben.messages().size() == 1; }, "the message");
    QVERIFY(ben.messages().value(0).contains(World::hashOf(photo)));
}

void TestE2e::daemonKilledBeforeTheAnswer()
{
    // The MMSC has the message when the daemon dies, and is sent it again.
    World world({"send 1 delay=30"});
    Sender ann;
    const QString photo = world.photo(2000);
    ann.request(sending(world.compose("Once", photo)));
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-send-req"), 1, 60000);
    world.killDaemon();
    world.startDaemon();
    Application ben;
    ben.waitFor([&] { return !ben.messages().isEmpty(); }, "the message");
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-send-req"), 2, 60000);
    Sender bea;
    bea.request(sending(world.compose("Next", photo)));
    ben.waitFor([&] { return ben.messages().size() >= 2; }, "the next message");
    QCOMPARE(ben.messages().size(), 2);
    QVERIFY(ben.messages().value(0).startsWith("message Once "));
    QVERIFY(ben.messages().value(1).startsWith("message Next "));
}

void TestE2e::daemonKilledWithAMessageWaiting()
{
    World world;
    const QString photo = world.photo(3000);
    {
        Sender ann;
        const int request =
            ann.request(sending(world.compose("Kept", photo, {"--app-id", "late"})));
        ann.waitFor([&] { return ann.statuses(request) == "0"; }, "the outcome");
        QTRY_COMPARE_WITH_TIMEOUT(world.pdus("in-notifyresp-ind"), 1, 60000);
    }
    world.killDaemon();
    world.startDaemon();
    {
        Registered late("late");
        late.waitFor([&] { return late.messages().size() == 1; }, "the message");
        QVERIFY(late.messages().value(0).contains(World::hashOf(photo)));
    }
    // What was delivered is not delivered again.
    world.killDaemon();
    world.startDaemon();
    Registered late("late");
    Sender ann;
    ann.request(sending(world.compose("Next", photo, {"--app-id", "late"})));
    late.waitFor([&] { return !late.messages().isEmpty(); }, "the next message");
    QCOMPARE(late.messages().size(), 1);
    QVERIFY(late.messages().value(0).startsWith("message Next "));
}

void TestE2e::daemonKilledWhileRetrieving()
{
    World world({"retrieve 1 down-rate=20000"});
    const QString photo = world.photo(200000);
    Sender ann;
    const int request = ann.request(sending(world.compose("Fetched", photo)));
    ann.waitFor([&] { return ann.statuses(request) == "0"; }, "the outcome");
    QTRY_COMPARE_WITH_TIMEOUT(world.pdus("out-retrieve-conf"), 1, 60000);
    world.killDaemon();
    world.startDaemon();
    Application ben;
    ben.waitFor([&] { return ben.messages().size() == 1; }, "the message");
    QVERIFY(ben.messages().value(0).contains(World::hashOf(photo)));
}

void TestE2e::sendingFails_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("statuses");
    QTest::addColumn<int>("arrive");
    QTest::newRow("service denied") << "send * response-status=130"
                                    << "130" << 0;
    QTest::newRow("for good") << "send * response-status=227"
                              << "227" << 0;
    QTest::newRow("for now, and then not") << "send 1-2 response-status=192"
                                           << "256 256 0" << 1;
    QTest::newRow("for now, and it stays so") << "send * response-status=195"
                                              << "256 256 256 195" << 0;
    QTest::newRow("out of order for a moment") << "send 1 http-status=503"
                                               << "256 0" << 1;
    QTest::newRow("out of order for good") << "send * http-status=503"
                                           << "256 256 256 19" << 0;
    QTest::newRow("not there") << "send * http-status=404"
                               << "19" << 0;
    QTest::newRow("elsewhere") << "send * redirect=http://127.0.0.1:9/"
                               << "19" << 0;
    QTest::newRow("garbage once") << "send 1 garbage"
                                  << "256 0" << 1;
    QTest::newRow("cut in the message") << "send 1 cut-up-after=5000"
                                        << "256 0" << 1;
    QTest::newRow("cut in the answer") << "send 1 cut-after=10"
                                       << "256 0" << 1;
}

void TestE2e::sendingFails()
{
    QFETCH(QString, fault);
    QFETCH(QString, statuses);
    QFETCH(int, arrive);
    World world({fault});
    Sender ann;
    Application ben;
    const QString photo = world.photo(20000);
    const int request = ann.request(sending(world.compose("Hard", photo)));
    ann.waitFor(
        [&] { return ann.statuses(request).split(' ').last() == statuses.split(' ').last(); },
        "the outcome");
    QCOMPARE(ann.statuses(request), statuses);
    ben.waitFor([&] { return ben.messages().size() >= arrive; }, "the message");
    QCOMPARE(ben.messages().size(), arrive);
    QCOMPARE(world.pdus("out-notification-ind"), arrive);
}

void TestE2e::retrievalFails_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("notifyAgain");
    const auto row = [](const char *name, const char *fault, const char *notifyAgain = "5") {
        QTest::newRow(name) << fault << notifyAgain;
    };
    row("out of order for a moment", "retrieve 1 http-status=503");
    row("cut in the middle", "retrieve 1 cut-after=5000");
    row("garbage once", "retrieve 1 garbage");
    row("slow", "retrieve 1 down-rate=20000");
    row("notification doubled", "notify * doubled");
    row("notification lost once", "notify 1 lost", "0.5");
    row("answer to the network lost", "notify-response 1 http-status=503");
}

void TestE2e::retrievalFails()
{
    QFETCH(QString, fault);
    Network network;
    QFETCH(QString, notifyAgain);
    network.notifyAgain = notifyAgain;
    World world({fault}, {}, network);
    Sender ann;
    Application ben;
    const QString photo = world.photo(20000);
    ann.request(sending(world.compose("Hard", photo)));
    ben.waitFor([&] { return !ben.messages().isEmpty(); }, "the message");
    QVERIFY(ben.messages().value(0).contains(World::hashOf(photo)));
    QTRY_VERIFY_WITH_TIMEOUT(world.pdus("in-notifyresp-ind") >= 1, 60000);
    // The next one comes behind everything that belongs to the first.
    ann.request(sending(world.compose("Next", photo)));
    ben.waitFor([&] { return ben.messages().size() >= 2; }, "the next message");
    QCOMPARE(ben.messages().size(), 2);
    QVERIFY(ben.messages().value(1).startsWith("message Next "));
}

QTEST_GUILESS_MAIN(TestE2e)
#include "tst_e2e.moc"

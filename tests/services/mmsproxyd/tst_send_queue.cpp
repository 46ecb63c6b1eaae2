// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/send_queue.h"
#include "services/mmsproxyd/send_record.h"
#include "services/mmsproxyd/source_file.h"
#include "tests/services/mmsproxyd/mmsc_script.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

#include <fcntl.h>

using namespace wmsg::proxy;
using namespace std::chrono_literals;

class TestSendQueue : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void sendsAMessage();
    void tellsWhatTheMmscAnswers_data();
    void tellsWhatTheMmscAnswers();
    void otherAnswersAreFailures_data();
    void otherAnswersAreFailures();
    void brokenConnectionsAreTriedAgain_data();
    void brokenConnectionsAreTriedAgain();
    void nobodyListens();
    void lastFailureDecides();
    void repetitionIsTheSame();

    void keepsTheOrder();
    void whatWaitsLetsOthersPass();
    void whatIsPausedLetsOthersPass();
    void severalAtOnce();

    void abortsWhileWaiting();
    void abortsWhileRunning();
    void abortsWhilePaused();
    void abortsBetweenAttempts();
    void pausesWhileWaiting();
    void pausesWhileRunning();
    void pausesBetweenAttempts();
    void mmscLosesPatienceWithAPause();
    void unknownRequestsAreFalse();
    void pausingTwiceIsFine();

    void sessionThatGoesIsNotTold();
    void sessionThatGoesResumes();
    void numbersAreOfASession();
    void numberInUseIsRefused();

    void refusesPaths_data();
    void refusesPaths();
    void refusesTheFileOfAnotherUser();
    void refusesTooLargeFiles();
    void sourceThatIsHeldOpenCannotChangeTheMessage();
    void unreadableMessageIsKeptAside();
    void withoutMmscNothingIsTaken();
    void fullDiskLeavesTheSource();
    void fullDiskAtTheConversionIsTriedAgain();
    void readOnlySpoolLeavesTheSource();
    void missingSpoolLeavesTheSource();
    void spoolThatVanishesIsAFailure();

    void sourceIsRemovedOnlyWhenItIsTheSame_data();
    void sourceIsRemovedOnlyWhenItIsTheSame();
    void sourceOfARecordReadsBack();

    void goesOnAfterTheCopy();
    void goesOnAfterTheRecord();
    void goesOnAfterTheConversion();
    void goesOnAfterTheMailFileIsGone();
    void goesOnAfterAnAttempt();
    void goesOnWhenTheAnswerWasMissed();
    void whatHasEndedIsOver();
    void recordWithoutFilesIsKeptAside();
    void damagedRecordIsKeptAside_data();
    void damagedRecordIsKeptAside();
    void damagedRecordDoesNotHoldOthersUp();
};

namespace {

constexpr SessionId kSession = 7;

/// One life of the daemon's sending half; a new one on the same folder is what a daemon finds that
/// was killed.
struct Sending {
    Sending(const SpoolFolder &folder, const QString &mmsc,
            RetrySchedule schedule = RetrySchedule(), int atOnce = 1,
            std::chrono::milliseconds stall = 60s)
        : spool(folder.path()), http({{}, {}, "wmsg-test", {}, 60s, stall}),
          sends((open(spool), spool), http, {mmsc, 300 * 1024, std::move(schedule), atOnce})
    {
        QObject::connect(&sends, &SendQueue::finished,
                         [this](SessionId session, qint32 id, const QString &uri, qint32 status) {
                             told.append(
                                 QString("%1/%2 ended %3").arg(session).arg(id).arg(status));
                             uris.append(uri);
                             namesAtTheEnd = QDir(spool.folder() + "/out").entryList(QDir::Files);
                         });
        QObject::connect(&sends, &SendQueue::retrying, [this](SessionId session, qint32 id) {
            told.append(QString("%1/%2 again").arg(session).arg(id));
        });
        QObject::connect(&sends, &SendQueue::progress,
                         [this](SessionId, qint32, qint64 done, qint64 total) {
                             progress.append({done, total});
                         });
        sends.start();
    }

    static void open(Spool &spool)
    {
        const QString problem = spool.open();
        if (!problem.isEmpty()) {
            qFatal("%s", qPrintable(problem));
        }
    }
    void take(qint32 id, const QString &path, SessionId session = kSession)
    {
        sends.take(session, id, path, ::getuid());
    }
    /// Makes a message and takes it.
    QString takeNew(const SpoolFolder &folder, qint32 id, int size = 2000)
    {
        const QString path = folder.outside(QString("message-%1").arg(id));
        writeMailFile(path, size);
        take(id, path);
        return path;
    }

    Spool spool;
    HttpClient http;
    SendQueue sends;
    QStringList told;
    QStringList uris;
    QStringList namesAtTheEnd;
    QList<QPair<qint64, qint64>> progress;
};

/// Takes a message, of which the first attempt to send it fails.
void failOnce(Sending &daemon, const SpoolFolder &folder, ScriptedHttp &mmsc)
{
    daemon.takeNew(folder, 1);
    mmsc.accept().close();
    QTRY_COMPARE(daemon.told, QStringList{"7/1 again"});
}

/// Takes the next request of an MMSC and answers it with that response status.
WMMSMsg confirm(ScriptedHttp &mmsc, int status = 128)
{
    ScriptedConnection connection = mmsc.accept();
    const WMMSMsg message = pduIn(connection.readRequest());
    answerOnce(connection, "200 OK", sendConfirmation(message.getTransactionID(), status));
    return message;
}

RetrySchedule attempts(int count)
{
    return RetrySchedule(std::vector<RetrySchedule::Pause>(size_t(count - 1), 1ms));
}

/// Pauses that never end in a test.
RetrySchedule longPauses()
{
    return RetrySchedule({24h, 24h});
}

/// Reads a little of a message, so that its transfer is under way.
void readSomeOf(ScriptedConnection &connection)
{
    (void)connection.readHead();
    (void)connection.read(1000);
}

constexpr int kLarge = 290 * 1024; // more than the buffers between two sockets take

} // namespace

void TestSendQueue::sendsAMessage()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url("/mms"));
    const QString path = daemon.takeNew(folder, 3, 20000);
    QVERIFY(!QFile::exists(path)); // taken over at once
    QCOMPARE(daemon.told, QStringList());

    ScriptedConnection connection = mmsc.accept();
    const ScriptedRequest request = connection.readRequest();
    QCOMPARE(request.line, "POST /mms HTTP/1.1");
    QCOMPARE(request.header("Content-Type"), "application/vnd.wap.mms-message");
    const WMMSMsg message = pduIn(request);
    QCOMPARE(int(message.getPDUType()), 0x80);
    QVERIFY(message.getTransactionID().size() >= 16);
    QCOMPARE(message.getSubject(), "hello");
    QCOMPARE(message.getMultiParts().subParts()->first().getData().size(), 20000);
    answerOnce(connection, "200 OK", sendConfirmation(message.getTransactionID(), 128));

    QTRY_COMPARE(daemon.told, QStringList{"7/3 ended 0"});
    QCOMPARE(daemon.uris, QStringList{path});
    QCOMPARE(daemon.namesAtTheEnd, QStringList()); // gone before anybody is told
    QCOMPARE(daemon.progress.last(),
             qMakePair(qint64(request.body.size()), qint64(request.body.size())));
    for (int n = 1; n < daemon.progress.size(); ++n) {
        QVERIFY(daemon.progress[n - 1].first < daemon.progress[n].first);
    }
    QCOMPARE(daemon.sends.count(), 0);
}

void TestSendQueue::tellsWhatTheMmscAnswers_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("posted");
    QTest::addColumn<int>("told");

    QTest::newRow("accepted") << 128 << 1 << 0;
    QTest::newRow("unspecified error") << 129 << 1 << 129;
    QTest::newRow("service denied") << 130 << 1 << 130;
    QTest::newRow("corrupt") << 131 << 1 << 131;
    QTest::newRow("sender unresolved") << 132 << 1 << 132;
    QTest::newRow("not found") << 133 << 1 << 133;
    QTest::newRow("network problem, passes") << 134 << 3 << 134;
    QTest::newRow("content not accepted") << 135 << 1 << 135;
    QTest::newRow("unsupported") << 136 << 1 << 136;
    QTest::newRow("reserved") << 191 << 1 << 191;
    QTest::newRow("transient, lowest") << 192 << 3 << 192;
    QTest::newRow("transient, partial success") << 196 << 3 << 196;
    QTest::newRow("transient, highest") << 223 << 3 << 223;
    QTest::newRow("permanent, lowest") << 224 << 1 << 224;
    QTest::newRow("permanent, highest") << 234 << 1 << 234;
    QTest::newRow("of a later time") << 235 << 1 << 224;
    QTest::newRow("highest") << 255 << 1 << 224;
    QTest::newRow("below all") << 127 << 3 << 19; // is no confirmation
    QTest::newRow("zero") << 0 << 3 << 19;
}

void TestSendQueue::tellsWhatTheMmscAnswers()
{
    QFETCH(int, status);
    QFETCH(int, posted);
    QFETCH(int, told);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(3));
    daemon.takeNew(folder, 1);
    QStringList wanted;
    for (int n = 1; n <= posted; ++n) {
        (void)confirm(mmsc, status);
        wanted.append(n < posted ? QString("7/1 again") : QString("7/1 ended %1").arg(told));
    }
    QTRY_COMPARE(daemon.told, wanted);
    QCOMPARE(folder.names("out"), QStringList());
    QVERIFY(!mmsc.hasClient());
}

void TestSendQueue::otherAnswersAreFailures_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<int>("posted");

    const QByteArray plain = "Content-Type: text/html\r\n";
    const QByteArray mms = "Content-Type: application/vnd.wap.mms-message\r\n";
    QTest::newRow("200, a page") << QByteArray("200 OK") << QByteArray("<html>") << plain << 3;
    QTest::newRow("200, nothing") << QByteArray("200 OK") << QByteArray() << mms << 3;
    QTest::newRow("200, noise") << QByteArray("200 OK") << QByteArray(500, '\xEE') << mms << 3;
    QTest::newRow("200, of another message")
        << QByteArray("200 OK") << sendConfirmation("other", 128) << mms << 3;
    QTest::newRow("200, too large") << QByteArray("200 OK") << QByteArray(70000, 'x') << plain << 3;
    QTest::newRow("204") << QByteArray("204 No Content") << QByteArray() << mms << 1;
    QTest::newRow("301") << QByteArray("301 Moved") << QByteArray()
                         << QByteArray("Location: http://127.0.0.1:1/else\r\n") << 1;
    QTest::newRow("302 to another kind of address")
        << QByteArray("302 Found") << QByteArray() << QByteArray("Location: file:///etc/passwd\r\n")
        << 1;
    QTest::newRow("400") << QByteArray("400 Bad Request") << QByteArray() << plain << 1;
    QTest::newRow("403") << QByteArray("403 Forbidden") << QByteArray() << plain << 1;
    QTest::newRow("404") << QByteArray("404 Not Found") << QByteArray() << plain << 1;
    QTest::newRow("408") << QByteArray("408 Request Timeout") << QByteArray() << plain << 3;
    QTest::newRow("413") << QByteArray("413 Too Large") << QByteArray() << plain << 1;
    QTest::newRow("429") << QByteArray("429 Too Many Requests") << QByteArray() << plain << 3;
    QTest::newRow("500") << QByteArray("500 Error") << QByteArray("oops") << plain << 3;
    QTest::newRow("503") << QByteArray("503 Busy") << QByteArray() << plain << 3;
}

void TestSendQueue::otherAnswersAreFailures()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, lines);
    QFETCH(int, posted);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(3));
    daemon.takeNew(folder, 1);
    QStringList wanted;
    for (int n = 1; n <= posted; ++n) {
        ScriptedConnection connection = mmsc.accept();
        (void)connection.readRequest();
        answerOnce(connection, status, body, lines);
        wanted.append(n < posted ? "7/1 again" : "7/1 ended 19");
    }
    QTRY_COMPARE(daemon.told, wanted);
    QCOMPARE(folder.names("out"), QStringList());
    QVERIFY(!mmsc.hasClient());
}

void TestSendQueue::brokenConnectionsAreTriedAgain_data()
{
    QTest::addColumn<QString>("how");

    QTest::newRow("closed before the request was read") << "close";
    QTest::newRow("reset while it was read") << "reset";
    QTest::newRow("closed instead of an answer") << "silence";
    QTest::newRow("cut in the header of the answer") << "header";
    QTest::newRow("cut in the body of the answer") << "body";
    QTest::newRow("no HTTP") << "noise";
    QTest::newRow("no answer for too long") << "stall";
}

void TestSendQueue::brokenConnectionsAreTriedAgain()
{
    QFETCH(QString, how);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    const auto stall = how == "stall" ? std::chrono::milliseconds(200) : 60s;
    Sending daemon(folder, mmsc.url(), attempts(2), 1, stall);
    daemon.takeNew(folder, 1);
    for (int n = 0; n < 2; ++n) {
        ScriptedConnection connection = mmsc.accept();
        if (how == "close") {
            connection.close();
            continue;
        }
        if (how == "reset") {
            (void)connection.readHead();
            connection.reset();
            continue;
        }
        (void)connection.readRequest();
        if (how == "header") {
            connection.send("HTTP/1.1 200 O");
        } else if (how == "body") {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n\x8C\x81");
        } else if (how == "noise") {
            connection.send("what do you want?\r\n\r\n");
        } else if (how == "stall") {
            QVERIFY(connection.waitForEnd());
        }
        connection.close();
    }
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/1 ended 19"}));
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::nobodyListens()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    const QString url = mmsc.url();
    mmsc.close();
    Sending daemon(folder, url, attempts(3));
    daemon.takeNew(folder, 1);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/1 again", "7/1 ended 19"}));
}

void TestSendQueue::lastFailureDecides()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(3));
    daemon.takeNew(folder, 1);
    (void)confirm(mmsc, 192);
    mmsc.accept().close();
    (void)confirm(mmsc, 195);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/1 again", "7/1 ended 195"}));
}

void TestSendQueue::repetitionIsTheSame()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    QByteArrayList bodies;
    const auto fail = [&] {
        ScriptedConnection connection = mmsc.accept();
        bodies.append(connection.readRequest().body);
        connection.close();
    };
    {
        Sending daemon(folder, mmsc.url(), attempts(9));
        daemon.takeNew(folder, 1);
        fail();
        fail();
        QTRY_COMPARE(daemon.told.size(), 2);
    }
    Sending daemon(folder, mmsc.url(), attempts(9));
    fail();
    fail();
    QVERIFY(bodies.first().size() > 2000);
    for (const QByteArray &body : std::as_const(bodies)) {
        QCOMPARE(body.toHex(), bodies.first().toHex());
    }
}

void TestSendQueue::keepsTheOrder()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    for (int id = 0; id < 4; ++id) {
        daemon.takeNew(folder, id, 1000 + id);
    }
    for (int id = 0; id < 4; ++id) {
        const WMMSMsg message = confirm(mmsc);
        QCOMPARE(message.getMultiParts().subParts()->first().getData().size(), 1000 + id);
    }
    QTRY_COMPARE(daemon.told,
                 (QStringList{"7/0 ended 0", "7/1 ended 0", "7/2 ended 0", "7/3 ended 0"}));
}

void TestSendQueue::whatWaitsLetsOthersPass()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), longPauses());
    daemon.takeNew(folder, 1);
    daemon.takeNew(folder, 2);
    mmsc.accept().close();
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/2 ended 0"}));
    QVERIFY(!mmsc.hasClient());
    QCOMPARE(daemon.sends.count(), 1);
}

void TestSendQueue::whatIsPausedLetsOthersPass()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1, kLarge);
    daemon.takeNew(folder, 2);
    ScriptedConnection first = mmsc.accept();
    readSomeOf(first);
    QVERIFY(!mmsc.hasClient()); // one at a time
    QVERIFY(daemon.sends.pause(kSession, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, QStringList{"7/2 ended 0"});
}

void TestSendQueue::severalAtOnce()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), RetrySchedule(), 2);
    for (int id = 0; id < 3; ++id) {
        daemon.takeNew(folder, id);
    }
    ScriptedConnection first = mmsc.accept();
    ScriptedConnection second = mmsc.accept();
    (void)first.readRequest();
    const QString id = pduIn(second.readRequest()).getTransactionID();
    QVERIFY(!mmsc.hasClient());
    answerOnce(second, "200 OK", sendConfirmation(id, 128));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told.size(), 2);
}

void TestSendQueue::abortsWhileWaiting()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1);
    const QString path = daemon.takeNew(folder, 2);
    QVERIFY(daemon.sends.abort(kSession, 2));
    QCOMPARE(daemon.told, QStringList{"7/2 ended 19"}); // before it returned
    QCOMPARE(daemon.uris, QStringList{path});
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/2 ended 19", "7/1 ended 0"}));
    QVERIFY(!mmsc.hasClient());
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::abortsWhileRunning()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url(), attempts(3));
    daemon.takeNew(folder, 1, kLarge);
    ScriptedConnection connection = mmsc.accept();
    readSomeOf(connection);
    QVERIFY(daemon.sends.abort(kSession, 1));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QCOMPARE(daemon.namesAtTheEnd, QStringList());
    QVERIFY(connection.waitForEnd());
    QVERIFY(!daemon.sends.abort(kSession, 1)); // it is finished
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
}

void TestSendQueue::abortsWhilePaused()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1, kLarge);
    ScriptedConnection connection = mmsc.accept();
    readSomeOf(connection);
    QVERIFY(daemon.sends.pause(kSession, 1));
    QVERIFY(daemon.sends.abort(kSession, 1));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(connection.waitForEnd());
    daemon.takeNew(folder, 2);
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 19", "7/2 ended 0"}));
}

void TestSendQueue::abortsBetweenAttempts()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), longPauses());
    failOnce(daemon, folder, mmsc);
    QVERIFY(daemon.sends.abort(kSession, 1));
    QCOMPARE(daemon.told, (QStringList{"7/1 again", "7/1 ended 19"}));
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::pausesWhileWaiting()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1, 1001);
    QVERIFY(daemon.sends.pause(kSession, 1));
    daemon.takeNew(folder, 2, 1002);
    const WMMSMsg second = confirm(mmsc);
    QCOMPARE(second.getMultiParts().subParts()->first().getData().size(), 1002);
    QTRY_COMPARE(daemon.told, QStringList{"7/2 ended 0"});
    QVERIFY(!mmsc.hasClient());
    QVERIFY(daemon.sends.resume(kSession, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/2 ended 0", "7/1 ended 0"}));
}

void TestSendQueue::pausesWhileRunning()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1, kLarge);
    ScriptedConnection connection = mmsc.accept();
    const ScriptedRequest head = connection.readHead();
    const qint64 size = head.header("Content-Length").toLongLong();
    QByteArray body = connection.read(1000);
    QVERIFY(daemon.sends.pause(kSession, 1));
    // What the system has by then still comes; that ends far before the message does.
    for (int quiet = 0; quiet < 20; ++quiet) {
        const qint64 waiting = connection.waiting();
        body += connection.read(waiting);
        quiet = waiting > 0 ? 0 : quiet;
        QTest::qWait(2);
    }
    QVERIFY2(body.size() < size, "the transfer went on");
    QVERIFY(daemon.sends.resume(kSession, 1));
    body += connection.read(size - body.size());
    ScriptedRequest request;
    request.body = body;
    answerOnce(connection, "200 OK", sendConfirmation(pduIn(request).getTransactionID(), 128));
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
}

void TestSendQueue::pausesBetweenAttempts()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(2));
    daemon.takeNew(folder, 1);
    QObject::connect(&daemon.sends, &SendQueue::retrying, &daemon.sends,
                     [&] { QVERIFY(daemon.sends.pause(kSession, 1)); });
    mmsc.accept().close();
    QTRY_COMPARE(daemon.told, QStringList{"7/1 again"});
    daemon.takeNew(folder, 2);
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/2 ended 0"}));
    QVERIFY(daemon.sends.resume(kSession, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/2 ended 0", "7/1 ended 0"}));
}

void TestSendQueue::mmscLosesPatienceWithAPause()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url()); // of a single attempt
    daemon.takeNew(folder, 1, kLarge);
    ScriptedConnection connection = mmsc.accept();
    readSomeOf(connection);
    QVERIFY(daemon.sends.pause(kSession, 1));
    connection.reset();
    QVERIFY(daemon.sends.resume(kSession, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
}

void TestSendQueue::unknownRequestsAreFalse()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1);
    QVERIFY(!daemon.sends.abort(kSession, 2));
    QVERIFY(!daemon.sends.pause(kSession, 2));
    QVERIFY(!daemon.sends.resume(kSession, -1));
    QVERIFY(!daemon.sends.abort(kSession + 1, 1)); // of another session
    QVERIFY(!daemon.sends.pause(kSession + 1, 1));
    QVERIFY(daemon.sends.knows(kSession, 1));
    QVERIFY(!daemon.sends.knows(kSession + 1, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
    QVERIFY(!daemon.sends.knows(kSession, 1));
    QVERIFY(!daemon.sends.abort(kSession, 1)); // finished
    QVERIFY(!daemon.sends.pause(kSession, 1));
    QVERIFY(!daemon.sends.resume(kSession, 1));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 0"});
}

void TestSendQueue::pausingTwiceIsFine()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1);
    QVERIFY(daemon.sends.resume(kSession, 1)); // is not paused
    QVERIFY(daemon.sends.pause(kSession, 1));
    QVERIFY(daemon.sends.pause(kSession, 1));
    QVERIFY(daemon.sends.resume(kSession, 1));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
}

void TestSendQueue::sessionThatGoesIsNotTold()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(2));
    daemon.takeNew(folder, 1);
    daemon.sends.forget(kSession);
    QVERIFY(!daemon.sends.knows(kSession, 1));
    QVERIFY(!daemon.sends.abort(kSession, 1));
    mmsc.accept().close();
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.sends.count(), 0);
    QCOMPARE(daemon.told, QStringList());
    QCOMPARE(daemon.progress.size(), 0);
}

void TestSendQueue::sessionThatGoesResumes()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc(4096);
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1, kLarge);
    daemon.takeNew(folder, 2);
    ScriptedConnection running = mmsc.accept();
    const qint64 size = running.readHead().header("Content-Length").toLongLong();
    QVERIFY(daemon.sends.pause(kSession, 2));
    QVERIFY(daemon.sends.pause(kSession, 1));
    daemon.sends.forget(kSession);
    ScriptedRequest request;
    request.body = running.read(size);
    answerOnce(running, "200 OK", sendConfirmation(pduIn(request).getTransactionID(), 128));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.sends.count(), 0);
    QCOMPARE(daemon.told, QStringList());
}

void TestSendQueue::numbersAreOfASession()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    for (const SessionId session : {1, 2}) {
        const QString path = folder.outside(QString("of-%1").arg(session));
        writeMailFile(path);
        daemon.take(0, path, session);
    }
    QVERIFY(daemon.sends.abort(1, 0));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"1/0 ended 19", "2/0 ended 0"}));
}

void TestSendQueue::numberInUseIsRefused()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1);
    const QString second = folder.outside("second");
    writeMailFile(second);
    daemon.take(1, second);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 15"});
    QCOMPARE(daemon.uris, QStringList{second});
    QVERIFY(QFile::exists(second));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 15", "7/1 ended 0"}));
    daemon.take(1, second); // free again
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told.size(), 3);
    QCOMPARE(daemon.told.last(), "7/1 ended 0");
}

void TestSendQueue::refusesPaths_data()
{
    QTest::addColumn<QString>("path"); // "@" stands for the folder

    QTest::newRow("empty") << "";
    QTest::newRow("relative") << "message";
    QTest::newRow("a URL") << "file://@/message";
    QTest::newRow("not there") << "@/nothing";
    QTest::newRow("a link") << "@/link";
    QTest::newRow("a link to nothing") << "@/dangling";
    QTest::newRow("a folder") << "@/folder";
    QTest::newRow("a folder, with its slash") << "@/folder/";
    QTest::newRow("a file with a slash") << "@/message/";
    QTest::newRow("below a file") << "@/message/below";
    QTest::newRow("a pipe") << "@/pipe";
    QTest::newRow("a device") << "/dev/null";
    QTest::newRow("an endless device") << "/dev/zero";
    QTest::newRow("a socket") << "@/socket";
    QTest::newRow("a file with two names") << "@/twice";
    QTest::newRow("a NUL behind the name") << QString("@/message") + QChar(0) + "x";
    QTest::newRow("half a character") << QString("@/message") + QChar(0xD800);
    QTest::newRow("too long") << "@/" + QString(5000, 'x');
    QTest::newRow("too long a name") << "@/" + QString(300, 'x');
}

void TestSendQueue::refusesPaths()
{
    QFETCH(QString, path);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString message = folder.outside("message");
    writeMailFile(message);
    writeMailFile(folder.outside("twice"));
    QCOMPARE(::link(qPrintable(folder.outside("twice")), qPrintable(folder.outside("other"))), 0);
    QCOMPARE(::symlink(qPrintable(message), qPrintable(folder.outside("link"))), 0);
    QCOMPARE(::symlink("nothing", qPrintable(folder.outside("dangling"))), 0);
    QCOMPARE(::mkdir(qPrintable(folder.outside("folder")), 0700), 0);
    QCOMPARE(::mkfifo(qPrintable(folder.outside("pipe")), 0600), 0);
    QCOMPARE(::mknod(qPrintable(folder.outside("socket")), S_IFSOCK | 0600, 0), 0);
    path.replace("@", folder.outside(""));
    const QStringList before = QDir(folder.outside("")).entryList(QDir::AllEntries | QDir::System);

    daemon.take(1, path);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 15"});
    QCOMPARE(daemon.uris, QStringList{path});
    QCOMPARE(QDir(folder.outside("")).entryList(QDir::AllEntries | QDir::System), before);
    QCOMPARE(folder.names("out"), QStringList());
    QVERIFY(!daemon.sends.knows(kSession, 1));
}

void TestSendQueue::refusesTheFileOfAnotherUser()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString path = folder.outside("message");
    writeMailFile(path);
    daemon.sends.take(kSession, 1, path, ::getuid() + 1);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 15"});
    QVERIFY(QFile::exists(path));
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::refusesTooLargeFiles()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString path = folder.outside("message");
    writeMailFile(path, 300 * 1024); // and its header
    daemon.take(1, path);
    QCOMPARE(daemon.told, QStringList());
    QFile larger(path);
    QVERIFY(larger.open(QIODevice::WriteOnly) && larger.resize(316 * 1024 + 1));
    daemon.take(2, path);
    QCOMPARE(daemon.told, QStringList{"7/2 ended 15"});
    QVERIFY(QFile::exists(path));
}

void TestSendQueue::sourceThatIsHeldOpenCannotChangeTheMessage()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString path = folder.outside("message");
    writeMailFile(path);
    QFile held(path);
    QVERIFY(held.open(QIODevice::ReadWrite));
    daemon.take(1, path);
    QCOMPARE(held.write(QByteArray(1000, '\xEE')), 1000);
    QVERIFY(held.flush());
    QCOMPARE(confirm(mmsc).getSubject(), "hello");
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
}

void TestSendQueue::unreadableMessageIsKeptAside()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(3));
    const QString path = folder.outside("message");
    SpoolFolder::write(path, "this is no message at all, not by far");
    daemon.take(1, path);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QCOMPARE(folder.names("out"), QStringList());
    const QStringList kept = folder.files("kept", ".mail");
    QCOMPARE(kept.size(), 1);
    QCOMPARE(SpoolFolder::read(kept.first()), "this is no message at all, not by far");
    QCOMPARE(folder.files("kept", ".txt").size(), 1);
    QVERIFY(!mmsc.hasClient());
}

void TestSendQueue::withoutMmscNothingIsTaken()
{
    const SpoolFolder folder;
    Sending daemon(folder, QString());
    const QString path = daemon.takeNew(folder, 1);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(QFile::exists(path));
}

void TestSendQueue::fullDiskLeavesTheSource()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString path = folder.outside("message");
    writeMailFile(path, 5000);
    const QByteArray before = SpoolFolder::read(path);
    for (const rlim_t room :
         {0, 100, 4000}) { // nothing fits, the record does not, the mail does not
        const FullDisk full(room);
        daemon.take(1, path);
    }
    QCOMPARE(daemon.told, (QStringList{"7/1 ended 19", "7/1 ended 19", "7/1 ended 19"}));
    QCOMPARE(SpoolFolder::read(path), before);
    QCOMPARE(folder.names("out"), QStringList());
    daemon.take(1, path); // there is room again
    QCOMPARE(daemon.told.size(), 3);
    QVERIFY(!QFile::exists(path));
}

void TestSendQueue::fullDiskAtTheConversionIsTriedAgain()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(2));
    const QString path = folder.outside("message");
    writeMailFile(path, 5000);
    {
        // A PDU is a little larger than the mail file.
        const FullDisk full(rlim_t(QFileInfo(path).size()));
        daemon.take(1, path);
        QCOMPARE(daemon.told, QStringList{"7/1 again"});
        QVERIFY(!QFile::exists(path));
    }
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/1 ended 0"}));
}

void TestSendQueue::readOnlySpoolLeavesTheSource()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const QString path = folder.outside("message");
    writeMailFile(path);
    QCOMPARE(::chmod(qPrintable(path), 0644), 0);
    {
        const ReadOnlyTree tree(folder.path());
        daemon.take(1, path);
    }
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(QFile::exists(path));
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::missingSpoolLeavesTheSource()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    QVERIFY(QDir(folder.path()).removeRecursively());
    const QString path = daemon.takeNew(folder, 1);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(QFile::exists(path));
}

void TestSendQueue::spoolThatVanishesIsAFailure()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    daemon.takeNew(folder, 1);
    QVERIFY(QDir(folder.path()).removeRecursively());
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(!mmsc.hasClient());
}

void TestSendQueue::sourceIsRemovedOnlyWhenItIsTheSame_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("problem");
    QTest::addColumn<QByteArray>("left");

    const QString other = "another file has its name by now";
    QTest::newRow("nothing happens") << ""
                                     << "" << QByteArray("not there");
    QTest::newRow("it vanishes") << "vanish"
                                 << "" << QByteArray("not there");
    QTest::newRow("its folder vanishes") << "folder"
                                         << "" << QByteArray("not there");
    QTest::newRow("another file gets the name") << "swap" << other << QByteArray("new");
    QTest::newRow("another file is written over it") << "rename" << other << QByteArray("new");
    QTest::newRow("its content changes") << "write" << other << QByteArray("new");
    QTest::newRow("a link gets the name") << "link" << other << QByteArray("new");
    QTest::newRow("a folder gets the name") << "mkdir" << other << QByteArray("not there");
}

void TestSendQueue::sourceIsRemovedOnlyWhenItIsTheSame()
{
    QFETCH(QString, change);
    QFETCH(QString, problem);
    QFETCH(QByteArray, left);

    const QTemporaryDir top;
    QVERIFY(QDir(top.path()).mkdir("folder"));
    const QString path = top.path() + "/folder/message";
    const QString other = top.path() + "/other";
    SpoolFolder::write(path, "old");
    SpoolFolder::write(other, "new");
    const timespec long_ago[2] = {{1, 1}, {1, 1}};
    QCOMPARE(::utimensat(AT_FDCWD, qPrintable(path), long_ago, 0), 0);
    const SourceFile source(path, ::getuid(), 100);
    QCOMPARE(source.problem(), QString());

    if (change == "vanish" || change == "swap" || change == "link" || change == "mkdir") {
        QVERIFY(QFile::remove(path));
    }
    if (change == "folder") {
        QVERIFY(QDir(top.path() + "/folder").removeRecursively());
    } else if (change == "swap" || change == "write") {
        SpoolFolder::write(path, "new"); // may well get the same number from the file system
    } else if (change == "rename") {
        QCOMPARE(::rename(qPrintable(other), qPrintable(path)), 0);
    } else if (change == "link") {
        QCOMPARE(::symlink(qPrintable(other), qPrintable(path)), 0);
    } else if (change == "mkdir") {
        QVERIFY(QDir().mkdir(path));
    }
    QCOMPARE(source.id().remove(), problem);
    QCOMPARE(SpoolFolder::read(path), left);
    QCOMPARE(QFile::exists(other), change != "rename");
}

void TestSendQueue::sourceOfARecordReadsBack()
{
    const QTemporaryDir top;
    const QString path = top.path() + QString::fromUtf8("/message \"\xC3\xBC\xE2\x82\xAC\" 100%\n");
    SpoolFolder::write(path, "old");
    SendRecord record;
    record.transactionId = "W1";
    record.taken = 1700000000123;
    record.attempts = 3;
    record.nextTry = 1700000060123;
    record.source = SourceFile(path, ::getuid(), 100).id();
    const QByteArray written = QJsonDocument(record.toJson()).toJson();
    QString reason;
    const auto read = SendRecord::fromJson(QJsonDocument::fromJson(written).object(), reason);
    QVERIFY2(read, qPrintable(reason));
    QCOMPARE(QJsonDocument(read->toJson()).toJson(), written);
    QCOMPARE(read->source->remove(), QString());
    QVERIFY(!QFile::exists(path));
}

/// Makes a spool as a daemon left it that was killed, and returns the path of the source.
static QString leaveMessage(const SpoolFolder &folder, const QStringList &what)
{
    const QString source = folder.outside("message");
    writeMailFile(source, 3000);
    {
        // Of an MMSC that cannot be reached.
        Sending daemon(folder, "http://127.0.0.1:1/", longPauses());
        QFile::copy(source, folder.outside("copy"));
        daemon.take(1, source);
    }
    const QString record = folder.files("out", ".json").first();
    const QString stem = record.chopped(5);
    QFile::rename(folder.outside("copy"), source);
    if (what.contains("mail")) {
        QFile::copy(source, stem + ".mail");
    }
    if (!what.contains("pdu")) {
        QFile::remove(stem + ".pdu");
    }
    if (what.contains("tmp")) {
        SpoolFolder::write(stem + ".pdu.tmp", "unfinished");
    }
    if (!what.contains("record")) {
        QFile::remove(record);
    }
    if (what.contains("source")) {
        SendRecord changed;
        changed.transactionId = "W77";
        changed.taken = 1700000000000;
        changed.source = SourceFile(source, ::getuid(), 100000).id();
        QJsonObject json = changed.toJson();
        json.insert("version", 1);
        SpoolFolder::write(record, QJsonDocument(json).toJson());
    } else {
        QFile::remove(source);
    }
    return source;
}

void TestSendQueue::goesOnAfterTheCopy()
{
    const SpoolFolder folder;
    const QString source = leaveMessage(folder, {"mail", "source", "record"});
    QVERIFY(QFile::remove(folder.files("out", ".json").first()));
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    QCOMPARE(daemon.sends.count(), 0);
    QCOMPARE(folder.names("out"), QStringList()); // the session has never been told of it
    QVERIFY(QFile::exists(source));
}

void TestSendQueue::goesOnAfterTheRecord()
{
    const SpoolFolder folder;
    const QString source = leaveMessage(folder, {"mail", "source", "record"});
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    QVERIFY(!QFile::exists(source));
    QCOMPARE(confirm(mmsc).getTransactionID(), "W77");
    QTRY_COMPARE(daemon.sends.count(), 0);
    QCOMPARE(folder.names("out"), QStringList());
    QCOMPARE(daemon.told, QStringList()); // the session is gone
}

void TestSendQueue::goesOnAfterTheConversion()
{
    const SpoolFolder folder;
    (void)leaveMessage(folder, {"mail", "pdu", "tmp", "record"});
    const QByteArray pdu = SpoolFolder::read(folder.files("out", ".pdu").first());
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(2));
    QCOMPARE(folder.files("out", ".tmp"), QStringList());
    ScriptedConnection connection = mmsc.accept();
    QCOMPARE(connection.readRequest().body.toHex(), pdu.toHex());
    QCOMPARE(folder.files("out", ".mail"), QStringList());
}

void TestSendQueue::goesOnAfterTheMailFileIsGone()
{
    const SpoolFolder folder;
    (void)leaveMessage(folder, {"pdu", "record"});
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url(), attempts(2));
    (void)confirm(mmsc);
    QTRY_COMPARE(daemon.sends.count(), 0);
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::goesOnAfterAnAttempt()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Sending daemon(folder, mmsc.url(), longPauses());
        failOnce(daemon, folder, mmsc);
    }
    {
        Sending daemon(folder, mmsc.url(), longPauses()); // still pauses
        daemon.takeNew(folder, 2);
        (void)confirm(mmsc);
        QTRY_COMPARE(daemon.told, QStringList{"7/2 ended 0"});
        QVERIFY(!mmsc.hasClient());
        QCOMPARE(daemon.sends.count(), 1);
    }
    // With shorter pauses it is due; the attempts before the start count.
    Sending daemon(folder, mmsc.url(), attempts(2));
    mmsc.accept().close();
    QTRY_COMPARE(daemon.sends.count(), 0);
    QCOMPARE(folder.names("out"), QStringList());
}

void TestSendQueue::goesOnWhenTheAnswerWasMissed()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    QString first;
    {
        Sending daemon(folder, mmsc.url());
        daemon.takeNew(folder, 1);
        ScriptedConnection connection = mmsc.accept();
        first = pduIn(connection.readRequest()).getTransactionID();
        connection.answer("200 OK", sendConfirmation(first, 128));
    } // killed before it was read
    Sending daemon(folder, mmsc.url());
    QCOMPARE(confirm(mmsc).getTransactionID(), first);
    QTRY_COMPARE(daemon.sends.count(), 0);
}

void TestSendQueue::whatHasEndedIsOver()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Sending daemon(folder, mmsc.url());
        daemon.takeNew(folder, 1);
        daemon.takeNew(folder, 2);
        (void)confirm(mmsc);
        QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 0"});
        QVERIFY(daemon.sends.abort(kSession, 2));
    }
    Sending daemon(folder, mmsc.url());
    QCOMPARE(daemon.sends.count(), 0);
}

void TestSendQueue::recordWithoutFilesIsKeptAside()
{
    const SpoolFolder folder;
    (void)leaveMessage(folder, {"record"});
    Sending daemon(folder, "http://127.0.0.1:1/");
    QCOMPARE(daemon.sends.count(), 0);
    QCOMPARE(folder.names("out"), QStringList());
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".txt").first()),
             "the message has lost its file\n");
    QCOMPARE(folder.files("kept", ".json").size(), 1);
}

void TestSendQueue::damagedRecordIsKeptAside_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("reason"); // null: it is used all the same

    const QByteArray head = "{\"version\": 1, \"transactionId\": \"W1\", \"taken\": 5";
    QTest::newRow("whole") << head + "}" << QByteArray();
    QTest::newRow("without a transaction id")
        << QByteArray("{\"version\": 1, \"taken\": 5}") << QByteArray("transactionId is missing\n");
    QTest::newRow("with an empty one")
        << QByteArray("{\"version\": 1, \"taken\": 5, \"transactionId\": \"\"}")
        << QByteArray("transactionId is empty\n");
    QTest::newRow("with a number for one")
        << QByteArray("{\"version\": 1, \"taken\": 5, \"transactionId\": 8}")
        << QByteArray("transactionId is no text, or too long\n");
    QTest::newRow("with one that is too long")
        << "{\"version\": 1, \"taken\": 5, \"transactionId\": \"" + QByteArray(9000, 'x') + "\"}"
        << QByteArray("transactionId is no text, or too long\n");
    QTest::newRow("without a time") << QByteArray("{\"version\": 1, \"transactionId\": \"W1\"}")
                                    << QByteArray("taken is missing\n");
    QTest::newRow("attempts below 0") << head
            + ", \"attempts\": -1}" << QByteArray("attempts is no number, or outside its limits\n");
    QTest::newRow("attempts beyond an int")
        << head + ", \"attempts\": 2147483648}"
        << QByteArray("attempts is no number, or outside its limits\n");
    QTest::newRow("half an attempt")
        << head + ", \"attempts\": 0.5}"
        << QByteArray("attempts is no number, or outside its limits\n");
    QTest::newRow("a time beyond all numbers")
        << head + ", \"nextTry\": 1e300}"
        << QByteArray("nextTry is no number, or outside its limits\n");
    QTest::newRow("a source that is none") << head + ", \"source\": 7}" << QByteArray();
    QTest::newRow("a source without a path") << head + ", \"source\": {}}" << QByteArray();
    QTest::newRow("more than is known") << head + ", \"mood\": \"good\"}" << QByteArray();
}

void TestSendQueue::damagedRecordIsKeptAside()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, reason);

    const SpoolFolder folder;
    (void)leaveMessage(folder, {"mail", "pdu", "record"});
    SpoolFolder::write(folder.files("out", ".json").first(), record);
    Sending daemon(folder, "http://127.0.0.1:1/", longPauses());
    QCOMPARE(daemon.sends.count(), reason.isNull() ? 1 : 0);
    QCOMPARE(folder.files("out", ".pdu").size(), reason.isNull() ? 1 : 0);
    QCOMPARE(folder.files("kept", ".pdu").size(), reason.isNull() ? 0 : 1);
    QCOMPARE(folder.files("kept", ".json").size(), reason.isNull() ? 0 : 1);
    if (!reason.isNull()) {
        QCOMPARE(SpoolFolder::read(folder.files("kept", ".txt").first()), reason);
    }
}

void TestSendQueue::damagedRecordDoesNotHoldOthersUp()
{
    const SpoolFolder folder;
    {
        Sending daemon(folder, "http://127.0.0.1:1/", longPauses());
        daemon.takeNew(folder, 1, 1001);
        daemon.takeNew(folder, 2, 1002);
    }
    SpoolFolder::write(folder.files("out", ".json").first(), "damaged");
    ScriptedHttp mmsc;
    Sending daemon(folder, mmsc.url());
    const WMMSMsg message = confirm(mmsc);
    QCOMPARE(message.getMultiParts().subParts()->first().getData().size(), 1002);
    QTRY_COMPARE(daemon.sends.count(), 0);
}

QTEST_GUILESS_MAIN(TestSendQueue)
#include "tst_send_queue.moc"

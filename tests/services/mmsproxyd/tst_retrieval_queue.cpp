// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/retrieval_queue.h"
#include "tests/services/mmsproxyd/mmsc_script.h"
#include "tests/services/mmsproxyd/spool_folder.h"

#include <QtTest/QtTest>

using namespace wmsg::proxy;
using namespace std::chrono_literals;
using Stage = IncomingRecord::Stage;

class TestRetrievalQueue : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { appLogModuleStream = appLogDiscardStream(); }

    void fetchesWhatIsAnnounced();
    void oneAtATimeInOrder();
    void answersWhatItHas();
    void applicationIsKnown();
    void withoutMmscNothingIsAnswered();
    void pushesThatAreRefused_data();
    void pushesThatAreRefused();
    void pushesThatComeOnceAreKeptAside_data() { pushesThatAreRefused_data(); }
    void pushesThatComeOnceAreKeptAside();
    void pushesThatComeOnceAndAreKnown();
    void readReportIsTakenAndNotTold();

    void repeatedNotificationIsNotFetchedAgain();
    void repeatedNotificationIsAnsweredAgain();
    void repeatedNotificationHurriesAFetch();
    void otherNotificationIsAnotherMessage_data();
    void otherNotificationIsAnotherMessage();

    void deferredMessageWaits();
    void deferredMessageIsAskedFor();
    void acknowledgesOnlyWhenThatIsWanted();
    void rejectsWhenItNeverRetrieves();
    void locationThatIsNoneIsKeptAside_data();
    void locationThatIsNoneIsKeptAside();
    void announcedTooLargeIsDeferred();
    void foundTooLargeIsDeferred();
    void askedForAndTooLargeIsAFailure();

    void announcedIsTriedUntilItIsHere_data();
    void announcedIsTriedUntilItIsHere();
    void announcedOutlastsTheSchedule();
    void announcedAndGone_data();
    void announcedAndGone();
    void announcedAndExpired();
    void expiredIsTriedOnce();
    void unreadableIsKeptAside();
    void unreadableAndAskedFor();
    void cutOffIsFetchedOnceMore();
    void cutOffTwiceIsDelivered();
    void cutOffTwiceKeepsTheLonger_data();
    void cutOffTwiceKeepsTheLonger();
    void cutOffAndThenNothing_data();
    void cutOffAndThenNothing();
    void cutOffAndAskedFor();
    void cutOffIsRememberedByTheNextStart();
    void cutOffAndItsFileIsLost();
    void errorStatuses_data();
    void errorStatuses();

    void askedForEndsWithTheSchedule_data();
    void askedForEndsWithTheSchedule();
    void askedForByItsAddress();
    void askedForAndAnnounced();
    void askedForAndHere();
    void refusedUris_data();
    void refusedUris();
    void numberInUseIsRefused();

    void abortsInEachState_data();
    void abortsInEachState();
    void abortLeavesOthersTheirMessage();
    void abortOfWhatIsAnnouncedGoesOn();
    void pausesWhileWaiting();
    void pausesWhileRunning();
    void pausesBetweenAttempts();
    void pausedByAllOrNone();
    void mmscLosesPatienceWithAPause();
    void unknownRequestsAreFalse();
    void sessionThatGoesIsNotTold();
    void sessionThatGoesResumes();
    void tellsProgress();

    void answersAreTriedAgain();
    void answersAreGivenUp_data();
    void answersAreGivenUp();
    void answersAreOwedAfterAStart();

    void reportsWaitForASession();
    void reportsAreTakenOnce();
    void reportsOfOtherFates_data();
    void reportsOfOtherFates();

    void fullDiskRefusesAPush();
    void fullDiskWhileFetchingIsTriedAgain();
    void missingSpoolRefusesAPush();

    void goesOnAfterTheNotification();
    void goesOnInTheMiddleOfAFetch();
    void goesOnBeforeTheRecordOfTheMessage();
    void goesOnAfterTheMessage();
    void goesOnWithWhatWasAskedFor();
    void damagedRecordIsKeptAside_data();
    void damagedRecordIsKeptAside();
};

namespace {

constexpr SessionId kSession = 7;

RetrySchedule attempts(int count)
{
    return RetrySchedule(std::vector<RetrySchedule::Pause>(size_t(count - 1), 1ms));
}

RetrySchedule longPauses()
{
    return RetrySchedule({24h, 24h});
}

struct Options {
    RetrievalMode mode = RetrievalMode::Immediate;
    RetrySchedule schedule = attempts(3);
    bool answers = true;
    qint64 maxIncoming = 1024 * 1024;
};

/// One life of the daemon's receiving half.
struct Receiving {
    Receiving(const SpoolFolder &folder, const ScriptedHttp &mmsc, const Options &options = {})
        : spool(folder.path()), inbox(spool), http({{}, {}, "wmsg-test", {}, 60s, 60s}),
          queue(spool, inbox, http,
                {options.answers ? mmsc.url("/answers") : QString(), options.maxIncoming,
                 options.schedule, options.mode})
    {
        const QString problem = spool.open();
        if (!problem.isEmpty()) {
            qFatal("%s", qPrintable(problem));
        }
        listen();
        inbox.restore();
        queue.start();
    }

    void listen()
    {
        QObject::connect(&queue, &RetrievalQueue::finished,
                         [this](SessionId session, qint32 id, const QString &, qint32 status) {
                             told.append(
                                 QString("%1/%2 ended %3").arg(session).arg(id).arg(status));
                         });
        QObject::connect(&queue, &RetrievalQueue::retrying, [this](SessionId session, qint32 id) {
            told.append(QString("%1/%2 again").arg(session).arg(id));
        });
        QObject::connect(&queue, &RetrievalQueue::progress,
                         [this](SessionId, qint32, qint64 done, qint64 total) {
                             progress.append({done, total});
                         });
        QObject::connect(&queue, &RetrievalQueue::messageReady, [this](MessageId id) {
            told.append("ready");
            ids.append(id);
        });
        QObject::connect(&queue, &RetrievalQueue::reportReady, [this](MessageId id) {
            told.append("report");
            ids.append(id);
        });
        QObject::connect(&queue, &RetrievalQueue::notified,
                         [this](const QString &, const QString &transactionId) {
                             told.append("notified " + transactionId);
                         });
    }

    /// Pushes a notification of a message at that place of the MMSC.
    void announce(const ScriptedHttp &mmsc, const QString &transactionId, const QString &place,
                  quint32 size = 5000)
    {
        QCOMPARE(queue.pushed(notificationOf(transactionId, mmsc.url(place), size)), QString());
    }
    /// The text of the only message that is ready.
    QByteArray text()
    {
        const auto ready = inbox.ready();
        WMMSMsg message;
        if (ready.size() != 1
            || message.construct(spool.path(Spool::Box::In, ready.front(), Spool::Part::Mail), true)
                != MMS_DECODE_OK) {
            return "there is not one message that can be read";
        }
        const QArray<char> data = message.getMultiParts().subParts()->first().getData();
        return data.view().toByteArray();
    }
    /// Hands the only message out, to one that takes it.
    void deliver()
    {
        const auto ready = inbox.ready();
        QCOMPARE(int(ready.size()), 1);
        QString path;
        QCOMPARE(inbox.handOut(ready.front(), path), QString());
        QVERIFY(QFile::remove(path));
        inbox.delivered(ready.front());
    }

    Spool spool;
    Inbox inbox;
    HttpClient http;
    RetrievalQueue queue;
    QStringList told;
    QList<MessageId> ids;
    QList<QPair<qint64, qint64>> progress;
};

/// Serves the next GET, which is for that place.
void serve(ScriptedHttp &mmsc, const QByteArray &place, const QByteArray &pdu)
{
    ScriptedConnection connection = mmsc.accept();
    QCOMPARE(connection.readRequest().line, "GET " + place + " HTTP/1.1");
    answerOnce(connection, "200 OK", pdu);
}

/// Has a message retrieved that says "Hello".
void receiveHello(Receiving &daemon, ScriptedHttp &mmsc)
{
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
}

/// Takes the next answer: its type, its transaction id and its status.
QString takeAnswer(ScriptedHttp &mmsc, const QByteArray &status = "200 OK")
{
    ScriptedConnection connection = mmsc.accept();
    const ScriptedRequest request = connection.readRequest();
    if (request.line != "POST /answers HTTP/1.1") {
        return request.line;
    }
    const WMMSMsg message = pduIn(request);
    answerOnce(connection, status);
    return QString("%1 %2 %3")
        .arg(int(message.getPDUType()), 0, 16)
        .arg(message.getTransactionID())
        .arg(message.getMsgStatus());
}

/// Waits until the daemon has heard of the reply to its answer, so that it owes nothing.
void waitUntilNothingIsOwed(const Receiving &daemon)
{
    QTRY_VERIFY(std::all_of(daemon.inbox.all().begin(), daemon.inbox.all().end(),
                            [](const auto &one) { return one.second.answers.isEmpty(); }));
}

IncomingRecord onlyRecord(const Receiving &daemon)
{
    return daemon.inbox.all().size() == 1 ? daemon.inbox.all().begin()->second : IncomingRecord();
}

/// Changes fields of the only record in a spool that no daemon has.
void changeRecord(const SpoolFolder &folder, const QJsonObject &changes)
{
    const QString path = folder.files("in", ".json").first();
    QJsonObject record = QJsonDocument::fromJson(SpoolFolder::read(path)).object();
    for (auto one = changes.begin(); one != changes.end(); ++one) {
        record.insert(one.key(), one.value());
    }
    SpoolFolder::write(path, QJsonDocument(record).toJson());
}

} // namespace

void TestRetrievalQueue::fetchesWhatIsAnnounced()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QByteArray push = notificationOf("t1", mmsc.url("/m1"));
    QCOMPARE(daemon.queue.pushed(push), QString());
    QCOMPARE(SpoolFolder::read(folder.files("in", ".note").first()).toHex(), push.toHex());
    QCOMPARE(daemon.told, QStringList());

    const QByteArray pdu = retrieveConfirmation("Hello");
    serve(mmsc, "/m1", pdu);
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hello");
    QCOMPARE(SpoolFolder::read(folder.files("in", ".mail").first()).mid(16).toHex(), pdu.toHex());
    QCOMPARE(folder.files("in", ".part"), QStringList());
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    waitUntilNothingIsOwed(daemon);
    daemon.deliver();
    QCOMPARE(folder.names("in").size(), 1); // the memory of it
    QCOMPARE(folder.names("handed"), QStringList());
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::oneAtATimeInOrder()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    for (const char *name : {"/a", "/b", "/c"}) {
        daemon.announce(mmsc, name, name);
    }
    for (const char *name : {"/a", "/b", "/c"}) {
        ScriptedConnection connection = mmsc.accept();
        QCOMPARE(connection.readRequest().line, QByteArray("GET ") + name + " HTTP/1.1");
        QVERIFY(!mmsc.hasClient());
        answerOnce(connection, "200 OK", retrieveConfirmation(name));
    }
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "ready", "ready"}));
    QVERIFY(std::is_sorted(daemon.ids.begin(), daemon.ids.end()));
}

void TestRetrievalQueue::answersWhatItHas()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", retrieveConfirmation("Hello", "of-the-confirmation"));
    ScriptedConnection connection = mmsc.accept();
    const ScriptedRequest request = connection.readRequest();
    QCOMPARE(request.header("Content-Type"), "application/vnd.wap.mms-message");
    QCOMPARE(toHex(request.body), QByteArray("8C 83 98 74 31 00 8D 92 95 81 91 80"));
    // The message is here before the MMSC is told so.
    QCOMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(onlyRecord(daemon).stage, Stage::Ready);
    answerOnce(connection, "204 No Content");
    waitUntilNothingIsOwed(daemon);
}

void TestRetrievalQueue::applicationIsKnown()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
        serve(mmsc, "/m1", retrieveConfirmation("Hello", QString(), "game"));
        QTRY_COMPARE(daemon.told, QStringList{"ready"});
        QCOMPARE(daemon.inbox.appId(daemon.ids.first()), "game");
    }
    const Receiving daemon(folder, mmsc);
    QCOMPARE(daemon.inbox.appId(daemon.inbox.ready().front()), "game");
}

void TestRetrievalQueue::withoutMmscNothingIsAnswered()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    receiveHello(daemon, mmsc);
    QVERIFY(onlyRecord(daemon).answers.isEmpty());
}

void TestRetrievalQueue::pushesThatAreRefused_data()
{
    QTest::addColumn<QByteArray>("pdu");

    const QByteArray whole = notificationOf("t1", "http://127.0.0.1:1/m");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("noise") << QByteArray("hello");
    QTest::newRow("a send request") << QByteArray("\x8C\x80\x98t1\0\x8D\x92\x89\x01\x81", 11);
    QTest::newRow("without a location") << whole.left(whole.indexOf('\x83'));
    QTest::newRow("a transaction id of 10000 characters")
        << notificationOf(QString(10000, 't'), "http://127.0.0.1:1/m");
    QTest::newRow("a location of 10000 characters")
        << notificationOf("t1", "http://127.0.0.1:1/" + QString(10000, 'm'));
    QTest::newRow("too large") << whole + QByteArray(65536, '\0');
    QTest::newRow("a report of a message id of 10000 characters")
        << deliveryReport(QString(10000, 'm'));
}

void TestRetrievalQueue::pushesThatAreRefused()
{
    QFETCH(QByteArray, pdu);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    QVERIFY(!daemon.queue.pushed(pdu).isEmpty());
    QCOMPARE(folder.names("in"), QStringList());
    QCOMPARE(daemon.told, QStringList());
    QVERIFY(daemon.inbox.all().empty());
}

void TestRetrievalQueue::pushesThatComeOnceAreKeptAside()
{
    QFETCH(QByteArray, pdu);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QString reason = daemon.queue.pushed(pdu);
    QCOMPARE(daemon.queue.pushedOnce(pdu), QString());
    QCOMPARE(folder.names("in"), QStringList());
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".note").value(0)), pdu);
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".txt").value(0)), reason.toUtf8() + '\n');
    QCOMPARE(daemon.told, QStringList());
    QVERIFY(daemon.inbox.all().empty());
}

void TestRetrievalQueue::pushesThatComeOnceAndAreKnown()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    QCOMPARE(daemon.queue.pushedOnce(deliveryReport("m1")), QString());
    QCOMPARE(daemon.told, QStringList{"report"});
    QCOMPARE(folder.names("kept"), QStringList());
}

void TestRetrievalQueue::readReportIsTakenAndNotTold()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QByteArray report("\x8C\x88\x8D\x92\x8Bm1\0\x97+1/TYPE=PLMN\0\x89\x01\x81\x9B\x80", 27);
    QCOMPARE(daemon.queue.pushed(report), QString());
    QVERIFY(daemon.inbox.all().empty());
}

void TestRetrievalQueue::repeatedNotificationIsNotFetchedAgain()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    const Options silent{RetrievalMode::Immediate, attempts(3), false};
    {
        Receiving daemon(folder, mmsc, silent);
        daemon.announce(mmsc, "t1", "/m1");
        daemon.announce(mmsc, "t1", "/m1"); // before it is fetched
        serve(mmsc, "/m1", retrieveConfirmation("Hello"));
        QTRY_COMPARE(daemon.told, QStringList{"ready"});
        daemon.announce(mmsc, "t1", "/m1"); // while it waits for somebody
    }
    {
        Receiving daemon(folder, mmsc, silent);
        daemon.announce(mmsc, "t1", "/m1"); // after a start
        daemon.deliver();
        daemon.announce(mmsc, "t1", "/m1"); // when it was delivered
    }
    Receiving daemon(folder, mmsc, silent);
    daemon.announce(mmsc, "t1", "/m1"); // and that was remembered
    daemon.announce(mmsc, "t2", "/m2"); // the next is fetched
    serve(mmsc, "/m2", retrieveConfirmation("Other"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Other");
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::repeatedNotificationIsAnsweredAgain()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
        serve(mmsc, "/m1", retrieveConfirmation("Hello"));
        QCOMPARE(takeAnswer(mmsc), "83 t1 129");
        waitUntilNothingIsOwed(daemon);
        daemon.announce(mmsc, "t1", "/m1");
        daemon.announce(mmsc, "t1", "/m1"); // owed once
        QCOMPARE(takeAnswer(mmsc), "83 t1 129");
        waitUntilNothingIsOwed(daemon);
        daemon.deliver();
        daemon.announce(mmsc, "t1", "/m1");
        QCOMPARE(takeAnswer(mmsc), "83 t1 129");
        waitUntilNothingIsOwed(daemon);
    }
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    waitUntilNothingIsOwed(daemon);
    QCOMPARE(daemon.told, QStringList());
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::repeatedNotificationHurriesAFetch()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, longPauses(), false});
    daemon.announce(mmsc, "t1", "/m1");
    mmsc.accept().close();
    QTRY_COMPARE(onlyRecord(daemon).attempts, 1);
    receiveHello(daemon, mmsc);
}

void TestRetrievalQueue::otherNotificationIsAnotherMessage_data()
{
    QTest::addColumn<QString>("transactionId");
    QTest::addColumn<QString>("place");

    QTest::newRow("another transaction id") << "t2"
                                            << "/m1";
    QTest::newRow("another place") << "t1"
                                   << "/m2";
}

void TestRetrievalQueue::otherNotificationIsAnotherMessage()
{
    QFETCH(QString, transactionId);
    QFETCH(QString, place);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    daemon.announce(mmsc, "t1", "/m1");
    daemon.announce(mmsc, transactionId, place);
    serve(mmsc, "/m1", retrieveConfirmation("one"));
    serve(mmsc, place.toLatin1(), retrieveConfirmation("two"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "ready"}));
}

void TestRetrievalQueue::deferredMessageWaits()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc, {RetrievalMode::Deferred});
        daemon.announce(mmsc, "t1", "/m1");
        QCOMPARE(daemon.told, QStringList{"notified t1"});
        QCOMPARE(takeAnswer(mmsc), "83 t1 131");
        waitUntilNothingIsOwed(daemon);
        daemon.announce(mmsc, "t1", "/m1"); // told once, answered again
        QCOMPARE(takeAnswer(mmsc), "83 t1 131");
        waitUntilNothingIsOwed(daemon);
        QCOMPARE(daemon.told, QStringList{"notified t1"});
    }
    Receiving daemon(folder, mmsc); // also when it would be fetched by now
    const auto announced = daemon.inbox.announced();
    QCOMPARE(int(announced.size()), 1);
    QCOMPARE(announced.front().uri, mmsc.url("/m1"));
    QCOMPARE(announced.front().transactionId, "t1");
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::deferredMessageIsAskedFor()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Deferred});
    daemon.announce(mmsc, "t1", "/m1");
    QCOMPARE(takeAnswer(mmsc), "83 t1 131");
    waitUntilNothingIsOwed(daemon);
    daemon.told.clear();
    daemon.queue.retrieve(kSession, 4, mmsc.url("/m1"));
    QVERIFY(daemon.queue.knows(kSession, 4));
    serve(mmsc, "/m1", retrieveConfirmation("Hello", "r9"));
    QCOMPARE(takeAnswer(mmsc), "85 r9 0");
    QCOMPARE(daemon.told, (QStringList{"ready", "7/4 ended 0"}));
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!daemon.queue.knows(kSession, 4));
    daemon.announce(mmsc, "t1", "/m1");
    QCOMPARE(takeAnswer(mmsc), "83 t1 129"); // by now it is so
}

void TestRetrievalQueue::acknowledgesOnlyWhenThatIsWanted()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 4, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/4 ended 0"}));
    QVERIFY(onlyRecord(daemon).answers.isEmpty());
}

void TestRetrievalQueue::rejectsWhenItNeverRetrieves()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Never});
    daemon.announce(mmsc, "t1", "/m1");
    QCOMPARE(takeAnswer(mmsc), "83 t1 130");
    waitUntilNothingIsOwed(daemon);
    QCOMPARE(daemon.told, QStringList());
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
    QCOMPARE(folder.names("in").size(), 1);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::locationThatIsNoneIsKeptAside_data()
{
    QTest::addColumn<QString>("location");

    QTest::newRow("a word") << "here";
    QTest::newRow("a file") << "file:///etc/passwd";
    QTest::newRow("another protocol") << "ftp://127.0.0.1/m1";
    QTest::newRow("no host") << "http:///m1";
    QTest::newRow("no URL") << "http://[1/";
}

void TestRetrievalQueue::locationThatIsNoneIsKeptAside()
{
    QFETCH(QString, location);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QByteArray push = notificationOf("t1", location);
    QCOMPARE(daemon.queue.pushed(push), QString());
    QCOMPARE(takeAnswer(mmsc), "83 t1 132");
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".note").first()).toHex(), push.toHex());
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".txt").first()),
             "the location is no URL of http or https\n");
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
}

void TestRetrievalQueue::announcedTooLargeIsDeferred()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), true, 5000});
    daemon.announce(mmsc, "t1", "/m1", 5001);
    QCOMPARE(daemon.told, QStringList{"notified t1"});
    QCOMPARE(takeAnswer(mmsc), "83 t1 131");
    daemon.announce(mmsc, "t2", "/m2", 5000);
    serve(mmsc, "/m2", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"notified t1", "ready"}));
}

void TestRetrievalQueue::foundTooLargeIsDeferred()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), true, 5000});
        daemon.announce(mmsc, "t1", "/m1", 100); // which was a lie
        serve(mmsc, "/m1", retrieveConfirmation(QByteArray(6000, 'x')));
        QCOMPARE(takeAnswer(mmsc), "83 t1 131");
        QCOMPARE(daemon.told, QStringList{"notified t1"});
        QCOMPARE(folder.files("in", ".part"), QStringList());
        waitUntilNothingIsOwed(daemon);
    }
    // With another limit it can be had.
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation(QByteArray(6000, 'x')));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
}

void TestRetrievalQueue::askedForAndTooLargeIsAFailure()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), true, 5000});
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation(QByteArray(6000, 'x')));
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QCOMPARE(folder.names("in"), QStringList());
}

/// Ways in which a fetch fails and another may succeed. The last column: also when nobody announced
/// the message.
static void addPassingFailures()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("passes");

    const QByteArray empty = "Content-Length: 0\r\nConnection: close\r\n\r\n";
    QTest::newRow("hangs up") << QByteArray() << true;
    QTest::newRow("no HTTP") << QByteArray("hm?\r\n\r\n") << true;
    QTest::newRow("500") << "HTTP/1.1 500 Oops\r\n" + empty << true;
    QTest::newRow("503") << "HTTP/1.1 503 Busy\r\n" + empty << true;
    QTest::newRow("408") << "HTTP/1.1 408 Slow\r\n" + empty << true;
    QTest::newRow("429") << "HTTP/1.1 429 Busy\r\n" + empty << true;
    QTest::newRow("403") << "HTTP/1.1 403 Forbidden\r\n" + empty << false;
    QTest::newRow("400") << "HTTP/1.1 400 Bad\r\n" + empty << false;
    QTest::newRow("204") << QByteArray("HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n")
                         << false;
    QTest::newRow("a redirect") << "HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/login\r\n"
            + empty << false;
    QTest::newRow("nothing") << "HTTP/1.1 200 OK\r\n" + empty << true;
    QTest::newRow("a page") << QByteArray(
        "HTTP/1.1 200 OK\r\nContent-Length: 6\r\nConnection: close\r\n\r\n<html>")
                            << true;
    QTest::newRow("cut in the middle")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n\x8C\x84\x8D\x92") << true;
}

static void failOnce(ScriptedHttp &mmsc, const QByteArray &answer)
{
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    connection.send(answer);
    connection.close();
}

void TestRetrievalQueue::announcedIsTriedUntilItIsHere_data()
{
    addPassingFailures();
}

void TestRetrievalQueue::announcedIsTriedUntilItIsHere()
{
    QFETCH(QByteArray, answer);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    failOnce(mmsc, answer);
    failOnce(mmsc, answer);
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QCOMPARE(takeAnswer(mmsc), "83 t1 129"); // and none before
    QCOMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hello");
    QCOMPARE(folder.names("kept"), QStringList());
}

void TestRetrievalQueue::announcedOutlastsTheSchedule()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(2), false});
    daemon.announce(mmsc, "t1", "/m1");
    for (int n = 0; n < 10; ++n) {
        failOnce(mmsc, QByteArray());
    }
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
}

void TestRetrievalQueue::announcedAndGone_data()
{
    QTest::addColumn<QByteArray>("status");

    QTest::newRow("404") << QByteArray("404 Not Found");
    QTest::newRow("410") << QByteArray("410 Gone");
}

void TestRetrievalQueue::announcedAndGone()
{
    QFETCH(QByteArray, status);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    answerOnce(connection, status);
    QCOMPARE(takeAnswer(mmsc), "83 t1 128");
    QCOMPARE(folder.files("kept", ".note").size(), 1);
    QVERIFY(SpoolFolder::read(folder.files("kept", ".txt").first()).contains(status.left(3)));
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
    QCOMPARE(daemon.told, QStringList());
}

void TestRetrievalQueue::announcedAndExpired()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
    }
    changeRecord(folder, {{"expires", currentTime() - 1000}});
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, longPauses()});
    failOnce(mmsc, QByteArray());
    QCOMPARE(takeAnswer(mmsc), "83 t1 128");
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
    QCOMPARE(daemon.told, QStringList());
}

void TestRetrievalQueue::expiredIsTriedOnce()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
    }
    changeRecord(folder, {{"expires", 1000}}); // a clock may be wrong
    Receiving daemon(folder, mmsc);
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
}

void TestRetrievalQueue::unreadableIsKeptAside()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    const QByteArray cut = retrieveConfirmation("Hello").left(7); // in the middle of the date
    serve(mmsc, "/m1", cut);
    QCOMPARE(takeAnswer(mmsc), "83 t1 132");
    QCOMPARE(daemon.told, QStringList());
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".pdu").first()).toHex(), cut.toHex());
    QCOMPARE(folder.files("kept", ".note").size(), 1);
    QVERIFY(SpoolFolder::read(folder.files("kept", ".txt").first()).size() > 5);
    waitUntilNothingIsOwed(daemon);
    daemon.announce(mmsc, "t1", "/m1");
    QCOMPARE(takeAnswer(mmsc), "83 t1 132"); // and is not fetched again
}

void TestRetrievalQueue::unreadableAndAskedFor()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation("Hello").left(7));
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QCOMPARE(folder.files("kept", ".pdu").size(), 1);
    QVERIFY(daemon.inbox.all().empty());
    QCOMPARE(folder.names("in"), QStringList());
}

namespace {

/// A retrieve confirmation that promises that many bytes of text more than it has.
QByteArray cutConfirmation(const QByteArray &text, int missing = 5,
                           const QString &transactionId = QString())
{
    const QByteArray whole =
        retrieveConfirmation(text + QByteArray(missing, '?'), transactionId, "game");
    return whole.chopped(missing);
}

QString lossOf(const Receiving &daemon)
{
    return onlyRecord(daemon).loss.section(" (", 0, 0);
}

} // namespace

void TestRetrievalQueue::cutOffIsFetchedOnceMore()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QCOMPARE(takeAnswer(mmsc), "83 t1 129"); // and none before
    QCOMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hello");
    QVERIFY(onlyRecord(daemon).loss.isNull());
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::cutOffTwiceIsDelivered()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    QTRY_COMPARE(lossOf(daemon), "part 1 lacks its last 5 bytes");
    QCOMPARE(onlyRecord(daemon).stage, Stage::Announced);
    QCOMPARE(daemon.told, QStringList());
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    QCOMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hel");
    QCOMPARE(daemon.inbox.appId(daemon.ids.first()), "game");
    QCOMPARE(lossOf(daemon), "part 1 lacks its last 5 bytes");
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::cutOffTwiceKeepsTheLonger_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::newRow("the first") << QByteArray("Hello") << QByteArray("Hel");
    QTest::newRow("the second") << QByteArray("Hel") << QByteArray("Hello");
}

void TestRetrievalQueue::cutOffTwiceKeepsTheLonger()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", cutConfirmation(first, 9 - int(first.size())));
    serve(mmsc, "/m1", cutConfirmation(second, 9 - int(second.size())));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hello");
    QCOMPARE(lossOf(daemon), "part 1 lacks its last 4 bytes");
}

void TestRetrievalQueue::cutOffAndThenNothing_data()
{
    QTest::addColumn<QByteArray>("answer");
    const QByteArray empty = "Content-Length: 0\r\nConnection: close\r\n\r\n";
    QTest::newRow("hangs up") << QByteArray();
    QTest::newRow("404") << "HTTP/1.1 404 Not Found\r\n" + empty;
    QTest::newRow("500") << "HTTP/1.1 500 Oops\r\n" + empty;
    QTest::newRow("a page") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n<html>");
    QTest::newRow("an error of the MMSC")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n\x8C\x84\x8D\x92\x99\xE2");
    QTest::newRow("cut in the middle")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n\x8C\x84\x8D\x92");
}

void TestRetrievalQueue::cutOffAndThenNothing()
{
    QFETCH(QByteArray, answer);
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    failOnce(mmsc, answer);
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    QCOMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hel");
    QCOMPARE(daemon.inbox.appId(daemon.ids.first()), "game");
    QCOMPARE(lossOf(daemon), "part 1 lacks its last 5 bytes");
    QCOMPARE(folder.names("kept"), QStringList());
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::cutOffAndAskedFor()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 4, mmsc.url("/m1"));
    serve(mmsc, "/m1", cutConfirmation("Hel", 5, "r1"));
    failOnce(mmsc, QByteArray());
    QCOMPARE(takeAnswer(mmsc), "85 r1 0");
    QCOMPARE(daemon.told, (QStringList{"7/4 again", "ready", "7/4 ended 0"}));
    QCOMPARE(daemon.text(), "Hel");
}

void TestRetrievalQueue::cutOffIsRememberedByTheNextStart()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    const Options silent{RetrievalMode::Immediate, attempts(3), false};
    {
        Receiving daemon(folder, mmsc, silent);
        daemon.announce(mmsc, "t1", "/m1");
        serve(mmsc, "/m1", cutConfirmation("Hel"));
        QTRY_VERIFY(!onlyRecord(daemon).loss.isNull());
    }
    {
        Receiving daemon(folder, mmsc, silent);
        serve(mmsc, "/m1", cutConfirmation("Hel")); // neither left out, nor done once more
        QTRY_COMPARE(daemon.told, QStringList{"ready"});
    }
    const Receiving daemon(folder, mmsc, silent);
    QCOMPARE(int(daemon.inbox.ready().size()), 1);
    QCOMPARE(lossOf(daemon), "part 1 lacks its last 5 bytes");
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::cutOffAndItsFileIsLost()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    QTRY_VERIFY(!onlyRecord(daemon).loss.isNull());
    QVERIFY(QFile::remove(folder.files("in", ".mail").first()));
    failOnce(mmsc, QByteArray());
    serve(mmsc, "/m1", cutConfirmation("Hel"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hel");
}

void TestRetrievalQueue::errorStatuses_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<bool>("passes");
    QTest::newRow("transient") << QByteArray("\x99\xC0\x9A later\0", 9) << true;
    QTest::newRow("the last transient") << QByteArray("\x99\xDF") << true;
    QTest::newRow("permanent") << QByteArray("\x99\xE0\x9A gone\0", 8) << false;
    QTest::newRow("the last permanent") << QByteArray("\x99\xFF") << false;
}

/// What stands in place of a message is never one, and is asked for again as it says.
void TestRetrievalQueue::errorStatuses()
{
    QFETCH(QByteArray, fields);
    QFETCH(bool, passes);
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", "\x8C\x84\x8D\x92" + fields);
    if (passes) {
        serve(mmsc, "/m1", retrieveConfirmation("Hello"));
        QCOMPARE(takeAnswer(mmsc), "83 t1 129");
        QCOMPARE(daemon.told, QStringList{"ready"});
        return;
    }
    QCOMPARE(takeAnswer(mmsc), "83 t1 128");
    QCOMPARE(daemon.told, QStringList());
    const QByteArray reason = SpoolFolder::read(folder.files("kept", ".txt").value(0));
    const QByteArray status = QByteArray::number(uchar(fields[1]));
    QVERIFY2(reason.startsWith("the MMSC has no message, retrieve status " + status), reason);
    QCOMPARE(reason.contains(": gone"), fields.contains("gone"));
    QCOMPARE(onlyRecord(daemon).stage, Stage::Over);
}

void TestRetrievalQueue::askedForEndsWithTheSchedule_data()
{
    addPassingFailures();
}

void TestRetrievalQueue::askedForEndsWithTheSchedule()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, passes);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Deferred, attempts(3), false});
    daemon.announce(mmsc, "t1", "/m1");
    daemon.told.clear();
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    failOnce(mmsc, answer);
    if (passes) {
        failOnce(mmsc, answer);
        failOnce(mmsc, answer);
        QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "7/1 again", "7/1 ended 19"}));
    } else {
        QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 19"});
    }
    // It waits to be asked for again.
    QCOMPARE(onlyRecord(daemon).stage, Stage::Deferred);
    daemon.told.clear();
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/2 ended 0"}));
}

void TestRetrievalQueue::askedForByItsAddress()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/nobody-told-us"));
    failOnce(mmsc, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    QTRY_COMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QCOMPARE(folder.names("in"), QStringList());
    QCOMPARE(folder.names("kept"), QStringList());
    daemon.queue.retrieve(kSession, 1, mmsc.url("/nobody-told-us"));
    serve(mmsc, "/nobody-told-us", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 19", "ready", "7/1 ended 0"}));
    daemon.deliver();
    // What a session asks for by its address it gets again.
    daemon.queue.retrieve(kSession, 1, mmsc.url("/nobody-told-us"));
    serve(mmsc, "/nobody-told-us", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told.size(), 5);
}

void TestRetrievalQueue::askedForAndAnnounced()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, longPauses(), true});
    daemon.announce(mmsc, "t1", "/m1");
    mmsc.accept().close();
    QTRY_COMPARE(onlyRecord(daemon).attempts, 1);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1")); // does not wait for the pause
    serve(mmsc, "/m1", retrieveConfirmation("Hello", "r1"));
    QCOMPARE(takeAnswer(mmsc), "83 t1 129"); // the notification is answered, and that is all
    QCOMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::askedForAndHere()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    receiveHello(daemon, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    QCOMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::refusedUris_data()
{
    QTest::addColumn<QString>("uri");

    QTest::newRow("empty") << "";
    QTest::newRow("a path") << "/etc/passwd";
    QTest::newRow("a file") << "file:///etc/passwd";
    QTest::newRow("another protocol") << "ftp://127.0.0.1/m1";
    QTest::newRow("no host") << "http://";
    QTest::newRow("a port that is none") << "http://127.0.0.1:99999999/";
    QTest::newRow("too long") << "http://127.0.0.1/" + QString(9000, 'x');
    QTest::newRow("half a character") << QString("http://127.0.0.1/") + QChar(0xD800);
}

void TestRetrievalQueue::refusedUris()
{
    QFETCH(QString, uri);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, uri);
    QCOMPARE(daemon.told, QStringList{"7/1 ended 15"});
    QCOMPARE(folder.names("in"), QStringList());
    QVERIFY(!daemon.queue.knows(kSession, 1));
}

void TestRetrievalQueue::numberInUseIsRefused()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m2"));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 15"});
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 15", "ready", "7/1 ended 0"}));
}

void TestRetrievalQueue::abortsInEachState_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("isAnnounced");

    for (const char *state : {"waiting", "running", "paused", "paused and running", "retrying"}) {
        QTest::newRow(qPrintable(QString("%1, deferred").arg(state))) << state << true;
        QTest::newRow(qPrintable(QString("%1, by its address").arg(state))) << state << false;
    }
}

void TestRetrievalQueue::abortsInEachState()
{
    QFETCH(QString, state);
    QFETCH(bool, isAnnounced);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Deferred, longPauses(), false});
    if (isAnnounced) {
        daemon.announce(mmsc, "t1", "/m1");
    }
    daemon.told.clear();
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    std::unique_ptr<ScriptedConnection> connection;
    if (state == "paused") {
        QVERIFY(daemon.queue.pause(kSession, 1));
    }
    if (state == "retrying") {
        failOnce(mmsc, QByteArray());
        QTRY_COMPARE(daemon.told, QStringList{"7/1 again"});
        daemon.told.clear();
    }
    if (state.endsWith("running")) {
        connection = std::make_unique<ScriptedConnection>(mmsc.accept());
        (void)connection->readRequest();
        connection->send("HTTP/1.1 200 OK\r\nContent-Length: 6000\r\n\r\n\x8C\x84");
        if (state.startsWith("paused")) {
            QVERIFY(daemon.queue.pause(kSession, 1));
        }
    }
    QVERIFY(daemon.queue.abort(kSession, 1));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"}); // before it returned
    QVERIFY(!daemon.queue.abort(kSession, 1));
    QVERIFY(!daemon.queue.knows(kSession, 1));
    if (connection) {
        QVERIFY(connection->waitForEnd());
    }
    QCOMPARE(onlyRecord(daemon).stage, isAnnounced ? Stage::Deferred : Stage::Announced);
    QCOMPARE(int(daemon.inbox.all().size()), isAnnounced ? 1 : 0);
    QCOMPARE(folder.names("in").size(), isAnnounced ? 2 : 0); // record and notification
    // The way is free for others.
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m2"));
    serve(mmsc, "/m2", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 19", "ready", "7/2 ended 0"}));
}

void TestRetrievalQueue::abortLeavesOthersTheirMessage()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(1, 0, mmsc.url("/m1"));
    daemon.queue.retrieve(2, 0, mmsc.url("/m1"));
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    QVERIFY(daemon.queue.abort(1, 0));
    answerOnce(connection, "200 OK", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"1/0 ended 19", "ready", "2/0 ended 0"}));
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::abortOfWhatIsAnnouncedGoesOn()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    daemon.announce(mmsc, "t1", "/m1");
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    QVERIFY(daemon.queue.abort(kSession, 1));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 ended 19", "ready"}));
}

void TestRetrievalQueue::pausesWhileWaiting()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m2"));
    QVERIFY(daemon.queue.pause(kSession, 1));
    QVERIFY(daemon.queue.pause(kSession, 1)); // twice is fine
    serve(mmsc, "/m2", retrieveConfirmation("two"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/2 ended 0"}));
    QVERIFY(!mmsc.hasClient());
    QVERIFY(daemon.queue.resume(kSession, 1));
    QVERIFY(daemon.queue.resume(kSession, 1));
    serve(mmsc, "/m1", retrieveConfirmation("one"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/2 ended 0", "ready", "7/1 ended 0"}));
}

void TestRetrievalQueue::pausesWhileRunning()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QByteArray pdu = retrieveConfirmation(QByteArray(20000, 'x'));
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    connection.send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
                    + QByteArray::number(pdu.size()) + "\r\n\r\n" + pdu.left(10000));
    QTRY_VERIFY(!daemon.progress.isEmpty());
    QVERIFY(daemon.queue.pause(kSession, 1));
    connection.send(pdu.mid(10000));
    connection.close();
    // Others pass meanwhile, and it does not end.
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m2"));
    serve(mmsc, "/m2", retrieveConfirmation("two"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/2 ended 0"}));
    QVERIFY(daemon.queue.resume(kSession, 1));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/2 ended 0", "ready", "7/1 ended 0"}));
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::pausesBetweenAttempts()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    QObject::connect(&daemon.queue, &RetrievalQueue::retrying, &daemon.queue,
                     [&] { QVERIFY(daemon.queue.pause(kSession, 1)); });
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    failOnce(mmsc, QByteArray());
    QTRY_COMPARE(daemon.told, QStringList{"7/1 again"});
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m2"));
    serve(mmsc, "/m2", retrieveConfirmation("two"));
    QTRY_COMPARE(daemon.told, (QStringList{"7/1 again", "ready", "7/2 ended 0"}));
    QVERIFY(daemon.queue.resume(kSession, 1));
    serve(mmsc, "/m1", retrieveConfirmation("one"));
    QTRY_COMPARE(daemon.told.size(), 5);
}

void TestRetrievalQueue::pausedByAllOrNone()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(1, 0, mmsc.url("/m1"));
    QVERIFY(daemon.queue.pause(1, 0));
    daemon.queue.retrieve(2, 0, mmsc.url("/m1"));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "1/0 ended 0", "2/0 ended 0"}));
}

void TestRetrievalQueue::mmscLosesPatienceWithAPause()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(1)});
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    QVERIFY(daemon.queue.pause(kSession, 1));
    connection.reset();
    QVERIFY(daemon.queue.resume(kSession, 1));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
}

void TestRetrievalQueue::unknownRequestsAreFalse()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    QVERIFY(!daemon.queue.abort(kSession, 2));
    QVERIFY(!daemon.queue.pause(kSession, 2));
    QVERIFY(!daemon.queue.resume(kSession + 1, 1));
    QVERIFY(!daemon.queue.abort(kSession + 1, 1));
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
    QVERIFY(!daemon.queue.abort(kSession, 1)); // finished
    QVERIFY(!daemon.queue.pause(kSession, 1));
    QVERIFY(!daemon.queue.resume(kSession, 1));
    QCOMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
}

void TestRetrievalQueue::sessionThatGoesIsNotTold()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    daemon.queue.forget(kSession);
    QVERIFY(!daemon.queue.knows(kSession, 1));
    failOnce(mmsc, QByteArray());
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
}

void TestRetrievalQueue::sessionThatGoesResumes()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    daemon.queue.retrieve(kSession, 2, mmsc.url("/m2"));
    QVERIFY(daemon.queue.pause(kSession, 2));
    ScriptedConnection connection = mmsc.accept();
    (void)connection.readRequest();
    QVERIFY(daemon.queue.pause(kSession, 1));
    daemon.queue.forget(kSession);
    answerOnce(connection, "200 OK", retrieveConfirmation("one"));
    serve(mmsc, "/m2", retrieveConfirmation("two"));
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "ready"}));
}

void TestRetrievalQueue::tellsProgress()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    const QByteArray pdu = retrieveConfirmation(QByteArray(300000, 'x'));
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    serve(mmsc, "/m1", pdu);
    QTRY_COMPARE(daemon.told, (QStringList{"ready", "7/1 ended 0"}));
    QCOMPARE(daemon.progress.last(), qMakePair(qint64(pdu.size()), qint64(pdu.size())));
    for (int n = 1; n < daemon.progress.size(); ++n) {
        QVERIFY(daemon.progress[n - 1].first < daemon.progress[n].first);
    }
}

void TestRetrievalQueue::answersAreTriedAgain()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    failOnce(mmsc, QByteArray());
    QCOMPARE(takeAnswer(mmsc, "503 Busy"), "83 t1 129");
    QCOMPARE(onlyRecord(daemon).answers.size(), 1);
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    waitUntilNothingIsOwed(daemon);
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::answersAreGivenUp_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("posted");

    QTest::newRow("by the schedule") << QByteArray("500 Oops") << 3;
    QTest::newRow("when there is no use") << QByteArray("403 Forbidden") << 1;
}

void TestRetrievalQueue::answersAreGivenUp()
{
    QFETCH(QByteArray, status);
    QFETCH(int, posted);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    daemon.announce(mmsc, "t1", "/m1");
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    for (int n = 0; n < posted; ++n) {
        QCOMPARE(takeAnswer(mmsc, status), "83 t1 129");
    }
    waitUntilNothingIsOwed(daemon);
    QCOMPARE(daemon.told, QStringList{"ready"}); // whatever becomes of its answer
    QVERIFY(!mmsc.hasClient());
    daemon.announce(mmsc, "t1", "/m1"); // the MMSC asks again, and is answered
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
}

void TestRetrievalQueue::answersAreOwedAfterAStart()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        receiveHello(daemon, mmsc);
        daemon.deliver();
        ScriptedConnection connection = mmsc.accept();
        (void)connection.readRequest();
    }
    Receiving daemon(folder, mmsc);
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    waitUntilNothingIsOwed(daemon);
}

void TestRetrievalQueue::reportsWaitForASession()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        QCOMPARE(daemon.queue.pushed(deliveryReport("m1")), QString());
        QCOMPARE(daemon.told, QStringList{"report"});
    }
    {
        Receiving daemon(folder, mmsc);
        const auto reports = daemon.inbox.reports();
        QCOMPARE(int(reports.size()), 1);
        const Inbox::Report report = daemon.inbox.report(reports.front());
        QCOMPARE(report.messageId, "m1");
        QCOMPARE(report.to, "+4912345");
        QCOMPARE(report.date, QDateTime::fromSecsSinceEpoch(1700000000));
        QVERIFY(daemon.inbox.ready().empty());
        daemon.inbox.reportTold(reports.front());
        QVERIFY(daemon.inbox.reports().empty());
    }
    const Receiving daemon(folder, mmsc);
    QVERIFY(daemon.inbox.reports().empty());
}

void TestRetrievalQueue::reportsAreTakenOnce()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    QCOMPARE(daemon.queue.pushed(deliveryReport("m1")), QString());
    QCOMPARE(daemon.queue.pushed(deliveryReport("m1")), QString());
    daemon.inbox.reportTold(daemon.ids.first());
    QCOMPARE(daemon.queue.pushed(deliveryReport("m1")), QString());
    QCOMPARE(daemon.told, QStringList{"report"});
    QCOMPARE(daemon.queue.pushed(deliveryReport("m2")), QString());
    QCOMPARE(daemon.queue.pushed(deliveryReport("m1", 129, 1700000001)), QString());
    QCOMPARE(daemon.told, (QStringList{"report", "report", "report"}));
}

void TestRetrievalQueue::reportsOfOtherFates_data()
{
    QTest::addColumn<int>("status");

    QTest::newRow("expired") << 128;
    QTest::newRow("rejected") << 130;
    QTest::newRow("deferred") << 131;
    QTest::newRow("unrecognised") << 132;
    QTest::newRow("unreachable") << 135;
}

void TestRetrievalQueue::reportsOfOtherFates()
{
    QFETCH(int, status);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    // Taken, or it would be pushed for ever; the event says "delivered", which is not so.
    QCOMPARE(daemon.queue.pushed(deliveryReport("m1", status)), QString());
    QCOMPARE(daemon.told, QStringList());
    QVERIFY(daemon.inbox.reports().empty());
}

void TestRetrievalQueue::fullDiskRefusesAPush()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(3), false});
    const QByteArray push = notificationOf("t1", mmsc.url("/m1"));
    for (const rlim_t room : {rlim_t(0), rlim_t(push.size())}) { // nothing fits, the record not
        const FullDisk full(room);
        const QString problem = daemon.queue.pushed(push);
        QVERIFY2(problem.endsWith("File too large"), qPrintable(problem));
        QVERIFY(!daemon.queue.pushed(deliveryReport("m1")).isEmpty());
        QVERIFY(!daemon.queue.pushedOnce(deliveryReport("m1")).isEmpty());
    }
    {
        const FullDisk full;
        QVERIFY(!daemon.queue.pushedOnce("no push").isEmpty());
    }
    QCOMPARE(folder.names("in"), QStringList());
    QCOMPARE(folder.names("kept"), QStringList());
    QVERIFY(daemon.inbox.all().empty());
    QCOMPARE(daemon.told, QStringList());
    QCOMPARE(daemon.queue.pushed(push), QString()); // there is room again
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
}

void TestRetrievalQueue::fullDiskWhileFetchingIsTriedAgain()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc, {RetrievalMode::Immediate, attempts(9), false});
    daemon.announce(mmsc, "t1", "/m1");
    {
        const FullDisk full(10000); // records fit
        serve(mmsc, "/m1", retrieveConfirmation(QByteArray(20000, 'x')));
        QTRY_COMPARE(onlyRecord(daemon).attempts, 1);
    }
    QCOMPARE(daemon.told, QStringList());
    serve(mmsc, "/m1", retrieveConfirmation(QByteArray(20000, 'x')));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), QByteArray(20000, 'x'));
}

void TestRetrievalQueue::missingSpoolRefusesAPush()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    Receiving daemon(folder, mmsc);
    QVERIFY(QDir(folder.path()).removeRecursively());
    QVERIFY(!daemon.queue.pushed(notificationOf("t1", mmsc.url("/m1"))).isEmpty());
    QVERIFY(!daemon.queue.pushed(deliveryReport("m1")).isEmpty());
    QVERIFY(!daemon.queue.pushedOnce("no push").isEmpty());
    daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
    QCOMPARE(daemon.told, QStringList{"7/1 ended 19"});
    QVERIFY(daemon.inbox.all().empty());
}

void TestRetrievalQueue::goesOnAfterTheNotification()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
    }
    Receiving daemon(folder, mmsc);
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QCOMPARE(takeAnswer(mmsc), "83 t1 129");
    QCOMPARE(daemon.told, QStringList{"ready"});
}

void TestRetrievalQueue::goesOnInTheMiddleOfAFetch()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    const QByteArray pdu = retrieveConfirmation(QByteArray(50000, 'x'));
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
        ScriptedConnection connection = mmsc.accept();
        (void)connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(pdu.size())
                        + "\r\n\r\n" + pdu.left(30000));
        const auto part = [&] {
            return folder.files("in", ".part").value(0);
        };
        QTRY_VERIFY(QFileInfo(part()).size() > 1000);
    }
    Receiving daemon(folder, mmsc);
    serve(mmsc, "/m1", pdu);
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), QByteArray(50000, 'x'));
}

void TestRetrievalQueue::goesOnBeforeTheRecordOfTheMessage()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.announce(mmsc, "t1", "/m1");
    }
    // The mail file is there; that it is the message nobody has written down.
    SpoolFolder::write(folder.files("in", ".note").first().chopped(5) + ".mail", "half a mess");
    Receiving daemon(folder, mmsc);
    QVERIFY(daemon.inbox.ready().empty());
    serve(mmsc, "/m1", retrieveConfirmation("Hello"));
    QTRY_COMPARE(daemon.told, QStringList{"ready"});
    QCOMPARE(daemon.text(), "Hello");
}

void TestRetrievalQueue::goesOnAfterTheMessage()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        receiveHello(daemon, mmsc);
    }
    Receiving daemon(folder, mmsc);
    QCOMPARE(takeAnswer(mmsc), "83 t1 129"); // which it had not sent
    QCOMPARE(daemon.text(), "Hello");
    QCOMPARE(daemon.told, QStringList()); // the inbox is asked for what was there
    QVERIFY(!mmsc.hasClient());
}

void TestRetrievalQueue::goesOnWithWhatWasAskedFor()
{
    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc);
        daemon.queue.retrieve(kSession, 1, mmsc.url("/m1"));
        QVERIFY(daemon.queue.pause(kSession, 1));
    }
    {
        Receiving daemon(folder, mmsc, {RetrievalMode::Deferred});
        QVERIFY(!daemon.queue.knows(kSession, 1));
        serve(mmsc, "/m1", retrieveConfirmation("Hello", "r1"));
        QCOMPARE(takeAnswer(mmsc), "85 r1 0");
        QCOMPARE(daemon.told, QStringList{"ready"});
    }
}

void TestRetrievalQueue::damagedRecordIsKeptAside_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("reason");

    const QByteArray head = "{\"version\": 1, \"kind\": \"message\", \"location\": \"http://a/b\"";
    const QByteArray whole = head + ", \"stage\": \"deferred\"";
    QTest::newRow("without a kind") << QByteArray("{\"version\": 1, \"stage\": \"over\"}")
                                    << QByteArray("kind is none of the words that it may be\n");
    QTest::newRow("without a stage")
        << head + "}" << QByteArray("stage is none of the words that it may be\n");
    QTest::newRow("of an unknown stage") << head
            + ", \"stage\": \"lost\"}" << QByteArray("stage is none of the words that it may be\n");
    QTest::newRow("of a stage that is a number")
        << head + ", \"stage\": 1}" << QByteArray("stage is no text, or too long\n");
    QTest::newRow("announced without a location")
        << QByteArray("{\"version\": 1, \"kind\": \"message\", \"stage\": \"announced\"}")
        << QByteArray("location is missing\n");
    QTest::newRow("a response beyond a byte")
        << whole + ", \"response\": 256}"
        << QByteArray("response is no number, or outside its limits\n");
    QTest::newRow("a time below 0") << whole + ", \"expires\": -1}"
                                    << QByteArray("expires is no number, or outside its limits\n");
    QTest::newRow("a time that adds up to nonsense")
        << whole + ", \"nextTry\": 9223372036854775807}"
        << QByteArray("nextTry is no number, or outside its limits\n");
    QTest::newRow("answers that are no list")
        << whole + ", \"answers\": {}}" << QByteArray("answers is no list, or too long\n");
    QTest::newRow("an answer that is none")
        << whole + ", \"answers\": [7]}"
        << QByteArray("answers: kind is none of the words that it may be\n");
    QTest::newRow("an answer with a status beyond a byte")
        << whole + ", \"answers\": [{\"kind\": \"acknowledge\", \"status\": 999}]}"
        << QByteArray("answers: status is no number, or outside its limits\n");
    QTest::newRow("handed to a name that is none")
        << whole + ", \"handed\": [5]}" << QByteArray("handed is no list of texts, or too long\n");
    QTest::newRow("handed to another folder")
        << whole + ", \"handed\": [\"../out/x\"]}"
        << QByteArray("handed names what is no file of the folder\n");
    QTest::newRow("handed to the folder itself")
        << whole + ", \"handed\": [\"..\"]}"
        << QByteArray("handed names what is no file of the folder\n");
    QTest::newRow("handed to nothing") << whole
            + ", \"handed\": [\"\"]}" << QByteArray("handed names what is no file of the folder\n");
}

void TestRetrievalQueue::damagedRecordIsKeptAside()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, reason);

    const SpoolFolder folder;
    ScriptedHttp mmsc;
    {
        Receiving daemon(folder, mmsc, {RetrievalMode::Deferred, attempts(3), false});
        daemon.announce(mmsc, "t1", "/m1");
        daemon.announce(mmsc, "t2", "/m2");
    }
    SpoolFolder::write(folder.files("in", ".json").first(), record);
    const Receiving daemon(folder, mmsc);
    QCOMPARE(onlyRecord(daemon).transactionId, "t2");
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".txt").value(0)), reason);
    QCOMPARE(SpoolFolder::read(folder.files("kept", ".json").value(0)), record);
    QCOMPARE(folder.files("kept", ".note").size(), 1);
}

QTEST_GUILESS_MAIN(TestRetrievalQueue)
#include "tst_retrieval_queue.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/push_records.h"
#include "services/mmsproxyd/proxy_daemon.h"
#include "tests/services/mmsproxyd/mmsc_script.h"
#include "tests/services/mmsproxyd/spool_folder.h"
#include "tests/support/session_peer.h"
#include "tests/support/telephony_peer.h"

#include <QtTest/QtTest>

#include <platform/applog/applog.h>

using namespace std::chrono_literals;
using namespace wmsg::proxy;
using wmsg::service::pushRecord;

namespace {

QByteArray notification(const QString &transactionId, const QString &uri)
{
    return notificationOf(transactionId, uri);
}

/// A record of the telephony service: this body, to the port of pushes.
QByteArray shortMessage(quint64 id, const QByteArray &body)
{
    wmsg::telephony::Message message;
    message.id = id;
    message.coding = wmsg::telephony::Coding::Binary;
    message.hasPorts = true;
    message.destinationPort = 2948;
    message.body = body;
    return toFrame(message);
}

QByteArray message(const QString &appId = QString())
{
    return retrieveConfirmation("hello", QString(), appId);
}

} // namespace

/// The whole daemon in the thread of the test, with sessions, pushers and an MMSC made of bytes.
class TestProxyDaemon : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        appLogModuleStream = appLogDiscardStream();
        QLoggingCategory::setFilterRules("wmsg.*.info=false");
    }
    void init();
    void cleanup() { stop(); }

    // What each request ends with.
    void aSendEndsWithTheResponseStatus_data();
    void aSendEndsWithTheResponseStatus();
    void aSendTellsOfItsProgress();
    void aSendThatFailsForGood_data();
    void aSendThatFailsForGood();
    void aSendIsTriedAgain();
    void aSendWithoutAnMmsc();
    void refusedPathsOfSends_data();
    void refusedPathsOfSends();
    void aRequestIdThatIsInUse();
    void registrations();
    void retrieves();
    void retrievesThatFail_data();
    void retrievesThatFail();
    void abortsASendThatRuns();
    void abortsASendThatWaits();
    void abortsARetrieve();
    void pausesAndResumesASend();
    void pausesAndResumesASendThatWaits();
    void pausesAndResumesARetrieve();
    void requestsThatAreUnknownOrFinished();
    void requestsAreThoseOfOneSession();
    void aSessionThatGoesLeavesItsSends();

    // What comes in.
    void aPushedMessageIsDelivered();
    void aShortMessageIsAPush();
    void aShortMessageThatIsNoPushIsKeptAside();
    void aShortMessageThatCannotBeKeptStays();
    void aPushedMessageWaitsForItsApplication();
    void aPushThatIsRepeatedIsDeliveredOnce();
    void aDeferredMessageIsAnnouncedAndAskedFor();
    void aDeliveryReportIsTold();
    void settingsAreAnswered_data();
    void settingsAreAnswered();

    // Starting, stopping, and standing still.
    void whatIsNotDeliveredSurvivesANewStart();
    void whatIsNotSentSurvivesANewStart();
    void aSecondDaemonIsRefused();
    void aSpoolThatCannotBeIsRefused_data();
    void aSpoolThatCannotBeIsRefused();
    void aLostSpoolIsToldAndNoEnd();
    void aFullDiskIsToldAndNoEnd();
    void nothingWakesAnIdleDaemon();

private:
    QString at(const QString &name) const { return m_folder->outside(name); }
    QString letter(const QString &name = "letter", int size = 2000)
    {
        writeMailFile(at(name), size);
        return at(name);
    }
    void start();
    void stop() { m_daemon = nullptr; }
    /// Takes the request of a daemon that posts a message, and confirms it with this status.
    void confirm(int status);
    void push(const QByteArray &pdu);
    /// Starts the daemon anew as a client of this telephony service.
    void startWith(TelephonyPeer &telephony);
    void serve(const QByteArray &pdu);
    void takeAnswer(int type);
    /// Lets the loop do all that it has to do at once.
    void settle()
    {
        for (int i = 0; i < 100; ++i) {
            QCoreApplication::processEvents();
        }
    }

    std::unique_ptr<SpoolFolder> m_folder;
    std::unique_ptr<ScriptedHttp> m_mmsc;
    Config m_config;
    std::unique_ptr<ProxyDaemon> m_daemon;
};

void TestProxyDaemon::init()
{
    m_folder = std::make_unique<SpoolFolder>();
    m_mmsc = std::make_unique<ScriptedHttp>();
    m_config = Config();
    m_config.proxySocket = at("proxy");
    m_config.settingsSocket = at("settings");
    m_config.pushSocket = at("push");
    m_config.spool = m_folder->path();
    m_config.takesShortMessages = false;
    m_config.mmsc = m_mmsc->url("/mms");
    start();
}

void TestProxyDaemon::start()
{
    m_daemon = nullptr;
    m_daemon = std::make_unique<ProxyDaemon>(m_config);
    QCOMPARE(m_daemon->start(), QString());
}

void TestProxyDaemon::confirm(int status)
{
    ScriptedConnection connection = m_mmsc->accept();
    const ScriptedRequest request = connection.readRequest();
    answerOnce(connection, "200 OK", sendConfirmation(pduIn(request).getTransactionID(), status));
}

void TestProxyDaemon::push(const QByteArray &pdu)
{
    LocalPeer pusher(at("push"));
    QVERIFY(pusher.sendBytes(pushRecord(pdu)));
    pusher.expect("00 0000");
}

void TestProxyDaemon::startWith(TelephonyPeer &telephony)
{
    m_config.takesShortMessages = true;
    start();
    QTRY_COMPARE(telephony.heard().value(1), QString("3: 84 0B 01"));
    telephony.takeHeard();
}

void TestProxyDaemon::serve(const QByteArray &pdu)
{
    ScriptedConnection connection = m_mmsc->accept();
    QVERIFY(connection.readRequest().line.startsWith("GET "));
    answerOnce(connection, "200 OK", pdu);
}

void TestProxyDaemon::takeAnswer(int type)
{
    ScriptedConnection connection = m_mmsc->accept();
    QCOMPARE(int(pduIn(connection.readRequest()).getPDUType()), type);
    answerOnce(connection, "204 No Content");
}

void TestProxyDaemon::aSendEndsWithTheResponseStatus_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("told");
    QTest::newRow("ok") << 128 << 0;
    QTest::newRow("unspecified") << 129 << 129;
    QTest::newRow("denied") << 130 << 130;
    QTest::newRow("network problem, which may pass") << 134 << 134;
    QTest::newRow("lowest that may pass") << 192 << 192;
    QTest::newRow("lowest that stays") << 224 << 224;
    QTest::newRow("highest") << 234 << 234;
}

void TestProxyDaemon::aSendEndsWithTheResponseStatus()
{
    QFETCH(int, status);
    QFETCH(int, told);
    m_config.retryPauses.clear();
    start();
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(7, path);
    ScriptedConnection connection = m_mmsc->accept();
    const ScriptedRequest request = connection.readRequest();
    QCOMPARE(request.line, QByteArray("POST /mms HTTP/1.1"));
    WMMSMsg sent = pduIn(request);
    QCOMPARE(int(sent.getPDUType()), 0x80);
    QVERIFY(!sent.getTransactionID().isEmpty());
    QVERIFY2(!QFile::exists(path), "the file is the daemon's, and copied");
    answerOnce(connection, "200 OK", sendConfirmation(sent.getTransactionID(), status));
    QCOMPARE(session.next(), QString("completed 7 %1 %2").arg(told).arg(path));
    QCOMPARE(m_folder->names("out"), QStringList());
    settle();
    QCOMPARE(toHex(session.waiting()), QByteArray());
}

void TestProxyDaemon::aSendTellsOfItsProgress()
{
    SessionPeer session(at("proxy"));
    session.sendMessage(0, letter("letter", 200000));
    confirm(128);
    QString event = session.next(true);
    QString last;
    qint64 before = 0;
    while (event.startsWith("progress")) {
        const QStringList words = event.split(' ');
        QCOMPARE(words.at(1), QString("0"));
        QVERIFY(words.at(2).toInt() >= before && words.at(2).toInt() <= words.at(3).toInt());
        QVERIFY(words.at(3).toInt() > 200000);
        before = words.at(2).toInt();
        last = words.at(3);
        event = session.next(true);
    }
    QVERIFY(event.startsWith("completed 0 0 "));
    QCOMPARE(QString::number(before), last);
}

void TestProxyDaemon::aSendThatFailsForGood_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("not found") << QByteArray("404 Not Found") << QByteArray() << QByteArray();
    QTest::newRow("redirect") << QByteArray("302 Found") << QByteArray("Location: http://b/\r\n")
                              << QByteArray();
    QTest::newRow("garbage, at last") << QByteArray("200 OK") << QByteArray() << QByteArray("no");
    QTest::newRow("busy, at last") << QByteArray("503 Busy") << QByteArray() << QByteArray();
}

void TestProxyDaemon::aSendThatFailsForGood()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, lines);
    QFETCH(QByteArray, body);
    m_config.retryPauses.clear();
    start();
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(1, path);
    ScriptedConnection connection = m_mmsc->accept();
    connection.readRequest();
    answerOnce(connection, status, body, lines);
    QCOMPARE(session.next(), "completed 1 19 " + path);
    QCOMPARE(m_folder->names("out"), QStringList());
}

void TestProxyDaemon::aSendIsTriedAgain()
{
    m_config.retryPauses = {1ms, 1ms};
    start();
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(1, path);
    ScriptedConnection cut = m_mmsc->accept();
    const QString transactionId = pduIn(cut.readRequest()).getTransactionID();
    cut.reset();
    QCOMPARE(session.next(), QString("status 1 256"));
    ScriptedConnection busy = m_mmsc->accept();
    QCOMPARE(pduIn(busy.readRequest()).getTransactionID(), transactionId);
    answerOnce(busy, "500 Broken");
    QCOMPARE(session.next(), QString("status 1 256"));
    ScriptedConnection fine = m_mmsc->accept();
    QCOMPARE(pduIn(fine.readRequest()).getTransactionID(), transactionId);
    answerOnce(fine, "200 OK", sendConfirmation(transactionId, 128));
    QCOMPARE(session.next(), "completed 1 0 " + path);
}

void TestProxyDaemon::aSendWithoutAnMmsc()
{
    m_config.mmsc.clear();
    m_config.retryPauses.clear();
    start();
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(1, path);
    QCOMPARE(session.next(), "completed 1 19 " + path);
}

void TestProxyDaemon::refusedPathsOfSends_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"missing", "folder", "link", "pipe", "two names", "large", ""}) {
        QTest::newRow(*name ? name : "empty") << name;
    }
}

void TestProxyDaemon::refusedPathsOfSends()
{
    QFETCH(QString, name);
    m_config.maxSize = 50000;
    start();
    const QString path = name.isEmpty() ? QString() : at(name);
    QVERIFY(QDir().mkpath(at("folder")));
    QVERIFY(QFile::link(letter("target"), at("link")));
    QCOMPARE(::mkfifo(qPrintable(at("pipe")), 0600), 0);
    QCOMPARE(::link(qPrintable(letter("other name")), qPrintable(at("two names"))), 0);
    letter("large", 100000);
    SessionPeer session(at("proxy"));
    session.sendMessage(1, path);
    QCOMPARE(session.next(), QString("completed 1 15 " + path).trimmed());
    QCOMPARE(QFile::exists(path), name != "missing" && !name.isEmpty());
    QCOMPARE(m_folder->names("out"), QStringList());
}

void TestProxyDaemon::aRequestIdThatIsInUse()
{
    SessionPeer session(at("proxy"));
    const QString first = letter("first");
    const QString second = letter("second");
    session.sendMessage(1, first);
    session.sendMessage(1, second);
    QCOMPARE(session.next(), "completed 1 15 " + second);
    QVERIFY(QFile::exists(second));
    session.retrieve(1, m_mmsc->url("/x"));
    QCOMPARE(session.next(), "completed 1 15 " + m_mmsc->url("/x"));
    confirm(128);
    QCOMPARE(session.next(), "completed 1 0 " + first);
}

void TestProxyDaemon::registrations()
{
    SessionPeer session(at("proxy"));
    session.registerApp(0, "chess");
    session.registerApp(1, "chess");
    session.registerApp(2, "");
    session.registerApp(3, QString(257, 'x'));
    session.deregisterApp(4, "chess");
    session.deregisterApp(5, "chess");
    QCOMPARE(session.next(6),
             (QStringList{"registered 0 0", "registered 1 0", "registered 2 15", "registered 3 15",
                          "registered 4 0", "registered 5 15"}));
}

void TestProxyDaemon::retrieves()
{
    SessionPeer session(at("proxy"));
    const QString uri = m_mmsc->url("/m1");
    session.retrieve(3, uri);
    serve(message());
    QStringList events{session.next(), session.next()};
    std::sort(events.begin(), events.end());
    QCOMPARE(events.first(), "completed 3 0 " + uri);
    const QString path = events.last().mid(10);
    WMMSMsg got;
    QCOMPARE(got.construct(path, true), quint32(MMS_DECODE_OK));
    QVERIFY(QFile::remove(path));
    QTRY_COMPARE(m_folder->files("in", ".mail"), QStringList());
}

void TestProxyDaemon::retrievesThatFail_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<int>("told");
    QTest::newRow("no URI") << "" << 15;
    QTest::newRow("a path") << "/etc/passwd" << 15;
    QTest::newRow("a file") << "file:///etc/passwd" << 15;
    QTest::newRow("not there") << "mmsc" << 19;
}

void TestProxyDaemon::retrievesThatFail()
{
    QFETCH(QString, uri);
    QFETCH(int, told);
    m_config.retryPauses.clear();
    start();
    SessionPeer session(at("proxy"));
    if (uri == "mmsc") {
        uri = m_mmsc->url("/gone");
    }
    session.retrieve(3, uri);
    if (told == 19) {
        ScriptedConnection connection = m_mmsc->accept();
        connection.readRequest();
        answerOnce(connection, "404 Not Found");
    }
    QCOMPARE(session.next(), QString("completed 3 %1 %2").arg(told).arg(uri).trimmed());
}

void TestProxyDaemon::abortsASendThatRuns()
{
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(0, path);
    ScriptedConnection connection = m_mmsc->accept();
    connection.readRequest();
    session.abort(1, 0);
    QCOMPARE(session.next(2), (QStringList{"completed 0 19 " + path, "completed 1 0"}));
    QVERIFY(connection.waitForEnd());
    QCOMPARE(m_folder->names("out"), QStringList());
}

void TestProxyDaemon::abortsASendThatWaits()
{
    SessionPeer session(at("proxy"));
    const QString first = letter("first");
    const QString second = letter("second");
    session.sendMessage(0, first);
    session.sendMessage(1, second);
    session.abort(2, 1);
    QCOMPARE(session.next(2), (QStringList{"completed 1 19 " + second, "completed 2 0"}));
    confirm(128);
    QCOMPARE(session.next(), "completed 0 0 " + first);
    settle();
    QVERIFY(!m_mmsc->hasClient());
}

void TestProxyDaemon::abortsARetrieve()
{
    SessionPeer session(at("proxy"));
    const QString uri = m_mmsc->url("/m1");
    session.retrieve(0, uri);
    ScriptedConnection connection = m_mmsc->accept();
    connection.readRequest();
    session.abort(1, 0);
    QCOMPARE(session.next(2), (QStringList{"completed 0 19 " + uri, "completed 1 0"}));
    QVERIFY(connection.waitForEnd());
}

void TestProxyDaemon::pausesAndResumesASend()
{
    m_mmsc = std::make_unique<ScriptedHttp>(4096);
    m_config.mmsc = m_mmsc->url("/mms");
    start();
    SessionPeer session(at("proxy"));
    const QString path = letter("letter", 250000);
    session.sendMessage(0, path);
    ScriptedConnection connection = m_mmsc->accept();
    ScriptedRequest request = connection.readHead();
    const qint64 size = request.header("Content-Length").toLongLong();
    request.body = connection.read(1000);
    session.pause(1, 0);
    session.pause(2, 0);
    QCOMPARE(session.next(2), (QStringList{"completed 1 0", "completed 2 0"}));
    session.resume(3, 0);
    session.resume(4, 0);
    QCOMPARE(session.next(2), (QStringList{"completed 3 0", "completed 4 0"}));
    request.body += connection.read(size - 1000);
    answerOnce(connection, "200 OK", sendConfirmation(pduIn(request).getTransactionID(), 128));
    QCOMPARE(session.next(), "completed 0 0 " + path);
}

void TestProxyDaemon::pausesAndResumesASendThatWaits()
{
    SessionPeer session(at("proxy"));
    const QString first = letter("first");
    const QString second = letter("second");
    session.sendMessage(0, first);
    session.sendMessage(1, second);
    session.pause(2, 1);
    QCOMPARE(session.next(), QString("completed 2 0"));
    confirm(128);
    QCOMPARE(session.next(), "completed 0 0 " + first);
    settle();
    QVERIFY2(!m_mmsc->hasClient(), "the other is paused");
    session.resume(3, 1);
    QCOMPARE(session.next(), QString("completed 3 0"));
    confirm(128);
    QCOMPARE(session.next(), "completed 1 0 " + second);
}

void TestProxyDaemon::pausesAndResumesARetrieve()
{
    SessionPeer session(at("proxy"));
    const QString uri = m_mmsc->url("/m1");
    session.retrieve(0, uri);
    ScriptedConnection connection = m_mmsc->accept();
    connection.readRequest();
    session.pause(1, 0);
    QCOMPARE(session.next(), QString("completed 1 0"));
    answerOnce(connection, "200 OK", message());
    settle();
    QCOMPARE(toHex(session.waiting()), QByteArray());
    session.resume(2, 0);
    QStringList events = session.next(3);
    QCOMPARE(events.takeFirst(), QString("completed 2 0"));
    QVERIFY(events.contains("completed 0 0 " + uri));
}

void TestProxyDaemon::requestsThatAreUnknownOrFinished()
{
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(0, path);
    confirm(128);
    QCOMPARE(session.next(), "completed 0 0 " + path);
    int id = 1;
    for (const int target : {0, 5, -1}) {
        session.abort(id, target);
        session.pause(id + 1, target);
        session.resume(id + 2, target);
        QCOMPARE(
            session.next(3),
            (QStringList{QString("completed %1 15").arg(id), QString("completed %1 15").arg(id + 1),
                         QString("completed %1 15").arg(id + 2)}));
        id += 3;
    }
}

void TestProxyDaemon::requestsAreThoseOfOneSession()
{
    SessionPeer session(at("proxy"));
    SessionPeer other(at("proxy"));
    const QString path = letter();
    session.sendMessage(0, path);
    ScriptedConnection connection = m_mmsc->accept();
    const ScriptedRequest request = connection.readRequest();
    other.abort(0, 0);
    QCOMPARE(other.next(), QString("completed 0 15"));
    answerOnce(connection, "200 OK", sendConfirmation(pduIn(request).getTransactionID(), 128));
    QCOMPARE(session.next(), "completed 0 0 " + path);
    QCOMPARE(toHex(other.waiting()), QByteArray());
}

void TestProxyDaemon::aSessionThatGoesLeavesItsSends()
{
    {
        SessionPeer session(at("proxy"));
        session.sendMessage(0, letter("first"));
        session.sendMessage(1, letter("second"));
        session.pause(2, 1);
    }
    confirm(128);
    confirm(128);
    QTRY_COMPARE(m_folder->names("out"), QStringList());
}

void TestProxyDaemon::aPushedMessageIsDelivered()
{
    SessionPeer session(at("proxy"));
    SessionPeer chess(at("proxy"));
    chess.registerApp(0, "chess");
    QCOMPARE(chess.next(), QString("registered 0 0"));
    push(notification("T1", m_mmsc->url("/m1")));
    serve(message());
    const QString path = session.nextMail();
    WMMSMsg got;
    QCOMPARE(got.construct(path, true), quint32(MMS_DECODE_OK));
    takeAnswer(0x83);
    QVERIFY(QFile::remove(path));
    QTRY_COMPARE(m_folder->files("in", ".mail"), QStringList());
    QCOMPARE(toHex(chess.waiting()), QByteArray());
}

void TestProxyDaemon::aShortMessageIsAPush()
{
    TelephonyPeer telephony;
    startWith(telephony);
    SessionPeer session(at("proxy"));
    telephony.send(
        shortMessage(7, fromHex("2A 06 03 BE AF 84") + notification("T1", m_mmsc->url("/m1"))));
    QTRY_COMPARE(telephony.heard(), QStringList{"6: 07 00 00 00 00 00 00 00 01"});
    QCOMPARE(m_folder->files("in", ".note").size(), 1);
    serve(message());
    const QString path = session.nextMail();
    WMMSMsg got;
    QCOMPARE(got.construct(path, true), quint32(MMS_DECODE_OK));
    takeAnswer(0x83);
    QVERIFY(QFile::remove(path));
    stop();
}

void TestProxyDaemon::aShortMessageThatIsNoPushIsKeptAside()
{
    TelephonyPeer telephony;
    startWith(telephony);
    telephony.send(shortMessage(7, fromHex("2A 06 01 AE 02 05 6A 00")));
    QTRY_COMPARE(telephony.heard(), QStringList{"6: 07 00 00 00 00 00 00 00 01"});
    QCOMPARE(SpoolFolder::read(m_folder->files("kept", ".txt").value(0)),
             QByteArray("this is a push of \"application/vnd.wap.sic\" (at offset 3)\n"));
    stop();
}

void TestProxyDaemon::aShortMessageThatCannotBeKeptStays()
{
    TelephonyPeer telephony;
    startWith(telephony);
    const QByteArray push = shortMessage(7, notification("T1", m_mmsc->url("/m1")));
    {
        const FullDisk full;
        telephony.send(push);
        QTRY_COMPARE(telephony.heard().value(0), QString("6: 07 00 00 00 00 00 00 00 00"));
    }
    // It asks to be offered it again.
    QTRY_COMPARE(telephony.heard().value(2), QString("3: 84 0B 01"));
    telephony.takeHeard();
    telephony.send(push);
    QTRY_COMPARE(telephony.heard(), QStringList{"6: 07 00 00 00 00 00 00 00 01"});
    stop();
}

void TestProxyDaemon::aPushedMessageWaitsForItsApplication()
{
    SessionPeer session(at("proxy"));
    push(notification("T1", m_mmsc->url("/m1")));
    serve(message("chess"));
    takeAnswer(0x83);
    SessionPeer chess(at("proxy"));
    chess.registerApp(0, "chess");
    QCOMPARE(chess.next(), QString("registered 0 0"));
    WMMSMsg got;
    QCOMPARE(got.construct(chess.nextMail(), true), quint32(MMS_DECODE_OK));
    QCOMPARE(got.getAppID(), QString("chess"));
    QCOMPARE(toHex(session.waiting()), QByteArray());
}

void TestProxyDaemon::aPushThatIsRepeatedIsDeliveredOnce()
{
    SessionPeer session(at("proxy"));
    const QByteArray pdu = notification("T1", m_mmsc->url("/m1"));
    push(pdu);
    serve(message());
    QVERIFY(QFile::remove(session.nextMail()));
    takeAnswer(0x83);
    QTRY_COMPARE(m_folder->files("in", ".mail"), QStringList());
    push(pdu);
    takeAnswer(0x83);
    settle();
    QVERIFY(!m_mmsc->hasClient());
    QCOMPARE(toHex(session.waiting()), QByteArray());
}

void TestProxyDaemon::aDeferredMessageIsAnnouncedAndAskedFor()
{
    m_config.retrieval = RetrievalMode::Deferred;
    start();
    SessionPeer session(at("proxy"));
    session.registerApp(0, "x");
    session.deregisterApp(1, "x");
    QCOMPARE(session.next(2).size(), 2);
    const QString uri = m_mmsc->url("/m1");
    push(notification("T1", uri));
    QCOMPARE(session.next(), QString("announced %1 T1").arg(uri));
    takeAnswer(0x83);
    SessionPeer late(at("proxy"));
    QCOMPARE(late.next(), QString("announced %1 T1").arg(uri));
    session.retrieve(2, uri);
    serve(message());
    QCOMPARE(session.next(), "completed 2 0 " + uri);
    QVERIFY(QFile::exists(late.nextMail()));
}

void TestProxyDaemon::aDeliveryReportIsTold()
{
    push(deliveryReport("M1"));
    SessionPeer session(at("proxy"));
    QCOMPARE(session.next(), QString("report +4912345 M1"));
    push(deliveryReport("M2"));
    QCOMPARE(session.next(), QString("report +4912345 M2"));
    SessionPeer late(at("proxy"));
    late.abort(0, 0);
    QCOMPARE(late.next(), QString("completed 0 15"));
    settle();
    QCOMPARE(toHex(late.waiting()), QByteArray());
}

void TestProxyDaemon::settingsAreAnswered_data()
{
    QTest::addColumn<QString>("mmsc");
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("told");
    QTest::newRow("the MMSC") << "http://mmsc.example/"
                              << ""
                              << "http://mmsc.example/";
    QTest::newRow("as set") << "http://mmsc.example/"
                            << "http://b/"
                            << "http://b/";
    const QString longest = "http://a/" + QString(51, 'x');
    QTest::newRow("the longest") << longest << "" << longest;
    QTest::newRow("too long to be told") << longest + 'x' << ""
                                         << "";
    QTest::newRow("none") << ""
                          << ""
                          << "";
}

void TestProxyDaemon::settingsAreAnswered()
{
    QFETCH(QString, mmsc);
    QFETCH(QString, uri);
    QFETCH(QString, told);
    m_config.mmsc = mmsc;
    m_config.settingsUri = uri;
    m_config.maxSize = 123456;
    start();
    LocalPeer client(at("settings"));
    QDataStream answer(client.takeAll());
    qint32 size = 0;
    QString got;
    answer >> size >> got;
    QCOMPARE(size, 123456);
    QCOMPARE(got, told);
}

void TestProxyDaemon::whatIsNotDeliveredSurvivesANewStart()
{
    push(notification("T1", m_mmsc->url("/m1")));
    serve(message());
    takeAnswer(0x83);
    QString path;
    {
        SessionPeer session(at("proxy"));
        path = session.nextMail();
        start();
    }
    QVERIFY2(!QFile::exists(path), "it is handed out afresh");
    SessionPeer session(at("proxy"));
    const QString again = session.nextMail();
    QVERIFY(again != path);
    QVERIFY(QFile::remove(again));
    stop(); // at once: it has not seen that yet
    start();
    SessionPeer last(at("proxy"));
    last.abort(0, 0);
    QCOMPARE(last.next(), QString("completed 0 15"));
    settle();
    QCOMPARE(toHex(last.waiting()), QByteArray());
}

void TestProxyDaemon::whatIsNotSentSurvivesANewStart()
{
    SessionPeer session(at("proxy"));
    session.sendMessage(0, letter());
    ScriptedConnection connection = m_mmsc->accept();
    const QString transactionId = pduIn(connection.readRequest()).getTransactionID();
    start();
    ScriptedConnection again = m_mmsc->accept();
    QCOMPARE(pduIn(again.readRequest()).getTransactionID(), transactionId);
    answerOnce(again, "200 OK", sendConfirmation(transactionId, 128));
    QTRY_COMPARE(m_folder->names("out"), QStringList());
}

void TestProxyDaemon::aSecondDaemonIsRefused()
{
    Config other = m_config;
    QVERIFY(ProxyDaemon(other).start().contains(m_folder->path()));
    other.spool = at("other");
    QCOMPARE(ProxyDaemon(other).start(), at("proxy") + " is in use");
    other.proxySocket = at("other proxy");
    QCOMPARE(ProxyDaemon(other).start(), at("settings") + " is in use");
    other.settingsSocket = at("other settings");
    QCOMPARE(ProxyDaemon(other).start(), at("push") + " is in use");
    QVERIFY(!QFile::exists(at("other proxy")));
    SessionPeer session(at("proxy"));
    session.abort(0, 0);
    QCOMPARE(session.next(), QString("completed 0 15"));
}

void TestProxyDaemon::aSpoolThatCannotBeIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a file") << "file";
    QTest::newRow("below a file") << "file/spool";
    QTest::newRow("open to others") << "open";
}

void TestProxyDaemon::aSpoolThatCannotBeIsRefused()
{
    QFETCH(QString, name);
    stop();
    SpoolFolder::write(at("file"), "x");
    QVERIFY(QDir().mkpath(at("open")));
    QCOMPARE(::chmod(qPrintable(at("open")), 0777), 0);
    m_config.spool = at(name);
    const QString problem = ProxyDaemon(m_config).start();
    QVERIFY2(problem.contains(at(name)), qPrintable(problem));
    QVERIFY(!QFile::exists(at("proxy")));
}

void TestProxyDaemon::aLostSpoolIsToldAndNoEnd()
{
    QVERIFY(QDir(m_folder->path()).removeRecursively());
    SessionPeer session(at("proxy"));
    const QString path = letter();
    session.sendMessage(0, path);
    QCOMPARE(session.next(), "completed 0 19 " + path);
    QVERIFY2(QFile::exists(path), "the file of a failed take stays");
    LocalPeer pusher(at("push"));
    QVERIFY(pusher.sendBytes(pushRecord(notification("T1", m_mmsc->url("/m1")))));
    QCOMPARE(int(pusher.take(1).at(0)), 1);
}

void TestProxyDaemon::aFullDiskIsToldAndNoEnd()
{
    SessionPeer session(at("proxy"));
    const QString path = letter();
    {
        FullDisk full;
        session.sendMessage(0, path);
        QCOMPARE(session.next(), "completed 0 19 " + path);
        QVERIFY(QFile::exists(path));
        LocalPeer pusher(at("push"));
        QVERIFY(pusher.sendBytes(pushRecord(notification("T1", m_mmsc->url("/m1")))));
        QCOMPARE(int(pusher.take(1).at(0)), 1);
    }
    session.sendMessage(1, path);
    confirm(128);
    QCOMPARE(session.next(), "completed 1 0 " + path);
}

void TestProxyDaemon::nothingWakesAnIdleDaemon()
{
    SessionPeer session(at("proxy"));
    session.sendMessage(0, letter());
    confirm(128);
    QVERIFY(session.next().startsWith("completed 0 0 "));
    push(notification("T1", m_mmsc->url("/m1")));
    serve(message());
    QVERIFY(QFile::remove(session.nextMail()));
    takeAnswer(0x83);
    QTRY_COMPARE(m_folder->files("in", ".mail"), QStringList());
    settle();
    int wakings = 0;
    auto *dispatcher = QAbstractEventDispatcher::instance();
    const auto counting =
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [&wakings] { ++wakings; });
    QEventLoop loop;
    QTimer::singleShot(1500, &loop, &QEventLoop::quit);
    loop.exec();
    disconnect(counting);
    QVERIFY2(wakings <= 3, qPrintable(QString("woke up %1 times").arg(wakings)));
}

QTEST_GUILESS_MAIN(TestProxyDaemon)
#include "tst_proxy_daemon.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// A transfer under way: progress, pause, abort and time-outs, and what is told when.

#include "tests/services/mmsproxyd/transfer_spy.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QTemporaryDir>

#include <algorithm>

using namespace std::chrono_literals;
using wmsg::proxy::HttpClient;
using wmsg::proxy::HttpOutcome;
using wmsg::proxy::HttpRequest;
using wmsg::proxy::HttpSettings;
using wmsg::proxy::HttpTransfer;
using Kind = HttpOutcome::Kind;

namespace {

constexpr int kBodySize = 300000;
constexpr int kSmallWindow = 4096;
// What the system may take from a client, and hold for a server, before either does anything.
constexpr int kOnTheWay = 100000;

HttpSettings impatient(std::chrono::milliseconds stall)
{
    HttpSettings settings;
    settings.stallTimeout = stall;
    return settings;
}

/// A timer that ends the wait wakes up the loop, and so may what was left over from before.
constexpr int kQuiet = 2;

/// How often the event loop wakes up while nothing happens for a while, the end of that included.
int wakeUps()
{
    auto *dispatcher = QAbstractEventDispatcher::instance();
    int count = 0;
    bool isOver = false;
    const auto connection = QObject::connect(dispatcher, &QAbstractEventDispatcher::awake,
                                             dispatcher, [&count] { ++count; });
    QTimer::singleShot(300ms, dispatcher, [&isOver] { isOver = true; });
    while (!isOver) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    QObject::disconnect(connection);
    return count;
}

} // namespace

class TestHttpTransfer : public QObject {
    Q_OBJECT

private slots:
    void init();

    void uploadProgressIsTrue();
    void downloadProgressIsTold();
    void downloadOfUnknownLength();
    void progressEndsAtTheTotal();

    void pausedUploadStands();
    void pausedDownloadStands();
    void pausedBeforeItIsConnected();
    void pausedWhileWaitingForTheAnswer();
    void endWaitsForResume();
    void pausedPeerHangsUp();
    void pauseTwiceResumeTwice();

    void abortIsSeenByTheServer();
    void abortWhilePaused();
    void abortAtOnce();
    void abortOfDownload();
    void abortFromProgress();
    void abortFromFinished();

    void stalledUpload();
    void stalledAnswer();
    void stalledDownload();
    void slowIsNotStalled();
    void verySlowUploadIsNotStalled();
    void connectTimeout();

    void nothingIsToldInsideCalls();
    void clientGoesWithTransfers();
    void clientGoesInsideSignals();
    void startFromFinished();

    void idleClientSleeps();
    void pausedTransferSleeps();
    void waitingTransferSleeps();

private:
    std::unique_ptr<ScriptedHttp> m_server;
};

void TestHttpTransfer::init()
{
    m_server = std::make_unique<ScriptedHttp>(kSmallWindow);
}

void TestHttpTransfer::uploadProgressIsTrue()
{
    const QByteArray body = manyBytes(kBodySize);
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), body));
    auto peer = m_server->accept();
    peer.readHead();
    qint64 read = 0;
    QList<qint64> ahead;
    while (read < kBodySize) {
        const qint64 some = peer.readSome(4096).size();
        read += some;
        if (some == 0) {
            QTest::qWait(1);
        }
        QCoreApplication::processEvents();
        if (!spy.progress.isEmpty()) {
            ahead.append(spy.progress.last().first - read);
        }
    }
    QVERIFY2(*std::max_element(ahead.cbegin(), ahead.cend()) < kOnTheWay,
             QByteArray::number(*std::max_element(ahead.cbegin(), ahead.cend())).constData());
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
    QVERIFY2(spy.progress.size() >= 10, QByteArray::number(spy.progress.size()).constData());
    QCOMPARE(spy.progress.last(), (QPair<qint64, qint64>(kBodySize, kBodySize)));
    for (int i = 1; i < spy.progress.size(); ++i) {
        QVERIFY(spy.progress[i].first > spy.progress[i - 1].first);
        QCOMPARE(spy.progress[i].second, kBodySize);
    }
}

void TestHttpTransfer::downloadProgressIsTold()
{
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\nContent-Length: 30\r\n\r\n");
    for (int i = 1; i <= 3; ++i) {
        peer.send("0123456789");
        QTRY_VERIFY(!spy.progress.isEmpty()
                    && spy.progress.last() == (QPair<qint64, qint64>(10 * i, 30)));
    }
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpTransfer::downloadOfUnknownLength()
{
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\n\r\n0123456789");
    QTRY_VERIFY(!spy.progress.isEmpty());
    QCOMPARE(spy.progress.last(), (QPair<qint64, qint64>(10, 0)));
    peer.close();
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpTransfer::progressEndsAtTheTotal()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK", "a longer answer than the request");
    QVERIFY(spy.wait().isSuccess());
    QCOMPARE(spy.progress.last(), (QPair<qint64, qint64>(5, 5)));
}

void TestHttpTransfer::pausedUploadStands()
{
    const QByteArray body = manyBytes(kBodySize);
    HttpClient client(impatient(1s));
    TransferSpy spy(client, postTo(m_server->url(), body));
    auto peer = m_server->accept();
    peer.readHead();
    QByteArray received = peer.read(50000);
    spy.transfer->pause();
    QVERIFY(spy.transfer->isPaused());
    const auto told = spy.progress.size();
    QTest::qWait(1500); // longer than it may stall
    const qint64 rest = peer.waiting();
    received += peer.read(rest);
    QTest::qWait(100);
    received += peer.read(peer.waiting());
    QVERIFY2(received.size() < 50000 + kOnTheWay, QByteArray::number(received.size()).constData());
    QVERIFY(!spy.hasEnded());
    QCOMPARE(spy.progress.size(), told);
    spy.transfer->resume();
    QVERIFY(!spy.transfer->isPaused());
    received += peer.read(kBodySize - received.size());
    QVERIFY(received == body);
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpTransfer::pausedDownloadStands()
{
    const QByteArray body = manyBytes(5000000);
    HttpClient client(impatient(1s));
    HttpRequest request = getFrom(m_server->url());
    request.answerLimit = body.size();
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\nContent-Length: 5000000\r\n\r\n");
    qsizetype sent = peer.sendSome(body.first(100000));
    QTRY_VERIFY(!spy.progress.isEmpty());
    spy.transfer->pause();
    const auto told = spy.progress.size();
    for (int i = 0; i < 150; ++i) {
        sent += peer.sendSome(body.mid(sent));
        QTest::qWait(10);
    }
    QVERIFY(sent < body.size()); // nobody takes it
    QVERIFY(!spy.hasEnded());
    QCOMPARE(spy.progress.size(), told);
    spy.transfer->resume();
    peer.send(body.mid(sent));
    const HttpOutcome outcome = spy.wait();
    QVERIFY(outcome.isSuccess());
    QVERIFY(outcome.body == body);
}

void TestHttpTransfer::pausedBeforeItIsConnected()
{
    const QByteArray body = manyBytes(kBodySize);
    HttpClient client(impatient(500ms));
    TransferSpy spy(client, postTo(m_server->url(), body));
    spy.transfer->pause();
    QTest::qWait(1000);
    QVERIFY(!spy.hasEnded());
    auto peer = m_server->accept();
    spy.transfer->resume();
    QVERIFY(peer.readRequest().body == body);
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpTransfer::pausedWhileWaitingForTheAnswer()
{
    HttpClient client(impatient(500ms));
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    QCOMPARE(peer.readRequest().body, "hello");
    spy.transfer->pause();
    peer.answer("200 OK", "yes");
    QTest::qWait(1000);
    QVERIFY(!spy.hasEnded());
    spy.transfer->resume();
    QCOMPARE(spy.wait().body, "yes");
}

void TestHttpTransfer::endWaitsForResume()
{
    m_server->close();
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    spy.transfer->pause();
    QTest::qWait(300);
    QVERIFY(!spy.hasEnded());
    spy.transfer->resume();
    QVERIFY(!spy.hasEnded());
    QCOMPARE(spy.wait().kind, Kind::Unreachable);
}

void TestHttpTransfer::pausedPeerHangsUp()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(kBodySize)));
    auto peer = m_server->accept();
    peer.readHead();
    spy.transfer->pause();
    peer.reset();
    QTest::qWait(100);
    QVERIFY(!spy.hasEnded());
    spy.transfer->resume();
    QCOMPARE(spy.wait().kind, Kind::Cut);
}

void TestHttpTransfer::pauseTwiceResumeTwice()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    spy.transfer->resume();
    spy.transfer->pause();
    spy.transfer->pause();
    spy.transfer->resume();
    spy.transfer->resume();
    auto peer = m_server->accept();
    QCOMPARE(peer.readRequest().body, "hello");
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
    QCOMPARE(spy.outcomes.size(), 1);
}

void TestHttpTransfer::abortIsSeenByTheServer()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(kBodySize)));
    auto peer = m_server->accept();
    peer.readHead();
    const qint64 before = peer.read(50000).size();
    spy.transfer->abort();
    QVERIFY(!spy.hasEnded());
    const qint64 received = before + peer.readToEnd();
    QVERIFY2(received >= 50000 && received < 50000 + kOnTheWay,
             QByteArray::number(received).constData());
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Aborted);
    QCOMPARE(outcome.text, "aborted");
    QVERIFY(!outcome.mayRetry());
    QTRY_VERIFY(!spy.transfer);
    QCOMPARE(spy.outcomes.size(), 1);
}

void TestHttpTransfer::abortWhilePaused()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(kBodySize)));
    auto peer = m_server->accept();
    peer.readHead();
    spy.transfer->pause();
    spy.transfer->abort();
    QCOMPARE(spy.wait().kind, Kind::Aborted);
    QVERIFY(peer.waitForEnd());
}

void TestHttpTransfer::abortAtOnce()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    spy.transfer->abort();
    spy.transfer->abort();
    QCOMPARE(spy.wait().kind, Kind::Aborted);
    QTRY_VERIFY(!spy.transfer);
    QCOMPARE(spy.outcomes.size(), 1);
}

void TestHttpTransfer::abortOfDownload()
{
    QTemporaryDir folder;
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerFile = folder.filePath("answer");
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789");
    QTRY_VERIFY(!spy.progress.isEmpty());
    spy.transfer->abort();
    QCOMPARE(spy.wait().kind, Kind::Aborted);
    QVERIFY(peer.waitForEnd());
    QCOMPARE(contentOf(request.answerFile), "0123456789");
}

void TestHttpTransfer::abortFromProgress()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(kBodySize)));
    QObject::connect(spy.transfer, &HttpTransfer::progress, spy.transfer, [&spy](qint64 done) {
        if (done > 0) {
            spy.transfer->abort();
        }
    });
    auto peer = m_server->accept();
    QCOMPARE(spy.wait().kind, Kind::Aborted);
    QVERIFY(peer.waitForEnd());
}

void TestHttpTransfer::abortFromFinished()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    QObject::connect(spy.transfer, &HttpTransfer::finished, spy.transfer, [&spy] {
        spy.transfer->pause();
        spy.transfer->resume();
        spy.transfer->abort();
    });
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
    QTRY_VERIFY(!spy.transfer);
    QCOMPARE(spy.outcomes.size(), 1);
}

void TestHttpTransfer::stalledUpload()
{
    HttpClient client(impatient(300ms));
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(5000000)));
    auto peer = m_server->accept();
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::TimedOut);
    QVERIFY(outcome.mayRetry());
    QCOMPARE(outcome.text, "nothing moved for 0.3 seconds");
    QVERIFY(peer.waitForEnd());
}

void TestHttpTransfer::stalledAnswer()
{
    HttpClient client(impatient(300ms));
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    QCOMPARE(spy.wait().kind, Kind::TimedOut);
    QCOMPARE(peer.readRequest().body, "hello");
}

void TestHttpTransfer::stalledDownload()
{
    HttpClient client(impatient(300ms));
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n0123456789");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::TimedOut);
    QCOMPARE(outcome.answerSize, 0);
}

/// Every byte that comes begins the wait anew.
void TestHttpTransfer::slowIsNotStalled()
{
    HttpClient client(impatient(1s));
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\nContent-Length: 30\r\n\r\n");
    QElapsedTimer time;
    time.start();
    for (int i = 0; i < 30; ++i) {
        QTest::qWait(50);
        peer.send("x");
    }
    QVERIFY(time.elapsed() > 1200);
    const HttpOutcome outcome = spy.wait();
    QVERIFY2(outcome.isSuccess(), qPrintable(outcome.text));
}

/// The system has room for more only after many bytes have left: at this pace after more than two
/// seconds, while the peer takes some every second or so.
void TestHttpTransfer::verySlowUploadIsNotStalled()
{
    constexpr qint64 kBytesPerSecond = 5000;
    HttpClient client(impatient(2s));
    const QByteArray body = manyBytes(100000);
    TransferSpy spy(client, postTo(m_server->url(), body));
    auto peer = m_server->accept();
    peer.readHead();
    QElapsedTimer time;
    time.start();
    QByteArray received;
    while (time.elapsed() < 6000 && !spy.hasEnded()) {
        received += peer.readSome(time.elapsed() * kBytesPerSecond / 1000 - received.size());
        QTest::qWait(20);
    }
    QVERIFY2(!spy.hasEnded(), spy.hasEnded() ? qPrintable(spy.outcomes.first().text) : "");
    received += peer.read(body.size() - received.size());
    QVERIFY(received == body);
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpTransfer::connectTimeout()
{
    HttpSettings settings;
    settings.connectTimeout = 300ms;
    settings.proxy = "http://127.0.0.1:" + QString::number(m_server->port());
    HttpClient client(settings);
    // The proxy never answers the request for a tunnel, so that no connection comes about.
    TransferSpy spy(client, getFrom("https://mmsc.invalid/"));
    auto peer = m_server->accept();
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::TimedOut);
    QVERIFY(outcome.mayRetry());
    QVERIFY(!outcome.text.isEmpty());
}

void TestHttpTransfer::nothingIsToldInsideCalls()
{
    HttpClient client({});
    TransferSpy bad(client, getFrom("no URL"));
    QVERIFY(!bad.hasEnded());
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    QVERIFY(spy.progress.isEmpty());
    spy.transfer->pause();
    spy.transfer->resume();
    spy.transfer->abort();
    QVERIFY(!spy.hasEnded());
    QCOMPARE(bad.wait().kind, Kind::Impossible);
    QCOMPARE(spy.wait().kind, Kind::Aborted);
}

void TestHttpTransfer::clientGoesWithTransfers()
{
    auto client = std::make_unique<HttpClient>(HttpSettings());
    TransferSpy spy(*client, postTo(m_server->url(), manyBytes(kBodySize)));
    auto peer = m_server->accept();
    peer.readHead();
    TransferSpy waiting(*client, postTo("no URL", {}));
    client.reset();
    QVERIFY(!spy.transfer);
    QVERIFY(!waiting.transfer);
    QVERIFY(peer.waitForEnd());
    QVERIFY(!spy.hasEnded());
    QVERIFY(!waiting.hasEnded());
}

void TestHttpTransfer::clientGoesInsideSignals()
{
    for (const bool inProgress : {true, false}) {
        auto client = std::make_unique<HttpClient>(HttpSettings());
        TransferSpy spy(*client, postTo(m_server->url(), "hello"));
        TransferSpy other(*client, postTo(m_server->url(), "other"));
        if (inProgress) {
            QObject::connect(spy.transfer, &HttpTransfer::progress, this,
                             [&client] { client.reset(); });
        } else {
            QObject::connect(spy.transfer, &HttpTransfer::finished, this,
                             [&client] { client.reset(); });
        }
        auto peer = m_server->accept();
        auto second = m_server->accept();
        if (!inProgress) {
            peer.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
            second.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
        QTRY_VERIFY(!client);
        QVERIFY(!other.transfer);
    }
}

void TestHttpTransfer::startFromFinished()
{
    HttpClient client({});
    std::unique_ptr<TransferSpy> second;
    TransferSpy first(client, postTo(m_server->url(), "one"));
    QObject::connect(first.transfer, &HttpTransfer::finished, this, [&] {
        second = std::make_unique<TransferSpy>(client, postTo(m_server->url(), "two"));
    });
    auto peer = m_server->accept();
    QCOMPARE(peer.readRequest().body, "one");
    peer.answer("200 OK");
    QCOMPARE(peer.readRequest().body, "two");
    peer.answer("200 OK");
    QVERIFY(second->wait().isSuccess());
}

void TestHttpTransfer::idleClientSleeps()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
    QTRY_VERIFY(!spy.transfer);
    QTRY_VERIFY(wakeUps() <= kQuiet); // the connection is kept
}

void TestHttpTransfer::pausedTransferSleeps()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(kBodySize)));
    auto peer = m_server->accept();
    peer.readHead();
    spy.transfer->pause();
    QTRY_VERIFY(wakeUps() <= kQuiet);
    peer.readSome(65536); // there is room for more
    QTRY_VERIFY(wakeUps() <= kQuiet);
}

void TestHttpTransfer::waitingTransferSleeps()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    QTRY_VERIFY(wakeUps() <= kQuiet);
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

QTEST_GUILESS_MAIN(TestHttpTransfer)
#include "tst_http_transfer.moc"

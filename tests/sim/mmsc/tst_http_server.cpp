// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/http_server.h"
#include "tests/sim/mmsc/http_call.h"
#include "tests/support/hex.h"

#include <memory>

using namespace wmsg::sim;

namespace {

constexpr qint64 kLargest = 100000;
const QByteArray kSend = fromHex("8C 80");

// A server whose handler keeps what it is given and answers with what is wanted.
class Server {
public:
    explicit Server(const QString &plan = {}, unsigned connections = 20, unsigned idleSeconds = 60)
    {
        QCOMPARE(faults.read("plan", plan), QString());
        HttpServer::Settings settings;
        settings.largestBody = kLargest;
        settings.connections = connections;
        settings.idleSeconds = idleSeconds;
        server = std::make_unique<HttpServer>(settings, faults, [this](const HttpRequest &request) {
            requests.append(request);
            return answer;
        });
        QCOMPARE(server->listen(), QString());
    }

    quint16 port() const { return server->port(); }

    FaultPlan faults;
    HttpAnswer answer;
    QList<HttpRequest> requests;
    std::unique_ptr<HttpServer> server;
};

} // namespace

class TestHttpServer : public QObject {
    Q_OBJECT

private slots:
    void init();
    void post();
    void bodiesInPieces();
    void chunked();
    void oneConnection();
    void expectation();
    void absoluteForm_data();
    void absoluteForm();
    void answerOfTwoPieces();
    void tooLarge_data();
    void tooLarge();
    void hostile_data();
    void hostile();
    void hangsUp();
    void manyConnections();
    void portInUse();
    void statusOfThePlan();
    void redirect();
    void garbage();
    void delay();
    void slowDown();
    void slowUp();
    void cutUp_data();
    void cutUp();
    void cutAnswer_data();
    void cutAnswer();
    void faultsByKind();
    void stopsInTheMiddle();

private:
    std::unique_ptr<Server> m_server;
    void start(const QString &plan) { m_server = std::make_unique<Server>(plan); }
};

void TestHttpServer::init()
{
    m_server = std::make_unique<Server>();
}

void TestHttpServer::post()
{
    m_server->answer.contentType = "a/b";
    m_server->answer.head = "hello";
    HttpCall call(m_server->port());
    call.post("body", "x-MSISDN: +431\r\n").wait();
    QCOMPARE(call.status(), 200);
    QCOMPARE(call.header("Content-Type"), QByteArray("a/b"));
    QCOMPARE(call.body(), QByteArray("hello"));
    QCOMPARE(m_server->requests.size(), 1);
    const HttpRequest &request = m_server->requests[0];
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QByteArray("/"));
    QCOMPARE(request.contentType, QByteArray("application/vnd.wap.mms-message"));
    QCOMPARE(request.sender, QByteArray("+431"));
    QCOMPARE(request.body, QByteArray("body"));
}

void TestHttpServer::bodiesInPieces()
{
    const QByteArray body(kLargest, 'x');
    HttpCall call(m_server->port());
    call.send("POST / HTTP/1.1\r\nHo").send("st: m\r\nContent-Length: 100000\r\n\r");
    QTest::qWait(1);
    call.send("\n");
    for (int n = 0; n < kLargest; n += 1000) {
        call.send(body.mid(n, 1000));
        QTest::qWait(0);
    }
    QCOMPARE(call.wait().status(), 200);
    QCOMPARE(m_server->requests[0].body, body);
}

void TestHttpServer::chunked()
{
    HttpCall call(m_server->port());
    call.send("POST / HTTP/1.1\r\nHost: m\r\nTransfer-Encoding: chunked\r\n\r\n"
              "1\r\n\x8C\r\n2\r\n\x80z\r\n0\r\n\r\n");
    QCOMPARE(call.wait().status(), 200);
    QCOMPARE(toHex(m_server->requests[0].body), QByteArray("8C 80 7A"));
}

void TestHttpServer::oneConnection()
{
    HttpCall call(m_server->port());
    call.post("1").wait();
    call.post("2");
    QTRY_COMPARE(m_server->requests.size(), 2);
    QCOMPARE(m_server->requests[1].body, QByteArray("2"));
    QVERIFY(!call.isClosed());
}

void TestHttpServer::expectation()
{
    HttpCall call(m_server->port());
    call.send("POST / HTTP/1.1\r\nHost: m\r\nExpect: 100-continue\r\nContent-Length: 1\r\n\r\n");
    QTRY_VERIFY(call.received().startsWith("HTTP/1.1 100 "));
    QVERIFY(m_server->requests.isEmpty());
    call.send("x");
    QTRY_VERIFY(call.received().contains("HTTP/1.1 200 "));
}

void TestHttpServer::absoluteForm_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("path");

    QTest::newRow("path") << QByteArray("/a") << QByteArray("/a");
    QTest::newRow("as a proxy hears it") << QByteArray("http://mmsc:8080/a") << QByteArray("/a");
    QTest::newRow("without a path") << QByteArray("http://mmsc") << QByteArray("/");
}

void TestHttpServer::absoluteForm()
{
    QFETCH(QByteArray, target);
    HttpCall call(m_server->port());
    QCOMPARE(call.get(target).wait().status(), 200);
    QTEST(m_server->requests[0].path, "path");
}

void TestHttpServer::answerOfTwoPieces()
{
    m_server->answer.head = QByteArray(40000, 'h');
    m_server->answer.pdu = "not" + QByteArray(50000, 'p');
    m_server->answer.pduStart = 3;
    HttpCall call(m_server->port());
    call.get("/").wait();
    QCOMPARE(call.header("Content-Length"), QByteArray("90000"));
    QCOMPARE(call.body(), QByteArray(40000, 'h') + QByteArray(50000, 'p'));
}

void TestHttpServer::tooLarge_data()
{
    QTest::addColumn<QByteArray>("request");

    QTest::newRow("announced") << QByteArray("POST / HTTP/1.1\r\nHost: m\r\n"
                                             "Content-Length: 100001\r\n\r\n");
    QTest::newRow("announced beyond measure") << QByteArray("POST / HTTP/1.1\r\nHost: m\r\n"
                                                            "Content-Length: 9223372036854775807"
                                                            "\r\n\r\n");
    QByteArray chunks = "POST / HTTP/1.1\r\nHost: m\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (int n = 0; n < 101; ++n) {
        chunks += "3E8\r\n" + QByteArray(1000, 'x') + "\r\n";
    }
    QTest::newRow("not announced") << chunks + "0\r\n\r\n";
}

void TestHttpServer::tooLarge()
{
    QFETCH(QByteArray, request);
    HttpCall call(m_server->port());
    QCOMPARE(call.send(request).wait().status(), 413);
    QVERIFY(m_server->requests.isEmpty());
}

void TestHttpServer::hostile_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("status"); // 0: the connection ends without an answer

    QTest::newRow("no HTTP") << QByteArray("\x16\x03\x01\x02\r\n\r\n") << 400;
    QTest::newRow("bad length") << QByteArray(
        "POST / HTTP/1.1\r\nHost: m\r\nContent-Length: x\r\n\r\n")
                                << 400;
    QTest::newRow("negative length")
        << QByteArray("POST / HTTP/1.1\r\nHost: m\r\nContent-Length: -1\r\n\r\n") << 400;
    QTest::newRow("bad chunk") << QByteArray("POST / HTTP/1.1\r\nHost: m\r\nTransfer-Encoding: "
                                             "chunked\r\n\r\nFFFFFFFFFFFFFFFFF\r\n")
                               << 413;
    QTest::newRow("endless header")
        << QByteArray("GET / HTTP/1.1\r\nHost: m\r\nX: ") + QByteArray(200000, 'x') << 431;
    QTest::newRow("endless target") << QByteArray("GET /") + QByteArray(200000, 'x') << 414;
    QTest::newRow("version") << QByteArray("GET / HTTP/9.9\r\nHost: m\r\n\r\n") << 505;
}

void TestHttpServer::hostile()
{
    QFETCH(QByteArray, request);
    QFETCH(int, status);
    HttpCall call(m_server->port());
    call.send(request).waitForEnd();
    QVERIFY2(call.status() == status || call.status() == 0, call.received().left(80).constData());
    QVERIFY(m_server->requests.isEmpty());
    // The server goes on.
    HttpCall next(m_server->port());
    QCOMPARE(next.get("/").wait().status(), 200);
}

void TestHttpServer::hangsUp()
{
    HttpCall call(m_server->port());
    call.send("POST / HTTP/1.1\r\nHost: m\r\nContent-Length: 1000\r\n\r\nhalf");
    QTest::qWait(5);
    call.hangUp();
    HttpCall next(m_server->port());
    QCOMPARE(next.get("/").wait().status(), 200);
    QCOMPARE(m_server->requests.size(), 1);
}

void TestHttpServer::manyConnections()
{
    m_server = std::make_unique<Server>(QString(), 3, 1);
    std::vector<std::unique_ptr<HttpCall>> calls;
    for (int n = 0; n < 10; ++n) {
        calls.push_back(std::make_unique<HttpCall>(m_server->port()));
        calls.back()->send("POST / HTTP/1.1\r\n");
    }
    QTest::qWait(5);
    calls.clear();
    // Who left before his turn came is let in and waited for, a second at most.
    HttpCall call(m_server->port());
    QCOMPARE(call.get("/").wait().status(), 200);
}

void TestHttpServer::portInUse()
{
    HttpServer::Settings settings;
    settings.port = m_server->port();
    HttpServer other(settings, m_server->faults, [](const HttpRequest &) { return HttpAnswer(); });
    QCOMPARE(other.listen(),
             QString("port %1 of 127.0.0.1 cannot be used: Address already in use")
                 .arg(m_server->port()));
}

void TestHttpServer::statusOfThePlan()
{
    start("send 1-2 http-status=503");
    for (const int status : {503, 503, 200}) {
        HttpCall call(m_server->port());
        QCOMPARE(call.post(kSend).wait().status(), status);
    }
    QCOMPARE(m_server->requests.size(), 1);
}

void TestHttpServer::redirect()
{
    start("send 1 redirect=http://other/\nretrieve 1 redirect=http://other/x http-status=307");
    HttpCall post(m_server->port());
    QCOMPARE(post.post(kSend).wait().status(), 302);
    QCOMPARE(post.header("Location"), QByteArray("http://other/"));
    HttpCall get(m_server->port());
    QCOMPARE(get.get("/").wait().status(), 307);
    QCOMPARE(get.header("Location"), QByteArray("http://other/x"));
    QVERIFY(m_server->requests.isEmpty());
}

void TestHttpServer::garbage()
{
    start("retrieve 1 garbage");
    m_server->answer.contentType = "application/vnd.wap.mms-message";
    m_server->answer.head = "head";
    m_server->answer.pdu = "body";
    HttpCall call(m_server->port());
    QCOMPARE(call.get("/").wait().status(), 200);
    QCOMPARE(call.header("Content-Type"), QByteArray("application/vnd.wap.mms-message"));
    QVERIFY(call.body().contains("<html>"));
    QCOMPARE(m_server->requests.size(), 1); // it was dealt with
}

void TestHttpServer::delay()
{
    start("send 1 delay=0.2");
    QElapsedTimer clock;
    clock.start();
    HttpCall call(m_server->port());
    QCOMPARE(call.post(kSend).wait().status(), 200);
    QVERIFY(clock.elapsed() >= 190);
    QCOMPARE(m_server->requests.size(), 1);
}

void TestHttpServer::slowDown()
{
    start("retrieve 1 down-rate=10000");
    m_server->answer.head = QByteArray(3000, 'x');
    QElapsedTimer clock;
    clock.start();
    HttpCall call(m_server->port());
    QCOMPARE(call.get("/").wait().body().size(), 3000);
    QVERIFY2(clock.elapsed() >= 250, qPrintable(QString::number(clock.elapsed())));
}

void TestHttpServer::slowUp()
{
    start("send 1 up-rate=100000");
    QElapsedTimer clock;
    clock.start();
    HttpCall call(m_server->port());
    const QByteArray body = kSend + QByteArray(30000, 'x');
    QCOMPARE(call.post(body).wait().status(), 200);
    QVERIFY2(clock.elapsed() >= 250, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(m_server->requests[0].body, body);
}

void TestHttpServer::cutUp_data()
{
    QTest::addColumn<QString>("plan");

    QTest::newRow("at once") << "request 1 cut-up-after=0";
    QTest::newRow("at the first bytes") << "send 1 cut-up-after=0";
    QTest::newRow("behind the type") << "send 1 cut-up-after=2";
    QTest::newRow("in the middle") << "send 1 cut-up-after=5000";
    QTest::newRow("in the middle of a slow one") << "send 1 cut-up-after=5000 up-rate=100000";
    QTest::newRow("at the last byte") << "send 1 cut-up-after=30002";
}

void TestHttpServer::cutUp()
{
    QFETCH(QString, plan);
    start(plan);
    HttpCall call(m_server->port());
    call.post(kSend + QByteArray(30000, 'x')).waitForEnd();
    QCOMPARE(call.status(), 0);
    QVERIFY(m_server->requests.isEmpty());
    HttpCall again(m_server->port());
    QCOMPARE(again.post(kSend).wait().status(), 200);
}

void TestHttpServer::cutAnswer_data()
{
    QTest::addColumn<QString>("faults");
    QTest::addColumn<int>("bytes");

    QTest::newRow("no answer") << "cut-after=0" << 0;
    QTest::newRow("one byte") << "cut-after=1" << 1;
    QTest::newRow("in the middle") << "cut-after=40001" << 40001;
    QTest::newRow("a slow one") << "cut-after=500 down-rate=10000" << 500;
    QTest::newRow("behind the end") << "cut-after=60000" << 50000;
}

void TestHttpServer::cutAnswer()
{
    QFETCH(QString, faults);
    QFETCH(int, bytes);
    start("retrieve 1 " + faults);
    m_server->answer.head = QByteArray(40000, 'h');
    m_server->answer.pdu = QByteArray(10000, 'p');
    HttpCall call(m_server->port());
    call.get("/").wait();
    QCOMPARE(call.body().size(), bytes);
    QCOMPARE(call.status(), bytes > 0 ? 200 : 0);
    QCOMPARE(m_server->requests.size(), 1);
}

void TestHttpServer::faultsByKind()
{
    start("send 1 http-status=501\nnotify-response 1 http-status=502\n"
          "acknowledge 1 http-status=503\nretrieve 1 http-status=504\nrequest 6 http-status=505");
    const QList<QPair<QByteArray, int>> posts = {
        {"other", 200}, {"8C 83", 502}, {"8C 85", 503}, {"8C 80", 501}};
    for (const auto &[body, status] : posts) {
        HttpCall call(m_server->port());
        QCOMPARE(call.post(body == "other" ? body : fromHex(body)).wait().status(), status);
    }
    HttpCall get(m_server->port());
    QCOMPARE(get.get("/").wait().status(), 504);
    HttpCall sixth(m_server->port());
    QCOMPARE(sixth.get("/").wait().status(), 505);
}

void TestHttpServer::stopsInTheMiddle()
{
    start("send 1 delay=3600\nretrieve 1 down-rate=1\nsend 2 up-rate=1");
    m_server->answer.head = QByteArray(1000, 'x');
    HttpCall waiting(m_server->port());
    waiting.post(kSend);
    QTRY_COMPARE(m_server->requests.size(), 1);
    HttpCall slow(m_server->port());
    slow.get("/");
    QTRY_COMPARE(m_server->requests.size(), 2);
    HttpCall uploading(m_server->port());
    uploading.post(kSend + QByteArray(1000, 'x'));
    QTest::qWait(5);
    m_server.reset();
    QTRY_VERIFY(waiting.isClosed() && slow.isClosed() && uploading.isClosed());
}

QTEST_GUILESS_MAIN(TestHttpServer)
#include "tst_http_server.moc"

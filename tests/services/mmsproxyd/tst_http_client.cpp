// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Requests and how they end, against a server that does what the test says.

#include "tests/services/mmsproxyd/transfer_spy.h"

#include <QtCore/QTemporaryDir>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace std::chrono_literals;
using wmsg::proxy::HttpClient;
using wmsg::proxy::HttpOutcome;
using wmsg::proxy::HttpRequest;
using wmsg::proxy::HttpSettings;
using Kind = HttpOutcome::Kind;

Q_DECLARE_METATYPE(HttpOutcome::Kind)

class TestHttpClient : public QObject {
    Q_OBJECT

private slots:
    void init();

    void posts();
    void postsFromFile();
    void postsNothing();
    void gets();
    void getsIntoFile();
    void getsIntoMemory();
    void settingsAreSent();
    void settingsEndNoLine();
    void oddUrls_data();
    void oddUrls();
    void statuses_data();
    void statuses();
    void redirectIsNotFollowed();
    void limits_data();
    void limits();
    void errorPageIsNoFailure();
    void framings_data();
    void framings();
    void cuts_data();
    void cuts();
    void resetIsCut();
    void headerWithoutEnd();
    void answerBeforeBodyIsRead();
    void impossible_data();
    void impossible();
    void refusedConnection();
    void unknownInterface();
    void bindsToAddress_data();
    void bindsToAddress();
    void proxyIsUsed();
    void environmentIsNotAsked();
    void bodyFiles_data();
    void bodyFiles();
    void bodyFileThatShrinks();
    void answerFileIsEmptied();
    void answerFileIsNoLink();
    void answerFileCannotBeMade();
    void diskIsFull();
    void connectionIsUsedAgain();
    void deadConnectionIsReplaced();
    void manyAtATime();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScriptedHttp> m_server;
};

void TestHttpClient::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<ScriptedHttp>();
}

void TestHttpClient::posts()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url("/mms?a=b"), "hello"));
    auto peer = m_server->accept();
    const ScriptedRequest request = peer.readRequest();
    QCOMPARE(request.line, "POST /mms?a=b HTTP/1.1");
    QCOMPARE(request.body, "hello");
    QCOMPARE(request.header("Content-Type"), "application/vnd.wap.mms-message");
    QCOMPARE(request.header("Content-Length"), "5");
    QCOMPARE(request.header("Accept"), "*/*, application/vnd.wap.mms-message");
    QCOMPARE(request.header("Host"),
             QByteArray("127.0.0.1:" + QByteArray::number(m_server->port())));
    for (const char *absent :
         {"Expect", "Accept-Encoding", "Transfer-Encoding", "User-Agent", "x-wap-profile"}) {
        QVERIFY2(request.header(absent).isNull(), absent);
    }
    peer.answer("200 OK", "yes");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Answered);
    QCOMPARE(outcome.httpStatus, 200);
    QVERIFY(outcome.isSuccess());
    QCOMPARE(outcome.body, "yes");
    QCOMPARE(outcome.answerSize, 3);
    QCOMPARE(outcome.contentType, "application/vnd.wap.mms-message");
    QCOMPARE(outcome.text, "HTTP status 200");
    QTRY_VERIFY(!spy.transfer);
    QCOMPARE(spy.outcomes.size(), 1);
}

void TestHttpClient::postsFromFile()
{
    const QByteArray body = manyBytes(1000000);
    HttpClient client({});
    HttpRequest request = postTo(m_server->url(), "not this");
    request.bodyFile = fileWith(path("body"), body);
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    const ScriptedRequest received = peer.readRequest();
    QCOMPARE(received.body.size(), body.size());
    QVERIFY(received.body == body);
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpClient::postsNothing()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), {}));
    auto peer = m_server->accept();
    const ScriptedRequest request = peer.readRequest();
    QCOMPARE(request.line, "POST / HTTP/1.1");
    QCOMPARE(request.header("Content-Length"), "0");
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpClient::gets()
{
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url("/x%20y/z#w")));
    auto peer = m_server->accept();
    const ScriptedRequest request = peer.readRequest();
    QCOMPARE(request.line, "GET /x%20y/z HTTP/1.1");
    QVERIFY(request.header("Content-Type").isNull());
    QVERIFY(request.header("Content-Length").isNull());
    peer.answer("204 No Content");
    QCOMPARE(spy.wait().httpStatus, 204);
    QVERIFY(!spy.wait().isSuccess());
}

void TestHttpClient::getsIntoFile()
{
    const QByteArray body = manyBytes(1000000);
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerFile = path("answer");
    request.answerLimit = body.size();
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK", body);
    const HttpOutcome outcome = spy.wait();
    QVERIFY(outcome.isSuccess());
    QCOMPARE(outcome.answerSize, body.size());
    QVERIFY(outcome.body.isEmpty());
    QVERIFY(contentOf(path("answer")) == body);
    QCOMPARE(QFile::permissions(path("answer")),
             QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    QCOMPARE(spy.progress.last(), (QPair<qint64, qint64>(body.size(), body.size())));
}

void TestHttpClient::getsIntoMemory()
{
    const QByteArray body = manyBytes(int(HttpRequest::kSmallAnswer));
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK", body);
    QVERIFY(spy.wait().body == body);
}

void TestHttpClient::settingsAreSent()
{
    HttpSettings settings;
    settings.userAgent = "wmsg/1.0";
    settings.profileUrl = "http://example.invalid/profile.xml";
    HttpClient client(settings);
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    const ScriptedRequest request = peer.readRequest();
    QCOMPARE(request.header("User-Agent"), "wmsg/1.0");
    QCOMPARE(request.header("x-wap-profile"), "http://example.invalid/profile.xml");
    peer.answer("200 OK");
    spy.wait();
}

void TestHttpClient::settingsEndNoLine()
{
    HttpSettings settings;
    settings.userAgent = "a\r\nX-One: 1";
    settings.profileUrl = "b\nX-Two: 2";
    HttpClient client(settings);
    HttpRequest request = postTo(m_server->url(), "x");
    request.contentType = "c\r\nX-Three: 3";
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    const ScriptedRequest received = peer.readRequest();
    QCOMPARE(received.header("User-Agent"), "aX-One: 1");
    QCOMPARE(received.header("x-wap-profile"), "bX-Two: 2");
    QCOMPARE(received.header("Content-Type"), "cX-Three: 3");
    peer.answer("200 OK");
    spy.wait();
}

void TestHttpClient::oddUrls_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("blank") << "/a b" << QByteArray("GET /a%20b HTTP/1.1");
    QTest::newRow("line break") << "/a\r\nX: y" << QByteArray("GET /a%0D%0AX:%20y HTTP/1.1");
    QTest::newRow("not ASCII") << QString::fromUtf8("/\xC3\xA9")
                               << QByteArray("GET /%C3%A9 HTTP/1.1");
    QTest::newRow("NUL") << QString("/a") + QChar(0) + "b" << QByteArray("GET /a%00b HTTP/1.1");
    QTest::newRow("dots") << "/a/../b" << QByteArray("GET /b HTTP/1.1");
    QTest::newRow("query alone") << "?id=1" << QByteArray("GET /?id=1 HTTP/1.1");
}

void TestHttpClient::oddUrls()
{
    QFETCH(QString, path);
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url(path)));
    auto peer = m_server->accept();
    QTEST(peer.readRequest().line, "line");
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpClient::statuses_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("mayRetry");
    QTest::newRow("200") << QByteArray("200 OK") << 200 << false;
    QTest::newRow("201") << QByteArray("201 Created") << 201 << false;
    QTest::newRow("400") << QByteArray("400 Bad Request") << 400 << false;
    QTest::newRow("403") << QByteArray("403 Forbidden") << 403 << false;
    QTest::newRow("404") << QByteArray("404 Not Found") << 404 << false;
    QTest::newRow("408") << QByteArray("408 Request Timeout") << 408 << true;
    QTest::newRow("413") << QByteArray("413 Too Large") << 413 << false;
    QTest::newRow("429") << QByteArray("429 Too Many Requests") << 429 << true;
    QTest::newRow("500") << QByteArray("500 Oops") << 500 << true;
    QTest::newRow("503") << QByteArray("503 Later") << 503 << true;
    QTest::newRow("599") << QByteArray("599 What") << 599 << true;
    QTest::newRow("600") << QByteArray("600 What") << 600 << false;
    QTest::newRow("304") << QByteArray("305 Use Proxy") << 305 << false;
}

void TestHttpClient::statuses()
{
    QFETCH(QByteArray, status);
    QFETCH(int, code);
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer(status, "page");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Answered);
    QCOMPARE(outcome.httpStatus, code);
    QCOMPARE(outcome.isSuccess(), code == 200);
    QTEST(outcome.mayRetry(), "mayRetry");
    QCOMPARE(outcome.body, "page");
}

void TestHttpClient::redirectIsNotFollowed()
{
    ScriptedHttp elsewhere;
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url("/a/b"), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("302 Found", {}, "Location: " + elsewhere.url("/secret").toLatin1() + "\r\n");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.httpStatus, 302);
    QVERIFY(!outcome.mayRetry());
    QCOMPARE(outcome.location, elsewhere.url("/secret").toLatin1());
    QCOMPARE(outcome.text, "HTTP status 302, a redirect to 127.0.0.1");
    QVERIFY(!elsewhere.hasClient());
}

void TestHttpClient::limits_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("fits");
    const QByteArray line = "HTTP/1.1 200 OK\r\n";
    QTest::newRow("just fits") << QByteArray(line + "Content-Length: 10\r\n\r\n0123456789") << true;
    QTest::newRow("announced") << QByteArray(line + "Content-Length: 11\r\n\r\n") << false;
    QTest::newRow("announced, huge")
        << QByteArray(line + "Content-Length: 99999999999999999999999\r\n\r\n") << false;
    QTest::newRow("chunks that fit")
        << QByteArray(line + "Transfer-Encoding: chunked\r\n\r\na\r\n0123456789\r\n0\r\n\r\n")
        << true;
    QTest::newRow("chunks") << QByteArray(line
                                          + "Transfer-Encoding: chunked\r\n\r\n"
                                            "a\r\n0123456789\r\n1\r\na\r\n")
                            << false;
    QTest::newRow("a large chunk") << QByteArray(
        line + "Transfer-Encoding: chunked\r\n\r\n7fffffff\r\n" + QByteArray(5000, 'x'))
                                   << false;
    QTest::newRow("until the end")
        << QByteArray(line + "Connection: close\r\n\r\n" + QByteArray(11, 'x')) << false;
}

void TestHttpClient::limits()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, fits);
    for (const bool intoFile : {false, true}) {
        HttpClient client({});
        HttpRequest request = getFrom(m_server->url());
        request.answerLimit = 10;
        request.answerFile = intoFile ? path("answer") : QString();
        TransferSpy spy(client, request);
        auto peer = m_server->accept();
        peer.readRequest();
        peer.send(answer);
        const HttpOutcome outcome = spy.wait();
        QCOMPARE(outcome.kind, fits ? Kind::Answered : Kind::TooLarge);
        QVERIFY(!outcome.mayRetry());
        QVERIFY(QFileInfo(path("answer")).size() <= 10);
        if (!fits) {
            QCOMPARE(outcome.text, "the answer has more than 10 bytes");
            QCOMPARE(outcome.body, QByteArray());
            QVERIFY(peer.waitForEnd());
        }
    }
}

void TestHttpClient::errorPageIsNoFailure()
{
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerLimit = 10;
    for (const QByteArray &framing : {QByteArray("Content-Length: 100000\r\n\r\n"),
                                      QByteArray("Transfer-Encoding: chunked\r\n\r\n186a0\r\n")}) {
        TransferSpy spy(client, request);
        auto peer = m_server->accept();
        peer.readRequest();
        peer.send("HTTP/1.1 503 Later\r\n" + framing + QByteArray(100000, 'x'));
        const HttpOutcome outcome = spy.wait();
        QCOMPARE(outcome.kind, Kind::Answered);
        QCOMPARE(outcome.httpStatus, 503);
        QVERIFY(outcome.mayRetry());
        QVERIFY(outcome.body.size() <= 10);
    }
}

void TestHttpClient::framings_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("body");
    const QByteArray line = "HTTP/1.1 200 OK\r\n";
    QTest::newRow("chunks") << QByteArray(line
                                          + "Transfer-Encoding: chunked\r\n\r\n"
                                            "3\r\nabc\r\n2;x=y\r\nde\r\n0\r\nTrailer: x\r\n\r\n")
                            << QByteArray("abcde");
    QTest::newRow("until the end") << QByteArray(line + "\r\nabc") << QByteArray("abc");
    QTest::newRow("HTTP 1.0") << QByteArray("HTTP/1.0 200 OK\r\n\r\nabc") << QByteArray("abc");
    QTest::newRow("continue first")
        << QByteArray("HTTP/1.1 100 Continue\r\n\r\n" + line + "Content-Length: 3\r\n\r\nabc")
        << QByteArray("abc");
    QTest::newRow("bare line feeds")
        << QByteArray("HTTP/1.1 200 OK\nContent-Length: 3\n\nabc") << QByteArray("abc");
    QTest::newRow("more than announced")
        << QByteArray(line + "Content-Length: 3\r\n\r\nabcdef") << QByteArray("abc");
    QTest::newRow("encoded, as it is")
        << QByteArray(line + "Content-Encoding: gzip\r\nContent-Length: 3\r\n\r\nabc")
        << QByteArray("abc");
}

void TestHttpClient::framings()
{
    QFETCH(QByteArray, answer);
    for (const bool byteByByte : {false, true}) {
        HttpClient client({});
        TransferSpy spy(client, getFrom(m_server->url()));
        auto peer = m_server->accept();
        peer.readRequest();
        for (int i = 0; byteByByte && i < answer.size(); ++i) {
            peer.send(answer.mid(i, 1));
        }
        if (!byteByByte) {
            peer.send(answer);
        }
        peer.close();
        const HttpOutcome outcome = spy.wait();
        QVERIFY2(outcome.isSuccess(), qPrintable(outcome.text));
        QTEST(outcome.body, "body");
    }
}

void TestHttpClient::cuts_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("in the status line") << QByteArray("HTTP/1.");
    QTest::newRow("behind the length")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n");
    QTest::newRow("in the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nabc");
    QTest::newRow("in a chunk") << QByteArray(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc");
    QTest::newRow("between chunks")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n");
    QTest::newRow("no HTTP") << QByteArray("220 mail.example ESMTP\r\n");
    QTest::newRow("bytes") << QByteArray("\x00\x01\xFF\xFE", 4);
    QTest::newRow("a PDU") << QByteArray::fromHex("8C8198310092808D90");
    QTest::newRow("no chunk") << QByteArray(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\nabc\r\n");
    QTest::newRow("no status") << QByteArray("HTTP/1.1 abc OK\r\n\r\n");
    QTest::newRow("no version") << QByteArray("HTTP/7.3 200 OK\r\n\r\n");
}

void TestHttpClient::cuts()
{
    QFETCH(QByteArray, answer);
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), "hello"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send(answer);
    peer.close();
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Cut);
    QVERIFY(outcome.mayRetry());
    QCOMPARE(outcome.httpStatus, 0);
    QVERIFY(!outcome.text.isEmpty());
}

void TestHttpClient::resetIsCut()
{
    HttpClient client({});
    TransferSpy spy(client, postTo(m_server->url(), manyBytes(1000000)));
    auto peer = m_server->accept();
    peer.readHead();
    peer.reset();
    QCOMPARE(spy.wait().kind, Kind::Cut);
}

void TestHttpClient::headerWithoutEnd()
{
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.send("HTTP/1.1 200 OK\r\n");
    const QByteArray line = "X-Filler: " + QByteArray(1000, 'x') + "\r\n";
    for (int i = 0; i < 1000 && !spy.hasEnded(); ++i) {
        peer.sendSome(line);
        QCoreApplication::processEvents();
    }
    QCOMPARE(spy.wait().kind, Kind::Cut);
    QVERIFY(peer.waitForEnd());
}

void TestHttpClient::answerBeforeBodyIsRead()
{
    ScriptedHttp server(4096);
    HttpClient client({});
    TransferSpy spy(client, postTo(server.url(), manyBytes(5000000)));
    auto peer = server.accept();
    peer.readHead();
    peer.answer("413 Too Large", {}, "Connection: close\r\n");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Answered);
    QCOMPARE(outcome.httpStatus, 413);
}

void TestHttpClient::impossible_data()
{
    QTest::addColumn<QString>("url");
    for (const char *url :
         {"", " ", "mmsc", "mmsc.example/mms", "//mmsc.example/", "http://", "ftp://127.0.0.1/",
          "file:///etc/passwd", "dict://127.0.0.1/", "gopher://127.0.0.1/",
          "http://127.0.0.1:99999/", "http://127.0.0.1:x/", "http://[::1/", "mailto:a@b",
          "http//127.0.0.1/", " http://127.0.0.1/"}) {
        QTest::newRow(url) << QString(url);
    }
}

void TestHttpClient::impossible()
{
    QFETCH(QString, url);
    HttpClient client({});
    TransferSpy spy(client, getFrom(url));
    QVERIFY(!spy.hasEnded());
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Impossible);
    QVERIFY(!outcome.mayRetry());
    QCOMPARE(outcome.text, "no URL of http or https");
    QTRY_VERIFY(!spy.transfer);
}

void TestHttpClient::refusedConnection()
{
    m_server->close();
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url("/secret")));
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Unreachable);
    QVERIFY(outcome.mayRetry());
    QVERIFY2(outcome.text.contains("127.0.0.1"), qPrintable(outcome.text));
    QVERIFY2(!outcome.text.contains("secret"), qPrintable(outcome.text));
}

void TestHttpClient::unknownInterface()
{
    for (const char *name : {"nosuch0", "if!nosuch0"}) {
        HttpSettings settings;
        settings.interfaceName = name;
        HttpClient client(settings);
        TransferSpy spy(client, getFrom(m_server->url()));
        const HttpOutcome outcome = spy.wait();
        QCOMPARE(outcome.kind, Kind::Unreachable);
        QVERIFY2(outcome.text.contains("nosuch0"), qPrintable(outcome.text));
        QVERIFY(!m_server->hasClient());
    }
}

void TestHttpClient::bindsToAddress_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("nothing") << QString() << QByteArray("127.0.0.1");
    QTest::newRow("address") << QString("127.0.0.3") << QByteArray("127.0.0.3");
    QTest::newRow("host") << QString("host!127.0.0.4") << QByteArray("127.0.0.4");
    QTest::newRow("interface") << QString("if!lo") << QByteArray("127.0.0.1");
    QTest::newRow("interface by its bare name") << QString("lo") << QByteArray("127.0.0.1");
}

void TestHttpClient::bindsToAddress()
{
    HttpSettings settings;
    QFETCH(QString, name);
    settings.interfaceName = name;
    HttpClient client(settings);
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    peer.readRequest();
    QTEST(peer.peerAddress(), "address");
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
}

void TestHttpClient::proxyIsUsed()
{
    HttpSettings settings;
    settings.proxy = m_server->url();
    HttpClient client(settings);
    TransferSpy spy(client, postTo("http://mmsc.invalid/mms", "hello"));
    auto peer = m_server->accept();
    const ScriptedRequest request = peer.readRequest();
    QCOMPARE(request.line, "POST http://mmsc.invalid/mms HTTP/1.1");
    QCOMPARE(request.header("Host"), "mmsc.invalid");
    QCOMPARE(request.body, "hello");
    peer.answer("200 OK", "yes");
    QCOMPARE(spy.wait().body, "yes");
}

void TestHttpClient::environmentIsNotAsked()
{
    ScriptedHttp proxy;
    for (const char *name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
        qputenv(name, proxy.url().toLatin1());
    }
    HttpClient client({});
    TransferSpy spy(client, getFrom(m_server->url()));
    auto peer = m_server->accept();
    QCOMPARE(peer.readRequest().line, "GET / HTTP/1.1");
    peer.answer("200 OK");
    QVERIFY(spy.wait().isSuccess());
    QVERIFY(!proxy.hasClient());
    for (const char *name : {"http_proxy", "all_proxy", "ALL_PROXY"}) {
        qunsetenv(name);
    }
}

void TestHttpClient::bodyFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "missing";
    QTest::newRow("folder") << "folder";
    QTest::newRow("link") << "link";
    QTest::newRow("pipe") << "pipe";
}

void TestHttpClient::bodyFiles()
{
    QFETCH(QString, name);
    QVERIFY(QDir(m_folder->path()).mkdir("folder"));
    QVERIFY(QFile::link(fileWith(path("real"), "hello"), path("link")));
    QCOMPARE(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    HttpClient client({});
    HttpRequest request = postTo(m_server->url(), {});
    request.bodyFile = path(name);
    TransferSpy spy(client, request);
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::LocalFailure);
    QVERIFY2(outcome.text.startsWith(path(name) + ": "), qPrintable(outcome.text));
    QVERIFY(!m_server->hasClient());
}

void TestHttpClient::bodyFileThatShrinks()
{
    ScriptedHttp server(4096);
    HttpClient client({});
    HttpRequest request = postTo(server.url(), {});
    request.bodyFile = fileWith(path("body"), manyBytes(5000000));
    TransferSpy spy(client, request);
    auto peer = server.accept();
    peer.readHead();
    QVERIFY(QFile::resize(path("body"), 1000));
    QVERIFY(peer.readToEnd() < 5000000);
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::LocalFailure);
    QCOMPARE(outcome.text, path("body") + ": has become shorter");
}

void TestHttpClient::answerFileIsEmptied()
{
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerFile = fileWith(path("answer"), manyBytes(1000));
    TransferSpy spy(client, request);
    QCOMPARE(QFileInfo(path("answer")).size(), 0);
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK", "abc");
    QVERIFY(spy.wait().isSuccess());
    QCOMPARE(contentOf(path("answer")), "abc");
}

void TestHttpClient::answerFileIsNoLink()
{
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    QVERIFY(QFile::link(fileWith(path("precious"), "mine"), path("answer")));
    request.answerFile = path("answer");
    TransferSpy spy(client, request);
    QCOMPARE(spy.wait().kind, Kind::LocalFailure);
    QCOMPARE(contentOf(path("precious")), "mine");
}

void TestHttpClient::answerFileCannotBeMade()
{
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerFile = path("no/such/folder");
    TransferSpy spy(client, request);
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::LocalFailure);
    QVERIFY(outcome.mayRetry());
    QCOMPARE(outcome.text, path("no/such/folder") + ": No such file or directory");
}

void TestHttpClient::diskIsFull()
{
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_IGN);
    HttpClient client({});
    HttpRequest request = getFrom(m_server->url());
    request.answerFile = path("answer");
    request.answerLimit = 1000000;
    TransferSpy spy(client, request);
    auto peer = m_server->accept();
    peer.readRequest();
    const rlimit small = {4096, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    peer.answer("200 OK", manyBytes(100000));
    const HttpOutcome outcome = spy.wait();
    ::setrlimit(RLIMIT_FSIZE, &before);
    QCOMPARE(outcome.kind, Kind::LocalFailure);
    QVERIFY(outcome.mayRetry());
    QCOMPARE(outcome.text, path("answer") + ": File too large");
}

void TestHttpClient::connectionIsUsedAgain()
{
    HttpClient client({});
    TransferSpy first(client, postTo(m_server->url(), "one"));
    auto peer = m_server->accept();
    QCOMPARE(peer.readRequest().body, "one");
    peer.answer("200 OK");
    QVERIFY(first.wait().isSuccess());
    TransferSpy second(client, postTo(m_server->url(), "two"));
    QCOMPARE(peer.readRequest().body, "two");
    peer.answer("200 OK");
    QVERIFY(second.wait().isSuccess());
    QVERIFY(!m_server->hasClient());
}

void TestHttpClient::deadConnectionIsReplaced()
{
    const QByteArray body = manyBytes(100000);
    HttpClient client({});
    TransferSpy first(client, postTo(m_server->url(), "one"));
    auto peer = m_server->accept();
    peer.readRequest();
    peer.answer("200 OK");
    QVERIFY(first.wait().isSuccess());
    HttpRequest request = postTo(m_server->url(), {});
    request.bodyFile = fileWith(path("body"), body);
    TransferSpy second(client, request);
    peer.readHead();
    peer.reset();
    auto fresh = m_server->accept();
    QVERIFY(fresh.readRequest().body == body);
    fresh.answer("200 OK");
    QVERIFY(second.wait().isSuccess());
}

void TestHttpClient::manyAtATime()
{
    constexpr int kMany = 20;
    HttpClient client({});
    std::vector<std::unique_ptr<TransferSpy>> spies;
    std::vector<ScriptedConnection> peers;
    QList<QByteArray> bodies;
    for (int i = 0; i < kMany; ++i) {
        spies.push_back(
            std::make_unique<TransferSpy>(client, postTo(m_server->url(), QByteArray::number(i))));
    }
    for (int i = 0; i < kMany; ++i) {
        peers.push_back(m_server->accept());
        bodies.append(peers.back().readRequest().body);
    }
    for (int i = kMany; i-- > 0;) {
        peers[size_t(i)].answer("200 OK", "answer to " + bodies[i]);
    }
    for (int i = 0; i < kMany; ++i) {
        QCOMPARE(spies[size_t(i)]->wait().body, QByteArray("answer to " + QByteArray::number(i)));
    }
}

QTEST_GUILESS_MAIN(TestHttpClient)
#include "tst_http_client.moc"

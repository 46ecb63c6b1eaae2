// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Requests through TLS, to a server with a certificate of its own.

#include "services/mmsproxyd/proxy_daemon.h"
#include "tests/services/mmsproxyd/mmsc_script.h"
#include "tests/services/mmsproxyd/spool_folder.h"
#include "tests/services/mmsproxyd/transfer_spy.h"
#include "tests/support/session_peer.h"
#include "tests/support/tls_server.h"

#include <QtCore/QTemporaryDir>

#include <platform/applog/applog.h>

#include <csignal>

using namespace wmsg::proxy;
using Kind = HttpOutcome::Kind;

class TestHttps : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void posts();
    void getsIntoFile();
    void refused_data();
    void refused();
    void noTls();
    void cut();
    void aSendEndsWithWhatTheCertificateIs_data();
    void aSendEndsWithWhatTheCertificateIs();

private:
    HttpSettings believing(const QString &file) const
    {
        HttpSettings settings;
        settings.authorities = file;
        return settings;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<TestCertificate> m_certificate;
    std::unique_ptr<TestCertificate> m_other;
};

void TestHttps::initTestCase()
{
    std::signal(SIGPIPE, SIG_IGN);
    appLogModuleStream = appLogDiscardStream();
    QLoggingCategory::setFilterRules("wmsg.*=false");
    m_certificate = std::make_unique<TestCertificate>(m_folder.path(), "mmsc", "IP:127.0.0.1");
    m_other = std::make_unique<TestCertificate>(m_folder.path(), "other", "DNS:other.example");
    QVERIFY(QSslSocket::supportsSsl());
}

void TestHttps::posts()
{
    TlsServer server(*m_certificate);
    HttpClient client(believing(m_certificate->file));
    const QByteArray body = manyBytes(100000);
    TransferSpy spy(client, postTo(server.url(), body));
    const HttpOutcome outcome = spy.wait();
    QVERIFY2(outcome.isSuccess(), qPrintable(outcome.text));
    QCOMPARE(outcome.body, QByteArray("hello"));
    QCOMPARE(server.requests.size(), 1);
    QVERIFY(server.requests[0].startsWith("POST /mms HTTP/1.1\r\n"));
    QVERIFY(server.requests[0].endsWith("\r\n\r\n" + body));
    QCOMPARE(spy.progress.last(), (QPair<qint64, qint64>(100000, 100000)));
}

void TestHttps::getsIntoFile()
{
    TlsServer server(*m_certificate);
    const QByteArray body = manyBytes(100000);
    server.answer = "HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" + body;
    HttpClient client(believing(m_certificate->file));
    HttpRequest request = getFrom(server.url());
    request.answerFile = m_folder.filePath("answer");
    request.answerLimit = 200000;
    TransferSpy spy(client, request);
    QVERIFY(spy.wait().isSuccess());
    QVERIFY(contentOf(request.answerFile) == body);
}

void TestHttps::refused_data()
{
    QTest::addColumn<QString>("authorities");
    QTest::addColumn<bool>("isForOther");
    QTest::addColumn<QString>("says");
    QTest::newRow("an authority that nobody knows") << "" << false << "certificate";
    QTest::newRow("another authority") << m_other->file << false << "certificate";
    QTest::newRow("another name") << m_other->file << true << "127.0.0.1";
    QTest::newRow("no file of authorities") << m_folder.filePath("none") << false << "none";
    QTest::newRow("no certificate in it")
        << fileWith(m_folder.filePath("empty.pem"), "no certificate\n") << false << "empty.pem";
}

// Nothing of a message gets to a server that is not the one it is for.
void TestHttps::refused()
{
    QFETCH(QString, authorities);
    QFETCH(bool, isForOther);
    QFETCH(QString, says);
    TlsServer server(isForOther ? *m_other : *m_certificate);
    HttpClient client(believing(authorities));
    TransferSpy spy(client, postTo(server.url(), "secret"));
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Unreachable);
    QVERIFY(outcome.mayRetry()); // the clock of a phone may be wrong yet
    QVERIFY2(outcome.text.contains(says), qPrintable(outcome.text));
    QCOMPARE(server.requests.join(), QByteArray());
}

void TestHttps::noTls()
{
    ScriptedHttp server;
    HttpClient client(believing(m_certificate->file));
    TransferSpy spy(client,
                    getFrom("https://127.0.0.1:" + QString::number(server.port()) + "/mms"));
    auto peer = server.accept();
    peer.send("HTTP/1.1 400 Bad Request\r\n\r\n");
    const HttpOutcome outcome = spy.wait();
    QCOMPARE(outcome.kind, Kind::Unreachable);
    QVERIFY(!outcome.text.isEmpty());
}

void TestHttps::cut()
{
    TlsServer server(*m_certificate);
    server.answer = "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nhello";
    HttpClient client(believing(m_certificate->file));
    TransferSpy spy(client, getFrom(server.url()));
    QCOMPARE(spy.wait().kind, Kind::Cut);
}

void TestHttps::aSendEndsWithWhatTheCertificateIs_data()
{
    QTest::addColumn<bool>("isKnown");
    QTest::addColumn<QString>("end");
    QTest::newRow("of an authority that was named") << true << "completed 1 0 ";
    QTest::newRow("of one that nobody knows") << false << "completed 1 19 ";
}

void TestHttps::aSendEndsWithWhatTheCertificateIs()
{
    QFETCH(bool, isKnown);
    QFETCH(QString, end);
    TlsServer server(*m_certificate);
    SpoolFolder folder;
    Config config;
    config.proxySocket = folder.outside("proxy");
    config.settingsSocket = folder.outside("settings");
    config.pushSocket = folder.outside("push");
    config.spool = folder.path();
    config.takesShortMessages = false;
    config.mmsc = server.url();
    config.authorities = isKnown ? m_certificate->file : QString();
    // Without a transaction it confirms any.
    const QByteArray confirmation("\x8C\x81\x8D\x92\x92\x80", 6);
    server.answer = "HTTP/1.1 200 OK\r\nContent-Type: application/vnd.wap.mms-message\r\n"
                    "Content-Length: 6\r\n\r\n"
        + confirmation;
    ProxyDaemon daemon(config);
    QCOMPARE(daemon.start(), QString());
    SessionPeer session(folder.outside("proxy"));
    const QString path = folder.outside("letter");
    writeMailFile(path);
    session.sendMessage(1, path);
    QCOMPARE(session.next(), end + path);
    QCOMPARE(server.requests.join().contains("POST "), isKnown);
}

QTEST_GUILESS_MAIN(TestHttps)
#include "tst_https.moc"

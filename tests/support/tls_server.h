// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtNetwork/QSslKey>
#include <QtNetwork/QSslServer>
#include <QtNetwork/QSslSocket>
#include <QtTest/QtTest>

/// A certificate that is its own authority, for `names` ("IP:127.0.0.1"), and its key. It is made
/// now, and good for two days.
class TestCertificate {
public:
    TestCertificate(const QString &folder, const QString &name, const QString &names)
        : file(folder + '/' + name + ".pem"), m_keyFile(folder + '/' + name + ".key")
    {
        QProcess openssl;
        openssl.start("openssl",
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                       "-nodes", "-days", "2", "-subj", "/CN=" + name, "-addext",
                       "subjectAltName=" + names, "-keyout", m_keyFile, "-out", file});
        const bool isMade = openssl.waitForFinished() && openssl.exitCode() == 0;
        QVERIFY2(isMade, openssl.errorString().toUtf8() + openssl.readAllStandardError());
    }

    [[nodiscard]] QSslConfiguration configuration() const
    {
        QFile key(m_keyFile);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        if (key.open(QIODevice::ReadOnly)) {
            configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
        }
        configuration.setLocalCertificateChain(QSslCertificate::fromPath(file));
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        return configuration;
    }

    const QString file;

private:
    QString m_keyFile;
};

/// An HTTP server behind TLS, in the thread of the test. It takes one request for each connection,
/// gives all the same answer, and hangs up.
class TlsServer {
public:
    explicit TlsServer(const TestCertificate &certificate)
    {
        m_server.setSslConfiguration(certificate.configuration());
        QVERIFY(m_server.listen(QHostAddress::LocalHost));
        QObject::connect(&m_server, &QTcpServer::pendingConnectionAvailable, &m_server,
                         [this] { take(m_server.nextPendingConnection()); });
    }

    [[nodiscard]] QString url() const
    {
        return "https://127.0.0.1:" + QString::number(m_server.serverPort()) + "/mms";
    }

    /// What is answered; it is cut off behind as many bytes.
    QByteArray answer = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello";
    /// What came in connections that were encrypted.
    QByteArrayList requests;

private:
    void take(QTcpSocket *socket)
    {
        requests.append(QByteArray());
        const qsizetype number = requests.size() - 1;
        QObject::connect(socket, &QIODevice::readyRead, socket, [this, socket, number] {
            requests[number] += socket->readAll();
            if (isWhole(requests[number])) {
                socket->write(answer);
                socket->disconnectFromHost();
            }
        });
        QObject::connect(socket, &QAbstractSocket::disconnected, socket, &QObject::deleteLater);
    }
    static bool isWhole(const QByteArray &request)
    {
        const qsizetype head = request.indexOf("\r\n\r\n");
        static const QRegularExpression length("Content-Length: (\\d+)");
        const auto found = length.match(QString::fromLatin1(request));
        return head >= 0 && request.size() >= head + 4 + found.captured(1).toLongLong();
    }

    QSslServer m_server;
};

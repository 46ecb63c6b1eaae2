// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmsession.h"
#include "platform/applog/applog.h"
#include "sms/wsmssession.h"
#include "tests/services/telephonyd/program.h"
#include "tests/sms/recording_listener.h"

/// Two applications, each with a session of the library, over the daemon.
class TestSmsSessions : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        appLogModuleStream = appLogDiscardStream();
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("WMSG_TELEPHONY_SOCKET", m_folder->filePath("socket").toLocal8Bit());
        m_daemon = std::make_unique<TelephonyProgram>(*m_folder);
    }
    void cleanup()
    {
        close(m_one);
        close(m_two);
        m_daemon.reset();
        qunsetenv("WMSG_TELEPHONY_SOCKET");
    }

    void textsComeBack_data()
    {
        QTest::addColumn<QString>("text");
        const QString emoji = QString::fromUcs4(U"\U0001F600");
        QTest::newRow("nothing") << QString("");
        QTest::newRow("short") << QString("hello");
        QTest::newRow("160 septets") << QString(160, 'a');
        QTest::newRow("extension table")
            << QString::fromUtf8("{[\xE2\x82\xAC]}") + QString(150, 'b');
        QTest::newRow("an emoji up to unit 70") << QString(68, 'a') + emoji;
    }
    void textsComeBack()
    {
        QFETCH(QString, text);
        QVERIFY(m_daemon->start());
        open(m_one);
        open(m_two);
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "+43664"));
        message.setBody(text);
        QCOMPARE(m_one.session->send(&message, m_status), 1);
        QTRY_COMPARE(m_one.listener->statuses, QStringList{"1: 0"});
        QTRY_COMPARE(m_one.listener->messages.size(), size_t(1));
        QTRY_COMPARE(m_two.listener->messages.size(), size_t(1));
        QString got;
        QVERIFY(m_two.listener->messages[0]->getBody(got));
        QCOMPARE(got, text);
        QCOMPARE(m_two.listener->messages[0]->getFrom().getEntryVal(), QString("+43664"));
        QVERIFY(m_two.listener->statuses.isEmpty());
    }

    void dataGoToWhoHasThePort()
    {
        QVERIFY(m_daemon->start());
        open(m_one);
        open(m_two);
        QCOMPARE(int(m_two.session->registerPortNumber(9000, SMS_RECV_MODE_ALL)), 0);
        QVERIFY(int(m_one.session->registerPortNumber(9000, SMS_RECV_MODE_ALL)) != 0);
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "12"));
        message.setPortNumber(9000, 9001);
        const QByteArray bytes(133, '\xFE');
        message.setBody(QArray<char>(QByteArrayView(bytes)));
        QCOMPARE(m_one.session->send(&message, m_status), 1);
        QTRY_COMPARE(m_two.listener->messages.size(), size_t(1));
        unsigned short destination = 0;
        unsigned short source = 0;
        QVERIFY(m_two.listener->messages[0]->getPortNumber(&destination, &source));
        QCOMPARE(destination, 9000);
        QCOMPARE(source, 9001);
        QArray<char> got;
        QVERIFY(m_two.listener->messages[0]->getBody(got));
        QCOMPARE(got.view().toByteArray(), bytes);
        QTRY_COMPARE(m_one.listener->statuses, QStringList{"1: 0"});
        QVERIFY(m_one.listener->messages.empty());
    }

    void aRefusalIsTold()
    {
        QVERIFY(m_daemon->start({"--loopback-fail", "38:2"}));
        open(m_one);
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "12"));
        message.setBody(QString("hello"));
        for (int i = 1; i <= 3; ++i) {
            QCOMPARE(m_one.session->send(&message, m_status), i);
        }
        QTRY_COMPARE(m_one.listener->statuses.size(), 3);
        QVERIFY2(m_one.listener->statuses[0] != "1: 0" && m_one.listener->statuses[1] != "2: 0",
                 qPrintable(m_one.listener->statuses.join(", ")));
        QCOMPARE(m_one.listener->statuses[2], QString("3: 0"));
        QTRY_COMPARE(m_one.listener->messages.size(), size_t(1));
    }

    void aDaemonThatIsKilledLosesNothing()
    {
        QVERIFY(m_daemon->start({"--loopback-delay", "600000"}));
        open(m_one);
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "12"));
        message.setBody(QString("hello"));
        QCOMPARE(m_one.session->send(&message, m_status), 1);
        QDir out(m_folder->filePath("spool/out"));
        QTRY_VERIFY(!out.entryList({"*.json"}, QDir::Files).isEmpty());
        m_daemon->kill();
        m_daemon = std::make_unique<TelephonyProgram>(*m_folder);
        QVERIFY(m_daemon->start());
        QTRY_COMPARE_WITH_TIMEOUT(m_one.listener->messages.size(), size_t(1), 30000);
        QTRY_COMPARE(m_one.listener->statuses.size(), 1);
        QTRY_VERIFY(out.entryList({"*.json"}, QDir::Files).isEmpty());
    }

    void aMessageWaitsForAnApplication()
    {
        QVERIFY(m_daemon->start());
        open(m_one);
        static_cast<WSMSSession *>(m_one.session)->setTakesMessages(false);
        WSMSMsg message;
        message.setTo(WMFMEntry(1, "12"));
        message.setBody(QString("hello"));
        QCOMPARE(m_one.session->send(&message, m_status), 1);
        QTRY_COMPARE(m_one.listener->statuses, QStringList{"1: 0"});
        close(m_one);
        QVERIFY(m_daemon->stop());
        QVERIFY(m_daemon->start());
        open(m_two);
        QTRY_COMPARE(m_two.listener->messages.size(), size_t(1));
    }

private:
    struct Application {
        WSMSSession *session = nullptr;
        std::unique_ptr<RecordingListener> listener;
    };
    void open(Application &application)
    {
        application.session =
            static_cast<WSMSSession *>(WMFMSession::open(WMFM::MSG_TYPE_SMS, m_status));
        QCOMPARE(int(m_status), 0);
        application.listener = std::make_unique<RecordingListener>(application.session);
        QVERIFY(application.session->setListener(application.listener.get(), m_status));
    }
    static void close(Application &application)
    {
        if (application.session) {
            WMFMSession::close(std::exchange(application.session, nullptr));
        }
        application.listener.reset();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TelephonyProgram> m_daemon;
    Application m_one;
    Application m_two;
    WMFM::STATUS_T m_status = WMFM::STATUS_OK;
};

QTEST_GUILESS_MAIN(TestSmsSessions)
#include "tst_sms_sessions.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmsession.h"
#include "platform/applog/applog.h"
#include "sms/wsmssession.h"
#include "tests/sms/recording_listener.h"
#include "tests/support/telephony_peer.h"

#include <QtTest/QtTest>

using namespace wmsg::telephony;

namespace {

const QString kEmoji = QString::fromUcs4(U"\U0001F600");

QString textOf(const WSMSMsg &message)
{
    QString text;
    return message.getBody(text) ? text : QString("no text");
}

/// What is sent; exactly so much fits one message.
struct LimitRow {
    const char *name;
    QString text;
    int bytes; ///< of data, where it is no text
    bool hasPorts;
    int status;
};
// clang-format off
const LimitRow kLimits[] = {
    {"159 septets",                       QString(159, 'a'),          -1,  false, 0},
    {"160 septets",                       QString(160, 'a'),          -1,  false, 0},
    {"161 septets",                       QString(161, 'a'),          -1,  false, 27},
    {"69 units",                          QString(69, QChar(0x416)),  -1,  false, 0},
    {"70 units",                          QString(70, QChar(0x416)),  -1,  false, 0},
    {"71 units",                          QString(71, QChar(0x416)),  -1,  false, 27},
    {"an emoji up to unit 70",            QString(68, 'a') + kEmoji,  -1,  false, 0},
    {"an emoji across unit 70",           QString(69, 'a') + kEmoji,  -1,  false, 27},
    {"152 septets to a port",             QString(152, 'a'),          -1,  true,  0},
    {"153 septets to a port",             QString(153, 'a'),          -1,  true,  27},
    {"66 units to a port",                QString(64, 'a') + kEmoji,  -1,  true,  0},
    {"67 units to a port",                QString(65, 'a') + kEmoji,  -1,  true,  27},
    {"the longest text",                  QString(3200, 'a'),         -1,  false, 27},
    {"140 bytes",                         QString(),                  140, false, 0},
    {"141 bytes",                         QString(),                  141, false, 127},
    {"132 bytes to a port",               QString(),                  132, true,  0},
    {"133 bytes to a port",               QString(),                  133, true,  0},
    {"134 bytes to a port",               QString(),                  134, true,  127},
};
// clang-format on

} // namespace

/// A session with the real telephony library, up to the socket of the daemon.
class TestSmsDaemon : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void noDaemon();
    void limits_data();
    void limits();
    void sendsAndHears();
    void receives();
    void withoutAListenerItStays();
    void ports();
    void closedByItsListener();
    void theDaemonVanishes();

private:
    std::unique_ptr<TelephonyPeer> m_daemon;
    WSMSSession *m_session = nullptr;
    std::unique_ptr<RecordingListener> m_listener;
    WMFM::STATUS_T m_status = WMFM::STATUS_OK;
};

void TestSmsDaemon::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    appLogModuleStream = appLogDiscardStream();
    m_daemon = std::make_unique<TelephonyPeer>();
    m_session = static_cast<WSMSSession *>(WMFMSession::open(WMFM::MSG_TYPE_SMS, m_status));
    QCOMPARE(int(m_status), 0);
    m_listener = std::make_unique<RecordingListener>(m_session);
    QVERIFY(m_session->setListener(m_listener.get(), m_status));
    m_daemon->takeHeard();
}

void TestSmsDaemon::cleanup()
{
    WMFMSession::close(std::exchange(m_session, nullptr));
    m_listener.reset();
    m_daemon.reset();
}

void TestSmsDaemon::noDaemon()
{
    m_daemon->stopListening();
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    WMFMSession *session = WMFMSession::open(WMFM::MSG_TYPE_SMS, status);
    QVERIFY(session);
    QCOMPARE(int(status), 127);
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "12"));
    QCOMPARE(session->send(&message, status), -1);
    QCOMPARE(int(status), 127);
    WMFMSession::close(session);
}

void TestSmsDaemon::limits_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kLimits); ++i) {
        QTest::newRow(kLimits[i].name) << int(i);
    }
}

void TestSmsDaemon::limits()
{
    QFETCH(int, row);
    const LimitRow &limit = kLimits[row];
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "12"));
    if (limit.hasPorts) {
        message.setPortNumber(9000, 9001);
    }
    const QByteArray bytes(qMax(limit.bytes, 0), 'x');
    QVERIFY(limit.bytes < 0 ? message.setBody(limit.text)
                            : message.setBody(QArray<char>(QByteArrayView(bytes))));
    QCOMPARE(m_session->send(&message, m_status), limit.status == 0 ? 1 : -1);
    QCOMPARE(int(m_status), limit.status);
    if (limit.status == 0) {
        QTRY_COMPARE(m_daemon->heard().size(), 1);
    }
    // Nothing else was sent: the next message is the first or the second.
    message.setBody(QString("Hi"));
    QCOMPARE(m_session->send(&message, m_status), limit.status == 0 ? 2 : 1);
}

void TestSmsDaemon::sendsAndHears()
{
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "12"));
    message.setBody(QString("Hi"));
    const int reference = m_session->send(&message, m_status);
    QCOMPARE(reference, 1);
    QTRY_COMPARE(
        m_daemon->heard(),
        QStringList{
            "2: 01 00 00 00 03 00 00 00 00 00 05 2B 34 33 36 36 02 31 32 04 00 48 00 69 00"});
    QCOMPARE(m_listener->statuses, QStringList());
    m_daemon->send(toFrame(Result{reference, 9, 38}));
    QTRY_COMPARE(m_listener->statuses, QStringList{"1: 38"});
}

void TestSmsDaemon::receives()
{
    Message incoming;
    incoming.id = 1;
    incoming.sender = "+43664";
    incoming.time = 1100000000;
    incoming.hasPorts = true;
    incoming.destinationPort = 9000;
    incoming.sourcePort = 9001;
    incoming.body = fromHex("48 00 69 00");
    m_daemon->send(toFrame(incoming));
    QTRY_COMPARE(int(m_listener->messages.size()), 1);
    WSMSMsg &message = *m_listener->messages.front();
    QCOMPARE(textOf(message), QString("Hi"));
    QCOMPARE(message.getFrom().getEntryVal(), QString("+43664"));
    QCOMPARE(message.getTimeStamp().toSecsSinceEpoch(), 1100000000);
    unsigned short p1 = 0;
    unsigned short p2 = 0;
    QVERIFY(message.getPortNumber(&p1, &p2));
    QCOMPARE(int(p1), 9000);
    QCOMPARE(int(p2), 9001);
    QTRY_COMPARE(m_daemon->heard(), QStringList{"6: 01 00 00 00 00 00 00 00 01"});

    // The answer goes back to where it came from.
    message.setTo(message.getFrom());
    message.setPortNumber(p2, p1);
    QVERIFY(m_session->send(&message, m_status) > 0);
}

void TestSmsDaemon::withoutAListenerItStays()
{
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    WMFMSession::close(m_session);
    m_session = static_cast<WSMSSession *>(WMFMSession::open(WMFM::MSG_TYPE_SMS, status));
    m_daemon->takeHeard();
    Message incoming;
    incoming.id = 1;
    m_daemon->send(toFrame(incoming));
    QTRY_COMPARE(m_daemon->heard(), QStringList{"6: 01 00 00 00 00 00 00 00 00"});
}

void TestSmsDaemon::ports()
{
    QCOMPARE(int(m_session->registerPortNumber(2948, SMS_RECV_MODE_PORTS)), 0);
    QCOMPARE(int(m_session->deregisterPortNumber(2948)), 0);
    m_daemon->answer(RecordType::RegisterPort, toFrame(Done{Answer::PortTaken}));
    QCOMPARE(int(m_session->registerPortNumber(2948, SMS_RECV_MODE_ALL)), 127);
    QCOMPARE(m_daemon->heard(), QStringList({"3: 84 0B 01", "4: 84 0B", "3: 84 0B 00"}));
}

void TestSmsDaemon::closedByItsListener()
{
    m_listener->then = [this] {
        WMFMSession::close(std::exchange(m_session, nullptr));
    };
    Message incoming;
    incoming.id = 1;
    Message second;
    second.id = 2;
    m_daemon->send(toFrame(incoming) + toFrame(second));
    QTRY_COMPARE(m_daemon->gone(), 1);
    // The first was taken; the second is for another session.
    QCOMPARE(m_daemon->heard(), QStringList{"6: 01 00 00 00 00 00 00 00 01"});
    QCOMPARE(int(m_listener->messages.size()), 1);
}

void TestSmsDaemon::theDaemonVanishes()
{
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "12"));
    QCOMPARE(m_session->send(&message, m_status), 1);
    QTRY_COMPARE(m_daemon->heard().size(), 1);
    m_daemon->stopListening();
    m_daemon->drop();
    // What became of it is unknown, and told.
    QTRY_COMPARE_WITH_TIMEOUT(m_listener->statuses, QStringList{"1: 65538"}, 60000);
    QCOMPARE(m_session->send(&message, m_status), -1);
    QCOMPARE(int(m_status), 127);
}

QTEST_GUILESS_MAIN(TestSmsDaemon)
#include "tst_sms_daemon.moc"

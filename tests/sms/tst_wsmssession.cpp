// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmsg.h"
#include "platform/applog/applog.h"
#include "sms/wsmsmsg_p.h"
#include "sms/wsmssession.h"
#include "tests/sms/recording_listener.h"
#include "tests/support/fake_telephony.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

namespace {

/// Says that it is a short message, and is none.
class Impostor : public WMFMMsg {
public:
    WMFMEntry getFrom() override { return WMFMEntry(); }
    bool setTo(const WMFMEntry &) override { return true; }
    WMFM::MSG_TYPE_T getMsgType() const override { return WMFM::MSG_TYPE_SMS; }
};

class OpenMessage : public WSMSMsg {
public:
    using WSMSMsg::record;
};

QArray<char> bytesOf(const QByteArray &bytes)
{
    return QArray<char>(QByteArrayView(bytes.constData(), bytes.size()));
}

/// The lines that the session logs for a message, but for the dump of its bytes.
QStringList withoutDump(const QStringList &lines)
{
    QStringList kept;
    bool isDump = false;
    for (const QString &line : lines) {
        isDump = isDump || line.contains("MMS data BEGIN");
        if (!isDump) {
            kept.append(line);
        }
        isDump = isDump && !line.contains("MMS data END");
    }
    return kept;
}

} // namespace

class TestWSMSSession : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fresh();
    void noMessage();
    void otherMessages();
    void noRecipient();
    void sendsText_data();
    void sendsText();
    void sendsData();
    void sendsEightBitText();
    void sendsToAPort_data();
    void sendsToAPort();
    void sendsDataToAPort();
    void sendsNothingToAPort();
    void sendsAnyBytes_data();
    void sendsAnyBytes();
    void doesNotFit_data();
    void doesNotFit();
    void dataIsNotChecked();
    void theServiceRefuses_data();
    void theServiceRefuses();
    void serviceCenters_data();
    void serviceCenters();
    void longNumbers();
    void registersPorts();
    void withoutAService();

private:
    /// A message to +43664 by +43.
    static void address(WSMSMsg &message);
    int send(WSMSMsg &message);

    std::unique_ptr<FakeTelephony> m_phone;
    std::unique_ptr<WSMSSession> m_session;
    WMFM::STATUS_T m_status = WMFM::STATUS_OK;
};

void TestWSMSSession::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    appLogModuleStream = appLogDiscardStream();
    m_phone = std::make_unique<FakeTelephony>();
    m_session = std::make_unique<WSMSSession>(m_status);
    QCOMPARE(int(m_status), 0);
    m_phone->calls.clear();
    m_status = WMFM::STATUS_T(99);
}

void TestWSMSSession::cleanup()
{
    m_session.reset();
    m_phone.reset();
}

void TestWSMSSession::address(WSMSMsg &message)
{
    QVERIFY(message.setTo(WMFMEntry(1, "+43664")));
    QVERIFY(message.setServiceCenter("+43"));
}

int TestWSMSSession::send(WSMSMsg &message)
{
    m_status = WMFM::STATUS_T(99);
    return m_session->send(&message, m_status);
}

void TestWSMSSession::fresh()
{
    QCOMPARE(int(m_session->getMsgType()), 1);
    QCOMPARE(int(m_session->getRegisteredPort()), 0);
    QVERIFY(!m_session->getListener());
}

void TestWSMSSession::noMessage()
{
    LogCapture log;
    QCOMPARE(m_session->send(nullptr, m_status), -1);
    QCOMPARE(int(m_status), 127);
    QCOMPARE(log.lines(), QStringList());
}

void TestWSMSSession::otherMessages()
{
    // A message of another kind gives 0 and not -1.
    WMMSMsg multimedia;
    Impostor impostor;
    for (WMFMMsg *message :
         {static_cast<WMFMMsg *>(&multimedia), static_cast<WMFMMsg *>(&impostor)}) {
        m_status = WMFM::STATUS_OK;
        QCOMPARE(m_session->send(message, m_status), 0);
        QCOMPARE(int(m_status), 127);
    }
    QCOMPARE(m_phone->calls, QStringList());
}

void TestWSMSSession::noRecipient()
{
    LogCapture log;
    WSMSMsg message;
    message.setBody(QString("Hi"));
    QCOMPARE(send(message), -1);
    QCOMPARE(int(m_status), 19);
    QCOMPARE(log.lines(), QStringList{"no To address,send fail!"});
    QCOMPARE(m_phone->calls, QStringList());
}

void TestWSMSSession::sendsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("body");
    QTest::newRow("text") << "Hi"
                          << "length 2 [48 00 69 00]";
    QTest::newRow("empty") << ""
                           << "length 0 []";
    QTest::newRow("a surrogate pair") << u"\U0001F600"_qs << "length 2 [3D D8 00 DE]";
}

void TestWSMSSession::sendsText()
{
    QFETCH(QString, text);
    QFETCH(QString, body);
    WSMSMsg message;
    address(message);
    QVERIFY(message.setBody(text));
    LogCapture log;
    QCOMPARE(send(message), 41);
    QCOMPARE(int(m_status), 0);
    QCOMPARE(m_phone->calls,
             QStringList({QString("fits 0 %1").arg(text.size()),
                          "send 5 to '+43664' by '+43' coding 0 " + body}));
    QCOMPARE(log.lines(), QStringList({"to:+43664", "server:+43"}));
}

void TestWSMSSession::sendsData()
{
    WSMSMsg message;
    address(message);
    QVERIFY(message.setBody(bytesOf(fromHex("00 01 FF"))));
    LogCapture log;
    m_phone->reference = -7;
    QCOMPARE(send(message), -7); // the reference as the service wrote it
    QCOMPARE(int(m_status), 0);
    QCOMPARE(m_phone->calls,
             QStringList{"send 5 to '+43664' by '+43' coding 2 length 3 [00 01 FF]"});
    QCOMPARE(log.lines(), QStringList({"to:+43664", "server:+43"}));
}

void TestWSMSSession::sendsEightBitText()
{
    OpenMessage message;
    address(message);
    message.record().bodyType = WSMSMsgPrivate::kText8;
    message.getData() = bytesOf(fromHex("48 00"));
    QCOMPARE(send(message), 41);
    QCOMPARE(m_phone->calls, QStringList{"send 5 to '+43664' by '+43' coding 2 length 2 [48 00]"});
}

void TestWSMSSession::sendsToAPort_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("bytes");
    QTest::addColumn<QStringList>("dump");
    QTest::newRow("text")
        << "Hi" << 4 << "[48 00 69 00]"
        << QStringList({"********** MMS data BEGIN **********\n", "The data length=4\n",
                        "48 00 69 00                                               H.i.\n",
                        "********** MMS data END **********\n"});
    QTest::newRow("empty") << "" << 0 << "[]" << QStringList{"the pData==NULL || sz==0 ,return"};
}

void TestWSMSSession::sendsToAPort()
{
    QFETCH(QString, text);
    QFETCH(int, length);
    QFETCH(QString, bytes);
    QFETCH(QStringList, dump);
    WSMSMsg message;
    address(message);
    message.setPortNumber(2948, 9200);
    QVERIFY(message.setBody(text));
    LogCapture log;
    QCOMPARE(send(message), 41);
    QCOMPARE(int(m_status), 0);
    QCOMPARE(m_phone->calls,
             QStringList(
                 {QString("fits to port 0 %1").arg(length),
                  QString("send 5 to '+43664' port 2948 from 9200 by '+43' coding 0 length %1 %2")
                      .arg(length)
                      .arg(bytes)}));
    QCOMPARE(
        log.lines(),
        QStringList({"SMS send with port number", QString("out, sm.msgBufLength:%1").arg(length)})
            + dump);
}

void TestWSMSSession::sendsDataToAPort()
{
    WSMSMsg message;
    address(message);
    message.setPortNumber(65535, 0);
    QVERIFY(message.setBody(bytesOf(fromHex("00 01 FF"))));
    LogCapture log;
    QCOMPARE(send(message), 41);
    QCOMPARE(
        m_phone->calls,
        QStringList{"send 5 to '+43664' port 65535 from 0 by '+43' coding 2 length 3 [00 01 FF]"});
    QCOMPARE(withoutDump(log.lines()),
             QStringList({"SMS send with port number", "out, sm.msgBufLength:3"}));
}

void TestWSMSSession::sendsNothingToAPort()
{
    // The ports 0 and 0 are ports when they were set.
    WSMSMsg message;
    address(message);
    message.setPortNumber(0, 0);
    QCOMPARE(send(message), 41);
    QCOMPARE(m_phone->calls,
             QStringList({"fits to port 0 0",
                          "send 5 to '+43664' port 0 from 0 by '+43' coding 0 length 0 []"}));
}

void TestWSMSSession::sendsAnyBytes_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("units");
    QTest::addColumn<int>("bytes");
    QTest::newRow("no body") << -1 << 0 << 0;
    QTest::newRow("0") << 0 << 0 << 0;
    QTest::newRow("1") << 1 << 0 << 0;
    QTest::newRow("2") << 2 << 0 << 0;
    QTest::newRow("3") << 3 << 0 << 1;
    QTest::newRow("5") << 5 << 1 << 3;
    QTest::newRow("many") << 100000 << 49999 << 99998;
}

void TestWSMSSession::sendsAnyBytes()
{
    QFETCH(int, size);
    QFETCH(int, units);
    QFETCH(int, bytes);
    WSMSMsg message;
    address(message);
    if (size >= 0) {
        message.getData() = bytesOf(QByteArray(size, 'x'));
    }
    QCOMPARE(send(message), 41);
    QCOMPARE(m_phone->calls.first(), QString("fits 0 %1").arg(units));
    message.setPortNumber(1, 2);
    m_phone->calls.clear();
    QCOMPARE(send(message), 41);
    QCOMPARE(m_phone->calls.first(), QString("fits to port 0 %1").arg(bytes));
}

void TestWSMSSession::doesNotFit_data()
{
    QTest::addColumn<bool>("hasPorts");
    QTest::addColumn<QStringList>("log");
    QTest::addColumn<QString>("call");
    QTest::newRow("plain") << false
                           << QStringList(
                                  {"to:+43664", "server:+43", "the SMS content overflow,send fail"})
                           << "fits 0 2";
    QTest::newRow("to a port") << true
                               << QStringList({"SMS send with port number",
                                               "the SMS content overflow,send fail"})
                               << "fits to port 0 4";
}

void TestWSMSSession::doesNotFit()
{
    QFETCH(bool, hasPorts);
    QFETCH(QStringList, log);
    QFETCH(QString, call);
    WSMSMsg message;
    address(message);
    message.setBody(QString("Hi"));
    if (hasPorts) {
        message.setPortNumber(1, 2);
    }
    m_phone->fitsOneMessage = false;
    for (int misfit : {1, 3, -1, INT_MIN}) {
        m_phone->misfit = misfit;
        m_phone->calls.clear();
        LogCapture captured;
        QCOMPARE(send(message), -1);
        QCOMPARE(int(m_status), 27);
        QCOMPARE(captured.lines(), log);
        QCOMPARE(m_phone->calls, QStringList{call});
    }
}

void TestWSMSSession::dataIsNotChecked()
{
    m_phone->fitsOneMessage = false;
    WSMSMsg message;
    address(message);
    message.setBody(bytesOf("x"));
    QCOMPARE(send(message), 41);
    message.setPortNumber(1, 2);
    QCOMPARE(send(message), 41);
    QCOMPARE(int(m_status), 0);
}

void TestWSMSSession::theServiceRefuses_data()
{
    QTest::addColumn<int>("result");
    for (int result : {1, -1, 19, INT_MIN}) {
        QTest::addRow("%d", result) << result;
    }
}

void TestWSMSSession::theServiceRefuses()
{
    QFETCH(int, result);
    m_phone->sendResult = result;
    m_phone->reference = 12;
    WSMSMsg message;
    address(message);
    for (bool hasPorts : {false, true}) {
        if (hasPorts) {
            message.setPortNumber(1, 2);
        }
        QCOMPARE(send(message), 12);
        QCOMPARE(int(m_status), 127);
    }
}

void TestWSMSSession::serviceCenters_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QByteArray>("byDefault");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("used");
    QTest::addColumn<bool>("isAsked");
    QTest::newRow("its own") << "+43" << QByteArray("+9") << 0 << "+43" << false;
    QTest::newRow("the default") << "" << QByteArray("+9") << 0 << "+9" << true;
    QTest::newRow("no default") << "" << QByteArray() << 0 << "" << true;
    QTest::newRow("42 characters") << "" << QByteArray(42, '1') << 0 << QString(42, '1') << true;
    QTest::newRow("43 characters") << "" << QByteArray(43, '1') << 0 << QString(42, '1') << true;
    QTest::newRow("no answer") << "" << QByteArray("+9") << 4 << "" << true;
    QTest::newRow("its own, long")
        << QString(60, '2') << QByteArray() << 0 << QString(42, '2') << false;
}

void TestWSMSSession::serviceCenters()
{
    QFETCH(QString, own);
    QFETCH(QByteArray, byDefault);
    QFETCH(int, result);
    QFETCH(QString, used);
    QFETCH(bool, isAsked);
    m_phone->serviceCenter = byDefault;
    m_phone->serviceCenterResult = result;
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "1"));
    message.setServiceCenter(own);
    const QStringList asked = isAsked ? QStringList{"service centre 5"} : QStringList();
    const QStringList told = isAsked ? QStringList{"default serviceCenter:" + used} : QStringList();
    {
        LogCapture log;
        QCOMPARE(send(message), 41);
        QCOMPARE(
            m_phone->calls,
            asked
                + QStringList(
                    {"fits 0 0", QString("send 5 to '1' by '%1' coding 0 length 0 []").arg(used)}));
        QCOMPARE(log.lines(), told + QStringList({"to:1", "server:" + used}));
    }
    m_phone->calls.clear();
    message.setPortNumber(1, 2);
    LogCapture log;
    QCOMPARE(send(message), 41);
    QCOMPARE(
        m_phone->calls,
        asked
            + QStringList(
                {"fits to port 0 0",
                 QString("send 5 to '1' port 1 from 2 by '%1' coding 0 length 0 []").arg(used)}));
    QCOMPARE(log.lines(),
             told
                 + QStringList({"SMS send with port number", "out, sm.msgBufLength:0",
                                "the pData==NULL || sz==0 ,return"}));
}

void TestWSMSSession::longNumbers()
{
    WSMSMsg message;
    message.setServiceCenter("1");
    QVERIFY(message.setTo(WMFMEntry(1, QString(41, QChar(0x416)))));
    QCOMPARE(send(message), 41);
    const QString number(41, '?');
    QCOMPARE(m_phone->calls.last(),
             QString("send 5 to '%1' by '1' coding 0 length 0 []").arg(number));
    message.setPortNumber(1, 2);
    QCOMPARE(send(message), 41);
    QCOMPARE(m_phone->calls.last(),
             QString("send 5 to '%1' port 1 from 2 by '1' coding 0 length 0 []").arg(number));
}

void TestWSMSSession::registersPorts()
{
    LogCapture log;
    QCOMPARE(int(m_session->registerPortNumber(2948, SMS_RECV_MODE_PORTS)), 0);
    QCOMPARE(int(m_session->getRegisteredPort()), 2948);
    QCOMPARE(int(m_session->registerPortNumber(65535, SMS_RECV_MODE_ALL)), 0);
    QCOMPARE(int(m_session->getRegisteredPort()), 65535);
    QCOMPARE(log.lines(), QStringList());

    m_phone->portResult = 5;
    QCOMPARE(int(m_session->registerPortNumber(7, SMS_RECV_MODE_ALL)), 127);
    QCOMPARE(int(m_session->getRegisteredPort()), 65535);
    QCOMPARE(log.lines(), QStringList{"registerPortNumber fail"});
    QCOMPARE(int(m_session->deregisterPortNumber(65535)), 127);
    QCOMPARE(int(m_session->getRegisteredPort()), 65535);
    QCOMPARE(log.lines(), QStringList({"registerPortNumber fail", "\n"}));

    // No port is registered from then on.
    m_phone->portResult = 0;
    QCOMPARE(int(m_session->deregisterPortNumber(2948)), 0);
    QCOMPARE(int(m_session->getRegisteredPort()), 0);
    QCOMPARE(m_phone->calls,
             QStringList({"register 5 port 2948 mode 1", "register 5 port 65535 mode 0",
                          "register 5 port 7 mode 0", "deregister 5 port 65535",
                          "deregister 5 port 2948"}));
}

void TestWSMSSession::withoutAService()
{
    m_phone->handle = -1;
    m_phone->sendResult = 1;
    m_phone->portResult = 1;
    m_phone->serviceCenterResult = 1;
    m_phone->reference = -1;
    m_session = std::make_unique<WSMSSession>(m_status);
    QCOMPARE(int(m_status), 127);
    WSMSMsg message;
    message.setTo(WMFMEntry(1, "1"));
    QCOMPARE(send(message), -1);
    QCOMPARE(int(m_status), 127);
    QCOMPARE(int(m_session->registerPortNumber(1, SMS_RECV_MODE_ALL)), 127);
    QCOMPARE(m_phone->calls.last(), QString("register -1 port 1 mode 0"));
}

QTEST_GUILESS_MAIN(TestWSMSSession)
#include "tst_wsmssession.moc"

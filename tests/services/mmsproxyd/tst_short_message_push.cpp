// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/short_message_push.h"
#include "tests/support/fake_telephony.h"

#include <QtTest/QtTest>

using namespace std::chrono_literals;
using namespace wmsg::proxy;

namespace {

const RetrySchedule kAtOnce({0ms});
const RetrySchedule kNever({24h});
const QStringList kConnected{"init MMSP 0", "attach 5", "register 5 port 2948 mode 1"};

/// The record of an incoming message, which claims `length` bytes unless that is below 0.
QByteArray incoming(quint16 port, const QByteArray &body, int length = -1,
                    quint32 coding = TAPI_SMS_BINARY)
{
    TAPI_SMS_INCOMING_S head = {};
    head.dataCoding = coding;
    head.port1 = port;
    head.port2 = 9200;
    head.msgLength = quint16(length < 0 ? body.size() : length);
    return QByteArray(reinterpret_cast<const char *>(&head), offsetof(TAPI_SMS_INCOMING_S, body))
        + body;
}

template <typename Record> QByteArray bytesOf(const Record &record)
{
    return QByteArray(reinterpret_cast<const char *>(&record), sizeof record);
}

QByteArray modem(quint32 state)
{
    return bytesOf(TAPI_MODEM_S{state});
}

} // namespace

class TestShortMessagePush : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_phone = std::make_unique<FakeTelephony>();
        m_taken.clear();
        m_isKept = true;
        QLoggingCategory::setFilterRules("wmsg.telephony.info=false");
    }
    void cleanup()
    {
        m_push = nullptr;
        m_phone = nullptr;
    }

    void registersItsPort();
    void takesBodies_data();
    void takesBodies();
    void leavesOtherMessages_data();
    void leavesOtherMessages();
    void dropsWhatIsCutOff_data();
    void dropsWhatIsCutOff();
    void asksForAServiceUntilThereIsOne();
    void asksForAPortUntilItIsFree();
    void asksForALostPort();
    void pausesGrow();
    void whatIsNotKeptIsOfferedAgain();
    void aModemThatIsAwayIsNoTrouble();
    void aServiceThatIsAwayIsTrouble();
    void aModemThatComesBackIsNotAskedFor();
    void otherEventsAreIgnored();

private:
    void start(const RetrySchedule &schedule = kNever, std::chrono::milliseconds patience = 24h)
    {
        m_push = std::make_unique<ShortMessagePush>(
            [this](const QByteArray &body) {
                m_taken.append(body);
                return m_isKept;
            },
            schedule, patience);
        m_push->start();
    }
    /// Lets the loop do all that it has to do at once.
    static void settle()
    {
        for (int i = 0; i < 100; ++i) {
            QCoreApplication::processEvents();
        }
    }

    std::unique_ptr<FakeTelephony> m_phone;
    std::unique_ptr<ShortMessagePush> m_push;
    QByteArrayList m_taken;
    bool m_isKept = true;
};

void TestShortMessagePush::registersItsPort()
{
    start();
    QCOMPARE(m_phone->calls, kConnected);
    m_push = nullptr;
    QCOMPARE(m_phone->calls, kConnected + QStringList{"fini 5"});
}

void TestShortMessagePush::takesBodies_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("data") << incoming(2948, "push") << QByteArray("push");
    QTest::newRow("8-bit text") << incoming(2948, "push", -1, TAPI_SMS_8BIT) << QByteArray("push");
    QTest::newRow("text") << incoming(2948, QByteArray("p\0\0\0", 4), 2, TAPI_SMS_UCS2)
                          << QByteArray("p\0", 2);
    QTest::newRow("no body") << incoming(2948, "") << QByteArray();
    QTest::newRow("bytes behind the body") << incoming(2948, "pushed", 4) << QByteArray("push");
    const QByteArray longest(65535, 'x');
    QTest::newRow("the longest body") << incoming(2948, longest) << longest;
}

void TestShortMessagePush::takesBodies()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, body);
    start();
    QVERIFY(m_phone->event(TAPI_EVENT_SMS_INCOMING, record));
    QCOMPARE(m_taken.size(), 1);
    QCOMPARE(toHex(m_taken.first()), toHex(body));
    QCOMPARE(m_phone->calls, kConnected);
}

void TestShortMessagePush::leavesOtherMessages_data()
{
    QTest::addColumn<int>("port");
    QTest::newRow("to no port") << 0;
    QTest::newRow("to another port") << 2949;
    QTest::newRow("to the port in the other byte order") << 0x840B;
}

void TestShortMessagePush::leavesOtherMessages()
{
    QFETCH(int, port);
    start();
    QVERIFY(!m_phone->event(TAPI_EVENT_SMS_INCOMING, incoming(quint16(port), "push")));
    QCOMPARE(m_taken, QByteArrayList());
    QCOMPARE(m_phone->calls, kConnected);
}

void TestShortMessagePush::dropsWhatIsCutOff_data()
{
    QTest::addColumn<QByteArray>("record");
    const QByteArray whole = incoming(2948, "push");
    QTest::newRow("no record") << QByteArray();
    QTest::newRow("half a head") << whole.left(50);
    QTest::newRow("a head without its last byte") << whole.left(113);
    QTest::newRow("without a body") << whole.left(114);
    QTest::newRow("without the last byte") << whole.chopped(1);
    QTest::newRow("the highest length") << incoming(2948, "push", 65535);
}

void TestShortMessagePush::dropsWhatIsCutOff()
{
    QFETCH(QByteArray, record);
    start();
    QTest::ignoreMessage(QtWarningMsg, "a short message is dropped: its record is cut off");
    QVERIFY(m_phone->event(TAPI_EVENT_SMS_INCOMING, record));
    QCOMPARE(m_taken, QByteArrayList());
}

void TestShortMessagePush::asksForAServiceUntilThereIsOne()
{
    QLoggingCategory::setFilterRules(QString());
    QTest::ignoreMessage(QtInfoMsg,
                         "no telephony service answers: short messages are not heard"); // once
    m_phone->handle = -4;
    start(kAtOnce);
    QTRY_VERIFY(m_phone->inits > 5);
    QTest::ignoreMessage(QtInfoMsg, "short messages to port 2948 are taken");
    m_phone->calls.clear();
    m_phone->handle = 5;
    QTRY_VERIFY(m_phone->calls.size() >= 3);
    settle();
    QCOMPARE(m_phone->calls, kConnected);
    QCOMPARE(m_phone->finis, 0);
}

void TestShortMessagePush::asksForAPortUntilItIsFree()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "port 2948 is another program's: short messages are not heard"); // once
    m_phone->portResult = TAPI_REFUSED;
    start(kAtOnce);
    QCOMPARE(m_phone->calls, kConnected + QStringList{"fini 5"});
    QTRY_VERIFY(m_phone->inits > 5);
    m_phone->portResult = TAPI_OK;
    m_phone->calls.clear();
    QTRY_VERIFY(!m_phone->calls.isEmpty());
    settle();
    QCOMPARE(m_phone->calls, kConnected);
    QCOMPARE(m_phone->finis, m_phone->inits - 1);
}

void TestShortMessagePush::asksForALostPort()
{
    start(kAtOnce);
    QTest::ignoreMessage(QtWarningMsg,
                         "port 2948 is another program's: short messages are not heard");
    m_phone->calls.clear();
    m_phone->event(TAPI_EVENT_PORT_LOST, bytesOf(TAPI_PORT_LOST_S{2948}));
    QCOMPARE(m_phone->calls, QStringList{"fini 5"});
    QTRY_COMPARE(m_phone->calls, QStringList{"fini 5"} + kConnected);
}

void TestShortMessagePush::pausesGrow()
{
    const RetrySchedule pauses = ShortMessagePush::pauses();
    QCOMPARE(pauses.lastingPauseAfter(1), 1s);
    QCOMPARE(pauses.lastingPauseAfter(100), 5min);
    // The second pause lasts for ever.
    m_phone->handle = -4;
    start(RetrySchedule({0ms, 24h}));
    QTRY_COMPARE(m_phone->inits, 2);
    settle();
    QCOMPARE(m_phone->inits, 2);
}

void TestShortMessagePush::whatIsNotKeptIsOfferedAgain()
{
    // The first pause is short. That it was connected meanwhile is no reason to begin anew.
    start(RetrySchedule({0ms, 24h}));
    m_isKept = false;
    QVERIFY(!m_phone->event(TAPI_EVENT_SMS_INCOMING, incoming(2948, "one")));
    QVERIFY(!m_phone->event(TAPI_EVENT_SMS_INCOMING, incoming(2948, "two")));
    QTRY_COMPARE(m_phone->calls, kConnected + QStringList{"fini 5"} + kConnected);
    QVERIFY(!m_phone->event(TAPI_EVENT_SMS_INCOMING, incoming(2948, "one")));
    settle();
    QCOMPARE(m_phone->inits, 2);
    // What is kept is.
    m_isKept = true;
    QVERIFY(m_phone->event(TAPI_EVENT_SMS_INCOMING, incoming(2948, "two")));
    QCOMPARE(m_taken, (QByteArrayList{"one", "two", "one", "two"}));
}

void TestShortMessagePush::aModemThatIsAwayIsNoTrouble()
{
    start(kAtOnce, 0ms);
    m_phone->event(TAPI_EVENT_MODEM, modem(TAPI_MODEM_ABSENT));
    // The service is asked once, and is there.
    QTRY_COMPARE(m_phone->calls, kConnected + QStringList{"register 5 port 2948 mode 1"});
    settle();
    QCOMPARE(m_phone->calls.size(), 4);
}

void TestShortMessagePush::aServiceThatIsAwayIsTrouble()
{
    start(kAtOnce, 0ms);
    m_phone->calls.clear();
    m_phone->portResult = TAPI_NO_SERVICE;
    m_phone->event(TAPI_EVENT_MODEM, modem(TAPI_MODEM_ABSENT));
    QTRY_VERIFY(m_phone->inits > 1);
    QCOMPARE(m_phone->calls.mid(0, 3),
             (QStringList{"register 5 port 2948 mode 1", "fini 5", "init MMSP 0"}));
}

void TestShortMessagePush::aModemThatComesBackIsNotAskedFor()
{
    start(kAtOnce, 0ms);
    m_phone->event(TAPI_EVENT_MODEM, modem(TAPI_MODEM_ABSENT));
    m_phone->event(TAPI_EVENT_MODEM, modem(TAPI_MODEM_READY));
    settle();
    QCOMPARE(m_phone->calls, kConnected);
}

void TestShortMessagePush::otherEventsAreIgnored()
{
    start(kAtOnce, 0ms);
    m_phone->event(TAPI_EVENT_MODEM, QByteArray("\0\0\0", 3));
    m_phone->event(TAPI_EVENT_SMS_RESULT, bytesOf(TAPI_SMS_RESULT_S{1, 0, 0}));
    m_phone->event(9999, incoming(2948, "push"));
    settle();
    QCOMPARE(m_phone->calls, kConnected);
    QCOMPARE(m_taken, QByteArrayList());
}

QTEST_GUILESS_MAIN(TestShortMessagePush)
#include "tst_short_message_push.moc"

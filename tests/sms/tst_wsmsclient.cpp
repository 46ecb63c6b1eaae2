// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "sms/wsmsclient.h"
#include "sms/wsmssession.h"
#include "tests/sms/recording_listener.h"
#include "tests/support/fake_telephony.h"
#include "tests/support/log_capture.h"

#include <QtTest/QtTest>

#include <new>

static bool s_hasMemory = true;

Q_DECL_EXPORT Q_NEVER_INLINE void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return s_hasMemory ? ::operator new(size) : nullptr;
}

namespace {

/// The record of an incoming message: coding, source port, destination port, sender, time, length
/// and body, each at its offset. What lies between the fields is 0xEE.
QByteArray incoming(int coding, quint16 length, const QByteArray &body)
{
    QByteArray record(114, char(0xEE));
    const auto put = [&record](int offset, const QByteArray &bytes) {
        record.replace(offset, bytes.size(), bytes);
    };
    const auto word = [](auto value) {
        return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
    };
    put(4, word(quint32(coding)));
    put(8, word(quint16(9200)));
    put(10, word(quint16(2948)));
    put(54, QByteArray("+43664\0", 7));
    put(100, word(quint16(2004)));
    put(102, fromHex("0B 09 0A 1E 32"));
    put(112, word(length));
    return record + body;
}

QByteArray result(const char *hex)
{
    return fromHex(hex);
}

QStringList dumped(const QStringList &lines)
{
    return QStringList{"********** MMS data BEGIN **********\n"} + lines
        + QStringList{"********** MMS data END **********\n"};
}

} // namespace

class TestWSMSClient : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void knownByItsNames();
    void fresh();
    void loads();
    void loadsAgain();
    void noService_data();
    void noService();
    void noMemory();
    void endsWithIt();

    void events_data();
    void events();
    void noEvent();
    void results_data();
    void results();
    void shortResults_data();
    void shortResults();

    void text_data();
    void text();
    void theLongestText();
    void eightBitText();
    void longEightBitText();
    void data();
    void unknownCodings_data();
    void unknownCodings();
    void everyShortRecord_data();
    void everyShortRecord();
    void sender_data();
    void sender();
    void times_data();
    void times();
    void portsAreAlwaysSet();

    void withoutAListener();
    void notTakingMessages();
    void closedByItsListener_data();
    void closedByItsListener();

private:
    void open();
    /// What a listener hears of one incoming message; null: nothing.
    WSMSMsg *hear(const QByteArray &record);

    std::unique_ptr<FakeTelephony> m_phone;
    std::unique_ptr<WSMSSession> m_session;
    std::unique_ptr<RecordingListener> m_listener;
};

void TestWSMSClient::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    appLogModuleStream = appLogDiscardStream();
    m_phone = std::make_unique<FakeTelephony>();
}

void TestWSMSClient::cleanup()
{
    s_hasMemory = true;
    m_session.reset();
    m_listener.reset();
    m_phone.reset();
}

/// Opens a session with a listener.
void TestWSMSClient::open()
{
    WMFM::STATUS_T status = WMFM::STATUS_T(99);
    m_session = std::make_unique<WSMSSession>(status);
    QCOMPARE(int(status), 0);
    m_listener = std::make_unique<RecordingListener>(m_session.get());
    QVERIFY(m_session->setListener(m_listener.get(), status));
}

WSMSMsg *TestWSMSClient::hear(const QByteArray &record)
{
    m_listener->messages.clear();
    m_phone->event(774, record);
    return m_listener->messages.empty() ? nullptr : m_listener->messages.back().get();
}

void TestWSMSClient::knownByItsNames()
{
    WSMSClient client;
    QCOMPARE(client.metaObject()->className(), "WSMSClient");
    QCOMPARE(client.metaObject()->superClass()->className(), "QObject");
    const auto hasSlot = [&client](const char *slot) {
        return client.metaObject()->indexOfSlot(QMetaObject::normalizedSignature(slot).constData())
            >= 0;
    };
    QVERIFY(hasSlot("ProcessTAPIEvent(UTIL_TAPI_Event *)"));
    QVERIFY(UTIL_TAPI_Device::staticMetaObject.indexOfSignal(
                QMetaObject::normalizedSignature("TAPI_SendEvent(UTIL_TAPI_Event *)").constData())
            >= 0);
}

void TestWSMSClient::fresh()
{
    WSMSClient client;
    QVERIFY(!client.getSession());
    QCOMPARE(client.getTapiHandle(), -1);
    QCOMPARE(m_phone->calls, QStringList());
}

void TestWSMSClient::loads()
{
    // What waits for the device is heard: it is connected before it is attached.
    LogCapture log;
    m_phone->eventAtAttach = 513;
    open();
    QCOMPARE(m_phone->calls, QStringList({"init WSMS 2", "attach 5"}));
    QCOMPARE(log.lines(),
             QStringList({"new TapiDevice success", "connect TapiDevice success.",
                          "pTapiEvent->GetType()=513\n"}));
    QVERIFY(!m_phone->device->parent());
    QCOMPARE(m_phone->device->objectName(), QString());
}

void TestWSMSClient::loadsAgain()
{
    open();
    WSMSClient client;
    WMFM::STATUS_T status = WMFM::STATUS_T(99);
    client.loadSession(m_session.get(), status);
    QCOMPARE(int(status), 0);
    QCOMPARE(client.getSession(), m_session.get());
    QCOMPARE(client.getTapiHandle(), 5);
    QCOMPARE(m_phone->inits, 2);

    // It has its device already.
    LogCapture log;
    status = WMFM::STATUS_T(99);
    client.loadSession(nullptr, status);
    QCOMPARE(int(status), 0);
    QVERIFY(!client.getSession());
    QCOMPARE(m_phone->inits, 2);
    QCOMPARE(log.lines(), QStringList());

    // Without a session nothing is told.
    QVERIFY(!m_phone->event(774, incoming(2, 0, "")));
    QVERIFY(m_phone->event(778, result("01000000 00000000 00000000")));
}

void TestWSMSClient::noService_data()
{
    QTest::addColumn<int>("handle");
    QTest::newRow("-1") << -1;
    QTest::newRow("lowest") << INT_MIN;
}

void TestWSMSClient::noService()
{
    QFETCH(int, handle);
    m_phone->handle = handle;
    LogCapture log;
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    {
        WSMSSession session(status);
        QCOMPARE(int(status), 127);
    }
    QCOMPARE(log.lines(), QStringList{"\n"});

    WSMSClient client;
    client.loadSession(nullptr, status);
    QCOMPARE(client.getTapiHandle(), handle);
    QCOMPARE(m_phone->finis, 0); // there is nothing to end
    QVERIFY(!client.getSession());
    QVERIFY(!m_phone->device);

    // The service is asked again the next time.
    m_phone->handle = 0;
    client.loadSession(nullptr, status);
    QCOMPARE(int(status), 0);
    QCOMPARE(client.getTapiHandle(), 0);
}

void TestWSMSClient::noMemory()
{
    LogCapture log;
    WSMSClient client;
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    s_hasMemory = false;
    client.loadSession(nullptr, status);
    s_hasMemory = true;
    QCOMPARE(int(status), 127);
    QCOMPARE(log.lines(), QStringList({"new TapiDevice fail", "connect TapiDevice fail."}));
    QCOMPARE(m_phone->calls, QStringList({"init WSMS 2", "fini 5"}));
    QCOMPARE(client.getTapiHandle(), -1);
    client.loadSession(nullptr, status);
    QCOMPARE(int(status), 0);
}

void TestWSMSClient::endsWithIt()
{
    open();
    m_phone->calls.clear();
    m_session.reset();
    QCOMPARE(m_phone->calls, QStringList{"fini 5"});
    QVERIFY(!m_phone->device);
}

void TestWSMSClient::events_data()
{
    QTest::addColumn<int>("type");
    for (int type : {0, 513, 514, 773, 775, 777, 779, -1, INT_MAX}) {
        QTest::addRow("%d", type) << type;
    }
}

void TestWSMSClient::events()
{
    QFETCH(int, type);
    open();
    LogCapture log;
    QVERIFY(m_phone->event(type, incoming(2, 0, "")));
    QCOMPARE(log.lines(), QStringList{QString("pTapiEvent->GetType()=%1\n").arg(type)});
    QCOMPARE(m_listener->statuses, QStringList());
    QVERIFY(m_listener->messages.empty());
}

void TestWSMSClient::noEvent()
{
    open();
    LogCapture log;
    Q_EMIT m_phone->device->TAPI_SendEvent(nullptr);
    QCOMPARE(log.lines(), QStringList());
    // An event without a record.
    m_phone->event(774, QByteArray());
    m_phone->event(778, QByteArray());
    QCOMPARE(m_listener->statuses, QStringList());
    QVERIFY(m_listener->messages.empty());
}

void TestWSMSClient::results_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("heard");
    QTest::newRow("sent") << result("29000000 EEEEEEEE 00000000") << "41: 0";
    QTest::newRow("failed") << result("29000000 EEEEEEEE 26000000") << "41: 38";
    QTest::newRow("as the service told it") << result("FEFFFFFF 00000000 FFFFFFFF") << "-2: -1";
    QTest::newRow("more behind it") << result("01000000 00000000 00000100 07") << "1: 65536";
}

void TestWSMSClient::results()
{
    QFETCH(QByteArray, record);
    QFETCH(QString, heard);
    open();
    LogCapture log;
    m_phone->event(778, record);
    QCOMPARE(m_listener->statuses, QStringList{heard});
    QCOMPARE(log.lines(), QStringList{"pTapiEvent->GetType()=778\n"});
}

void TestWSMSClient::shortResults_data()
{
    QTest::addColumn<int>("size");
    for (int size = 0; size < 12; ++size) {
        QTest::addRow("%d bytes", size) << size;
    }
}

void TestWSMSClient::shortResults()
{
    QFETCH(int, size);
    open();
    m_phone->event(778, QByteArray(size, '\1'));
    QCOMPARE(m_listener->statuses, QStringList());
}

void TestWSMSClient::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("dump");
    QTest::newRow("text")
        << "Hi"
        << QStringList({"The data length=6\n",
                        "48 00 69 00 00 00                                         H.i...\n"});
    QTest::newRow("empty")
        << ""
        << QStringList({"The data length=2\n",
                        "00 00                                                     ..\n"});
    QTest::newRow("a surrogate pair")
        << u"\U0001F600"_qs
        << QStringList({"The data length=6\n",
                        "3d d8 00 de 00 00                                         =.....\n"});
}

void TestWSMSClient::text()
{
    QFETCH(QString, text);
    QFETCH(QStringList, dump);
    open();
    const QByteArray units(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    LogCapture log;
    WSMSMsg *message = hear(incoming(0, quint16(units.size()), units + QByteArray(2, '\0')));
    QVERIFY(message);
    QCOMPARE(log.lines(),
             QStringList({"pTapiEvent->GetType()=774\n", QString("msgLength:%1").arg(units.size())})
                 + dumped(dump));
    QCOMPARE(int(message->getBodyType()), 0);
    QString read;
    QVERIFY(message->getBody(read));
    QCOMPARE(read, text);
    QCOMPARE(message->getFrom().getEntryVal(), QString("+43664"));
    QCOMPARE(int(message->getFrom().getEntryType()), 1);
    QCOMPARE(message->getFrom().getContactName(), QString());
    QVERIFY(message->getTo().getEntryVal().isEmpty());
    QVERIFY(message->getServiceCenter().isEmpty());
    QCOMPARE(message->getTimeStamp(), QDateTime(QDate(2004, 11, 9), QTime(10, 30, 50, 0)));
    QCOMPARE(message->getTimeStamp().timeSpec(), Qt::LocalTime);
    unsigned short p1 = 0;
    unsigned short p2 = 0;
    QVERIFY(message->getPortNumber(&p1, &p2));
    QCOMPARE(int(p1), 2948);
    QCOMPARE(int(p2), 9200);
    // As delivered, whatever the two bytes at the end are.
    message = hear(incoming(0, quint16(units.size()), units + "xyz"));
    QVERIFY(message);
    QCOMPARE(toHex(message->getData().view()), toHex(units + "xy"));
}

void TestWSMSClient::theLongestText()
{
    open();
    LogCapture log;
    WSMSMsg *message = hear(incoming(0, 65534, QByteArray(65536, 'x')));
    QVERIFY(message);
    QCOMPARE(message->getData().size(), 65536);
    QString text;
    QVERIFY(message->getBody(text));
    QCOMPARE(text, QString(32767, QChar(0x7878)));
    QCOMPARE(log.lines().mid(0, 2),
             QStringList({"pTapiEvent->GetType()=774\n", "msgLength:65534"}));
    // A length that is odd ends in half a unit, which does not count.
    message = hear(incoming(0, 65535, QByteArray(65537, 'x')));
    QVERIFY(message);
    QCOMPARE(message->getData().size(), 65537);
    QVERIFY(message->getBody(text));
    QCOMPARE(text.size(), 32767);
}

void TestWSMSClient::eightBitText()
{
    open();
    LogCapture log;
    WSMSMsg *message = hear(incoming(1, 3, fromHex("48 E9 00 FF")));
    QVERIFY(message);
    QCOMPARE(log.lines(), QStringList{"pTapiEvent->GetType()=774\n"});
    QCOMPARE(int(message->getBodyType()), 0);
    QCOMPARE(toHex(message->getData().view()), QByteArray("48 00 E9 00 00 00 00 00"));
}

void TestWSMSClient::longEightBitText()
{
    open();
    WSMSMsg *message = hear(incoming(1, 3200, QByteArray(3200, 'x')));
    QVERIFY(message);
    QCOMPARE(message->getData().size(), 6402);
    // What a message does not hold is not cut: it comes without a body.
    LogCapture log;
    message = hear(incoming(1, 3201, QByteArray(3201, 'x')));
    QVERIFY(message);
    QCOMPARE(message->getData().size(), 0);
    QCOMPARE(log.lines().last(), QString("the string length overflow, length=3201"));
}

void TestWSMSClient::data()
{
    open();
    LogCapture log;
    WSMSMsg *message = hear(incoming(2, 3, fromHex("00 01 FF 07")));
    QVERIFY(message);
    QCOMPARE(log.lines(), QStringList{"pTapiEvent->GetType()=774\n"});
    QCOMPARE(int(message->getBodyType()), 1);
    QArray<char> bytes;
    QVERIFY(message->getBody(bytes));
    QCOMPARE(toHex(bytes.view()), QByteArray("00 01 FF"));
    message = hear(incoming(2, 0, ""));
    QVERIFY(message);
    QVERIFY(message->getBody(bytes));
    QCOMPARE(bytes.size(), 0);
    // The longest that a record can hold.
    message = hear(incoming(2, 65535, QByteArray(65535, 'x')));
    QVERIFY(message);
    QCOMPARE(message->getData().size(), 65535);
}

void TestWSMSClient::unknownCodings_data()
{
    QTest::addColumn<int>("coding");
    for (int coding : {3, 4, 255, 256, -1, INT_MIN}) {
        QTest::addRow("%d", coding) << coding;
    }
}

void TestWSMSClient::unknownCodings()
{
    QFETCH(int, coding);
    open();
    LogCapture log;
    QVERIFY(!hear(incoming(coding, 2, "abcd")));
    QCOMPARE(log.lines(), QStringList{"pTapiEvent->GetType()=774\n"});
}

void TestWSMSClient::everyShortRecord_data()
{
    QTest::addColumn<int>("coding");
    QTest::addColumn<int>("whole");
    QTest::newRow("text") << 0 << 114 + 4 + 2;
    QTest::newRow("8-bit text") << 1 << 114 + 4;
    QTest::newRow("data") << 2 << 114 + 4;
}

void TestWSMSClient::everyShortRecord()
{
    QFETCH(int, coding);
    QFETCH(int, whole);
    open();
    const QByteArray record = incoming(coding, 4, "abcdef");
    for (int size = 0; size <= record.size(); ++size) {
        // The sanitizer sees a byte read behind these.
        const QByteArray exact(record.constData(), size);
        QCOMPARE(hear(exact) != nullptr, size >= whole);
    }
    QVERIFY(!hear(incoming(coding, 65535, "abcdef")));
}

void TestWSMSClient::sender_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("number");
    QTest::newRow("empty") << QByteArray(1, '\0') << "";
    QTest::newRow("Latin-1") << QByteArray("\xC4nn\0x", 5) << u"Änn"_qs;
    QTest::newRow("45 characters") << QByteArray(45, '1') + '\0' << QString(45, '1');
    QTest::newRow("without an end") << QByteArray(46, '1') << QString(46, '1');
}

void TestWSMSClient::sender()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, number);
    open();
    QByteArray record = incoming(2, 0, "");
    record.replace(54, field.size(), field);
    const WSMSMsg *message = hear(record);
    QVERIFY(message);
    QCOMPARE(const_cast<WSMSMsg *>(message)->getFrom().getEntryVal(), number);
}

void TestWSMSClient::times_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("none") << fromHex("0000 00 00 00 00 00") << QDateTime();
    QTest::newRow("no such day") << fromHex("D407 02 1F 00 00 00") << QDateTime();
    QTest::newRow("all ones") << fromHex("FFFF FF FF FF FF FF") << QDateTime();
    QTest::newRow("last second") << fromHex("CF07 0C 1F 17 3B 3B")
                                 << QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59));
}

void TestWSMSClient::times()
{
    QFETCH(QByteArray, field);
    QFETCH(QDateTime, time);
    open();
    QByteArray record = incoming(2, 0, "");
    record.replace(100, field.size(), field);
    const WSMSMsg *message = hear(record);
    QVERIFY(message);
    QCOMPARE(message->getTimeStamp().isValid(), time.isValid());
    if (time.isValid()) {
        QCOMPARE(message->getTimeStamp(), time);
    }
}

void TestWSMSClient::portsAreAlwaysSet()
{
    // A message that arrives has a port pair always.
    open();
    QByteArray record = incoming(2, 0, "");
    record.replace(8, 4, QByteArray(4, '\0'));
    const WSMSMsg *message = hear(record);
    QVERIFY(message);
    QVERIFY(message->getPortNumberValid());
    unsigned short p1 = 1;
    unsigned short p2 = 1;
    QVERIFY(message->getPortNumber(&p1, &p2));
    QCOMPARE(int(p1), 0);
    QCOMPARE(int(p2), 0);
}

void TestWSMSClient::withoutAListener()
{
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    m_session = std::make_unique<WSMSSession>(status);
    QVERIFY(!m_phone->event(774, incoming(2, 0, ""))); // it stays with the telephone
    QVERIFY(m_phone->event(778, result("01000000 00000000 00000000")));
    // One that cannot be read stays with nobody.
    QVERIFY(m_phone->event(774, incoming(2, 9, "")));
}

void TestWSMSClient::notTakingMessages()
{
    open();
    QVERIFY(m_session->takesMessages());
    m_session->setTakesMessages(false);
    QVERIFY(!m_phone->event(774, incoming(2, 0, "")));
    QVERIFY(m_listener->messages.empty());
    m_phone->event(778, result("01000000 00000000 00000000"));
    QCOMPARE(m_listener->statuses.size(), 1);
    m_session->setTakesMessages(true);
    QVERIFY(m_phone->event(774, incoming(2, 0, "")));
    QCOMPARE(int(m_listener->messages.size()), 1);
}

void TestWSMSClient::closedByItsListener_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("record");
    QTest::newRow("in msgIncome") << 774 << incoming(0, 0, fromHex("0000"));
    QTest::newRow("in statusChanged") << 778 << result("01000000 00000000 00000000");
}

void TestWSMSClient::closedByItsListener()
{
    QFETCH(int, type);
    QFETCH(QByteArray, record);
    open();
    m_listener->then = [this] {
        WMFMSession::close(m_session.release());
    };
    QVERIFY(m_phone->event(type, record));
    QVERIFY(!m_session);
    QCOMPARE(m_phone->finis, 1);
    QCOMPARE(m_listener->statuses.size() + int(m_listener->messages.size()), 1);
}

QTEST_GUILESS_MAIN(TestWSMSClient)
#include "tst_wsmsclient.moc"

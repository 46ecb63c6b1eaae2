// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/tapi_client.h"
#include "platform/telephony/tapi_sms.h"
#include "platform/telephony/telephony_records_p.h"
#include "platform/telephony/telephony_socket_p.h"
#include "platform/telephony/util_tapi_device.h"
#include "tests/support/hex.h"
#include "tests/support/telephony_peer.h"
#include "tests/support/time_zone.h"

#include <QtTest/QtTest>

#include <functional>
#include <memory>
#include <thread>

#include <sys/stat.h>

using namespace wmsg::telephony;

namespace {

/// Writes down the events of a device as "type: record", and does what `then` says with each.
class Ear : public QObject {
public:
    explicit Ear(UTIL_TAPI_Device *device)
    {
        connect(device, &UTIL_TAPI_Device::TAPI_SendEvent, this, [this](UTIL_TAPI_Event *event) {
            const QByteArrayView record(static_cast<const char *>(event->GetRawData()),
                                        event->GetRawSize());
            heard.append(QString("%1: %2").arg(event->GetType()).arg(QString(toHex(record))));
            if (then) {
                then(event);
            }
        });
    }

    QStringList heard;
    std::function<void(UTIL_TAPI_Event *)> then;
};

/// A record refers to the text or bytes that it is made of.
TAPI_SMS_SM_S smOf(const QString &text, const char *destination = "+43664")
{
    TAPI_SMS_SM_S sm = {};
    qstrncpy(sm.destination, destination, sizeof sm.destination);
    sm.msgLength = quint32(text.size());
    sm.msgBuf = reinterpret_cast<const char *>(text.utf16());
    return sm;
}

TAPI_SMS_PORT_SM_S portSmOf(const QByteArray &bytes)
{
    TAPI_SMS_PORT_SM_S sm = {};
    qstrncpy(sm.destination, "12", sizeof sm.destination);
    sm.dataCoding = TAPI_SMS_BINARY;
    sm.port1 = 2948;
    sm.port2 = 9200;
    sm.msgBufLength = quint32(bytes.size());
    sm.msgBuf = bytes.constData();
    return sm;
}

Message messageOf(quint64 id, const QByteArray &body, quint16 port = 0)
{
    Message message;
    message.id = id;
    message.coding = Coding::Binary;
    message.hasPorts = port != 0;
    message.destinationPort = port;
    message.sender = "12";
    message.body = body;
    return message;
}

/// "6: id taken", as the peer hears the answer to a message.
QString answered(int id, bool isTaken)
{
    return QString("6: %1 00 00 00 00 00 00 00 %2")
        .arg(id, 2, 16, QChar('0'))
        .arg(isTaken ? "01" : "00")
        .toUpper();
}

/// The event that tells the state of the modem.
QString modem(int state)
{
    return QString("513: 0%1 00 00 00").arg(state);
}

const QString kReady = modem(TAPI_MODEM_READY);
const QString kAbsent = modem(TAPI_MODEM_ABSENT);

} // namespace

class TestTapi : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void greets();
    void nobodyListens_data();
    void nobodyListens();
    void notWelcome_data();
    void notWelcome();
    void anotherUser();
    void withoutAnEventLoop();
    void handlesAreOfTheirThread();
    void unknownHandles();

    void serviceCenter();
    void modemStates();

    void sends_data();
    void sends();
    void sendsToAPort();
    void refusesToSend_data();
    void refusesToSend();
    void lengths_data();
    void lengths();
    void aLengthThatWrapsIsNotShort();
    void results();
    void aDaemonThatDoesNotRead();

    void registersPorts();
    void refusedRequests_data();
    void refusedRequests();
    void otherAnswersDoNotCount();

    void incoming_data();
    void incoming();
    void longNumbersAreCut();
    void timesAreLocal();
    void inAnySplit();
    void notTaken();
    void whatIsNotWanted();
    void eventsWaitForTheDevice();
    void endedByItsReceiver_data();
    void endedByItsReceiver();

    void nonsenseEndsTheConnection_data();
    void nonsenseEndsTheConnection();
    void framesOfAnUnknownType();
    void connectsAgain();
    void failsUntilItIsWelcome();
    void renewsItsPorts();
    void aPortThatWasLost();
    void repeatsUnfinishedMessages();
    void givesUnfinishedMessagesUp();
    void givesUpWhereNobodyWelcomes();
    void aMessageIsToldOnce();
    void theLatestMessagesAreRemembered();
    void notWelcomeAgain();
    void goneDuringARequest();

private:
    void open(int events = TAPI_EVENTS_SMS);
    qint32 send(const QString &text);
    /// Waits until the daemon has heard these, and nothing else.
    void hears(const QStringList &records);

    std::unique_ptr<TelephonyPeer> m_daemon;
    std::unique_ptr<UTIL_TAPI_Device> m_device;
    std::unique_ptr<Ear> m_ear;
    int m_handle = -1;
};

void TestTapi::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    m_daemon = std::make_unique<TelephonyPeer>();
}

void TestTapi::cleanup()
{
    TAPI_CLIENT_Fini(std::exchange(m_handle, -1));
    m_ear.reset();
    m_device.reset();
    m_daemon.reset();
}

/// Makes a client with a device, and waits until it has told that the modem is ready.
void TestTapi::open(int events)
{
    m_handle = TAPI_CLIENT_Init("test", events);
    QVERIFY(m_handle > 0);
    m_device = std::make_unique<UTIL_TAPI_Device>();
    m_ear = std::make_unique<Ear>(m_device.get());
    QVERIFY(m_device->attach(m_handle));
    QTRY_COMPARE(m_ear->heard, QStringList{kReady});
    m_ear->heard.clear();
    m_daemon->takeHeard();
}

qint32 TestTapi::send(const QString &text)
{
    qint32 reference = 0;
    const TAPI_SMS_SM_S sm = smOf(text);
    return TAPI_SMS_SendSmUnblockMode(m_handle, &sm, &reference) == 0 ? reference : -1;
}

void TestTapi::hears(const QStringList &records)
{
    QTRY_COMPARE(m_daemon->heard(), records);
    m_daemon->takeHeard();
}

void TestTapi::greets()
{
    m_handle = TAPI_CLIENT_Init("WSMS", 2);
    QVERIFY(m_handle > 0);
    const QStringList heard = m_daemon->heard();
    QCOMPARE(heard.size(), 1);
    QVERIFY2(heard.first().startsWith("1: 01 00 00 00 "), qPrintable(heard.first()));
    QVERIFY2(heard.first().endsWith(" 02 00 00 00 04 57 53 4D 53"), qPrintable(heard.first()));

    // Each client has an id of its own.
    const int other = TAPI_CLIENT_Init("WSMS", 2);
    QVERIFY(other > m_handle);
    QVERIFY(m_daemon->heard().at(1) != heard.first());
    TAPI_CLIENT_Fini(other);
    QTRY_COMPARE(m_daemon->gone(), 1);
}

void TestTapi::nobodyListens_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("no such file") << QByteArray("/nowhere/at/all");
    QTest::newRow("a path that is too long") << "/tmp/" + QByteArray(200, 'x');
    QTest::newRow("a file that is no socket") << QByteArray("/etc/passwd");
}

void TestTapi::nobodyListens()
{
    QFETCH(QByteArray, path);
    qputenv("WMSG_TELEPHONY_SOCKET", path);
    QVERIFY(TAPI_CLIENT_Init("a", 2) < 0);
    QVERIFY(TAPI_CLIENT_Init(nullptr, 2) < 0);
    QVERIFY(TAPI_CLIENT_Init("a", -1) < 0);
    QCOMPARE(socketPath(), path);
    qunsetenv("WMSG_TELEPHONY_SOCKET");
    QCOMPARE(socketPath(), QByteArray("/tmp/wmsg-telephony"));
    qputenv("WMSG_TELEPHONY_SOCKET", "");
    QCOMPARE(socketPath(), QByteArray("/tmp/wmsg-telephony"));
}

void TestTapi::notWelcome_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("refused") << toFrame(Refused{2});
    QTest::newRow("another version") << toFrame(Welcome{2, 0, ""});
    QTest::newRow("another record") << toFrame(Done());
    QTest::newRow("half a welcome") << fromHex("02000000 8100 0000 0100");
    QTest::newRow("a foreign length") << fromHex("FFFFFFFF");
    QTest::newRow("another protocol") << QByteArray("HTTP/1.0 400 Bad Request\r\n\r\n");
}

void TestTapi::notWelcome()
{
    QFETCH(QByteArray, answer);
    m_daemon->answer(RecordType::Hello, answer);
    QVERIFY(TAPI_CLIENT_Init("a", 2) < 0);
    QTRY_COMPARE(m_daemon->gone(), 1);
    QCOMPARE(m_daemon->clients(), 1);
}

void TestTapi::anotherUser()
{
    int ends[2];
    QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    QVERIFY(isSameUser(ends[0]));
    ::close(ends[0]);
    ::close(ends[1]);
    QVERIFY(!isSameUser(ends[0]));
    QVERIFY(!isSameUser(-1));
    if (geteuid() != 0) {
        return; // nobody can become somebody else
    }
    // The peer was made by root.
    QCOMPARE(seteuid(65534), 0);
    DaemonSocket socket;
    ::chmod(QFileInfo(m_daemon->path()).path().toLocal8Bit().constData(), 0777);
    const bool isConnected = socket.connectTo(m_daemon->path(), QDeadlineTimer(10000));
    QCOMPARE(seteuid(0), 0);
    QVERIFY(!isConnected);
    QVERIFY(!socket.isOpen());
    QVERIFY(socket.connectTo(m_daemon->path(), QDeadlineTimer(10000)));
}

void TestTapi::withoutAnEventLoop()
{
    int handle = 0;
    std::thread thread([&handle] { handle = TAPI_CLIENT_Init("a", 2); });
    thread.join();
    QVERIFY(handle < 0);
    QCOMPARE(m_daemon->clients(), 0);
}

void TestTapi::handlesAreOfTheirThread()
{
    open();
    int result = 0;
    std::thread thread([this, &result] {
        char number[8];
        result = TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number);
        TAPI_CLIENT_Fini(m_handle);
    });
    thread.join();
    QCOMPARE(result, int(TAPI_NO_CLIENT));
    QVERIFY(send("still there") > 0);
}

void TestTapi::unknownHandles()
{
    char number[8] = "";
    qint32 reference = 77;
    const QString text = "a";
    const QByteArray bytes = "a";
    const TAPI_SMS_SM_S sm = smOf(text);
    const TAPI_SMS_PORT_SM_S portSm = portSmOf(bytes);
    UTIL_TAPI_Device device;
    for (int handle : {-1, 0, 1000000}) {
        QCOMPARE(TAPI_SMS_GetServiceCenter(handle, number, 8), int(TAPI_NO_CLIENT));
        QCOMPARE(TAPI_SMS_SetServiceCenter(handle, "1"), int(TAPI_NO_CLIENT));
        QCOMPARE(TAPI_SMS_SendSmUnblockMode(handle, &sm, &reference), int(TAPI_NO_CLIENT));
        QCOMPARE(TAPI_SMS_SendPortNumberSmUnblockMode(handle, &portSm, &reference),
                 int(TAPI_NO_CLIENT));
        QCOMPARE(TAPI_SMS_RegisterPortNumber(handle, 1, SMS_RECV_MODE_ALL), int(TAPI_NO_CLIENT));
        QCOMPARE(TAPI_SMS_DeregisterPortNumber(handle, 1), int(TAPI_NO_CLIENT));
        QVERIFY(!device.attach(handle));
        TAPI_CLIENT_Fini(handle);
    }
    QCOMPARE(reference, 77);
    QCOMPARE(device.objectName(), QString());
    QCOMPARE(UTIL_TAPI_Device(nullptr, "ear").objectName(), QString("ear"));
}

void TestTapi::serviceCenter()
{
    open();
    char number[8] = "xxxxxxx";
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "+4366");
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, 4), 0);
    QCOMPARE(number, "+43");
    QVERIFY(TAPI_SMS_GetServiceCenter(m_handle, number, 0) != 0);
    QVERIFY(TAPI_SMS_GetServiceCenter(m_handle, nullptr, 8) != 0);

    const QByteArray longest(43, '1');
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, longest.constData()), 0);
    QCOMPARE(m_daemon->takeHeard(), QStringList{"5: 2B " + QString(toHex(longest))});
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, "+49"), 0);
    QCOMPARE(m_daemon->takeHeard(), QStringList{"5: 03 2B 34 39"});
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "+49");
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, nullptr), int(TAPI_INVALID));
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, QByteArray(44, '1').constData()),
             int(TAPI_INVALID));
    QCOMPARE(m_daemon->takeHeard(), QStringList());

    m_daemon->answer(RecordType::SetServiceCenter, toFrame(Done{Answer::NoModem}));
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, "+41"), int(TAPI_NO_SERVICE));
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "+49");
}

void TestTapi::modemStates()
{
    open();
    m_daemon->send(toFrame(ModemState{TAPI_MODEM_BLOCKED, ""})
                   + toFrame(ModemState{TAPI_MODEM_BLOCKED, "+1"})
                   + toFrame(ModemState{TAPI_MODEM_READY, "+2"}));
    QTRY_COMPARE(m_ear->heard, QStringList({modem(3), kReady}));
    char number[8];
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "+2");
}

void TestTapi::sends_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("wire"); // coding, no ports, no service centre, +43664, body
    const QString to = " 00 00 00 00 00 00 06 2B 34 33 36 36 34 ";
    QTest::newRow("the default alphabet") << "A@"
                                          << "03" + to + "04 00 41 00 40 00";
    QTest::newRow("another one") << u"Ж"_qs << "00" + to + "02 00 16 04";
    QTest::newRow("a surrogate pair") << u"\U0001F600"_qs << "00" + to + "04 00 3D D8 00 DE";
    QTest::newRow("nothing") << ""
                             << "03" + to + "00 00";
}

void TestTapi::sends()
{
    QFETCH(QString, text);
    QFETCH(QString, wire);
    open();
    QCOMPARE(send(text), 1);
    QCOMPARE(send(text), 2);
    QTRY_COMPARE(m_daemon->heard(),
                 QStringList({"2: 01 00 00 00 " + wire, "2: 02 00 00 00 " + wire}));
    QCOMPARE(m_ear->heard, QStringList()); // nothing is told from inside
}

void TestTapi::sendsToAPort()
{
    open();
    const QByteArray bytes = fromHex("00 FF");
    TAPI_SMS_PORT_SM_S sm = portSmOf(bytes);
    qstrncpy(sm.serviceCenter, "+9", sizeof sm.serviceCenter);
    qint32 reference = 0;
    QCOMPARE(TAPI_SMS_SendPortNumberSmUnblockMode(m_handle, &sm, &reference), 0);
    QCOMPARE(reference, 1);
    const QString text = "hi";
    sm.dataCoding = TAPI_SMS_UCS2;
    sm.msgBuf = reinterpret_cast<const char *>(text.utf16());
    sm.msgBufLength = 4;
    QCOMPARE(TAPI_SMS_SendPortNumberSmUnblockMode(m_handle, &sm, &reference), 0);
    sm.msgBufLength = 3; // half a unit does not count
    QCOMPARE(TAPI_SMS_SendPortNumberSmUnblockMode(m_handle, &sm, &reference), 0);
    const QString to = " 01 84 0B F0 23 02 2B 39 02 31 32 ";
    QTRY_COMPARE(m_daemon->heard(),
                 QStringList({"2: 01 00 00 00 02" + to + "02 00 00 FF",
                              "2: 02 00 00 00 03" + to + "04 00 68 00 69 00",
                              "2: 03 00 00 00 03" + to + "02 00 68 00"}));
}

void TestTapi::refusesToSend_data()
{
    QTest::addColumn<int>("change");
    QTest::addColumn<int>("result");
    QTest::newRow("no record") << 0 << int(TAPI_INVALID);
    QTest::newRow("no place for the reference") << 1 << int(TAPI_INVALID);
    QTest::newRow("no destination") << 2 << int(TAPI_INVALID);
    QTest::newRow("a destination without an end") << 3 << int(TAPI_INVALID);
    QTest::newRow("a service centre without an end") << 4 << int(TAPI_INVALID);
    QTest::newRow("8-bit text") << 5 << int(TAPI_INVALID);
    QTest::newRow("an unknown coding") << 6 << int(TAPI_INVALID);
    QTest::newRow("no body") << 7 << int(TAPI_INVALID);
    QTest::newRow("too long") << 8 << int(TAPI_TOO_LONG);
    QTest::newRow("longest of all") << 9 << int(TAPI_TOO_LONG);
}

void TestTapi::refusesToSend()
{
    QFETCH(int, change);
    QFETCH(int, result);
    open();
    const QByteArray bytes(200, 'x');
    TAPI_SMS_PORT_SM_S sm = portSmOf(bytes.left(1));
    sm.msgBuf = bytes.constData();
    qint32 reference = 77;
    switch (change) {
    case 2:
        sm.destination[0] = '\0';
        break;
    case 3:
        memset(sm.destination, '1', sizeof sm.destination);
        break;
    case 4:
        memset(sm.serviceCenter, '1', sizeof sm.serviceCenter);
        break;
    case 5:
        sm.dataCoding = TAPI_SMS_8BIT;
        break;
    case 6:
        sm.dataCoding = 0xFFFFFFFF;
        break;
    case 7:
        sm.msgBuf = nullptr;
        break;
    case 8:
        sm.msgBufLength = 134;
        break;
    case 9:
        sm.msgBufLength = 0xFFFFFFFF;
        break;
    }
    QCOMPARE(TAPI_SMS_SendPortNumberSmUnblockMode(m_handle, change == 0 ? nullptr : &sm,
                                                  change == 1 ? nullptr : &reference),
             result);
    QCOMPARE(reference, 77);
    if (change > 4) {
        QCOMPARE(TAPI_SMS_CaculatePortNumberSm(&sm), result);
    }
    QCOMPARE(m_daemon->heard(), QStringList());
}

void TestTapi::lengths_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("fits");
    QTest::addColumn<bool>("fitsWithPorts");
    const QString emoji = QString::fromUcs4(U"\U0001F600");
    for (int count : {0, 1, 151, 152, 153, 159, 160, 161, 3200}) {
        QTest::addRow("%d septets", count)
            << QString(count, 'a') << (count <= 160) << (count <= 152);
    }
    for (int count : {1, 65, 66, 67, 69, 70, 71, 3200}) {
        QTest::addRow("%d units", count)
            << QString(count, QChar(0x416)) << (count <= 70) << (count <= 66);
    }
    for (int count : {63, 64, 65, 67, 68, 69}) {
        QTest::addRow("%d characters and an emoji", count)
            << QString(count, 'a') + emoji << (count <= 68) << (count <= 64);
    }
    QTest::newRow("80 euros") << QString(80, QChar(0x20AC)) << true << false;
    QTest::newRow("81 euros") << QString(81, QChar(0x20AC)) << false << false;
    QTest::newRow("76 euros") << QString(76, QChar(0x20AC)) << true << true;
}

void TestTapi::lengths()
{
    QFETCH(QString, text);
    QFETCH(bool, fits);
    QFETCH(bool, fitsWithPorts);
    const TAPI_SMS_SM_S sm = smOf(text);
    QCOMPARE(TAPI_SMS_CaculateSm(&sm), fits ? 0 : int(TAPI_TOO_LONG));
    TAPI_SMS_PORT_SM_S portSm = portSmOf(QByteArray());
    portSm.dataCoding = TAPI_SMS_UCS2;
    portSm.msgBuf = reinterpret_cast<const char *>(text.utf16());
    portSm.msgBufLength = quint32(text.size() * 2);
    QCOMPARE(TAPI_SMS_CaculatePortNumberSm(&portSm), fitsWithPorts ? 0 : int(TAPI_TOO_LONG));

    // Of data the sizes are those of the texts here.
    const QByteArray bytes(text.size(), 'x');
    TAPI_SMS_SM_S data = smOf(QString());
    data.dataCoding = TAPI_SMS_BINARY;
    data.msgBuf = bytes.constData();
    data.msgLength = quint32(bytes.size());
    QCOMPARE(TAPI_SMS_CaculateSm(&data) == 0, bytes.size() <= 140);
    const TAPI_SMS_PORT_SM_S portData = portSmOf(bytes);
    QCOMPARE(TAPI_SMS_CaculatePortNumberSm(&portData) == 0, bytes.size() <= 133);

    // What does not fit is not sent either.
    open();
    QCOMPARE(send(text) > 0, fits);
    QVERIFY(TAPI_SMS_CaculateSm(nullptr) != 0);
    QVERIFY(TAPI_SMS_CaculatePortNumberSm(nullptr) != 0);
}

void TestTapi::aLengthThatWrapsIsNotShort()
{
    // Two bytes a unit: in 32 bits these would be two bytes.
    open();
    const QString text = "a";
    TAPI_SMS_SM_S sm = smOf(text);
    sm.msgLength = 0x80000001;
    qint32 reference = 77;
    QCOMPARE(TAPI_SMS_CaculateSm(&sm), int(TAPI_TOO_LONG));
    QCOMPARE(TAPI_SMS_SendSmUnblockMode(m_handle, &sm, &reference), int(TAPI_TOO_LONG));
    QCOMPARE(reference, 77);
}

void TestTapi::results()
{
    open();
    QCOMPARE(send("a"), 1);
    QCOMPARE(send("b"), 2);
    QTRY_COMPARE(m_daemon->heard().size(), 2);
    m_daemon->takeHeard();
    m_daemon->send(toFrame(Result{2, 255, 38}) + toFrame(Result{1, 256, 0}));
    QTRY_COMPARE(m_ear->heard,
                 QStringList({"778: 02 00 00 00 FF 00 00 00 26 00 00 00",
                              "778: 01 00 00 00 00 01 00 00 00 00 00 00"}));
    hears(QStringList({"7: 02 00 00 00", "7: 01 00 00 00"}));

    // What was told is not told again, and what was never sent is not told.
    m_ear->heard.clear();
    m_daemon->send(toFrame(Result{1, 256, 0}) + toFrame(Result{99, 0, 0})
                   + toFrame(ModemState{3, ""}));
    QTRY_COMPARE(m_ear->heard, QStringList{modem(3)});
    hears(QStringList({"7: 01 00 00 00", "7: 63 00 00 00"}));
}

void TestTapi::aDaemonThatDoesNotRead()
{
    // A bare listener that welcomes its client and reads nothing after that.
    const QByteArray path = m_daemon->path() + "-deaf";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
    const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QCOMPARE(::bind(server, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(::listen(server, 1), 0);
    qputenv("WMSG_TELEPHONY_SOCKET", path);
    int client = -1;
    std::thread thread([&client, server] {
        client = ::accept(server, nullptr, nullptr);
        const QByteArray welcome = toFrame(Welcome());
        (void)!::write(client, welcome.constData(), size_t(welcome.size()));
    });
    m_handle = TAPI_CLIENT_Init("a", 2);
    thread.join();
    QVERIFY(m_handle > 0);

    // Sending never waits, and ends when too much does.
    int sent = 0;
    while (sent < 100000 && send(QString(160, 'a')) > 0) {
        ++sent;
    }
    QVERIFY2(sent > 1000 && sent < 100000, qPrintable(QString::number(sent)));

    // Whole messages went out, and those that wait go when the daemon reads.
    FrameReader reader;
    QList<qint32> references;
    QElapsedTimer elapsed;
    elapsed.start();
    while (references.size() < sent && elapsed.elapsed() < 60000) {
        char bytes[65536];
        QCoreApplication::processEvents();
        const ssize_t count = ::recv(client, bytes, sizeof bytes, MSG_DONTWAIT);
        reader.append({bytes, qMax<ssize_t>(count, 0)});
        Frame frame;
        while (reader.next(frame)) {
            Send record;
            if (frame.type == RecordType::Send && fromPayload(frame.payload, record)) {
                references.append(record.reference);
            }
        }
    }
    QCOMPARE(references.size(), sent);
    QCOMPARE(references.last(), sent);
    QVERIFY(std::is_sorted(references.cbegin(), references.cend()));
    QCOMPARE(send("again"), sent + 1);
    ::close(client);
    ::close(server);
}

void TestTapi::registersPorts()
{
    open();
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 2948, SMS_RECV_MODE_ALL), 0);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 65535, SMS_RECV_MODE_PORTS), 0);
    QCOMPARE(TAPI_SMS_DeregisterPortNumber(m_handle, 2948), 0);
    hears({"3: 84 0B 00", "3: FF FF 01", "4: 84 0B"});
    for (int mode : {2, -1, INT_MIN}) {
        QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_E(mode)),
                 int(TAPI_INVALID));
    }
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 0, SMS_RECV_MODE_ALL), int(TAPI_INVALID));
    QCOMPARE(m_daemon->heard(), QStringList());
}

void TestTapi::refusedRequests_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("result");
    QTest::newRow("taken") << int(Answer::PortTaken) << int(TAPI_REFUSED);
    QTest::newRow("not registered") << int(Answer::NotRegistered) << int(TAPI_REFUSED);
    QTest::newRow("invalid") << int(Answer::Invalid) << int(TAPI_INVALID);
    QTest::newRow("no modem") << int(Answer::NoModem) << int(TAPI_NO_SERVICE);
}

void TestTapi::refusedRequests()
{
    QFETCH(int, answer);
    QFETCH(int, result);
    open();
    const QByteArray done = toFrame(Done{Answer(answer)});
    m_daemon->answer(RecordType::RegisterPort, done);
    m_daemon->answer(RecordType::DeregisterPort, done);
    m_daemon->answer(RecordType::SetServiceCenter, done);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_ALL), result);
    QCOMPARE(TAPI_SMS_DeregisterPortNumber(m_handle, 1), result);
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, "1"), result);
}

void TestTapi::otherAnswersDoNotCount()
{
    open();
    // Events and answers to others come before the answer. The request itself will have number 1.
    m_daemon->answer(RecordType::RegisterPort, toFrame(Done{Answer::PortTaken}));
    m_daemon->send(toFrame(Done{Answer::Ok}, 76) + toFrame(Done{Answer::Ok}, 77)
                   + toFrame(messageOf(1, "x")) + toFrame(ModemState{3, ""}));
    QTRY_COMPARE(m_daemon->unread() > 0 || !m_ear->heard.isEmpty(), true);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_ALL), int(TAPI_REFUSED));
    QTRY_COMPARE(m_ear->heard.size(), 2);
    QVERIFY(m_ear->heard.at(0).startsWith("774: "));
    QCOMPARE(m_ear->heard.at(1), modem(3));
}

void TestTapi::incoming_data()
{
    QTest::addColumn<int>("coding");
    QTest::addColumn<bool>("hasPorts");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("ports"); // as in the event: source, destination
    QTest::addColumn<QByteArray>("tail");
    QTest::newRow("text") << 0 << false << fromHex("4100 3DD8") << fromHex("0000 0000")
                          << fromHex("0400 4100 3DD8 0000");
    QTest::newRow("no text") << 0 << false << QByteArray() << fromHex("0000 0000")
                             << fromHex("0000 0000");
    QTest::newRow("8-bit text") << 1 << false << QByteArray("A") << fromHex("0000 0000")
                                << fromHex("0100 41");
    QTest::newRow("data") << 2 << false << fromHex("00 FF") << fromHex("0000 0000")
                          << fromHex("0200 00 FF");
    QTest::newRow("data to a port")
        << 2 << true << fromHex("00") << fromHex("F023 840B") << fromHex("0100 00");
    QTest::newRow("text to a port")
        << 0 << true << fromHex("4100") << fromHex("F023 840B") << fromHex("0200 4100 0000");
    QTest::newRow("the longest") << 0 << false << QByteArray(65532, 'x') << fromHex("0000 0000")
                                 << fromHex("FCFF") + QByteArray(65532, 'x') + fromHex("0000");
}

void TestTapi::incoming()
{
    QFETCH(int, coding);
    QFETCH(bool, hasPorts);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, ports);
    QFETCH(QByteArray, tail);
    const TimeZone zone("XST-3");
    open();
    Message message;
    message.id = 1;
    message.coding = Coding(coding);
    message.hasPorts = hasPorts;
    message.destinationPort = 2948; // means nothing where there are no ports
    message.sourcePort = 9200;
    message.serviceCenter = "+9";
    message.sender = "+43664";
    message.time = 1100000000; // 2004-11-09 11:33:20 UTC
    message.body = body;
    m_daemon->send(toFrame(message));
    const QByteArray head = fromHex("00000000") + char(coding) + fromHex("000000") + ports
        + QByteArray("+9").leftJustified(42, '\0') + QByteArray("+43664").leftJustified(46, '\0')
        + fromHex("D407 0B 09 0E 21 14 0000000000");
    QCOMPARE(head.size(), 112);
    QTRY_COMPARE(m_ear->heard, QStringList{"774: " + QString(toHex(head + tail))});
    QTRY_COMPARE(m_daemon->heard(), QStringList{answered(1, true)});
}

void TestTapi::longNumbersAreCut()
{
    open();
    Message message = messageOf(1, "x");
    message.serviceCenter = QByteArray(255, '1');
    message.sender = QByteArray(255, '2');
    m_daemon->send(toFrame(message));
    QTRY_COMPARE(m_ear->heard.size(), 1);
    const QByteArray record = fromHex(m_ear->heard.first().mid(5).toLatin1());
    QCOMPARE(record.mid(12, 42), QByteArray(41, '1') + '\0');
    QCOMPARE(record.mid(54, 46), QByteArray(45, '2') + '\0');
    QCOMPARE(toHex(record.mid(100, 12)), toHex(QByteArray(12, '\0'))); // no time
}

void TestTapi::timesAreLocal()
{
    open();
    struct {
        const char *zone;
        qint64 time;
        const char *wire;
    } rows[] = {
        {"XST-3", 1, "B207 01 01 03 00 01"},
        {"XST+3", -1, "B107 0C 1F 14 3B 3B"},
        {"UTC", 253402300799, "0F27 0C 1F 17 3B 3B"},
        {"UTC", 253402300800, "0000 00 00 00 00 00"},
        {"UTC", std::numeric_limits<qint64>::max(), "0000 00 00 00 00 00"},
        {"UTC", std::numeric_limits<qint64>::min(), "0000 00 00 00 00 00"},
    };
    quint64 id = 0;
    for (const auto &row : rows) {
        const TimeZone zone(row.zone);
        Message message = messageOf(++id, "x");
        message.time = row.time;
        m_ear->heard.clear();
        m_daemon->send(toFrame(message));
        QTRY_COMPARE(m_ear->heard.size(), 1);
        QCOMPARE(toHex(fromHex(m_ear->heard.first().mid(5).toLatin1()).mid(100, 7)),
                 toHex(fromHex(row.wire)));
    }
}

void TestTapi::inAnySplit()
{
    open();
    const qsizetype size = toFrame(messageOf(1, "x")).size() + toFrame(ModemState()).size();
    for (qsizetype cut = 1; cut < size; ++cut) {
        m_ear->heard.clear();
        const QByteArray bytes =
            toFrame(messageOf(quint64(cut), "x")) + toFrame(ModemState{quint32(cut), ""});
        QCOMPARE(bytes.size(), size);
        m_daemon->send(bytes.left(cut));
        QTRY_COMPARE(m_daemon->unread(), 0);
        m_daemon->send(bytes.mid(cut));
        QTRY_COMPARE(m_ear->heard.size(), 2);
        QVERIFY(m_ear->heard.first().startsWith("774: "));
        QCOMPARE(m_ear->heard.last(),
                 "513: " + QString(toHex(QByteArray(1, char(cut)))) + " 00 00 00");
    }
}

void TestTapi::notTaken()
{
    open();
    m_ear->then = [](UTIL_TAPI_Event *event) {
        QVERIFY(event->IsTaken());
        event->SetTaken(false);
    };
    m_daemon->send(toFrame(messageOf(1, "x")));
    hears(QStringList{answered(1, false)});
    // It comes again when the daemon finds nobody else.
    m_ear->then = nullptr;
    m_daemon->send(toFrame(messageOf(1, "x")));
    hears(QStringList{answered(1, true)});
    QCOMPARE(m_ear->heard.size(), 2);
}

void TestTapi::whatIsNotWanted()
{
    open();
    // A message to no port is on its way while the client says that it wants ports alone.
    m_daemon->send(toFrame(messageOf(1, "x")));
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 2948, SMS_RECV_MODE_PORTS), 0);
    m_daemon->send(toFrame(messageOf(2, "x", 2948)) + toFrame(messageOf(3, "x", 2949)));
    hears(QStringList({"3: 84 0B 01", answered(1, false), answered(2, true), answered(3, false)}));
    QCOMPARE(m_ear->heard.size(), 1);

    // Without that port it wants all again.
    QCOMPARE(TAPI_SMS_DeregisterPortNumber(m_handle, 2948), 0);
    m_daemon->send(toFrame(messageOf(4, "x")) + toFrame(messageOf(5, "x", 2949)));
    hears(QStringList({"4: 84 0B", answered(4, true), answered(5, true)}));

    TAPI_CLIENT_Fini(m_handle);
    open(TAPI_EVENTS_NONE);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 2948, SMS_RECV_MODE_ALL), 0);
    m_daemon->send(toFrame(messageOf(6, "x")) + toFrame(messageOf(7, "x", 2948)));
    hears(QStringList({"3: 84 0B 00", answered(6, false), answered(7, true)}));
}

void TestTapi::eventsWaitForTheDevice()
{
    open();
    m_device.reset();
    QCOMPARE(send("a"), 1);
    m_daemon->send(toFrame(messageOf(1, "x")) + toFrame(Result{1, 0, 0}));
    QTRY_COMPARE(m_daemon->unread(), 0);
    QCoreApplication::processEvents();
    QTRY_COMPARE(m_daemon->heard().size(), 1); // the message to be sent; nothing was answered
    m_daemon->takeHeard();
    QCOMPARE(m_ear->heard, QStringList());

    m_device = std::make_unique<UTIL_TAPI_Device>();
    m_ear = std::make_unique<Ear>(m_device.get());
    QVERIFY(m_device->attach(m_handle));
    QCOMPARE(m_ear->heard, QStringList()); // not from inside
    QTRY_COMPARE(m_ear->heard.size(), 2);
    hears(QStringList({answered(1, true), "7: 01 00 00 00"}));
}

void TestTapi::endedByItsReceiver_data()
{
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("taken") << true;
    QTest::newRow("not taken") << false;
}

void TestTapi::endedByItsReceiver()
{
    QFETCH(bool, isTaken);
    open();
    m_ear->then = [this, isTaken](UTIL_TAPI_Event *event) {
        event->SetTaken(isTaken);
        TAPI_CLIENT_Fini(std::exchange(m_handle, -1));
        m_device.reset();
        QCOMPARE(event->GetType(), 774); // it lives on
    };
    m_daemon->send(toFrame(messageOf(1, "x")) + toFrame(messageOf(2, "x")));
    QTRY_COMPARE(m_daemon->gone(), 1);
    QCOMPARE(m_daemon->heard(), QStringList{answered(1, isTaken)});
    QCOMPARE(m_ear->heard.size(), 1);
}

void TestTapi::nonsenseEndsTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("a length above the limit") << fromHex("01080100");
    QTest::newRow("a negative length") << fromHex("FFFFFFFF 8500 0000");
    QTest::newRow("half a result") << fromHex("04000000 8400 0000 01000000");
    QTest::newRow("half a message") << fromHex("04000000 8500 0000 01000000");
    QTest::newRow("half a state") << fromHex("04000000 8600 0000 01000000");
    QTest::newRow("an answer that is none") << fromHex("04000000 8300 0000 FFFFFFFF");
    QTest::newRow("a number past its record") << fromHex("05000000 8600 0000 01000000 05");
}

void TestTapi::nonsenseEndsTheConnection()
{
    QFETCH(QByteArray, bytes);
    open();
    QCOMPARE(send("a"), 1);
    m_daemon->send(toFrame(messageOf(1, "x")) + bytes + toFrame(ModemState{3, ""}));
    QTRY_COMPARE(m_daemon->gone(), 1);
    // The message was not answered: another client gets it. What was sent is unknown.
    QTRY_COMPARE(m_ear->heard, QStringList({kAbsent, "778: 01 00 00 00 00 00 00 00 02 00 01 00"}));
    QCOMPARE(send("b"), -1);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_ALL), int(TAPI_NO_SERVICE));
    QCOMPARE(TAPI_SMS_SetServiceCenter(m_handle, "1"), int(TAPI_NO_SERVICE));
    QTest::qWait(200); // a daemon that speaks nonsense is not asked again
    QCOMPARE(m_daemon->clients(), 1);
}

void TestTapi::framesOfAnUnknownType()
{
    open();
    m_daemon->send(fromHex("03000000 E703 0000 010203") + toFrame(Welcome{1, 1, "+7"})
                   + toFrame(Send()) + toFrame(ModemState{3, ""}));
    QTRY_COMPARE(m_ear->heard, QStringList{modem(3)});
    QCOMPARE(m_daemon->gone(), 0);
}

void TestTapi::connectsAgain()
{
    open();
    const QStringList first = m_daemon->heard();
    m_daemon->stopListening();
    m_daemon->drop();
    QTRY_COMPARE(m_ear->heard, QStringList{kAbsent});
    char number[8] = "x";
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "");
    QCOMPARE(send("a"), -1);
    m_daemon->listen();
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, kReady}), 60000);
    QCOMPARE(send("a"), 1);
    QTRY_COMPARE(m_daemon->heard().size(), 2);
    QCOMPARE(TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number), 0);
    QCOMPARE(number, "+4366");
}

void TestTapi::failsUntilItIsWelcome()
{
    // The daemon that is back takes its time with the welcome.
    open();
    m_daemon->answer(RecordType::Hello, QByteArray());
    m_daemon->drop();
    QTRY_COMPARE_WITH_TIMEOUT(m_daemon->heard().size(), 1, 60000);
    QCOMPARE(send("a"), -1);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_ALL), int(TAPI_NO_SERVICE));
    m_daemon->send(toFrame(Welcome{kVersion, TAPI_MODEM_READY, "+4366"}));
    QTRY_COMPARE(m_ear->heard, QStringList({kAbsent, kReady}));
    QCOMPARE(send("a"), 1);
    QTRY_COMPARE(m_daemon->heard().size(), 2);
}

void TestTapi::renewsItsPorts()
{
    m_handle = TAPI_CLIENT_Init("test", 2);
    const QString hello = m_daemon->takeHeard().value(0);
    m_device = std::make_unique<UTIL_TAPI_Device>();
    m_ear = std::make_unique<Ear>(m_device.get());
    m_device->attach(m_handle);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 2948, SMS_RECV_MODE_PORTS), 0);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 16, SMS_RECV_MODE_PORTS), 0);
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 16, SMS_RECV_MODE_ALL), 0); // the mode changes
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 17, SMS_RECV_MODE_ALL), 0);
    QCOMPARE(TAPI_SMS_DeregisterPortNumber(m_handle, 17), 0);
    m_daemon->takeHeard();
    m_daemon->drop();
    // It is the same client as before.
    QTRY_COMPARE_WITH_TIMEOUT(m_daemon->heard(), QStringList({hello, "3: 10 00 00", "3: 84 0B 01"}),
                              60000);
    QTRY_COMPARE(m_ear->heard, QStringList({kReady, kAbsent, kReady}));
}

void TestTapi::aPortThatWasLost()
{
    open();
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 2948, SMS_RECV_MODE_PORTS), 0);
    m_daemon->answer(RecordType::RegisterPort, toFrame(Done{Answer::PortTaken}));
    m_daemon->drop();
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, kReady, "514: 84 0B 00 00"}),
                              60000);
    // It is no longer one that wants its ports alone.
    m_daemon->takeHeard();
    m_daemon->send(toFrame(messageOf(1, "x")));
    hears(QStringList{answered(1, true)});
}

void TestTapi::repeatsUnfinishedMessages()
{
    open();
    QCOMPARE(send("a"), 1);
    QCOMPARE(send("b"), 2);
    QCOMPARE(send("c"), 3);
    QTRY_COMPARE(m_daemon->heard().size(), 3);
    m_daemon->send(toFrame(Result{2, 0, 0}));
    QTRY_COMPARE(m_daemon->heard().size(), 4);
    const QStringList before = m_daemon->takeHeard();
    m_daemon->drop();
    QTRY_COMPARE_WITH_TIMEOUT(m_daemon->heard().size(), 3, 60000);
    QCOMPARE(m_daemon->heard().mid(1), QStringList({before.at(0), before.at(2)}));
    m_ear->heard.clear();
    m_daemon->send(toFrame(Result{3, 0, 0}) + toFrame(Result{1, 0, 0}));
    QTRY_COMPARE(m_ear->heard,
                 QStringList({"778: 03 00 00 00 00 00 00 00 00 00 00 00",
                              "778: 01 00 00 00 00 00 00 00 00 00 00 00"}));
}

void TestTapi::givesUnfinishedMessagesUp()
{
    open();
    QCOMPARE(send("a"), 1);
    QTRY_COMPARE(m_daemon->heard().size(), 1);
    m_daemon->stopListening();
    m_daemon->drop();
    const QString lost = "778: 01 00 00 00 00 00 00 00 02 00 01 00";
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, lost}), 60000);

    // It still connects when the daemon is back, and does not repeat what was given up.
    m_daemon->takeHeard();
    m_daemon->listen();
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, lost, kReady}), 60000);
    m_daemon->send(toFrame(Result{1, 0, 0}));
    QTRY_COMPARE(m_daemon->heard().mid(1), QStringList{"7: 01 00 00 00"});
    QCOMPARE(m_ear->heard.size(), 3);
}

void TestTapi::givesUpWhereNobodyWelcomes()
{
    open();
    QCOMPARE(send("a"), 1);
    QTRY_COMPARE(m_daemon->heard().size(), 1);
    // Each greeting is answered by the end of the connection.
    m_daemon->hangUp(true);
    m_daemon->drop();
    const QString lost = "778: 01 00 00 00 00 00 00 00 02 00 01 00";
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, lost}), 60000);
    m_daemon->hangUp(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard, QStringList({kAbsent, lost, kReady}), 60000);
}

void TestTapi::aMessageIsToldOnce()
{
    open();
    // The answer does not arrive: the connection goes while the message is told.
    m_ear->then = [this](UTIL_TAPI_Event *event) {
        if (event->GetType() == TAPI_EVENT_SMS_INCOMING) {
            m_daemon->drop();
            TAPI_SMS_SetServiceCenter(m_handle, "1"); // notices it
        }
    };
    m_daemon->send(toFrame(messageOf(1, "x")) + toFrame(messageOf(2, "x")));
    QTRY_COMPARE_WITH_TIMEOUT(m_ear->heard.size(), 3, 60000); // the message, absent, ready
    QVERIFY(m_ear->heard.at(0).startsWith("774: "));
    m_ear->then = nullptr;
    m_daemon->takeHeard();
    m_daemon->send(toFrame(messageOf(1, "x")) + toFrame(messageOf(2, "y")));
    hears(QStringList({answered(1, true), answered(2, true)}));
    QCOMPARE(m_ear->heard.size(), 4);
    QVERIFY(m_ear->heard.last().endsWith("01 00 79"));
}

void TestTapi::theLatestMessagesAreRemembered()
{
    open();
    constexpr int kCount = 64;
    QByteArray messages;
    QStringList answers;
    for (int id = 1; id <= kCount; ++id) {
        messages += toFrame(messageOf(quint64(id), "x"));
        answers += answered(id, true);
    }
    m_daemon->send(messages);
    hears(answers);
    // No answer has reached the daemon that offers them again.
    m_daemon->drop();
    QTRY_COMPARE_WITH_TIMEOUT(m_daemon->heard().size(), 1, 60000);
    QTRY_COMPARE(m_ear->heard.size(), kCount + 2);
    m_daemon->takeHeard();
    m_daemon->send(messages);
    hears(answers);
    QCOMPARE(m_ear->heard.size(), kCount + 2);
}

void TestTapi::notWelcomeAgain()
{
    open();
    QCOMPARE(send("a"), 1);
    m_daemon->answer(RecordType::Hello, toFrame(Refused{2}));
    m_daemon->drop();
    QTRY_COMPARE_WITH_TIMEOUT(
        m_ear->heard, QStringList({kAbsent, "778: 01 00 00 00 00 00 00 00 02 00 01 00"}), 60000);
    QCOMPARE(send("b"), -1);
}

void TestTapi::goneDuringARequest()
{
    open();
    m_daemon->answer(RecordType::RegisterPort, fromHex("FFFFFFFF"));
    QCOMPARE(TAPI_SMS_RegisterPortNumber(m_handle, 1, SMS_RECV_MODE_ALL), int(TAPI_NO_SERVICE));
    QTRY_COMPARE(m_ear->heard, QStringList{kAbsent});
}

QTEST_GUILESS_MAIN(TestTapi)
#include "tst_tapi.moc"

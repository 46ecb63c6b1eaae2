// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmlistener.h"
#include "mms/session/mms_ua_svcmd.h"
#include "mms/session/wmmssession.h"
#include "platform/applog/applog.h"
#include "qt2/qcustomevent.h"
#include "qt2/qwssocket.h"
#include "tests/mms/session/message_with.h"
#include "tests/support/hex.h"
#include "tests/support/log_capture.h"
#include "tests/support/proxy_peer.h"
#include "util/mms_util_common.h"

#include <QtTest/QtTest>

#include <climits>
#include <functional>
#include <memory>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Writes down what it is told, and does what `then` says after each call.
class RecordingListener : public WMFMListener {
public:
    using WMFMListener::WMFMListener;

    void msgIncome(WMFMMsg *msg) override
    {
        const std::unique_ptr<WMFMMsg> message(msg);
        note("message " + dynamic_cast<WMMSMsg &>(*msg).getSubject());
    }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        note(QString("status %1 %2").arg(id).arg(int(status)));
    }
    QString listenerName() const override { return "recording"; }
    void progress(int id, int value1, int value2) override
    {
        note(QString("progress %1 %2 %3").arg(id).arg(value1).arg(value2));
    }

    QStringList heard;
    std::function<void()> then;

private:
    void note(const QString &what)
    {
        heard.append(what);
        if (then) {
            then();
        }
    }
};

/// A message of another kind, or of a class that nobody knows.
class OtherMessage : public WMFMMsg {
public:
    explicit OtherMessage(WMFM::MSG_TYPE_T type) : m_type(type) { }
    WMFMEntry getFrom() override { return WMFMEntry(); }
    bool setTo(const WMFMEntry &) override { return true; }
    WMFM::MSG_TYPE_T getMsgType() const override { return m_type; }

private:
    WMFM::MSG_TYPE_T m_type;
};

QByteArray word(qint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

QByteArray units(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

QByteArray retrievalOf(const QString &path)
{
    return word(3) + word(int(path.size()) * 2) + word(int(path.size()) * 2) + units(path);
}

/// The events of the daemon, and what a listener hears of each.
struct EventRow {
    const char *name;
    QByteArray wire;
    QString heard; // null: nothing
};
// clang-format off
const EventRow kEvents[] = {
    {"request completed",      fromHex("01000000 04000000  03000000 EEEEEEEE 04000000 7F000000  61006200"), "status 3 127"},
    {"without a URI",          fromHex("01000000 00000000  FEFFFFFF 00000000 00000000 FFFFFFFF"), "status -2 -1"},
    {"registration completed", fromHex("02000000 00000000  03000000 EEEEEEEE 05000000"), "status 3 5"},
    {"retrieval completed",    retrievalOf("/tmp/wmsg-nowhere"), QString()},
    {"progress",               fromHex("04000000 00000000  01000000 0A000000 64000000"), "progress 1 10 100"},
    {"status returned",        fromHex("05000000 00000000  02000000 82000000"), "status 2 130"},
    {"notification",           fromHex("06000000 04000000  02000000 02000000  61006200"), QString()},
    {"delivery report",        fromHex("07000000 02000000  00000000 02000000 00000000 00000000 00000000  6100"), QString()},
};
// clang-format on

/// What a listener hears of bytes that arrive in `chunks`: a reader of its own, written down once
/// more from the rules.
class Expectation {
public:
    explicit Expectation(const QByteArrayList &chunks)
    {
        for (const QByteArray &chunk : chunks) {
            m_bytes += chunk;
            while (!isDropped && m_bytes.size() >= 4) {
                record(take());
            }
        }
    }

    QStringList heard;
    bool isDropped = false;

private:
    qint32 take()
    {
        const auto value = qFromUnaligned<qint32>(m_bytes.constData());
        m_bytes.remove(0, 4);
        return value;
    }
    void record(qint32 id)
    {
        static constexpr int kWords[] = {0, 4, 3, 1, 3, 2, 2, 5};
        if (id <= 0) {
            return;
        }
        isDropped = id > 7;
        if (isDropped || m_bytes.size() < 4) {
            return;
        }
        const qint32 length = take();
        isDropped = length < -1 || length > 1024 * 1024;
        if (isDropped || m_bytes.size() < 4 * kWords[id]) {
            return;
        }
        QList<qint32> words;
        while (words.size() < kWords[id]) {
            words.append(take());
        }
        if (m_bytes.size() >= length) {
            m_bytes.remove(0, qMax(length, 0));
        }
        tell(id, words);
    }
    void tell(qint32 id, const QList<qint32> &words)
    {
        if (id == 1 || (id == 2 && words[0] != -1) || id == 5) {
            heard.append(QString("status %1 %2").arg(words.first()).arg(words.last()));
        } else if (id == 4) {
            heard.append(QString("progress %1 %2 %3").arg(words[0]).arg(words[1]).arg(words[2]));
        }
    }

    QByteArray m_bytes;
};

} // namespace

class TestWMMSSession : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void knownByItsNames();
    void aDaemonThatIsNotThereIsSeenLater_data();
    void aDaemonThatIsNotThereIsSeenLater();
    void nothingIsToldWhenClosedBeforeThat();
    void requests();
    void requestsAreCountedPerSession();
    void aDaemonThatAcceptsLate();
    void requestsAfterTheEnd();
    void closingEndsTheConnection();

    void events_data();
    void events();
    void nativeRegistrations();
    void eachEventBehindEachOther();
    void splitAtEveryByte();
    void splitIntoThree();
    void garbage_data();
    void garbage();
    void upToThreeBytesWait();
    void dropsWhatMakesNoSense_data();
    void dropsWhatMakesNoSense();
    void idsBelowOneAreSkipped();
    void aLongEvent();
    void manyEvents();
    void closedInTheMiddle();
    void withoutAListener();
    void destructionWithEventsPosted();
    void closedByItsListener();
    void closedWhileItIsToldAMessage();

    void retrieves();
    void retrievesWhatCannotBeDecoded_data();
    void retrievesWhatCannotBeDecoded();

    void handlesItsOwnEventsAlone();
    void aNullRecord_data();
    void aNullRecord();
    void eventsOfQtArrive();
    void eventNumbersAreReserved();
    void errorsAreTold();

    void sends();
    void sendsToAnyKindOfRecipient();
    void refusesToSend_data();
    void refusesToSend();
    void aMessageThatCannotBeSaved();
    void namesThatAreTaken_data();
    void namesThatAreTaken();
    void twoProcessesDoNotShareNames();

    void settings_data();
    void settings();
    void noSettingsServer();

private:
    void open();
    /// Sends events and waits until all are told.
    void hear(const QByteArray &wire, const QStringList &expected);
    QString writeMailFile(const QString &name, const QString &subject);
    /// The name that the next message gets, which is free.
    static QString nextName();

    std::unique_ptr<ProxyPeer> m_proxy;
    std::unique_ptr<WMMSSession> m_session;
    std::unique_ptr<RecordingListener> m_listener;
    std::unique_ptr<QTemporaryDir> m_folder;
    WMFM::STATUS_T m_status = WMFM::STATUS_OK;
};

void TestWMMSSession::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    appLogModuleStream = appLogDiscardStream();
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("UVO_EXTRA_SYS_DATA_PATH", m_folder->path().toLocal8Bit());
    m_status = WMFM::STATUS_T(99);
}

void TestWMMSSession::cleanup()
{
    m_session.reset();
    m_listener.reset();
    m_proxy.reset();
}

/// Opens a session on a daemon of ours, with a listener.
void TestWMMSSession::open()
{
    m_proxy = std::make_unique<ProxyPeer>();
    m_session = std::make_unique<WMMSSession>(m_status);
    QCOMPARE(int(m_status), 0);
    m_listener = std::make_unique<RecordingListener>(m_session.get());
    QVERIFY(m_session->setListener(m_listener.get(), m_status));
    m_status = WMFM::STATUS_T(99);
}

void TestWMMSSession::hear(const QByteArray &wire, const QStringList &expected)
{
    m_listener->heard.clear();
    m_proxy->sendBytes(wire + fromHex("04000000 00000000  4D000000 01000000 02000000"));
    QTRY_VERIFY(m_listener->heard.contains("progress 77 1 2"));
    m_listener->heard.removeLast();
    QCOMPARE(m_listener->heard, expected);
}

QString TestWMMSSession::writeMailFile(const QString &name, const QString &subject)
{
    const QString path = m_folder->filePath(name);
    WMMSMsg message = messageWith(subject);
    if (message.saveAs(path, nullptr, nullptr) != 300) {
        qFatal("cannot write %s", qPrintable(path));
    }
    return path;
}

QString TestWMMSSession::nextName()
{
    QString name;
    do {
        // Asking moves the count on: the name after this one is next.
        const int number = MMS_UTIL_Common::generateFileNameAtTmp(3).mid(6, 5).toInt();
        name = QString("/tmp/t%1.txt").arg((number + 1) % 65536, 5, 10, QChar('0'));
    } while (QFileInfo(name).isSymLink() || QFile::exists(name) || QFile::exists(name + ".tmp"));
    return name;
}

void TestWMMSSession::knownByItsNames()
{
    open();
    const QMetaObject *meta = m_session->metaObject();
    QCOMPARE(meta->className(), "WMMSSession");
    QCOMPARE(meta->superClass()->className(), "QObject");
    for (const char *slot : {"readData()", "errorHandler(int)", "closeClient()"}) {
        QVERIFY2(meta->indexOfSlot(slot) >= 0, slot);
    }
    QVERIFY(meta->indexOfSignal("connectionClosed()") >= 0);
    // QObject comes first.
    QCOMPARE(static_cast<void *>(static_cast<QObject *>(m_session.get())),
             static_cast<void *>(m_session.get()));
    QCOMPARE(int(m_session->getMsgType()), 0);
}

void TestWMMSSession::aDaemonThatIsNotThereIsSeenLater_data()
{
    QTest::addColumn<bool>("isStale");
    QTest::newRow("no file") << false;
    QTest::newRow("a file on which nobody listens") << true;
}

void TestWMMSSession::aDaemonThatIsNotThereIsSeenLater()
{
    QFETCH(bool, isStale);
    m_proxy = std::make_unique<ProxyPeer>();
    m_proxy->server().stop();
    if (!isStale) {
        QVERIFY(QFile::remove("/tmp/mmsproxy"));
    }
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    QCOMPARE(int(status), 0);
    const QSignalSpy closed(&session, SIGNAL(connectionClosed()));
    QCOMPARE(session.registerAppID("a", status), 0);
    QCOMPARE(int(status), 0);
    QCOMPARE(closed.size(), 0);
    QTRY_COMPARE(closed.size(), 1);
    QCOMPARE(session.registerAppID("a", status), 1);
    QCOMPARE(int(status), 0);
    QTest::qWait(20);
    QCOMPARE(closed.size(), 1);
}

void TestWMMSSession::nothingIsToldWhenClosedBeforeThat()
{
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    auto session = std::make_unique<WMMSSession>(status);
    const QSignalSpy closed(session.get(), &WMMSSession::connectionClosed);
    session.reset();
    QTest::qWait(20);
    QCOMPARE(closed.size(), 0);
}

void TestWMMSSession::requests()
{
    open();
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
    QCOMPARE(int(m_status), 0);
    m_proxy->expect("02000000 02000000  00000000 02000000  6100");
    m_status = WMFM::STATUS_T(99);
    QCOMPARE(m_session->deRegisterAppID(QString(QChar(0x20AC)), m_status), 1);
    QCOMPARE(int(m_status), 0);
    m_proxy->expect("03000000 02000000  01000000 02000000  AC20");

    m_status = WMFM::STATUS_T(99);
    m_session->mmsAbort(9, m_status);
    QCOMPARE(int(m_status), 0);
    m_proxy->expect("06000000 00000000  02000000 09000000");
    m_status = WMFM::STATUS_T(99);
    m_session->mmsPause(-1, m_status);
    QCOMPARE(int(m_status), 0);
    m_proxy->expect("07000000 00000000  03000000 FFFFFFFF");
    m_status = WMFM::STATUS_T(99);
    m_session->mmsResume(INT_MAX, m_status);
    QCOMPARE(int(m_status), 0);
    m_proxy->expect("08000000 00000000  04000000 FFFFFF7F");

    QCOMPARE(m_session->registerAppID(QString(), m_status), 5);
    m_proxy->expect("02000000 00000000  05000000 00000000");
    m_proxy->expectNothing();
    QCOMPARE(m_listener->heard, QStringList());
}

void TestWMMSSession::requestsAreCountedPerSession()
{
    open();
    ProxyClient second(m_proxy->server());
    m_proxy->expectNothing(); // the first client is taken
    WMMSSession other(m_status);
    RecordingListener otherListener(&other);
    QVERIFY(other.setListener(&otherListener, m_status));
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
    QCOMPARE(other.registerAppID("b", m_status), 0);
    QCOMPARE(other.registerAppID("c", m_status), 1);
    QCOMPARE(m_session->registerAppID("d", m_status), 1);
    m_proxy->expect("02000000 02000000  00000000 02000000  6100");
    m_proxy->expect("02000000 02000000  01000000 02000000  6400");
    second.expect("02000000 02000000  00000000 02000000  6200");
    second.expect("02000000 02000000  01000000 02000000  6300");
    m_proxy->send("02000000 00000000  00000000 00000000 00000000");
    second.send("02000000 00000000  00000000 00000000 05000000");
    QTRY_COMPARE(m_listener->heard, QStringList{"status 0 0"});
    QTRY_COMPARE(otherListener.heard, QStringList{"status 0 5"});
}

void TestWMMSSession::aDaemonThatAcceptsLate()
{
    open();
    for (int n = 0; n < 20; ++n) {
        m_session->mmsAbort(n, m_status);
    }
    QTest::qWait(50);
    for (int n = 0; n < 20; ++n) {
        m_proxy->expect((word(6) + word(0) + word(n) + word(n)).toHex());
    }
}

void TestWMMSSession::requestsAfterTheEnd()
{
    open();
    const QSignalSpy closed(m_session.get(), &WMMSSession::connectionClosed);
    m_proxy->expectNothing();
    m_proxy->close();
    QTest::qWait(20);
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
    QCOMPARE(int(m_status), 0);
    m_session->mmsAbort(0, m_status);
    QCOMPARE(int(m_status), 0);
    QTest::qWait(20);
    QCOMPARE(closed.size(), 0); // an end in good order
    QCOMPARE(m_listener->heard, QStringList());
}

void TestWMMSSession::closingEndsTheConnection()
{
    open();
    m_session->mmsAbort(1, m_status);
    m_session.reset();
    m_proxy->expect("06000000 00000000  00000000 01000000");
    m_proxy->expectEnd();
}

void TestWMMSSession::events_data()
{
    QTest::addColumn<int>("row");
    for (size_t i = 0; i < std::size(kEvents); ++i) {
        QTest::newRow(kEvents[i].name) << int(i);
    }
}

static const char kNotNative[] = "WMMSSessionPrivate::procEvReqCompleted: ev is not native "
                                 "registration/deregistration!\n";

void TestWMMSSession::events()
{
    QFETCH(int, row);
    const EventRow &event = kEvents[row];
    open();
    LogCapture log;
    hear(event.wire, event.heard.isNull() ? QStringList() : QStringList{event.heard});
    const QString name = event.name;
    QStringList lines;
    if (name == "registration completed") {
        lines = QStringList{kNotNative};
    } else if (name == "status returned") {
        lines =
            QStringList{"WMMSSessionPrivate::procEvStsRet: call listener requestStatusRet...\n"};
    } else if (name == "retrieval completed") {
        lines = QStringList{"WMMSSessionPrivate::procEvRetrCompleted, uri is /tmp/wmsg-nowhere \n",
                            "fail to open file", "get a MMS,decode fail!"};
    }
    QCOMPARE(log.lines(), lines);
}

void TestWMMSSession::nativeRegistrations()
{
    // No request has the id -1: it is what the session's own registration would have.
    open();
    LogCapture log;
    hear(fromHex("02000000 00000000  FFFFFFFF 00000000 00000000"), {});
    QCOMPARE(log.lines(),
             (QStringList{
                 "WMMSSessionPrivate::procEvRegCompleted: ev is native registration!\n",
                 "WMMSSessionPrivate::procEvRegCompleted: native register/deregister succeed!\n"}));
    log.clear();
    hear(fromHex("02000000 00000000  FFFFFFFF 00000000 07000000"), {});
    QCOMPARE(log.lines(),
             (QStringList{
                 "WMMSSessionPrivate::procEvRegCompleted: ev is native registration!\n",
                 "WMMSSessionPrivate::procEvRegCompleted: native  register/deregister failed!\n"}));
}

void TestWMMSSession::eachEventBehindEachOther()
{
    open();
    QByteArray all;
    QStringList expected;
    for (const EventRow &first : kEvents) {
        for (const EventRow &second : kEvents) {
            for (const EventRow *event : {&first, &second}) {
                all += event->wire;
                if (!event->heard.isNull()) {
                    expected.append(event->heard);
                }
            }
        }
    }
    hear(all, expected);
}

/// Sends chunks, a moment apart, to a fresh session and returns what is heard.
static QStringList heardOf(const QByteArrayList &chunks, bool &isDropped)
{
    ProxyPeer proxy;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    RecordingListener listener(&session);
    session.setListener(&listener, status);
    auto *socket = session.findChild<QWSSocket *>();
    for (const QByteArray &chunk : chunks) {
        if (socket->state() == QLocalSocket::ConnectedState && !chunk.isEmpty()) {
            proxy.sendBytes(chunk);
            socket->waitForReadyRead(1000);
        }
    }
    QCoreApplication::sendPostedEvents(&session);
    isDropped = socket->state() != QLocalSocket::ConnectedState;
    return listener.heard;
}

static void compareWithExpectation(const QByteArrayList &chunks)
{
    const Expectation expected(chunks);
    bool isDropped = false;
    const QStringList heard = heardOf(chunks, isDropped);
    QByteArrayList shown;
    for (const QByteArray &chunk : chunks) {
        shown.append(toHex(chunk));
    }
    const QByteArray told = "in " + shown.join(" | ") + "\nheard    " + heard.join(", ").toUtf8()
        + "\nexpected " + expected.heard.join(", ").toUtf8();
    QVERIFY2(heard == expected.heard && isDropped == expected.isDropped, told);
}

void TestWMMSSession::splitAtEveryByte()
{
    // a record that has not arrived whole is posted, and what follows is a new record
    const QByteArray all = kEvents[0].wire + kEvents[4].wire + kEvents[5].wire + kEvents[2].wire;
    for (int cut = 0; cut <= all.size(); ++cut) {
        compareWithExpectation({all.left(cut), all.mid(cut)});
        if (QTest::currentTestFailed()) {
            return;
        }
    }
    // Cut behind its words, an event is told; cut within them, it is not.
    bool isDropped = false;
    QCOMPARE(heardOf({kEvents[0].wire.left(24), QByteArray()}, isDropped),
             QStringList{"status 3 127"});
    QCOMPARE(heardOf({kEvents[0].wire.left(23), QByteArray()}, isDropped), QStringList());
    QCOMPARE(heardOf({kEvents[0].wire.left(4), QByteArray()}, isDropped), QStringList());
    QVERIFY(!isDropped);
}

void TestWMMSSession::splitIntoThree()
{
    const QByteArray all = kEvents[2].wire + kEvents[0].wire;
    for (int first = 1; first < all.size(); first += 3) {
        for (int second = first; second <= all.size(); second += 5) {
            compareWithExpectation(
                {all.left(first), all.mid(first, second - first), all.mid(second)});
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }
}

void TestWMMSSession::garbage_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 0; seed < 200; ++seed) {
        QTest::addRow("seed %d", seed) << seed;
    }
}

void TestWMMSSession::garbage()
{
    QFETCH(int, seed);
    std::mt19937 random(seed);
    QByteArrayList chunks;
    for (int n = 0; n < 3; ++n) {
        QByteArray chunk;
        // Small words look like ids and lengths; now and then anything.
        for (int words = int(random() % 12); words > 0; --words) {
            const bool isSmall = random() % 8 != 0;
            chunk += word(isSmall ? qint32(random() % 10) - 1 : qint32(random()));
        }
        chunk.chop(random() % 4 == 0 ? int(qMin<qsizetype>(chunk.size(), random() % 4)) : 0);
        chunks.append(chunk);
    }
    compareWithExpectation(chunks);
}

void TestWMMSSession::upToThreeBytesWait()
{
    open();
    const QByteArray event = fromHex("05000000 00000000  02000000 82000000");
    for (int count = 1; count <= 3; ++count) {
        m_listener->heard.clear();
        m_proxy->sendBytes(event.left(count));
        QTest::qWait(20); // the loop goes on
        QCOMPARE(m_listener->heard, QStringList());
        m_proxy->sendBytes(event.mid(count));
        QTRY_COMPARE(m_listener->heard, QStringList{"status 2 130"});
    }
    m_listener->heard.clear();
    m_proxy->sendBytes(event.left(1));
    QTest::qWait(5);
    m_proxy->sendBytes(event.mid(1, 1));
    QTest::qWait(5);
    m_proxy->sendBytes(event.mid(2, 1));
    QTest::qWait(5);
    m_proxy->sendBytes(event.mid(3) + event + event.left(2));
    QTRY_COMPARE(m_listener->heard, (QStringList{"status 2 130", "status 2 130"}));
    m_proxy->sendBytes(event.mid(2));
    QTRY_COMPARE(m_listener->heard.size(), 3);
}

void TestWMMSSession::dropsWhatMakesNoSense_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("event 8") << fromHex("08000000 00000000 00000000");
    QTest::newRow("event 255") << fromHex("FF000000");
    QTest::newRow("event 65537") << fromHex("01000100 00000000");
    QTest::newRow("the highest event") << fromHex("FFFFFF7F 00000000");
    QTest::newRow("length -2") << fromHex("01000000 FEFFFFFF") + QByteArray(100, 'x');
    QTest::newRow("the lowest length") << fromHex("05000000 00000080") + QByteArray(100, 'x');
    QTest::newRow("a length above 1 MiB") << fromHex("03000000 01001000") + QByteArray(100, 'x');
    QTest::newRow("the highest length") << fromHex("07000000 FFFFFF7F");
}

void TestWMMSSession::dropsWhatMakesNoSense()
{
    QFETCH(QByteArray, wire);
    open();
    const QSignalSpy closed(m_session.get(), &WMMSSession::connectionClosed);
    const QByteArray event = fromHex("05000000 00000000  02000000 82000000");
    m_proxy->sendBytes(event + wire + event);
    m_proxy->expectEnd();
    QTRY_COMPARE(m_listener->heard, QStringList{"status 2 130"}); // what came before counts
    QTest::qWait(20);
    QCOMPARE(m_listener->heard.size(), 1);
    QCOMPARE(closed.size(), 0);
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
    QCOMPARE(int(m_status), 0);
}

void TestWMMSSession::idsBelowOneAreSkipped()
{
    open();
    hear(fromHex("00000000 FFFFFFFF 00000080 05000000 00000000 02000000 82000000 00000000"),
         {"status 2 130"});
}

void TestWMMSSession::aLongEvent()
{
    open();
    // As much as fits a socket at once, with a URI that fills it.
    const QByteArray uri = units(QString(30000, 'u'));
    hear(word(1) + word(int(uri.size())) + word(1) + word(0) + word(int(uri.size())) + word(7)
             + uri,
         {"status 1 7"});
}

void TestWMMSSession::manyEvents()
{
    open();
    QStringList expected;
    QByteArray all;
    for (int n = 0; n < 2000; ++n) {
        all += word(5) + word(0) + word(n) + word(-n);
        expected.append(QString("status %1 %2").arg(n).arg(-n));
    }
    hear(all, expected);
}

void TestWMMSSession::closedInTheMiddle()
{
    open();
    const QSignalSpy closed(m_session.get(), &WMMSSession::connectionClosed);
    m_proxy->sendBytes(kEvents[2].wire + kEvents[0].wire.left(10));
    m_proxy->close();
    QTRY_COMPARE(m_listener->heard, QStringList{"status 3 5"});
    QTest::qWait(20);
    QCOMPARE(m_listener->heard.size(), 1);
    QCOMPARE(closed.size(), 0);
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
}

void TestWMMSSession::withoutAListener()
{
    open();
    const QString path = writeMailFile("m.mms", "for nobody");
    m_session = std::make_unique<WMMSSession>(m_status);
    ProxyClient client(m_proxy->server());
    m_proxy->expectEnd();
    LogCapture log;
    for (const EventRow &event : kEvents) {
        client.sendBytes(event.wire);
    }
    client.sendBytes(retrievalOf(path));
    QTRY_VERIFY(log.text().contains("uri is " + path + " \n"));
    QVERIFY(QFile::exists(path));
    QVERIFY(!log.text().contains("decode fail"));

    // Attaching null is no listener either.
    QVERIFY(m_session->setListener(nullptr, m_status));
    client.sendBytes(kEvents[0].wire + retrievalOf(path));
    QTest::qWait(20);
    QVERIFY(QFile::exists(path));
}

void TestWMMSSession::destructionWithEventsPosted()
{
    open();
    const QString path = writeMailFile("m.mms", "too late");
    QByteArray all;
    for (const EventRow &event : kEvents) {
        all += event.wire;
    }
    m_proxy->sendBytes(all + retrievalOf(path));
    // They are read and posted here, and never handled.
    QVERIFY(m_session->findChild<QWSSocket *>()->waitForReadyRead(1000));
    m_session.reset();
    QTest::qWait(20);
    QCOMPARE(m_listener->heard, QStringList());
    QVERIFY(QFile::exists(path));
}

void TestWMMSSession::closedByItsListener()
{
    const QString path = writeMailFile("m.mms", "the last");
    for (const QByteArray &event :
         {kEvents[0].wire, kEvents[2].wire, kEvents[4].wire, kEvents[5].wire, retrievalOf(path)}) {
        open();
        m_listener->then = [this] {
            WMFMSession::close(m_session.release());
        };
        m_proxy->sendBytes(event + event);
        QTRY_VERIFY(!m_session);
        QTest::qWait(10);
        QCOMPARE(m_listener->heard.size(), 1);
        cleanup();
    }
    QVERIFY(!QFile::exists(path));
}

// The daemon takes back what it finds when the connection ends.
void TestWMMSSession::closedWhileItIsToldAMessage()
{
    const QString first = writeMailFile("1.mms", "one");
    const QString second = writeMailFile("2.mms", "two");
    open();
    QList<bool> areThere;
    m_listener->then = [&] {
        if (m_listener->heard.size() == 1) {
            m_proxy->sendBytes(retrievalOf(second));
            QTRY_COMPARE(m_listener->heard.size(), 2);
        } else {
            WMFMSession::close(m_session.release());
        }
        areThere += QFile::exists(first);
        areThere += QFile::exists(second);
    };
    m_proxy->sendBytes(retrievalOf(first));
    QTRY_COMPARE(areThere, (QList<bool>{false, false, false, false}));
}

void TestWMMSSession::retrieves()
{
    open();
    const QString first = writeMailFile("1.mms", "one");
    const QString second = writeMailFile(QString::fromUtf8("zwei \xE2\x82\xAC"), "two");
    hear(retrievalOf(first) + retrievalOf(second), {"message one", "message two"});
    QVERIFY(!QFile::exists(first));
    QVERIFY(!QFile::exists(second));
}

void TestWMMSSession::retrievesWhatCannotBeDecoded_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("short") << QByteArray("1210");
    QTest::newRow("an unknown field") << QByteArray("12100000 00000000 00000000 00000000 FF");
    QTest::newRow("no file") << QByteArray();
}

void TestWMMSSession::retrievesWhatCannotBeDecoded()
{
    QFETCH(QByteArray, content);
    open();
    const QString path = m_folder->filePath("bad");
    if (!content.isNull()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(fromHex(content));
    }
    LogCapture log;
    hear(retrievalOf(path), {});
    QVERIFY(!QFile::exists(path));
    QCOMPARE(log.lines().last(), QString("get a MMS,decode fail!"));
    // A name that is none, and one that is a directory's.
    hear(retrievalOf(QString()) + retrievalOf(QString("a") + QChar(0)), {});
    hear(retrievalOf(m_folder->path()), {});
    QVERIFY(QFile::exists(m_folder->path()));
}

void TestWMMSSession::handlesItsOwnEventsAlone()
{
    open();
    MMS_UA_SvStsRetCmd record;
    record.setRequestId(4);
    record.setStatus(6);
    MMS_UA_SvNotiCmd notification;
    MMS_UA_SvDeliCmd report;
    QObject *object = m_session.get();
    // The record of somebody else's event stays his.
    QCustomEvent handled(1008, static_cast<MMS_UA_SvCmd *>(&record));
    QVERIFY(object->event(&handled));
    QCOMPARE(m_listener->heard, QStringList{"status 4 6"});
    QCustomEvent notified(1009, static_cast<MMS_UA_SvCmd *>(&notification));
    QVERIFY(!object->event(&notified));
    QCustomEvent reported(1010, static_cast<MMS_UA_SvCmd *>(&report));
    QVERIFY(!object->event(&reported));
    for (int type : {1000, 1003, 1011, 2000, 65535}) {
        QCustomEvent other(type, static_cast<MMS_UA_SvCmd *>(&record));
        QVERIFY2(!object->event(&other), QByteArray::number(type));
    }
    QCOMPARE(m_listener->heard.size(), 1);
}

void TestWMMSSession::aNullRecord_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("line");
    QTest::newRow("request completed")
        << 1004 << "WMMSSessionPrivate::procEvReqCompleted ev is null return!\n";
    QTest::newRow("registration completed")
        << 1005 << "WMMSSessionPrivate::procEvRegCompleted: ev is null return!\n";
    QTest::newRow("retrieval completed")
        << 1006 << "WMMSSessionPrivate::procEvRetrCompleted, ev is null return!\n";
    QTest::newRow("progress") << 1007 << "";
    QTest::newRow("status returned")
        << 1008 << "WMMSSessionPrivate::procEvStsRet: ev is null, return!\n";
}

void TestWMMSSession::aNullRecord()
{
    QFETCH(int, type);
    open();
    QObject *object = m_session.get();
    LogCapture log;
    QCustomEvent event(type, nullptr);
    QVERIFY(object->event(&event));
    QTEST(log.text(), "line");
    log.clear();
    QEvent bare{QEvent::Type(type)}; // an event that carries nothing
    QVERIFY(object->event(&bare));
    QTEST(log.text(), "line");
    QCOMPARE(m_listener->heard, QStringList());
}

void TestWMMSSession::eventsOfQtArrive()
{
    open();
    const QSignalSpy closed(m_session.get(), &WMMSSession::connectionClosed);
    // A queued slot, a timer, a child, and deleteLater.
    QMetaObject::invokeMethod(m_session.get(), "errorHandler", Qt::QueuedConnection, Q_ARG(int, 0));
    QCOMPARE(closed.size(), 0);
    QTRY_COMPARE(closed.size(), 1);
    bool isTimedOut = false;
    QTimer::singleShot(0, m_session.get(), [&isTimedOut] { isTimedOut = true; });
    QTRY_VERIFY(isTimedOut);
    QEvent metaCall(QEvent::DynamicPropertyChange);
    QObject *object = m_session.get();
    QCOMPARE(object->event(&metaCall), QObject().event(&metaCall));
    const QPointer<QObject> alive(m_session.release());
    alive->deleteLater();
    QTRY_VERIFY(!alive);
}

void TestWMMSSession::eventNumbersAreReserved()
{
    open();
    for (int type = 1004; type <= 1010; ++type) {
        QVERIFY2(QEvent::registerEventType(type) != type, QByteArray::number(type));
    }
}

void TestWMMSSession::errorsAreTold()
{
    open();
    const QSignalSpy closed(m_session.get(), &WMMSSession::connectionClosed);
    m_session->errorHandler(7);
    QCOMPARE(closed.size(), 1);
    m_session->closeClient();
    QCOMPARE(closed.size(), 1);
    // Neither keeps a session whose connection stands from working.
    QCOMPARE(m_session->registerAppID("a", m_status), 0);
    m_proxy->expect("02000000 02000000  00000000 02000000  6100");
    m_session->readData(); // nothing is there
    QCOMPARE(m_listener->heard, QStringList());
}

void TestWMMSSession::sends()
{
    open();
    WMMSMsg message = messageWith("hello");
    const unsigned char pduType = message.getPDUType();
    LogCapture log;
    QCOMPARE(m_session->send(&message, m_status), 0);
    QCOMPARE(int(m_status), 0);
    QCOMPARE(log.lines().first(),
             QString("============== the input msg to be send ================="));
    QVERIFY(log.lines().size() > 1); // and the message
    QVERIFY(!log.text().contains("fail"));
    const QString path = m_proxy->takeSent(0);
    QVERIFY2(QRegularExpression("^/tmp/t[0-9]{5}\\.txt$").match(path).hasMatch(), qPrintable(path));
    WMMSMsg sent;
    QCOMPARE(int(sent.construct(path, true)), 100);
    QCOMPARE(sent.getSubject(), QString("hello"));
    QVERIFY(!QFile::exists(path + ".tmp"));
    QVERIFY(QFile::remove(path));
    QCOMPARE(int(message.getPDUType()), int(pduType));

    QCOMPARE(m_session->send(&message, m_status), 1);
    const QString next = m_proxy->takeSent(1);
    QVERIFY(next != path);
    QVERIFY(QFile::remove(next));
    m_proxy->expectNothing();
}

void TestWMMSSession::sendsToAnyKindOfRecipient()
{
    open();
    for (int kind = 0; kind < 3; ++kind) {
        WMMSMsg message = messageWith("x");
        message.setTo(QValueList<WMFMEntry>());
        const WMFMEntry recipient(0, "ann@example.org");
        QVERIFY(kind == 0       ? message.setTo(recipient)
                    : kind == 1 ? message.setCc(recipient)
                                : message.setBcc(recipient));
        QCOMPARE(m_session->send(&message, m_status), kind);
        QCOMPARE(int(m_status), 0);
        QVERIFY(QFile::remove(m_proxy->takeSent(kind)));
    }
}

void TestWMMSSession::refusesToSend_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("null") << 127 << QStringList();
    QTest::newRow("a short message") << 127 << QStringList();
    QTest::newRow("an unknown class") << 127 << QStringList();
    QTest::newRow("no recipient") << 19 << QStringList{"no target address,send fail!"};
    QTest::newRow("neither recipient nor type")
        << 19 << QStringList{"no target address,send fail!"};
    QTest::newRow("no content type") << 19 << QStringList{"no contentType,send fail!"};
    QTest::newRow("half a content type") << 19 << QStringList{"no contentType,send fail!"};
}

void TestWMMSSession::refusesToSend()
{
    QFETCH(int, status);
    open();
    const QString name = QTest::currentDataTag();
    std::unique_ptr<WMFMMsg> message;
    if (name == "a short message" || name == "an unknown class") {
        message = std::make_unique<OtherMessage>(name == "an unknown class" ? WMFM::MSG_TYPE_MMS
                                                                            : WMFM::MSG_TYPE_SMS);
    } else if (name != "null") {
        auto mms = std::make_unique<WMMSMsg>();
        if (name.contains("content type")) {
            mms->setTo(WMFMEntry(1, "5"));
        }
        if (name != "no content type" && !name.startsWith("neither")) {
            WMMSContentType type;
            type.setMainType("text");
            type.setSubType(name == "half a content type" ? "" : "plain");
            mms->setContentType(type);
        }
        message = std::move(mms);
    }
    LogCapture log;
    QCOMPARE(m_session->send(message.get(), m_status), -1);
    QCOMPARE(int(m_status), status);
    QTEST(log.lines(), "lines");
    // No number was used up.
    QCOMPARE(m_session->registerAppID("", m_status), 0);
    m_proxy->expect("02000000 00000000  00000000 00000000");
    m_proxy->expectNothing();
}

void TestWMMSSession::aMessageThatCannotBeSaved()
{
    open();
    const QString path = nextName();
    WMMSMsg message = messageWith("later");
    message.setDate(QDateTime(QDate(2050, 1, 1), QTime(0, 0), Qt::UTC));
    LogCapture log;
    QCOMPARE(m_session->send(&message, m_status), -1);
    QCOMPARE(int(m_status), 19);
    QCOMPARE(log.lines().last(), QString("encode error,send fail!"));
    // The reservation is gone; what was written so far stays where it is.
    QVERIFY(!QFile::exists(path));
    QVERIFY(QFile::remove(path + ".tmp"));
    m_proxy->expectNothing();

    WMMSMsg good = messageWith("now");
    QCOMPARE(m_session->send(&good, m_status), 0);
    QVERIFY(QFile::remove(m_proxy->takeSent(0)));
}

void TestWMMSSession::namesThatAreTaken_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("a file") << ""
                            << "file" << true;
    QTest::newRow("a directory") << ""
                                 << "directory" << true;
    QTest::newRow("a link to a file") << ""
                                      << "link" << true;
    QTest::newRow("a link to nowhere") << ""
                                       << "link to nowhere" << true;
    QTest::newRow("a pipe") << ""
                            << "pipe" << true;
    QTest::newRow("a link in the way of saving") << ".tmp"
                                                 << "link" << true;
    QTest::newRow("a directory in the way of saving") << ".tmp"
                                                      << "directory" << true;
    QTest::newRow("a pipe in the way of saving") << ".tmp"
                                                 << "pipe" << true;
    QTest::newRow("a file of two names in the way") << ".tmp"
                                                    << "hard link" << true;
    QTest::newRow("what an earlier message left") << ".tmp"
                                                  << "file" << false;
}

void TestWMMSSession::namesThatAreTaken()
{
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    QFETCH(bool, isTaken);
    open();
    const QString other = m_folder->filePath("precious");
    const auto write = [](const QString &path) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write("precious"), 8);
    };
    write(other);
    const QString name = nextName();
    const QString taken = name + suffix;
    const QByteArray path = QFile::encodeName(taken);
    QVERIFY2(!QFileInfo(taken).isSymLink() && !QFile::exists(taken), path);
    if (kind == "file") {
        write(taken);
    } else if (kind == "directory") {
        QCOMPARE(mkdir(path, 0700), 0);
    } else if (kind == "link") {
        QCOMPARE(symlink(QFile::encodeName(other), path), 0);
    } else if (kind == "link to nowhere") {
        QCOMPARE(symlink(QFile::encodeName(other + "-not"), path), 0);
    } else if (kind == "hard link") {
        QString near = name + ".wmsg-test"; // a second name is possible on the same disk alone
        write(near);
        QCOMPARE(::link(QFile::encodeName(near), path), 0);
    } else {
        QCOMPARE(mkfifo(path, 0600), 0);
    }

    WMMSMsg message = messageWith("safe");
    QCOMPARE(m_session->send(&message, m_status), 0);
    const QString sent = m_proxy->takeSent(0);
    QCOMPARE(sent == name, !isTaken);
    struct stat state;
    QCOMPARE(stat(QFile::encodeName(sent), &state), 0);
    QCOMPARE(state.st_mode & 07777,
             0600u); // nobody else reads it, also not where it was a leftover
    WMMSMsg read;
    QCOMPARE(int(read.construct(sent, true)), 100);
    QVERIFY(QFile::remove(sent));
    QFile precious(other);
    QVERIFY(precious.open(QIODevice::ReadOnly));
    QCOMPARE(precious.readAll(), QByteArray("precious"));
    QVERIFY(!QFile::exists(other + "-not"));
    // What was in the way is as it was, and no reservation stayed.
    QCOMPARE(lstat(path, &state) == 0, isTaken);
    QCOMPARE(QFile::exists(name), suffix.isEmpty() && kind != "link to nowhere");
    if (kind == "hard link" || (kind == "file" && isTaken)) {
        QCOMPARE(int(state.st_size), 8);
    }
    QFile::remove(name + ".wmsg-test");
    QVERIFY(!isTaken || ::remove(path) == 0);
}

void TestWMMSSession::twoProcessesDoNotShareNames()
{
    constexpr int count = 60;
    ProxyPeer proxy;
    ProxyClient second(proxy.server());
    ProxyClient *clients[] = {&proxy, &second};
    QProcess senders[2];
    for (int i = 0; i < 2; ++i) {
        senders[i].setProcessChannelMode(QProcess::ForwardedErrorChannel);
        senders[i].start(WMSG_PROXY_SENDER, {i == 0 ? "a" : "b", QString::number(count)});
        QVERIFY(senders[i].waitForReadyRead(30000));
        clients[i]->expectNothing(); // this client is the i-th
    }
    senders[0].write("\n");
    senders[1].write("\n");
    QStringList paths;
    for (int n = 0; n < count; ++n) {
        for (int i = 0; i < 2; ++i) {
            const QString path = clients[i]->takeSent(n);
            QVERIFY(!paths.contains(path));
            paths.append(path);
            WMMSMsg message;
            QCOMPARE(int(message.construct(path, true)), 100);
            QCOMPARE(message.getSubject(), QString("%1 %2").arg(i == 0 ? "a" : "b").arg(n));
        }
    }
    for (QProcess &sender : senders) {
        sender.write("\n");
        QVERIFY(sender.waitForFinished(30000));
        QCOMPARE(sender.exitCode(), 0);
    }
    for (const QString &path : std::as_const(paths)) {
        QVERIFY(QFile::remove(path));
    }
}

void TestWMMSSession::settings_data()
{
    QTest::addColumn<QByteArrayList>("pieces");
    QTest::addColumn<int>("moSize");
    QTest::addColumn<QString>("svrURI");
    const auto answer = [](int size, const QString &uri) {
        QByteArray bytes;
        QDataStream(&bytes, QIODevice::WriteOnly) << qint32(size) << uri;
        return bytes;
    };
    QTest::newRow("bytes") << QByteArrayList{fromHex("0004B000 00000004 00680069")} << 307200
                           << "hi";
    QTest::newRow("as Qt writes it")
        << QByteArrayList{answer(-1, "http://mmsc")} << -1 << "http://mmsc";
    QTest::newRow("a null text") << QByteArrayList{fromHex("00000001 FFFFFFFF")} << 1 << QString();
    QTest::newRow("an empty text") << QByteArrayList{fromHex("00000001 00000000")} << 1 << "";
    QTest::newRow("60 characters")
        << QByteArrayList{answer(5, QString(60, 'u'))} << 5 << QString(60, 'u');
    QTest::newRow("61 characters") << QByteArrayList{answer(5, QString(61, 'u'))} << 5 << QString();
    QTest::newRow("more than asked for")
        << QByteArrayList{answer(5, "a") + QByteArray(200, 'x')} << 5 << "a";
    // an answer that is cut short is taken
    QTest::newRow("nothing") << QByteArrayList{} << 0 << QString();
    QTest::newRow("half a number") << QByteArrayList{"\0\0"} << 0 << QString();
    QTest::newRow("no text") << QByteArrayList{fromHex("00000007")} << 7 << QString();
    QTest::newRow("in two pieces")
        << QByteArrayList{fromHex("00000007"), fromHex("00000002 0061")} << 7 << QString();
    QTest::newRow("an odd length")
        << QByteArrayList{fromHex("00000007 00000003 006100")} << 7 << QString();
    QTest::newRow("a hostile length")
        << QByteArrayList{fromHex("00000007 7FFFFFFE 0061")} << 7 << QString();
}

void TestWMMSSession::settings()
{
    QFETCH(QByteArrayList, pieces);
    QFETCH(int, moSize);
    QFETCH(QString, svrURI);
    open();
    SettingsPeer server(pieces);
    WMMSSession::MMS_Setting_Info info{99, "before"};
    LogCapture log;
    QVERIFY(m_session->getSetting(info));
    QCOMPARE(info.moSize, moSize);
    QCOMPARE(info.svrURI, svrURI);
    QCOMPARE(toHex(server.heard()), QByteArray());
    QCOMPARE(log.lines().last(), QString("===== get moSize:%1,svrURI:%2").arg(moSize).arg(svrURI));
    const int bytes = pieces.isEmpty() ? 0 : int(qMin<qsizetype>(pieces.first().size(), 128));
    if (bytes > 0) {
        QCOMPARE(log.lines().first(), QString("********** MMS data BEGIN **********\n"));
        QCOMPARE(log.lines().at(1), QString("The data length=%1\n").arg(bytes));
    }
    m_proxy->expectNothing();
}

void TestWMMSSession::noSettingsServer()
{
    open();
    WMMSSession::MMS_Setting_Info info{99, "before"};
    for (bool isStale : {false, true}) {
        std::unique_ptr<ListeningSocket> stale;
        if (isStale) {
            stale = std::make_unique<ListeningSocket>("/tmp/extra-mmserver");
            stale->stop();
        }
        LogCapture log;
        QVERIFY(!m_session->getSetting(info));
        QCOMPARE(info.moSize, 99);
        QCOMPARE(info.svrURI, QString("before"));
        QCOMPARE(log.lines(), QStringList{"ErrConnectionRefused"});
    }
}

QTEST_GUILESS_MAIN(TestWMMSSession)
#include "tst_wmmssession.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/proxy_socket.h"
#include "tests/support/local_peer.h"
#include "tests/support/other_user.h"

#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace wmsg::proxy;

namespace {

/// A command in words: its type, its request, and its text or its target.
QString told(const MMS_UA_Cmd &command)
{
    QString text = QString("%1 %2").arg(command.type()).arg(command.getRequestId());
    if (const auto *uri = dynamic_cast<const MMS_UA_UriCmd *>(&command)) {
        text += ' ' + uri->getUri();
    } else if (const auto *appId = dynamic_cast<const MMS_UA_AppIdCmd *>(&command)) {
        text += ' ' + appId->getAppId();
    } else if (const auto *target = dynamic_cast<const MMS_UA_TargetCmd *>(&command)) {
        text += QString(" of %1").arg(target->getTargetId());
    }
    return text;
}

std::unique_ptr<MMS_UA_SvCmd> status(qint32 request, qint32 number)
{
    auto event = std::make_unique<MMS_UA_SvStsRetCmd>();
    event->setRequestId(request);
    event->setStatus(number);
    return event;
}

std::unique_ptr<MMS_UA_SvCmd> retrieved(const QString &uri)
{
    auto event = std::make_unique<MMS_UA_SvRetrCompleteCmd>();
    event->setUri(uri);
    return event;
}

const char kAll[] = "01000000 04000000  00000000 04000000 00000000  61006200" // send "ab"
                    "02000000 02000000  01000000 02000000  6300" // register "c"
                    "03000000 00000000  02000000 00000000" // deregister ""
                    "04000000 02000000  03000000 02000000 00000000  6400" // retrieve "d"
                    "06000000 00000000  04000000 00000000" // abort
                    "07000000 00000000  05000000 01000000" // pause
                    "08000000 FFFFFFFF  06000000 02000000"; // resume; -1 is no text either

const QStringList kAllTold{"1 0 ab", "2 1 c", "3 2 ", "4 3 d", "6 4 of 0", "7 5 of 1", "8 6 of 2"};

} // namespace

class TestProxySocket : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_heard.clear();
        m_news.clear();
        start(0600);
    }
    void cleanup() { m_socket = nullptr; }

    void readsEveryCommand();
    void readsCommandsInAnyPieces_data();
    void readsCommandsInAnyPieces();
    void sessionsAreNumbered();
    void tellsOfTheEnd();
    void commandsOfASessionThatHasGoneAreTold();
    void whatIsNoCommandEndsTheSession_data();
    void whatIsNoCommandEndsTheSession();
    void theLongestTextIsRead();
    void lengthsThatDoNotFitAreCut();
    void writesEvents();
    void eventsToNobodyAreDropped();
    void eventsLeaveWhole();
    void aSessionThatDoesNotReadIsEnded();
    void aSessionThatIsEndedWhileItIsHeard();
    void moreSessionsAreRefused();
    void peersOfAnotherUserAreRefused();

private:
    QString path() const { return m_folder->filePath("socket"); }
    void start(mode_t mode);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ProxySocket> m_socket;
    QStringList m_heard;
    QStringList m_news;
};

void TestProxySocket::start(mode_t mode)
{
    m_socket = nullptr;
    m_socket = std::make_unique<ProxySocket>();
    connect(m_socket.get(), &ProxySocket::opened, this,
            [this](SessionId id) { m_news.append(QString("opened %1").arg(id)); });
    connect(m_socket.get(), &ProxySocket::closed, this,
            [this](SessionId id) { m_news.append(QString("closed %1").arg(id)); });
    connect(m_socket.get(), &ProxySocket::command, this,
            [this](SessionId, MMS_UA_Cmd &command) { m_heard.append(told(command)); });
    QCOMPARE(m_socket->listen(path(), mode), QString());
}

void TestProxySocket::readsEveryCommand()
{
    LocalPeer session(path());
    session.send(kAll);
    QTRY_COMPARE(m_heard, kAllTold);
}

void TestProxySocket::readsCommandsInAnyPieces_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 4, 5, 7, 11, 13, 17, 19, 23, 40}) {
        QTest::addRow("%d bytes", size) << size;
    }
}

void TestProxySocket::readsCommandsInAnyPieces()
{
    QFETCH(int, size);
    LocalPeer session(path());
    const QByteArray bytes = fromHex(kAll);
    for (qsizetype at = 0; at < bytes.size(); at += size) {
        QVERIFY(session.sendBytes(bytes.mid(at, size)));
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(m_heard, kAllTold);
}

void TestProxySocket::sessionsAreNumbered()
{
    const LocalPeer first(path());
    QTRY_COMPARE(m_news, QStringList{"opened 1"});
    const LocalPeer second(path());
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "opened 2"}));
    QCOMPARE(m_socket->userOf(1), ::geteuid());
    QCOMPARE(m_socket->userOf(3), uid_t(-1));
    QCOMPARE(m_socket->count(), size_t(2));
}

void TestProxySocket::tellsOfTheEnd()
{
    LocalPeer session(path());
    QTRY_COMPARE(m_news, QStringList{"opened 1"});
    session.close();
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "closed 1"}));
    QCOMPARE(m_socket->count(), size_t(0));
    m_socket->send(1, status(0, 0));
}

void TestProxySocket::commandsOfASessionThatHasGoneAreTold()
{
    {
        LocalPeer session(path());
        QVERIFY(session.sendBytes(fromHex(kAll) + fromHex("01000000 0400"))); // and half of one
    }
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "closed 1"}));
    QCOMPARE(m_heard, kAllTold);
}

void TestProxySocket::whatIsNoCommandEndsTheSession_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("why");
    const QString noCommand = "it sent what is no command";
    const QString noLength = "it sent a command of an impossible length";
    QTest::newRow("id 0") << fromHex("00000000") << noCommand;
    QTest::newRow("id 5") << fromHex("05000000") << noCommand;
    QTest::newRow("id 9") << fromHex("09000000 00000000") << noCommand;
    QTest::newRow("id -1") << fromHex("FFFFFFFF") << noCommand;
    QTest::newRow("text") << QByteArray("GET / HTTP/1.1\r\n\r\n") << noCommand;
    QTest::newRow("length -2") << fromHex("01000000 FEFFFFFF") << noLength;
    QTest::newRow("lowest length") << fromHex("02000000 00000080") << noLength;
    QTest::newRow("highest length") << fromHex("02000000 FFFFFF7F") << noLength;
    QTest::newRow("a byte too long") << fromHex("02000000 01000100") << noLength;
}

void TestProxySocket::whatIsNoCommandEndsTheSession()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, why);
    QTest::ignoreMessage(QtWarningMsg, qPrintable("session 1 is ended: " + why));
    LocalPeer session(path());
    session.send("06000000 00000000  00000000 00000000");
    (void)session.sendBytes(bytes + fromHex(kAll));
    session.expectEnd();
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "closed 1"}));
    QCOMPARE(m_heard, QStringList{"6 0 of 0"});
}

void TestProxySocket::theLongestTextIsRead()
{
    const qint32 size = ProxySession::kLongestText;
    LocalPeer session(path());
    QByteArray head = fromHex("01000000 00000100  00000000 00000100 00000000");
    QByteArray text;
    for (int i = 0; i < size / 2; ++i) {
        text += "x";
        text += '\0';
    }
    QVERIFY(session.sendBytes(head + text + fromHex("06000000 00000000  01000000 00000000")));
    QTRY_COMPARE(m_heard.size(), 2);
    QCOMPARE(m_heard.at(0), "1 0 " + QString(size / 2, 'x'));
    QCOMPARE(m_heard.at(1), QString("6 1 of 0"));
}

void TestProxySocket::lengthsThatDoNotFitAreCut()
{
    LocalPeer session(path());
    session.send("01000000 04000000  00000000 00000001 00000000  61006200"); // announces more
    session.send("01000000 04000000  01000000 03000000 00000000  61006200"); // an odd one
    session.send("01000000 04000000  02000000 FFFFFFFF 00000000  61006200"); // a negative one
    QTRY_COMPARE(m_heard, (QStringList{"1 0 ab", "1 1 a", "1 2 "}));
}

void TestProxySocket::writesEvents()
{
    LocalPeer session(path());
    LocalPeer other(path());
    QTRY_COMPARE(m_socket->count(), size_t(2));
    m_socket->send(1, status(3, 256));
    m_socket->send(2, retrieved("ab"));
    session.expect("05000000 00000000  03000000 00010000");
    other.expect("03000000 04000000  04000000  61006200");
}

void TestProxySocket::eventsToNobodyAreDropped()
{
    m_socket->send(1, status(0, 0));
    LocalPeer session(path());
    QTRY_COMPARE(m_socket->count(), size_t(1));
    m_socket->send(1, status(1, 1));
    session.expect("05000000 00000000  01000000 01000000");
}

// The buffer of the connection fills up. What leaves then is always a whole number of records.
void TestProxySocket::eventsLeaveWhole()
{
    LocalPeer session(path());
    QTRY_COMPARE(m_socket->count(), size_t(1));
    constexpr int kCount = 2000;
    constexpr int kUnits = 150;
    constexpr int kSize = 12 + 2 * kUnits;
    for (int i = 0; i < kCount; ++i) {
        m_socket->send(1, retrieved(QString("%1").arg(i, kUnits, 10, QChar('0'))));
    }
    const qsizetype first = session.waiting().size();
    QVERIFY2(first < kCount * kSize, "the connection has room for everything");
    QCOMPARE(first % kSize, qsizetype(0));
    for (int i = 0; i < kCount; ++i) {
        const QByteArray record = session.take(kSize);
        QCOMPARE(session.waiting().size() % kSize, qsizetype(0));
        const QString uri(reinterpret_cast<const QChar *>(record.constData() + 12), kUnits);
        QCOMPARE(uri.toInt(), i);
    }
    QCOMPARE(m_socket->count(), size_t(1));
}

void TestProxySocket::aSessionThatDoesNotReadIsEnded()
{
    LocalPeer session(path());
    QTRY_COMPARE(m_socket->count(), size_t(1));
    QTest::ignoreMessage(QtWarningMsg, "session 1 is ended: it does not read what it is told");
    const QString uri(2000, 'x');
    // The system takes some, the daemon keeps its bound, and not more.
    for (int i = 0; i < 1000; ++i) {
        m_socket->send(1, retrieved(uri));
    }
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "closed 1"}));
    const QByteArray got = session.takeAll();
    QVERIFY(got.size() < ProxySession::kMostWaiting);
    QCOMPARE(got.size() % 4012, 0);
}

void TestProxySocket::aSessionThatIsEndedWhileItIsHeard()
{
    connect(m_socket.get(), &ProxySocket::command, this, [this](SessionId id) {
        for (int i = 0; i < 400; ++i) {
            m_socket->send(id, retrieved(QString(4000, 'x')));
        }
    });
    QTest::ignoreMessage(QtWarningMsg, "session 1 is ended: it does not read what it is told");
    LocalPeer session(path());
    session.send(kAll);
    QTRY_COMPARE(m_news, (QStringList{"opened 1", "closed 1"}));
    QCOMPARE(m_heard, kAllTold.mid(0, 1));
}

void TestProxySocket::moreSessionsAreRefused()
{
    std::vector<std::unique_ptr<LocalPeer>> sessions;
    for (size_t i = 1; i <= ProxySocket::kMostSessions; ++i) {
        sessions.push_back(std::make_unique<LocalPeer>(path()));
        QTRY_COMPARE(m_socket->count(), i);
    }
    QTest::ignoreMessage(QtWarningMsg, "a session is refused: there are 256");
    LocalPeer(path()).expectEnd();
    sessions.pop_back();
    QTRY_COMPARE(m_socket->count(), ProxySocket::kMostSessions - 1);
    LocalPeer welcome(path());
    welcome.send("06000000 00000000  00000000 00000000");
    QTRY_COMPARE(m_heard, QStringList{"6 0 of 0"});
}

void TestProxySocket::peersOfAnotherUserAreRefused()
{
    if (!OtherUser::isPossible()) {
        QSKIP("only root can be somebody else");
    }
    QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
    start(0666);
    QTest::ignoreMessage(QtWarningMsg, "a peer of another user (65534) is refused");
    OtherUser other(path(), fromHex(kAll));
    QTRY_VERIFY(other.isOver());
    QCOMPARE(other.result(), int(OtherUser::HungUpOn));
    QCOMPARE(m_heard, QStringList());
    QCOMPARE(m_news, QStringList());
}

QTEST_GUILESS_MAIN(TestProxySocket)
#include "tst_proxy_socket.moc"

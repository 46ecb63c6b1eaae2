// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "qt2/qwssocket.h"

#include <QtNetwork/QLocalServer>
#include <QtTest/QtTest>

#include <cerrno>
#include <memory>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

/// Writes down what a socket tells, in order.
class Recorder : public QObject {
public:
    explicit Recorder(QWSSocket *socket)
    {
        connect(socket, &QWSSocket::connected, this, [this] { m_heard.append("connected"); });
        connect(socket, &QWSSocket::readyRead, this, [this] { m_heard.append("readyRead"); });
        connect(socket, &QWSSocket::connectionClosed, this, [this] { m_heard.append("closed"); });
        connect(socket, qOverload<int>(&QWSSocket::error), this,
                [this](int code) { m_heard.append(QString("error %1").arg(code)); });
    }

    QStringList m_heard;
};

/// The file of a socket on which nobody listens any more, or that is full: a socket without an
/// event loop.
class BareServer {
public:
    explicit BareServer(const QString &path, int backlog)
        : m_path(QFile::encodeName(path)), m_socket(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        const sockaddr_un address = addressOf(m_path);
        m_isGood = bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0
            && listen(m_socket, backlog) == 0;
    }
    ~BareServer()
    {
        for (int client : m_clients) {
            ::close(client);
        }
        stop();
    }

    bool isGood() const { return m_isGood; }

    /// Stops listening; the file stays.
    void stop()
    {
        if (m_socket >= 0) {
            ::close(std::exchange(m_socket, -1));
        }
    }

    /// Fills the backlog with clients and returns how many there was room for.
    int fill()
    {
        const sockaddr_un address = addressOf(m_path);
        for (;;) {
            const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
            m_clients.push_back(client);
            if (::connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address)
                != 0) {
                return errno == EAGAIN ? int(m_clients.size()) - 1 : -1;
            }
        }
    }

    /// Takes one waiting client and returns its descriptor.
    int take() { return accept(m_socket, nullptr, nullptr); }

private:
    static sockaddr_un addressOf(const QByteArray &path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        return address;
    }

    QByteArray m_path;
    int m_socket;
    bool m_isGood = false;
    std::vector<int> m_clients;
};

class TestQWSSocket : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void failsLater_data();
    void failsLater();
    void nothingIsToldWhenDestroyedBeforeTheFailure();
    void connectsAgainAfterAFailure();
    void forgetsTheFailureOfAnEarlierConnection();
    void refusesASecondConnection();
    void takesARelativePath();
    void knownByTheirOldNames();

    void exchangesBlocks();
    void readsWhatIsThere();
    void withoutAConnection();
    void keepsTheOrderOfBlocks();
    void writesMuchToASlowReader();

    void peerCloses();
    void peerClosesWithUnreadBytes();
    void peerClosesWithBytesPending();
    void peerClosesUnnoticed();
    void mayBeDeletedByItsReceiver();
    void closingOneselfRaisesNothing_data();
    void closingOneselfRaisesNothing();
    void connectsAgainAfterTheEnd();

    void keepsWhatIsWrittenWhileConnecting();
    void keepsTheOrderAcrossTheConnection();
    void keepsWhatIsWrittenWhileConnectingAgain();
    void dropsWhatWasKeptWhenTheConnectionFails();
    void dropsWhatWasKeptWhenAborted();

    void destructionTellsNothing_data();
    void destructionTellsNothing();

private:
    QString path(const QString &name = "socket") const { return m_folder->filePath(name); }
    void connectPair();
    void letIn(BareServer &server, int waiting, const QByteArray &expected);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QLocalServer> m_server;
    std::unique_ptr<QWSSocket> m_socket;
    std::unique_ptr<Recorder> m_recorder;
    QLocalSocket *m_peer = nullptr;
};

void TestQWSSocket::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_server = std::make_unique<QLocalServer>();
    m_socket = std::make_unique<QWSSocket>();
    m_recorder = std::make_unique<Recorder>(m_socket.get());
    m_peer = nullptr;
}

void TestQWSSocket::cleanup()
{
    m_socket.reset();
    m_recorder.reset();
    m_server.reset();
    m_folder.reset();
}

/// Connects the socket to the server and forgets what was told of it.
void TestQWSSocket::connectPair()
{
    if (!m_server->isListening()) {
        QVERIFY(m_server->listen(path()));
    }
    QVERIFY(m_socket->connectToLocalFile(path()));
    QTRY_VERIFY(m_server->hasPendingConnections());
    m_peer = m_server->nextPendingConnection();
    QCOMPARE(m_recorder->m_heard, QStringList{"connected"});
    m_recorder->m_heard.clear();
}

void TestQWSSocket::failsLater_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isStale");
    QTest::addColumn<bool>("isForbidden");
    QTest::addColumn<int>("code");
    QTest::newRow("no file") << "socket" << false << false << 2;
    QTest::newRow("no folder") << "none/socket" << false << false << 2;
    QTest::newRow("a path that is too long") << QString(200, 'x') << false << false << 2;
    QTest::newRow("nobody listens") << "socket" << true << false << 0;
    QTest::newRow("no permission") << "socket" << false << true << 3;
}

void TestQWSSocket::failsLater()
{
    QFETCH(QString, name);
    QFETCH(bool, isStale);
    QFETCH(bool, isForbidden);
    QFETCH(int, code);
    std::unique_ptr<BareServer> server;
    if (isStale || isForbidden) {
        server = std::make_unique<BareServer>(path(), 5);
        QVERIFY(server->isGood());
    }
    if (isStale) {
        server->stop();
    }
    const uid_t user = geteuid();
    if (isForbidden) {
        // Permissions do not bind root, so for a moment this is somebody else.
        QCOMPARE(chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
        QCOMPARE(chmod(QFile::encodeName(path()).constData(), 0), 0);
        QVERIFY(user != 0 || seteuid(65534) == 0);
    }
    const bool isConnecting = m_socket->connectToLocalFile(path(name));
    QCOMPARE(seteuid(user), 0);

    QVERIFY(!isConnecting);
    QCOMPARE(m_recorder->m_heard, QStringList());
    QCOMPARE(m_socket->writeBlock("x", 1), -1);
    QCOMPARE(m_socket->state(), QLocalSocket::UnconnectedState);
    QTRY_COMPARE(m_recorder->m_heard, QStringList{QString("error %1").arg(code)});
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard.size(), 1);
}

void TestQWSSocket::nothingIsToldWhenDestroyedBeforeTheFailure()
{
    QVERIFY(!m_socket->connectToLocalFile(path()));
    m_socket.reset();
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::connectsAgainAfterAFailure()
{
    QVERIFY(!m_socket->connectToLocalFile(path()));
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"error 2"});
    m_recorder->m_heard.clear();
    connectPair();
    QCOMPARE(m_socket->writeBlock("abc", 3), 3);
    QVERIFY(m_socket->flush());
    QTRY_COMPARE(m_peer->bytesAvailable(), 3);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::forgetsTheFailureOfAnEarlierConnection()
{
    QVERIFY(!m_socket->connectToLocalFile(path()));
    connectPair();
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::refusesASecondConnection()
{
    connectPair();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(".*"));
    QVERIFY(!m_socket->connectToLocalFile(path("other")));
    QCOMPARE(m_recorder->m_heard, QStringList());
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"error 19"});
    QCOMPARE(m_socket->state(), QLocalSocket::ConnectedState);
    QCOMPARE(m_socket->writeBlock("abc", 3), 3);
    QTRY_COMPARE(m_peer->bytesAvailable(), 3);
}

void TestQWSSocket::takesARelativePath()
{
    const QString before = QDir::currentPath();
    QVERIFY(m_server->listen(path()));
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const bool isConnecting = m_socket->connectToLocalFile("socket");
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(isConnecting);
    QTRY_VERIFY(m_server->hasPendingConnections());
}

void TestQWSSocket::knownByTheirOldNames()
{
    const QMetaObject *meta = m_socket->metaObject();
    QCOMPARE(meta->className(), "QWSSocket");
    QVERIFY(meta->indexOfSignal("error(int)") >= 0);
    QVERIFY(meta->indexOfSignal("connectionClosed()") >= 0);
    QVERIFY(meta->indexOfSignal("readyRead()") >= 0);
    QSignalSpy failures(m_socket.get(), SIGNAL(error(int)));
    QVERIFY(!m_socket->connectToLocalFile(path()));
    QTRY_COMPARE(failures.size(), 1);
    QCOMPARE(failures.first().first().toInt(), 2);
    QCOMPARE(m_socket->error(), QLocalSocket::ServerNotFoundError);
}

void TestQWSSocket::exchangesBlocks()
{
    connectPair();
    QCOMPARE(m_socket->writeBlock("ab\0c", 4), 4);
    QCOMPARE(m_socket->writeBlock("", 0), 0);
    QTRY_COMPARE(m_peer->bytesAvailable(), 4);
    QCOMPARE(m_peer->readAll(), QByteArray("ab\0c", 4));
    m_peer->write("reply");
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"readyRead"});
    char data[10];
    QCOMPARE(m_socket->readBlock(data, sizeof data), 5);
    QCOMPARE(QByteArray(data, 5), QByteArray("reply"));
}

void TestQWSSocket::readsWhatIsThere()
{
    connectPair();
    char data[10] = {};
    QCOMPARE(m_socket->readBlock(data, sizeof data), 0);
    m_peer->write("abcdef");
    QTRY_COMPARE(m_socket->bytesAvailable(), 6);
    QCOMPARE(m_socket->readBlock(data, 0), 0);
    QCOMPARE(m_socket->readBlock(data, 4), 4);
    QCOMPARE(m_socket->readBlock(data + 4, UINT_MAX), 2);
    QCOMPARE(QByteArray(data), QByteArray("abcdef"));
    QCOMPARE(m_socket->readBlock(data, sizeof data), 0);
}

void TestQWSSocket::withoutAConnection()
{
    char data[1];
    QCOMPARE(m_socket->readBlock(data, 1), -1);
    QCOMPARE(m_socket->writeBlock("x", 1), -1);
    QCOMPARE(m_socket->bytesToWrite(), 0);
    QVERIFY(!m_socket->flush());
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::keepsTheOrderOfBlocks()
{
    connectPair();
    QByteArray all;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray block = QByteArray::number(i) + ',';
        all += block;
        QCOMPARE(m_socket->writeBlock(block.constData(), uint(block.size())), int(block.size()));
        if (i % 100 == 0) {
            m_socket->flush();
        }
    }
    QTRY_COMPARE(m_peer->bytesAvailable(), all.size());
    QCOMPARE(m_peer->readAll(), all);
}

void TestQWSSocket::writesMuchToASlowReader()
{
    connectPair();
    QByteArray sent(3000000, Qt::Uninitialized);
    for (int i = 0; i < sent.size(); ++i) {
        sent[i] = char(i * 7 + i / 1000);
    }
    m_peer->setReadBufferSize(50000);
    QCOMPARE(m_socket->writeBlock(sent.constData(), uint(sent.size())), int(sent.size()));
    m_socket->flush();
    QVERIFY(m_socket->bytesToWrite() > 0);
    QByteArray received;
    QTRY_VERIFY_WITH_TIMEOUT((received += m_peer->readAll()).size() >= sent.size(), 60000);
    QVERIFY(received == sent);
    QTRY_COMPARE(m_socket->bytesToWrite(), 0);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::peerCloses()
{
    connectPair();
    m_peer->close();
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"closed"});
    QCOMPARE(m_socket->state(), QLocalSocket::UnconnectedState);
    QCOMPARE(m_socket->writeBlock("x", 1), -1);
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList{"closed"});
}

void TestQWSSocket::peerClosesWithUnreadBytes()
{
    connectPair();
    m_peer->write("last words");
    m_peer->close();
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"readyRead", "closed"}));
    char data[20];
    QCOMPARE(m_socket->readBlock(data, 4), 4);
    QCOMPARE(m_socket->readBlock(data + 4, sizeof data - 4), 6);
    QCOMPARE(QByteArray(data, 10), QByteArray("last words"));
    QVERIFY(m_socket->readBlock(data, 1) <= 0);
}

void TestQWSSocket::peerClosesWithBytesPending()
{
    connectPair();
    const QByteArray much(3000000, 'x');
    QCOMPARE(m_socket->writeBlock(much.constData(), uint(much.size())), int(much.size()));
    m_socket->flush();
    QVERIFY(m_socket->bytesToWrite() > 0);
    m_peer->abort();
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"closed"});
    QCOMPARE(m_socket->bytesToWrite(), 0);
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList{"closed"});
}

void TestQWSSocket::peerClosesUnnoticed()
{
    connectPair();
    m_peer->abort();
    QCOMPARE(m_socket->writeBlock("request", 7), 7);
    m_socket->flush();
    QCOMPARE(m_recorder->m_heard, QStringList()); // nothing is told from inside a call
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"closed"});
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList{"closed"});
}

void TestQWSSocket::mayBeDeletedByItsReceiver()
{
    // The receiver of connectionClosed() may delete the socket.
    connectPair();
    connect(m_socket.get(), &QWSSocket::connectionClosed, this, [this] { m_socket.reset(); });
    m_peer->close();
    QTRY_VERIFY(!m_socket);
    QCOMPARE(m_recorder->m_heard, QStringList{"closed"});
}

void TestQWSSocket::closingOneselfRaisesNothing_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("disconnectFromServer") << "disconnect";
    QTest::newRow("close") << "close";
    QTest::newRow("abort") << "abort";
}

void TestQWSSocket::closingOneselfRaisesNothing()
{
    QFETCH(QString, way);
    connectPair();
    if (way == "disconnect") {
        m_socket->disconnectFromServer();
    } else if (way == "close") {
        m_socket->close();
    } else {
        m_socket->abort();
    }
    QTRY_COMPARE(m_peer->state(), QLocalSocket::UnconnectedState);
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
    QCOMPARE(m_socket->state(), QLocalSocket::UnconnectedState);
}

void TestQWSSocket::connectsAgainAfterTheEnd()
{
    connectPair();
    m_peer->write("unread");
    m_peer->close();
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"readyRead", "closed"}));
    m_recorder->m_heard.clear();
    connectPair();
    QCOMPARE(m_socket->bytesAvailable(), 0);
    m_peer->write("new");
    QTRY_COMPARE(m_socket->bytesAvailable(), 3);
    QCOMPARE(m_socket->writeBlock("abc", 3), 3);
    QTRY_COMPARE(m_peer->bytesAvailable(), 3);
    m_peer->close();
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"readyRead", "closed"}));
}

/// Takes those that came before, and then the socket, from which just these bytes come.
void TestQWSSocket::letIn(BareServer &server, int waiting, const QByteArray &expected)
{
    for (int i = 0; i < waiting; ++i) {
        ::close(server.take());
    }
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"connected"});
    QTRY_COMPARE(m_socket->bytesToWrite(), 0);
    const int peer = server.take();
    char data[30];
    const auto size = ::read(peer, data, sizeof data);
    QCOMPARE(QByteArray(data, size), expected);
    ::close(peer);
}

void TestQWSSocket::keepsWhatIsWrittenWhileConnecting()
{
    BareServer server(path(), 2);
    QVERIFY(server.isGood());
    const int waiting = server.fill();
    QVERIFY(waiting > 0);
    QVERIFY(m_socket->connectToLocalFile(path()));
    QCOMPARE(m_socket->state(), QLocalSocket::ConnectingState);
    QCOMPARE(m_socket->writeBlock("one,", 4), 4);
    QCOMPARE(m_socket->writeBlock("two,", 4), 4);
    m_socket->flush();
    QCOMPARE(m_socket->bytesToWrite(), 8);
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
    QCOMPARE(m_socket->writeBlock("three", 5), 5);

    letIn(server, waiting, "one,two,three");
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"connected", "closed"}));
}

void TestQWSSocket::keepsTheOrderAcrossTheConnection()
{
    BareServer server(path(), 2);
    QVERIFY(server.isGood());
    const int waiting = server.fill();
    QVERIFY(waiting > 0);
    QVERIFY(m_socket->connectToLocalFile(path()));
    connect(m_socket.get(), &QWSSocket::stateChanged, this, [this](QLocalSocket::LocalSocketState) {
        if (m_socket->state() == QLocalSocket::ConnectedState) {
            QCOMPARE(m_socket->writeBlock("state,", 6), 6);
        }
    });
    connect(m_socket.get(), &QWSSocket::connected, this,
            [this] { QCOMPARE(m_socket->writeBlock("connected", 9), 9); });
    QCOMPARE(m_socket->writeBlock("kept,", 5), 5);
    letIn(server, waiting, "kept,state,connected");
}

void TestQWSSocket::keepsWhatIsWrittenWhileConnectingAgain()
{
    connectPair();
    m_peer->write("unread");
    m_peer->close();
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"readyRead", "closed"}));

    BareServer server(path("full"), 2);
    const int waiting = server.fill();
    QVERIFY(waiting > 0);
    QVERIFY(m_socket->connectToLocalFile(path("full")));
    QCOMPARE(m_socket->state(), QLocalSocket::ConnectingState);
    QCOMPARE(m_socket->bytesAvailable(), 0);
    QCOMPARE(m_socket->writeBlock("kept", 4), 4);
    QCOMPARE(m_socket->bytesToWrite(), 4);
    for (int i = 0; i < waiting; ++i) {
        ::close(server.take());
    }
    QTRY_COMPARE(m_recorder->m_heard, (QStringList{"readyRead", "closed", "connected"}));
    QTRY_COMPARE(m_socket->bytesToWrite(), 0);
    const int peer = server.take();
    char data[10];
    QCOMPARE(int(::read(peer, data, sizeof data)), 4);
    ::close(peer);
}

void TestQWSSocket::dropsWhatWasKeptWhenTheConnectionFails()
{
    auto server = std::make_unique<BareServer>(path(), 2);
    QVERIFY(server->fill() > 0);
    QVERIFY(m_socket->connectToLocalFile(path()));
    QCOMPARE(m_socket->writeBlock("lost", 4), 4);
    server.reset();
    QTRY_COMPARE(m_recorder->m_heard, QStringList{"error 0"});
    QCOMPARE(m_socket->bytesToWrite(), 0);

    QVERIFY(QFile::remove(path()));
    m_recorder->m_heard.clear();
    connectPair();
    QCOMPARE(m_socket->writeBlock("new", 3), 3);
    QTRY_VERIFY(m_peer->bytesAvailable() > 0);
    QCOMPARE(m_peer->readAll(), QByteArray("new"));
}

void TestQWSSocket::dropsWhatWasKeptWhenAborted()
{
    BareServer server(path(), 2);
    QVERIFY(server.fill() > 0);
    QVERIFY(m_socket->connectToLocalFile(path()));
    QCOMPARE(m_socket->writeBlock("lost", 4), 4);
    m_socket->abort();
    QCOMPARE(m_socket->bytesToWrite(), 0);
    QCOMPARE(m_socket->writeBlock("x", 1), -1);
    QTest::qWait(20);
    QCOMPARE(m_recorder->m_heard, QStringList());
}

void TestQWSSocket::destructionTellsNothing_data()
{
    QTest::addColumn<QString>("when");
    QTest::newRow("connected") << "connected";
    QTest::newRow("connected, with bytes unread") << "unread";
    QTest::newRow("connected, with bytes pending") << "pending";
    QTest::newRow("after the peer has gone") << "gone";
    QTest::newRow("connecting") << "connecting";
}

void TestQWSSocket::destructionTellsNothing()
{
    QFETCH(QString, when);
    std::unique_ptr<BareServer> full;
    const QByteArray much(1000000, 'x');
    if (when == "connecting") {
        full = std::make_unique<BareServer>(path(), 2);
        QVERIFY(full->fill() > 0);
        QVERIFY(m_socket->connectToLocalFile(path()));
        QCOMPARE(m_socket->state(), QLocalSocket::ConnectingState);
    } else {
        connectPair();
    }
    if (when == "unread") {
        m_peer->write("abc");
        QTRY_COMPARE(m_socket->bytesAvailable(), 3);
    } else if (when == "pending") {
        QCOMPARE(m_socket->writeBlock(much.constData(), uint(much.size())), int(much.size()));
    } else if (when == "gone") {
        m_peer->abort();
    }
    m_recorder->m_heard.clear();
    QStringList told;
    QWSSocket *socket = m_socket.get();
    connect(socket, &QWSSocket::stateChanged, this, [&] { told.append("stateChanged"); });
    connect(socket, &QWSSocket::disconnected, this, [&] { told.append("disconnected"); });
    connect(socket, &QWSSocket::errorOccurred, this, [&] { told.append("errorOccurred"); });
    connect(socket, &QWSSocket::aboutToClose, this, [&] { told.append("aboutToClose"); });
    connect(socket, &QWSSocket::readChannelFinished, this, [&] { told.append("finished"); });
    connect(socket, &QWSSocket::destroyed, this, [&] { told.append("destroyed"); });
    m_socket.reset();
    QTest::qWait(20);
    QCOMPARE(told, QStringList{"destroyed"});
    QCOMPARE(m_recorder->m_heard, QStringList());
}

QTEST_GUILESS_MAIN(TestQWSSocket)
#include "tst_qwssocket.moc"

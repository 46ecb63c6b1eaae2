// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/local_listener.h"
#include "tests/support/local_peer.h"
#include "tests/support/other_user.h"

#include <QtTest/QtTest>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace wmsg::service;

namespace {

/// Takes what a listener hands over.
class Guests {
public:
    explicit Guests(LocalListener &listener)
    {
        QObject::connect(&listener, &LocalListener::connected,
                         [this](qintptr descriptor) { m_guests.emplace_back(int(descriptor)); });
    }
    size_t count() const { return m_guests.size(); }
    Descriptor &last() { return m_guests.back(); }

private:
    std::vector<Descriptor> m_guests;
};

mode_t modeOf(const QString &path)
{
    struct stat state = {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0 ? state.st_mode & 07777 : 0;
}

/// Leaves a socket file on which nobody answers.
void leaveStaleSocket(const QString &path, int type = SOCK_STREAM)
{
    const LocalAddress address(path);
    const Descriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
    QCOMPARE(::bind(socket.get(), address.get(), address.size()), 0);
}

} // namespace

class TestLocalListener : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("socket");
    }

    void handsOverPeers()
    {
        LocalListener listener;
        Guests guests(listener);
        QCOMPARE(listener.listen(m_path), QString());
        QVERIFY(listener.isListening());
        QCOMPARE(listener.path(), m_path);
        LocalPeer first(m_path);
        LocalPeer second(m_path);
        QTRY_COMPARE(guests.count(), size_t(2));
        QVERIFY(writeAll(guests.last().get(), "hi"));
        second.expect("68 69");
    }

    void theModeIsExact_data()
    {
        QTest::addColumn<uint>("mode");
        QTest::newRow("default") << 0600u;
        QTest::newRow("a group") << 0660u;
        QTest::newRow("all, against the mask") << 0666u;
        QTest::newRow("nobody") << 0u;
    }
    void theModeIsExact()
    {
        QFETCH(uint, mode);
        const mode_t before = ::umask(027);
        LocalListener listener;
        QCOMPARE(listener.listen(m_path, mode), QString());
        QCOMPARE(::umask(before), mode_t(027));
        QCOMPARE(modeOf(m_path), mode_t(mode));
    }

    void removesItsFile()
    {
        {
            LocalListener listener;
            QCOMPARE(listener.listen(m_path), QString());
            QVERIFY(QFile::exists(m_path));
        }
        QVERIFY(!QFile::exists(m_path));
    }

    void leavesTheFileOfASuccessor()
    {
        LocalListener listener;
        QCOMPARE(listener.listen(m_path), QString());
        QVERIFY(QFile::remove(m_path));
        LocalListener successor;
        QCOMPARE(successor.listen(m_path), QString());
        listener.close();
        QVERIFY(QFile::exists(m_path));
        QVERIFY(LocalPeer(m_path).isConnected());
    }

    void replacesAStaleSocket()
    {
        leaveStaleSocket(m_path);
        LocalListener listener;
        QCOMPARE(listener.listen(m_path), QString());
        QVERIFY(LocalPeer(m_path).isConnected());
    }

    void aPathInUseIsRefused()
    {
        LocalListener listener;
        QCOMPARE(listener.listen(m_path), QString());
        LocalListener other;
        QCOMPARE(other.listen(m_path), m_path + " is in use");
        QVERIFY(!other.isListening());
        QVERIFY(LocalPeer(m_path).isConnected());
    }

    void aPathInUseByABusyServerIsRefused()
    {
        const LocalAddress address(m_path);
        const Descriptor server(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        QCOMPARE(::bind(server.get(), address.get(), address.size()), 0);
        QCOMPARE(::listen(server.get(), 0), 0);
        const LocalPeer waiting(m_path); // fills the queue
        QVERIFY(waiting.isConnected());
        LocalListener listener;
        QCOMPARE(listener.listen(m_path), m_path + " is in use");
    }

    void whatIsNoSocketIsLeftAlone()
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        LocalListener listener;
        QCOMPARE(listener.listen(m_path), m_path + " is there and is no socket");
        QVERIFY(QFile::exists(m_path));
        const QString link = m_folder->filePath("link");
        leaveStaleSocket(m_folder->filePath("stale"));
        QVERIFY(QFile::link(m_folder->filePath("stale"), link));
        QCOMPARE(listener.listen(link), link + " is there and is no socket");
    }

    void aSocketOfAnotherKindIsLeftAlone()
    {
        const LocalAddress address(m_path);
        const Descriptor datagrams(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        QCOMPARE(::bind(datagrams.get(), address.get(), address.size()), 0);
        LocalListener listener;
        QVERIFY(listener.listen(m_path).startsWith(m_path + " is there and cannot be replaced"));
        QVERIFY(QFile::exists(m_path));
    }

    void impossiblePathsAreRefused_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("relative") << "socket";
        QTest::newRow("empty") << "";
        QTest::newRow("too long") << "/tmp/" + QString(103, 'x');
        QTest::newRow("a NUL inside") << QString::fromLatin1(QByteArray("/tmp/a\0b", 8));
    }
    void impossiblePathsAreRefused()
    {
        QFETCH(QString, path);
        LocalListener listener;
        QVERIFY(listener.listen(path).endsWith("it must be absolute and have at most 107 bytes"));
    }

    void theLongestPathIsFine()
    {
        const QString path = m_folder->path() + '/' + QString(106 - m_folder->path().size(), 'x');
        QCOMPARE(path.size(), 107);
        LocalListener listener;
        QCOMPARE(listener.listen(path), QString());
        QVERIFY(LocalPeer(path).isConnected());
    }

    void aMissingFolderIsTold()
    {
        LocalListener listener;
        const QString path = m_folder->filePath("gone/socket");
        QCOMPARE(listener.listen(path), path + ": No such file or directory");
    }

    void peersOfAnotherUserAreRefused()
    {
        if (!OtherUser::isPossible()) {
            QSKIP("only root can be somebody else");
        }
        QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
        LocalListener listener;
        Guests guests(listener);
        QCOMPARE(listener.listen(m_path, 0600), QString());
        OtherUser keptOut(m_path);
        QTRY_VERIFY(keptOut.isOver());
        QCOMPARE(keptOut.result(), int(OtherUser::Refused));
        // Where the mode lets them in, they are shown out.
        QCOMPARE(listener.listen(m_path, 0666), QString());
        QTest::ignoreMessage(QtWarningMsg, "a peer of another user (65534) is refused");
        OtherUser shownOut(m_path);
        QTRY_VERIFY(shownOut.isOver());
        QCOMPARE(shownOut.result(), int(OtherUser::HungUpOn));
        QCOMPARE(guests.count(), size_t(0));
    }

    void takesPeersAgainWhenFilesCanBeOpenedAgain()
    {
        LocalListener listener;
        Guests guests(listener);
        QCOMPARE(listener.listen(m_path), QString());
        LocalPeer peer(m_path);
        rlimit before = {};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
        const rlimit none = {rlim_t(peer.descriptor()), before.rlim_max};
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
        QTest::ignoreMessage(QtWarningMsg,
                             qPrintable(m_path
                                        + ": nobody can be taken for a moment: Too many open "
                                          "files"));
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
        QTRY_COMPARE(guests.count(), size_t(1));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestLocalListener)
#include "tst_local_listener.moc"

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/wmmssession.h"
#include "platform/applog/applog.h"
#include "tests/mms/session/message_with.h"
#include "tests/support/log_capture.h"
#include "tests/support/proxy_peer.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <cstdarg>
#include <new>

#include <fcntl.h>
#include <sys/syscall.h>

// What happens when the system refuses: no memory, no file. Both are refused by this program.

static bool s_hasMemory = true;

Q_DECL_EXPORT Q_NEVER_INLINE void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return s_hasMemory ? ::operator new(size) : nullptr;
}

namespace {

/// What is done about a file that must not exist; 0: it is created.
int (*s_refusal)(const QByteArray &path) = nullptr;
QByteArrayList s_asked;

} // namespace

extern "C" Q_DECL_EXPORT int open(const char *path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (s_refusal && (flags & O_EXCL)) {
        s_asked.append(path);
        if (const int error = s_refusal(path)) {
            errno = error;
            return -1;
        }
    }
    return int(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

class TestRefusals : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { s_refusal = nullptr; }
    void withoutMemoryForTheSession();
    void noNameIsLeft();
    void theLastNameIsFound();
    void otherFailuresEndTheSearch_data();
    void otherFailuresEndTheSearch();

private:
    QTemporaryDir m_folder;
};

void TestRefusals::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    appLogModuleStream = appLogDiscardStream();
    qputenv("UVO_EXTRA_SYS_DATA_PATH", m_folder.path().toLocal8Bit());
    s_asked.clear();
}

void TestRefusals::withoutMemoryForTheSession()
{
    LogCapture log;
    WMFM::STATUS_T status = WMFM::STATUS_OK;
    s_hasMemory = false;
    WMFMSession *opened = WMFMSession::open(WMFM::MSG_TYPE_MMS, status);
    s_hasMemory = true;
    QCOMPARE(int(status), 127);
    QCOMPARE(log.lines(),
             QStringList{"WMMSSession::WMMSSession constructs a new WMMSSessionPrivate "
                         "failed, return fail status!"});
    // There is a session, and it fails in order.
    auto *session = dynamic_cast<WMMSSession *>(opened);
    QVERIFY(session);
    for (int id : {session->registerAppID("a", status), session->deRegisterAppID("a", status)}) {
        QCOMPARE(id, -1);
    }
    status = WMFM::STATUS_OK;
    WMMSMsg message = messageWith("x");
    QCOMPARE(session->send(&message, status), -1);
    QCOMPARE(int(status), 127);
    for (auto operation :
         {&WMMSSession::mmsAbort, &WMMSSession::mmsPause, &WMMSSession::mmsResume}) {
        status = WMFM::STATUS_OK;
        (session->*operation)(0, status);
        QCOMPARE(int(status), 127);
    }
    session->readData();
    session->closeClient();
    const QSignalSpy closed(session, &WMMSSession::connectionClosed);
    session->errorHandler(0);
    QCOMPARE(closed.size(), 1);
    QEvent event{QEvent::Type(1004)};
    QVERIFY(!static_cast<QObject *>(session)->event(&event));
    WMFMSession::close(session);
}

void TestRefusals::noNameIsLeft()
{
    ProxyPeer proxy;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    WMMSMsg message = messageWith("one too many");
    s_refusal = [](const QByteArray &) {
        return EEXIST;
    };
    LogCapture log;
    QCOMPARE(session.send(&message, status), -1);
    QCOMPARE(int(status), 15);
    QCOMPARE(log.lines().last(), QString("WMMSSession::send: message input is not correct\n"));
    // Each name was asked for once.
    QCOMPARE(s_asked.size(), 65536);
    const QSet<QByteArray> names(s_asked.cbegin(), s_asked.cend());
    QCOMPARE(names.size(), 65536);
    QVERIFY(names.contains("/tmp/t00000.txt"));
    QVERIFY(names.contains("/tmp/t65535.txt"));
    proxy.expectNothing();
}

void TestRefusals::theLastNameIsFound()
{
    ProxyPeer proxy;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    WMMSMsg message = messageWith("lucky");
    s_refusal = [](const QByteArray &) {
        return s_asked.size() < 65536 ? EEXIST : 0;
    };
    QCOMPARE(session.send(&message, status), 0);
    QCOMPARE(int(status), 0);
    const QString path = proxy.takeSent(0);
    QCOMPARE(path.toLatin1(), s_asked.at(65535));
    QVERIFY(QFile::remove(path));
}

void TestRefusals::otherFailuresEndTheSearch_data()
{
    QTest::addColumn<int>("refused"); // which of the two files
    QTest::newRow("the file itself") << 1;
    QTest::newRow("the file in its making") << 2;
}

void TestRefusals::otherFailuresEndTheSearch()
{
    QFETCH(int, refused);
    ProxyPeer proxy;
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMMSSession session(status);
    WMMSMsg message = messageWith("full");
    s_refusal = refused == 1
        ? [](const QByteArray &) { return ENOSPC; }
        : [](const QByteArray &path) { return path.endsWith(".tmp") ? ENOSPC : 0; };
    QCOMPARE(session.send(&message, status), -1);
    QCOMPARE(int(status), 15);
    QCOMPARE(s_asked.size(), refused);
    QVERIFY(!QFile::exists(s_asked.first()));
}

QTEST_GUILESS_MAIN(TestRefusals)
#include "tst_wmmssession_refusals.moc"

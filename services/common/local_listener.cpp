// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/local_listener.h"

#include "services/common/local_address.h"

#include <QtCore/QLoggingCategory>

#include <cerrno>
#include <chrono>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

Q_LOGGING_CATEGORY(kListener, "wmsg.listener", QtInfoMsg)

constexpr int kBacklog = 50;

/// How long nobody is taken when no more files can be opened.
constexpr std::chrono::seconds kRest(1);

Descriptor newSocket()
{
    return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

/// Makes room for a socket at the path; the problem, if that must not be.
QString clear(const QString &path, const LocalAddress &address)
{
    struct stat state = {};
    if (::lstat(address.path(), &state) != 0) {
        return errno == ENOENT ? QString() : path + u": "_s + systemError();
    }
    if (!S_ISSOCK(state.st_mode)) {
        return path + u" is there and is no socket"_s;
    }
    const Descriptor probe = newSocket();
    if (::connect(probe.get(), address.get(), address.size()) == 0 || errno == EAGAIN) {
        return path + u" is in use"_s;
    }
    if (errno != ECONNREFUSED || ::unlink(address.path()) != 0) {
        return path + u" is there and cannot be replaced: "_s + systemError();
    }
    return QString();
}

/// Binds with an exact mode: nobody can connect before listening begins, nor after it whom the mode
/// keeps out.
bool bindWithMode(int socket, const LocalAddress &address, mode_t mode)
{
    const mode_t before = ::umask(~mode & 0777);
    const bool isBound = ::bind(socket, address.get(), address.size()) == 0;
    const int error = errno;
    ::umask(before);
    errno = error;
    return isBound;
}

bool isOfThisUser(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        qCWarning(kListener, "a peer is refused: its user is not known");
        return false;
    }
    if (peer.uid != ::geteuid()) {
        qCWarning(kListener, "a peer of another user (%u) is refused", peer.uid);
        return false;
    }
    return true;
}

} // namespace

LocalListener::LocalListener(QObject *parent) : QObject(parent)
{
    m_rest.setSingleShot(true);
    connect(&m_rest, &QTimer::timeout, this, &LocalListener::goOn);
}

LocalListener::~LocalListener()
{
    close();
}

QString LocalListener::listen(const QString &path, mode_t mode)
{
    close();
    const LocalAddress address(path);
    if (!address.isPossible()) {
        return path
            + u" is no path for a socket: it must be absolute and have at most %1 bytes"_s.arg(
                kLongestPath);
    }
    QString problem = clear(path, address);
    if (!problem.isEmpty()) {
        return problem;
    }
    Descriptor socket = newSocket();
    struct stat state = {};
    if (!socket.isOpen() || !bindWithMode(socket.get(), address, mode)
        || ::listen(socket.get(), kBacklog) != 0 || ::lstat(address.path(), &state) != 0) {
        return path + u": "_s + systemError();
    }
    m_path = path;
    m_device = state.st_dev;
    m_inode = state.st_ino;
    m_socket = std::move(socket);
    m_notifier = std::make_unique<QSocketNotifier>(m_socket.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &LocalListener::takePeers);
    return QString();
}

void LocalListener::close()
{
    if (!m_socket.isOpen()) {
        return;
    }
    if (isOwnFile()) {
        ::unlink(LocalAddress(m_path).path());
    }
    m_rest.stop();
    m_notifier->setEnabled(false);
    m_notifier.release()->deleteLater(); // it may be the one that is calling
    m_socket.close();
}

bool LocalListener::isOwnFile() const
{
    struct stat state = {};
    return ::lstat(LocalAddress(m_path).path(), &state) == 0 && state.st_dev == m_device
        && state.st_ino == m_inode;
}

void LocalListener::takePeers()
{
    while (m_socket.isOpen()) {
        Descriptor peer(::accept4(m_socket.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (peer.isOpen()) {
            if (isOfThisUser(peer.get())) {
                Q_EMIT connected(peer.release());
            }
        } else if (errno == EAGAIN) {
            return;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            rest();
            return;
        }
    }
}

/// Who waits would be told of again and again, and could not be taken.
void LocalListener::rest()
{
    const QString error = systemError();
    qCWarning(kListener, "%s: nobody can be taken for a moment: %s", qPrintable(m_path),
              qPrintable(error));
    m_notifier->setEnabled(false);
    m_rest.start(kRest);
}

void LocalListener::goOn()
{
    if (m_notifier) {
        m_notifier->setEnabled(true);
    }
}

} // namespace wmsg::service

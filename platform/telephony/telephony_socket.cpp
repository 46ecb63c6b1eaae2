// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/telephony_socket_p.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace wmsg::telephony {

namespace {

/// Repeats a system call that a signal interrupted.
template <typename Call> auto again(const Call &call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

int millisecondsTo(QDeadlineTimer deadline)
{
    return static_cast<int>(std::clamp<qint64>(deadline.remainingTime(), 0, INT_MAX));
}

/// Lets connect() wait so long for room among the callers; not at all for an expired deadline.
void limitConnect(int descriptor, QDeadlineTimer deadline)
{
    const int milliseconds = millisecondsTo(deadline);
    if (milliseconds == 0) {
        fcntl(descriptor, F_SETFL, O_NONBLOCK);
        return;
    }
    timeval limit = {};
    limit.tv_sec = milliseconds / 1000;
    limit.tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000;
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

bool connectLocal(int descriptor, const QByteArray &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return false;
    }
    memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    return ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

} // namespace

QByteArray socketPath()
{
    const QByteArray named = qgetenv("WMSG_TELEPHONY_SOCKET");
    return named.isEmpty() ? QByteArrayLiteral("/tmp/wmsg-telephony") : named;
}

bool isSameUser(int descriptor)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && size == sizeof peer
        && peer.uid == geteuid();
}

bool DaemonSocket::connectTo(const QByteArray &path, QDeadlineTimer deadline)
{
    close();
    m_descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_descriptor < 0) {
        return false;
    }
    limitConnect(m_descriptor, deadline);
    if (!connectLocal(m_descriptor, path) || !isSameUser(m_descriptor)) {
        close();
        return false;
    }
    fcntl(m_descriptor, F_SETFL, O_NONBLOCK);
    return true;
}

void DaemonSocket::close()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
    m_descriptor = -1;
    m_unsent.clear();
}

bool DaemonSocket::receive(FrameReader &reader)
{
    char bytes[16384];
    for (;;) {
        const ssize_t count =
            again([&] { return ::recv(m_descriptor, bytes, sizeof bytes, MSG_DONTWAIT); });
        if (count <= 0) {
            return count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        }
        reader.append({bytes, count});
        if (count < static_cast<ssize_t>(sizeof bytes)) {
            return true; // the rest, and an end, make the socket ready again
        }
    }
}

void DaemonSocket::send(const QByteArray &bytes)
{
    if (isOpen()) {
        m_unsent.append(bytes);
        flush();
    }
}

void DaemonSocket::flush()
{
    qsizetype sent = 0;
    while (isOpen() && sent < m_unsent.size()) {
        const ssize_t count = again([&] {
            return ::send(m_descriptor, m_unsent.constData() + sent,
                          static_cast<size_t>(m_unsent.size() - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        });
        if (count <= 0) {
            break;
        }
        sent += count;
    }
    m_unsent.remove(0, sent);
}

bool DaemonSocket::wait(QDeadlineTimer deadline)
{
    while (isOpen() && !deadline.hasExpired()) {
        pollfd ready = {m_descriptor, static_cast<short>(unsent() > 0 ? POLLIN | POLLOUT : POLLIN),
                        0};
        if (::poll(&ready, 1, millisecondsTo(deadline)) > 0) {
            if (ready.revents != POLLOUT) {
                return true;
            }
            flush();
        }
    }
    return false;
}

} // namespace wmsg::telephony

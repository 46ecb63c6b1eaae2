// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/push_client.h"

#include "services/common/descriptor.h"
#include "services/common/local_address.h"
#include "services/common/push_records.h"

#include <QtCore/QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <sys/time.h>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

PushOutcome notReached(const QString &why)
{
    return {PushOutcome::NotReached, why};
}

QString noAnswer()
{
    return u"the daemon gave no answer in time"_s;
}

QString hungUp()
{
    return u"the daemon closed the connection"_s;
}

/// What is wrong with a PDU before it is sent.
QString problemOf(const QByteArray &pdu)
{
    return pdu.isEmpty() ? u"it is empty"_s
        : pdu.size() > kLongestPush
        ? u"it has %1 bytes, and %2 is the limit"_s.arg(pdu.size()).arg(kLongestPush)
        : QString();
}

/// Lets the next call on the socket wait until the deadline at most; false behind it.
bool limitNextCall(int socket, int option, const QDeadlineTimer &deadline)
{
    const qint64 left = deadline.remainingTime();
    if (left <= 0) {
        errno = EAGAIN;
        return false;
    }
    timeval time = {};
    time.tv_sec = static_cast<time_t>(left / 1000);
    time.tv_usec = static_cast<suseconds_t>(left % 1000 * 1000);
    return ::setsockopt(socket, SOL_SOCKET, option, &time, sizeof time) == 0;
}

bool connectTo(int socket, const LocalAddress &address, const QDeadlineTimer &deadline)
{
    int result = -1;
    do {
        result = limitNextCall(socket, SO_SNDTIMEO, deadline)
            ? ::connect(socket, address.get(), address.size())
            : -1;
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool sendAll(int socket, QByteArrayView bytes, const QDeadlineTimer &deadline)
{
    while (!bytes.isEmpty()) {
        if (!limitNextCall(socket, SO_SNDTIMEO, deadline)) {
            return false;
        }
        const ssize_t sent =
            ::send(socket, bytes.data(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(sent, 0));
    }
    return true;
}

PushOutcome receiveAnswer(int socket, const QDeadlineTimer &deadline)
{
    QByteArray bytes;
    for (;;) {
        if (const auto answer = readPushAnswer(bytes)) {
            return *answer;
        }
        char piece[4096];
        const ssize_t got = limitNextCall(socket, SO_RCVTIMEO, deadline)
            ? ::recv(socket, piece, sizeof piece, 0)
            : -1;
        if (got == 0) {
            return notReached(hungUp());
        }
        if (got < 0 && errno != EINTR) {
            return notReached(errno == EAGAIN ? noAnswer() : systemError());
        }
        bytes.append(piece, std::max<ssize_t>(got, 0));
    }
}

} // namespace

PushOutcome push(const QString &path, const QByteArray &pdu, std::chrono::milliseconds timeout)
{
    const QString problem = problemOf(pdu);
    if (!problem.isEmpty()) {
        return {PushOutcome::Refused, problem};
    }
    const LocalAddress address(path);
    if (!address.isPossible()) {
        return notReached(u"this is no path of a socket"_s);
    }
    const QDeadlineTimer deadline(timeout);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen() || !connectTo(socket.get(), address, deadline)) {
        return notReached(errno == EAGAIN ? noAnswer() : systemError());
    }
    // The daemon may answer, and hang up, before it has taken everything.
    const bool isSent = sendAll(socket.get(), pushRecord(pdu), deadline);
    if (!isSent && errno != EPIPE && errno != ECONNRESET) {
        return notReached(errno == EAGAIN ? noAnswer() : systemError());
    }
    return receiveAnswer(socket.get(), deadline);
}

PushRequest::PushRequest(const QString &path, const QByteArray &pdu,
                         std::chrono::milliseconds timeout, QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PushRequest::expire);
    m_refusal = problemOf(pdu);
    if (!m_refusal.isEmpty()) {
        m_timer.start(0);
        return;
    }
    m_record = pushRecord(pdu);
    connect(&m_socket, &QLocalSocket::connected, this, &PushRequest::write);
    connect(&m_socket, &QLocalSocket::readyRead, this, &PushRequest::read);
    // Failures are told from inside connectToServer().
    connect(&m_socket, &QLocalSocket::errorOccurred, this, &PushRequest::fail,
            Qt::QueuedConnection);
    m_timer.start(timeout);
    m_socket.connectToServer(path);
}

void PushRequest::write()
{
    m_socket.write(m_record);
}

void PushRequest::expire()
{
    end(m_refusal.isEmpty() ? notReached(noAnswer())
                            : PushOutcome{PushOutcome::Refused, m_refusal});
}

void PushRequest::fail()
{
    read();
    end(notReached(m_socket.error() == QLocalSocket::PeerClosedError ? hungUp()
                                                                     : m_socket.errorString()));
}

void PushRequest::read()
{
    m_answer += m_socket.isOpen() ? m_socket.readAll() : QByteArray();
    if (const auto answer = readPushAnswer(m_answer)) {
        end(*answer);
    }
}

void PushRequest::end(const PushOutcome &outcome)
{
    if (m_hasEnded) {
        return;
    }
    m_hasEnded = true;
    m_timer.stop();
    m_socket.disconnect(this);
    m_socket.abort();
    Q_EMIT finished(outcome);
}

} // namespace wmsg::service

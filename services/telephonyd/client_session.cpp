// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/client_session.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kSession, "wmsg.session", QtInfoMsg)

constexpr size_t kPiece = 16384;

bool mayComeLater(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

ClientSession::ClientSession(SessionId id, qintptr descriptor, QObject *parent)
    : QObject(parent), m_id(id), m_socket(static_cast<int>(descriptor)),
      m_reading(descriptor, QSocketNotifier::Read), m_writing(descriptor, QSocketNotifier::Write)
{
    m_hello.clientId.clear();
    m_writing.setEnabled(false);
    m_later.setSingleShot(true);
    m_later.setInterval(0);
    m_patience.setSingleShot(true);
    m_end.setSingleShot(true);
    m_end.setInterval(0);
    connect(&m_reading, &QSocketNotifier::activated, this, &ClientSession::read);
    connect(&m_writing, &QSocketNotifier::activated, this, &ClientSession::flush);
    connect(&m_end, &QTimer::timeout, this, &ClientSession::ended);
    connect(&m_later, &QTimer::timeout, this, &ClientSession::handle);
    connect(&m_patience, &QTimer::timeout, this, [this] { drop("it does not greet"); });
    m_patience.start(kPatience);
}

/// What is read of a client at a time is little: a frame that is not whole, and one piece.
void ClientSession::read()
{
    char bytes[kPiece];
    const ssize_t count = ::recv(m_socket.get(), bytes, sizeof bytes, MSG_DONTWAIT);
    if (count < 0 && mayComeLater(errno)) {
        return;
    }
    m_hasEnd = count <= 0;
    m_reader.append({bytes, std::max<ssize_t>(count, 0)});
    handle();
}

void ClientSession::handle()
{
    telephony::Frame frame;
    int left = kFramesAtATime;
    while (m_socket.isOpen() && left > 0 && m_reader.next(frame)) {
        take(frame);
        --left;
    }
    if (!m_socket.isOpen()) {
        return;
    }
    if (m_reader.isBroken()) {
        drop("it sent a frame of an impossible length");
    } else if (left == 0) {
        m_reading.setEnabled(false);
        m_later.start();
    } else if (m_hasEnd) {
        close();
    } else {
        m_reading.setEnabled(true);
    }
}

void ClientSession::take(const telephony::Frame &frame)
{
    if (m_hello.clientId.isEmpty()) {
        greet(frame);
    } else if (frame.type == telephony::RecordType::Hello) {
        drop("it greets again");
    } else {
        Q_EMIT received(frame);
    }
}

void ClientSession::greet(const telephony::Frame &frame)
{
    telephony::Hello hello;
    if (frame.type != telephony::RecordType::Hello
        || !telephony::fromPayload(frame.payload, hello)) {
        drop("it did not begin with a greeting");
        return;
    }
    if (hello.version != telephony::kVersion) {
        send(telephony::Refused());
        drop("it speaks another version");
        return;
    }
    m_patience.stop();
    m_hello = hello;
    Q_EMIT greeted();
}

void ClientSession::write(const QByteArray &bytes)
{
    if (!m_socket.isOpen() || m_isDeaf) {
        return;
    }
    m_unsent.append(bytes);
    flush();
    if (m_unsent.size() > kMostUnsent) {
        drop("it does not read what it is told");
    }
}

void ClientSession::flush()
{
    const bool wasBusy = isBusy();
    qsizetype done = 0;
    while (m_socket.isOpen() && done < m_unsent.size()) {
        const ssize_t count =
            ::send(m_socket.get(), m_unsent.constData() + done,
                   static_cast<size_t>(m_unsent.size() - done), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && !mayComeLater(errno)) {
            // It went; what it had sent is still there to be read, and so is the end.
            m_isDeaf = true;
            done = m_unsent.size();
        }
        if (count < 0) {
            break;
        }
        done += count;
    }
    m_unsent.remove(0, done);
    m_writing.setEnabled(!m_unsent.isEmpty());
    if (wasBusy && !isBusy() && m_socket.isOpen()) {
        Q_EMIT drained();
    }
}

void ClientSession::drop(const char *reason)
{
    if (m_socket.isOpen()) {
        qCWarning(kSession, "session %llu is ended: %s", m_id, reason);
        close();
    }
}

void ClientSession::close()
{
    if (!m_socket.isOpen()) {
        return;
    }
    m_reading.setEnabled(false);
    m_writing.setEnabled(false);
    m_later.stop();
    m_patience.stop();
    m_socket.close();
    m_end.start();
}

} // namespace wmsg::telephonyd

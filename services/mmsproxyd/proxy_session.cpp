// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/proxy_session.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <cstring>
#include <utility>

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kSession, "wmsg.session", QtInfoMsg)

constexpr uint kIdSize = sizeof(qint32);
constexpr qint64 kHeadSize = 2 * sizeof(qint32); // the id and the length of the variable part

qint64 sizeOf(const MMS_UA_SvCmd &event)
{
    return kHeadSize + event.dataLen() + std::max(event.extraLen(), 0);
}

} // namespace

ProxySession::ProxySession(SessionId id, qintptr descriptor, uid_t uid, QObject *parent)
    : QObject(parent), m_id(id), m_uid(uid)
{
    connect(&m_socket, &QLocalSocket::readyRead, this, &ProxySession::read);
    connect(&m_socket, &QLocalSocket::bytesWritten, this, &ProxySession::writeWaiting);
    // This signal may come from inside send().
    connect(&m_socket, &QLocalSocket::disconnected, this, &ProxySession::finish,
            Qt::QueuedConnection);
    m_socket.setSocketDescriptor(descriptor);
    // What is read of a command is out of the way before its text must fit.
    m_socket.setReadBufferSize(kLongestText);
}

ProxySession::~ProxySession()
{
    m_socket.disconnect(this);
}

void ProxySession::read()
{
    while (!m_isOver && readCommand()) { }
}

/// True when there was a whole command.
bool ProxySession::readCommand()
{
    if (!m_command) {
        char bytes[kIdSize];
        if (m_socket.bytesAvailable() < kIdSize || m_socket.readBlock(bytes, kIdSize) != kIdSize) {
            return false;
        }
        qint32 type = 0;
        memcpy(&type, bytes, kIdSize);
        m_command.reset(MMS_UA_Cmd::factory(type));
    }
    if (!m_command) {
        drop("it sent what is no command");
        return false;
    }
    const bool isWhole = m_command->read(&m_socket) == 1;
    if (m_command->isRefused() || m_command->extraLen() > kLongestText) {
        drop("it sent a command of an impossible length");
        return false;
    }
    if (isWhole) {
        const auto whole = std::move(m_command);
        Q_EMIT command(*whole);
    }
    return isWhole;
}

void ProxySession::send(std::unique_ptr<MMS_UA_SvCmd> event)
{
    if (m_isOver || m_socket.state() != QLocalSocket::ConnectedState) {
        return;
    }
    m_waitingBytes += sizeOf(*event);
    m_waiting.push_back(std::move(event));
    writeWaiting();
    if (m_waitingBytes > kMostWaiting) {
        drop("it does not read what it is told");
    }
}

void ProxySession::writeWaiting()
{
    while (!m_waiting.empty() && m_socket.bytesToWrite() == 0) {
        const auto event = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_waitingBytes -= sizeOf(*event);
        event->write(&m_socket);
    }
}

void ProxySession::drop(const char *reason)
{
    if (m_isOver) {
        return;
    }
    qCWarning(kSession, "session %llu is ended: %s", m_id, reason);
    m_isOver = true;
    m_waiting.clear();
    m_waitingBytes = 0;
    m_command.reset();
    m_socket.abort(); // and it is disconnected
}

void ProxySession::finish()
{
    read();
    m_isOver = true;
    Q_EMIT ended();
}

} // namespace wmsg::proxy

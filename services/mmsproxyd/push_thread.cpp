// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/push_thread.h"

#include "services/mmsproxyd/short_message_push.h"

#include <QtCore/QMetaObject>

#include <utility>

namespace wmsg::proxy {

PushThread::PushThread(Taker taker) : m_taker(std::move(taker))
{
    setObjectName(QStringLiteral("telephony"));
    connect(this, &PushThread::arrived, this, &PushThread::serve, Qt::QueuedConnection);
}

PushThread::~PushThread()
{
    endWaiting();
    quit();
    wait();
}

void PushThread::run()
{
    ShortMessagePush push([this](const QByteArray &body) { return handOver(body); });
    // From inside the loop, so that quit() is heard whenever it comes.
    QMetaObject::invokeMethod(&push, "start", Qt::QueuedConnection);
    exec();
}

bool PushThread::handOver(const QByteArray &body)
{
    std::unique_lock lock(m_mutex);
    m_body = body;
    m_isTaken.reset();
    Q_EMIT arrived();
    m_changed.wait(lock, [this] { return m_isOver || m_isTaken; });
    return m_isTaken.value_or(false);
}

/// In the thread that made this object.
void PushThread::serve()
{
    std::unique_lock lock(m_mutex);
    const QByteArray body = m_body;
    lock.unlock();
    const bool isTaken = m_taker(body);
    lock.lock();
    m_isTaken = isTaken;
    m_changed.notify_all();
}

void PushThread::endWaiting()
{
    const std::lock_guard guard(m_mutex);
    m_isOver = true;
    m_changed.notify_all();
}

} // namespace wmsg::proxy

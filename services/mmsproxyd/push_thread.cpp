// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/push_thread.h"

#include "services/mmsproxyd/short_message_push.h"

#include <QtCore/QMetaObject>
#include <QtCore/QTimer>

#include <memory>
#include <optional>
#include <utility>

namespace wmsg::proxy {

/// A body on its way to the taker. Both threads hold it, so that either may go first.
struct PushThread::Errand {
    QByteArray body;
    std::optional<bool> isTaken;
};

PushThread::PushThread(Taker taker) : m_taker(std::move(taker))
{
    setObjectName(QStringLiteral("telephony"));
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
    QTimer::singleShot(0, &push, &ShortMessagePush::start);
    exec();
}

bool PushThread::handOver(const QByteArray &body)
{
    const auto errand = std::make_shared<Errand>();
    errand->body = body;
    QMetaObject::invokeMethod(
        &m_home,
        [this, errand] {
            const bool isTaken = m_taker(errand->body);
            const std::lock_guard guard(m_mutex);
            errand->isTaken = isTaken;
            m_changed.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, &errand] { return m_isOver || errand->isTaken; });
    return errand->isTaken.value_or(false);
}

void PushThread::endWaiting()
{
    const std::lock_guard guard(m_mutex);
    m_isOver = true;
    m_changed.notify_all();
}

} // namespace wmsg::proxy

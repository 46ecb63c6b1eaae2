// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/push_socket_path.h"

#include <utility>

namespace wmsg::sim {

namespace {

constexpr int kMostAtATime = 8;
constexpr std::chrono::seconds kTimeout(10);

NotificationPath::Outcome outcomeOf(service::PushOutcome::Kind kind)
{
    switch (kind) {
    case service::PushOutcome::Taken:
        return NotificationPath::Outcome::Taken;
    case service::PushOutcome::Refused:
        return NotificationPath::Outcome::Refused;
    case service::PushOutcome::NotReached:
        break;
    }
    return NotificationPath::Outcome::NotReached;
}

} // namespace

PushSocketPath::PushSocketPath(QString socket, QObject *parent)
    : NotificationPath(parent), m_socket(std::move(socket))
{
}

void PushSocketPath::push(const QByteArray &pdu, QObject *receiver, Done done)
{
    m_waiting.enqueue({pdu, receiver, std::move(done)});
    startNext();
}

void PushSocketPath::startNext()
{
    while (m_running.size() < kMostAtATime && !m_waiting.isEmpty()) {
        const Waiting push = m_waiting.dequeue();
        if (push.receiver) {
            auto *request = new service::PushRequest(m_socket, push.pdu, kTimeout, this);
            connect(request, &service::PushRequest::finished, this, &PushSocketPath::finish);
            m_running.insert(request, push);
        }
    }
}

void PushSocketPath::finish(const service::PushOutcome &outcome)
{
    QObject *request = sender();
    const Waiting push = m_running.take(request);
    request->deleteLater();
    startNext();
    if (push.receiver) {
        push.done(outcomeOf(outcome.kind), outcome.reason);
    }
}

} // namespace wmsg::sim

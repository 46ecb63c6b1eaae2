// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/short_message_path.h"

#include "sim/mmsc/wap_push.h"

#include <QtCore/QDateTime>
#include <QtCore/QMetaObject>

#include <utility>

namespace wmsg::sim {

namespace {

constexpr std::chrono::seconds kTimeout(10);

NotificationPath::Outcome outcomeOf(ControlOutcome::Kind kind)
{
    switch (kind) {
    case ControlOutcome::Done:
        return NotificationPath::Outcome::Taken;
    case ControlOutcome::Refused:
        return NotificationPath::Outcome::Refused;
    case ControlOutcome::NotReached:
        break;
    }
    return NotificationPath::Outcome::NotReached;
}

} // namespace

ShortMessagePath::ShortMessagePath(QString controlSocket, QObject *parent)
    : NotificationPath(parent), m_controlSocket(std::move(controlSocket))
{
}

void ShortMessagePath::push(const QByteArray &pdu, QObject *receiver, Done done)
{
    m_waiting.enqueue({pdu, receiver, std::move(done)});
    startNext();
}

void ShortMessagePath::startNext()
{
    while (!m_isBusy && !m_waiting.isEmpty() && !m_waiting.head().receiver) {
        m_waiting.dequeue();
    }
    if (m_isBusy || m_waiting.isEmpty()) {
        return;
    }
    m_isBusy = true;
    const QByteArrayList commands = commandsFor(m_waiting.head().pdu);
    if (commands.isEmpty()) {
        QMetaObject::invokeMethod(this, "refuse", Qt::QueuedConnection);
        return;
    }
    auto *request = new ControlRequest(m_controlSocket, commands, kTimeout, this);
    connect(request, &ControlRequest::finished, request, &QObject::deleteLater);
    connect(request, &ControlRequest::finished, this, &ShortMessagePath::finish);
}

QByteArrayList ShortMessagePath::commandsFor(const QByteArray &pdu)
{
    ++m_transaction;
    QByteArrayList commands;
    const QByteArrayList messages =
        pushMessages(wapPush(pdu, m_transaction), m_transaction, QDateTime::currentDateTime());
    for (const QByteArray &message : messages) {
        commands.append(deliverCommand(message));
    }
    return commands;
}

void ShortMessagePath::refuse()
{
    finish({ControlOutcome::Refused, QStringLiteral("it does not fit 255 short messages")});
}

void ShortMessagePath::finish(const ControlOutcome &outcome)
{
    const Waiting push = m_waiting.dequeue();
    m_isBusy = false;
    startNext();
    if (push.receiver) {
        push.done(outcomeOf(outcome.kind), outcome.text);
    }
}

} // namespace wmsg::sim

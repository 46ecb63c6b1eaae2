// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/push_loop.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

using Outcome = NotificationPath::Outcome;

namespace {

Q_LOGGING_CATEGORY(logPush, "wmsg.sim.mmsc.push", QtInfoMsg)

constexpr qint64 kLongestTimer = 86400000; // a day

} // namespace

PushLoop::PushLoop(NotificationPath &path, FaultPlan &plan, Occasion occasion, const Pauses &pauses,
                   Content content)
    : m_path(path), m_plan(plan), m_occasion(occasion), m_pauses(pauses),
      m_content(std::move(content))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PushLoop::goOn);
}

void PushLoop::start(qint64 delay)
{
    const qint64 step = std::min(delay, kLongestTimer);
    m_left = delay - step;
    m_timer.start(static_cast<int>(step));
}

void PushLoop::goOn()
{
    if (m_left > 0) {
        start(m_left);
    } else {
        push();
    }
}

void PushLoop::push()
{
    const Faults faults = m_plan.next(m_occasion);
    if (faults.lost) {
        end(Outcome::Taken, u"lost, as the plan wants"_s);
        return;
    }
    if (faults.doubled) {
        send(false);
    }
    send(true);
}

void PushLoop::send(bool isLast)
{
    const QByteArray pdu = m_content();
    m_path.push(pdu, this, [this, pdu, isLast](Outcome outcome, const QString &reason) {
        if (outcome != Outcome::NotReached) {
            Q_EMIT heard(pdu);
        }
        if (isLast) {
            end(outcome, reason);
        }
    });
}

void PushLoop::end(Outcome outcome, const QString &reason)
{
    if (!reason.isEmpty()) {
        qCInfo(logPush, "a push: %s", qUtf8Printable(reason));
    }
    if (outcome == Outcome::NotReached) {
        m_timer.start(m_pauses.retry);
        return;
    }
    if (m_pauses.again > 0) {
        m_timer.start(m_pauses.again);
    }
    Q_EMIT pushed();
}

} // namespace wmsg::sim

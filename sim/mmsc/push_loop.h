// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/fault_plan.h"
#include "sim/mmsc/notification_path.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

namespace wmsg::sim {

/// Pushes one PDU to a phone until the phone has taken it, and, if it is to be answered, again and
/// again for as long as this object lives.
class PushLoop : public QObject {
    Q_OBJECT

public:
    /// All in milliseconds.
    struct Pauses {
        int retry = 0; ///< after the phone could not be reached
        int again = 0; ///< after it has taken the PDU and did not answer; 0: no answer is awaited
    };
    /// Gives the PDU as it is at the moment.
    using Content = std::function<QByteArray()>;

    /// `path` and `plan` outlive the loop. `occasion` is what the plan knows this push as.
    PushLoop(NotificationPath &path, FaultPlan &plan, Occasion occasion, const Pauses &pauses,
             Content content);

    /// Pushes for the first time after so many milliseconds, which may be more than a timer takes.
    void start(qint64 delay);

Q_SIGNALS:
    /// The phone was there, and heard `pdu`.
    void heard(const QByteArray &pdu);
    /// A push has come to an end: taken, refused, or lost on its way as the plan wanted.
    void pushed();

private:
    void goOn();
    void push();
    void send(bool isLast);
    void end(NotificationPath::Outcome outcome, const QString &reason);

    NotificationPath &m_path;
    FaultPlan &m_plan;
    Occasion m_occasion;
    Pauses m_pauses;
    Content m_content;
    QTimer m_timer;
    qint64 m_left = 0; // milliseconds to wait when the timer is over
};

} // namespace wmsg::sim

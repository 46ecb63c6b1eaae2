// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/notification_path.h"

#include <QtCore/QList>
#include <QtCore/QTimer>

/// A phone that is a list: it keeps what is pushed to it, and answers as it is told to.
class FakePath : public wmsg::sim::NotificationPath {
public:
    void push(const QByteArray &pdu, QObject *receiver, Done done) override
    {
        const Outcome outcome = next.isEmpty() ? Outcome::Taken : next.takeFirst();
        if (outcome != Outcome::NotReached) {
            pushed.append(pdu);
        }
        ++tries;
        QTimer::singleShot(0, receiver, [done, outcome] { done(outcome, "as told"); });
    }

    QList<Outcome> next; ///< What happens to the next pushes; then all are taken.
    QList<QByteArray> pushed;
    int tries = 0;
};

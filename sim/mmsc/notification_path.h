// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>

#include <functional>

namespace wmsg::sim {

/// A way by which PDUs that nobody asked for reach a subscriber's phone: notifications and delivery
/// reports.
class NotificationPath : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        Taken, ///< The phone has it for good.
        Refused, ///< The phone does not want it.
        NotReached
    };
    /// Takes the outcome of a push, and why it was not taken.
    using Done = std::function<void(Outcome outcome, const QString &reason)>;

    using QObject::QObject;

    /// push sends `pdu` on its way. `done` is called once, from the event loop, unless `receiver`
    /// is gone by then.
    virtual void push(const QByteArray &pdu, QObject *receiver, Done done) = 0;

protected:
    /// What push() was told.
    struct Waiting {
        QByteArray pdu;
        QPointer<QObject> receiver;
        Done done;
    };
};

} // namespace wmsg::sim

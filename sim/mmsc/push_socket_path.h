// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/push_client.h"
#include "sim/mmsc/notification_path.h"

#include <QtCore/QHash>
#include <QtCore/QQueue>

namespace wmsg::sim {

/// The way through the push socket of a proxy daemon on this machine. A few pushes are under way at
/// a time; others wait for their turn.
class PushSocketPath final : public NotificationPath {
    Q_OBJECT

public:
    explicit PushSocketPath(QString socket, QObject *parent = nullptr);

    void push(const QByteArray &pdu, QObject *receiver, Done done) override;

private:
    void startNext();
    void finish(const service::PushOutcome &outcome);

    QString m_socket;
    QQueue<Waiting> m_waiting;
    QHash<QObject *, Waiting> m_running; // by the request
};

} // namespace wmsg::sim

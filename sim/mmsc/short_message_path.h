// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/notification_path.h"
#include "sim/modem/control_client.h"

#include <QtCore/QQueue>

namespace wmsg::sim {

/// The way that a phone knows: as a push in short messages, through the modem simulator with this
/// control socket. A push is Taken when the modem's network has all of its messages: whether the
/// phone makes anything of it, nobody here learns. One push is under way at a time.
class ShortMessagePath final : public NotificationPath {
    Q_OBJECT

public:
    explicit ShortMessagePath(QString controlSocket, QObject *parent = nullptr);

    void push(const QByteArray &pdu, QObject *receiver, Done done) override;

private:
    void startNext();
    [[nodiscard]] QByteArrayList commandsFor(const QByteArray &pdu);
    Q_INVOKABLE void refuse();
    void finish(const wmsg::sim::ControlOutcome &outcome);

    QString m_controlSocket;
    QQueue<Waiting> m_waiting;
    bool m_isBusy = false;
    quint8 m_transaction = 0;
};

} // namespace wmsg::sim

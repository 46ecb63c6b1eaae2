// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_listener.h"
#include "sim/modem/modem.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtNetwork/QLocalSocket>

namespace wmsg::sim {

/// ControlSocket takes commands for the modem and its network, from programs of the same user.
class ControlSocket : public QObject {
    Q_OBJECT

public:
    /// `modem` outlives it.
    explicit ControlSocket(Modem &modem);

    /// listen returns what is in the way.
    [[nodiscard]] QString listen(const QString &path) { return m_listener.listen(path); }

    /// obey carries out a command and returns the answer, without the ends of their lines.
    QByteArray obey(const QByteArray &command);

private:
    void take(qintptr descriptor);
    void read(QLocalSocket *peer);

    Modem &m_modem;
    service::LocalListener m_listener;
};

} // namespace wmsg::sim

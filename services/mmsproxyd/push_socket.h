// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/local_listener.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>
#include <memory>
#include <vector>

namespace wmsg::proxy {

/// PushSocket takes PDUs that a network pushed to the phone; docs/formats/push-socket.md shows the
/// bytes. Each is answered when the taker has it, durably, or has refused it.
class PushSocket : public QObject {
    Q_OBJECT

public:
    /// Takes a PDU; the reason when it is refused, else an empty text.
    using Taker = std::function<QString(const QByteArray &pdu)>;

    /// How many pushers there may be at a time; more are closed at once.
    static constexpr size_t kMostPushers = 16;

    explicit PushSocket(Taker taker, QObject *parent = nullptr);
    ~PushSocket() override;

    /// listen begins to take PDUs; see LocalListener.
    [[nodiscard]] QString listen(const QString &path, mode_t mode);

private:
    class Pusher;

    void take(qintptr descriptor);
    void remove(const Pusher *pusher);

    Taker m_taker;
    service::LocalListener m_listener;
    std::vector<std::unique_ptr<Pusher>> m_pushers;
};

} // namespace wmsg::proxy

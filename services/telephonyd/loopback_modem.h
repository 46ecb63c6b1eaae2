// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/modem.h"

#include <QtCore/QByteArray>
#include <QtCore/QTimer>

#include <chrono>

namespace wmsg::telephonyd {

/// What the loopback back end is asked to do.
struct LoopbackSettings {
    std::chrono::milliseconds delay{0}; ///< between a message and its outcome
    std::chrono::milliseconds absence{0}; ///< how long there is no modem at first
    qint32 failure = 0; ///< the cause for which messages are refused; 0: none are
    int failures = 0; ///< how many are refused before the others are sent
};

/// LoopbackModem is a modem without a radio: every message comes back at once, whatever number it
/// was sent to, with that number as its sender. It keeps nothing: what it has not given back when
/// the daemon ends was not sent.
class LoopbackModem final : public Modem {
    Q_OBJECT

public:
    explicit LoopbackModem(const LoopbackSettings &settings, QObject *parent = nullptr);

    void start() override;
    void send(const OutgoingSms &message) override;
    void forget(const QByteArray &) override { }
    void setServiceCenter(const QByteArray &number) override;

private:
    void appear();
    void answer();
    Q_INVOKABLE void takeServiceCenter(const QByteArray &number);
    [[nodiscard]] SendOutcome outcome();
    [[nodiscard]] IncomingSms returned() const;

    LoopbackSettings m_settings;
    bool m_isThere = false;
    QByteArray m_serviceCenter;
    OutgoingSms m_message;
    quint8 m_reference = 0;
    QTimer m_timer;
    QTimer m_absence;
};

} // namespace wmsg::telephonyd

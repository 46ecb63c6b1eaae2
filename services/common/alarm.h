// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <chrono>

namespace wmsg::service {

/// Alarm rings once after a time that goes on while the device sleeps. A QTimer stands still
/// meanwhile: on a phone that sleeps for most of the day an hour of its time may take days. It does
/// not wake the device up; what became due while that slept is told when it wakes.
class Alarm : public QObject {
    Q_OBJECT

public:
    explicit Alarm(QObject *parent = nullptr);

    /// start sets the alarm, anew when it is set already.
    void start(std::chrono::milliseconds time);
    void stop();
    [[nodiscard]] bool isActive() const { return m_isActive; }

Q_SIGNALS:
    void rang();

private:
    void set(std::chrono::nanoseconds time);
    void ring();

    Descriptor m_timer;
    QSocketNotifier m_notifier;
    bool m_isActive = false;
};

} // namespace wmsg::service

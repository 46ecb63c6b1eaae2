// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/alarm.h"

#include <algorithm>
#include <sys/timerfd.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace wmsg::service {

Alarm::Alarm(QObject *parent)
    : QObject(parent), m_timer(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK)),
      m_notifier(m_timer.get(), QSocketNotifier::Read)
{
    if (!m_timer.isOpen()) {
        qFatal("Alarm: no timer: %s", qPrintable(systemError()));
    }
    connect(&m_notifier, &QSocketNotifier::activated, this, &Alarm::ring);
}

void Alarm::start(std::chrono::milliseconds time)
{
    m_isActive = true;
    set(std::max<std::chrono::nanoseconds>(time, 1ns)); // none at all would stop it
}

void Alarm::stop()
{
    m_isActive = false;
    set(0ns);
}

void Alarm::set(std::chrono::nanoseconds time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerspec value = {};
    value.it_value.tv_sec = seconds.count();
    value.it_value.tv_nsec = (time - seconds).count();
    if (::timerfd_settime(m_timer.get(), 0, &value, nullptr) != 0) {
        qFatal("Alarm: the timer cannot be set: %s", qPrintable(systemError()));
    }
}

void Alarm::ring()
{
    quint64 count = 0;
    // It may have been set anew since the loop saw that it is due.
    if (::read(m_timer.get(), &count, sizeof count) == sizeof count && m_isActive) {
        m_isActive = false;
        Q_EMIT rang();
    }
}

} // namespace wmsg::service

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/stop_signals.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace wmsg::service {

namespace {

// Where the handler writes the number of a signal; -1 for nowhere.
std::atomic<int> pipeEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses it");

extern "C" void handleSignal(int number)
{
    const int error = errno;
    const char byte = static_cast<char>(number);
    // A full pipe holds enough of them.
    (void)!::write(pipeEnd, &byte, 1);
    errno = error;
}

} // namespace

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        qFatal("StopSignals: no pipe: %s", qPrintable(systemError()));
    }
    m_reading = Descriptor(ends[0]);
    m_writing = Descriptor(ends[1]);
    pipeEnd = m_writing.get();
    m_notifier = std::make_unique<QSocketNotifier>(m_reading.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &StopSignals::take);
    struct sigaction action = {};
    action.sa_flags = SA_RESTART;
    struct sigaction *before = m_before;
    action.sa_handler = handleSignal;
    for (const int number : kCaught) {
        ::sigaction(number, &action, before++);
    }
    action.sa_handler = SIG_IGN;
    for (const int number : kIgnored) {
        ::sigaction(number, &action, before++);
    }
}

StopSignals::~StopSignals()
{
    const struct sigaction *before = m_before;
    for (const int number : kCaught) {
        ::sigaction(number, before++, nullptr);
    }
    for (const int number : kIgnored) {
        ::sigaction(number, before++, nullptr);
    }
    pipeEnd = -1;
}

void StopSignals::take()
{
    char byte = 0;
    while (::read(m_reading.get(), &byte, 1) == 1) {
        Q_EMIT stopped(byte);
    }
}

} // namespace wmsg::service

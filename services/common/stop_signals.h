// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QtGlobal>

#include <csignal>
#include <memory>

namespace wmsg::service {

/// StopSignals brings SIGTERM, SIGINT and SIGHUP to the event loop, for as long as it lives, and
/// ignores SIGPIPE and SIGXFSZ, so that writing to a peer that left, or to a file at its limit, is
/// an error and no death. Children of the program get the usual ways back when they begin, but for
/// the two that are ignored. There is one object at a time.
///
///     StopSignals stop;
///     QObject::connect(&stop, &StopSignals::stopped, &application, &QCoreApplication::quit);
class StopSignals : public QObject {
    Q_OBJECT

public:
    explicit StopSignals(QObject *parent = nullptr);
    ~StopSignals() override;

Q_SIGNALS:
    /// stopped tells that one of the signals came, again for each.
    void stopped(int number);

private:
    void take();

    static constexpr int kCaught[] = {SIGTERM, SIGINT, SIGHUP};
    static constexpr int kIgnored[] = {SIGPIPE, SIGXFSZ};
    static constexpr int kCount = std::size(kCaught) + std::size(kIgnored);

    Descriptor m_reading;
    Descriptor m_writing;
    std::unique_ptr<QSocketNotifier> m_notifier;
    struct sigaction m_before[kCount] = {};
};

} // namespace wmsg::service

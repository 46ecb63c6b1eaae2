// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/mmsc.h"
#include "sim/mmsc/notification_path.h"
#include "sim/mmsc/options.h"

#include <map>
#include <memory>

namespace wmsg::sim {

/// The whole simulator, put together from its options.
class Simulator {
public:
    explicit Simulator(Options options);
    ~Simulator();
    Q_DISABLE_COPY_MOVE(Simulator)

    /// Reads the plan. Returns what is wrong with it.
    [[nodiscard]] QString readFaults();
    /// Starts to listen. Returns what is in the way.
    [[nodiscard]] QString start();
    /// Where phones post to: "http://127.0.0.1:PORT/".
    [[nodiscard]] QString url() const;

    [[nodiscard]] const Deliveries &deliveries() const { return *m_deliveries; }

private:
    void addSubscribers();
    NotificationPath *pathBy(const QString &way);

    Options m_options;
    FaultPlan m_plan;
    PduLog m_log;
    std::map<QString, std::unique_ptr<NotificationPath>> m_paths; // by their ways
    Subscribers m_subscribers;
    std::unique_ptr<Deliveries> m_deliveries;
    std::unique_ptr<Mmsc> m_mmsc;
    std::unique_ptr<HttpServer> m_server;
};

} // namespace wmsg::sim

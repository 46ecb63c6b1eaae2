// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/gammu_backend.h"
#include "services/telephonyd/gammu_worker.h"

#include <QtCore/QThread>
#include <QtCore/QTimer>

namespace wmsg::telephonyd {

/// GammuModem is the modem at the end of a serial line, by way of libgammu in a thread. Messages
/// stay in the memories of the modem until they are forgotten.
class GammuModem final : public Modem {
    Q_OBJECT

public:
    explicit GammuModem(const GammuSettings &settings, QObject *parent = nullptr);
    /// The destructor waits for the thread, which may be in a call that ends soon.
    ~GammuModem() override;

    void start() override;
    void send(const OutgoingSms &message) override;
    void forget(const QByteArray &place) override;
    void setServiceCenter(const QByteArray &number) override;

Q_SIGNALS: // to the thread
    void startWanted();
    void sendWanted(const wmsg::telephonyd::OutgoingSms &message);
    void forgetWanted(const QByteArray &place);
    void serviceCenterWanted(const QByteArray &number);

private:
    QTimer m_watch; // while the thread is in a call, nobody else sees that the modem is gone
    QThread m_thread;
    GammuWorker *m_worker; // belongs to the thread, and goes at its end
};

} // namespace wmsg::telephonyd

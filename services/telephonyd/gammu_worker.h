// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/device_identity.h"
#include "services/telephonyd/gammu_backend.h"

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <gammu.h>

#include <atomic>
#include <chrono>
#include <memory>

namespace wmsg::telephonyd {

/// GammuWorker talks to a modem through libgammu, which blocks: 0.7 seconds for a message, 4 and
/// more to begin, minutes when a modem does not answer. It lives in a thread of its own with an
/// event loop; all but abort() and abortIfGone() is called there. What it tells is what Modem
/// tells.
///
/// libgammu has no descriptor to wait for, so the worker asks it 20 times a second whether
/// something came, as long as there is a modem.
class GammuWorker : public QObject {
    Q_OBJECT

public:
    explicit GammuWorker(GammuSettings settings);
    ~GammuWorker() override;

    /// abort ends a call that blocks, and lets no other begin. Any thread may call it.
    void abort();
    /// abortIfGone ends a call to a modem that was unplugged: libgammu would wait for minutes. Any
    /// thread may call it.
    void abortIfGone();

    void start();
    void send(const OutgoingSms &message);
    void forget(const QByteArray &place);
    void setServiceCenter(const QByteArray &number);

Q_SIGNALS:
    void stateChanged(TAPI_MODEM_E state, const QByteArray &serviceCenter);
    void sent(quint64 id, const wmsg::telephonyd::SendOutcome &outcome);
    void arrived(const wmsg::telephonyd::IncomingSms &message);
    void forgotten(const QByteArray &place);
    void serviceCenterSet(bool isDone);

private:
    struct Freer {
        void operator()(GSM_StateMachine *machine) const { GSM_FreeStateMachine(machine); }
    };

    static void takeStatus(GSM_StateMachine *, int status, int reference, void *worker);
    static void takeIncoming(GSM_StateMachine *, GSM_SMSMessage *message, void *worker);

    void connectToModem();
    bool open();
    bool prepare();
    void disconnectFromModem();
    void lose(const char *what, GSM_Error error);
    void tryLater();
    void poll();
    void scan();
    void tell(const GSM_SMSMessage &message);
    [[nodiscard]] SendOutcome attempt(const OutgoingSms &message);
    [[nodiscard]] SendOutcome outcomeOf(GSM_Error error);
    void waitForStatus();
    void setState(TAPI_MODEM_E state);
    [[nodiscard]] bool readServiceCenter();
    [[nodiscard]] bool isThere() const;

    GammuSettings m_settings;
    std::atomic<bool> m_isAborted = false;
    QMutex m_machineLock; // held where the pointer changes, and where it is used from outside
    std::unique_ptr<GSM_StateMachine, Freer> m_machine;
    DeviceIdentity m_device; // changes only while there is no machine
    TAPI_MODEM_E m_state = TAPI_MODEM_ABSENT;
    QByteArray m_serviceCenter;
    QTimer m_polling;
    QTimer m_retry;
    std::chrono::milliseconds m_pause;
    QElapsedTimer m_sinceScan;
    bool m_isScanWanted = false;
    QSet<QByteArray> m_told; // places
    QSet<int> m_unreadable; // locations
    bool m_hasStatus = false; // of the message that is being sent
    int m_status = 0;
    int m_reference = 0;
};

} // namespace wmsg::telephonyd

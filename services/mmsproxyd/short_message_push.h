// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/retry_schedule.h"

#include <platform/telephony/util_tapi_device.h>
#include <platform/telephony/util_tapi_event.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <chrono>
#include <functional>

namespace wmsg::proxy {

/// The port of short messages that a network pushes to.
inline constexpr quint16 kPushPort = 2948;

/// ShortMessagePush takes what the network pushes in short messages: it is the one client of the
/// telephony service that has port 2948, and gives the bodies of its messages to a taker.
///
/// It asks for the service and for the port until it has them, with growing pauses, and again when
/// it loses them. Asking may take ten seconds, in which its thread does nothing else. A message
/// that was not taken stays with the service, which offers it again after a pause.
class ShortMessagePush : public QObject {
    Q_OBJECT

public:
    /// Takes the body of a message; false: it cannot be kept now.
    using Taker = std::function<bool(const QByteArray &body)>;

    /// The pauses between attempts. The last one repeats.
    static RetrySchedule pauses();
    /// For how long the service may say that there is no modem before it is asked whether it is
    /// there at all.
    static constexpr std::chrono::milliseconds kPatience = std::chrono::minutes(1);

    explicit ShortMessagePush(Taker taker, RetrySchedule schedule = pauses(),
                              std::chrono::milliseconds patience = kPatience);
    ~ShortMessagePush() override;

    /// start makes the first attempt. Whatever comes of it, the others follow by themselves.
    Q_INVOKABLE void start();

private:
    enum class State { Unknown, Taking, NoService, PortTaken };

    void retry();
    void check();
    [[nodiscard]] State connectToService();
    [[nodiscard]] State registerPort() const;
    void leave();
    void fail(State state);
    void pause();
    void tell(State state);

    void hear(UTIL_TAPI_Event *event);
    void hearModem(const UTIL_TAPI_Event &event);
    void hearMessage(UTIL_TAPI_Event &event);

    Taker m_taker;
    RetrySchedule m_schedule;
    QTimer m_retry;
    QTimer m_check;
    UTIL_TAPI_Device m_device;
    int m_handle = -1;
    int m_failures = 0;
    bool m_isKept = true; ///< The last message found a place.
    State m_told = State::Unknown;
};

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/short_message_push.h"

#include <platform/telephony/tapi_client.h>
#include <platform/telephony/tapi_sms.h>

#include <QtCore/QLoggingCategory>

#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

using namespace std::chrono_literals;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kTelephony, "wmsg.telephony", QtInfoMsg)

constexpr const char *kClientName = "MMSP";

struct ShortMessage {
    quint16 port = 0;
    QByteArray body;
};

/// Nothing when the record is shorter than it claims.
std::optional<ShortMessage> readMessage(const UTIL_TAPI_Event &event)
{
    constexpr int kBody = offsetof(TAPI_SMS_INCOMING_S, body);
    TAPI_SMS_INCOMING_S head = {};
    if (event.GetRawSize() < kBody) {
        return std::nullopt;
    }
    memcpy(&head, event.GetRawData(), kBody);
    if (event.GetRawSize() - kBody < head.msgLength) {
        return std::nullopt;
    }
    const char *body = static_cast<const char *>(event.GetRawData()) + kBody;
    return ShortMessage{head.port1, QByteArray(body, head.msgLength)};
}

} // namespace

RetrySchedule ShortMessagePush::pauses()
{
    return RetrySchedule({1s, 2s, 5s, 15s, 60s, 300s});
}

ShortMessagePush::ShortMessagePush(Taker taker, RetrySchedule schedule,
                                   std::chrono::milliseconds patience)
    : m_taker(std::move(taker)), m_schedule(std::move(schedule))
{
    connect(&m_device, &UTIL_TAPI_Device::TAPI_SendEvent, this, &ShortMessagePush::hear);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ShortMessagePush::retry);
    m_check.setSingleShot(true);
    m_check.setInterval(patience);
    connect(&m_check, &QTimer::timeout, this, &ShortMessagePush::check);
}

ShortMessagePush::~ShortMessagePush()
{
    leave();
}

void ShortMessagePush::start()
{
    retry();
}

void ShortMessagePush::retry()
{
    leave();
    const State state = connectToService();
    if (state != State::Taking) {
        fail(state);
        return;
    }
    tell(state);
    if (m_isKept) {
        m_failures = 0;
    }
}

/// There is no modem, or no service, or none that speaks sense. To ask for the port again tells
/// which.
void ShortMessagePush::check()
{
    const State state = registerPort();
    if (state != State::Taking) {
        fail(state);
    }
}

ShortMessagePush::State ShortMessagePush::connectToService()
{
    m_handle = TAPI_CLIENT_Init(kClientName, TAPI_EVENTS_NONE);
    return m_handle >= 0 && m_device.attach(m_handle) ? registerPort() : State::NoService;
}

ShortMessagePush::State ShortMessagePush::registerPort() const
{
    switch (TAPI_SMS_RegisterPortNumber(m_handle, kPushPort, SMS_RECV_MODE_PORTS)) {
    case TAPI_OK:
        return State::Taking;
    case TAPI_REFUSED:
        return State::PortTaken;
    default:
        return State::NoService;
    }
}

void ShortMessagePush::leave()
{
    m_check.stop();
    if (m_handle >= 0) {
        TAPI_CLIENT_Fini(std::exchange(m_handle, -1));
    }
}

void ShortMessagePush::fail(State state)
{
    tell(state);
    leave();
    pause();
}

void ShortMessagePush::pause()
{
    ++m_failures;
    m_retry.start(m_schedule.lastingPauseAfter(m_failures));
}

/// A state is told once, and not again at each attempt.
void ShortMessagePush::tell(State state)
{
    if (std::exchange(m_told, state) == state) {
        return;
    }
    switch (state) {
    case State::Taking:
        qCInfo(kTelephony, "short messages to port %d are taken", kPushPort);
        break;
    case State::NoService:
        qCInfo(kTelephony, "no telephony service answers: short messages are not heard");
        break;
    case State::PortTaken:
        qCWarning(kTelephony, "port %d is another program's: short messages are not heard",
                  kPushPort);
        break;
    case State::Unknown:
        break;
    }
}

void ShortMessagePush::hear(UTIL_TAPI_Event *event)
{
    switch (event->GetType()) {
    case TAPI_EVENT_SMS_INCOMING:
        hearMessage(*event);
        break;
    case TAPI_EVENT_MODEM:
        hearModem(*event);
        break;
    case TAPI_EVENT_PORT_LOST:
        fail(State::PortTaken);
        break;
    default:
        break;
    }
}

void ShortMessagePush::hearModem(const UTIL_TAPI_Event &event)
{
    TAPI_MODEM_S modem = {};
    if (event.GetRawSize() < static_cast<int>(sizeof modem)) {
        return;
    }
    memcpy(&modem, event.GetRawData(), sizeof modem);
    if (modem.state == TAPI_MODEM_ABSENT) {
        m_check.start();
    } else {
        m_check.stop();
    }
}

void ShortMessagePush::hearMessage(UTIL_TAPI_Event &event)
{
    const auto message = readMessage(event);
    if (!message) {
        qCWarning(kTelephony, "a short message is dropped: its record is cut off");
        return;
    }
    const bool isOurs = message->port == kPushPort;
    event.SetTaken(isOurs && m_taker(message->body));
    if (!isOurs) {
        return;
    }
    m_isKept = event.IsTaken();
    if (m_isKept) {
        m_failures = 0;
    } else if (!m_retry.isActive()) {
        pause(); // a new client is offered it again
    }
}

} // namespace wmsg::proxy

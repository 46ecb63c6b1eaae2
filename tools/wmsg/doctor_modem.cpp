// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/doctor_words.h"

#include <platform/telephony/tapi_client.h>
#include <platform/telephony/tapi_sms.h>
#include <platform/telephony/util_tapi_device.h>

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <chrono>
#include <cstring>

using namespace Qt::StringLiterals;

// The modem, as the telephony service tells of it.

namespace wmsg::cli {

namespace {

/// A client without events and ports, to which no message is told.
class ModemQuestion {
public:
    ModemQuestion() : m_handle(TAPI_CLIENT_Init("wmsg doctor", TAPI_EVENTS_NONE)) { }
    ~ModemQuestion() { TAPI_CLIENT_Fini(m_handle); }
    Q_DISABLE_COPY_MOVE(ModemQuestion)

    [[nodiscard]] bool isHeard() const { return m_handle >= 0; }

    /// What the service has said of the modem when it welcomed the client. It says nothing where
    /// there is none.
    [[nodiscard]] quint32 state() const
    {
        constexpr std::chrono::milliseconds kMoment(200);
        quint32 state = TAPI_MODEM_ABSENT;
        QEventLoop loop;
        UTIL_TAPI_Device device;
        QObject::connect(&device, &UTIL_TAPI_Device::TAPI_SendEvent, &loop,
                         [&](UTIL_TAPI_Event *event) {
                             if (event->GetType() == TAPI_EVENT_MODEM
                                 && event->GetRawSize() >= static_cast<int>(sizeof state)) {
                                 std::memcpy(&state, event->GetRawData(), sizeof state);
                                 loop.quit();
                             }
                         });
        QTimer moment;
        moment.setSingleShot(true);
        QObject::connect(&moment, &QTimer::timeout, &loop, &QEventLoop::quit);
        moment.start(kMoment);
        device.attach(m_handle);
        loop.exec();
        return state;
    }

    [[nodiscard]] QString serviceCenter() const
    {
        char number[64] = {};
        return TAPI_SMS_GetServiceCenter(m_handle, number, sizeof number) == TAPI_OK
            ? QString::fromLatin1(number)
            : QString();
    }

private:
    int m_handle;
};

Diagnosis ready(const QString &check, const QString &serviceCenter)
{
    if (serviceCenter.isEmpty()) {
        return Diagnosis::note(
            check,
            u"the modem is ready, and knows no service centre: short messages cannot be sent"_s,
            u"wmsg sms send --smsc NUMBER, with the number that your carrier names"_s);
    }
    return Diagnosis::ok(check, u"ready; short messages go through "_s + serviceCenter);
}

} // namespace

Diagnosis checkModem()
{
    const QString check = u"modem"_s;
    const QString daemon = u"wmsg-telephonyd"_s;
    const ModemQuestion question;
    if (!question.isHeard()) {
        return Diagnosis::problem(
            check, u"%1 lets nobody in: it hangs, or is of another version than wmsg"_s.arg(daemon),
            restartCommand(daemon));
    }
    switch (question.state()) {
    case TAPI_MODEM_READY:
        return ready(check, question.serviceCenter());
    case TAPI_MODEM_STARTING:
        return Diagnosis::note(check, u"found, and not ready yet"_s,
                               u"ask again in a minute; else: journalctl --user -u "_s + daemon);
    case TAPI_MODEM_BLOCKED:
        return Diagnosis::problem(
            check,
            u"there, and of no use as it is: the SIM is missing or wants its PIN, above all"_s,
            u"the log says what it wants: journalctl --user -u "_s + daemon);
    default:
        return Diagnosis::problem(
            check,
            u"%1 has no modem: it is not plugged in, or another program has it"_s.arg(daemon),
            u"ls -l /dev/serial/by-id; set backend and device in %1; mind ModemManager"_s.arg(
                configOf(daemon)));
    }
}

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/loopback_modem.h"

#include <QtCore/QDateTime>

namespace wmsg::telephonyd {

LoopbackModem::LoopbackModem(const LoopbackSettings &settings, QObject *parent)
    : Modem(parent), m_settings(settings)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(settings.delay);
    connect(&m_timer, &QTimer::timeout, this, &LoopbackModem::answer);
    m_absence.setSingleShot(true);
    m_absence.setTimerType(Qt::PreciseTimer);
    m_absence.setInterval(settings.absence);
    connect(&m_absence, &QTimer::timeout, this, &LoopbackModem::appear);
}

void LoopbackModem::start()
{
    m_absence.start();
}

void LoopbackModem::appear()
{
    m_isThere = true;
    Q_EMIT stateChanged(TAPI_MODEM_READY, m_serviceCenter);
}

void LoopbackModem::send(const OutgoingSms &message)
{
    m_message = message;
    m_timer.start();
}

/// The message is told before its outcome: a daemon that is killed in between sends it again and
/// does not lose it.
void LoopbackModem::answer()
{
    const SendOutcome result = outcome();
    if (result.kind == SendOutcome::Sent) {
        Q_EMIT arrived(returned());
    }
    Q_EMIT sent(m_message.id, result);
}

SendOutcome LoopbackModem::outcome()
{
    SendOutcome result;
    if (!m_isThere) {
        result.text = QStringLiteral("the modem is absent, as was asked for");
    } else if (m_settings.failures > 0) {
        --m_settings.failures;
        result.kind = SendOutcome::Refused;
        result.cause = m_settings.failure;
        result.text = QStringLiteral("as was asked for");
    } else {
        result.kind = SendOutcome::Sent;
        result.networkReference = ++m_reference;
    }
    return result;
}

IncomingSms LoopbackModem::returned() const
{
    IncomingSms sms;
    const bool isData = m_message.coding == telephony::Coding::Binary;
    sms.coding = isData ? telephony::Coding::Binary : telephony::Coding::Ucs2;
    sms.header = m_message.header;
    sms.serviceCenter =
        m_message.serviceCenter.isEmpty() ? m_serviceCenter : m_message.serviceCenter;
    sms.sender = m_message.destination;
    sms.body = m_message.body;
    sms.time = QDateTime::currentSecsSinceEpoch();
    return sms;
}

void LoopbackModem::setServiceCenter(const QByteArray &number)
{
    QMetaObject::invokeMethod(this, "takeServiceCenter", Qt::QueuedConnection,
                              Q_ARG(QByteArray, number));
}

void LoopbackModem::takeServiceCenter(const QByteArray &number)
{
    m_serviceCenter = number;
    Q_EMIT serviceCenterSet(true);
    Q_EMIT stateChanged(m_isThere ? TAPI_MODEM_READY : TAPI_MODEM_ABSENT, number);
}

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_send_run.h"

#include "tools/wmsg/sms_status_words.h"

#include <sms/wsmsmsg.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRandomGenerator>

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kNoStatus = -1;
constexpr unsigned char kPhoneNumber = 1;

QString refusalInWords(int status)
{
    switch (status) {
    case WMFM::STATUS_CONTENT_OVERFLOW:
        return u"the text does not fit one short message"_s;
    default:
        return u"the telephony service does not take the message (status %1)"_s.arg(status);
    }
}

} // namespace

SmsSendRun::SmsSendRun(SmsSendRequest request) : m_request(std::move(request)) { }

void SmsSendRun::begin()
{
    session()->setTakesMessages(false);
    const QString problem = send();
    if (!problem.isEmpty()) {
        end("not-sent", kNoStatus, u"not sent: "_s + problem);
        return;
    }
    if (!m_request.isJson) {
        say(m_request.body.lengthInWords() + u'\n');
        std::fflush(stdout);
    }
    if (!m_request.waits) {
        const bool isFine = isHandedOver();
        end(isFine ? "handed-over" : "unknown", kNoStatus,
            isFine ? QString()
                   : u"the telephony service does not say that it has the message; what becomes of "
                     "it is not known"_s);
    }
}

/// Returns the problem, or an empty text.
QString SmsSendRun::send()
{
    WSMSMsg message;
    if (!message.setTo(WMFMEntry(kPhoneNumber, m_request.to))) {
        return u"\"%1\" is no number for short messages"_s.arg(m_request.to);
    }
    if (!m_request.serviceCenter.isEmpty()) {
        message.setServiceCenter(m_request.serviceCenter);
    }
    if (m_request.body.hasPorts) {
        message.setPortNumber(m_request.destinationPort, m_request.sourcePort);
    }
    if (m_request.body.text) {
        message.setBody(*m_request.body.text);
    } else {
        message.setBody(QArray<char>(QByteArrayView(m_request.body.data)));
    }
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    m_reference = session()->send(&message, status);
    return status == WMFM::STATUS_OK ? QString() : refusalInWords(status);
}

// The service deals with records in their order: when it has answered a request that came behind
// the message, it has the message. A port of one's own is such a request.
bool SmsSendRun::isHandedOver() const
{
    constexpr int kFirstPrivatePort = 49152;
    constexpr int kPorts = 65536;
    constexpr int kAttempts = 3; // another program may have the port
    for (int i = 0; i < kAttempts; ++i) {
        const int port = QRandomGenerator::system()->bounded(kFirstPrivatePort, kPorts);
        if (session()->registerPortNumber(static_cast<unsigned short>(port), SMS_RECV_MODE_PORTS)
            == WMFM::STATUS_OK) {
            return true;
        }
    }
    return false;
}

void SmsSendRun::statusChanged(int id, WMFM::STATUS_T status)
{
    if (id != m_reference) {
        return;
    }
    if (status == WMFM::STATUS_OK) {
        end("sent", status, QString());
    } else if (static_cast<int>(status) == TAPI_SMS_LOST) {
        end("unknown", status, smsStatusInWords(status) + u" (status %1)"_s.arg(int(status)));
    } else {
        end("not-sent", status,
            u"not sent: %1 (status %2)"_s.arg(smsStatusInWords(status)).arg(int(status)));
    }
}

void SmsSendRun::interrupted()
{
    end("unknown", kNoStatus,
        u"the outcome was not waited for; the message stays with the telephony service"_s);
}

void SmsSendRun::timedOut()
{
    end("unknown", kNoStatus,
        u"no outcome in time; the message stays with the telephony service"_s);
}

// A `line` is a complaint.
void SmsSendRun::end(const char *outcome, int status, const QString &line)
{
    const bool isFine = line.isEmpty();
    if (!isFine) {
        complain(line);
    }
    if (m_request.isJson) {
        showJson(outcome, status);
    } else if (isFine) {
        say(m_request.waits ? u"sent\n"_s : u"handed over\n"_s);
    }
    finish(finishOutput() && isFine ? ExitFine : ExitBadInput);
}

void SmsSendRun::showJson(const char *outcome, int status) const
{
    QJsonObject object{{u"outcome"_s, QLatin1String(outcome)}, {u"to"_s, m_request.to}};
    m_request.body.addLength(object);
    if (status != kNoStatus) {
        object.insert(u"status"_s, status);
        object.insert(u"words"_s, smsStatusInWords(status));
    }
    say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

} // namespace wmsg::cli

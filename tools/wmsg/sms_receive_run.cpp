// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_receive_run.h"

#include "tools/wmsg/sms_view.h"
#include "tools/wmsg/text_view.h"

#include <sms/wsmsmsg.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cstdio>
#include <memory>
#include <utility>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

SmsReceiveRun::SmsReceiveRun(SmsReceiveRequest request) : m_request(std::move(request)) { }

void SmsReceiveRun::begin()
{
    for (const quint16 port : std::as_const(m_request.ports)) {
        if (session()->registerPortNumber(port, SMS_RECV_MODE_PORTS) != WMFM::STATUS_OK) {
            complain(u"port %1 cannot be had: another program has it, or the telephony service "
                     "does not answer"_s.arg(port));
            end(false);
            return;
        }
    }
}

void SmsReceiveRun::msgIncome(WMFMMsg *msg)
{
    const std::unique_ptr<WMFMMsg> owner(msg);
    auto *message = dynamic_cast<WSMSMsg *>(msg);
    if (!message) {
        return; // a session of short messages brings no other
    }
    ++m_number;
    show(*message);
    if (std::fflush(stdout) != 0) {
        // Returning would tell the telephony service that the message is here.
        (void)finishOutput();
        ::_exit(ExitBadInput);
    }
    if (m_number == m_request.count) {
        end(true);
    }
}

void SmsReceiveRun::show(WSMSMsg &message) const
{
    if (m_request.isJson) {
        QJsonObject object = smsJson(message);
        object.insert(u"number"_s, m_number);
        say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
        return;
    }
    const QString head = smsHead(message);
    say(u"message %1"_s.arg(m_number) + (head.isEmpty() ? head : u", "_s + head) + u'\n'
        + smsContent(message) + u'\n');
}

// Who waits for a number of messages has failed without them.
void SmsReceiveRun::endEarly()
{
    if (m_request.count > 0) {
        complain(u"%1 of %2 came"_s.arg(m_number).arg(counted(m_request.count, "message"_L1)));
    }
    end(m_request.count == 0);
}

void SmsReceiveRun::end(bool isFine)
{
    finish(finishOutput() && isFine ? ExitFine : ExitBadInput);
}

} // namespace wmsg::cli

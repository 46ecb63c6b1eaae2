// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/box_sms_demo.h"

#include "tools/wmsg/report.h"
#include "tools/wmsg/sms_body.h"
#include "tools/wmsg/sms_status_words.h"
#include "tools/wmsg/sms_view.h"

#include <sms/wsmsmsg.h>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr unsigned char kPhoneNumber = 1;

QString demoText()
{
    return u"Hello in a short message!"_s;
}

} // namespace

BoxSmsDemo::BoxSmsDemo() : Demo(u"the short message did not arrive in a minute"_s) { }

void BoxSmsDemo::start()
{
    m_sender = std::make_unique<Application<WSMSSession>>(WMFM::MSG_TYPE_SMS);
    m_receiver = std::make_unique<Application<WSMSSession>>(WMFM::MSG_TYPE_SMS);
    if (!m_sender->isOpen() || !m_receiver->isOpen()) {
        Q_EMIT failed(u"no session for short messages can be opened"_s);
        return;
    }
    wait();
    m_sender->session().setTakesMessages(false);
    m_sender->onStatus = [this](int id, int status) {
        if (id == m_request) {
            sent(status);
        }
    };
    m_receiver->onMessage = [this](WMFMMsg *message) {
        arrived(message);
    };
    WSMSMsg message;
    message.setTo(WMFMEntry(kPhoneNumber, u"+15550101"_s));
    message.setBody(demoText());
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    m_request = m_sender->session().send(&message, status);
    if (status != WMFM::STATUS_OK) {
        Q_EMIT failed(u"the short message is not taken"_s);
        return;
    }
    SmsBody body;
    body.text = demoText();
    say(u"%1 sends a short message to +15550101: %2.\n"_s.arg(kSender, body.lengthInWords()));
    std::fflush(stdout);
}

void BoxSmsDemo::sent(int status)
{
    if (status != WMFM::STATUS_OK) {
        Q_EMIT failed(u"the short message is not sent: "_s + smsStatusInWords(status));
        return;
    }
    say(u"%1: sent.\n"_s.arg(kSender));
    messageIsSent();
}

void BoxSmsDemo::arrived(WMFMMsg *message)
{
    auto *shortMessage = dynamic_cast<WSMSMsg *>(message);
    if (!shortMessage) {
        Q_EMIT failed(u"what arrived is no short message"_s);
        return;
    }
    say(u"%1 has received a short message, %2:\n"_s.arg(kReceiver, smsHead(*shortMessage))
        + smsContent(*shortMessage));
    messageHasArrived();
}

} // namespace wmsg::cli

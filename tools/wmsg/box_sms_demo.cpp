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

constexpr int kPatience = 60000; // milliseconds
constexpr unsigned char kPhoneNumber = 1;
constexpr auto kReceiver = "wmsg.demo.receiver"_L1;
constexpr auto kSender = "wmsg.demo.sender"_L1;

QString demoText()
{
    return u"Hello in a short message!"_s;
}

} // namespace

/// One of the two: a session and what it hears.
class BoxSmsDemo::Application : public WMFMListener {
public:
    Application() : WMFMListener(nullptr)
    {
        WMFM::STATUS_T status = WMFM::STATUS_FAIL;
        auto *opened = WMFMSession::open(WMFM::MSG_TYPE_SMS, status);
        m_session.reset(dynamic_cast<WSMSSession *>(opened));
        m_isOpen = m_session && status == WMFM::STATUS_OK && m_session->setListener(this, status);
    }

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] WSMSSession &session() { return *m_session; }

    std::function<void(int id, int status)> onStatus;
    std::function<void(WMFMMsg *message)> onMessage;

    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        if (onStatus) {
            onStatus(id, status);
        }
    }
    void msgIncome(WMFMMsg *message) override
    {
        const std::unique_ptr<WMFMMsg> owner(message);
        if (onMessage) {
            onMessage(message);
        }
    }
    QString listenerName() const override { return QStringLiteral("wmsg box"); }

private:
    struct Closer {
        void operator()(WSMSSession *session) const { WMFMSession::close(session); }
    };

    std::unique_ptr<WSMSSession, Closer> m_session;
    bool m_isOpen = false;
};

BoxSmsDemo::BoxSmsDemo()
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this,
            [this] { Q_EMIT failed(u"the short message did not arrive in a minute"_s); });
}

BoxSmsDemo::~BoxSmsDemo() = default;

void BoxSmsDemo::start()
{
    m_sender = std::make_unique<Application>();
    m_receiver = std::make_unique<Application>();
    if (!m_sender->isOpen() || !m_receiver->isOpen()) {
        Q_EMIT failed(u"no session for short messages can be opened"_s);
        return;
    }
    m_patience.start(kPatience);
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
    m_isSent = true;
    endWhenAllIsDone();
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
    m_hasArrived = true;
    endWhenAllIsDone();
}

void BoxSmsDemo::endWhenAllIsDone()
{
    std::fflush(stdout);
    if (m_isSent && m_hasArrived) {
        m_patience.stop();
        Q_EMIT succeeded();
    }
}

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/sms_body.h"
#include "tools/wmsg/sms_run.h"

#include <QtCore/QString>

namespace wmsg::cli {

/// A short message that is to be sent.
struct SmsSendRequest {
    QString to;
    QString serviceCenter; ///< Empty: the default one.
    SmsBody body;
    quint16 destinationPort = 0; ///< With ports.
    quint16 sourcePort = 0;
    bool waits = true; ///< For the outcome; else until the telephony service has it.
    bool isJson = false;
};

/// Sends one short message and waits for its outcome. Messages that arrive are left to others.
class SmsSendRun : public SmsRun {
public:
    explicit SmsSendRun(SmsSendRequest request);

private:
    void begin() override;
    void interrupted() override;
    void timedOut() override;
    void statusChanged(int id, WMFM::STATUS_T status) override;

    [[nodiscard]] QString send();
    [[nodiscard]] bool isHandedOver() const;
    void end(const char *outcome, int status, const QString &line);
    void showJson(const char *outcome, int status) const;

    SmsSendRequest m_request;
    int m_reference = -1;
};

} // namespace wmsg::cli

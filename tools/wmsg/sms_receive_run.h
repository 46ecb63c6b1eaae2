// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/sms_run.h"

#include <QtCore/QList>

class WSMSMsg;

namespace wmsg::cli {

/// Which short messages are to be received.
struct SmsReceiveRequest {
    QList<quint16> ports; ///< None: messages to no port, and to ports that nobody has.
    int count = 0; ///< 0: until interrupted.
    bool isJson = false;
};

/// Waits for short messages and shows them.
///
/// A message that cannot be shown is not lost: the program ends before it has told the telephony
/// service that it has the message.
class SmsReceiveRun : public SmsRun {
public:
    explicit SmsReceiveRun(SmsReceiveRequest request);

private:
    void begin() override;
    void interrupted() override { endEarly(); }
    void timedOut() override { endEarly(); }
    void msgIncome(WMFMMsg *msg) override;

    void show(WSMSMsg &message) const;
    void endEarly();
    void end(bool isFine);

    SmsReceiveRequest m_request;
    int m_number = 0;
};

} // namespace wmsg::cli

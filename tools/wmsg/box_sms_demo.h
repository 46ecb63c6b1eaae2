// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/demo.h"

#include <sms/wsmssession.h>

#include <memory>

namespace wmsg::cli {

/// A short message, through the modem.
class BoxSmsDemo final : public Demo {
    Q_OBJECT

public:
    BoxSmsDemo();

    void start() override;

private:
    void sent(int status);
    void arrived(WMFMMsg *message);

    std::unique_ptr<Application<WSMSSession>> m_sender;
    std::unique_ptr<Application<WSMSSession>> m_receiver;
    int m_request = -1;
};

} // namespace wmsg::cli

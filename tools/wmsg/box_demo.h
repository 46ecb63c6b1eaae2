// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/demo.h"

#include <mms/session/wmmssession.h>

#include <memory>

namespace wmsg::cli {

/// A picture with a text; each application is told by its own name.
class BoxDemo final : public Demo {
    Q_OBJECT

public:
    /// Files are made in `folder`.
    explicit BoxDemo(QString folder);

    void start() override;

private:
    void registered(int status);
    void send();
    void sent(int status);
    void arrived(WMFMMsg *message);

    QString m_folder;
    std::unique_ptr<Application<WMMSSession>> m_sender;
    std::unique_ptr<Application<WMMSSession>> m_receiver;
    int m_registrations = 0;
    int m_request = -1;
};

} // namespace wmsg::cli

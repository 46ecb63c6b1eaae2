// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/wmfmlistener.h>
#include <sms/wsmssession.h>

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <memory>

namespace wmsg::cli {

/// One short message from one application to another on this phone, through its modem and back.
class BoxSmsDemo : public QObject {
    Q_OBJECT

public:
    BoxSmsDemo();
    ~BoxSmsDemo() override;

    void start();

Q_SIGNALS:
    /// The message arrived, and its sender knows that it is sent; both was said.
    void succeeded();
    void failed(const QString &problem);

private:
    class Application;

    void sent(int status);
    void arrived(WMFMMsg *message);
    void endWhenAllIsDone();

    std::unique_ptr<Application> m_sender;
    std::unique_ptr<Application> m_receiver;
    QTimer m_patience;
    int m_request = -1;
    bool m_isSent = false;
    bool m_hasArrived = false;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/wmfmlistener.h>
#include <mms/session/wmmssession.h>

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <memory>

namespace wmsg::cli {

/// One message from one application to another on this phone, over its network and back: each has a
/// session of its own and is told by its own name, as two programs are.
class BoxDemo : public QObject {
    Q_OBJECT

public:
    /// Files are made in `folder`.
    explicit BoxDemo(QString folder);
    ~BoxDemo() override;

    void start();

Q_SIGNALS:
    /// The message arrived, and its sender knows that it is sent; both was said.
    void succeeded();
    void failed(const QString &problem);

private:
    class Application;

    void registered(int status);
    void send();
    void sent(int status);
    void arrived(WMFMMsg *message);
    void endWhenAllIsDone();

    QString m_folder;
    std::unique_ptr<Application> m_sender;
    std::unique_ptr<Application> m_receiver;
    QTimer m_patience;
    int m_registrations = 0;
    int m_request = -1;
    bool m_isSent = false;
    bool m_hasArrived = false;
};

} // namespace wmsg::cli

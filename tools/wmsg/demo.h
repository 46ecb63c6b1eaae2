// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/owned_session.h"

#include <core/wmfmmsg.h>

#include <QtCore/QLatin1String>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <memory>

namespace wmsg::cli {

/// One message from one application to another on this phone, over its network and back: each has a
/// session of its own, as two programs have.
class Demo : public QObject {
    Q_OBJECT

public:
    virtual void start() = 0;

Q_SIGNALS:
    /// The message arrived, and its sender knows that it is sent; both was said.
    void succeeded();
    void failed(const QString &problem);

protected:
    static constexpr QLatin1String kReceiver{"wmsg.demo.receiver"};
    static constexpr QLatin1String kSender{"wmsg.demo.sender"};

    /// One of the two applications: a session and what it hears.
    template <typename Session> class Application;

    /// It fails with `lateness` when it takes longer than a minute from wait() on.
    explicit Demo(const QString &lateness);

    void wait();
    void messageIsSent();
    void messageHasArrived();

private:
    void endWhenAllIsDone();

    QTimer m_patience;
    bool m_isSent = false;
    bool m_hasArrived = false;
};

template <typename Session> class Demo::Application : public WMFMListener {
public:
    explicit Application(WMFM::MSG_TYPE_T type)
        : WMFMListener(nullptr), m_session(openSession<Session>(type, this))
    {
    }

    [[nodiscard]] bool isOpen() const { return m_session != nullptr; }
    [[nodiscard]] Session &session() { return *m_session; }

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
    OwnedSession<Session> m_session;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/fault_plan.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <functional>
#include <memory>

class QSocketNotifier;
struct MHD_Daemon;

namespace wmsg::sim {

class HttpExchange;

/// A request that has arrived whole.
struct HttpRequest {
    QByteArray method;
    QByteArray path; ///< without scheme and host, which a proxy's clients send
    QByteArray contentType;
    QByteArray sender; ///< of the header x-msisdn, with which a network names its subscriber
    QByteArray body;
    Faults faults; ///< what the server has not dealt with by then is left to the handler
};

/// What answers a request: `head` and `pdu` from `pduStart` on. The bytes of `pdu` are shared, not
/// copied.
struct HttpAnswer {
    int status = 200;
    QByteArray contentType;
    QByteArray location;
    QByteArray head;
    QByteArray pdu;
    qsizetype pduStart = 0;

    [[nodiscard]] qsizetype size() const { return head.size() + pdu.size() - pduStart; }
};

/// An answer in words, for what is no matter of the MMSC.
[[nodiscard]] HttpAnswer plainAnswer(int status, const QByteArray &text);

/// An HTTP server on the loopback interface, in the event loop of its thread. It bounds what it
/// takes, and lets the faults of a plan happen to its requests.
class HttpServer : public QObject {
    Q_OBJECT

public:
    struct Settings {
        quint16 port = 0; ///< 0: any that is free
        qint64 largestBody = 0;
        unsigned connections = 0;
        unsigned idleSeconds = 0;
    };
    using Handler = std::function<HttpAnswer(const HttpRequest &)>;

    /// `plan` is used as long as the server lives.
    HttpServer(const Settings &settings, FaultPlan &plan, Handler handler,
               QObject *parent = nullptr);
    ~HttpServer() override;

    /// Returns what is in the way of listening, or an empty text.
    [[nodiscard]] QString listen();
    [[nodiscard]] quint16 port() const { return m_port; }

private:
    friend class HttpExchange;

    QString openSocket(int &socket);
    void run();
    [[nodiscard]] unsigned connections() const;

    Settings m_settings;
    FaultPlan &m_plan;
    Handler m_handler;
    MHD_Daemon *m_daemon = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_timer;
    QList<HttpExchange *> m_exchanges;
    quint16 m_port = 0;
};

} // namespace wmsg::sim

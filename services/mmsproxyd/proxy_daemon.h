// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/config.h"
#include "services/mmsproxyd/delivery.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/proxy_socket.h"
#include "services/mmsproxyd/push_socket.h"
#include "services/mmsproxyd/push_thread.h"
#include "services/mmsproxyd/retrieval_queue.h"
#include "services/mmsproxyd/send_queue.h"
#include "services/mmsproxyd/settings_server.h"
#include "services/mmsproxyd/spool.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace wmsg::proxy {

/// ProxyDaemon is the daemon: it makes the parts, hands them the commands of sessions and the
/// pushes of the network, and turns what they tell into events. It stops when it is deleted; what
/// is under way then goes on with the next one.
class ProxyDaemon : public QObject {
    Q_OBJECT

public:
    explicit ProxyDaemon(Config config, QObject *parent = nullptr);
    ~ProxyDaemon() override;

    /// start opens the spool, listens on the three sockets, takes up what the spool holds and
    /// begins to hear short messages. It returns the problem in words, or an empty text.
    [[nodiscard]] QString start();

private:
    [[nodiscard]] QString listen();
    void connectSessions();
    void connectQueues();

    void obey(SessionId session, MMS_UA_Cmd &command);
    void registerApp(SessionId session, const MMS_UA_AppIdCmd &command);
    void begin(SessionId session, const MMS_UA_UriCmd &command);
    void change(SessionId session, const MMS_UA_TargetCmd &command);
    void forget(SessionId session);

    void tellEnd(SessionId session, qint32 requestId, const QString &uri, qint32 status);
    void tellRetry(SessionId session, qint32 requestId);
    void tellProgress(SessionId session, qint32 requestId, qint64 done, qint64 total);
    void tellRetrieved(SessionId session, const QString &path);
    void tellAnnounced(SessionId session, const QString &uri, const QString &transactionId);
    void tellReport(SessionId session, const Inbox::Report &report);

    Config m_config;
    Spool m_spool;
    Inbox m_inbox;
    HttpClient m_http;
    SendQueue m_sends;
    RetrievalQueue m_retrievals;
    Delivery m_delivery;
    ProxySocket m_proxy;
    PushSocket m_pushes;
    std::unique_ptr<PushThread> m_shortMessages; // nullptr: they are not wanted
    SettingsServer m_settings;
};

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/proxy_daemon.h"

#include "services/mmsproxyd/config_checks.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <limits>
#include <utility>

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kDaemon, "wmsg.mmsproxyd", QtInfoMsg)

// What requests end with, beside the response statuses of the MMSC and what the queues say.
constexpr qint32 kDone = 0;
constexpr qint32 kInvalid = 15;

/// What a request-status record says: there will be another attempt. It lies above every status
/// that a request can end with.
constexpr qint32 kTriedAgain = 256;

HttpSettings httpSettings(const Config &config)
{
    HttpSettings settings;
    settings.proxy = config.httpProxy;
    settings.interfaceName = config.interfaceName;
    settings.authorities = config.authorities;
    settings.userAgent = config.userAgent;
    settings.profileUrl = config.profileUrl;
    settings.connectTimeout = config.connectTimeout;
    settings.stallTimeout = config.stallTimeout;
    return settings;
}

SendSettings sendSettings(const Config &config)
{
    SendSettings settings;
    settings.mmsc = config.mmsc;
    settings.maxSize = config.maxSize;
    settings.schedule = RetrySchedule(config.retryPauses);
    return settings;
}

RetrievalSettings retrievalSettings(const Config &config)
{
    RetrievalSettings settings;
    settings.mmsc = config.mmsc;
    settings.maxIncoming = config.maxIncoming;
    settings.schedule = RetrySchedule(config.retryPauses);
    settings.mode = config.retrieval;
    return settings;
}

/// What applications are told; a URI that the answer has no room for is left out.
QByteArray answerToSettings(const Config &config)
{
    QString uri = config.settingsUri.isEmpty() ? config.mmsc : config.settingsUri;
    if (uri.size() > kLongestSettingsUri) {
        qCWarning(kDaemon,
                  "the URL of the MMSC is too long to be told to applications: see --settings-uri");
        uri = QLatin1String("");
    }
    return settingsAnswer(static_cast<qint32>(config.maxSize), uri);
}

/// A count of bytes as a record has room for it.
qint32 counted(qint64 bytes)
{
    return static_cast<qint32>(std::clamp<qint64>(bytes, 0, std::numeric_limits<qint32>::max()));
}

} // namespace

ProxyDaemon::ProxyDaemon(Config config, QObject *parent)
    : QObject(parent), m_config(std::move(config)), m_spool(m_config.spool), m_inbox(m_spool),
      m_http(httpSettings(m_config)), m_sends(m_spool, m_http, sendSettings(m_config)),
      m_retrievals(m_spool, m_inbox, m_http, retrievalSettings(m_config)),
      m_delivery(m_inbox, m_spool.handedFolder()),
      m_pushes([this](const QByteArray &pdu) { return m_retrievals.pushed(pdu); }),
      m_settings(answerToSettings(m_config))
{
    connectSessions();
    connectQueues();
}

ProxyDaemon::~ProxyDaemon() = default;

QString ProxyDaemon::start()
{
    QString problem = m_spool.open();
    if (problem.isEmpty()) {
        problem = listen();
    }
    if (!problem.isEmpty()) {
        return problem;
    }
    m_inbox.restore();
    problem = m_delivery.start();
    if (!problem.isEmpty()) {
        return problem;
    }
    m_sends.start();
    m_retrievals.start();
    if (m_config.takesShortMessages) {
        m_shortMessages = std::make_unique<PushThread>(
            [this](const QByteArray &body) { return m_retrievals.pushedOnce(body).isEmpty(); });
        m_shortMessages->start();
    }
    if (m_config.mmsc.isEmpty()) {
        qCWarning(kDaemon, "no MMSC is set: nothing can be sent, and the network gets no answers");
    }
    return QString();
}

QString ProxyDaemon::listen()
{
    QString problem = m_proxy.listen(m_config.proxySocket, m_config.socketMode);
    if (problem.isEmpty()) {
        problem = m_settings.listen(m_config.settingsSocket, m_config.socketMode);
    }
    return problem.isEmpty() ? m_pushes.listen(m_config.pushSocket, m_config.socketMode) : problem;
}

void ProxyDaemon::connectSessions()
{
    connect(&m_proxy, &ProxySocket::opened, &m_delivery, &Delivery::opened);
    connect(&m_proxy, &ProxySocket::command, this, &ProxyDaemon::obey);
    connect(&m_proxy, &ProxySocket::closed, this, &ProxyDaemon::forget);
    connect(&m_delivery, &Delivery::retrieved, this, &ProxyDaemon::tellRetrieved);
    connect(&m_delivery, &Delivery::announced, this, &ProxyDaemon::tellAnnounced);
    connect(&m_delivery, &Delivery::reported, this, &ProxyDaemon::tellReport);
}

void ProxyDaemon::connectQueues()
{
    connect(&m_sends, &SendQueue::finished, this, &ProxyDaemon::tellEnd);
    connect(&m_sends, &SendQueue::retrying, this, &ProxyDaemon::tellRetry);
    connect(&m_sends, &SendQueue::progress, this, &ProxyDaemon::tellProgress);
    connect(&m_retrievals, &RetrievalQueue::finished, this, &ProxyDaemon::tellEnd);
    connect(&m_retrievals, &RetrievalQueue::retrying, this, &ProxyDaemon::tellRetry);
    connect(&m_retrievals, &RetrievalQueue::progress, this, &ProxyDaemon::tellProgress);
    connect(&m_retrievals, &RetrievalQueue::messageReady, &m_delivery, &Delivery::look);
    connect(&m_retrievals, &RetrievalQueue::reportReady, &m_delivery, &Delivery::look);
    connect(&m_retrievals, &RetrievalQueue::notified, &m_delivery, &Delivery::announce);
}

void ProxyDaemon::obey(SessionId session, MMS_UA_Cmd &command)
{
    if (const auto *aboutApp = dynamic_cast<const MMS_UA_AppIdCmd *>(&command)) {
        registerApp(session, *aboutApp);
        return;
    }
    m_delivery.settle(session);
    if (const auto *aboutMessage = dynamic_cast<const MMS_UA_UriCmd *>(&command)) {
        begin(session, *aboutMessage);
    } else if (const auto *aboutRequest = dynamic_cast<const MMS_UA_TargetCmd *>(&command)) {
        change(session, *aboutRequest);
    }
}

void ProxyDaemon::registerApp(SessionId session, const MMS_UA_AppIdCmd &command)
{
    const auto result = command.type() == MMS_UA_CMD_REGISTER
        ? m_delivery.registerApp(session, command.getAppId())
        : m_delivery.deregisterApp(session, command.getAppId());
    auto event = std::make_unique<MMS_UA_SvRegCompleteCmd>();
    event->setRequestId(command.getRequestId());
    event->setResult(result);
    m_proxy.send(session, std::move(event));
}

/// A number that is in use in one queue is in use in both.
void ProxyDaemon::begin(SessionId session, const MMS_UA_UriCmd &command)
{
    const qint32 id = command.getRequestId();
    if (m_sends.knows(session, id) || m_retrievals.knows(session, id)) {
        qCWarning(kDaemon, "session %llu uses the request %d twice", session, id);
        tellEnd(session, id, command.getUri(), kInvalid);
    } else if (command.type() == MMS_UA_CMD_SEND) {
        m_sends.take(session, id, command.getUri(), m_proxy.userOf(session));
    } else {
        m_retrievals.retrieve(session, id, command.getUri());
    }
}

void ProxyDaemon::change(SessionId session, const MMS_UA_TargetCmd &command)
{
    const qint32 target = command.getTargetId();
    bool isKnown = false;
    switch (command.type()) {
    case MMS_UA_CMD_ABORT:
        isKnown = m_sends.abort(session, target) || m_retrievals.abort(session, target);
        break;
    case MMS_UA_CMD_PAUSE:
        isKnown = m_sends.pause(session, target) || m_retrievals.pause(session, target);
        break;
    case MMS_UA_CMD_RESUME:
        isKnown = m_sends.resume(session, target) || m_retrievals.resume(session, target);
        break;
    default:
        break;
    }
    tellEnd(session, command.getRequestId(), QString(), isKnown ? kDone : kInvalid);
}

void ProxyDaemon::forget(SessionId session)
{
    m_delivery.closed(session);
    m_sends.forget(session);
    m_retrievals.forget(session);
}

void ProxyDaemon::tellEnd(SessionId session, qint32 requestId, const QString &uri, qint32 status)
{
    auto event = std::make_unique<MMS_UA_SvReqCompleteCmd>();
    event->setRequestId(requestId);
    event->setStatus(status);
    event->setUri(uri);
    m_proxy.send(session, std::move(event));
}

void ProxyDaemon::tellRetry(SessionId session, qint32 requestId)
{
    auto event = std::make_unique<MMS_UA_SvStsRetCmd>();
    event->setRequestId(requestId);
    event->setStatus(kTriedAgain);
    m_proxy.send(session, std::move(event));
}

void ProxyDaemon::tellProgress(SessionId session, qint32 requestId, qint64 done, qint64 total)
{
    auto event = std::make_unique<MMS_UA_SvProgCmd>();
    event->setRequestId(requestId);
    event->setValue1(counted(done));
    event->setValue2(counted(total));
    m_proxy.send(session, std::move(event));
}

void ProxyDaemon::tellRetrieved(SessionId session, const QString &path)
{
    auto event = std::make_unique<MMS_UA_SvRetrCompleteCmd>();
    event->setUri(path);
    m_proxy.send(session, std::move(event));
}

void ProxyDaemon::tellAnnounced(SessionId session, const QString &uri, const QString &transactionId)
{
    auto event = std::make_unique<MMS_UA_SvNotiCmd>();
    event->setUriAndTranID(uri, transactionId);
    m_proxy.send(session, std::move(event));
}

void ProxyDaemon::tellReport(SessionId session, const Inbox::Report &report)
{
    auto event = std::make_unique<MMS_UA_SvDeliCmd>();
    event->setMsgIDAndToAndDate(report.messageId, report.to, report.date);
    m_proxy.send(session, std::move(event));
}

} // namespace wmsg::proxy

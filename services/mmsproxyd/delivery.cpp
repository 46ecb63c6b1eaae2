// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/delivery.h"

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <utility>

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kDelivery, "wmsg.delivery", QtInfoMsg)

/// How long a session may take until it registers.
constexpr std::chrono::milliseconds kFresh(250);

/// How many messages may fail to be handed out before it looks as if none can be.
constexpr size_t kMostFailures = 8;

bool isAppId(const QString &appId)
{
    return !appId.isEmpty() && appId.size() <= Delivery::kLongestAppId;
}

} // namespace

struct Delivery::Session {
    QSet<QString> appIds;
    bool hasRegistered = false; // ever
    bool isSettled = false;
    int held = 0;
    QTimer fresh;
};

Delivery::Delivery(Inbox &inbox, QString folder, std::chrono::milliseconds pause, QObject *parent)
    : QObject(parent), m_inbox(inbox), m_folder(std::move(folder)), m_pause(pause)
{
    connect(&m_watch, &FolderWatch::left, this,
            [this](const QString &name) { confirm(m_folder + u'/' + name); });
    connect(&m_watch, &FolderWatch::overflowed, this, &Delivery::confirmMissing);
    m_soon.setSingleShot(true);
    m_again.setSingleShot(true);
    connect(&m_soon, &QTimer::timeout, this, &Delivery::handOut);
    connect(&m_again, &QTimer::timeout, this, [this] {
        m_failed.clear();
        handOut();
    });
}

Delivery::~Delivery() = default;

QString Delivery::start()
{
    look();
    return m_watch.watch(m_folder);
}

void Delivery::opened(SessionId id)
{
    auto session = std::make_unique<Session>();
    session->fresh.setSingleShot(true);
    connect(&session->fresh, &QTimer::timeout, this, [this, id] { settle(id); });
    session->fresh.start(kFresh);
    m_sessions[id] = std::move(session);
}

void Delivery::closed(SessionId id)
{
    m_sessions.erase(id);
    QStringList paths;
    for (const auto &[path, handed] : m_handed) {
        if (handed.session == id) {
            paths.append(path);
        }
    }
    for (const QString &path : std::as_const(paths)) {
        letGo(path, !m_inbox.takeBack(m_handed.at(path).message, path));
    }
}

void Delivery::settle(SessionId id)
{
    const auto found = m_sessions.find(id);
    if (found == m_sessions.end() || found->second->isSettled) {
        return;
    }
    found->second->isSettled = true;
    // The timer may be the one that is calling.
    found->second->fresh.stop();
    for (const Inbox::Announcement &one : m_inbox.announced()) {
        Q_EMIT announced(id, one.uri, one.transactionId);
    }
    look();
}

Delivery::Result Delivery::registerApp(SessionId id, const QString &appId)
{
    const auto found = m_sessions.find(id);
    if (found == m_sessions.end() || !isAppId(appId)) {
        return Invalid;
    }
    QSet<QString> &appIds = found->second->appIds;
    if (appIds.size() >= kMostAppIds && !appIds.contains(appId)) {
        return Invalid;
    }
    appIds.insert(appId);
    found->second->hasRegistered = true;
    settle(id);
    look();
    return Done;
}

Delivery::Result Delivery::deregisterApp(SessionId id, const QString &appId)
{
    const auto found = m_sessions.find(id);
    return found != m_sessions.end() && found->second->appIds.remove(appId) ? Done : Invalid;
}

void Delivery::look()
{
    m_soon.start(0);
}

void Delivery::announce(const QString &uri, const QString &transactionId)
{
    for (const auto &[id, session] : m_sessions) {
        if (session->isSettled) {
            Q_EMIT announced(id, uri, transactionId);
        }
    }
}

/// Hands out one message at a time, so that the loop sees to others in between.
void Delivery::handOut()
{
    tellReports();
    if (m_failed.size() < kMostFailures && handOutNext()) {
        look();
    }
}

void Delivery::tellReports()
{
    std::vector<SessionId> sessions;
    for (const auto &[id, session] : m_sessions) {
        if (session->isSettled) {
            sessions.push_back(id);
        }
    }
    if (sessions.empty()) {
        return;
    }
    for (const MessageId id : m_inbox.reports()) {
        const Inbox::Report report = m_inbox.report(id);
        for (const SessionId session : sessions) {
            Q_EMIT reported(session, report);
        }
        m_inbox.reportTold(id);
    }
}

/// True when another message may follow.
bool Delivery::handOutNext()
{
    for (const MessageId message : m_inbox.ready()) {
        if (isHeld(message) || m_failed.count(message) > 0) {
            continue;
        }
        const auto addressees = addresseesOf(message);
        const auto given =
            std::count_if(addressees.begin(), addressees.end(),
                          [this, message](SessionId session) { return give(message, session); });
        if (given > 0) {
            return true;
        }
        if (!addressees.empty()) {
            m_failed.insert(message);
            m_again.start(m_pause);
            return m_failed.size() < kMostFailures;
        }
    }
    return false;
}

bool Delivery::give(MessageId message, SessionId session)
{
    QString path;
    const QString problem = m_inbox.handOut(message, path);
    if (!problem.isEmpty()) {
        qCWarning(kDelivery, "message %llu cannot be handed out: %s", message, qPrintable(problem));
        return false;
    }
    qCInfo(kDelivery, "message %llu is handed to session %llu", message, session);
    m_handed[path] = {message, session};
    ++m_sessions.at(session)->held;
    Q_EMIT retrieved(session, path);
    return true;
}

std::vector<SessionId> Delivery::addresseesOf(MessageId message) const
{
    const QString appId = m_inbox.appId(message);
    std::vector<SessionId> addressees;
    for (const auto &[id, session] : m_sessions) {
        const bool isFor = appId.isEmpty() ? session->isSettled && !session->hasRegistered
                                           : session->appIds.contains(appId);
        if (isFor && session->held < kMostHeld) {
            addressees.push_back(id);
        }
    }
    return addressees;
}

bool Delivery::isHeld(MessageId message) const
{
    return std::any_of(m_handed.begin(), m_handed.end(),
                       [message](const auto &entry) { return entry.second.message == message; });
}

void Delivery::confirm(const QString &path)
{
    if (m_handed.count(path) > 0) {
        letGo(path, true);
    }
}

void Delivery::confirmMissing()
{
    QStringList missing;
    for (const auto &[path, handed] : m_handed) {
        if (!QFile::exists(path)) {
            missing.append(path);
        }
    }
    std::for_each(missing.cbegin(), missing.cend(), [this](const QString &path) { confirm(path); });
}

/// Ends that a session holds a message.
void Delivery::letGo(const QString &path, bool isConfirmed)
{
    const Handed handed = m_handed.at(path);
    m_handed.erase(path);
    const auto session = m_sessions.find(handed.session);
    if (session != m_sessions.end()) {
        --session->second->held;
    }
    if (isConfirmed && m_delivered.insert(handed.message).second) {
        qCInfo(kDelivery, "message %llu is delivered", handed.message);
        m_inbox.delivered(handed.message);
    }
    if (!isHeld(handed.message)) {
        m_delivered.erase(handed.message);
    }
    look();
}

} // namespace wmsg::proxy

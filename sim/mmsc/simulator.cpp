// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/simulator.h"

#include "sim/mmsc/push_socket_path.h"
#include "sim/mmsc/short_message_path.h"

#include <QtCore/QFile>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr qint64 kLongestPlan = qint64(1) << 20;
constexpr unsigned kConnections = 200;
constexpr unsigned kIdleSeconds = 30;

int milliseconds(double seconds)
{
    return std::max(1, qRound(seconds * 1000));
}

Deliveries::Settings deliverySettings(const Options &options)
{
    Deliveries::Settings settings;
    settings.notifyAgain = milliseconds(options.notifyAgain);
    settings.pushRetry = milliseconds(options.pushRetry);
    settings.mostBytes = options.maxStored;
    return settings;
}

HttpServer::Settings serverSettings(const Options &options)
{
    HttpServer::Settings settings;
    settings.port = static_cast<quint16>(options.port);
    settings.largestBody = options.maxSize;
    settings.connections = kConnections;
    settings.idleSeconds = kIdleSeconds;
    return settings;
}

std::unique_ptr<NotificationPath> pathTo(const QString &way)
{
    if (way.startsWith(kShortMessages)) {
        return std::make_unique<ShortMessagePath>(way.sliced(kShortMessages.size()));
    }
    return std::make_unique<PushSocketPath>(way);
}

} // namespace

Simulator::Simulator(Options options) : m_options(std::move(options)) { }

Simulator::~Simulator()
{
    m_server.reset();
    m_deliveries.reset();
}

QString Simulator::readFaults()
{
    if (!m_options.faultFile.empty()) {
        const QString name = QString::fromStdString(m_options.faultFile);
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            return u"%1: %2"_s.arg(name, file.errorString());
        }
        QString problem = m_plan.read(name, QString::fromUtf8(file.read(kLongestPlan)));
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    for (const std::string &line : m_options.faults) {
        QString problem = m_plan.read(u"--fault"_s, QString::fromStdString(line));
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return {};
}

NotificationPath *Simulator::pathBy(const QString &way)
{
    std::unique_ptr<NotificationPath> &path = m_paths[way];
    if (!path) {
        path = pathTo(way);
    }
    return path.get();
}

void Simulator::addSubscribers()
{
    QString address;
    QString way;
    for (const std::string &subscriber : m_options.subscribers) {
        if (readSubscriber(subscriber, address, way).isEmpty()) {
            m_subscribers.add(address, pathBy(way));
        }
    }
    if (!m_options.defaultPush.empty()) {
        m_subscribers.setOthers(pathBy(QString::fromStdString(m_options.defaultPush)));
    }
}

QString Simulator::start()
{
    if (!m_options.pduLog.empty()) {
        QString problem = m_log.open(QString::fromStdString(m_options.pduLog));
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    addSubscribers();
    m_deliveries =
        std::make_unique<Deliveries>(deliverySettings(m_options), m_subscribers, m_plan, m_log);
    Mmsc::Settings settings;
    settings.sender = QString::fromStdString(m_options.sender);
    settings.keepFor = m_options.keep;
    m_mmsc = std::make_unique<Mmsc>(settings, m_subscribers, *m_deliveries, m_log);
    m_server = std::make_unique<HttpServer>(
        serverSettings(m_options), m_plan,
        [this](const HttpRequest &request) { return m_mmsc->answer(request); });
    QString problem = m_server->listen();
    m_deliveries->setBase(url());
    return problem;
}

QString Simulator::url() const
{
    return u"http://127.0.0.1:%1/"_s.arg(m_server->port());
}

} // namespace wmsg::sim

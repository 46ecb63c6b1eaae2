// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/gammu_modem.h"

#include <QtCore/QRegularExpression>

using namespace std::chrono_literals;

namespace wmsg::telephonyd {

namespace {

constexpr auto kWatching = 1s;

} // namespace

GammuModem::GammuModem(const GammuSettings &settings, QObject *parent)
    : Modem(parent), m_worker(new GammuWorker(settings))
{
    m_thread.setObjectName(QStringLiteral("gammu"));
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(this, &GammuModem::startWanted, m_worker, &GammuWorker::start);
    connect(this, &GammuModem::sendWanted, m_worker, &GammuWorker::send);
    connect(this, &GammuModem::forgetWanted, m_worker, &GammuWorker::forget);
    connect(this, &GammuModem::serviceCenterWanted, m_worker, &GammuWorker::setServiceCenter);
    connect(m_worker, &GammuWorker::stateChanged, this, &Modem::stateChanged);
    connect(m_worker, &GammuWorker::sent, this, &Modem::sent);
    connect(m_worker, &GammuWorker::arrived, this, &Modem::arrived);
    connect(m_worker, &GammuWorker::forgotten, this, &Modem::forgotten);
    connect(m_worker, &GammuWorker::serviceCenterSet, this, &Modem::serviceCenterSet);
    m_watch.setInterval(kWatching);
    connect(&m_watch, &QTimer::timeout, this, [this] { m_worker->abortIfGone(); });
    m_thread.start();
}

GammuModem::~GammuModem()
{
    m_worker->abort();
    m_thread.quit();
    m_thread.wait();
}

void GammuModem::start()
{
    m_watch.start();
    Q_EMIT startWanted();
}

void GammuModem::send(const OutgoingSms &message)
{
    Q_EMIT sendWanted(message);
}

void GammuModem::forget(const QByteArray &place)
{
    if (!place.isEmpty()) {
        Q_EMIT forgetWanted(place);
    }
}

void GammuModem::setServiceCenter(const QByteArray &number)
{
    Q_EMIT serviceCenterWanted(number);
}

std::unique_ptr<Modem> makeGammuModem(const GammuSettings &settings, QString &problem)
{
    static const QRegularExpression connection(QStringLiteral("^(at[0-9]*|irdaat|blueat)$"));
    if (settings.device.isEmpty()) {
        problem = QStringLiteral("the back end gammu needs the device of a modem");
    } else if (!connection.match(settings.connection).hasMatch()) {
        problem = QStringLiteral("%1: this is no connection to an AT modem, such as at115200")
                      .arg(settings.connection);
    } else {
        return std::make_unique<GammuModem>(settings);
    }
    return nullptr;
}

} // namespace wmsg::telephonyd

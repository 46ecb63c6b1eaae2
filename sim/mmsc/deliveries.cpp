// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/deliveries.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

Q_LOGGING_CATEGORY(logDeliveries, "wmsg.sim.mmsc", QtInfoMsg)

constexpr quint8 kExpired = 128;
constexpr quint8 kRetrieved = 129;
constexpr quint8 kRejected = 130;
constexpr quint8 kUnreachable = 135;
constexpr qint64 kLongestTimer = 86400000; // a day
constexpr qsizetype kMostReports = 1000;
constexpr qint64 kOverhead = 2048; // what a recipient takes beside the header that he is sent

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

// Nobody guesses 128 bits.
QByteArray unguessable()
{
    std::array<quint32, 4> words = {};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    return QByteArray(reinterpret_cast<const char *>(words.data()), sizeof words).toHex();
}

QByteArray headOf(const Message &message, const QString &transactionId)
{
    RetrieveConf conf;
    conf.transactionId = transactionId;
    conf.messageId = message.id;
    conf.from = message.shownSender();
    conf.received = message.received;
    return encodedHead(conf, message.request);
}

int untilThen(qint64 moment)
{
    return static_cast<int>(std::clamp<qint64>(moment - now(), 0, kLongestTimer));
}

} // namespace

Deliveries::Deliveries(const Settings &settings, const Subscribers &subscribers, FaultPlan &plan,
                       PduLog &log, QObject *parent)
    : QObject(parent), m_settings(settings), m_subscribers(subscribers), m_plan(plan), m_log(log)
{
}

Deliveries::~Deliveries() = default;

bool Deliveries::hasRoomFor(qint64 bytes, qint64 recipients) const
{
    return bytes + recipients * kOverhead <= m_settings.mostBytes - m_bytes;
}

bool Deliveries::canBeHandedOut(const Message &message)
{
    return !headOf(message, QString::fromLatin1(unguessable())).isEmpty();
}

void Deliveries::add(const std::shared_ptr<const Message> &message,
                     const QList<WMFMEntry> &recipients)
{
    m_bytes += message->request.bytes().size();
    for (const WMFMEntry &to : recipients) {
        addFor(message, to);
    }
    if (message.use_count() == 1) {
        m_bytes -= message->request.bytes().size(); // none of them lives here
    }
}

void Deliveries::addFor(const std::shared_ptr<const Message> &message, const WMFMEntry &to)
{
    NotificationPath *path = m_subscribers.pathTo(to.getEntryVal());
    if (!path) {
        report(*message, to, kUnreachable);
        return;
    }
    auto delivery = std::make_shared<Delivery>();
    delivery->message = message;
    delivery->to = to;
    delivery->location = unguessable();
    delivery->notifyId = u'N' + QString::fromLatin1(unguessable());
    delivery->retrieveId = u'R' + QString::fromLatin1(unguessable());
    delivery->head = headOf(*message, delivery->retrieveId);
    m_bytes += delivery->head.size() + kOverhead;
    m_byLocation.insert(delivery->location, delivery);
    m_byNotification.insert(delivery->notifyId, delivery);
    m_byRetrieval.insert(delivery->retrieveId, delivery);
    delivery->expiry.setSingleShot(true);
    connect(&delivery->expiry, &QTimer::timeout, this,
            [this, location = delivery->location] { expire(location); });
    delivery->expiry.start(untilThen(message->expiresAt));
    notify(*delivery, *path);
}

PushLoop::Pauses Deliveries::pauses(bool awaitAnswer) const
{
    return {m_settings.pushRetry, awaitAnswer ? m_settings.notifyAgain : 0};
}

void Deliveries::notify(Delivery &delivery, NotificationPath &path)
{
    // The loop ends with the delivery.
    delivery.notifications =
        std::make_unique<PushLoop>(path, m_plan, Occasion::Notify, pauses(true),
                                   [this, &delivery] { return notificationOf(delivery); });
    logPushes(*delivery.notifications);
    delivery.notifications->start(std::max<qint64>(0, delivery.message->notBefore - now()));
}

void Deliveries::logPushes(const PushLoop &loop)
{
    connect(&loop, &PushLoop::heard, this, [this](const QByteArray &pdu) { m_log.out(pdu); });
}

QByteArray Deliveries::notificationOf(const Delivery &delivery) const
{
    const Message &message = *delivery.message;
    NotificationInd notification;
    notification.transactionId = delivery.notifyId;
    notification.from = message.shownSender();
    notification.subject = message.request.header().subject;
    if (message.request.has(MMS_FIELD_MSG_CLASS)) {
        notification.messageClass = message.request.header().msgClass;
    }
    notification.size = delivery.size();
    notification.expiresIn = (message.expiresAt - now() + 999) / 1000;
    notification.location = m_base + QString::fromLatin1(delivery.location);
    return encoded(notification);
}

const Delivery *Deliveries::at(const QByteArray &location) const
{
    return m_byLocation.value(location).get();
}

bool Deliveries::notificationAnswered(const QString &transactionId, quint8 status,
                                      bool reportAllowed)
{
    const Shared delivery = m_byNotification.value(transactionId);
    if (!delivery) {
        return false;
    }
    delivery->notifications.reset();
    if (status == kRetrieved || status == kRejected) {
        end(delivery, status, reportAllowed);
    }
    return true;
}

bool Deliveries::acknowledged(const QString &transactionId, bool reportAllowed)
{
    const Shared delivery = m_byRetrieval.value(transactionId);
    if (!delivery) {
        return false;
    }
    end(delivery, kRetrieved, reportAllowed);
    return true;
}

void Deliveries::expire(const QByteArray &location)
{
    const Shared delivery = m_byLocation.value(location);
    if (delivery->message->expiresAt > now()) {
        delivery->expiry.start(untilThen(delivery->message->expiresAt));
        return;
    }
    end(delivery, kExpired, true);
}

void Deliveries::end(const Shared &delivery, quint8 status, bool reportAllowed)
{
    qCInfo(logDeliveries, "message %s ends with status %d", qUtf8Printable(delivery->message->id),
           status);
    m_byLocation.remove(delivery->location);
    m_byNotification.remove(delivery->notifyId);
    m_byRetrieval.remove(delivery->retrieveId);
    delivery->notifications.reset();
    delivery->expiry.stop();
    m_bytes -= delivery->head.size() + kOverhead;
    if (delivery->message.use_count() == 1) {
        m_bytes -= delivery->message->request.bytes().size();
    }
    if (reportAllowed) {
        report(*delivery->message, delivery->to, status);
    }
}

void Deliveries::report(const Message &message, const WMFMEntry &to, quint8 status)
{
    NotificationPath *path = m_subscribers.pathTo(message.sender.getEntryVal());
    if (!message.wantsReports || !path) {
        return;
    }
    DeliveryInd report;
    report.messageId = message.id;
    report.to = to;
    report.date = QDateTime::currentDateTimeUtc();
    report.status = status;
    auto *loop = new PushLoop(*path, m_plan, Occasion::Report, pauses(false),
                              [pdu = encoded(report)] { return pdu; });
    loop->setParent(this);
    logPushes(*loop);
    connect(loop, &PushLoop::pushed, this, [this, loop] { forgetReport(loop); });
    m_reports.enqueue(loop);
    if (m_reports.size() > kMostReports) {
        qCWarning(logDeliveries, "a delivery report is given up: too many wait");
        m_reports.dequeue()->deleteLater();
    }
    loop->start(0);
}

void Deliveries::forgetReport(PushLoop *loop)
{
    m_reports.removeOne(loop);
    loop->deleteLater(); // it is the one that calls
}

} // namespace wmsg::sim

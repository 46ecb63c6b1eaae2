// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/pdu_log.h"
#include "sim/mmsc/pdus.h"
#include "sim/mmsc/push_loop.h"
#include "sim/mmsc/subscribers.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QTimer>

#include <memory>

namespace wmsg::sim {

/// A message that was accepted; its recipients share it.
struct Message {
    ReceivedPdu request;
    QString id;
    WMFMEntry sender;
    bool senderIsHidden = false;
    bool wantsReports = false;
    QDateTime received;
    qint64 expiresAt = 0; ///< milliseconds since 1970
    qint64 notBefore = 0; ///< milliseconds since 1970; 0: at once

    [[nodiscard]] WMFMEntry shownSender() const { return senderIsHidden ? WMFMEntry() : sender; }
};

/// One recipient's share of a message.
struct Delivery {
    std::shared_ptr<const Message> message;
    WMFMEntry to;
    QByteArray location; ///< the path of the URL, without the slash
    QString notifyId; ///< the transaction that the notification begins
    QString retrieveId; ///< the transaction that the retrieval begins
    QByteArray head; ///< of the retrieve confirmation
    std::unique_ptr<PushLoop> notifications; ///< Null once they have been answered.
    QTimer expiry;

    /// How many bytes the recipient fetches.
    [[nodiscard]] qint64 size() const
    {
        return head.size() + message->request.bytes().size() - message->request.contentStart();
    }
};

/// The messages on their way: notifies each recipient until the notification is answered, hands out
/// what is fetched, tells the sender what became of it, and forgets it then.
class Deliveries : public QObject {
    Q_OBJECT

public:
    struct Settings {
        int notifyAgain = 0; ///< milliseconds until an unanswered notification is repeated
        int pushRetry = 0; ///< milliseconds until a phone is tried again that was not there
        qint64 mostBytes = 0; ///< of all messages that are kept, and of what they take beside
    };

    /// All three are used as long as this object lives.
    Deliveries(const Settings &settings, const Subscribers &subscribers, FaultPlan &plan,
               PduLog &log, QObject *parent = nullptr);
    ~Deliveries() override;

    /// Where messages are fetched: "http://host:port/".
    void setBase(const QString &url) { m_base = url; }

    [[nodiscard]] bool hasRoomFor(qint64 bytes, qint64 recipients) const;
    /// Tells whether a message with such a header can be handed out at all.
    [[nodiscard]] static bool canBeHandedOut(const Message &message);
    /// Takes a message for all of `recipients` over.
    void add(const std::shared_ptr<const Message> &message, const QList<WMFMEntry> &recipients);

    /// Null: there is nothing to fetch.
    [[nodiscard]] const Delivery *at(const QByteArray &location) const;
    /// A notification was answered with an MMS status. False: it is none that is awaited.
    bool notificationAnswered(const QString &transactionId, quint8 status, bool reportAllowed);
    /// A retrieval was acknowledged. False as above.
    bool acknowledged(const QString &transactionId, bool reportAllowed);

    /// What is kept takes.
    [[nodiscard]] qint64 bytes() const { return m_bytes; }

private:
    using Shared = std::shared_ptr<Delivery>;

    void addFor(const std::shared_ptr<const Message> &message, const WMFMEntry &to);
    void notify(Delivery &delivery, NotificationPath &path);
    void logPushes(const PushLoop &loop);
    [[nodiscard]] QByteArray notificationOf(const Delivery &delivery) const;
    void expire(const QByteArray &location);
    void end(const Shared &delivery, quint8 status, bool reportAllowed);
    void report(const Message &message, const WMFMEntry &to, quint8 status);
    void forgetReport(PushLoop *loop);
    [[nodiscard]] PushLoop::Pauses pauses(bool awaitAnswer) const;

    Settings m_settings;
    const Subscribers &m_subscribers;
    FaultPlan &m_plan;
    PduLog &m_log;
    QString m_base;
    QHash<QByteArray, Shared> m_byLocation;
    QHash<QString, Shared> m_byNotification;
    QHash<QString, Shared> m_byRetrieval;
    QQueue<PushLoop *> m_reports; // children of this object
    qint64 m_bytes = 0;
};

} // namespace wmsg::sim

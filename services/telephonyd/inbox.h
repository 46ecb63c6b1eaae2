// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/telephonyd/concatenation.h"
#include "services/telephonyd/incoming_record.h"
#include "services/telephonyd/modem.h"
#include "services/telephonyd/spool.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <chrono>
#include <map>
#include <vector>

namespace wmsg::telephonyd {

/// Inbox is all that came in: whole messages that wait for somebody, parts that wait for others,
/// and the memory of what is over, so that a short message that the modem tells again is known.
///
/// A short message is durable here before the modem is asked to forget it. One that cannot be kept
/// stays in the modem, and keeping it is tried again.
class Inbox : public QObject {
    Q_OBJECT

public:
    /// How many messages may wait, and how many bytes of them; how many parts. Beyond that, whole
    /// messages stay in the modem, and the set of parts that waits longest is given up.
    static constexpr size_t kMostWaiting = 10000;
    static constexpr qsizetype kMostBytes = qsizetype(32) * 1024 * 1024;
    static constexpr size_t kMostParts = 2000;
    /// How much of what is over is remembered, and for how long by its place in the modem.
    static constexpr size_t kMostRemembered = 1000;
    static constexpr std::chrono::hours kMemory{30 * 24};
    /// The times of a part and of its repetition lie no farther apart, in seconds.
    static constexpr qint64 kRepetition = 3600;
    /// How many short messages are held that cannot be kept.
    static constexpr qsizetype kMostHeld = 1000;

    Inbox(Spool &spool, std::chrono::milliseconds partLifetime, QObject *parent = nullptr);

    /// restore reads the spool, once, after it was opened.
    void restore();

    /// arrived takes what the modem tells. safe() tells when the modem may forget it.
    void arrived(const IncomingSms &sms);
    /// forgotten tells that nothing lies at a place in the modem any more.
    void forgotten(const QByteArray &place);

    /// waiting returns the ids of the messages that nobody has taken, oldest first.
    [[nodiscard]] std::vector<quint64> waiting() const;
    /// find returns a message that nobody has taken; null when there is none of this id.
    [[nodiscard]] const telephony::Message *find(quint64 id) const;
    /// taken tells that somebody has a message.
    void taken(quint64 id);

Q_SIGNALS:
    /// safe tells that what lies at `place` is durable here.
    void safe(const QByteArray &place);
    /// added tells of a message that is whole now.
    void added(quint64 id);

private:
    using Kind = IncomingRecord::Kind;

    void restorePart(RecordId id, const IncomingRecord &part);
    void leavePlace(const IncomingRecord &record);
    [[nodiscard]] bool isKnown(const IncomingRecord &record) const;
    [[nodiscard]] QString keep(const IncomingRecord &record);
    [[nodiscard]] QString makeRoom(const IncomingRecord &record);
    void settle(const IncomingRecord &record);
    void tell(const telephony::Message &message);
    void hold(const IncomingSms &sms, const QString &problem);
    void tryAgain();

    void assemble();
    [[nodiscard]] QString assemble(const Concatenation::Records &parts);
    [[nodiscard]] IncomingRecord wholeOf(const Concatenation::Records &parts) const;
    void setAside(const Concatenation::Records &parts);
    void giveUp(const Concatenation::GivenUp &set);
    void giveUpExpired();
    void armExpiry();

    void put(RecordId id, const IncomingRecord &record);
    void drop(RecordId id);
    void erase(RecordId id);
    void becomeOver(RecordId id);
    void forgetOld();

    Spool &m_spool;
    const std::chrono::milliseconds m_partLifetime;
    Concatenation m_concatenation;
    std::map<RecordId, IncomingRecord> m_records;
    std::map<quint64, RecordId> m_whole; ///< by the ids of the messages
    qsizetype m_bytes = 0; ///< of the bodies of whole messages
    QList<IncomingSms> m_held;
    QTimer m_retry;
    QTimer m_expiry;
};

} // namespace wmsg::telephonyd

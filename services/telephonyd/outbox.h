// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/telephonyd/modem.h"
#include "services/telephonyd/outgoing_record.h"
#include "services/telephonyd/spool.h"

#include <QtCore/QByteArray>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <chrono>
#include <map>
#include <utility>

namespace wmsg::telephonyd {

/// Outbox is all that clients sent: messages that wait for the modem, and results that wait for
/// their client. A message is durable before the modem gets it, its result before the client does.
///
/// Messages go out in the order in which they came. What network or modem refuse is a result; what
/// the modem did not take waits until it is ready again, and is given up after a time.
class Outbox : public QObject {
    Q_OBJECT

public:
    /// How many messages and results there may be, and how many of one client; more are given up
    /// at once.
    static constexpr size_t kMost = 10000;
    static constexpr size_t kMostOfOne = 2000;
    /// For how long a client may be gone before its results are forgotten.
    static constexpr std::chrono::hours kAbsence{24};

    Outbox(Spool &spool, Modem &modem, std::chrono::milliseconds giveUp,
           std::chrono::milliseconds absence = kAbsence, QObject *parent = nullptr);

    /// restore reads the spool, once, after it was opened.
    void restore();

    /// clientCame tells that a client is there; results() are what it has to be told.
    void clientCame(const QByteArray &client);
    void clientWent(const QByteArray &client);
    [[nodiscard]] QList<telephony::Result> results(const QByteArray &client) const;

    /// take takes a message over. One that is known, by its client and reference, is not sent
    /// again; finished() then tells its result again, if it has one.
    void take(const QByteArray &client, const telephony::Send &send);
    /// resultTaken forgets a message whose result was told.
    void resultTaken(const QByteArray &client, qint32 reference);

    /// setReady tells whether the modem sends now.
    void setReady(bool isReady);

    /// stop hands no further message to the modem. isSending() tells whether the outcome of one is
    /// awaited; idle() tells when it is not any more.
    void stop();
    [[nodiscard]] bool isSending() const { return m_sending != 0; }

Q_SIGNALS:
    /// finished tells the result of a message.
    void finished(const QByteArray &client, const wmsg::telephony::Result &result);
    void idle();

private:
    using Name = std::pair<QByteArray, qint32>;

    [[nodiscard]] size_t countOf(const QByteArray &client) const;
    void end(RecordId id, qint32 status, qint32 networkReference);
    void sent(quint64 id, const SendOutcome &outcome);
    void sendNext();
    void put(RecordId id, const OutgoingRecord &record, QDeadlineTimer giveUp);
    void erase(RecordId id);
    void lookAtClock();
    void forgetResults();
    void armClock();

    Spool &m_spool;
    Modem &m_modem;
    const std::chrono::milliseconds m_giveUp;
    const std::chrono::milliseconds m_absence;
    std::map<RecordId, OutgoingRecord> m_records;
    std::map<Name, RecordId> m_names;
    std::map<RecordId, QDeadlineTimer> m_unsent; ///< and when they are given up
    QHash<QByteArray, QDeadlineTimer> m_gone; ///< clients, and when their results are forgotten
    RecordId m_sending = 0;
    bool m_isReady = false;
    bool m_isStopped = false;
    std::chrono::milliseconds m_pause;
    QTimer m_retry;
    QTimer m_clock;
};

} // namespace wmsg::telephonyd

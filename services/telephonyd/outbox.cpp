// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/outbox.h"

#include <platform/telephony/tapi_sms.h>

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <iterator>
#include <limits>
#include <vector>

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kOutbox, "wmsg.outbox", QtInfoMsg)

// The pauses after a modem that is ready did not take a message, each twice the one before.
constexpr std::chrono::milliseconds kFirstPause(1000);
constexpr std::chrono::milliseconds kLongestPause(60 * 1000);

constexpr qint32 kHighestCause = 65535;

void logProblem(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kOutbox, "%ls", qUtf16Printable(problem));
    }
}

telephony::Result resultOf(qint32 reference, qint32 status, qint32 networkReference = 0)
{
    telephony::Result result;
    result.reference = reference;
    result.networkReference = networkReference;
    result.status = status;
    return result;
}

} // namespace

Outbox::Outbox(Spool &spool, Modem &modem, std::chrono::milliseconds giveUp,
               std::chrono::milliseconds absence, QObject *parent)
    : QObject(parent), m_spool(spool), m_modem(modem), m_giveUp(giveUp), m_absence(absence),
      m_pause(kFirstPause)
{
    m_retry.setSingleShot(true);
    m_clock.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &Outbox::sendNext);
    connect(&m_clock, &QTimer::timeout, this, &Outbox::lookAtClock);
    connect(&m_modem, &Modem::sent, this, &Outbox::sent);
}

void Outbox::restore()
{
    for (const Spool::Stored &stored : m_spool.restore(Spool::Box::Out)) {
        QString reason;
        const auto record = OutgoingRecord::fromJson(stored.record, reason);
        if (!record || m_names.count({record->client, record->send.reference}) > 0) {
            m_spool.setAside(Spool::Box::Out, stored.id,
                             record ? QStringLiteral("there are two of it") : reason);
            continue;
        }
        put(stored.id, *record, QDeadlineTimer(timeLeft(record->taken, m_giveUp)));
        m_gone.insert(record->client, QDeadlineTimer(m_absence));
    }
    armClock();
}

void Outbox::clientCame(const QByteArray &client)
{
    m_gone.remove(client);
    armClock();
}

size_t Outbox::countOf(const QByteArray &client) const
{
    size_t count = 0;
    for (auto name = m_names.lower_bound({client, std::numeric_limits<qint32>::min()});
         name != m_names.end() && name->first.first == client; ++name) {
        ++count;
    }
    return count;
}

void Outbox::clientWent(const QByteArray &client)
{
    if (countOf(client) > 0) {
        m_gone.insert(client, QDeadlineTimer(m_absence));
        armClock();
    }
}

QList<telephony::Result> Outbox::results(const QByteArray &client) const
{
    QList<telephony::Result> all;
    for (const auto &[id, record] : m_records) {
        if (record.client == client && record.result) {
            all.append(*record.result);
        }
    }
    return all;
}

void Outbox::take(const QByteArray &client, const telephony::Send &send)
{
    const auto known = m_names.find({client, send.reference});
    if (known != m_names.end()) {
        const auto result = m_records.at(known->second).result;
        if (result) {
            Q_EMIT finished(client, *result);
        }
        return;
    }
    const QString problem = problemOf(send);
    if (!problem.isEmpty()) {
        qCWarning(kOutbox, "a message is refused: %ls", qUtf16Printable(problem));
        Q_EMIT finished(client, resultOf(send.reference, TAPI_SMS_MALFORMED));
        return;
    }
    OutgoingRecord record;
    record.client = client;
    record.taken = currentTime();
    record.send = send;
    const RecordId id = m_spool.nextId();
    const QString refusal = m_records.size() >= kMost || countOf(client) >= kMostOfOne
        ? QStringLiteral("too many messages and results wait")
        : m_spool.write(Spool::Box::Out, id, record.toJson());
    if (!refusal.isEmpty()) {
        qCWarning(kOutbox, "a message cannot be taken: %ls", qUtf16Printable(refusal));
        Q_EMIT finished(client, resultOf(send.reference, TAPI_SMS_GIVEN_UP));
        return;
    }
    put(id, record, QDeadlineTimer(m_giveUp));
    armClock();
    sendNext();
}

void Outbox::resultTaken(const QByteArray &client, qint32 reference)
{
    const auto known = m_names.find({client, reference});
    if (known != m_names.end() && m_records.at(known->second).result) {
        erase(known->second);
    }
}

void Outbox::setReady(bool isReady)
{
    m_isReady = isReady;
    m_pause = kFirstPause;
    m_retry.stop();
    sendNext();
}

void Outbox::stop()
{
    m_isStopped = true;
    m_retry.stop();
    m_clock.stop();
}

void Outbox::sendNext()
{
    if (!m_isReady || m_isStopped || isSending() || m_retry.isActive() || m_unsent.empty()) {
        return;
    }
    m_sending = m_unsent.begin()->first;
    m_modem.send(outgoingSms(m_sending, m_records.at(m_sending).send));
}

void Outbox::sent(quint64 id, const SendOutcome &outcome)
{
    if (id != m_sending || !isSending()) {
        return;
    }
    m_sending = 0;
    switch (outcome.kind) {
    case SendOutcome::Sent:
        qCInfo(kOutbox, "message %llu is sent", id);
        m_pause = kFirstPause;
        end(id, TAPI_SMS_SENT, outcome.networkReference);
        break;
    case SendOutcome::Refused:
        qCWarning(kOutbox, "message %llu is refused (%d): %ls", id, outcome.cause,
                  qUtf16Printable(outcome.text));
        m_pause = kFirstPause;
        end(id, std::clamp(outcome.cause, 1, kHighestCause), outcome.networkReference);
        break;
    case SendOutcome::NotNow:
        qCInfo(kOutbox, "message %llu waits for the modem: %ls", id, qUtf16Printable(outcome.text));
        m_retry.start(m_pause);
        m_pause = std::min(2 * m_pause, kLongestPause);
        break;
    }
    lookAtClock();
    sendNext();
    if (!isSending()) {
        Q_EMIT idle();
    }
}

void Outbox::end(RecordId id, qint32 status, qint32 networkReference)
{
    OutgoingRecord &record = m_records.at(id);
    record.result = resultOf(record.send.reference, status, networkReference);
    record.send.body.clear();
    m_unsent.erase(id);
    // A result that cannot be written down is told all the same; after another start the message
    // would be sent again.
    logProblem(m_spool.write(Spool::Box::Out, id, record.toJson()));
    const OutgoingRecord told = record;
    Q_EMIT finished(told.client, *told.result);
}

void Outbox::put(RecordId id, const OutgoingRecord &record, QDeadlineTimer giveUp)
{
    m_records[id] = record;
    m_names[{record.client, record.send.reference}] = id;
    if (!record.result) {
        m_unsent[id] = giveUp;
    }
}

void Outbox::erase(RecordId id)
{
    logProblem(m_spool.remove(Spool::Box::Out, id));
    const OutgoingRecord record = m_records.at(id);
    m_names.erase({record.client, record.send.reference});
    m_records.erase(id);
}

void Outbox::lookAtClock()
{
    std::vector<RecordId> late;
    for (const auto &[id, deadline] : m_unsent) {
        if (deadline.hasExpired() && id != m_sending) {
            late.push_back(id);
        }
    }
    for (const RecordId id : late) {
        qCWarning(kOutbox, "message %llu is given up: the modem did not take it for too long", id);
        end(id, TAPI_SMS_GIVEN_UP, 0);
    }
    forgetResults();
    armClock();
}

void Outbox::forgetResults()
{
    std::vector<RecordId> old;
    for (const auto &[id, record] : m_records) {
        const auto gone = m_gone.constFind(record.client);
        if (record.result && gone != m_gone.cend() && gone->hasExpired()) {
            old.push_back(id);
        }
    }
    for (const RecordId id : old) {
        qCInfo(kOutbox, "the result of message %llu is forgotten: its client is gone", id);
        erase(id);
    }
    for (auto gone = m_gone.begin(); gone != m_gone.end();) {
        gone = countOf(gone.key()) > 0 ? std::next(gone) : m_gone.erase(gone);
    }
}

void Outbox::armClock()
{
    QDeadlineTimer next(QDeadlineTimer::Forever);
    for (const auto &[id, deadline] : m_unsent) {
        next = id == m_sending ? next : std::min(next, deadline);
    }
    for (const auto &[id, record] : m_records) {
        const auto gone = m_gone.constFind(record.client);
        if (record.result && gone != m_gone.cend()) {
            next = std::min(next, *gone);
        }
    }
    if (next.isForever() || m_isStopped) {
        m_clock.stop();
        return;
    }
    m_clock.start(
        static_cast<int>(std::min<qint64>(next.remainingTime(), std::numeric_limits<int>::max())));
}

} // namespace wmsg::telephonyd

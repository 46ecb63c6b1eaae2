// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/inbox.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kInbox, "wmsg.inbox", QtInfoMsg)

// The pauses before keeping is tried again, each twice the one before.
constexpr std::chrono::milliseconds kFirstPause(1000);
constexpr std::chrono::milliseconds kLongestPause(5 * 60 * 1000);

void logProblem(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kInbox, "%ls", qUtf16Printable(problem));
    }
}

bool areNear(qint64 one, qint64 other, qint64 distance)
{
    qint64 difference = 0;
    return !qSubOverflow(std::max(one, other), std::min(one, other), &difference)
        && difference <= distance;
}

/// Whether a part is a repetition of a known one with the same digest. Where one of them has no
/// time, it must have been kept not long ago.
bool isRepetition(const Segment &known, qint64 kept, const Segment &part)
{
    constexpr qint64 kMilliseconds = 1000;
    if (!known.place.isEmpty() && known.place == part.place && known.time == part.time) {
        return true;
    }
    return known.time != 0 && part.time != 0
        ? areNear(known.time, part.time, Inbox::kRepetition)
        : areNear(kept, currentTime(), Inbox::kRepetition * kMilliseconds);
}

} // namespace

Inbox::Inbox(Spool &spool, std::chrono::milliseconds partLifetime, QObject *parent)
    : QObject(parent), m_spool(spool), m_partLifetime(partLifetime), m_concatenation(partLifetime)
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(kFirstPause);
    m_expiry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &Inbox::tryAgain);
    connect(&m_expiry, &QTimer::timeout, this, &Inbox::giveUpExpired);
}

void Inbox::restore()
{
    std::vector<std::pair<RecordId, IncomingRecord>> parts;
    for (const Spool::Stored &stored : m_spool.restore(Spool::Box::In)) {
        QString reason;
        const auto record = IncomingRecord::fromJson(stored.record, reason);
        if (!record) {
            m_spool.setAside(Spool::Box::In, stored.id, reason);
        } else if (record->isPart()) {
            parts.emplace_back(stored.id, *record);
        } else {
            put(stored.id, *record);
        }
    }
    for (const auto &[id, part] : parts) {
        restorePart(id, part);
    }
    forgetOld();
    assemble();
    giveUpExpired();
}

void Inbox::restorePart(RecordId id, const IncomingRecord &part)
{
    if (isKnown(part)) {
        // It is in a message already: removing it was cut off.
        logProblem(m_spool.remove(Spool::Box::In, id));
        return;
    }
    put(id, part);
    m_concatenation.add(id, part, QDeadlineTimer(timeLeft(part.kept, m_partLifetime)));
}

void Inbox::arrived(const IncomingSms &sms)
{
    const IncomingRecord record = incomingRecord(sms);
    leavePlace(record);
    if (isKnown(record)) {
        qCInfo(kInbox, "a short message came again, and is not taken twice");
        Q_EMIT safe(sms.place);
        return;
    }
    const QString problem = keep(record);
    if (!problem.isEmpty()) {
        hold(sms, problem);
        return;
    }
    Q_EMIT safe(sms.place);
    settle(record);
}

/// Where another short message lies now, those that are remembered lie no more.
void Inbox::leavePlace(const IncomingRecord &record)
{
    const Segment &segment = record.segments.first();
    if (segment.place.isEmpty()) {
        return;
    }
    for (auto &[id, known] : m_records) {
        for (Segment &other : known.segments) {
            if (other.place == segment.place
                && (other.digest != segment.digest || other.time != segment.time)) {
                other.place.clear();
            }
        }
    }
}

/// A part is known by what it is; a message of one part by its place too, for people do send the
/// same text twice.
bool Inbox::isKnown(const IncomingRecord &record) const
{
    const Segment &segment = record.segments.first();
    const auto isSame = [&](const Segment &other, qint64 kept) {
        return other.digest == segment.digest
            && (record.isPart() ? isRepetition(other, kept, segment)
                                : !other.place.isEmpty() && other.place == segment.place
                        && other.time == segment.time);
    };
    return std::any_of(m_records.begin(), m_records.end(), [&isSame](const auto &known) {
        const auto &segments = known.second.segments;
        return std::any_of(segments.begin(), segments.end(),
                           [&](const Segment &other) { return isSame(other, known.second.kept); });
    });
}

QString Inbox::keep(const IncomingRecord &record)
{
    QString problem = makeRoom(record);
    if (!problem.isEmpty()) {
        return problem;
    }
    const RecordId id = m_spool.nextId();
    problem = m_spool.write(Spool::Box::In, id, record.toJson());
    if (problem.isEmpty()) {
        put(id, record);
    }
    if (problem.isEmpty() && record.isPart()) {
        m_concatenation.add(id, record, QDeadlineTimer(m_partLifetime));
    }
    return problem;
}

QString Inbox::makeRoom(const IncomingRecord &record)
{
    if (!record.isPart()) {
        const bool hasRoom = m_whole.size() < kMostWaiting && m_bytes <= kMostBytes;
        return hasRoom ? QString() : u"too many messages wait"_s;
    }
    while (m_concatenation.count() >= kMostParts) {
        const auto set = m_concatenation.takeOldest();
        if (!set) {
            return u"too many parts wait"_s;
        }
        giveUp(*set);
    }
    return QString();
}

/// What follows from a record that is durable now.
void Inbox::settle(const IncomingRecord &record)
{
    forgetOld();
    if (record.isPart()) {
        assemble();
        armExpiry();
    } else {
        tell(record.message);
    }
}

/// Tells of a message that is whole; the log too, for that is where one looks for an MMS that does
/// not come.
void Inbox::tell(const telephony::Message &message)
{
    if (message.hasPorts) {
        qCInfo(kInbox, "a message to port %d is here", int(message.destinationPort));
    } else {
        qCInfo(kInbox, "a message is here");
    }
    Q_EMIT added(message.id);
}

void Inbox::hold(const IncomingSms &sms, const QString &problem)
{
    const bool isHeld = std::any_of(m_held.begin(), m_held.end(), [&sms](const IncomingSms &other) {
        return !sms.place.isEmpty() && other.place == sms.place && other.body == sms.body;
    });
    qCWarning(kInbox, "a short message cannot be kept: %ls", qUtf16Printable(problem));
    if (!isHeld && m_held.size() < kMostHeld) {
        m_held.append(sms);
    } else if (!isHeld) {
        qCWarning(kInbox, "%s", sms.place.isEmpty() ? "it is lost" : "it stays in the modem");
    }
    if (!m_retry.isActive()) {
        m_retry.start();
    }
}

void Inbox::tryAgain()
{
    const auto pause = std::min(m_retry.intervalAsDuration() * 2, kLongestPause);
    m_retry.stop();
    assemble();
    const QList<IncomingSms> held = std::exchange(m_held, {});
    for (const IncomingSms &sms : held) {
        arrived(sms);
    }
    const bool isWell = m_held.isEmpty() && !m_retry.isActive();
    m_retry.setInterval(isWell ? kFirstPause : pause);
}

void Inbox::assemble()
{
    for (const Concatenation::Records &parts : m_concatenation.complete()) {
        const QString problem = assemble(parts);
        logProblem(problem);
        if (!problem.isEmpty() && !m_retry.isActive()) {
            m_retry.start();
        }
    }
}

/// The message is durable before its parts go: what is cut off then is ended by the next start.
QString Inbox::assemble(const Concatenation::Records &parts)
{
    const IncomingRecord whole = wholeOf(parts);
    if (whole.message.body.size() > telephony::kLongestBody) {
        setAside(parts);
        return QString();
    }
    const RecordId id = m_spool.nextId();
    QString problem = m_spool.write(Spool::Box::In, id, whole.toJson());
    if (!problem.isEmpty()) {
        return problem;
    }
    put(id, whole);
    m_concatenation.remove(parts.front());
    for (const RecordId part : parts) {
        logProblem(m_spool.remove(Spool::Box::In, part));
        m_records.erase(part);
    }
    tell(whole.message);
    return QString();
}

IncomingRecord Inbox::wholeOf(const Concatenation::Records &parts) const
{
    IncomingRecord whole = m_records.at(parts.front());
    whole.kind = Kind::Whole;
    whole.kept = currentTime();
    whole.message.id = newMessageId();
    whole.message.body.clear();
    whole.segments.clear();
    for (const RecordId id : parts) {
        const IncomingRecord &part = m_records.at(id);
        whole.message.body += part.message.body;
        whole.segments += part.segments;
    }
    return whole;
}

void Inbox::setAside(const Concatenation::Records &parts)
{
    m_concatenation.remove(parts.front());
    for (const RecordId id : parts) {
        m_spool.setAside(Spool::Box::In, id, u"all parts of it are longer than a message may be"_s);
        m_records.erase(id);
    }
}

void Inbox::giveUp(const Concatenation::GivenUp &set)
{
    qCWarning(kInbox, "%zu of %d parts of a message from %s are given up: the others did not come",
              set.records.size(), set.total, set.sender.constData());
    for (const RecordId id : set.records) {
        logProblem(m_spool.remove(Spool::Box::In, id));
        m_records.erase(id);
    }
}

void Inbox::giveUpExpired()
{
    while (const auto set = m_concatenation.takeExpired()) {
        giveUp(*set);
    }
    armExpiry();
}

void Inbox::armExpiry()
{
    const QDeadlineTimer next = m_concatenation.nextExpiry();
    if (next.isForever()) {
        m_expiry.stop();
        return;
    }
    m_expiry.start(
        static_cast<int>(std::min<qint64>(next.remainingTime(), std::numeric_limits<int>::max())));
}

void Inbox::forgotten(const QByteArray &place)
{
    std::vector<RecordId> done;
    for (auto &[id, record] : m_records) {
        for (Segment &segment : record.segments) {
            if (!place.isEmpty() && segment.place == place) {
                segment.place.clear();
                // A message of many parts is remembered for the sake of repetitions.
                if (record.kind == Kind::Over && record.segments.size() == 1) {
                    done.push_back(id);
                }
            }
        }
    }
    for (const RecordId id : done) {
        erase(id);
    }
}

std::vector<quint64> Inbox::waiting() const
{
    std::vector<quint64> ids;
    for (const auto &[id, record] : m_records) {
        if (record.kind == Kind::Whole) {
            ids.push_back(record.message.id);
        }
    }
    return ids;
}

const telephony::Message *Inbox::find(quint64 id) const
{
    const auto found = m_whole.find(id);
    return found == m_whole.end() ? nullptr : &m_records.at(found->second).message;
}

void Inbox::taken(quint64 id)
{
    const auto found = m_whole.find(id);
    if (found == m_whole.end()) {
        return;
    }
    const RecordId record = found->second;
    const QList<Segment> segments = m_records.at(record).segments;
    if (segments.size() == 1 && segments.first().place.isEmpty()) {
        erase(record);
    } else {
        becomeOver(record);
    }
    if (m_retry.isActive()) {
        m_retry.start(); // there is room now
    }
}

/// It is over even where that cannot be written down.
void Inbox::becomeOver(RecordId id)
{
    IncomingRecord over;
    over.kind = Kind::Over;
    over.kept = currentTime();
    over.segments = m_records.at(id).segments;
    logProblem(m_spool.write(Spool::Box::In, id, over.toJson()));
    drop(id);
    put(id, over);
}

void Inbox::put(RecordId id, const IncomingRecord &record)
{
    m_records[id] = record;
    if (record.kind == Kind::Whole) {
        m_whole[record.message.id] = id;
        m_bytes += record.message.body.size();
    }
}

/// Forgets a record that may stay in the spool.
void Inbox::drop(RecordId id)
{
    const auto found = m_records.find(id);
    if (found != m_records.end() && found->second.kind == Kind::Whole) {
        m_whole.erase(found->second.message.id);
        m_bytes -= found->second.message.body.size();
    }
    m_records.erase(id);
}

void Inbox::erase(RecordId id)
{
    logProblem(m_spool.remove(Spool::Box::In, id));
    drop(id);
}

void Inbox::forgetOld()
{
    const qint64 now = currentTime();
    const qint64 memory = std::chrono::milliseconds(kMemory).count();
    std::vector<RecordId> over;
    for (const auto &[id, record] : m_records) {
        if (record.kind == Kind::Over) {
            over.push_back(id);
        }
    }
    for (size_t i = 0; i < over.size(); ++i) {
        if (over.size() - i > kMostRemembered || now - m_records.at(over[i]).kept > memory) {
            erase(over[i]);
        }
    }
}

} // namespace wmsg::telephonyd

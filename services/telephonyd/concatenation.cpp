// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/concatenation.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace wmsg::telephonyd {

namespace {

/// How far apart two times are; nothing is known of a time of 0. Times come from strangers.
qint64 between(qint64 one, qint64 other)
{
    qint64 difference = 0;
    if (one == 0 || other == 0) {
        return 0;
    }
    return qSubOverflow(std::max(one, other), std::min(one, other), &difference)
        ? std::numeric_limits<qint64>::max()
        : difference;
}

} // namespace

Concatenation::Key::Key(const IncomingRecord &part)
    : sender(part.message.sender), reference(part.reference), isWide(part.isWide),
      total(part.total), coding(part.message.coding), hasPorts(part.message.hasPorts),
      destinationPort(part.message.destinationPort), sourcePort(part.message.sourcePort)
{
}

bool Concatenation::Key::operator==(const Key &other) const
{
    const auto all = [](const Key &key) {
        return std::tie(key.sender, key.reference, key.isWide, key.total, key.coding, key.hasPorts,
                        key.destinationPort, key.sourcePort);
    };
    return all(*this) == all(other);
}

qint64 Concatenation::Set::distance(qint64 time) const
{
    qint64 nearest = std::numeric_limits<qint64>::max();
    for (const auto &[number, part] : parts) {
        nearest = std::min(nearest, between(part.time, time));
    }
    return nearest;
}

Concatenation::Records Concatenation::Set::records() const
{
    Records records;
    for (const auto &[number, part] : parts) {
        records.push_back(part.id);
    }
    return records;
}

void Concatenation::add(RecordId id, const IncomingRecord &part, QDeadlineTimer until)
{
    const Key key(part);
    Set *set = setFor(key, part);
    if (!set) {
        set = &m_sets.emplace_back(Set{key, {}, until});
    }
    set->parts[part.number] = {id, part.message.time};
    set->until = until;
}

Concatenation::Set *Concatenation::setFor(const Key &key, const IncomingRecord &part)
{
    const qint64 farthest = std::chrono::duration_cast<std::chrono::seconds>(m_lifetime).count();
    Set *found = nullptr;
    qint64 nearest = 0;
    for (Set &set : m_sets) {
        const qint64 distance = set.distance(part.message.time);
        if (set.key == key && set.parts.count(part.number) == 0 && distance <= farthest
            && (!found || distance < nearest)) {
            found = &set;
            nearest = distance;
        }
    }
    return found;
}

std::vector<Concatenation::Records> Concatenation::complete() const
{
    std::vector<Records> all;
    for (const Set &set : m_sets) {
        if (set.isComplete()) {
            all.push_back(set.records());
        }
    }
    return all;
}

void Concatenation::remove(RecordId id)
{
    m_sets.remove_if([id](const Set &set) {
        return std::any_of(set.parts.begin(), set.parts.end(),
                           [id](const auto &part) { return part.second.id == id; });
    });
}

std::optional<Concatenation::GivenUp> Concatenation::takeExpired()
{
    const auto set = oldest();
    return set != m_sets.end() && set->until.hasExpired() ? take(set) : std::nullopt;
}

std::optional<Concatenation::GivenUp> Concatenation::takeOldest()
{
    return take(oldest());
}

QDeadlineTimer Concatenation::nextExpiry() const
{
    QDeadlineTimer next(QDeadlineTimer::Forever);
    for (const Set &set : m_sets) {
        next = set.isComplete() ? next : std::min(next, set.until);
    }
    return next;
}

size_t Concatenation::count() const
{
    size_t count = 0;
    for (const Set &set : m_sets) {
        count += set.parts.size();
    }
    return count;
}

/// Of those that are not complete.
std::list<Concatenation::Set>::iterator Concatenation::oldest()
{
    auto found = m_sets.end();
    for (auto set = m_sets.begin(); set != m_sets.end(); ++set) {
        if (!set->isComplete() && (found == m_sets.end() || set->until < found->until)) {
            found = set;
        }
    }
    return found;
}

std::optional<Concatenation::GivenUp> Concatenation::take(std::list<Set>::iterator set)
{
    if (set == m_sets.end()) {
        return std::nullopt;
    }
    GivenUp givenUp{set->records(), set->key.sender, set->key.total};
    m_sets.erase(set);
    return givenUp;
}

} // namespace wmsg::telephonyd

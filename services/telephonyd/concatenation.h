// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/incoming_record.h"
#include "services/telephonyd/spool.h"

#include <QtCore/QByteArray>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QtGlobal>

#include <chrono>
#include <list>
#include <map>
#include <optional>
#include <vector>

namespace wmsg::telephonyd {

/// Concatenation finds the parts that belong together, in whatever order they come. Parts of one
/// message agree in sender, reference, number of parts, ports and kind of body. A sender uses its
/// references again, so a part that contradicts a set, or is older or newer than it by more than
/// the lifetime of a set, begins another one; of several sets that lack it, it joins the one that
/// is nearest in time.
///
/// It holds numbers of records and no bodies, and knows nothing of repetitions: whoever adds a part
/// has looked whether it is there already.
class Concatenation {
public:
    /// The records of a set, in the order of their numbers.
    using Records = std::vector<RecordId>;

    /// A set that will not become whole.
    struct GivenUp {
        Records records;
        QByteArray sender;
        int total = 0;
    };

    explicit Concatenation(std::chrono::milliseconds lifetime) : m_lifetime(lifetime) { }

    /// add takes a part in; its set is given up when `until` has passed with no other part.
    void add(RecordId id, const IncomingRecord &part, QDeadlineTimer until);

    /// complete returns the sets that have all their parts.
    [[nodiscard]] std::vector<Records> complete() const;
    /// remove forgets the set of a record.
    void remove(RecordId id);

    /// takeExpired gives up a set whose time is over, if there is one; takeOldest the one whose
    /// time is over first.
    [[nodiscard]] std::optional<GivenUp> takeExpired();
    [[nodiscard]] std::optional<GivenUp> takeOldest();
    /// nextExpiry returns when takeExpired() will have something; for ever when there is nothing.
    [[nodiscard]] QDeadlineTimer nextExpiry() const;

    /// count returns how many parts there are.
    [[nodiscard]] size_t count() const;

private:
    struct Key {
        explicit Key(const IncomingRecord &part);
        [[nodiscard]] bool operator==(const Key &other) const;

        QByteArray sender;
        quint16 reference;
        bool isWide;
        quint8 total;
        telephony::Coding coding;
        bool hasPorts;
        quint16 destinationPort;
        quint16 sourcePort;
    };
    struct Part {
        RecordId id;
        qint64 time;
    };
    struct Set {
        Key key;
        std::map<quint8, Part> parts;
        QDeadlineTimer until;

        [[nodiscard]] bool isComplete() const { return parts.size() == key.total; }
        [[nodiscard]] qint64 distance(qint64 time) const;
        [[nodiscard]] Records records() const;
    };

    [[nodiscard]] Set *setFor(const Key &key, const IncomingRecord &part);
    [[nodiscard]] std::optional<GivenUp> take(std::list<Set>::iterator set);
    [[nodiscard]] std::list<Set>::iterator oldest();

    const std::chrono::milliseconds m_lifetime;
    std::list<Set> m_sets;
};

} // namespace wmsg::telephonyd

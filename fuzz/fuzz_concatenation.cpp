// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a row of parts of messages, as their senders and the networks may tell them:
//
//   input := { length header time sender body }   length: uint8, of the header
//     header: a user data header with its length; time: uint8, in hours; sender, body: a byte each

#include "fuzz/fuzz_support.h"
#include "services/telephonyd/concatenation.h"

#include <QtCore/QSet>

#include <vector>

using namespace wmsg::fuzz;
using namespace wmsg::telephonyd;

namespace {

constexpr qint64 kHour = 3600;
constexpr size_t kMost = 200; // parts at a time

/// Takes bytes from the front, as many as there are.
QByteArray take(QByteArray &input, qsizetype count)
{
    const QByteArray taken = input.left(count);
    input.remove(0, taken.size());
    return taken;
}

IncomingSms nextSms(QByteArray &input)
{
    const QByteArray length = take(input, 1);
    IncomingSms sms;
    sms.header = take(input, static_cast<quint8>(length.at(0)) % 32);
    const QByteArray time = take(input, 1);
    sms.time = time.isEmpty() ? 0 : static_cast<quint8>(time.at(0)) * kHour;
    sms.sender = take(input, 1).toHex();
    sms.body = take(input, 1);
    sms.coding = wmsg::telephony::Coding::Binary;
    return sms;
}

/// What is written down of a part reads back.
IncomingRecord throughTheSpool(const IncomingRecord &record)
{
    QString reason;
    const auto read = IncomingRecord::fromJson(record.toJson(), reason);
    require(read.has_value(), "every record can be read again");
    require(read->toJson() == record.toJson(), "a record that was read is the same");
    return *read;
}

bool areOneMessage(const IncomingRecord &one, const IncomingRecord &other)
{
    return one.message.sender == other.message.sender && one.reference == other.reference
        && one.isWide == other.isWide && one.total == other.total
        && one.message.hasPorts == other.message.hasPorts
        && one.message.destinationPort == other.message.destinationPort;
}

/// Holds parts, and what became of each.
class Checked {
public:
    void add(const IncomingRecord &part)
    {
        const RecordId id = m_parts.size();
        m_parts.push_back(part);
        m_sets.add(id, part, QDeadlineTimer(QDeadlineTimer::Forever));
        m_waiting.insert(id);
        for (const Concatenation::Records &records : m_sets.complete()) {
            check(records);
            m_sets.remove(records.front());
        }
        while (m_sets.count() > kMost) {
            const auto set = m_sets.takeOldest();
            require(set.has_value(), "what is not complete can be given up");
            require(set->records.size() < size_t(set->total), "what is complete is not given up");
            leave(set->records);
        }
        require(m_sets.count() == size_t(m_waiting.size()), "no part is lost");
    }

private:
    void check(const Concatenation::Records &records)
    {
        const IncomingRecord &first = m_parts[records.front()];
        require(records.size() == first.total, "a message has all of its parts");
        for (size_t i = 0; i < records.size(); ++i) {
            const IncomingRecord &part = m_parts[records[i]];
            require(part.number == i + 1, "parts are in their order");
            require(areOneMessage(first, part), "parts belong together");
        }
        leave(records);
    }
    void leave(const Concatenation::Records &records)
    {
        for (const RecordId id : records) {
            require(m_waiting.remove(id), "a part is in one message");
        }
    }

    Concatenation m_sets{std::chrono::hours(24)};
    std::vector<IncomingRecord> m_parts;
    QSet<RecordId> m_waiting;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    Checked parts;
    while (!input.isEmpty()) {
        const IncomingRecord record = throughTheSpool(incomingRecord(nextSms(input)));
        if (record.isPart()) {
            parts.add(record);
        }
    }
    return 0;
}

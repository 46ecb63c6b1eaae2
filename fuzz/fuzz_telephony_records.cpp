// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what arrives on a telephony socket, from either side.

#include "fuzz/fuzz_support.h"
#include "platform/telephony/telephony_records_p.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>

#include <algorithm>

using namespace wmsg::fuzz;
using namespace wmsg::telephony;

namespace {

constexpr qsizetype kLongestByteByByte = 4096;

bool isSame(const Frame &a, const Frame &b)
{
    return a.type == b.type && a.number == b.number && a.payload == b.payload;
}

/// The frames of the input, which arrives in pieces of `step` bytes.
QList<Frame> framesOf(const QByteArray &input, qsizetype step, bool &isBroken)
{
    FrameReader reader;
    QList<Frame> frames;
    for (qsizetype at = 0; at < input.size(); at += step) {
        reader.append(QByteArrayView(input).sliced(at, std::min(step, input.size() - at)));
        Frame frame;
        while (reader.next(frame)) {
            frames.append(frame);
        }
    }
    isBroken = reader.isBroken();
    return frames;
}

/// Of another version no more than the version is read, and so no more is written.
template <typename Record> bool isReadWhole(const Record &)
{
    return true;
}
bool isReadWhole(const Hello &record)
{
    return record.version == kVersion;
}
bool isReadWhole(const Welcome &record)
{
    return record.version == kVersion;
}
bool isReadWhole(const Refused &)
{
    return false;
}

template <typename Record> void checkRecord(const Frame &frame)
{
    Record record;
    if (fromPayload(frame.payload, record) && isReadWhole(record)) {
        FrameReader reader;
        reader.append(toFrame(record, frame.number));
        Frame again;
        require(reader.next(again) && reader.isEmpty(), "a record is written as one frame");
        require(isSame(again, {Record::kType, frame.number, frame.payload}),
                "a record that was read is written as it came");
    }
}

/// A payload is tried as every record, whatever its frame says.
void checkRecords(const Frame &frame)
{
    checkRecord<Hello>(frame);
    checkRecord<Send>(frame);
    checkRecord<RegisterPort>(frame);
    checkRecord<DeregisterPort>(frame);
    checkRecord<SetServiceCenter>(frame);
    checkRecord<MessageAnswer>(frame);
    checkRecord<ResultTaken>(frame);
    checkRecord<Welcome>(frame);
    checkRecord<Refused>(frame);
    checkRecord<Done>(frame);
    checkRecord<Result>(frame);
    checkRecord<Message>(frame);
    checkRecord<ModemState>(frame);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    bool isBroken = false;
    const QList<Frame> frames = framesOf(input, std::max<qsizetype>(input.size(), 1), isBroken);
    qsizetype framed = 0;
    for (const Frame &frame : frames) {
        require(frame.payload.size() <= static_cast<qsizetype>(kLongestPayload),
                "no payload is longer than the limit");
        framed += kHeadSize + frame.payload.size();
        checkRecords(frame);
    }
    require(framed <= input.size(), "what was read has arrived");
    for (const qsizetype step : {qsizetype(1), qsizetype(7), qsizetype(64)}) {
        if (input.size() / step > kLongestByteByByte) {
            continue;
        }
        bool isBrokenToo = false;
        const QList<Frame> pieces = framesOf(input, step, isBrokenToo);
        require(isBroken == isBrokenToo && pieces.size() == frames.size()
                    && std::equal(frames.cbegin(), frames.cend(), pieces.cbegin(), isSame),
                "frames read the same in any split");
    }
    return 0;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/fields.h"

#include <limits>

// delivery-time, expiry := value-length (128 date | 129 integer)
//   128: seconds since 1970-01-01 00:00 UTC     129: seconds from now

namespace {

constexpr quint8 kAbsolute = 128;
constexpr quint8 kRelative = 129;
constexpr qint64 kLatestShort = 127;
constexpr qint64 kLatestSecond = std::numeric_limits<quint32>::max();

struct TimeValue {
    quint8 token;
    quint32 seconds;
};

// Kept: the value-length is read and not used.
bool readTime(WSP_Stream &stream, TimeValue &time)
{
    quint32 length;
    return stream.readValueLength(length) && stream.readByte(time.token)
        && stream.readInteger(time.seconds) && (time.token == kAbsolute || time.token == kRelative);
}

} // namespace

quint32 Field_DeliveryTime::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    TimeValue time;
    if (!readTime(stream, time)) {
        return 0;
    }
    header->deliveryTime = time.token == kAbsolute
        ? QDateTime::fromSecsSinceEpoch(time.seconds, Qt::UTC)
        : QDateTime::currentDateTimeUtc().addSecs(time.seconds);
    return 1;
}

quint32 Field_DeliveryTime::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    const qint64 seconds = secsToUTC(header->deliveryTime);
    if (seconds == 0) {
        return 1;
    }
    if (seconds < 0 || seconds > kLatestSecond) {
        return 0;
    }
    char bytes[8];
    WSP_Stream value(bytes, sizeof bytes);
    value.writeByte(kAbsolute);
    if (seconds <= kLatestShort) {
        value.writeInteger(static_cast<qint32>(seconds));
    } else {
        value.writeLongInteger(static_cast<quint32>(seconds));
    }
    return stream.writeInteger(kId) && writeLengthPrefixed(stream, value) ? 1 : 0;
}

void Field_DeliveryTime::printField(MMS_HDR_S *header)
{
    FieldPrinter::date(kId, header->deliveryTime);
}

quint32 Field_Expiry::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    TimeValue time;
    if (!readTime(stream, time)) {
        return 0;
    }
    const qint64 now = time.token == kAbsolute ? QDateTime::currentSecsSinceEpoch() : 0;
    header->expiry = static_cast<qint32>(static_cast<quint32>(time.seconds - now));
    return 1;
}

// Kept: an expiry is written as seconds from now, whatever form was read.
quint32 Field_Expiry::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    if (header->expiry == -1) {
        return 1;
    }
    char bytes[8];
    WSP_Stream value(bytes, sizeof bytes);
    value.writeByte(kRelative);
    value.writeInteger(header->expiry);
    stream.writeInteger(kId);
    writeLengthPrefixed(stream, value);
    return 1;
}

void Field_Expiry::printField(MMS_HDR_S *header)
{
    FieldPrinter::number(kId, header->expiry);
}

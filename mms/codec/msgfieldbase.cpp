// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/msgfieldbase.h"

#include "core/log.h"
#include "core/wmfmentry.h"

#include <algorithm>
#include <ctime>
#include <limits>

// yes-no  := 128 (yes) | 129 (no)
// date    := integer, seconds since 1970-01-01 00:00 UTC
// address := encoded-string: number "/TYPE=PLMN" | [name "<"] local "@" domain [">"] | number

namespace {

constexpr quint8 kYes = 128;
constexpr quint8 kNo = 129;
constexpr qint64 kLatestSecond = std::numeric_limits<qint32>::max();
constexpr unsigned char kEmail = 0;
constexpr unsigned char kPlmn = 1;

QLatin1String plmnSuffix()
{
    return QLatin1String("/TYPE=PLMN");
}

// Whether a text is ASCII in UTF-8, where half of a surrogate pair becomes a "?".
bool isAscii(const QString &text)
{
    const auto isHigh = [](QChar c) {
        return c.unicode() >= 0x80;
    };
    if (std::none_of(text.cbegin(), text.cend(), isHigh)) {
        return true;
    }
    const QByteArray utf8 = text.toUtf8();
    return std::all_of(utf8.cbegin(), utf8.cend(), [](char byte) { return (byte & 0x80) == 0; });
}

// An address is read as an encoded string, which takes a first byte of 1 to 31 for a length.
bool beginsLikeLength(const QString &value)
{
    return !value.isEmpty() && value.front().unicode() >= 1 && value.front().unicode() < 32;
}

void setEntry(WMFMEntry &entry, unsigned char type, const QString &value, const QString &name)
{
    entry.setEntryType(type);
    entry.setEntryVal(value);
    entry.setContactName(name);
}

// The text between the first "<" and the first ">"; empty when they stand the other way round.
void setEmail(WMFMEntry &entry, const QString &text)
{
    const auto open = text.indexOf(QLatin1Char('<'));
    if (open < 0) {
        setEntry(entry, kEmail, text, QLatin1String(""));
        return;
    }
    const auto close = text.indexOf(QLatin1Char('>'));
    const QString value = close < 0 ? text.mid(open + 1)
        : close < open              ? QString(QLatin1String(""))
                                    : text.mid(open + 1, close - open - 1);
    setEntry(entry, kEmail, value, text.left(open));
}

} // namespace

MsgFieldBase::~MsgFieldBase() = default;

quint32 MsgFieldBase::read(WSP_Stream & /*stream*/, MMS_HDR_S * /*header*/)
{
    return 0;
}

quint32 MsgFieldBase::write(WSP_Stream & /*stream*/, MMS_HDR_S * /*header*/)
{
    return 0;
}

void MsgFieldBase::printField(MMS_HDR_S * /*header*/) { }

quint32 MsgFieldBase::getBool(WSP_Stream &stream, bool &value)
{
    quint8 byte;
    if (!stream.readByte(byte) || (byte != kYes && byte != kNo)) {
        return 0;
    }
    value = byte == kYes;
    return 1;
}

quint32 MsgFieldBase::setBool(int id, WSP_Stream &stream, bool value)
{
    return setByteField(id, stream, value ? kYes : kNo);
}

quint32 MsgFieldBase::setByteField(int id, WSP_Stream &stream, unsigned char value)
{
    stream.writeInteger(id);
    stream.writeByte(value);
    return 1;
}

quint32 MsgFieldBase::setIntField(int id, WSP_Stream &stream, qint32 value)
{
    if (value < 0) {
        return 0;
    }
    stream.writeInteger(id);
    stream.writeInteger(value);
    return 1;
}

quint32 MsgFieldBase::setStrField(int id, WSP_Stream &stream, const QString &text)
{
    if (text.isEmpty()) {
        return 1;
    }
    return stream.writeInteger(id) && stream.writeTextString(text) ? 1 : 0;
}

quint32 MsgFieldBase::setEncoStrField(int id, WSP_Stream &stream, const QString &text)
{
    if (text.isEmpty()) {
        return 1;
    }
    return stream.writeInteger(id) && stream.writeEncodedString(text) ? 1 : 0;
}

quint32 MsgFieldBase::getDate(WSP_Stream &stream, QDateTime &date)
{
    quint32 seconds;
    if (!stream.readInteger(seconds)) {
        return 0;
    }
    date = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
    return 1;
}

quint32 MsgFieldBase::setDate(int id, WSP_Stream &stream, const QDateTime &date)
{
    const qint64 seconds = secsToUTC(date);
    if (seconds < 0 || seconds > kLatestSecond) {
        return 0;
    }
    return setIntField(id, stream, static_cast<qint32>(seconds));
}

qint64 MsgFieldBase::secsToUTC(const QDateTime &date)
{
    const QDate day = date.date();
    const QTime time = date.time();
    if (day.isNull() && time.isNull()) {
        return 0;
    }
    if (!day.isValid() || !time.isValid()) {
        return -1;
    }
    if (date.timeSpec() != Qt::LocalTime) {
        return date.toSecsSinceEpoch();
    }
    std::tm parts{};
    parts.tm_sec = time.second();
    parts.tm_min = time.minute();
    parts.tm_hour = time.hour();
    parts.tm_mday = day.day();
    parts.tm_mon = day.month() - 1;
    parts.tm_year = day.year() - 1900;
    parts.tm_wday = -1;
    parts.tm_yday = -1;
    parts.tm_isdst = -1;
    return mktime(&parts); // it looks at TZ itself, as tzset() does
}

quint32 MsgFieldBase::readAddress(WSP_Stream &stream, WMFMEntry &entry)
{
    QString text;
    if (!stream.readEncodedString(text)) {
        return 0;
    }
    const auto suffix = text.indexOf(plmnSuffix());
    if (suffix >= 0) {
        text.truncate(suffix);
        entry.setEntryType(kPlmn);
        entry.setEntryVal(text);
    } else if (text.contains(QLatin1Char('@'))) {
        setEmail(entry, text);
    } else {
        setEntry(entry, kPlmn, text, QLatin1String(""));
    }
    return 1;
}

quint32 MsgFieldBase::writeAddress(WSP_Stream &stream, const WMFMEntry &entry)
{
    const QString value = entry.getEntryVal();
    const bool isNumber = entry.getEntryType() == kPlmn;
    if (beginsLikeLength(value)) {
        return stream.writeEncodedString(isNumber ? value + plmnSuffix() : value);
    }
    if (isNumber) {
        return stream.writeTextString(value, plmnSuffix());
    }
    return isAscii(value) ? stream.writeTextString(value) : stream.writeEncodedString(value);
}

quint32 MsgFieldBase::writeAddressList(unsigned char id, WSP_Stream &stream,
                                       const QValueList<WMFMEntry> &entries)
{
    for (const WMFMEntry &entry : entries) {
        stream.writeInteger(id);
        if (!writeAddress(stream, entry)) {
            return 0;
        }
    }
    return 1;
}

void MsgFieldBase::printEntry(const WMFMEntry &entry)
{
    if (entry.isValid()) {
        logLine(4, "\t%s %s", entry.getEntryVal(), entry.getContactName());
    }
}

void MsgFieldBase::printEntryList(const QValueList<WMFMEntry> &entries)
{
    for (const WMFMEntry &entry : entries) {
        printEntry(entry);
    }
}

quint32 MsgFieldBase::writeLengthPrefixed(WSP_Stream &stream, const WSP_Stream &value)
{
    if (value.hasOverflowed()) {
        stream.noteOverflow();
    }
    return stream.writeValueLength(value.pos) && stream.writeBytes(value.data, value.pos) ? 1 : 0;
}

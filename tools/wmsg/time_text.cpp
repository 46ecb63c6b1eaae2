// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/time_text.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// The date of a message is written as a number of 31 bits.
constexpr qint64 kLatestSecond = std::numeric_limits<qint32>::max();

qint64 unitSeconds(QChar unit)
{
    constexpr qint64 kHour = 3600;
    constexpr qint64 kDay = 24 * kHour;
    switch (unit.unicode()) {
    case 's':
        return 1;
    case 'm':
        return 60;
    case 'h':
        return kHour;
    case 'd':
        return kDay;
    case 'w':
        return 7 * kDay;
    default:
        return 0;
    }
}

} // namespace

std::optional<QDateTime> parseDate(const QString &text)
{
    bool isNumber = false;
    const qint64 seconds = text.toLongLong(&isNumber);
    const QDateTime date = isNumber ? QDateTime::fromSecsSinceEpoch(seconds)
                                    : QDateTime::fromString(text, Qt::ISODate).toLocalTime();
    const bool fits =
        date.isValid() && date.toSecsSinceEpoch() >= 0 && date.toSecsSinceEpoch() <= kLatestSecond;
    return fits ? std::optional<QDateTime>(date) : std::nullopt;
}

std::optional<qint32> parseDuration(const QString &text)
{
    QString number = text;
    qint64 unit = 1;
    if (!text.isEmpty() && unitSeconds(text.back()) > 0) {
        unit = unitSeconds(text.back());
        number.chop(1);
    }
    bool isNumber = false;
    const qint64 count = number.toInt(&isNumber);
    const qint64 seconds = count * unit;
    const bool fits = isNumber && count > 0 && seconds <= std::numeric_limits<qint32>::max();
    return fits ? std::optional<qint32>(static_cast<qint32>(seconds)) : std::nullopt;
}

} // namespace wmsg::cli

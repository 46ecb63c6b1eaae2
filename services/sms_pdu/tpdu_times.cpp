// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/tpdu_p.h"

#include <algorithm>
#include <array>
#include <cstdlib>

// time := year month day hour minute second zone    two digits each, the first in the low half
//   zone: quarters of an hour from UTC, bit 3 of the octet set when it is behind
// enhanced validity := 0x80: more follows|0x40: try once|form { octet }
//   form: 0 none, 1 as the relative one, 2 seconds, 3 hours minutes seconds in digits

namespace wmsg::smspdu {

namespace {

constexpr qint64 kMinute = 60;
constexpr qint64 kHour = 60 * kMinute;
constexpr qint64 kDay = 24 * kHour;
constexpr qint64 kWeek = 7 * kDay;
constexpr int kQuarter = 15 * kMinute;
constexpr int kZoneSign = 0x08;
constexpr int kFirstYear = 1990; // of the two digits

/// Two digits; -1 when they are none.
int digitsOf(int octet)
{
    const int first = octet & 0x0F;
    const int second = octet >> 4 & 0x0F;
    return first <= 9 && second <= 9 ? first * 10 + second : -1;
}

char octetOf(int number)
{
    return static_cast<char>(number % 10 << 4 | number / 10 % 10);
}

/// The steps of a relative period: up to which octet, what is taken from it, and how long one is.
struct Step {
    int last;
    int base;
    qint64 unit;
    qint64 more;
};
constexpr std::array<Step, 4> kSteps = {{
    {143, -1, 5 * kMinute, 0},
    {167, 143, kHour / 2, kDay / 2},
    {196, 166, kDay, 0},
    {255, 192, kWeek, 0},
}};

qint64 relativeSeconds(int octet)
{
    for (const Step &step : kSteps) {
        if (octet <= step.last) {
            return (octet - step.base) * step.unit + step.more;
        }
    }
    return -1;
}

qint64 enhancedSeconds(QByteArrayView octets)
{
    const auto at = [octets](qsizetype i) {
        return static_cast<quint8>(octets[i]);
    };
    switch (at(0) & 0x87) {
    case 1:
        return relativeSeconds(at(1));
    case 2:
        return at(1);
    case 3: {
        const int hours = digitsOf(at(1));
        const int minutes = digitsOf(at(2));
        const int seconds = digitsOf(at(3));
        const bool isTime = hours >= 0 && minutes >= 0 && seconds >= 0;
        return isTime ? hours * kHour + minutes * kMinute + seconds : -1;
    }
    default:
        return -1;
    }
}

} // namespace

QDateTime timeOf(QByteArrayView octets)
{
    if (octets.size() != kTimeSize) {
        return {};
    }
    std::array<int, 6> numbers = {};
    for (qsizetype i = 0; i < 6; ++i) {
        numbers[static_cast<size_t>(i)] = digitsOf(static_cast<quint8>(octets[i]));
    }
    const int zone = static_cast<quint8>(octets[6]);
    const int quarters = digitsOf(zone & ~kZoneSign);
    if (quarters < 0 || *std::min_element(numbers.cbegin(), numbers.cend()) < 0) {
        return {};
    }
    const int year = kFirstYear + (numbers[0] + 10) % 100;
    const QDate date(year, numbers[1], numbers[2]);
    const QTime time(numbers[3], numbers[4], numbers[5]);
    if (!date.isValid() || !time.isValid()) {
        return {};
    }
    const int offset = (zone & kZoneSign) != 0 ? -quarters * kQuarter : quarters * kQuarter;
    return QDateTime(date, time, Qt::OffsetFromUTC, offset);
}

QByteArray timeOctets(const QDateTime &time)
{
    if (!time.isValid()) {
        return QByteArray(kTimeSize, '\0');
    }
    const int offset = time.offsetFromUtc();
    const int quarters = std::abs(offset) / kQuarter;
    const QDate date = time.date();
    QByteArray octets;
    for (const int number : {date.year(), date.month(), date.day(), time.time().hour(),
                             time.time().minute(), time.time().second()}) {
        octets.append(octetOf(number % 100));
    }
    const char zone = octetOf(quarters);
    octets.append(offset < 0 ? static_cast<char>(zone | kZoneSign) : zone);
    return octets;
}

qint64 Validity::seconds() const
{
    if (form == Form::Relative && octets.size() == 1) {
        return relativeSeconds(static_cast<quint8>(octets[0]));
    }
    return form == Form::Enhanced && octets.size() == kTimeSize ? enhancedSeconds(octets) : -1;
}

QDateTime Validity::until() const
{
    return form == Form::Absolute ? timeOf(octets) : QDateTime();
}

Validity Validity::relative(qint64 seconds)
{
    constexpr int kLongest = 255;
    int octet = 0;
    while (octet < kLongest && relativeSeconds(octet) < seconds) {
        ++octet;
    }
    return {Form::Relative, QByteArray(1, static_cast<char>(octet))};
}

} // namespace wmsg::smspdu

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu_p.h"

#include <algorithm>

namespace wmsg::smspdu {

namespace {

constexpr char kDigits[] = "0123456789*#abc";
constexpr int kFill = 0x0F;
constexpr qsizetype kMostDigits = 2 * kMostAddressOctets;
constexpr qsizetype kMostLetters = 11; // septets in 10 octets

int digitOf(QChar character)
{
    const QByteArrayView digits(kDigits, kFill);
    return static_cast<int>(digits.indexOf(character.toLatin1()));
}

bool isNumber(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return digitOf(c) >= 0; });
}

QByteArray digitOctets(const QString &number)
{
    QByteArray octets;
    for (qsizetype i = 0; i < number.size(); i += 2) {
        const int low = digitOf(number[i]);
        const int high = i + 1 < number.size() ? digitOf(number[i + 1]) : kFill;
        octets.append(static_cast<char>(high << 4 | low));
    }
    return octets;
}

} // namespace

QString Address::toString() const
{
    return isInternational() && !value.isEmpty() ? u'+' + value : value;
}

Address Address::fromString(const QString &text)
{
    const bool isInternational = text.startsWith(u'+');
    const QString value = isInternational ? text.mid(1) : text;
    if (!isNumber(value)) {
        return {kAlphanumeric, text};
    }
    return {isInternational ? kInternational : kUnknown, value};
}

QString addressValue(quint8 type, QByteArrayView octets, qsizetype digits)
{
    if (Address{type, {}}.isAlphanumeric()) {
        return textFromGsm7(unpackSeptets(octets, digits * 4 / 7));
    }
    QString value;
    const qsizetype most = std::min(digits, octets.size() * 2);
    for (qsizetype i = 0; i < most; ++i) {
        const auto both = static_cast<quint8>(octets[i / 2]);
        const int digit = i % 2 == 0 ? both & 0x0F : both >> 4;
        if (digit == kFill) {
            break;
        }
        value += QLatin1Char(kDigits[digit]);
    }
    return value;
}

QByteArray addressOctets(const Address &address, qsizetype &digits)
{
    if (address.isAlphanumeric()) {
        const auto septets = gsm7FromText(address.value);
        if (!septets || septets->size() > kMostLetters) {
            return {};
        }
        digits = (septets->size() * 7 + 3) / 4;
        return septets->isEmpty() ? QByteArrayLiteral("") : packSeptets(*septets);
    }
    if (!isNumber(address.value) || address.value.size() > kMostDigits) {
        return {};
    }
    digits = address.value.size();
    return digits == 0 ? QByteArrayLiteral("") : digitOctets(address.value);
}

std::optional<ServiceCentre> readServiceCentre(QByteArrayView bytes)
{
    constexpr quint8 kTypeBit = 0x80;
    if (bytes.isEmpty()) {
        return std::nullopt;
    }
    ServiceCentre centre;
    centre.size = static_cast<quint8>(bytes[0]) + 1;
    if (centre.size == 1) {
        return centre;
    }
    // Its type, and at least one octet of digits.
    if (centre.size < 3 || centre.size > kMostAddressOctets + 2 || centre.size > bytes.size()) {
        return std::nullopt;
    }
    centre.address.type = static_cast<quint8>(bytes[1]);
    const QByteArrayView octets = bytes.sliced(2, centre.size - 2);
    centre.address.value = addressValue(centre.address.type, octets, octets.size() * 2);
    const bool isCentre = (centre.address.type & kTypeBit) != 0 && !centre.address.value.isEmpty();
    return isCentre ? std::optional(centre) : std::nullopt;
}

QByteArray writtenServiceCentre(const Address &address)
{
    qsizetype digits = 0;
    const QByteArray octets = addressOctets(address, digits);
    if (octets.isEmpty()) {
        return QByteArray(1, '\0');
    }
    return QByteArray(1, static_cast<char>(octets.size() + 1)) + static_cast<char>(address.type)
        + octets;
}

} // namespace wmsg::smspdu

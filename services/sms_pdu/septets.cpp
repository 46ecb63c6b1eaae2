// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"

#include "platform/telephony/gsm_alphabet.h"

#include <algorithm>

namespace wmsg::smspdu {

namespace {

constexpr int kSeptetMask = 0x7F;
constexpr int kSeptetBits = 7;

} // namespace

QByteArray packSeptets(QByteArrayView septets, int fill)
{
    QByteArray octets;
    octets.reserve(packedSize(septets.size(), fill));
    unsigned bits = 0;
    int held = fill;
    for (const char septet : septets) {
        bits |= (static_cast<unsigned>(septet) & kSeptetMask) << held;
        held += kSeptetBits;
        while (held >= 8) {
            octets.append(static_cast<char>(bits & 0xFF));
            bits >>= 8;
            held -= 8;
        }
    }
    if (held > 0) {
        octets.append(static_cast<char>(bits));
    }
    return octets;
}

QByteArray unpackSeptets(QByteArrayView octets, qsizetype count, int fill)
{
    const qsizetype there = (octets.size() * 8 - fill) / kSeptetBits;
    const qsizetype most = std::clamp<qsizetype>(count, 0, std::max<qsizetype>(there, 0));
    QByteArray septets;
    septets.reserve(most);
    for (qsizetype i = 0; i < most; ++i) {
        const qsizetype bit = fill + i * kSeptetBits;
        unsigned both = static_cast<quint8>(octets[bit / 8]);
        if (bit / 8 + 1 < octets.size()) {
            both |= static_cast<unsigned>(static_cast<quint8>(octets[bit / 8 + 1])) << 8;
        }
        septets.append(static_cast<char>((both >> (bit % 8)) & kSeptetMask));
    }
    return septets;
}

std::optional<QByteArray> gsm7FromText(QStringView text)
{
    QByteArray septets;
    septets.reserve(text.size());
    for (const QChar character : text) {
        const int code = gsmCode(character.unicode());
        if (code < 0) {
            return std::nullopt;
        }
        if (code > kSeptetMask) {
            septets.append(static_cast<char>(code >> 8));
        }
        septets.append(static_cast<char>(code & kSeptetMask));
    }
    return septets;
}

QString textFromGsm7(QByteArrayView septets)
{
    QString text;
    text.reserve(septets.size());
    bool isEscaped = false;
    for (const char byte : septets) {
        const auto septet = static_cast<quint8>(static_cast<quint8>(byte) & kSeptetMask);
        if (septet == kGsmEscape) {
            if (isEscaped) {
                text += u' ';
            }
            isEscaped = !isEscaped;
            continue;
        }
        const char16_t extension = isEscaped ? gsmExtension(septet) : 0;
        text += QChar(extension != 0 ? extension : kGsmAlphabet[septet]);
        isEscaped = false;
    }
    return text;
}

} // namespace wmsg::smspdu

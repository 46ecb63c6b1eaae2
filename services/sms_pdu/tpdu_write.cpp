// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/septets.h"
#include "services/sms_pdu/tpdu_p.h"

#include <QtCore/QStringEncoder>

namespace wmsg::smspdu {

namespace {

constexpr quint8 kOctetsScheme = 0x04;
constexpr quint8 kUcs2Scheme = 0x08;

char octet(qint64 number)
{
    return static_cast<char>(number & 0xFF);
}

char firstOctet(const Tpdu &tpdu)
{
    const auto flag = [](bool isSet, int bit) {
        return isSet ? bit : 0;
    };
    int first = static_cast<int>(tpdu.kind) | flag(tpdu.hasReport, 0x20)
        | flag(tpdu.hasReplyPath && tpdu.kind != Kind::StatusReport, 0x80)
        | flag(!tpdu.udh.isEmpty(), 0x40);
    if (tpdu.kind == Kind::Submit) {
        first |= flag(tpdu.rejectsDuplicates, 0x04) | static_cast<int>(tpdu.validity.form) << 3;
    } else {
        first |= flag(!tpdu.hasMore, 0x04) | flag(tpdu.isLooped, 0x08);
    }
    return octet(first);
}

QByteArray writtenUserData(const Tpdu &tpdu)
{
    const qsizetype header = tpdu.udh.size();
    if (tpdu.alphabet() != Alphabet::Gsm7) {
        return octet(header + tpdu.userData.size()) + tpdu.udh + tpdu.userData;
    }
    const int fill = fillBits(header);
    return octet((header * 8 + fill) / 7 + tpdu.userData.size()) + tpdu.udh
        + packSeptets(tpdu.userData, fill);
}

/// What stands behind the address, up to the user data.
QByteArray writtenMiddle(const Tpdu &tpdu)
{
    switch (tpdu.kind) {
    case Kind::Deliver:
        return QByteArray(1, octet(tpdu.pid)) + octet(tpdu.dcs) + timeOctets(tpdu.timeStamp);
    case Kind::Submit:
        return QByteArray(1, octet(tpdu.pid)) + octet(tpdu.dcs) + tpdu.validity.octets;
    case Kind::StatusReport:
        break;
    }
    return timeOctets(tpdu.timeStamp) + timeOctets(tpdu.dischargeTime) + octet(tpdu.status);
}

/// The optional fields of a report: none, or all that lead to its user data.
QByteArray writtenParameters(const Tpdu &tpdu)
{
    constexpr int kAll = 0x07;
    if (tpdu.udh.isEmpty() && tpdu.userData.isEmpty()) {
        return {};
    }
    return QByteArray(1, octet(kAll)) + octet(tpdu.pid) + octet(tpdu.dcs) + writtenUserData(tpdu);
}

bool isValidityRight(const Validity &validity)
{
    switch (validity.form) {
    case Validity::Form::None:
        return validity.octets.isEmpty();
    case Validity::Form::Relative:
        return validity.octets.size() == 1;
    case Validity::Form::Enhanced:
    case Validity::Form::Absolute:
        break;
    }
    return validity.octets.size() == kTimeSize;
}

bool canBeWritten(const Tpdu &tpdu)
{
    const bool isValidityFine = tpdu.kind != Kind::Submit || isValidityRight(tpdu.validity);
    return tpdu.fits() && isValidityFine && (tpdu.udh.isEmpty() || headerElements(tpdu.udh));
}

} // namespace

Tpdu textMessage(Kind kind, const Address &address, const QString &text)
{
    Tpdu tpdu;
    tpdu.kind = kind;
    tpdu.address = address;
    if (const auto septets = gsm7FromText(text)) {
        tpdu.userData = *septets;
        return tpdu;
    }
    QStringEncoder encoder(QStringEncoder::Utf16BE);
    tpdu.dcs = kUcs2Scheme;
    tpdu.userData = encoder(text);
    return tpdu;
}

Tpdu dataMessage(Kind kind, const Address &address, const QByteArray &data)
{
    Tpdu tpdu;
    tpdu.kind = kind;
    tpdu.address = address;
    tpdu.dcs = kOctetsScheme;
    tpdu.userData = data;
    return tpdu;
}

QByteArray writeTpdu(const Tpdu &tpdu)
{
    qsizetype digits = 0;
    const QByteArray address = addressOctets(tpdu.address, digits);
    if (address.isNull() || !canBeWritten(tpdu)) {
        return {};
    }
    QByteArray bytes(1, firstOctet(tpdu));
    if (tpdu.kind != Kind::Deliver) {
        bytes += octet(tpdu.reference);
    }
    bytes += QByteArray(1, octet(digits)) + octet(tpdu.address.type) + address;
    bytes += writtenMiddle(tpdu);
    bytes += tpdu.kind == Kind::StatusReport ? writtenParameters(tpdu) : writtenUserData(tpdu);
    return bytes;
}

} // namespace wmsg::smspdu

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/gammu_messages.h"

#include <platform/telephony/gsm_alphabet.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QtEndian>

#include <algorithm>
#include <cstring>

namespace wmsg::telephonyd {

namespace {

constexpr qsizetype kOctets = 140;
constexpr qsizetype kTextUnits = GSM_MAX_SMS_LENGTH;
constexpr qsizetype kLongestNumber = 20;
constexpr char16_t kTilde = u'~';
/// A blinking character of some phones, for which libgammu uses a tilde.
constexpr char16_t kBlink = u'\x01';

/// The units of a body.
QString unitsOf(const QByteArray &body)
{
    QString text(body.size() / 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        text[i] = QChar(qFromLittleEndian<quint16>(body.constData() + 2 * i));
    }
    return text;
}

QByteArray bodyOf(const QString &text)
{
    QByteArray body(text.size() * 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        qToLittleEndian(text[i].unicode(), body.data() + 2 * i);
    }
    return body;
}

/// Writes a text with its end; there is room for it.
void write(const QString &text, unsigned char *out)
{
    for (const QChar unit : text) {
        qToBigEndian(unit.unicode(), out);
        out += 2;
    }
    qToBigEndian(quint16(0), out);
}

/// Reads so many units, or up to the end.
QString read(const unsigned char *text, qsizetype most)
{
    QString units;
    for (qsizetype i = 0; i < most; ++i) {
        const auto unit = qFromBigEndian<quint16>(text + 2 * i);
        if (unit == 0) {
            break;
        }
        units += QChar(unit);
    }
    return units;
}

/// libgammu makes a blinking character of a tilde, and one tilde of two.
QString withDoubledTildes(QString text)
{
    return text.replace(QChar(kTilde), QString(2, QChar(kTilde)));
}

/// The way back, for a text of `count` units as they came. It may hold units of 0. Where a blinking
/// character stands beside a tilde, nobody can tell which came first.
QString withoutDoubledTildes(const unsigned char *text, qsizetype count)
{
    QString units;
    for (qsizetype i = 0; i < kTextUnits && units.size() < count; ++i) {
        auto unit = qFromBigEndian<char16_t>(text + 2 * i);
        if (unit == kTilde) {
            const bool isDoubled =
                i + 1 < kTextUnits && qFromBigEndian<char16_t>(text + 2 * i + 2) == kTilde;
            unit = isDoubled ? kTilde : kBlink;
            i += isDoubled ? 1 : 0;
        }
        units += QChar(unit);
    }
    return units;
}

bool isHeader(const QByteArray &header)
{
    return !header.isEmpty() && header.size() <= kOctets
        && static_cast<quint8>(header[0]) + 1 == header.size();
}

qint32 putText7(const OutgoingSms &message, GSM_SMSMessage &out)
{
    const QString text = unitsOf(message.body);
    qsizetype septets = 0;
    for (const QChar unit : text) {
        const int count = gsmSeptets(unit.unicode());
        if (count == 0) {
            return kCauseInvalid;
        }
        septets += count;
    }
    // Behind longer headers libgammu begins at a wrong bit.
    constexpr qsizetype kLongestHeader = 7;
    if (message.header.size() > kLongestHeader) {
        return kCauseNotSupported;
    }
    if (septets > (kOctets - message.header.size()) * 8 / 7) {
        return kCauseInvalid;
    }
    out.Coding = SMS_Coding_Default_No_Compression;
    out.Length = static_cast<int>(text.size());
    write(text, out.Text);
    return 0;
}

qint32 putText16(const OutgoingSms &message, GSM_SMSMessage &out)
{
    const QString text = unitsOf(message.body);
    if (message.body.size() > kOctets - message.header.size()) {
        return kCauseInvalid;
    }
    // libgammu ends at a unit of 0, and cuts behind 70 units.
    constexpr qsizetype kMostUnits = 70;
    const QString doubled = withDoubledTildes(text);
    if (text.contains(QChar(u'\0')) || doubled.size() > kMostUnits) {
        return kCauseNotSupported;
    }
    out.Coding = SMS_Coding_Unicode_No_Compression;
    out.Length = static_cast<int>(text.size());
    write(doubled, out.Text);
    return 0;
}

qint32 putData(const OutgoingSms &message, GSM_SMSMessage &out)
{
    if (message.body.size() > kOctets - message.header.size()) {
        return kCauseInvalid;
    }
    out.Coding = SMS_Coding_8bit;
    out.Length = static_cast<int>(message.body.size());
    std::copy(message.body.cbegin(), message.body.cend(), out.Text);
    return 0;
}

qint32 putBody(const OutgoingSms &message, GSM_SMSMessage &out)
{
    switch (message.coding) {
    case telephony::Coding::Gsm7:
        return message.body.size() % 2 == 0 ? putText7(message, out) : kCauseInvalid;
    case telephony::Coding::Ucs2:
        return message.body.size() % 2 == 0 ? putText16(message, out) : kCauseInvalid;
    case telephony::Coding::Binary:
        return putData(message, out);
    case telephony::Coding::Text8:
        break;
    }
    return kCauseInvalid;
}

qint64 timeFrom(const GSM_DateTime &time)
{
    const QDate date(time.Year, time.Month, time.Day);
    const QTime clock(time.Hour, time.Minute, time.Second);
    return date.isValid() && clock.isValid()
        ? QDateTime(date, clock, Qt::UTC).toSecsSinceEpoch() - time.Timezone
        : 0;
}

/// The body in `sms`; false when libgammu read none.
bool takeBody(const GSM_SMSMessage &message, IncomingSms &sms)
{
    sms.coding = telephony::Coding::Ucs2;
    switch (message.Coding) {
    case SMS_Coding_Default_No_Compression:
        sms.body = bodyOf(read(message.Text, kTextUnits));
        return true;
    case SMS_Coding_Unicode_No_Compression:
        sms.body = bodyOf(withoutDoubledTildes(message.Text, message.Length));
        return message.Length >= 0;
    case SMS_Coding_8bit:
        sms.coding = telephony::Coding::Binary;
        if (message.Length < 0 || message.Length > kOctets) {
            return false;
        }
        sms.body = QByteArray(reinterpret_cast<const char *>(message.Text), message.Length);
        return true;
    case SMS_Coding_Unicode_Compression:
    case SMS_Coding_Default_Compression:
        break;
    }
    return false;
}

/// The header in `sms`; false when it is longer than a message, or is none.
bool takeHeader(const GSM_SMSMessage &message, IncomingSms &sms)
{
    if (message.UDH.Type == UDH_NoUDH || message.UDH.Length == 0) {
        return true;
    }
    if (message.UDH.Length < 0 || message.UDH.Length > GSM_MAX_UDH_LENGTH) {
        return false;
    }
    sms.header = QByteArray(reinterpret_cast<const char *>(message.UDH.Text), message.UDH.Length);
    return isHeader(sms.header);
}

} // namespace

bool numberToGammu(const QByteArray &number, unsigned char *text)
{
    // libgammu writes wrong digits for "*" and "#", and letters as a name.
    const QByteArray digits = number.startsWith('+') ? number.mid(1) : number;
    const bool isNumber = !digits.isEmpty() && digits.size() <= kLongestNumber
        && std::all_of(digits.cbegin(), digits.cend(),
                       [](char byte) { return byte >= '0' && byte <= '9'; });
    if (isNumber) {
        write(QString::fromLatin1(number), text);
    }
    return isNumber;
}

QByteArray numberFromGammu(const unsigned char *text)
{
    return read(text, GSM_MAX_NUMBER_LENGTH).toLatin1();
}

qint32 toGammu(const OutgoingSms &message, const QByteArray &serviceCenter, GSM_SMSMessage &out)
{
    std::memset(&out, 0, sizeof out);
    GSM_SetDefaultSMSData(&out);
    out.PDU = SMS_Submit;
    out.Class = GSM_SMS_None;
    out.SMSC.Location = 0; // what stands here, and not what the card has
    const QByteArray centre =
        message.serviceCenter.isEmpty() ? serviceCenter : message.serviceCenter;
    if (centre.isEmpty()) {
        return kCauseNoServiceCenter;
    }
    if (!numberToGammu(centre, out.SMSC.Number)
        || !numberToGammu(message.destination, out.Number)) {
        return kCauseNotSupported;
    }
    out.UDH.Type = UDH_NoUDH;
    if (!message.header.isEmpty()) {
        if (!isHeader(message.header)) {
            return kCauseInvalid;
        }
        out.UDH.Type = UDH_UserUDH;
        out.UDH.Length = static_cast<int>(message.header.size());
        std::copy(message.header.cbegin(), message.header.cend(), out.UDH.Text);
    }
    return putBody(message, out);
}

std::optional<IncomingSms> fromGammu(const GSM_SMSMessage &message)
{
    IncomingSms sms;
    if (!takeHeader(message, sms) || !takeBody(message, sms)) {
        return std::nullopt;
    }
    sms.serviceCenter = numberFromGammu(message.SMSC.Number);
    sms.sender = numberFromGammu(message.Number);
    sms.time = timeFrom(message.DateTime);
    return sms;
}

QByteArray placeOf(int location, const IncomingSms &message)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QByteArray &part :
         {message.sender, QByteArray::number(message.time), message.header, message.body}) {
        hash.addData(QByteArray::number(part.size()) + ' ' + part);
    }
    return QByteArray::number(location) + '-' + hash.result().toHex();
}

int locationOf(const QByteArray &place)
{
    return place.left(std::max<qsizetype>(place.indexOf('-'), 0)).toInt();
}

} // namespace wmsg::telephonyd

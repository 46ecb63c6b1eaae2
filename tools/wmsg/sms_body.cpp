// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_body.h"

#include "tools/wmsg/text_view.h"

#include <platform/telephony/gsm_alphabet.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

QString unitsOf(SmsAlphabet alphabet)
{
    switch (alphabet) {
    case SmsAlphabet::Gsm7:
        return u"septets"_s;
    case SmsAlphabet::Ucs2:
        return u"units"_s;
    case SmsAlphabet::Octets:
        break;
    }
    return u"octets"_s;
}

/// The first character that the 7-bit alphabet lacks.
QString firstOutside(const QString &text)
{
    const auto outside = std::find_if(text.begin(), text.end(), [](QChar character) {
        return gsmSeptets(character.unicode()) == 0;
    });
    const qsizetype begin = outside - text.begin();
    const bool isPair = begin + 1 < text.size() && text[begin].isHighSurrogate()
        && text[begin + 1].isLowSurrogate();
    return text.mid(begin, isPair ? 2 : 1);
}

} // namespace

SmsLength SmsBody::length() const
{
    return text ? smsLengthOf(*text, hasPorts) : smsLengthOfData(data.size(), hasPorts);
}

QString SmsBody::lengthInWords() const
{
    const SmsLength measured = length();
    return u"%1 of %2 %3, %4 left%5"_s.arg(measured.used)
        .arg(measured.limit)
        .arg(unitsOf(measured.alphabet))
        .arg(measured.limit - measured.used)
        .arg(reasonForUnits());
}

QString SmsBody::objection() const
{
    const SmsLength measured = length();
    if (measured.fits()) {
        return {};
    }
    return u"the %1 has %2 %3, and one short message%4 holds %5%6"_s
        .arg(text ? u"text"_s : u"data"_s)
        .arg(measured.used)
        .arg(unitsOf(measured.alphabet), hasPorts ? u" to a port"_s : QString())
        .arg(measured.limit)
        .arg(reasonForUnits());
}

QString SmsBody::reasonForUnits() const
{
    return length().alphabet == SmsAlphabet::Ucs2
        ? u" (16-bit units, for the 7-bit alphabet has no \"%1\")"_s.arg(
            printable(firstOutside(*text)))
        : QString();
}

void SmsBody::addLength(QJsonObject &object) const
{
    const SmsLength measured = length();
    object.insert(u"unit"_s, unitsOf(measured.alphabet));
    object.insert(u"used"_s, measured.used);
    object.insert(u"limit"_s, measured.limit);
    object.insert(u"left"_s, measured.limit - measured.used);
}

} // namespace wmsg::cli

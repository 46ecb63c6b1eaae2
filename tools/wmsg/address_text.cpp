// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/address_text.h"

#include <QtCore/QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr unsigned char kEmail = 0;
constexpr unsigned char kPlmn = 1;
constexpr qsizetype kMostDigits = 20;
constexpr qsizetype kLongestEmail = 254;
constexpr qsizetype kLongestLocalPart = 64;

QString plmnSuffix()
{
    return u"/TYPE=PLMN"_s;
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

QString parseNumber(const QString &text, WMFMEntry &entry)
{
    static const QString kFillers = u" .-()"_s;
    QString number;
    for (const QChar c : text) {
        if (isDigit(c) || c == u'*' || c == u'#' || (c == u'+' && number.isEmpty())) {
            number += c;
        } else if (!kFillers.contains(c)) {
            return u"is neither a phone number nor an e-mail address"_s;
        }
    }
    const auto digits = std::count_if(number.cbegin(), number.cend(), isDigit);
    if (digits == 0) {
        return u"is neither a phone number nor an e-mail address"_s;
    }
    if (digits > kMostDigits) {
        return u"is no phone number: it has %1 digits"_s.arg(digits);
    }
    entry = WMFMEntry(kPlmn, number);
    return {};
}

bool isEmailCharacter(QChar c)
{
    static const QString kForbidden = u"<>()[],;:\\\"/"_s;
    return c.isPrint() && !c.isSpace() && !kForbidden.contains(c);
}

bool isDotted(const QString &text)
{
    const QStringList labels = text.split(u'.');
    return std::none_of(labels.begin(), labels.end(),
                        [](const QString &label) { return label.isEmpty(); });
}

bool isDomain(const QString &text)
{
    const QStringList labels = text.split(u'.');
    return std::none_of(labels.begin(), labels.end(), [](const QString &label) {
        return label.isEmpty() || label.startsWith(u'-') || label.endsWith(u'-');
    });
}

QString parseEmail(const QString &text, WMFMEntry &entry)
{
    const QString local = text.section(u'@', 0, 0);
    const QString domain = text.section(u'@', 1);
    const bool isMade = !domain.contains(u'@') && isDotted(local) && isDomain(domain)
        && std::all_of(local.begin(), local.end(), isEmailCharacter)
        && std::all_of(domain.begin(), domain.end(), isEmailCharacter);
    if (!isMade) {
        return u"is no e-mail address"_s;
    }
    if (text.size() > kLongestEmail || local.size() > kLongestLocalPart) {
        return u"is too long for an e-mail address"_s;
    }
    entry = WMFMEntry(kEmail, text);
    return {};
}

} // namespace

QString parseAddress(const QString &text, WMFMEntry &entry)
{
    QString address = text.trimmed();
    if (address.isEmpty()) {
        return u"is empty"_s;
    }
    if (address.endsWith(plmnSuffix())) {
        address.chop(plmnSuffix().size());
        return parseNumber(address, entry);
    }
    return address.contains(u'@') ? parseEmail(address, entry) : parseNumber(address, entry);
}

} // namespace wmsg::cli

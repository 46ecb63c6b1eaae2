// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/address.h"

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

QString withoutType(const QString &address)
{
    const qsizetype type = address.indexOf("/TYPE="_L1, 0, Qt::CaseInsensitive);
    return (type < 0 ? address : address.first(type)).trimmed();
}

// The address between the brackets of "name <address>", else all of it.
QString mailAddress(const QString &text)
{
    const qsizetype open = text.indexOf(u'<');
    const qsizetype close = text.indexOf(u'>', open + 1);
    return open < 0 || close < 0 ? text : text.sliced(open + 1, close - open - 1).trimmed();
}

QString numberKey(const QString &number)
{
    QString key;
    for (const QChar c : number) {
        if (!c.isSpace() && !u"-.()"_s.contains(c)) {
            key.append(c);
        }
    }
    return key.startsWith("00"_L1) ? u'+' + key.sliced(2) : key;
}

} // namespace

QString addressKey(const QString &address)
{
    const QString plain = withoutType(address);
    return plain.contains(u'@') ? mailAddress(plain).toLower() : numberKey(plain);
}

WMFMEntry entryOf(const QString &address)
{
    const QString plain = withoutType(address);
    return plain.contains(u'@') ? WMFMEntry(0, mailAddress(plain)) : WMFMEntry(1, plain);
}

} // namespace wmsg::sim

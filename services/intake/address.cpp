// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/address.h"

namespace wmsg::intake {

namespace {

constexpr char kNumberSuffix[] = "/TYPE=PLMN";

/// Where the suffix begins, in any spelling; -1 when there is none.
qsizetype suffixAt(const QByteArray &text)
{
    return text.toUpper().indexOf("/TYPE=");
}

bool isReadAsMeant(const QByteArray &text, qsizetype suffix)
{
    if (text != text.trimmed() || text.contains('"')) {
        return false;
    }
    const bool hasName = text.contains('<') || text.contains('>');
    if (suffix >= 0) {
        return suffix > 0 && text.sliced(suffix) == kNumberSuffix && !hasName
            && !text.first(suffix).contains('@');
    }
    const qsizetype open = text.indexOf('<');
    return !hasName
        || (text.contains('@') && open >= 0 && text.endsWith('>')
            && text.indexOf('>') == text.size() - 1 && text.indexOf('@', open) > 0);
}

QByteArray unquotedName(QByteArray name)
{
    name = name.trimmed();
    if (name.size() >= 2 && name.startsWith('"') && name.endsWith('"')) {
        name = name.sliced(1, name.size() - 2).trimmed();
    }
    // The codec takes the first of these for the begin of the address.
    return name.replace('<', "").replace('>', "");
}

QByteArray withoutSuffix(const QByteArray &text)
{
    const qsizetype suffix = suffixAt(text);
    return (suffix < 0 ? text : text.first(suffix)).trimmed();
}

} // namespace

QByteArray plainAddress(const QByteArray &text)
{
    const qsizetype suffix = suffixAt(text);
    if (isReadAsMeant(text, suffix)) {
        return text;
    }
    QByteArray name;
    QByteArray address = text;
    const qsizetype open = text.lastIndexOf('<');
    if (open >= 0) {
        const qsizetype close = text.indexOf('>', open);
        name = unquotedName(text.first(open));
        address = text.sliced(open + 1, (close < 0 ? text.size() : close) - open - 1);
    }
    address = withoutSuffix(address);
    if (!address.contains('@')) {
        address = withoutSuffix(address.replace('"', "")); // a quote may have hidden it
        return address.isEmpty() ? QByteArray() : address + kNumberSuffix;
    }
    while (address.size() >= 2 && address.startsWith('"') && address.endsWith('"')) {
        address = address.sliced(1, address.size() - 2);
    }
    return name.isEmpty() ? address : name + " <" + address + '>';
}

} // namespace wmsg::intake

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/xml_declaration.h"

namespace wmsg::intake {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

qsizetype behindBlanks(QByteArrayView text, qsizetype at)
{
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    return at;
}

} // namespace

QByteArrayView xmlEncoding(QByteArrayView xml)
{
    constexpr qsizetype kLongestDeclaration = 200;
    constexpr QByteArrayView kName("encoding");
    if (!xml.startsWith("<?xml")) {
        return {};
    }
    QByteArrayView declaration = xml.first(qMin(xml.size(), kLongestDeclaration));
    const qsizetype end = declaration.indexOf("?>");
    const qsizetype name = declaration.indexOf(kName);
    if (end < 0 || name < 0 || name > end) {
        return {};
    }
    declaration = declaration.first(end);
    const qsizetype equals = behindBlanks(declaration, name + kName.size());
    const qsizetype quote = behindBlanks(declaration, equals + 1);
    if (quote >= end || declaration[equals] != '='
        || (declaration[quote] != '"' && declaration[quote] != '\'')) {
        return {};
    }
    const qsizetype close = declaration.indexOf(declaration[quote], quote + 1);
    return close < 0 ? QByteArrayView() : declaration.sliced(quote + 1, close - quote - 1);
}

QByteArray withXmlEncodingUtf8(QByteArray xml)
{
    const QByteArrayView encoding = xmlEncoding(xml);
    if (!encoding.isEmpty()) {
        xml.replace(encoding.data() - xml.constData(), encoding.size(), "UTF-8");
    }
    return xml;
}

} // namespace wmsg::intake

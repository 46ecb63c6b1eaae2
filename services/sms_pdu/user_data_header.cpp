// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/sms_pdu/user_data_header.h"

namespace wmsg::smspdu {

namespace {

quint8 octet(QByteArrayView bytes, qsizetype i)
{
    return static_cast<quint8>(bytes[i]);
}

quint16 word(QByteArrayView bytes, qsizetype i)
{
    return static_cast<quint16>(octet(bytes, i) << 8 | octet(bytes, i + 1));
}

void append(QByteArray &bytes, quint16 number, bool isWide)
{
    if (isWide) {
        bytes.append(static_cast<char>(number >> 8));
    }
    bytes.append(static_cast<char>(number & 0xFF));
}

QByteArray element(ElementId id, const QByteArray &data)
{
    return QByteArray(1, static_cast<char>(id)) + static_cast<char>(data.size()) + data;
}

std::optional<Concatenation> concatenationOf(const HeaderElement &element)
{
    Concatenation out;
    out.isWide = element.id == kConcatenation16;
    if (element.data.size() != (out.isWide ? 4 : 3)) {
        return std::nullopt;
    }
    out.reference = out.isWide ? word(element.data, 0) : octet(element.data, 0);
    out.total = octet(element.data, element.data.size() - 2);
    out.part = octet(element.data, element.data.size() - 1);
    if (out.part == 0 || out.part > out.total) {
        return std::nullopt;
    }
    return out;
}

} // namespace

std::optional<QList<HeaderElement>> headerElements(QByteArrayView header)
{
    if (header.isEmpty() || octet(header, 0) + 1 != header.size()) {
        return std::nullopt;
    }
    QList<HeaderElement> elements;
    qsizetype i = 1;
    while (i < header.size()) {
        if (header.size() - i < 2 || octet(header, i + 1) > header.size() - i - 2) {
            return std::nullopt;
        }
        const qsizetype length = octet(header, i + 1);
        elements.append({octet(header, i), header.sliced(i + 2, length), i});
        i += 2 + length;
    }
    return elements;
}

std::optional<Ports> portsIn(QByteArrayView header)
{
    std::optional<Ports> found;
    const auto elements = headerElements(header);
    for (const HeaderElement &element : elements.value_or(QList<HeaderElement>())) {
        if (element.id == kPorts16 && element.data.size() == 4) {
            found = Ports{word(element.data, 0), word(element.data, 2), true};
        } else if (element.id == kPorts8 && element.data.size() == 2) {
            found = Ports{octet(element.data, 0), octet(element.data, 1), false};
        }
    }
    return found;
}

std::optional<Concatenation> concatenationIn(QByteArrayView header)
{
    std::optional<Concatenation> found;
    const auto elements = headerElements(header);
    for (const HeaderElement &element : elements.value_or(QList<HeaderElement>())) {
        if (element.id == kConcatenation8 || element.id == kConcatenation16) {
            const auto concatenation = concatenationOf(element);
            found = concatenation ? concatenation : found;
        }
    }
    return found;
}

QByteArray portsElement(const Ports &ports)
{
    QByteArray data;
    append(data, ports.destination, ports.isWide);
    append(data, ports.source, ports.isWide);
    return element(ports.isWide ? kPorts16 : kPorts8, data);
}

QByteArray concatenationElement(const Concatenation &concatenation)
{
    QByteArray data;
    append(data, concatenation.reference, concatenation.isWide);
    data.append(static_cast<char>(concatenation.total));
    data.append(static_cast<char>(concatenation.part));
    return element(concatenation.isWide ? kConcatenation16 : kConcatenation8, data);
}

QByteArray userDataHeader(std::initializer_list<QByteArray> elements)
{
    constexpr qsizetype kLongest = 139; // of the 140 octets, its length takes one
    QByteArray header(1, '\0');
    for (const QByteArray &element : elements) {
        header += element;
    }
    if (header.size() - 1 > kLongest) {
        return {};
    }
    header[0] = static_cast<char>(header.size() - 1);
    return header;
}

} // namespace wmsg::smspdu

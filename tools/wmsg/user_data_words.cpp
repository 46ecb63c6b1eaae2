// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/user_data_words.h"

#include "services/sms_pdu/user_data_header.h"

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct ElementName {
    int id;
    const char *name;
};
constexpr ElementName kElements[] = {
    {0x00, "part of several, reference of 8 bits"},
    {0x01, "special indication of messages"},
    {0x04, "ports of 8 bits"},
    {0x05, "ports of 16 bits"},
    {0x06, "service centre control"},
    {0x07, "source of the header"},
    {0x08, "part of several, reference of 16 bits"},
    {0x09, "control messages"},
    {0x0A, "text formatting"},
    {0x0B, "predefined sound"},
    {0x0C, "sound"},
    {0x0D, "predefined animation"},
    {0x0E, "large animation"},
    {0x0F, "small animation"},
    {0x10, "large picture"},
    {0x11, "small picture"},
    {0x12, "picture"},
    {0x13, "prompt"},
    {0x20, "mail header"},
    {0x21, "link"},
    {0x22, "reply address"},
    {0x23, "enhanced voice mail"},
    {0x24, "alphabet of one language, characters"},
    {0x25, "alphabet of one language, all"},
};

QString elementName(int id)
{
    for (const ElementName &row : kElements) {
        if (row.id == id) {
            return QString::fromLatin1(row.name);
        }
    }
    return u"element 0x%1"_s.arg(id, 2, 16, QLatin1Char('0'));
}

/// One element as a header of its own.
QByteArray headerOf(const smspdu::HeaderElement &element)
{
    return QByteArray(1, static_cast<char>(element.data.size() + 2)) + static_cast<char>(element.id)
        + static_cast<char>(element.data.size()) + element.data.toByteArray();
}

QString elementInWords(const smspdu::HeaderElement &element)
{
    const QByteArray header = headerOf(element);
    if (const auto ports = smspdu::portsIn(header)) {
        return u"to port %1, from port %2"_s.arg(ports->destination).arg(ports->source);
    }
    if (const auto part = smspdu::concatenationIn(header)) {
        return u"part %1 of %2, reference %3"_s.arg(part->part)
            .arg(part->total)
            .arg(part->reference);
    }
    return u"value"_s;
}

} // namespace

void markUserDataHeader(WalkNotes &notes, QByteArrayView header, qint32 offset)
{
    const QString field = u"user data header"_s;
    const auto elements = smspdu::headerElements(header);
    if (header.isEmpty()) {
        return;
    }
    notes.mark(offset + 1, field, [&] { return u"length: %1"_s.arg(quint8(header[0])); });
    for (const smspdu::HeaderElement &element : elements.value_or(QList<smspdu::HeaderElement>())) {
        const qint32 begin = offset + static_cast<qint32>(element.offset);
        notes.mark(begin + 1, field, [&] { return elementName(element.id); });
        notes.mark(begin + 2, field, [&] { return u"length: %1"_s.arg(element.data.size()); });
        notes.mark(begin + 2 + static_cast<qint32>(element.data.size()), field,
                   [&] { return elementInWords(element); });
    }
    notes.mark(offset + static_cast<qint32>(header.size()), field, [] { return u"elements"_s; });
}

} // namespace wmsg::cli

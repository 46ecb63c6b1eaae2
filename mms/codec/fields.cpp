// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/fields.h"

#include "core/log.h"
#include "mms/codec/field_table.h"
#include "mms/codec/value_names.h"

#include <array>

namespace wmsg::codec {

namespace {

template <class Codec> constexpr FieldRow row(const char *line)
{
    return {Codec::kId,
            line,
            []() -> MsgFieldBase * { return new Codec; },
            [](WSP_Stream &stream, MMS_HDR_S *header) { return Codec().read(stream, header); },
            [](WSP_Stream &stream, MMS_HDR_S *header) { return Codec().write(stream, header); },
            [](MMS_HDR_S *header) {
                Codec().printField(header);
            }};
}

// clang-format off
constexpr std::array<FieldRow, 24> kFields = {{
    row<Field_Bcc>             ("bcc: "),
    row<Field_Cc>              ("cc: "),
    row<Field_ContentLocation> ("contentLocation: %s"),
    row<Field_ContentType>     ("contentType: %s"),
    row<Field_MsgDate>         ("msgDate: %s"),
    row<Field_DeliveryReport>  ("deliveryReport: %d"),
    row<Field_DeliveryTime>    ("eliveryTime: %s"), // Kept: the log text lacks its first letter.
    row<Field_Expiry>          ("expiry: %d"),
    row<Field_From>            ("from: "),
    row<Field_MsgClass>        ("msgClass: %s"),
    row<Field_MsgID>           ("msgID: %s"),
    row<Field_MsgType>         ("PDUType: %s"),
    row<Field_Version>         ("version: %d.%d"),
    row<Field_MsgSize>         ("msgSize: %d"),
    row<Field_Priority>        (nullptr),           // Kept: a priority is never printed.
    row<Field_ReadReport>      ("readReport: %d"),
    row<Field_ReportAllowed>   ("reportAllowed: %d"),
    row<Field_ResponseStatus>  ("responseStatus: %s"),
    row<Field_ResponseText>    ("responseText: %s"),
    row<Field_SenderVisibility>("senderVisibility: %d"),
    row<Field_MsgStatus>       ("msgStatus: %s"),
    row<Field_Subject>         ("subject: %s"),
    row<Field_To>              ("to: "),
    row<Field_TID>             ("transactionId: %s"),
}};
// clang-format on

constexpr bool isIdOrder(const std::array<FieldRow, 24> &rows)
{
    for (size_t n = 0; n < rows.size(); ++n) {
        if (rows[n].id != static_cast<int>(n) + 1) {
            return false;
        }
    }
    return true;
}
static_assert(isIdOrder(kFields), "row n holds field n + 1");

const char *lineOf(int id)
{
    return kFields[static_cast<size_t>(id) - 1].line;
}

} // namespace

const FieldRow *fieldRow(quint32 id)
{
    return id >= 1 && id <= kFields.size() ? &kFields[id - 1] : nullptr;
}

} // namespace wmsg::codec

using wmsg::codec::lineOf;

void FieldPrinter::text(int id, const QString &value)
{
    logLine(4, lineOf(id), value);
}

void FieldPrinter::number(int id, qint32 value)
{
    logLine(4, lineOf(id), value);
}

void FieldPrinter::code(int id, quint8 value)
{
    if (lineOf(id)) {
        logLine(4, lineOf(id), wmsg::codec::valueName(id, value));
    }
}

void FieldPrinter::date(int id, const QDateTime &value)
{
    if (wmsg::log::isPrinted(4)) {
        logLine(4, lineOf(id), value.toLocalTime().toString());
    }
}

void FieldPrinter::entries(int id, const QValueList<WMFMEntry> &value)
{
    if (!value.isEmpty()) {
        logLine(4, lineOf(id));
        MsgFieldBase::printEntryList(value);
    }
}

void Field_Version::printField(MMS_HDR_S *header)
{
    logLine(4, lineOf(kId), header->version >> 4, header->version & 15);
}

// Kept: shown is 129 and hidden 128.
quint32 Field_SenderVisibility::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    bool hidden;
    if (!getBool(stream, hidden)) {
        return 0;
    }
    header->senderVisibility = !hidden;
    return 1;
}

quint32 Field_SenderVisibility::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    return setBool(kId, stream, !header->senderVisibility);
}

// Kept: a subject that cannot be read counts as read.
quint32 Field_Subject::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    EncodedField::read(stream, header);
    return 1;
}

// Kept: a To that cannot be written counts as written.
quint32 Field_To::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    AddressListField::write(stream, header);
    return 1;
}

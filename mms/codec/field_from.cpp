// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/field_table.h"
#include "mms/codec/fields.h"

// from := value-length (128 address | 129)      129: the network inserts the sender's address

namespace {

constexpr quint8 kAddressPresent = 128;
constexpr quint8 kInsertAddress = 129;

} // namespace

quint32 Field_From::read(WSP_Stream &stream, MMS_HDR_S *header)
{
    quint32 length; // read and not used
    quint8 token;
    if (!(stream.readValueLength(length) && stream.readByte(token))) {
        return 0;
    }
    if (token == kAddressPresent) {
        return readAddress(stream, header->from);
    }
    if (token != kInsertAddress) {
        return 0;
    }
    header->from.setContactName(QString());
    header->from.setEntryVal(QString());
    return 1;
}

quint32 Field_From::write(WSP_Stream &stream, MMS_HDR_S *header)
{
    stream.writeInteger(kId);
    char bytes[kScratchSize];
    WSP_Stream value(bytes, kScratchSize);
    if (header->from.isValid()) {
        value.writeByte(kAddressPresent);
        writeAddress(value, header->from);
    } else {
        value.writeByte(kInsertAddress);
    }
    writeLengthPrefixed(stream, value);
    return 1;
}

void Field_From::printField(MMS_HDR_S *header)
{
    if (header->from.isValid()) {
        logLine(4, wmsg::codec::fieldRow(kId)->line);
        printEntry(header->from);
    }
}

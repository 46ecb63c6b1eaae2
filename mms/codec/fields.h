// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/field_shapes.h"

/// The 24 header fields in the order of their ids: class, shape, id, member. A field without a body
/// here is its shape and nothing more. The table behind WMMSMsg::selectField() is in fields.cpp.

// clang-format off
class Field_Bcc             final : public AddressListField<1, &MMS_HDR_S::bcc>     {};
class Field_Cc              final : public AddressListField<2, &MMS_HDR_S::cc>      {};
class Field_ContentLocation final : public TextField<3, &MMS_HDR_S::contentLocation>{};
class Field_ContentType;    // 4, below
class Field_MsgDate         final : public DateField<5, &MMS_HDR_S::msgDate>        {};
class Field_DeliveryReport  final : public BoolField<6, &MMS_HDR_S::deliveryReport> {};
class Field_DeliveryTime;   // 7, below
class Field_Expiry;         // 8, below
class Field_From;           // 9, below
class Field_MsgClass        final : public ByteField<10, &MMS_HDR_S::msgClass>      {};
class Field_MsgID           final : public TextField<11, &MMS_HDR_S::msgID>         {};
class Field_MsgType         final : public ByteField<12, &MMS_HDR_S::msgType>       {};
class Field_Version;        // 13, below
class Field_MsgSize         final : public IntField<14, qint32, &MMS_HDR_S::msgSize>{};
class Field_Priority        final : public ByteField<15, &MMS_HDR_S::priority>      {};
class Field_ReadReport      final : public BoolField<16, &MMS_HDR_S::readReport>    {};
class Field_ReportAllowed   final : public BoolField<17, &MMS_HDR_S::reportAllowed> {};
class Field_ResponseStatus  final : public ByteField<18, &MMS_HDR_S::responseStatus>{};
class Field_ResponseText    final : public EncodedField<19, &MMS_HDR_S::responseText>{};
class Field_SenderVisibility;// 20, below
class Field_MsgStatus       final : public ByteField<21, &MMS_HDR_S::msgStatus>     {};
class Field_Subject;        // 22, below
class Field_To;             // 23, below
class Field_TID             final : public TextField<24, &MMS_HDR_S::transactionId> {};
// clang-format on

/// Field_ContentType is a well-known media number, alone or behind a value-length and followed by
/// parameters. A media type as text is not supported here: it fails as a number or reads as another
/// one.
class WMSG_EXPORT Field_ContentType final : public FieldOf<4> {
public:
    /// read sets type and parameters, and adds to parameters that are there already. Of the
    /// parameters Start, Type, the UTF-16 charsets and those with a name as text are kept. What was
    /// read by then stays when it fails.
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
    /// write writes nothing for an empty content type. Of the parameters Start, Type,
    /// "Application-ID" and "Reply-To-Application-ID" are written. A media type without a number
    /// fails behind the id byte. It returns 1 also when there was no room.
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
    void printField(MMS_HDR_S *header) override;
};

/// Field_DeliveryTime is a value-length, a token and an integer: 128 an absolute time, 129 seconds
/// from now. The length is not used.
class WMSG_EXPORT Field_DeliveryTime final : public FieldOf<7> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
    /// write writes the absolute form whatever was read, and nothing for a null date or the first
    /// second of 1970. It fails for a date that is invalid, before 1970 or beyond 2^32 - 1 seconds.
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
    void printField(MMS_HDR_S *header) override;
};

/// Field_Expiry is coded as the delivery time; its member holds seconds from now.
class WMSG_EXPORT Field_Expiry final : public FieldOf<8> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
    /// write writes the relative form whatever was read, and nothing for -1. It returns 1 also when
    /// there was no room.
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
    void printField(MMS_HDR_S *header) override;
};

/// Field_From is a value-length and a token: 128 followed by an address, or 129, which asks the
/// network to insert it.
class WMSG_EXPORT Field_From final : public FieldOf<9> {
public:
    /// read makes contact name and value null when the address is to be inserted; the type stays.
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
    /// write writes an invalid sender as 129. It returns 1 also when there was no room.
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
    void printField(MMS_HDR_S *header) override;
};

/// Field_Version is an integer whose low byte is the version. It prints as major and minor number.
class WMSG_EXPORT Field_Version final : public IntField<13, quint8, &MMS_HDR_S::version> {
public:
    void printField(MMS_HDR_S *header) override;
};

/// Field_SenderVisibility is shown (129, true) or hidden (128, false): the inverse of the other
/// flags.
class WMSG_EXPORT Field_SenderVisibility final
    : public BoolField<20, &MMS_HDR_S::senderVisibility> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
};

/// Field_Subject is an encoded string. Its read returns 1 even when it failed; the subject is then
/// as it was.
class WMSG_EXPORT Field_Subject final : public EncodedField<22, &MMS_HDR_S::subject> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override;
};

/// Field_To is an address list. Its write returns 1 even when it failed.
class WMSG_EXPORT Field_To final : public AddressListField<23, &MMS_HDR_S::to> {
public:
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override;
};

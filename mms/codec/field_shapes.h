// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/msgfieldbase.h"

/// The shapes that header fields share: each is a codec written once, for a field id and the member
/// of MMS_HDR_S that holds its value. fields.h gives every field its shape.

/// FieldPrinter logs what printField() prints: the line of field `id` with the value in it. It is
/// declared once here, so that the shapes need no log of their own.
class WMSG_EXPORT FieldPrinter {
public:
    static void text(int id, const QString &value);
    static void number(int id, qint32 value);
    static void code(int id, quint8 value);
    static void date(int id, const QDateTime &value);
    static void entries(int id, const QValueList<WMFMEntry> &value);
};

/// FieldOf is a codec that knows the id of its field.
template <int Id> class FieldOf : public MsgFieldBase {
public:
    static constexpr int kId = Id;
};

/// TextField is a text string.
template <int Id, QString MMS_HDR_S::*Member> class TextField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return stream.readTextString(header->*Member);
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setStrField(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::text(Id, header->*Member); }
};

/// EncodedField is an encoded string.
template <int Id, QString MMS_HDR_S::*Member> class EncodedField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return stream.readEncodedString(header->*Member);
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setEncoStrField(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::text(Id, header->*Member); }
};

/// ByteField is one byte, kept as it is. It prints the name of its code.
template <int Id, quint8 MMS_HDR_S::*Member> class ByteField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return stream.readByte(header->*Member);
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setByteField(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::code(Id, header->*Member); }
};

/// IntField is an integer, of which a narrower member keeps the low bits.
template <int Id, typename Integer, Integer MMS_HDR_S::*Member>
class IntField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        quint32 value;
        if (!stream.readInteger(value)) {
            return 0;
        }
        header->*Member = static_cast<Integer>(value);
        return 1;
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setIntField(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::number(Id, header->*Member); }
};

/// BoolField is yes (128) or no (129).
template <int Id, bool MMS_HDR_S::*Member> class BoolField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->getBool(stream, header->*Member);
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setBool(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::number(Id, header->*Member); }
};

/// DateField is a date in seconds since 1970.
template <int Id, QDateTime MMS_HDR_S::*Member> class DateField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->getDate(stream, header->*Member);
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->setDate(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::date(Id, header->*Member); }
};

/// AddressListField is one address of a list. Each field on the wire adds one entry; the list is
/// not cleared.
template <int Id, QValueList<WMFMEntry> MMS_HDR_S::*Member>
class AddressListField : public FieldOf<Id> {
public:
    quint32 read(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        WMFMEntry entry;
        if (!this->readAddress(stream, entry)) {
            return 0;
        }
        (header->*Member).append(std::move(entry));
        return 1;
    }
    quint32 write(WSP_Stream &stream, MMS_HDR_S *header) override
    {
        return this->writeAddressList(Id, stream, header->*Member);
    }
    void printField(MMS_HDR_S *header) override { FieldPrinter::entries(Id, header->*Member); }
};

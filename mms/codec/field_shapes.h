// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/msgfieldbase.h"

/// The shapes that header fields share: each is a codec written once, for a field id and the member
/// of MMS_HDR_S that holds its value. fields.h gives every field its shape.

/// What printField() logs for a text, number or date: the line of field `id` with the value in it.
/// Declared once here, so that the shapes need no log of their own.
class WMSG_EXPORT FieldPrinter {
public:
    static void text(int id, const QString &value);
    static void number(int id, qint32 value);
    static void code(int id, quint8 value);
    static void date(int id, const QDateTime &value);
    static void entries(int id, const QValueList<WMFMEntry> &value);
};

template <int Id> class FieldOf : public MsgFieldBase {
public:
    static constexpr int kId = Id;
};

/// A text string.
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

/// An encoded string.
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

/// One byte, kept as it is. It prints the name of its code.
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

/// An integer, of which a narrower member keeps the low bits.
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

/// Yes (128) or no (129).
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

/// A date in seconds since 1970.
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

/// One address of a list. Each field on the wire adds one entry; the list is not cleared.
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

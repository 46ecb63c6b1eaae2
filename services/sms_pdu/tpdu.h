// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/user_data_header.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

// Short messages between a phone and its network (the TPDU), bit 0 the lowest:
//
//   deliver := 0x00|flags address pid dcs time length user-data
//   submit  := 0x01|flags reference address pid dcs [ validity ] length user-data
//   report  := 0x02|flags reference address time discharge-time status [ parameters ... ]
//   address := digits type { two digits, the first in the low half }
//   length  := septets of the 7-bit alphabet, else octets, the header included
//   user-data := [ user-data-header ] text
//
// A modem writes the number of the service centre in front: octets type { two digits }, or 0x00.

namespace wmsg::smspdu {

/// A number, or a name in letters.
struct Address {
    static constexpr quint8 kUnknown = 0x81;
    static constexpr quint8 kInternational = 0x91;
    static constexpr quint8 kAlphanumeric = 0xD0;

    quint8 type = kUnknown; ///< Kind of number and numbering plan, with bit 7 set.
    QString value; ///< Digits, "*", "#", "a", "b", "c"; or letters. No "+".

    [[nodiscard]] bool isAlphanumeric() const { return (type & 0x70) == 0x50; }
    [[nodiscard]] bool isInternational() const { return (type & 0x70) == 0x10; }
    /// toString returns the value, an international number with its "+".
    [[nodiscard]] QString toString() const;
    /// fromString takes a number with or without "+", and anything else as a name.
    [[nodiscard]] static Address fromString(const QString &text);
};

/// How long a submitted message is worth delivering.
struct Validity {
    enum class Form { None, Enhanced, Relative, Absolute }; ///< In the order of the wire.

    Form form = Form::None;
    QByteArray octets; ///< 1 when relative, else 7.

    /// seconds returns the period; -1 when it has none, as an absolute time.
    [[nodiscard]] qint64 seconds() const;
    /// until returns the absolute time; else an invalid one.
    [[nodiscard]] QDateTime until() const;
    /// relative returns the shortest period that is not below `seconds`; the longest is 63 weeks.
    [[nodiscard]] static Validity relative(qint64 seconds);
};

enum class Kind { Deliver, Submit, StatusReport };

enum class Alphabet { Gsm7, Octets, Ucs2, Compressed };

/// alphabetOf returns what a data coding scheme says about the user data.
[[nodiscard]] Alphabet alphabetOf(quint8 dcs);
/// messageClassOf returns the class of a message, 0 to 3; -1 when it has none.
[[nodiscard]] int messageClassOf(quint8 dcs);

/// What a stretch of a TPDU is.
enum class Item {
    FirstOctet,
    Reference,
    AddressLength,
    AddressType,
    AddressValue,
    ProtocolId,
    CodingScheme,
    TimeStamp,
    DischargeTime,
    Status,
    Parameters, ///< Which of the optional fields of a report follow.
    Validity,
    DataLength,
    Header,
    Data,
};

struct Mark {
    Item item = Item::FirstOctet;
    qsizetype offset = 0;
    qsizetype size = 0;
};

/// A short message as it was read, or to be written.
struct Tpdu {
    Kind kind = Kind::Submit;
    bool hasMore = false; ///< Deliver, report: more messages wait.
    bool isLooped = false; ///< Deliver, report: it was forwarded, or caused by another.
    bool rejectsDuplicates = false; ///< Submit.
    bool hasReport = false; ///< A report is asked for, or will be given.
    bool hasReplyPath = false; ///< Deliver, submit.
    quint8 reference = 0; ///< Submit, report.
    Address address; ///< Deliver: the sender. Submit, report: the recipient.
    quint8 pid = 0;
    quint8 dcs = 0;
    QDateTime timeStamp; ///< Deliver, report: with its zone; invalid when the octets are no time.
    QDateTime dischargeTime; ///< Report.
    quint8 status = 0; ///< Report: below 0x20 delivered, below 0x40 still tried.
    smspdu::Validity validity; ///< Submit.
    QByteArray udh; ///< With its length; empty when there is none.
    QByteArray userData; ///< Without the header: a byte for each septet or octet.
    QList<Mark> marks; ///< Of what was read, in wire order, without a gap.

    [[nodiscard]] Alphabet alphabet() const { return alphabetOf(dcs); }
    /// text returns what the user data say; null when they are octets, or compressed.
    [[nodiscard]] QString text() const;
    [[nodiscard]] std::optional<Ports> ports() const { return portsIn(udh); }
    [[nodiscard]] std::optional<Concatenation> concatenation() const
    {
        return concatenationIn(udh);
    }
    /// fits returns whether header and user data are no longer than 140 octets.
    [[nodiscard]] bool fits() const;
};

/// Where a TPDU comes from. The same first octet begins different messages each way.
enum class Origin { Network, Phone };

struct ReadResult {
    Tpdu tpdu;
    qsizetype offset = 0; ///< Of what is wrong.
    QString problem; ///< Empty when the TPDU was read.

    [[nodiscard]] bool isRead() const { return problem.isEmpty(); }
};

/// readTpdu reads a whole TPDU, without a service centre in front. It fails when the bytes end
/// before the TPDU does, or after it, and for any but the three kinds. Any thread may call it.
[[nodiscard]] ReadResult readTpdu(QByteArrayView bytes, Origin origin);

/// What stands in front of a TPDU from a modem.
struct ServiceCentre {
    Address address; ///< Its value is empty when the modem's own is meant.
    qsizetype size = 0; ///< How many octets it took.
};

/// readServiceCentre returns nothing when the bytes begin with no service centre.
[[nodiscard]] std::optional<ServiceCentre> readServiceCentre(QByteArrayView bytes);
/// writtenServiceCentre returns the octets in front of a TPDU; 0x00 for an empty number.
[[nodiscard]] QByteArray writtenServiceCentre(const Address &address);

/// textMessage returns a message with `text`, in the 7-bit alphabet when that has all of it, else
/// in UCS-2; dataMessage one with octets. Whether it fits one short message is for fits() to tell.
[[nodiscard]] Tpdu textMessage(Kind kind, const Address &address, const QString &text);
[[nodiscard]] Tpdu dataMessage(Kind kind, const Address &address, const QByteArray &data);

/// writeTpdu returns the octets of `tpdu`; null when it does not fit, when its address has more
/// than 20 digits or 11 letters, or when its header is none.
[[nodiscard]] QByteArray writeTpdu(const Tpdu &tpdu);

} // namespace wmsg::smspdu

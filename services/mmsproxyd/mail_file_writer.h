// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// MailFileWriter turns what an MMSC gave for a message into a mail file that a session reads. What
/// makes it readable is services/intake.

namespace wmsg::proxy {

/// Taken is what became of a PDU.
struct Taken {
    enum class Kind {
        Message, ///< The mail file lies, durable, where it was wanted.
        NoBetter, ///< The message is cut off, and has no more bytes than the one that was there.
        NoMessage, ///< The MMSC says that it has no message for us: see retrieveStatus.
        Unreadable, ///< No message that a session could read; fetching it again may help or not.
        Failed, ///< A file could not be read or written; another time it may.
    };

    Kind kind = Kind::Unreadable;
    /// One line: why it is no message, or what the MMSC says about it. It holds no content of a
    /// message.
    QString reason;
    /// Where in the PDU reading ended, unless it was read whole; -1 when there is no such place.
    qint64 offset = -1;
    /// What a retrieve confirmation says about its success: 128 is ok, 192 to 223 may pass, 224 and
    /// above will not; 0 when it says nothing.
    quint8 retrieveStatus = 0;
    /// What the message announces and does not have; null when it is whole. Its mail file lies
    /// there all the same, and fetching it again may bring the rest.
    QString loss;
    /// How many things had to be repaired before a session could read it.
    int repairs = 0;
    /// The transaction that an acknowledge names; null when the MMSC wants none.
    QString transactionId;
    /// The application that the message is for; null when it is for whoever takes messages.
    QString applicationId;

    /// mayPass tells whether another attempt may bring the message.
    [[nodiscard]] bool mayPass() const
    {
        return kind == Kind::Failed
            || (kind == Kind::NoMessage && retrieveStatus >= 192 && retrieveStatus < 224);
    }
};

/// MailFileWriter takes fetched PDUs, one at a time. It keeps nothing between two.
class MailFileWriter {
public:
    /// The largest PDU that is looked at. A larger one is unreadable.
    explicit MailFileWriter(qint64 limit) : m_limit(limit) { }

    /// take reads the retrieve confirmation in `pduFile` and writes it as a mail file to
    /// `mailFile`, which is replaced as a whole and synced, with its folder. The bytes of a PDU
    /// that the library reads stay as they are; another one is made readable, as
    /// services/intake/intake.h tells. `pduFile` stays in any case.
    ///
    /// The PDU goes from file to file; while it is checked, it lies in memory once.
    [[nodiscard]] Taken take(const QString &pduFile, const QString &mailFile) const;

    /// takeBetter does the same when a message lies in `mailFile` that was cut off. That one stays
    /// unless the new one is whole, or longer.
    [[nodiscard]] Taken takeBetter(const QString &pduFile, const QString &mailFile) const;

    /// reread returns what take() has returned about a mail file, as far as it is written there.
    [[nodiscard]] static Taken reread(const QString &mailFile);

private:
    [[nodiscard]] Taken take(const QString &pduFile, const QString &mailFile, qint64 had) const;

    qint64 m_limit;
};

} // namespace wmsg::proxy

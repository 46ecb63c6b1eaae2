// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/pieces.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace wmsg::intake {

/// Something that was noticed, and where: an offset in the bytes that were given.
struct Remark {
    qsizetype offset = 0;
    QString what;
};

/// What the header of a message says, whether the codec reads that field or not.
struct Facts {
    quint8 type =
        0; ///< 0x80 send request ... 0x88 read report from the network; 0 when it has none.
    QString transactionId;
    QString messageId;
    QString location;
    quint8 responseStatus = 0; ///< 0: absent, as for all the codes.
    quint8 messageStatus = 0;
    quint8 retrieveStatus = 0;
    QString retrieveText;
    quint8 readStatus = 0;
    QStringList previousSenders; ///< Who forwarded it, in the order of the header.
    QList<quint32> previousDates; ///< When; seconds since 1970.
};

/// What a message turned out to be.
enum class Verdict {
    Readable, ///< The codec reads it, or what was made of it.
    ReadReport, ///< It tells that a message was read; the codec has no form for it.
    NotRetrieved, ///< It tells, in place of a message, why there is none: see
                  ///< Facts::retrieveStatus.
    Unreadable, ///< See Result::problem.
};

/// Where a message comes from. The network sends notifications, retrieve confirmations, delivery
/// and read reports, and send confirmations; a file may hold any type.
enum class Origin { Network, File };

/// What came of a message.
struct Result {
    Verdict verdict = Verdict::Unreadable;
    /// The bytes given hold the message in a form that the codec reads; nothing was made of them.
    bool isUnchanged = true;
    /// The message, when it is readable: stretches of the bytes given, which must outlive this, and
    /// what had to be written anew.
    Pieces pdu;
    QList<Remark> steps; ///< What was done to make it readable.
    QList<Remark> lost; ///< What the message announces and does not have.
    Remark problem; ///< Why it is unreadable, or was not retrieved.
    Facts facts;
};

/// takeIn returns an equal message in the form that the library's codec reads, or the reason why
/// there is none. `bytes` hold an MMS PDU, a WAP push with one, or a push behind the user data
/// header of a short message.
///
/// A message that is readable already is not touched. Otherwise fields that the codec does not know
/// are left out, texts become UTF-8, transfer encodings are undone, content types and part headers
/// are written in the one form that it reads; every part stays, in its order, its content
/// unchanged if it is no text. What the message lies about or lacks is told in Result::lost.
///
/// Time and memory are bounded by the size of `bytes`; nothing is allocated on the word of a
/// length. Any thread may call it.
[[nodiscard]] Result takeIn(QByteArrayView bytes, Origin origin = Origin::Network);
Result takeIn(const QByteArray &&bytes, Origin origin = Origin::Network) = delete;

/// takeInAnyForm returns what takeIn does, with each field and part read by itself. takeIn leaves
/// to it what is not plain at first sight.
[[nodiscard]] Result takeInAnyForm(QByteArrayView bytes, Origin origin);

} // namespace wmsg::intake

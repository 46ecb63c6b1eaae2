// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// The PDUs that leave for the MMSC, and the answer to a send request.

namespace wmsg::proxy {

/// OutgoingPdu is what became of a mail file that was to become a send request.
struct OutgoingPdu {
    enum class Result {
        Written, ///< The send request lies, durable, where it was wanted.
        Refused, ///< The message is no mail file, or nothing that may leave; it never will be.
        Failed, ///< A file could not be read or written; another time it may.
    };

    Result result = Result::Written;
    /// One line for the log unless Written. It holds nothing of the message.
    QString text;
    /// The bytes of the send request.
    qint64 size = 0;
};

/// writeSendRequest turns the stored form in `mailFile` into a send request in `pduFile`, which is
/// replaced as a whole and synced, with its folder.
///
/// What leaves is legal whatever the application left at its default: message type, transaction id
/// and version are set, the network inserts the sender, a priority of 0 to 2 becomes 128 to 130, a
/// date that is missing is `taken`, and codes that are none are left out, as are an expiry or a
/// delivery time that is none and recipients without an address. A message without any recipient is
/// refused, and one whose body the library cannot read. The same arguments give the same bytes.
///
/// The body is copied from file to file as it is; while it is checked, it lies in memory once.
[[nodiscard]] OutgoingPdu writeSendRequest(const QString &mailFile, const QString &pduFile,
                                           const QString &transactionId, const QDateTime &taken);

/// A status of a message that is told to the MMSC. On the wire: never renumber.
enum class MessageStatus : quint8 {
    Expired = 128,
    Retrieved = 129,
    Rejected = 130,
    Deferred = 131,
    Unrecognised = 132,
};

/// notifyResponse returns the PDU that answers a notification. It allows the sender to hear about
/// it unless `reportAllowed` is false.
[[nodiscard]] QByteArray notifyResponse(const QString &transactionId, MessageStatus status,
                                        bool reportAllowed = true);
/// acknowledge returns the PDU that confirms a retrieval which no notify-response told of.
[[nodiscard]] QByteArray acknowledge(const QString &transactionId, bool reportAllowed = true);

/// SendConfirmation is the MMSC's answer to a send request.
struct SendConfirmation {
    /// 128 or above; 0 when the answer was no confirmation of this send request.
    quint8 responseStatus = 0;
    QString messageId;
    /// What the MMSC says about it, or why this is no confirmation.
    QString text;

    [[nodiscard]] bool isValid() const { return responseStatus >= 128; }
    [[nodiscard]] bool isAccepted() const { return responseStatus == 128; }
    /// isTransient tells whether the same request may be accepted later: 192 to 223, and 134, a
    /// network problem.
    [[nodiscard]] bool isTransient() const
    {
        return responseStatus == 134 || (responseStatus >= 192 && responseStatus <= 223);
    }
};

/// readSendConfirmation reads the answer to the send request with that transaction id. An MMSC that
/// leaves the id out is believed. A response status above 234 is one of a future, and becomes 224,
/// a permanent failure; one below 128 is none.
[[nodiscard]] SendConfirmation readSendConfirmation(const QByteArray &answer,
                                                    const QString &transactionId);

} // namespace wmsg::proxy

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// What an MMSC pushes to a phone.

namespace wmsg::proxy {

/// The largest PDU that is taken from a push.
inline constexpr qint64 kLargestPush = 65536;

/// Notification is a push as it was read: of a message that waits, of the fate of one that was
/// sent, or of nothing that we know.
struct Notification {
    enum class Kind {
        MessageWaits,
        DeliveryReport,
        ReadReport, ///< Somebody has read a message. There is nobody to tell; it is taken all the
                    ///< same, or the network would push it for ever.
        Unknown,
    };

    Kind kind = Kind::Unknown;
    /// Why it is unknown: one line, with the offset where reading ended if there is one.
    QString reason;

    // Of a message that waits.
    /// Never empty.
    QString transactionId;
    /// Where the message is fetched; never empty, but it may be no URL.
    QString location;
    /// Bytes, as announced; 0 when nothing was.
    quint32 size = 0;
    /// Until when the message waits; not valid when nothing says so. In UTC.
    QDateTime expires;
    /// 128 personal to 131 auto; 128 when nothing says so.
    quint8 messageClass = 128;

    // Of a message that was sent.
    /// Never empty.
    QString messageId;
    /// To whom it was sent: the address alone. May be empty.
    QString recipient;
    /// When that happened; `now` when nothing says so. In UTC.
    QDateTime date;
    /// 128 expired, 129 retrieved, 130 rejected, 131 deferred, ...; 0 when nothing says so.
    quint8 status = 0;
};

/// readNotification reads a PDU, bare or in a WAP push. Times that count from now count from `now`.
[[nodiscard]] Notification readNotification(const QByteArray &pdu, const QDateTime &now);

} // namespace wmsg::proxy

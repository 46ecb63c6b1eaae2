// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

#include <optional>

namespace wmsg::proxy {

/// Answer is a PDU that the MMSC is still owed.
struct Answer {
    enum class Kind { NotifyResponse, Acknowledge };

    Kind kind = Kind::NotifyResponse;
    QString transactionId;
    quint8 status = 0; ///< of a notify-response: 128 expired, 129 retrieved, 130 rejected, ...

    bool operator==(const Answer &other) const
    {
        return kind == other.kind && transactionId == other.transactionId && status == other.status;
    }
};

/// IncomingRecord is what the spool knows of one message, or one delivery report, that came in.
/// Points in time are milliseconds since 1970.
struct IncomingRecord {
    /// The life of a message. A report is Ready until it was told, and then Over.
    enum class Stage {
        Announced, ///< is fetched, also again, until it expires
        Deferred, ///< waits until it is asked for
        Asked, ///< is fetched because a session asked for it
        Ready, ///< lies in the spool as a mail file
        Over, ///< delivered, expired, rejected or kept aside: only remembered
    };
    enum class Kind { Message, Report };

    Kind kind = Kind::Message;
    Stage stage = Stage::Announced;
    QString transactionId; ///< of the notification; null when a session named the URI itself
    QString location;
    qint64 expires = 0; ///< when the MMSC drops the message; 0: never heard of
    qint64 since = 0; ///< when the record was made
    quint8 response = 0; ///< the status of the notify-response, once it is known

    int attempts = 0; ///< at fetching
    qint64 nextTry = 0;
    /// What the message lacks, which came cut off: it is fetched once more, and what is there lies
    /// in the spool as a mail file, for the case that no more comes. Null of a whole message.
    QString loss;

    QList<Answer> answers; ///< oldest first
    int answerAttempts = 0; ///< at the first of them
    qint64 nextAnswer = 0;

    QString appId;
    QStringList handed; ///< the names of its files in handed/

    QString messageId; ///< of a report, as the next two
    QString to;
    qint64 date = 0;

    [[nodiscard]] bool isFetched() const
    {
        return stage == Stage::Announced || stage == Stage::Asked;
    }
    [[nodiscard]] QJsonObject toJson() const;
    /// Nothing when the record is none that toJson() makes; `reason` then says why.
    static std::optional<IncomingRecord> fromJson(const QJsonObject &json, QString &reason);
};

} // namespace wmsg::proxy

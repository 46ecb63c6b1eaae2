// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/incoming_record.h"
#include "services/mmsproxyd/spool.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <map>
#include <vector>

namespace wmsg::proxy {

/// Inbox is all that came in: messages that are announced, fetched or wait for an addressee,
/// reports that wait for a session, and the memory of what is over, by which a repeated
/// notification is known. RetrievalQueue fills it; whoever hands messages to sessions asks it for
/// them and tells it what became of them.
///
/// A message is handed out as a file of its own in Spool::handedFolder(), one for each addressee.
/// The addressee removes the file when it has the message; that is its confirmation. What is told
/// to the inbox is durable when the operation returns.
class Inbox {
public:
    /// For how long what is over is remembered beyond its expiry, and how many of it at most. A
    /// message that nobody asked for is given up by then too.
    static constexpr qint64 kMemory = 7LL * 24 * 3600 * 1000; // milliseconds
    static constexpr int kMostRemembered = 4096;
    /// How many messages and reports may wait; further notifications are refused.
    static constexpr int kMostWaiting = 10000;

    struct Report {
        QString messageId;
        QString to;
        QDateTime date;
    };
    struct Announcement {
        QString uri;
        QString transactionId;
    };

    explicit Inbox(Spool &spool) : m_spool(spool) { }
    Q_DISABLE_COPY_MOVE(Inbox)

    /// restore reads the spool, once, after it was opened. A handed file that is gone was the
    /// confirmation of its addressee; one that is still there is taken back.
    void restore();

    // For those who hand messages out.

    /// ready returns the messages that no addressee has confirmed yet, oldest first; also those
    /// that are handed out.
    [[nodiscard]] std::vector<MessageId> ready() const;
    /// The application that a message is for; empty when it names none.
    [[nodiscard]] QString appId(MessageId id) const;
    /// handOut makes a file for one addressee and sets `path` to it. Returns the problem, or an
    /// empty text; only then the addressee may be told.
    [[nodiscard]] QString handOut(MessageId id, QString &path);
    /// takeBack takes a handed file back from an addressee that has gone. It returns false when the
    /// file was gone too: the addressee had the message, and delivered() is to be called. Files of
    /// messages that are delivered to somebody else are removed in the same way.
    [[nodiscard]] bool takeBack(MessageId id, const QString &path);
    /// delivered tells that an addressee has removed its file. Files of others are theirs until
    /// they are taken back.
    void delivered(MessageId id);

    /// reports returns the delivery reports that no session has been told, oldest first.
    [[nodiscard]] std::vector<MessageId> reports() const;
    [[nodiscard]] Report report(MessageId id) const;
    void reportTold(MessageId id);

    /// announced returns the messages that wait to be asked for, oldest first.
    [[nodiscard]] std::vector<Announcement> announced() const;

    // For the one who fills it.

    /// All records, by age.
    [[nodiscard]] const std::map<MessageId, IncomingRecord> &all() const { return m_records; }
    [[nodiscard]] const IncomingRecord *find(MessageId id) const;
    /// The message, or the report, that a notification speaks of; 0 when it is the first.
    [[nodiscard]] MessageId known(const IncomingRecord &like) const;
    /// The message that can be had at a URI and is not over; 0 when there is none.
    [[nodiscard]] MessageId fetchable(const QString &uri) const;
    [[nodiscard]] bool isFull() const;

    /// save makes the record that of a message, or changes nothing and returns the problem.
    [[nodiscard]] QString save(MessageId id, const IncomingRecord &record);
    /// update does what save does for changes that stand even where they could not be written: the
    /// next start then finds the record of before. A record that is over loses its files.
    void update(MessageId id, IncomingRecord record);
    /// forget removes a message, its record and its files.
    void forget(MessageId id);
    /// forgetOld removes what was remembered for long enough.
    void forgetOld(qint64 now);

private:
    void restoreRecord(MessageId id, IncomingRecord record);
    void restoreHanded(MessageId id, IncomingRecord record);
    void emptyFolders() const;
    [[nodiscard]] std::vector<MessageId> withStage(IncomingRecord::Kind kind,
                                                   IncomingRecord::Stage stage) const;

    Spool &m_spool;
    std::map<MessageId, IncomingRecord> m_records;
};

} // namespace wmsg::proxy

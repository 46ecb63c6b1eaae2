// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <vector>

namespace wmsg::proxy {

/// The number of a message in the spool, in both boxes. Numbers grow and are not used again, also
/// not after a new start; 0 is no message.
using MessageId = quint64;

// spool    := lock out/ in/ handed/ returned/ kept/
//   lock      held with flock as long as a daemon runs
//   out/, in/ ID.json, the record, and files of the message beside it: ID.mail ID.pdu ID.note
//   ID.part handed/   mail files that sessions were given, under names that nobody can guess
//   returned/ those that were taken back from a session, until that is written down
//   kept/     BOX-ID.*, what could not be used, each with its reason in BOX-ID.txt
//   ID        20 decimal digits

/// Spool is the folder that holds every message from before it is confirmed until after it is done
/// with, and knows nothing of what the messages are. A message is its record; files that lie beside
/// no record are what a step left that was cut off, and are removed at the next start.
///
/// Everything that changes the spool is durable when it returns, and returns the problem in words;
/// an empty text means that it is done. docs/formats/spool.md shows the folder.
class Spool {
public:
    enum class Box { Out, In };

    /// The files that a message can have beside its record.
    enum class Part {
        Mail, ///< a mail file
        Pdu, ///< the PDU that is sent
        Notice, ///< the notification, as it was pushed
        Fetched, ///< what has been fetched so far
    };

    struct Stored {
        MessageId id;
        QJsonObject record;
    };

    /// The longest record, in bytes.
    static constexpr qint64 kLongestRecord = 64LL * 1024;
    /// How many messages are kept aside; the oldest go first.
    static constexpr int kMostKept = 1000;

    explicit Spool(QString folder);
    Q_DISABLE_COPY_MOVE(Spool)

    /// open makes the folder where it is missing and locks it for this object. It is a problem when
    /// another daemon has the lock, or when the folder is another user's, or open to others.
    [[nodiscard]] QString open();

    /// restore returns the messages of a box, oldest first, and removes what no record belongs to.
    /// A record that cannot be read is kept aside with all the files of its message.
    [[nodiscard]] std::vector<Stored> restore(Box box);

    /// nextId returns a number that no message had before.
    [[nodiscard]] MessageId nextId();

    /// write makes `record` the record of a message.
    [[nodiscard]] QString write(Box box, MessageId id, const QJsonObject &record) const;
    /// remove removes a message: its record, then its files.
    [[nodiscard]] QString remove(Box box, MessageId id) const;
    /// removeFiles removes the files of a message; the record stays.
    [[nodiscard]] QString removeFiles(Box box, MessageId id) const;
    /// keep moves the files of a message to kept/, with the reason; the record stays. It may be
    /// repeated after it was cut off.
    [[nodiscard]] QString keep(Box box, MessageId id, const QString &reason);
    /// setAside does the same with the record too, which cannot be used.
    void setAside(Box box, MessageId id, const QString &reason);

    /// The path of a file of a message, which need not exist.
    [[nodiscard]] QString path(Box box, MessageId id, Part part) const;
    [[nodiscard]] bool has(Box box, MessageId id, Part part) const;

    [[nodiscard]] QString folder() const { return m_folder; }
    /// Where the mail files lie that sessions were given: the folder to watch.
    [[nodiscard]] QString handedFolder() const;
    [[nodiscard]] QString returnedFolder() const;
    [[nodiscard]] QString keptFolder() const;

private:
    [[nodiscard]] QString recordPath(Box box, MessageId id) const;
    [[nodiscard]] QString folderOf(Box box) const;
    void countFrom(const QString &folder);
    void removeStrays(Box box) const;
    void forgetOldestKept() const;

    QString m_folder;
    service::Descriptor m_lock;
    MessageId m_lastId = 0;
};

} // namespace wmsg::proxy

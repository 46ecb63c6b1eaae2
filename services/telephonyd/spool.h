// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <chrono>
#include <vector>

namespace wmsg::telephonyd {

/// The number of a record in the spool, in both boxes. Numbers grow and are not used again; 0 is no
/// record.
using RecordId = quint64;

// spool     := lock out/ in/ kept/
//   lock       held with flock as long as a daemon runs
//   out/, in/  ID.json, a record each
//   kept/      BOX-ID.json, what could not be used, each with its reason in BOX-ID.txt
//   ID         20 decimal digits

/// Spool is the folder of all that outlives the daemon, and knows nothing of what its records mean.
/// What changes it is durable when it returns, and returns the problem in words; an empty text
/// means that it is done. docs/formats/telephony-spool.md shows the folder.
class Spool {
public:
    enum class Box { Out, In };

    struct Stored {
        RecordId id;
        QJsonObject record;
    };

    /// The longest record, in bytes: a body of 64 KiB in hex, and room.
    static constexpr qint64 kLongestRecord = 256LL * 1024;
    /// How many records are kept aside; the oldest go first.
    static constexpr int kMostKept = 1000;

    explicit Spool(QString folder);
    Q_DISABLE_COPY_MOVE(Spool)

    /// open makes the folder where it is missing and locks it for this object. It is a problem when
    /// another daemon has the lock, or when the folder is another user's, or open to others.
    [[nodiscard]] QString open();

    /// restore returns the records of a box, oldest first. What cannot be read is kept aside, and
    /// what an unfinished step left is removed.
    [[nodiscard]] std::vector<Stored> restore(Box box);

    /// nextId returns a number that no record had before.
    [[nodiscard]] RecordId nextId();

    [[nodiscard]] QString write(Box box, RecordId id, const QJsonObject &record) const;
    /// remove removes a record; that there is none is no problem.
    [[nodiscard]] QString remove(Box box, RecordId id) const;
    /// setAside moves a record to kept/, with the reason.
    void setAside(Box box, RecordId id, const QString &reason);

    [[nodiscard]] QString path(Box box, RecordId id) const;

private:
    [[nodiscard]] QString folderOf(Box box) const;
    [[nodiscard]] QString keptFolder() const;
    void countFrom(const QString &folder);
    void forgetOldestKept() const;

    QString m_folder;
    service::Descriptor m_lock;
    RecordId m_lastId = 0;
};

/// The time of day in milliseconds since 1970, 0 by a clock that is before that.
[[nodiscard]] qint64 currentTime();

/// timeLeft returns how much is left of `lifetime` for what began at the time of day `since`, when
/// a daemon that starts finds it. The clock may have been set meanwhile, so it is never more than
/// all, nor less than a 24th of it.
[[nodiscard]] std::chrono::milliseconds timeLeft(qint64 since, std::chrono::milliseconds lifetime);

} // namespace wmsg::telephonyd

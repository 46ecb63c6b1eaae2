// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"
#include "services/common/record_file.h"

#include <QtCore/QJsonObject>
#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <vector>

namespace wmsg::service {

/// The number of a record in a spool, in both boxes. Numbers grow and are not used again, also not
/// after a new start; 0 is no record.
using RecordId = quint64;

// folder := lock out/ in/ kept/
//   lock      held with flock as long as a daemon runs
//   out/, in/ ID.json, the record, and files that belong to it: ID.ENDING
//   kept/     BOX-ID.*, what could not be used, each with its reason in BOX-ID.txt
//   ID        20 decimal digits

/// RecordBoxes is what the spools of the daemons have in common, and what each derives its own
/// from: a folder with a box of records for each direction, and what was kept aside. It knows
/// nothing of what the records mean.
///
/// Everything that changes the folder is durable when it returns, and returns the problem in words;
/// an empty text means that it is done.
class RecordBoxes {
public:
    enum class Box { Out, In };

    struct Stored {
        RecordId id;
        QJsonObject record;
    };

    /// Files that can lie beside a record, by the endings of their names.
    struct FileKind {
        QLatin1String inBox;
        QLatin1String whenKept;
    };

    /// What is each spool's own.
    struct Layout {
        const char *noun; ///< what the log calls that which has a record
        RecordFormat format;
        std::vector<FileKind> files;
    };

    /// How many are kept aside; the oldest go first.
    static constexpr int kMostKept = 1000;

    Q_DISABLE_COPY_MOVE(RecordBoxes)

    /// open makes the folder where it is missing and locks it for this object. It is a problem when
    /// another daemon has the lock, or when the folder is another user's, or open to others.
    [[nodiscard]] QString open();

    /// restore returns the records of a box, oldest first. One that cannot be read is kept aside
    /// with its files.
    [[nodiscard]] std::vector<Stored> restore(Box box);

    /// nextId returns a number that nothing had before.
    [[nodiscard]] RecordId nextId();

    /// write makes `record` the one of this number.
    [[nodiscard]] QString write(Box box, RecordId id, const QJsonObject &record) const;
    /// remove removes a record, then its files; that there is none is no problem.
    [[nodiscard]] QString remove(Box box, RecordId id) const;
    /// removeFiles removes the files of a record, which stays.
    [[nodiscard]] QString removeFiles(Box box, RecordId id) const;
    /// keep moves the files of a record to kept/, with the reason; the record stays. It may be
    /// repeated after it was cut off.
    [[nodiscard]] QString keep(Box box, RecordId id, const QString &reason);
    /// setAside does the same with the record too, which cannot be used.
    void setAside(Box box, RecordId id, const QString &reason);

    [[nodiscard]] QString folder() const { return m_folder; }
    [[nodiscard]] QString keptFolder() const;

protected:
    RecordBoxes(QString folder, Layout layout);
    ~RecordBoxes() = default;

    /// The path of a file beside a record, which need not exist; `kind` is its place in the layout.
    [[nodiscard]] QString filePath(Box box, RecordId id, size_t kind) const;
    [[nodiscard]] bool hasFile(Box box, RecordId id, size_t kind) const;

    /// removeUnfinished removes the files under construction in a box.
    void removeUnfinished(Box box) const;
    /// removeStrays removes them too, and all files that lie beside no record.
    void removeStrays(Box box) const;

private:
    [[nodiscard]] QString folderOf(Box box) const;
    [[nodiscard]] QString recordPath(Box box, RecordId id) const;
    void countFrom(const QString &folder);
    void removeUnfinishedIn(const QString &folder) const;
    void forgetOldestKept() const;

    QString m_folder;
    Layout m_layout;
    Descriptor m_lock;
    RecordId m_lastId = 0;
};

} // namespace wmsg::service

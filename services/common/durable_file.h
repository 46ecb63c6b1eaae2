// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Changes to files that outlive a killed process and a lost supply of power: whoever is told that
/// one is done finds it done after the next start. Every function returns the problem in words that
/// name the file, and an empty text when there is none.
///
/// A new file appears under its name whole or not at all. What a killed process leaves behind is a
/// file whose name isTemporaryName() knows; the owner of a folder removes such files when it
/// starts. New files have mode 0600.
namespace wmsg::service {

/// NewFile is a file under construction, beside the one that it becomes. It goes with the object
/// unless it was committed.
///
///     NewFile file(path);
///     if (!file.isOpen() || !fill(file.descriptor())) {
///         return file.problem();
///     }
///     return file.commit();
class NewFile {
public:
    explicit NewFile(const QString &path);
    ~NewFile();
    Q_DISABLE_COPY_MOVE(NewFile)

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    /// Open for reading and writing, empty at first.
    [[nodiscard]] int descriptor() const { return m_file.get(); }
    /// The last system error as a problem of this file.
    [[nodiscard]] QString problem() const;
    /// Makes the file durable under its name; one that had the name before is replaced in one step.
    [[nodiscard]] QString commit();

private:
    QString m_path;
    QByteArray m_name; // under construction
    Descriptor m_file;
};

/// Whether a file of this name is one under construction.
[[nodiscard]] bool isTemporaryName(const QString &fileName);

/// Makes `bytes` the content of the file at `path`.
[[nodiscard]] QString writeDurably(const QString &path, QByteArrayView bytes);

/// Makes the whole content of the open regular file `from` that of the file at `to`, without taking
/// it into memory. More than `limit` bytes are a problem, also when the file grows meanwhile. The
/// position of `from` stays as it is.
[[nodiscard]] QString copyDurably(int from, const QString &to, qint64 limit);

/// Gives the file at `from` the second name `to`, which nothing has yet.
[[nodiscard]] QString linkDurably(const QString &from, const QString &to);

/// Renames a file; one at `to` is replaced.
[[nodiscard]] QString renameDurably(const QString &from, const QString &to);

/// Removes a file. That there is none is no problem.
[[nodiscard]] QString removeDurably(const QString &path);

/// Makes the folder and those above it that are missing, with mode 0700.
[[nodiscard]] QString makeFolderDurably(const QString &path);

/// Makes durable which names a folder has.
[[nodiscard]] QString syncFolder(const QString &path);

} // namespace wmsg::service

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>

/// The folder of a spool, and the records in it: a JSON object each, in a file of its own, with the
/// version of its format in "version".
namespace wmsg::service {

/// usePrivateFolder makes the folder where it is missing. It returns the problem in words, also
/// when the folder is another user's, or when others may write to it; else an empty text.
[[nodiscard]] QString usePrivateFolder(const QString &path);

/// lockFolder takes the lock of a folder, in the file `lock` in it, for as long as `lock` is open.
/// It is a problem when another process has it.
[[nodiscard]] QString lockFolder(const QString &folder, Descriptor &lock);

struct RecordFormat {
    int version;
    qint64 longest; ///< in bytes
};

/// readRecord returns a record; nothing, with the reason, when the file holds none of this format.
[[nodiscard]] std::optional<QJsonObject> readRecord(const QString &path, const RecordFormat &format,
                                                    QString &reason);

/// writeRecord makes `record` durably that of the file, and returns the problem or an empty text.
[[nodiscard]] QString writeRecord(const QString &path, QJsonObject record,
                                  const RecordFormat &format);

} // namespace wmsg::service

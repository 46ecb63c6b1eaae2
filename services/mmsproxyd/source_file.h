// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>

#include <sys/types.h>

namespace wmsg::proxy {

/// SourceId is a file that was copied: its path and what tells it from another file that gets the
/// same path later, also when the file system uses the number of the file again.
struct SourceId {
    QByteArray path;
    qint64 device = 0;
    qint64 inode = 0;
    qint64 size = 0;
    qint64 changed = 0; ///< when its content was, in nanoseconds since 1970

    /// remove removes the file, unless the path is that of another one by now, or the content was
    /// changed. It returns the problem; that the file is gone is none.
    [[nodiscard]] QString remove() const;

    [[nodiscard]] QJsonObject toJson() const;
    /// Nothing when there is no such thing in the record, or when it is unusable.
    static std::optional<SourceId> fromJson(const QJsonObject &json);
};

/// SourceFile is the file that a session names, opened so that nothing else than a plain file of
/// its user can be meant: no link, no folder, device or pipe, no file that has a second name.
class SourceFile {
public:
    enum class Result {
        Opened,
        Refused, ///< the file is not one that may be sent
        Failed, ///< the system could not open it now
    };

    SourceFile(const QString &path, uid_t owner, qint64 maxSize);

    [[nodiscard]] Result result() const { return m_result; }
    /// Why it was not opened.
    [[nodiscard]] QString problem() const { return m_problem; }
    [[nodiscard]] int descriptor() const { return m_file.get(); }
    [[nodiscard]] const SourceId &id() const { return m_id; }

private:
    void open(uid_t owner, qint64 maxSize);
    void refuse(const QString &problem);
    void refuseForError();

    Result m_result = Result::Opened;
    QString m_problem;
    service::Descriptor m_file;
    SourceId m_id;
};

} // namespace wmsg::proxy

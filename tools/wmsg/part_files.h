// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/files.h"
#include "tools/wmsg/safe_names.h"

#include <mms/model/wmmsmultipart.h>
#include <qt2/qvaluelist.h>

#include <functional>

namespace wmsg::cli {

/// Saves the parts of messages as files of one directory. Their names come from the message and are
/// made safe; nothing is ever written outside the directory or through a link.
class PartFiles {
public:
    /// Called with a line for each file that was written.
    using Tell = std::function<void(const QString &)>;

    /// With `replaces` a file that exists is replaced, else it is refused.
    PartFiles(QByteArray directory, bool replaces, Tell tell);

    /// Makes the directory if it is not there, and opens it. Returns the problem, or an empty text.
    [[nodiscard]] QString open();

    /// Saves every part, of nested multiparts the parts inside. A part that cannot be saved is
    /// reported by its line in the result; the others are saved.
    [[nodiscard]] QStringList save(const QValueList<WMMSMultipart> &parts);

private:
    void savePart(const WMMSMultipart &part, QStringList &problems);
    QString write(const QByteArray &name, QByteArrayView bytes);
    QString makeRoom(const QByteArray &name) const;

    QByteArray m_directory;
    bool m_replaces;
    Tell m_tell;
    Descriptor m_fd;
    UniqueNames m_names;
    int m_number = 0;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/files.h"

#include <mms/model/wmmsmsg.h>

#include <QtCore/QStringList>

namespace wmsg::cli {

/// A directory that messages are saved in, each under the next free name: message-1, message-2.
/// Nothing that is there already is ever replaced, also when several programs save into it.
class MessageFolder {
public:
    explicit MessageFolder(QByteArray directory) : m_directory(std::move(directory)) { }

    /// Makes the directory if it is not there, and looks whether it can be written to. Returns the
    /// problem, or an empty text.
    [[nodiscard]] QString open() const;

    /// Saves a message as a mail file message-N.mms and sets `path`. Returns the problem, or an
    /// empty text; the file is then on the disk to stay.
    [[nodiscard]] QString saveMessage(const WMMSMsg &message, QByteArray &path);
    /// Saves the parts of a message in a new directory message-N, and sets `paths` to the lines
    /// that tell what was written. Returns what went wrong, a line each.
    [[nodiscard]] QStringList saveParts(const WMMSMsg &message, QStringList &written);

private:
    template <typename Make> QString takeName(const char *extension, QByteArray &path, Make make);

    QByteArray m_directory;
};

} // namespace wmsg::cli

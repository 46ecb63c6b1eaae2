// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/stored_message.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>

namespace wmsg::cli {

/// What `wmsg store` does with the message store. Each operation goes on behind what fails, tells
/// of it in a line on standard error, and returns the exit code.
class StoreRun {
public:
    StoreRun(bool json, bool full) : m_json(json), m_full(full) { }

    using Ids = QList<unsigned short>;

    /// Lists a folder, or all folders.
    int list(std::optional<unsigned short> folder);
    int show(const Ids &ids);
    int add(const QList<QByteArray> &files, unsigned short folder, qint64 sizeLimit);
    /// Writes a message as a mail file; `file` may be "-".
    int exportTo(unsigned short id, const QByteArray &file);
    int remove(const Ids &ids);
    int move(const Ids &ids, unsigned short folder);
    int check();

private:
    bool listFolder(unsigned short folder);
    bool listMessage(unsigned short id, unsigned short folder);
    bool showMessage(unsigned short id);
    bool addFile(const QByteArray &path, unsigned short folder, qint64 sizeLimit);
    /// Tells what was done: the line to people, the object to programs.
    void tell(const QString &line, const QJsonObject &object) const;
    bool refuse(const QString &what) const;

    EngineWords m_words;
    bool m_json;
    bool m_full;
    bool m_isFirst = true;
};

} // namespace wmsg::cli

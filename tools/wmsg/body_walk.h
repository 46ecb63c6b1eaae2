// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/wire_reader.h"

#include <mms/codec/wmmscontenttype.h>

#include <QtCore/QList>

#include <optional>

namespace wmsg::cli {

/// One part of a body and where it lies in the file.
struct WalkedPart {
    QString field; ///< "part" and its place in the tree, such as 2 or 2.1.
    qint32 offset = 0; ///< Of its entry.
    qint32 dataOffset = 0;
    qint32 dataLength = 0;
    WMMSContentType contentType;
    QString contentId;
    QString contentLocation;
    QList<WalkedPart> parts;
};

/// Walks a multipart body by the rules that the library reads it with, and notes each byte.
class BodyWalk {
public:
    /// `data` is the file.
    BodyWalk(WalkNotes &notes, char *data) : m_notes(notes), m_data(data) { }

    /// Walks the body that lies from `start` to `end` and appends its parts. `path` is empty for
    /// the body of the message, else the number of the part that it is. Returns why and where it
    /// cannot be read, if so.
    [[nodiscard]] std::optional<Finding> walk(qint32 start, qint32 end, const QString &path,
                                              QList<WalkedPart> &parts, int depth = 0);

    /// Notes what is odd about the bytes of a text.
    static void checkText(WalkNotes &notes, const WalkedPart &part, QByteArrayView bytes);

private:
    std::optional<Finding> walkEntry(WSP_Stream &body, WalkedPart &part, int depth);
    std::optional<Finding> walkHeaders(WSP_Stream &body, quint32 length, WalkedPart &part);
    void walkData(WalkedPart &part, int depth);
    void walkNested(WalkedPart &part, int depth);

    WalkNotes &m_notes;
    char *m_data;
};

} // namespace wmsg::cli

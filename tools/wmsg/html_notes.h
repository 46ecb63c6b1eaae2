// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/html_writer.h"

namespace wmsg::cli {

/// Writes what there is to say about how a message was read: why it could not be decoded or would
/// be kept aside, what intake repaired and what is lost, and what is odd.
class HtmlNotes {
public:
    HtmlNotes(HtmlWriter &page, const DecodedFile &file) : m_page(page), m_file(file) { }

    void write();

private:
    struct Note {
        QString text;
        QString place; ///< In words.
    };

    void writeFailure();
    void writeIntake(const Explanation &intake);
    void writeWarnings();
    void writeNotes(const QString &title, const QList<Note> &notes, qint64 untold, bool isOpen);
    static QList<Note> notesOf(const QList<intake::Remark> &remarks);

    HtmlWriter &m_page;
    const DecodedFile &m_file;
};

} // namespace wmsg::cli

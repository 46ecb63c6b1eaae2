// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/walk_notes.h"

#include <mms/codec/wsp_stream.h>

#include <optional>

namespace wmsg::cli {

/// Reads the wire values of one field one by one. It notes what is odd about each, and where and
/// why the first one could not be read. Reading marks nothing, except where it says so: the caller
/// knows what the value means and calls mark().
class WireReader {
public:
    /// Reads what `stream` has from its position on; positions are those of the file.
    WireReader(WalkNotes &notes, const WSP_Stream &stream, QString field);

    [[nodiscard]] qint32 pos() const { return m_stream.pos; }
    [[nodiscard]] qint32 size() const { return m_stream.size; }
    [[nodiscard]] bool hasMore() const { return m_stream.hasMore() != 0; }
    [[nodiscard]] const QString &field() const { return m_field; }
    /// The next byte; -1 at the end.
    [[nodiscard]] int peek() const;
    [[nodiscard]] QByteArrayView bytes(qint32 from, qint32 to) const;
    /// A stream over the bytes from `from` to `to`, with the positions of the file.
    [[nodiscard]] WSP_Stream piece(qint32 from, qint32 to) const;
    void moveTo(qint32 pos) { m_stream.pos = pos; }

    bool byte(quint8 &out, const QString &what);
    bool integer(quint32 &out, const QString &what);
    bool uintvar(quint32 &out, const QString &what);
    bool valueLength(quint32 &out);
    /// Reads a text and marks it.
    bool text(QString &out, const QString &what);
    /// Reads a text with or without length and charset, and marks all of it.
    bool encodedText(QString &out, const QString &what);

    /// Gives the bytes up to the position a meaning.
    template <typename Meaning> void mark(Meaning meaning)
    {
        m_notes.mark(pos(), m_field, meaning);
    }
    void warn(qint64 offset, const QString &message) { m_notes.warn(offset, m_field, message); }
    /// Notes the problem, if it is the first; always false.
    bool fail(qint64 offset, const QString &message);
    [[nodiscard]] const std::optional<Finding> &problem() const { return m_problem; }

private:
    bool textLength(quint32 &out);
    bool countedText(quint32 length, QString &out, const QString &what);
    void checkText(qint32 from, quint32 charset);

    WalkNotes &m_notes;
    WSP_Stream m_stream;
    QString m_field;
    std::optional<Finding> m_problem;
};

/// The text in quotes, cut to a line.
[[nodiscard]] QString quoted(const QString &text);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/files.h"

namespace wmsg::cli {

/// A file that is written piece by piece and appears under its name only when it is complete and
/// on the disk. Until then, and for ever when it is not finished, it leaves nothing behind.
class HtmlFile {
public:
    /// `message` is the file that must not be replaced whatever it is called; "-" is standard
    /// input.
    HtmlFile(QByteArray path, bool replaces, QByteArray message);
    ~HtmlFile();
    HtmlFile(const HtmlFile &) = delete;
    HtmlFile &operator=(const HtmlFile &) = delete;

    /// Returns the problem in words, or an empty text: the file exists and is not to be replaced,
    /// is a link, is the message, or its folder cannot be written to.
    [[nodiscard]] QString open();
    /// False when the piece could not be written.
    [[nodiscard]] bool write(QByteArrayView piece);
    /// Puts the file in place. Returns the problem in words, or an empty text.
    [[nodiscard]] QString finish();
    [[nodiscard]] qint64 size() const { return m_size; }

private:
    [[nodiscard]] QString problemOfPlace() const;
    [[nodiscard]] bool flush();
    [[nodiscard]] bool putInPlace();

    QByteArray m_path;
    bool m_replaces;
    QByteArray m_message;
    QByteArray m_temporary;
    Descriptor m_file;
    QByteArray m_waiting;
    qint64 m_size = 0;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/html_writer.h"

namespace wmsg::cli {

/// Writes what a page tells about a message beside its content: who sent it to whom and what kind
/// it is, and its header fields.
class HtmlCard {
public:
    HtmlCard(HtmlWriter &page, const DecodedFile &file)
        : m_page(page), m_file(file), m_header(file.message.header())
    {
    }

    /// The subject, or the name of the file.
    [[nodiscard]] QString title() const;
    void writeHeader(qsizetype parts, qsizetype slides);
    void writeFields();

private:
    void writeFace();
    void writeChips(qsizetype parts, qsizetype slides);
    void writeChip(const QString &text, bool isAlarming = false);
    void writeAddresses();
    void writeEntries(QLatin1String label, const QValueList<WMFMEntry> &entries);
    void writeEntry(const WMFMEntry &entry);
    [[nodiscard]] bool has(int fieldId) const
    {
        return m_file.message.fieldIsPresent(static_cast<quint8>(fieldId))
            && m_file.walk.failedField() != fieldId;
    }

    HtmlWriter &m_page;
    const DecodedFile &m_file;
    const MMS_HDR_S &m_header;
};

} // namespace wmsg::cli

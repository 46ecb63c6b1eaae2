// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/html_media.h"
#include "tools/wmsg/html_writer.h"
#include "tools/wmsg/part_names.h"

#include <mms/model/wmmsmsg.h>

#include <QtCore/QList>

#include <optional>

namespace wmsg::cli {

/// The parts of a message as a page shows them: those with content of their own, in order, each
/// with its number in the tree.
class HtmlContent {
public:
    explicit HtmlContent(const WMMSMsg &message);

    [[nodiscard]] int size() const { return static_cast<int>(m_leaves.size()); }
    [[nodiscard]] const WMMSMultipart &part(int leaf) const { return m_leaves[leaf].part; }
    [[nodiscard]] QString numberOf(int leaf) const { return m_leaves[leaf].number; }
    [[nodiscard]] MediumKind kindOf(int leaf) const { return m_leaves[leaf].medium.kind; }
    [[nodiscard]] bool isShown(int leaf) const { return m_leaves[leaf].isShown; }

    /// The part that a presentation names; one that is in the message.
    [[nodiscard]] std::optional<int> find(const QString &reference) const;
    /// The presentation that the phone shows: the start of the message if that is one, else the
    /// first.
    [[nodiscard]] std::optional<int> presentation(const WMMSContentType &type) const;

    /// Writes what a part shows: a picture, a player, a text, or that it cannot be shown. The
    /// second time and later a part is left out, with a line that says so, when too much would
    /// repeat: a page is never many times as large as its message.
    void writeMedium(HtmlWriter &page, int leaf, const QString &alternative = {});
    /// Writes name, type and size of a part.
    void writeCaption(HtmlWriter &page, int leaf) const;

    /// What a part is called; its number when it has no name.
    [[nodiscard]] QString nameOf(int leaf) const;

private:
    struct Leaf {
        WMMSMultipart part;
        QString number;
        HtmlMedium medium;
        bool isShown = false;
    };

    void addLeaves(const QValueList<WMMSMultipart> &parts, const QString &prefix);
    void embed(HtmlWriter &page, const Leaf &leaf, const QString &alternative);
    bool mayShow(Leaf &leaf);

    QList<Leaf> m_leaves;
    PartNames m_names;
    qint64 m_repeatable = 0; ///< Bytes that may still be shown again.
};

/// Tells whether a part is a presentation.
[[nodiscard]] bool isPresentation(const WMMSMultipart &part);

} // namespace wmsg::cli

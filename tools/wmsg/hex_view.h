// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/colours.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/walk_notes.h"

namespace wmsg::cli {

/// Prints each range of a file as its bytes with their meaning beside them.
class HexView {
public:
    /// The view is on `bytes`, which must stay. Long data are folded unless the detail is full.
    HexView(QByteArrayView bytes, Detail detail, bool hasColours = false)
        : m_bytes(bytes), m_detail(detail), m_hasColours(hasColours)
    {
    }

    void print(const ByteRange &range) const;

private:
    void printLine(qint64 from, qint64 to, const QString &meaning, Tone tone) const;

    QByteArrayView m_bytes;
    Detail m_detail;
    bool m_hasColours;
};

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/body_walk.h"

namespace wmsg::cli {

/// Walks the content type and the headers of one part, by the rules that the library reads them
/// with.
class PartHeaderWalk {
public:
    /// `in` has the headers of the part and nothing behind them.
    PartHeaderWalk(WalkNotes &notes, WireReader &in, WalkedPart &part)
        : m_notes(notes), m_in(in), m_part(part)
    {
    }

    /// False when the library refuses the part; the reader then has the problem.
    [[nodiscard]] bool walk();

private:
    bool contentType();
    bool media(WireReader &in, quint8 first);
    bool parameters(WireReader &in);
    bool parameter(WireReader &in);
    bool namedParameter(WireReader &in);
    bool boundary(WireReader &in, qint32 nameStart, qint32 boundaryStart);
    bool headers();
    bool contentId();
    void stepOver(qint32 from, qint32 to);
    bool take(const WireReader &in);
    void settle();

    WalkNotes &m_notes;
    WireReader &m_in;
    WalkedPart &m_part;
    QString m_location;
    QString m_id;
};

} // namespace wmsg::cli

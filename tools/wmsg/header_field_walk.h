// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/wire_reader.h"

namespace wmsg::cli {

/// Notes what the value of one header field is made of. Whether the field can be read is for its
/// codec to say; this tells the bytes apart, and why and where a value cannot be read.
class HeaderFieldWalk {
public:
    /// `in` stands behind the id of field `id`. `end` is where the codec stopped.
    HeaderFieldWalk(WireReader &in, int id, qint32 end) : m_in(in), m_id(id), m_end(end) { }

    /// False when the value, or something in it, could not be read.
    bool walk();

private:
    bool code();
    bool yesNo();
    bool visibility();
    bool version();
    bool size();
    bool date();
    bool time();
    bool sender();
    bool address();
    bool contentType();
    bool mediaNumber();
    bool parameter();
    void compareLength(quint32 announced, qint32 start);

    WireReader &m_in;
    int m_id;
    qint32 m_end;
};

} // namespace wmsg::cli

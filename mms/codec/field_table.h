// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/wsp_stream.h"

class MsgFieldBase;

namespace wmsg::codec {

/// One field as the message uses it: the codec's operations without an object of it, how to make
/// one, and the line that it prints (null: none).
struct FieldRow {
    int id;
    const char *line;
    MsgFieldBase *(*create)();
    quint32 (*read)(WSP_Stream &stream, MMS_HDR_S *header);
    quint32 (*write)(WSP_Stream &stream, MMS_HDR_S *header);
    void (*print)(MMS_HDR_S *header);
};

/// The row of field `id`; null when there is no such field.
const FieldRow *fieldRow(quint32 id);

} // namespace wmsg::codec

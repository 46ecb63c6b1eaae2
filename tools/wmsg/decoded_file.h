// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/pdu_walk.h"

#include <mms/model/wmmsmsg.h>
#include <qt2/qarray.h>

namespace wmsg::cli {

/// One file as the library decodes it, with what the walk over its bytes tells about it.
struct DecodedFile {
    QString name;
    QArray<char> bytes;
    FileKind kind = FileKind::Pdu;
    quint32 result = 0; ///< Of WMMSMsg::construct().
    WMMSMsg message; ///< Only the fields of the file are present.
    PduWalk walk;
};

/// Decodes the bytes that `file` has as its kind says, and walks over them.
void decode(DecodedFile &file);

/// Why and where a file cannot be decoded, in a line.
[[nodiscard]] QString failureInWords(const DecodedFile &file);

/// The content of the message: its parts, or the one part of a message without multipart.
[[nodiscard]] QValueList<WMMSMultipart> partsOf(const WMMSMsg &message);

/// Tells whether the bytes of a part are text in UTF-8, also a presentation.
[[nodiscard]] bool isText(const WMMSMultipart &part);

/// The bytes of a text part as text.
[[nodiscard]] QString textOf(const WMMSMultipart &part);

} // namespace wmsg::cli

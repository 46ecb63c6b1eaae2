// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/intake.h"
#include "tools/wmsg/message_walk.h"
#include "tools/wmsg/pdu_walk.h"

#include <mms/model/wmmsmsg.h>
#include <qt2/qarray.h>

namespace wmsg::cli {

/// What the daemon's intake makes of a file, beside what the codec says.
struct Explanation {
    quint32 codecResult = 0; ///< For the file as it is.
    std::optional<Finding> codecFailure;
    bool isChanged = false; ///< The message is another than the file has.
    QList<intake::Remark> steps; ///< What was done to make it readable.
    QList<intake::Remark> lost; ///< What it announces and does not have.
    std::optional<intake::Remark> problem; ///< Why the daemon would keep it aside.
    QString notice; ///< That it is no message, and what instead; else empty.
    QList<OtherField> otherFields;
    std::optional<PushFacts> push;
    qint32 headerLength = 0;
    qint32 bodyLength = 0;
};

/// One file as the library decodes it, with what the walk over its bytes tells about it.
struct DecodedFile {
    QString name;
    QArray<char> bytes;
    FileKind kind = FileKind::Pdu;
    quint32 result = 0; ///< Of WMMSMsg::construct().
    WMMSMsg message; ///< Only the fields of the file are present.
    PduWalk walk; ///< Over what the message was read from; over nothing when intake wrote that.
    std::optional<Explanation> intake; ///< Nothing when the codec alone was asked.
};

/// Decodes the bytes that `file` has as its kind says, and walks over them. A PDU may begin at an
/// offset.
void decode(DecodedFile &file, qint32 pduOffset = 0);

/// Decodes the bytes that `file` has, as they are or as intake makes them readable. `sink` gets
/// their ranges.
void explain(DecodedFile &file, const WalkNotes::Sink &sink = {});

/// Whether the file was decoded. Bytes without a message type that intake refuses are no message,
/// even where the codec makes something of them.
[[nodiscard]] bool isMessage(const DecodedFile &file);

/// Why and where a file cannot be decoded, in a line.
[[nodiscard]] QString failureInWords(const DecodedFile &file);

/// The content of the message: its parts, or the one part of a message without multipart.
[[nodiscard]] QValueList<WMMSMultipart> partsOf(const WMMSMsg &message);

/// Tells whether the bytes of a part are text in UTF-8, also a presentation.
[[nodiscard]] bool isText(const WMMSMultipart &part);

/// The bytes of a text part as text.
[[nodiscard]] QString textOf(const WMMSMultipart &part);

} // namespace wmsg::cli

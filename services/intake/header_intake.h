// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/intake.h"
#include "services/intake/journal.h"
#include "services/intake/media_type.h"

#include <QtCore/QByteArrayView>

namespace wmsg::intake {

/// What came of the header of a PDU.
struct Header {
    Facts facts;
    QByteArrayView type; ///< The field of the message type; empty when there is none.
    Pieces fields; ///< The others as the codec reads them, without the content type.
    bool isUnchanged = true; ///< All fields in front of the content type are those given.
    bool hasContentType = false; ///< It is the last field; the body follows it.
    MediaType contentType;
    QByteArrayView contentTypeField; ///< Id and value, as given.
    qsizetype end = 0; ///< Where the body begins.
};

/// takeInHeader reads the header of `pdu`. It returns false, with the problem in the journal, when
/// it is not whole, or is of a type that does not come from `origin`.
bool takeInHeader(QByteArrayView pdu, Origin origin, Header &header, Journal &journal);

} // namespace wmsg::intake

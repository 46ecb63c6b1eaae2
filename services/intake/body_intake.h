// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/journal.h"
#include "services/intake/part_header.h"
#include "services/intake/pieces.h"

#include <WSP_Stream>

#include <QtCore/QByteArrayView>

#include <optional>

namespace wmsg::intake {

/// Where an entry of a multipart lies, by its own lengths.
struct Extent {
    QByteArrayView header;
    QByteArrayView data;
    quint32 missing = 0; ///< Bytes of data that are announced and not there.
};

/// readExtent reads the lengths of an entry and moves behind its data; null when its header is not
/// there.
std::optional<Extent> readExtent(WSP_Stream &stream);

/// takeInMultipart returns `body`, a multipart with its count in front, as the codec reads it; null
/// when not even its count is there. `isUnchanged` tells whether these are the bytes given.
std::optional<Pieces> takeInMultipart(QByteArrayView body, bool &isUnchanged, Journal &journal);

/// beginsMultipart tells whether `body` begins with a count and an entry that says of what type it
/// is.
[[nodiscard]] bool beginsMultipart(QByteArrayView body);

/// isWholeMultipart tells whether `body` is entries behind their count, and nothing but zeros more.
[[nodiscard]] bool isWholeMultipart(QByteArrayView body);

/// takeInContent returns the content of a part without the encoding that mail gave it, and a text
/// in UTF-8; null when the bytes given are that already.
std::optional<QByteArray> takeInContent(QByteArrayView content, const MediaType &type,
                                        Transfer transfer, Journal &journal);

/// isReadableText tells whether a text of this charset says the same as UTF-8.
[[nodiscard]] bool isReadableText(QByteArrayView bytes, const Charset &charset);

/// multipartOfOne returns the body of a message that has one part.
[[nodiscard]] Pieces multipartOfOne(const MediaType &type, Pieces content);

} // namespace wmsg::intake

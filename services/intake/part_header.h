// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/media_type.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

namespace wmsg::intake {

/// How mail encoded the content of a part.
enum class Transfer { None, Base64, QuotedPrintable };

/// What the header of a part says.
struct PartHeader {
    MediaType type;
    QByteArray
        location; ///< Without quotes and brackets; a name or a file name where there is none.
    QByteArray id; ///< Without quotes and brackets.
    Transfer transfer = Transfer::None;
    bool hasType = true; ///< It said itself of what type it is.
    /// The codec reads the same from the bytes given.
    bool isPlain = true;
};

/// readPartHeader reads the header of a part: its content type, and of the other headers those that
/// the codec knows, in any form. A part without a content type gets the one of unknown bytes.
[[nodiscard]] PartHeader readPartHeader(QByteArrayView bytes);

/// writtenPartHeader returns the header as the codec reads it. A multipart becomes a mixed one.
[[nodiscard]] QByteArray writtenPartHeader(const PartHeader &header);

} // namespace wmsg::intake

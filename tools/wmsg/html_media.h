// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mms/model/wmmsmultipart.h>

#include <QtCore/QByteArray>
#include <QtCore/QLatin1String>

namespace wmsg::cli {

/// What a browser makes of a part.
enum class MediumKind {
    Picture,
    Sound,
    Film,
    Text, ///< Also what a browser would take for a page or a drawing: its source is shown.
    Other, ///< Nothing; it has a name and a size.
};

/// How a part is embedded in a page. The media type comes from a list of ours and never from the
/// message, and the list holds nothing that can run or refer to anything.
struct HtmlMedium {
    MediumKind kind = MediumKind::Other;
    QLatin1String type; ///< For a data: address; empty for a text and for what is not shown.
};

/// Looks a part up by its media type, and by its first bytes where that says nothing.
[[nodiscard]] HtmlMedium htmlMedium(const WMMSMultipart &part);

/// A bitmap of old phones as one that browsers know, of at most four times its size; empty when
/// the bytes are no such bitmap.
[[nodiscard]] QByteArray bmpOfWbmp(QByteArrayView wbmp);

/// The type of a part that bmpOfWbmp() is for.
inline constexpr QLatin1String kWbmp("image/vnd.wap.wbmp");

} // namespace wmsg::cli

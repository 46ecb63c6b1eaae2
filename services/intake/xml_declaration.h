// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

namespace wmsg::intake {

// declaration := "<?xml" *( name "=" quote value quote ) "?>"

/// xmlEncoding returns the encoding that the declaration in front of `xml` names, as a stretch of
/// it; an empty one when there is none.
[[nodiscard]] QByteArrayView xmlEncoding(QByteArrayView xml);

/// withXmlEncodingUtf8 returns `xml`, which is UTF-8, with a declaration that says so if it has one
/// that names an encoding.
[[nodiscard]] QByteArray withXmlEncodingUtf8(QByteArray xml);

} // namespace wmsg::intake

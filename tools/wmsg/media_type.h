// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <qt2/qarray.h>

#include <QtCore/QString>

namespace wmsg::cli {

/// The media type of a file as phones name it, from its name and its first bytes. A picture, a
/// sound or a film that is named as something else counts as what its bytes are.
[[nodiscard]] QString mediaTypeOf(const QString &fileName, const QArray<char> &bytes);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>

namespace wmsg::cli {

/// The rules that every page has.
[[nodiscard]] QByteArray htmlStyle();

} // namespace wmsg::cli

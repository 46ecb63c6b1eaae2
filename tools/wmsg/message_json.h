// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/decoded_file.h"

#include <QtCore/QJsonObject>

namespace wmsg::cli {

/// All of a decoded file for programs. What is absent in the message is absent here.
[[nodiscard]] QJsonObject messageJson(const DecodedFile &file);

/// The header fields and parts of a message: "headers", "present" and "parts".
[[nodiscard]] QJsonObject contentJson(const WMMSMsg &message);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

class WSMSMsg;

/// Short messages that arrived, as people and programs see them.
namespace wmsg::cli {

/// smsHead returns what is known of a message in one line: "from +43664, 2024-05-01 12:00:00 +0200
/// (CEST), to port 9000 from port 9001, 3 octets of data"; an empty text when nothing is.
[[nodiscard]] QString smsHead(WSMSMsg &message);
/// smsContent returns its text, or its data in rows, with the line end.
[[nodiscard]] QString smsContent(const WSMSMsg &message);
/// smsJson returns all of it for programs. What is absent in the message is absent here.
[[nodiscard]] QJsonObject smsJson(WSMSMsg &message);

} // namespace wmsg::cli

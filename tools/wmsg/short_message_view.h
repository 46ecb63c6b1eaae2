// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/message_view.h"
#include "tools/wmsg/short_message.h"
#include "tools/wmsg/walk_notes.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace wmsg::cli {

/// Short messages for people: a title, and what each says about itself; with their text or data
/// unless a push is shown in place of these.
[[nodiscard]] QString shortMessageView(const JoinedMessage &message, Detail detail, bool isPush);

/// Short messages for programs: "file", "kind", "shortMessages", and "text" or "data".
[[nodiscard]] QJsonObject shortMessageJson(const JoinedMessage &message);

/// What each of them says about itself.
[[nodiscard]] QJsonArray shortMessagesJson(const JoinedMessage &message);

/// Gives each byte of a short message its meaning.
void walkShortMessage(const ShortMessage &message, const WalkNotes::Sink &sink);

} // namespace wmsg::cli

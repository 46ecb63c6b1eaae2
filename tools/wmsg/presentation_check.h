// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/body_walk.h"

namespace wmsg::cli {

/// Notes where the presentation of a message does not fit its parts: a start that no part has, a
/// presentation that is no XML, and pictures, texts or sounds that it shows and that are not there.
/// `parts` lie in `file`.
void checkPresentation(WalkNotes &notes, const WMMSContentType &type,
                       const QList<WalkedPart> &parts, QByteArrayView file);

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/walk_notes.h"

#include <QtCore/QByteArrayView>

namespace wmsg::cli {

/// Gives each byte of a user data header, which lies at `offset`, its meaning.
void markUserDataHeader(WalkNotes &notes, QByteArrayView header, qint32 offset);

} // namespace wmsg::cli

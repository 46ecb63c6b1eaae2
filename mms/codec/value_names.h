// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

namespace wmsg::codec {

/// The diagnostic name of the code that a one-byte field holds: "unknown" for a code without a
/// name, and for every code of a field whose codes have none.
const char *valueName(int fieldId, quint8 code);

} // namespace wmsg::codec

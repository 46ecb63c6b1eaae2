// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/intake.h"

#include <QtCore/QByteArrayView>

namespace wmsg::intake {

/// takeInPlain recognises a message in the form that this system and most networks write, of which
/// takeInAnyForm would change nothing. For one of these it fills `result` as takeInAnyForm does and
/// returns true; otherwise it touches nothing. It copies no more than the facts.
///
/// Such a message may come from the network and from a file alike. What is not recognised need not
/// be wrong: this goes by the narrow grammar on top of plain_message.cpp.
bool takeInPlain(QByteArrayView bytes, Result &result);

} // namespace wmsg::intake

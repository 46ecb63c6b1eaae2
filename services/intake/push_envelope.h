// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/intake/journal.h"

#include <QtCore/QByteArrayView>

namespace wmsg::intake {

/// unwrapped sets `pdu` to the MMS PDU in `bytes`: the bytes themselves, or what a WAP push
/// carries, which may stand behind the user data header of a short message. It returns false, with
/// the problem in the journal, for a push of something else and for one part of several.
bool unwrapped(QByteArrayView bytes, QByteArrayView &pdu, Journal &journal);

} // namespace wmsg::intake

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmsg.h"
#include "mms/model/wmmsmultipart.h"

#include <QtCore/QByteArray>

/// What must hold for a decoded message and its parts, whatever they were decoded from.

namespace wmsg::fuzz {

/// everythingOf returns all that a part and the parts below it hold, as bytes to compare. Of the
/// parts with parts below them the data are left out unless `withNestedData` is set: encoding
/// empties those.
QByteArray everythingOf(const WMMSMultipart &part, bool withNestedData);

/// everythingOf returns all that a message holds, its header and lengths included.
QByteArray everythingOf(const WMMSMsg &message);

/// dataBytesOf returns how many data bytes a part and the parts below it hold together.
qint64 dataBytesOf(const WMMSMultipart &part);

/// survivesWire tells whether the sub-parts of `root`, encoded and decoded, come out as they were.
/// The ways in which a part does not are named where this is computed.
bool survivesWire(const WMMSMultipart &root);

/// survivesWire tells the same of a whole message that is encoded as a PDU of its type.
bool survivesWire(const WMMSMsg &message);

/// checkEncoding encodes `message` as a PDU of `pduType` and ends the program unless: it takes the
/// same bytes twice and in any memory, no copy of the message changes by it, and, where
/// survivesWire() says so, it decodes with 100 and is then encoded to the same bytes.
void checkEncoding(const WMMSMsg &message, unsigned char pduType);

/// Gives this process the time zone UTC: there are local times that name two seconds.
void useOneTimeZone();

} // namespace wmsg::fuzz

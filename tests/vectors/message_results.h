// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmsg.h"
#include "tests/vectors/operations.h"

#include <QtCore/QJsonArray>
#include <QtCore/QString>

/// What the operations on PDUs and on mail files have in common.

namespace vectors {

/// What the integers behind output pointers hold before the call.
constexpr int kUntouched = -7777;

/// The ids 1 to 24 of the fields that are present.
QJsonArray maskOf(WMMSMsg &message);

/// What decoding left in `message`; `logged` is the log of the decoding.
Result decoded(quint32 ret, WMMSMsg &message, const QString &logged);

/// Whether the end of the encoded body of `message` is not settled: data of a multipart type,
/// without parts. To be asked after encoding, because it gives a root part without a list an empty
/// one.
bool hasOpenEnd(WMMSMsg &message);

} // namespace vectors

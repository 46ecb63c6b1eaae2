// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmsg.h"
#include "tests/support/parts.h"

/// messageWith returns a message that can be sent, with a recipient, a text and a subject.
inline WMMSMsg messageWith(const QString &subject)
{
    WMMSMsg message;
    message.setTo(WMFMEntry(1, QStringLiteral("+15550100")));
    message.setSubject(subject);
    message.setContentType(typeOf(kMixed));
    message.getMultiParts().getSubMmsMultipartList().append(
        partOf(QStringLiteral("text/plain"), subject.toUtf8(), QStringLiteral("text")));
    return message;
}

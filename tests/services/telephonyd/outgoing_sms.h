// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/modem.h"

/// What is given to the back end of a modem.

/// The body of a text.
inline QByteArray utf16(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

/// A message to a number.
inline wmsg::telephonyd::OutgoingSms outgoing(wmsg::telephony::Coding coding,
                                              const QByteArray &body, const QByteArray &header = {})
{
    wmsg::telephonyd::OutgoingSms sms;
    sms.coding = coding;
    sms.header = header;
    sms.destination = "+43664123";
    sms.body = body;
    return sms;
}

/// A header with two ports.
inline const QByteArray kPorts = QByteArray::fromHex("06050423282329");

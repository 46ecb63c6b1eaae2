// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/engine_records.h"

/// A message whose content follows from a number, for processes that do not share memory.
struct NumberedMessage {
    explicit NumberedMessage(int number) : body("application/vnd.wap.multipart.mixed")
    {
        header.subject = wide(QString("message %1 你好").arg(number));
        header.size = number;
        body.add("text/plain", QByteArray::number(number).repeated(number % 50 + 1));
        body.add("image/gif", QByteArray(100 + number * 37 % 9000, char(number)));
        body.add("image/png", QByteArray());
    }

    HeaderRecord header;
    BodyRecord body;
};

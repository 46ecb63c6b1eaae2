// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/model/wmmsmsg.h"

/// present returns the ids of the header fields that a message has, in their order.
inline QList<int> present(const WMMSMsg &message)
{
    QList<int> ids;
    for (int id = 0; id < 256; ++id) {
        if (message.fieldIsPresent(static_cast<unsigned char>(id))) {
            ids.append(id);
        }
    }
    return ids;
}

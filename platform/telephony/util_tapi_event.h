// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <QtCore/QByteArray>

/// UTIL_TAPI_Event is one event of the telephony service: a number and a record of bytes. It is
/// good during the signal that brings it.
class WMSG_PLATFORM_EXPORT UTIL_TAPI_Event {
public:
    /// UTIL_TAPI_Event(type, record) makes an event that keeps the bytes of `record`.
    UTIL_TAPI_Event(int type, const QByteArray &record);

    /// GetType returns the number of the event, of TAPI_EVENT_E.
    [[nodiscard]] int GetType() const;

    /// GetRawData returns the record, null when there is none; GetRawSize returns its bytes. A
    /// reader holds what a record claims against its size.
    [[nodiscard]] const void *GetRawData() const;
    [[nodiscard]] int GetRawSize() const;

    /// SetTaken tells whether a message has found somebody who keeps it. One that was not taken
    /// stays with the telephone, and comes to another client or a later one. An event begins as
    /// taken.
    void SetTaken(bool isTaken);
    [[nodiscard]] bool IsTaken() const;

private:
    int m_type;
    QByteArray m_record;
    bool m_isTaken = true;
};

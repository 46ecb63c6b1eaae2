// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/util_tapi_event.h"

UTIL_TAPI_Event::UTIL_TAPI_Event(int type, const QByteArray &record)
    : m_type(type), m_record(record)
{
}

int UTIL_TAPI_Event::GetType() const
{
    return m_type;
}

const void *UTIL_TAPI_Event::GetRawData() const
{
    return m_record.isEmpty() ? nullptr : m_record.constData();
}

int UTIL_TAPI_Event::GetRawSize() const
{
    return static_cast<int>(m_record.size());
}

void UTIL_TAPI_Event::SetTaken(bool isTaken)
{
    m_isTaken = isTaken;
}

bool UTIL_TAPI_Event::IsTaken() const
{
    return m_isTaken;
}

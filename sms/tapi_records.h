// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/tapi_sms.h"
#include "platform/telephony/util_tapi_event.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

#include <cstddef>
#include <cstring>

/// The records of the telephony events as the client reads them: numbers in the byte order of the
/// device, at any alignment.

/// A number in a record: where it stands and how wide it is.
template <typename T> struct TapiNumber {
    using Type = T;
    int offset;
};

// clang-format off
// Event 778, the result of a send.       offset
constexpr TapiNumber<qint32>  kResultReference = {0};   // the value that send() returned
constexpr TapiNumber<qint32>  kResultStatus    = {8};   // passed to statusChanged()
constexpr int                 kResultSize      = 12;

// Event 774, an incoming short message.
constexpr TapiNumber<quint32> kIncomingCoding     = {4};    // 0 UTF-16 text, 1 8-bit text, 2 data
constexpr TapiNumber<quint16> kIncomingPort2      = {8};
constexpr TapiNumber<quint16> kIncomingPort1      = {10};
constexpr int                 kIncomingSender     = 54;     // Latin-1, ends with a NUL, or where
constexpr int                 kIncomingSenderEnd  = 100;    // the next field begins
constexpr TapiNumber<quint16> kIncomingYear       = {100};
constexpr TapiNumber<quint8>  kIncomingMonth      = {102};
constexpr TapiNumber<quint8>  kIncomingDay        = {103};
constexpr TapiNumber<quint8>  kIncomingHour       = {104};
constexpr TapiNumber<quint8>  kIncomingMinute     = {105};
constexpr TapiNumber<quint8>  kIncomingSecond     = {106};
constexpr TapiNumber<quint16> kIncomingLength     = {112};  // of the body, in bytes
constexpr int                 kIncomingBody       = 114;    // two more bytes behind UTF-16 text
// clang-format on

static_assert(kResultReference.offset == offsetof(TAPI_SMS_RESULT_S, reference));
static_assert(kResultStatus.offset == offsetof(TAPI_SMS_RESULT_S, status));
static_assert(kResultSize == sizeof(TAPI_SMS_RESULT_S));
static_assert(kIncomingCoding.offset == offsetof(TAPI_SMS_INCOMING_S, dataCoding));
static_assert(kIncomingPort2.offset == offsetof(TAPI_SMS_INCOMING_S, port2));
static_assert(kIncomingPort1.offset == offsetof(TAPI_SMS_INCOMING_S, port1));
static_assert(kIncomingSender == offsetof(TAPI_SMS_INCOMING_S, sender));
static_assert(kIncomingSenderEnd - kIncomingSender == sizeof(TAPI_SMS_INCOMING_S::sender));
static_assert(kIncomingYear.offset == offsetof(TAPI_SMS_INCOMING_S, year));
static_assert(kIncomingMonth.offset == offsetof(TAPI_SMS_INCOMING_S, month));
static_assert(kIncomingDay.offset == offsetof(TAPI_SMS_INCOMING_S, day));
static_assert(kIncomingHour.offset == offsetof(TAPI_SMS_INCOMING_S, hour));
static_assert(kIncomingMinute.offset == offsetof(TAPI_SMS_INCOMING_S, minute));
static_assert(kIncomingSecond.offset == offsetof(TAPI_SMS_INCOMING_S, second));
static_assert(kIncomingLength.offset == offsetof(TAPI_SMS_INCOMING_S, msgLength));
static_assert(kIncomingBody == offsetof(TAPI_SMS_INCOMING_S, body));

/// TapiRecord is the record of one event.
class TapiRecord {
public:
    explicit TapiRecord(const UTIL_TAPI_Event &event)
        : m_bytes(static_cast<const char *>(event.GetRawData()), event.GetRawSize())
    {
    }

    /// has tells whether the record reaches so far. Ask before anything is read.
    [[nodiscard]] bool has(int size) const { return m_bytes.size() >= size; }

    template <typename T> [[nodiscard]] T number(TapiNumber<T> field) const
    {
        T value;
        memcpy(&value, m_bytes.data() + field.offset, sizeof value);
        return value;
    }

    /// text returns the bytes from `begin` up to a NUL, or to `end`.
    [[nodiscard]] QByteArray text(int begin, int end) const
    {
        const char *from = m_bytes.data() + begin;
        return QByteArray(from,
                          static_cast<qsizetype>(qstrnlen(from, static_cast<size_t>(end - begin))));
    }

    /// body returns the `size` bytes at `begin`.
    [[nodiscard]] QByteArrayView body(int begin, int size) const
    {
        return m_bytes.sliced(begin, size);
    }

private:
    QByteArrayView m_bytes;
};

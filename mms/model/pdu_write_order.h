// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/mms_hdr_s.h"

#include <array>

/// Which header fields a PDU of each type carries, and in which order they are written.

namespace wmsg::model {

/// Ends a row; the places behind it are 0.
inline constexpr int kEndOfRow = 25;

using WriteOrderRow = std::array<int, 24>;
using WriteOrder = std::array<WriteOrderRow, 8>;

namespace write_order {

// clang-format off
inline constexpr int Bcc = MMS_FIELD_BCC, Cc = MMS_FIELD_CC, ContentLocation = MMS_FIELD_CONTENT_LOCATION,
    ContentType = MMS_FIELD_CONTENT_TYPE, Date = MMS_FIELD_DATE, DeliveryReport = MMS_FIELD_DELIVERY_REPORT,
    DeliveryTime = MMS_FIELD_DELIVERY_TIME, Expiry = MMS_FIELD_EXPIRY, From = MMS_FIELD_FROM,
    MsgClass = MMS_FIELD_MSG_CLASS, MsgID = MMS_FIELD_MSG_ID, MsgType = MMS_FIELD_MSG_TYPE,
    Version = MMS_FIELD_VERSION, MsgSize = MMS_FIELD_MSG_SIZE, Priority = MMS_FIELD_PRIORITY,
    ReadReport = MMS_FIELD_READ_REPORT, ReportAllowed = MMS_FIELD_REPORT_ALLOWED,
    ResponseStatus = MMS_FIELD_RESPONSE_STATUS, ResponseText = MMS_FIELD_RESPONSE_TEXT,
    SenderVisibility = MMS_FIELD_SENDER_VISIBILITY, Status = MMS_FIELD_MSG_STATUS,
    Subject = MMS_FIELD_SUBJECT, To = MMS_FIELD_TO, TID = MMS_FIELD_TRANSACTION_ID, End = kEndOfRow;

inline constexpr WriteOrder kRows = {{
    /* 0x80 send request            */ {{ MsgType, TID, Version, Date, From, To, Cc, Bcc, Subject, MsgClass, Expiry,
                                          DeliveryTime, Priority, SenderVisibility, DeliveryReport, ReadReport,
                                          ContentType, End }},
    /* 0x81 send confirmation       */ {{ MsgType, TID, Version, ResponseStatus, ResponseText, MsgID, End }},
    /* 0x82 notification indication */ {{ MsgType, TID, Version, From, Subject, MsgClass, MsgSize, Expiry,
                                          ContentLocation, End }},
    /* 0x83 notify-response         */ {{ MsgType, TID, Version, Status, ReportAllowed, End }},
    /* 0x84 retrieve confirmation   */ {{ MsgType, TID, Version, MsgID, Date, From, To, Cc, Bcc, Subject, MsgClass,
                                          Priority, DeliveryReport, ReadReport, ContentType, End }},
    /* 0x85 acknowledge             */ {{ MsgType, TID, Version, ReportAllowed, End }},
    // Kept: the delivery indication has no transaction id.
    /* 0x86 delivery indication     */ {{ MsgType, Version, MsgID, To, Date, Status, End }},
    // Kept: the stored form names DeliveryReport twice, so a present one is written twice; it has no type,
    // transaction id or version.
    /* 0x87 stored message          */ {{ From, To, Cc, Bcc, Subject, MsgClass, DeliveryTime, Priority, Status,
                                          MsgSize, ContentLocation, Expiry, SenderVisibility, DeliveryReport,
                                          ReadReport, DeliveryReport, Date, MsgID, ResponseStatus, ContentType,
                                          End }},
}};
// clang-format on

} // namespace write_order

inline constexpr const WriteOrder &kWriteOrder = write_order::kRows;

constexpr bool everyRowEnds(const WriteOrder &rows)
{
    for (const auto &row : rows) {
        bool ended = false;
        for (const int id : row) {
            ended = ended || id == kEndOfRow;
        }
        if (!ended) {
            return false;
        }
    }
    return true;
}

constexpr bool contentTypeIsLast(const WriteOrder &rows)
{
    for (const auto &row : rows) {
        for (size_t n = 0; n + 1 < row.size() && row[n] != kEndOfRow; ++n) {
            if (row[n] == MMS_FIELD_CONTENT_TYPE && row[n + 1] != kEndOfRow) {
                return false;
            }
        }
    }
    return true;
}

constexpr bool onlyFieldsAreNamed(const WriteOrder &rows)
{
    for (const auto &row : rows) {
        for (size_t n = 0; row[n] != kEndOfRow; ++n) {
            if (row[n] < MMS_FIELD_BCC || row[n] > MMS_FIELD_TRANSACTION_ID) {
                return false;
            }
        }
    }
    return true;
}

static_assert(everyRowEnds(kWriteOrder), "each row has its end mark");
static_assert(contentTypeIsLast(kWriteOrder),
              "the reader takes Content-Type as the end of the header");
static_assert(onlyFieldsAreNamed(kWriteOrder), "every field of a row has a codec");

} // namespace wmsg::model

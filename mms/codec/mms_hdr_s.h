// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmentry.h"
#include "mms/codec/wmmscontenttype.h"
#include "qt2/qvaluelist.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// The ids of the MMS header fields. On the wire a field begins with its id as a short integer, id
/// | 0x80; the same number indexes Msg_Field_Mask. On the wire and in files: never renumber.
enum MMS_FIELD_ID_E : unsigned char {
    MMS_FIELD_BCC = 1,
    MMS_FIELD_CC = 2,
    MMS_FIELD_CONTENT_LOCATION = 3,
    MMS_FIELD_CONTENT_TYPE = 4,
    MMS_FIELD_DATE = 5,
    MMS_FIELD_DELIVERY_REPORT = 6,
    MMS_FIELD_DELIVERY_TIME = 7,
    MMS_FIELD_EXPIRY = 8,
    MMS_FIELD_FROM = 9,
    MMS_FIELD_MSG_CLASS = 10,
    MMS_FIELD_MSG_ID = 11,
    MMS_FIELD_MSG_TYPE = 12,
    MMS_FIELD_VERSION = 13,
    MMS_FIELD_MSG_SIZE = 14,
    MMS_FIELD_PRIORITY = 15,
    MMS_FIELD_READ_REPORT = 16,
    MMS_FIELD_REPORT_ALLOWED = 17,
    MMS_FIELD_RESPONSE_STATUS = 18,
    MMS_FIELD_RESPONSE_TEXT = 19,
    MMS_FIELD_SENDER_VISIBILITY = 20,
    MMS_FIELD_MSG_STATUS = 21,
    MMS_FIELD_SUBJECT = 22,
    MMS_FIELD_TO = 23,
    MMS_FIELD_TRANSACTION_ID = 24
};

/// The PDU types. On the wire: never renumber.
enum MMS_PDU_TYPE_E : unsigned char {
    MMS_PDU_SEND_REQ = 0x80,
    MMS_PDU_SEND_CONF = 0x81,
    MMS_PDU_NOTIFICATION_IND = 0x82,
    MMS_PDU_NOTIFYRESP_IND = 0x83,
    MMS_PDU_RETRIEVE_CONF = 0x84,
    MMS_PDU_ACKNOWLEDGE_IND = 0x85,
    MMS_PDU_DELIVERY_IND = 0x86,
    /// The form in which the device keeps its own messages in mail files; it never leaves the
    /// device.
    MMS_PDU_STORED = 0x87
};

/// MMS_HDR_S holds all header values of one PDU. Which of them are present is told by a
/// Msg_Field_Mask beside it; a value without its flag is what a cleared message has. Codes are kept
/// as the bytes of MMS encapsulation.
struct MMS_HDR_S {
    QValueList<WMFMEntry> bcc;
    QValueList<WMFMEntry> cc;
    QString contentLocation;
    WMMSContentType contentType;
    /// In any time zone: a decoded date is in UTC, and becomes local when WMMSMsg::getDate() is
    /// asked.
    QDateTime msgDate;
    bool deliveryReport = false;
    QDateTime deliveryTime; ///< An absolute time, in any time zone as msgDate.
    qint32 expiry = -1; ///< Seconds from now; -1: no expiry is written.
    WMFMEntry from;
    quint8 msgClass = 0; ///< 128 personal, 129 advertisement, 130 informational, 131 auto.
    QString msgID;
    quint8 msgType = 0; ///< An MMS_PDU_TYPE_E.
    quint8 version = 0; ///< Major version in the high half, minor in the low: 0x10 is 1.0.
    qint32 msgSize = 0; ///< Bytes.
    quint8 priority = 0; ///< 128 low, 129 normal, 130 high.
    bool readReport = false;
    bool reportAllowed = false;
    quint8 responseStatus = 0; ///< 128 is success.
    QString responseText;
    /// True: the sender is shown. Kept: on the wire shown is 129, the inverse of the yes and no
    /// fields.
    bool senderVisibility = false;
    quint8 msgStatus = 0; ///< 128 expired, 129 retrieved, 130 rejected, 131 deferred, ...
    QString subject;
    QValueList<WMFMEntry> to;
    QString transactionId;
};

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/field_words.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/model/mms_msgdb_type.h>
#include <mms/model/result_codes.h>

#include <algorithm>
#include <array>
#include <iterator>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

// clang-format off
constexpr std::array kFieldNames = {
    "Bcc",           "Cc",              "Content-Location", "Content-Type",      "Date",
    "Delivery-Report", "Delivery-Time", "Expiry",           "From",              "Message-Class",
    "Message-ID",    "Message-Type",    "MMS-Version",      "Message-Size",      "Priority",
    "Read-Report",   "Report-Allowed",  "Response-Status",  "Response-Text",     "Sender-Visibility",
    "Status",        "Subject",         "To",               "Transaction-Id",
};
static_assert(kFieldNames.size() == MMS_FIELD_TRANSACTION_ID);

// What newer versions of the protocol added; the library has no codecs for them.
constexpr std::array kLaterFieldNames = {
    "Retrieve-Status",       "Retrieve-Text",         "Read-Status",
    "Reply-Charging",        "Reply-Charging-Deadline", "Reply-Charging-ID",
    "Reply-Charging-Size",   "Previously-Sent-By",    "Previously-Sent-Date",
    "Store",                 "MM-State",              "MM-Flags",
    "Store-Status",          "Store-Status-Text",     "Stored",
    "Attributes",            "Totals",                "Mbox-Totals",
    "Quotas",                "Mbox-Quotas",           "Message-Count",
    "Content",               "Start",                 "Additional-Headers",
    "Distribution-Indicator", "Element-Descriptor",   "Limit",
    "Recommended-Retrieval-Mode", "Recommended-Retrieval-Mode-Text", "Status-Text",
    "Applic-ID",             "Reply-Applic-ID",       "Aux-Applic-Info",
    "Content-Class",         "DRM-Content",           "Adaptation-Allowed",
    "Replace-ID",            "Cancel-ID",             "Cancel-Status",
};
static_assert(kFieldNames.size() + kLaterFieldNames.size() == 0x3F);

constexpr CodeWords kPduTypes[] = {
    {MMS_PDU_SEND_REQ,         "send-req",         "send request"},
    {MMS_PDU_SEND_CONF,        "send-conf",        "send confirmation"},
    {MMS_PDU_NOTIFICATION_IND, "notification-ind", "notification"},
    {MMS_PDU_NOTIFYRESP_IND,   "notifyresp-ind",   "notify response"},
    {MMS_PDU_RETRIEVE_CONF,    "retrieve-conf",    "retrieve confirmation"},
    {MMS_PDU_ACKNOWLEDGE_IND,  "acknowledge-ind",  "acknowledge"},
    {MMS_PDU_DELIVERY_IND,     "delivery-ind",     "delivery report"},
    {MMS_PDU_STORED,           "stored",           "stored message"},
    {0x88,                     "read-orig-ind",    "read report"},
    {0x89,                     "forward-req",      "forward request"},
    {0x8A,                     "forward-conf",     "forward confirmation"},
    {0x8B,                     "mbox-store-req",   "mailbox store request"},
    {0x8C,                     "mbox-store-conf",  "mailbox store confirmation"},
    {0x8D,                     "mbox-view-req",    "mailbox view request"},
    {0x8E,                     "mbox-view-conf",   "mailbox view confirmation"},
    {0x8F,                     "mbox-upload-req",  "mailbox upload request"},
    {0x90,                     "mbox-upload-conf", "mailbox upload confirmation"},
    {0x91,                     "mbox-delete-req",  "mailbox delete request"},
    {0x92,                     "mbox-delete-conf", "mailbox delete confirmation"},
    {0x93,                     "mbox-descr",       "mailbox description"},
    {0x94,                     "delete-req",       "delete request"},
    {0x95,                     "delete-conf",      "delete confirmation"},
    {0x96,                     "cancel-req",       "cancel request"},
    {0x97,                     "cancel-conf",      "cancel confirmation"},
};

constexpr CodeWords kClasses[] = {
    {128, "personal",      "personal"},
    {129, "advertisement", "advertisement"},
    {130, "informational", "informational"},
    {131, "auto",          "automatic"},
};

constexpr CodeWords kPriorities[] = {
    {128, "low",    "low"},
    {129, "normal", "normal"},
    {130, "high",   "high"},
};

constexpr CodeWords kStatuses[] = {
    {128, "expired",       "expired"},
    {129, "retrieved",     "retrieved"},
    {130, "rejected",      "rejected"},
    {131, "deferred",      "deferred"},
    {132, "unrecognised",  "not recognised"},
    {133, "indeterminate", "not known"},
    {134, "forwarded",     "forwarded"},
    {135, "unreachable",   "the recipient cannot be reached"},
};

constexpr CodeWords kResponseStatuses[] = {
    {128, "ok",                                         "accepted"},
    {129, "error-unspecified",                          "refused, no reason given"},
    {130, "error-service-denied",                       "refused: service denied"},
    {131, "error-message-format-corrupt",               "refused: the message is malformed"},
    {132, "error-sending-address-unresolved",           "refused: an address is not known"},
    {133, "error-message-not-found",                    "refused: message not found"},
    {134, "error-network-problem",                      "refused: network problem"},
    {135, "error-content-not-accepted",                 "refused: content not accepted"},
    {136, "error-unsupported-message",                  "refused: message not supported"},
    {192, "error-transient-failure",                    "failed for now"},
    {193, "error-transient-sending-address-unresolved", "failed for now: an address is not known"},
    {194, "error-transient-message-not-found",          "failed for now: message not found"},
    {195, "error-transient-network-problem",            "failed for now: network problem"},
    {196, "error-transient-partial-success",            "some recipients failed for now"},
    {224, "error-permanent-failure",                    "failed for good"},
    {225, "error-permanent-service-denied",             "failed for good: service denied"},
    {226, "error-permanent-message-format-corrupt",     "failed for good: the message is malformed"},
    {227, "error-permanent-sending-address-unresolved", "failed for good: an address is not known"},
    {228, "error-permanent-message-not-found",          "failed for good: message not found"},
    {229, "error-permanent-content-not-accepted",       "failed for good: content not accepted"},
    {230, "error-permanent-reply-charging-limitations-not-met",
          "failed for good: limits of the paid reply not met"},
    {231, "error-permanent-reply-charging-request-not-accepted",
          "failed for good: paid reply not accepted"},
    {232, "error-permanent-reply-charging-forwarding-denied",
          "failed for good: forwarding with a paid reply denied"},
    {233, "error-permanent-reply-charging-not-supported",
          "failed for good: paid reply not supported"},
    {234, "error-permanent-address-hiding-not-supported",
          "failed for good: the sender cannot be hidden"},
};

constexpr CodeWords kRetrieveStatuses[] = {
    {128, "ok",                                  "the message follows"},
    {192, "error-transient-failure",             "failed for now"},
    {193, "error-transient-message-not-found",   "failed for now: message not found"},
    {194, "error-transient-network-problem",     "failed for now: network problem"},
    {224, "error-permanent-failure",             "failed for good"},
    {225, "error-permanent-service-denied",      "failed for good: service denied"},
    {226, "error-permanent-message-not-found",   "failed for good: message not found"},
    {227, "error-permanent-content-unsupported", "failed for good: content not supported"},
};

constexpr CodeWords kReadStatuses[] = {
    {128, "read",                         "read"},
    {129, "deleted-without-being-read",   "deleted without being read"},
};

constexpr CodeWords kReplyChargings[] = {
    {128, "requested",           "a paid reply is asked for"},
    {129, "requested-text-only", "a paid reply of text is asked for"},
    {130, "accepted",            "a paid reply is accepted"},
    {131, "accepted-text-only",  "a paid reply of text is accepted"},
};

constexpr CodeWords kStates[] = {
    {128, "draft",     "draft"},
    {129, "sent",      "sent"},
    {130, "new",       "new"},
    {131, "retrieved", "retrieved"},
    {132, "forwarded", "forwarded"},
};

constexpr CodeWords kStoreStatuses[] = {
    {128, "success",                                "stored"},
    {192, "error-transient-failure",                "failed for now"},
    {193, "error-transient-network-problem",        "failed for now: network problem"},
    {224, "error-permanent-failure",                "failed for good"},
    {225, "error-permanent-service-denied",         "failed for good: service denied"},
    {226, "error-permanent-message-format-corrupt", "failed for good: the message is malformed"},
    {227, "error-permanent-message-not-found",      "failed for good: message not found"},
    {228, "error-permanent-mmbox-full",             "failed for good: the mailbox is full"},
};

constexpr CodeWords kRetrievalModes[] = {
    {128, "manual", "by hand"},
};

constexpr CodeWords kContentClasses[] = {
    {128, "text",          "text"},
    {129, "image-basic",   "small pictures"},
    {130, "image-rich",    "pictures"},
    {131, "video-basic",   "small films"},
    {132, "video-rich",    "films"},
    {133, "megapixel",     "large pictures"},
    {134, "content-basic", "small content of any kind"},
    {135, "content-rich",  "content of any kind"},
};

constexpr CodeWords kCancelStatuses[] = {
    {128, "request-successfully-received", "the request was received"},
    {129, "request-corrupted",             "the request is malformed"},
};
// clang-format on

struct CodeTable {
    int fieldId;
    const CodeWords *first;
    const CodeWords *last;
};

constexpr CodeTable kCodeTables[] = {
    {MMS_FIELD_MSG_TYPE, std::begin(kPduTypes), std::end(kPduTypes)},
    {MMS_FIELD_MSG_CLASS, std::begin(kClasses), std::end(kClasses)},
    {MMS_FIELD_PRIORITY, std::begin(kPriorities), std::end(kPriorities)},
    {MMS_FIELD_MSG_STATUS, std::begin(kStatuses), std::end(kStatuses)},
    {MMS_FIELD_RESPONSE_STATUS, std::begin(kResponseStatuses), std::end(kResponseStatuses)},
    {0x19, std::begin(kRetrieveStatuses), std::end(kRetrieveStatuses)},
    {0x1B, std::begin(kReadStatuses), std::end(kReadStatuses)},
    {0x1C, std::begin(kReplyChargings), std::end(kReplyChargings)},
    {0x23, std::begin(kStates), std::end(kStates)},
    {0x25, std::begin(kStoreStatuses), std::end(kStoreStatuses)},
    {0x34, std::begin(kRetrievalModes), std::end(kRetrievalModes)},
    {0x3A, std::begin(kContentClasses), std::end(kContentClasses)},
    {0x3F, std::begin(kCancelStatuses), std::end(kCancelStatuses)},
};

template <typename Matches> const CodeWords *findCode(int fieldId, Matches matches)
{
    const auto *table = std::find_if(std::begin(kCodeTables), std::end(kCodeTables),
                                     [&](const CodeTable &t) { return t.fieldId == fieldId; });
    if (table == std::end(kCodeTables)) {
        return nullptr;
    }
    const auto *row = std::find_if(table->first, table->last, matches);
    return row == table->last ? nullptr : row;
}

} // namespace

QString fieldName(int id)
{
    constexpr int kLast = kFieldNames.size();
    constexpr int kLastLater = kLast + kLaterFieldNames.size();
    if (id < 1 || id > kLastLater) {
        return u"field %1"_s.arg(id);
    }
    return QString::fromLatin1(id <= kLast ? kFieldNames[size_t(id) - 1]
                                           : kLaterFieldNames[size_t(id - kLast) - 1]);
}

const CodeWords *codeWords(int fieldId, quint8 code)
{
    return findCode(fieldId, [&](const CodeWords &row) { return row.code == code; });
}

QString codeInWords(int fieldId, quint8 code)
{
    const CodeWords *row = codeWords(fieldId, code);
    return u"%1 (%2)"_s.arg(QLatin1String(row ? row->words : "unknown code")).arg(code);
}

std::optional<quint8> codeOfKey(int fieldId, const QString &key)
{
    const CodeWords *row =
        findCode(fieldId, [&](const CodeWords &r) { return key == QLatin1String(r.key); });
    return row ? std::optional<quint8>(row->code) : std::nullopt;
}

QString versionInWords(quint8 version)
{
    return u"%1.%2"_s.arg(version >> 4).arg(version & 15);
}

QString resultInWords(quint32 result)
{
    switch (result) {
    case MMS_DECODE_OK:
        return u"decoded"_s;
    case MMS_DECODE_NO_FILE:
        return u"the file is shorter than the prefix of a mail file"_s;
    case MMS_DECODE_UNKNOWN_FIELD:
        return u"unknown header field"_s;
    case MMS_DECODE_NO_CODEC:
        return u"0 is no header field"_s;
    case MMS_DECODE_BAD_BODY:
        return u"the multipart body cannot be read"_s;
    case MMS_DECODE_OLD_FILE:
        return u"a mail file of the old layout"_s;
    case MMS_DECODE_BAD_FIELD:
        return u"a header field cannot be read"_s;
    case MMS_ENCODE_NO_CONTENT_TYPE:
        return u"the message has a body and no content type"_s;
    case MMS_ENCODE_BAD_FIELD:
        return u"a header field or the body cannot be written whole"_s;
    case MMS_SAVE_FAIL:
        return u"the file cannot be written"_s;
    case MMS_SAVE_DISK_FULL:
        return u"the file system is full"_s;
    default:
        return u"unexpected result"_s;
    }
}

const char *charsetName(quint32 mibEnum)
{
    switch (mibEnum) {
    case 3:
        return "US-ASCII";
    case 4:
        return "ISO-8859-1";
    case 106:
        return "UTF-8";
    case 1000:
        return "UCS2";
    case 1013:
        return "UTF-16BE";
    case 1014:
        return "UTF-16LE";
    case 1015:
        return "UTF-16";
    default:
        return nullptr;
    }
}

QString mmsTypeInWords(quint8 type)
{
    switch (type) {
    case MMS_MSGDB_MSG_TYPE_POSTCARD:
        return u"postcard"_s;
    case MMS_MSGDB_MSG_TYPE_MEDIA:
        return u"one picture, sound or film"_s;
    case MMS_MSGDB_MSG_TYPE_LETTER_MIXED:
        return u"letter"_s;
    case MMS_MSGDB_MSG_TYPE_XHTML:
        return u"web page"_s;
    case MMS_MSGDB_MSG_TYPE_ALTERNATIVE:
        return u"alternative forms"_s;
    case MMS_MSGDB_MSG_TYPE_SMIL:
        return u"presentation"_s;
    case MMS_MSGDB_MSG_TYPE_NONE:
        return u"not classified"_s;
    default:
        return u"unknown"_s;
    }
}

} // namespace wmsg::cli

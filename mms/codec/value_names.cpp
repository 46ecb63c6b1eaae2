// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/value_names.h"

#include "mms/codec/mms_hdr_s.h"

#include <algorithm>
#include <iterator>

namespace wmsg::codec {

namespace {

struct ValueName {
    quint8 code;
    const char *name;
};

// clang-format off
// Kept: 0x81 prints as "SEND_CONFT".
constexpr ValueName kPduTypes[] = {
    {128, "SEND_REQ"},
    {129, "SEND_CONFT"},
    {130, "NOTIFICATION_IND"},
    {131, "NOTIFYRESP_IND"},
    {132, "RETRIEVE_CONF"},
    {133, "ACKNOWLEDGE_IND"},
    {134, "DELIVERY_IND"},
};

constexpr ValueName kMessageClasses[] = {
    {128, "PERSONAL"},
    {129, "ADVERTISEMENT"},
    {130, "INFORMATIONAL"},
    {131, "AUTO"},
};

constexpr ValueName kStatuses[] = {
    {128, "EXPIRED"},
    {129, "RETRIEVED"},
    {130, "REJECTED"},
    {131, "DEFERRED"},
    {132, "UNRECOGNISED"},
    {133, "INDETERMINATE"},
    {134, "FORWARDED"},
    {135, "UNREACHABLE"},
};

// Kept: the names of 131, 224 and 231 are spelled as they stand.
constexpr ValueName kResponseStatuses[] = {
    {128, "OK"},
    {129, "ERR_UNSPECIFIED"},
    {130, "ERR_SERVICE_DENIED"},
    {131, "ERR_MSG_FORMAT_CURRUPT"},
    {132, "ERR_SEND_ADDRESS_UNRESOLVED"},
    {133, "ERR_MSG_NOT_FOUND"},
    {134, "ERR_NETWORK_PROBLEM"},
    {135, "ERR_CONTENT_NOT_ACCEPTED"},
    {136, "ERR_UNSUPPORTED_MSG"},
    {192, "ERR_TRANS_FAIL"},
    {193, "ERR_TRANS_ADDR_UNRESOLVED"},
    {194, "ERR_TRANS_MSG_NOT_FOUND"},
    {195, "ERR_TRANS_NET_PROBLEM"},
    {196, "ERR_TRANS_PARTIAL_SUCCESS"},
    {224, "RR_PERM_FAIL"},
    {225, "ERR_PERM_SERVICE_DENIED"},
    {226, "ERR_PERM_MSG_FORMAT_CORRUPT"},
    {227, "ERR_PERM_ADDR_UNRESOLVED"},
    {228, "ERR_PERM_MSG_NOT_FOUND"},
    {229, "ERR_PERM_CONTENT_NOT_ACCEPTED"},
    {230, "ERR_PERM_REP_LIMIT_NOT_MET"},
    {231, "ERR_PERM_REP_REQ_NOT_ACCPETED"},
    {232, "ERR_PERM_REP_FWD_DENIED"},
    {233, "ERR_PERM_REP_NOT_SUPPORTED"},
    {234, "ERR_PERM_ADDR_HID_NOT_SUPPORTED"},
};
// clang-format on

template <size_t N> const char *nameIn(const ValueName (&names)[N], quint8 code)
{
    const auto *found = std::find_if(std::begin(names), std::end(names),
                                     [code](const ValueName &row) { return row.code == code; });
    return found == std::end(names) ? "unknown" : found->name;
}

} // namespace

const char *valueName(int fieldId, quint8 code)
{
    switch (fieldId) {
    case MMS_FIELD_MSG_TYPE:
        return nameIn(kPduTypes, code);
    case MMS_FIELD_MSG_CLASS:
        return nameIn(kMessageClasses, code);
    case MMS_FIELD_MSG_STATUS:
        return nameIn(kStatuses, code);
    case MMS_FIELD_RESPONSE_STATUS:
        return nameIn(kResponseStatuses, code);
    default:
        return "unknown";
    }
}

} // namespace wmsg::codec

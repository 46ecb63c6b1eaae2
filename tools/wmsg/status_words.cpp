// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/status_words.h"

#include "tools/wmsg/field_words.h"

#include <core/wmfm.h>
#include <mms/codec/mms_hdr_s.h>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

struct StatusWords {
    int status;
    const char *key;
    const char *words;
};

// clang-format off
constexpr StatusWords kOwnStatuses[] = {
    {WMFM::STATUS_OK,               "ok",               "done"},
    {WMFM::STATUS_INVALID_PARAM,    "invalid-param",    "not accepted: the request cannot be carried out as it is"},
    {WMFM::STATUS_SEND_FAIL,        "send-fail",        "failed for good"},
    {WMFM::STATUS_LISTENER_EXISTS,  "listener-exists",  "somebody else listens already"},
    {WMFM::STATUS_CONTENT_OVERFLOW, "content-overflow", "too long for one short message"},
    {WMFM::STATUS_FAIL,             "fail",             "failed, no reason given"},
    {kStatusWillRetry,              "will-retry",       "not done yet, it will be tried again"},
};

// What the codes of the message centre mean where they have no name.
struct RangeWords {
    int first;
    int last;
    const char *words;
};
constexpr RangeWords kUnnamed[] = {
    {129, 191, "refused, for a reason without a name"},
    {192, 223, "failed for now, for a reason without a name"},
    {224, 255, "failed for good, for a reason without a name"},
};
// clang-format on

const StatusWords *ownStatus(int status)
{
    const auto *row = std::find_if(std::begin(kOwnStatuses), std::end(kOwnStatuses),
                                   [&](const StatusWords &r) { return r.status == status; });
    return row == std::end(kOwnStatuses) ? nullptr : row;
}

// 128 is told as 0.
const CodeWords *responseStatus(int status)
{
    const bool isResponse = status > 128 && status <= 255;
    return isResponse ? codeWords(MMS_FIELD_RESPONSE_STATUS, static_cast<quint8>(status)) : nullptr;
}

} // namespace

QString statusInWords(int status)
{
    if (const StatusWords *row = ownStatus(status)) {
        return QLatin1String(row->words);
    }
    if (const CodeWords *row = responseStatus(status)) {
        return QLatin1String(row->words);
    }
    const auto *range =
        std::find_if(std::begin(kUnnamed), std::end(kUnnamed),
                     [&](const RangeWords &r) { return status >= r.first && status <= r.last; });
    return range == std::end(kUnnamed) ? u"failed, for a reason that is not known"_s
                                       : QString(QLatin1String(range->words));
}

QString statusKey(int status)
{
    if (const StatusWords *row = ownStatus(status)) {
        return QLatin1String(row->key);
    }
    const CodeWords *row = responseStatus(status);
    return row ? QString(QLatin1String(row->key)) : QString();
}

} // namespace wmsg::cli

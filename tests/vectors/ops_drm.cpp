// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

namespace vectors {

static Result isRoMimeType(const QJsonObject &in)
{
    return Result().set("ok", toJson(WMMSDrmUtil::isRoMimeType(from<QString>(in.value("text")))));
}

static Result canBeSentFormatCheck(const QJsonObject &in)
{
    return Result().set("ok",
                        toJson(WMMSDrmUtil::canBeSentFormatCheck(from<QString>(in.value("text")))));
}

Operations drmOperations()
{
    return {
        {"drm.isRoMimeType", "text", "ok", isRoMimeType},
        {"drm.canBeSentFormatCheck", "text", "ok", canBeSentFormatCheck},
    };
}

} // namespace vectors

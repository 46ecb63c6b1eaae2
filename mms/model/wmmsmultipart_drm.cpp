// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"
#include "mms/model/wmmsmultipart.h"

// What a DRM part tells of itself is inside its container. The checks change the part while they
// work, so they get a copy, which shares its bytes.

WMMSContentType WMMSMultipart::protectedContentType() const
{
    WMMSMultipart part(*this);
    WMMSContentType type;
    type.fromString(WMMSDrmUtil::getDataMimeType(&part));
    return type;
}

QString WMMSMultipart::suggestProtectedFileName(const QString &dir) const
{
    WMMSMultipart part(*this);
    return WMMSDrmUtil::getSuggestLocalFileName(&part, dir);
}

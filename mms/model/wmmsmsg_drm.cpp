// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "drm/wmmsdrmutil.h"
#include "mms/model/wmmsmsg.h"

bool WMMSMsg::canBeForwardedDrmCheck()
{
    return WMMSDrmUtil::canBeForwardedDrmCheck(this);
}

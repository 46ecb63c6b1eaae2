// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The one file of core/ that names concrete messages and sessions.

#include "core/wmfmmsg.h"
#include "core/wmfmsession.h"
#include "mms/model/wmmsmsg.h"
#include "mms/session/wmmssession.h"
#include "sms/wsmsmsg.h"
#include "sms/wsmssession.h"

WMFMMsg *WMFMMsg::factory(WMFM::MSG_TYPE_T type)
{
    switch (type) {
    case WMFM::MSG_TYPE_MMS:
        return new WMMSMsg;
    case WMFM::MSG_TYPE_SMS:
        return new WSMSMsg;
    }
    return nullptr;
}

WMFMSession *WMFMSession::open(WMFM::MSG_TYPE_T type, WMFM::STATUS_T &status)
{
    switch (type) {
    case WMFM::MSG_TYPE_MMS:
        status = WMFM::STATUS_OK;
        return new WMMSSession(status);
    case WMFM::MSG_TYPE_SMS:
        status = WMFM::STATUS_OK;
        return new WSMSSession(status);
    }
    status = WMFM::STATUS_INVALID_PARAM;
    return nullptr;
}

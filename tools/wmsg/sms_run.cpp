// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/sms_run.h"

#include "tools/wmsg/text_view.h"

using namespace Qt::StringLiterals;

namespace wmsg::cli {

bool SmsRun::open()
{
    m_session = openSession<WSMSSession>(WMFM::MSG_TYPE_SMS, this);
    if (!m_session) {
        const QByteArray path = qgetenv("WMSG_TELEPHONY_SOCKET");
        complain(u"no telephony service answers at %1 (is wmsg-telephonyd running?)"_s.arg(
            path.isEmpty() ? u"/tmp/wmsg-telephony"_s : shownName(path)));
        return false;
    }
    return true;
}

} // namespace wmsg::cli

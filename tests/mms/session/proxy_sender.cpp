// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// Sends messages as an application of its own: proxy_sender NAME COUNT. It prints a line when it is
// ready, and begins when it reads one.

#include "core/wmfmsession.h"
#include "platform/applog/applog.h"
#include "tests/mms/session/message_with.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    appLogModuleStream = appLogDiscardStream();
    WMFM::STATUS_T status = WMFM::STATUS_FAIL;
    WMFMSession *session = WMFMSession::open(WMFM::MSG_TYPE_MMS, status);
    puts("ready");
    fflush(stdout);
    getchar();
    bool isGood = argc == 3 && status == WMFM::STATUS_OK;
    for (int n = 0; isGood && n < atoi(argv[2]); ++n) {
        WMMSMsg message = messageWith(QStringLiteral("%1 %2").arg(QLatin1String(argv[1])).arg(n));
        isGood = session->send(&message, status) == n && status == WMFM::STATUS_OK;
    }
    getchar(); // the other end has taken everything
    WMFMSession::close(session);
    return isGood ? 0 : 1;
}

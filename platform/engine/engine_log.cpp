// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"
#include "platform/engine/engine_log_p.h"
#include "platform/engine/mms_eng_controller.h"

#include <cstring>

namespace wmsg::engine {

int refuse(int result, const QString &why)
{
    if (appLogModuleStream != appLogDiscardStream()) {
        const QByteArray line = "MMS engine: " + why.toLatin1() + '\n';
        fputs(line.constData(), appLogModuleStream ? appLogModuleStream : stdout);
    }
    return result;
}

int resultOfErrno(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return MMS_ENG_FULL;
    case EACCES:
    case EPERM:
    case EROFS:
    case ENOTDIR:
        return MMS_ENG_READ_ONLY;
    default:
        return MMS_ENG_FAIL;
    }
}

int refuseErrno(int error, const QString &what)
{
    return refuse(resultOfErrno(error),
                  what + QLatin1String(": ") + QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace wmsg::engine

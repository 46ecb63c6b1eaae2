// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_util_tool.h"
#include "tests/support/log_capture.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

namespace vectors {

static Result logOut(const QJsonObject &in)
{
    QArray<char> bytes;
    unsigned char *data = nullptr;
    if (!in.value("hex").isNull()) {
        bytes = from<QArray<char>>(in.value("hex"));
        data = reinterpret_cast<unsigned char *>(bytes.data());
    }
    LogCapture log;
    MMS_UTIL_Tool::logOut(data, valueOr(in, "size", static_cast<unsigned int>(bytes.size())));
    return Result().set("log", log.text());
}

Operations toolOperations()
{
    return {{"tool.logOut", "hex size", "log", logOut}};
}

} // namespace vectors

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/applog/applog.h"

#include <QtCore/qglobal.h>

FILE *appLogModuleStream = nullptr;

namespace {

// A stream of nothing but a name: it has no file behind it, so it needs no descriptor and no /dev,
// and what is written to it directly goes nowhere as well.
FILE *openDiscardStream()
{
    FILE *stream = fopencookie(nullptr, "w", cookie_io_functions_t{});
    Q_CHECK_PTR(stream);
    return stream;
}

} // namespace

FILE *appLogDiscardStream()
{
    // Never closed: lines may still be logged while the process ends.
    static FILE *const stream = openDiscardStream();
    return stream;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <cstdio>

/// The application log service: where the lines of this process go.

/// The module stream pointer. Log lines are written to the stream it designates, or to standard
/// output while it is null. The library only reads it; the application sets it, and owns the
/// stream. Set it before other threads log.
extern WMSG_PLATFORM_EXPORT FILE *appLogModuleStream;

/// The discard stream. While the module stream pointer designates it nothing is written and nothing
/// is formatted, so a log line costs one comparison. The stream is valid for the life of the
/// process and must not be closed.
WMSG_PLATFORM_EXPORT FILE *appLogDiscardStream();

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QString>

/// Diagnostic dumps of raw bytes to the log, at level 4.
class WMSG_EXPORT MMS_UTIL_Tool {
public:
    /// Logs `size` bytes as lines of sixteen: in hex, and as characters. Null or empty data gives
    /// one line that says so.
    static void logOut(const unsigned char *data, unsigned int size);
    /// Logs the whole content of a file as logOut() does, or that there is no such file.
    static void logOutFrFile(const QString &path);
};

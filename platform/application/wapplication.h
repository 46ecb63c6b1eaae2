// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <QtCore/QString>

/// The application base service: what the library may know of the program it runs in.
///
/// Here it asks the Qt application object. A port links the library of its phone instead.
class WMSG_PLATFORM_EXPORT WApplication {
public:
    /// getAppName returns the name of the running application, which new files are named after. It
    /// is empty as long as there is no application object.
    static QString getAppName();
};

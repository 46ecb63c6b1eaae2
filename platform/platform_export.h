// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/qglobal.h>

/// Marks what a platform library offers to the SDK. The libraries are compiled with hidden
/// visibility, so a name without it stays inside its library.
#define WMSG_PLATFORM_EXPORT Q_DECL_EXPORT

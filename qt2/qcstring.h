// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>

/// QCString is the name of today's 8-bit string in the public API. It is implicitly shared, and a
/// null one is not an empty one.
using QCString = QByteArray;

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QList>

/// QValueList is the name of today's list in the public API. It is implicitly shared: a copy is
/// cheap, and changing it leaves the original as it is.
template <typename T> using QValueList = QList<T>;

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmmsg.h"

WMFMMsg::~WMFMMsg() = default;

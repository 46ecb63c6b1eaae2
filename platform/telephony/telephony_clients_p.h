// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_client_p.h"

#include <memory>

namespace wmsg::telephony {

/// clientOf returns the client of this thread that stands behind `handle`, null when there is none.
[[nodiscard]] std::shared_ptr<TelephonyClient> clientOf(int handle);

} // namespace wmsg::telephony

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

namespace wmsg::proxy {

/// The number of a session: of one connection to the proxy socket. Numbers begin at 1 and are not
/// used again as long as the daemon runs; 0 is no session.
using SessionId = quint64;

} // namespace wmsg::proxy

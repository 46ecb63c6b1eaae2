// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>

namespace wmsg::intake {

/// plainAddress returns the address that `text` means, in the form that the library's codec reads:
/// "+431234/TYPE=PLMN" for a number (and for whatever is no e-mail address: a sender of letters, an
/// IP address), "ann@x.at" or "Ann <ann@x.at>" for an e-mail address. A suffix in any spelling is
/// cut or renewed; a number that has a name in front loses the name. Empty when there is no
/// address.
///
/// An address that the codec reads as it is meant is returned as it is.
[[nodiscard]] QByteArray plainAddress(const QByteArray &text);

} // namespace wmsg::intake

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/gammu_backend.h"

namespace wmsg::telephonyd {

/// Built where libgammu is not there, or not wanted.
std::unique_ptr<Modem> makeGammuModem(const GammuSettings &, QString &problem)
{
    problem = QStringLiteral("the back end gammu is not part of this build");
    return nullptr;
}

} // namespace wmsg::telephonyd

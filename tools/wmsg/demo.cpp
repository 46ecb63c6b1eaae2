// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/demo.h"

#include <chrono>
#include <cstdio>

namespace wmsg::cli {

Demo::Demo(const QString &lateness)
{
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this, lateness] { Q_EMIT failed(lateness); });
}

void Demo::wait()
{
    m_patience.start(std::chrono::minutes(1));
}

void Demo::messageIsSent()
{
    m_isSent = true;
    endWhenAllIsDone();
}

void Demo::messageHasArrived()
{
    m_hasArrived = true;
    endWhenAllIsDone();
}

void Demo::endWhenAllIsDone()
{
    std::fflush(stdout);
    if (m_isSent && m_hasArrived) {
        m_patience.stop();
        Q_EMIT succeeded();
    }
}

} // namespace wmsg::cli

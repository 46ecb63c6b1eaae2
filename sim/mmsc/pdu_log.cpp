// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/pdu_log.h"

#include "sim/mmsc/pdus.h"

namespace wmsg::sim {

void PduLog::write(const QString &direction, const QByteArray &pdu)
{
    if (m_files.isOpen()) {
        m_files.write(direction + QLatin1Char('-') + pduName(pduType(pdu)), pdu);
    }
}

} // namespace wmsg::sim

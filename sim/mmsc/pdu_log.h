// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/common/pdu_files.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace wmsg::sim {

/// Keeps what the MMSC hears and says: each PDU in a file of its own, numbered in order, like
/// 0001-in-send-req.pdu. A file appears whole.
class PduLog {
public:
    /// Takes a folder, which is made if it is not there; numbers go on behind those in it. Returns
    /// what is wrong with it. Without a folder nothing is kept.
    [[nodiscard]] QString open(const QString &folder) { return m_files.open(folder); }
    [[nodiscard]] bool isOpen() const { return m_files.isOpen(); }

    void in(const QByteArray &pdu) { write(QStringLiteral("in"), pdu); }
    void out(const QByteArray &pdu) { write(QStringLiteral("out"), pdu); }

private:
    void write(const QString &direction, const QByteArray &pdu);

    PduFiles m_files;
};

} // namespace wmsg::sim

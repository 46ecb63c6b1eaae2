// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace wmsg::sim {

/// Keeps what the MMSC hears and says: each PDU in a file of its own, numbered in order, like
/// 0001-in-send-req.pdu. A file appears whole.
class PduLog {
public:
    /// Takes a folder, which is made if it is not there; numbers go on behind those in it. Returns
    /// what is wrong with it. Without a folder nothing is kept.
    [[nodiscard]] QString open(const QString &folder);

    void in(const QByteArray &pdu) { write(QStringLiteral("in"), pdu); }
    void out(const QByteArray &pdu) { write(QStringLiteral("out"), pdu); }
    [[nodiscard]] bool isOpen() const { return !m_folder.isEmpty(); }

private:
    void write(const QString &direction, const QByteArray &pdu);

    QString m_folder;
    int m_number = 0;
};

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace wmsg::sim {

/// Keeps what a simulator hears and says: each PDU in a file of its own, numbered in order, like
/// 0001-submit.pdu. A file appears whole.
class PduFiles {
public:
    /// open takes a folder, which is made if it is not there; numbers go on behind those in it. It
    /// returns what is wrong with it. Without a folder nothing is kept.
    [[nodiscard]] QString open(const QString &folder);
    [[nodiscard]] bool isOpen() const { return !m_folder.isEmpty(); }

    /// write keeps a PDU under the next number and `name`.
    void write(const QString &name, const QByteArray &pdu);

private:
    QString m_folder;
    int m_number = 0;
};

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

#include <memory>

namespace wmsg::sim {

/// Pty is a terminal that programs open by a link, as they open the device of a modem; this side is
/// the modem. Programs may close it and open it again.
class Pty : public QObject {
    Q_OBJECT

public:
    explicit Pty(QObject *parent = nullptr) : QObject(parent) { }
    ~Pty() override { close(); }

    /// open makes a terminal and the link to it. It returns what is in the way; an empty text when
    /// nothing is. A link that is there is replaced, anything else is left alone.
    [[nodiscard]] QString open(const QString &link);
    /// close hangs up on whoever has it open, and removes the link.
    void close();
    [[nodiscard]] bool isOpen() const { return m_master.isOpen(); }

    /// write sends bytes. What nobody reads is dropped at last.
    void write(const QByteArray &bytes);

Q_SIGNALS:
    void received(const QByteArray &bytes);

private:
    void read();
    void flush();
    [[nodiscard]] QString makeLink();

    QString m_link;
    QByteArray m_device;
    service::Descriptor m_master;
    service::Descriptor m_slave; // so that the terminal stays when programs close it
    std::unique_ptr<QSocketNotifier> m_reading;
    std::unique_ptr<QSocketNotifier> m_writing;
    QByteArray m_unsent;
};

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtCore/QtGlobal>

#include <memory>
#include <sys/types.h>

namespace wmsg::service {

/// LocalListener listens on a local stream socket for peers of its own user. It tells of each with
/// a descriptor; peers of other users, root included, are closed, and the log says so.
class LocalListener : public QObject {
    Q_OBJECT

public:
    /// The longest path of a socket, in bytes.
    static constexpr int kLongestPath = 107;

    explicit LocalListener(QObject *parent = nullptr);
    ~LocalListener() override;

    /// listen makes the socket with this mode and begins to listen. It returns the problem in
    /// words, an empty text when there is none. A socket file on which nobody answers is replaced.
    /// One on which somebody does ("... is in use"), and anything that is no socket, is left alone.
    [[nodiscard]] QString listen(const QString &path, mode_t mode = 0600);

    /// close ends listening and removes the file, if it still is the one that listen() made.
    void close();

    [[nodiscard]] bool isListening() const { return m_socket.isOpen(); }
    [[nodiscard]] const QString &path() const { return m_path; }

Q_SIGNALS:
    /// connected hands over the descriptor of a new peer, which does not block; the receiver closes
    /// it. Have exactly one receiver.
    void connected(qintptr descriptor);

private:
    void takePeers();
    void rest();
    void goOn();
    [[nodiscard]] bool isOwnFile() const;

    QString m_path;
    Descriptor m_socket;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_rest;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

} // namespace wmsg::service

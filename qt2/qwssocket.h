// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtNetwork/QLocalSocket>

/// QWSSocket is the client end of a local stream socket: a QLocalSocket that is given the path of a
/// file, keeps what is written before the connection stands, and tells failures from an ordinary
/// end.
///
/// Both of its own signals are delivered by the event loop, never from inside a call of the socket,
/// and at most for the connection that was begun last. Once the destructor has begun the socket
/// emits nothing more (save QObject::destroyed). The signals of QLocalSocket are as they were:
/// prefer these two to errorOccurred() and disconnected().
class WMSG_EXPORT QWSSocket : public QLocalSocket {
    Q_OBJECT

public:
    explicit QWSSocket(QObject *parent = nullptr);
    ~QWSSocket() override;

    using QLocalSocket::error;

    /// connectToLocalFile begins to connect to the socket at `path`; a relative path counts from
    /// the current directory. It returns true when the connection stands or is being made. It
    /// returns false when that failed at once; error(int) tells why later. A socket that was
    /// closed, or failed, may connect again.
    bool connectToLocalFile(const QString &path);

    /// readBlock moves up to `maxLength` bytes that have arrived to `data` and returns their
    /// number, 0 when there are none yet, -1 without a connection. Bytes that arrived before the
    /// peer closed stay readable.
    int readBlock(char *data, uint maxLength);

    /// writeBlock takes `length` bytes and returns their number, or -1 without a connection. While
    /// the connection is being made the bytes are kept; they go out first when it stands, and are
    /// dropped when it fails.
    int writeBlock(const char *data, uint length);

    /// bytesToWrite returns the number of bytes taken and not yet handed to the system, kept ones
    /// included.
    qint64 bytesToWrite() const override;

Q_SIGNALS:
    /// error tells that the connection could not be made or broke, with a number of
    /// QLocalSocket::LocalSocketError. The peer closing the connection is no error.
    void error(int code);

    /// connectionClosed tells that the peer closed the connection. Closing it oneself raises
    /// nothing.
    void connectionClosed();

private:
    Q_INVOKABLE void tell(uint connection, int code);
    void handleError(LocalSocketError code);
    void handleState(LocalSocketState state);
    void sendKept();

    // What was written while the connection was being made.
    QByteArray m_kept;
    // Counts the connections, so that late news of an earlier one is dropped.
    uint m_connection = 0;
};

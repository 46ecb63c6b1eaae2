// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "qt2/qwssocket.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <climits>
#include <utility>

QWSSocket::QWSSocket(QObject *parent) : QLocalSocket(parent)
{
    connect(this, &QLocalSocket::errorOccurred, this, &QWSSocket::handleError);
    connect(this, &QLocalSocket::connected, this, &QWSSocket::sendKept);
    connect(this, &QLocalSocket::stateChanged, this, &QWSSocket::handleState);
}

QWSSocket::~QWSSocket()
{
    // A connected socket announces its end from inside the destructors below, to receivers that may
    // be half gone.
    blockSignals(true);
}

bool QWSSocket::connectToLocalFile(const QString &path)
{
    const bool isFree = state() == UnconnectedState;
    if (isFree) {
        close(); // lets go what an earlier connection left unread
        ++m_connection;
    }
    // A socket that is not free is refused there, with an error.
    connectToServer(QFileInfo(path).absoluteFilePath());
    return isFree && state() != UnconnectedState;
}

int QWSSocket::readBlock(char *data, uint maxLength)
{
    return isOpen() ? static_cast<int>(read(data, std::min<uint>(maxLength, INT_MAX))) : -1;
}

int QWSSocket::writeBlock(const char *data, uint length)
{
    if (state() != ConnectingState && state() != ConnectedState) {
        return -1;
    }
    const int size = static_cast<int>(std::min<uint>(length, INT_MAX));
    // The state is "connected" a moment before the device is open and what was kept has been sent.
    if (isOpen()) {
        return static_cast<int>(write(data, size));
    }
    m_kept.append(data, size);
    return size;
}

qint64 QWSSocket::bytesToWrite() const
{
    return QLocalSocket::bytesToWrite() + m_kept.size();
}

/// Leaves the news to the event loop: a failed connect is reported from inside the call that begins
/// it, and a lost peer from inside flush(), where nobody expects a signal.
void QWSSocket::handleError(LocalSocketError code)
{
    QMetaObject::invokeMethod(this, "tell", Qt::QueuedConnection, Q_ARG(uint, m_connection),
                              Q_ARG(int, static_cast<int>(code)));
}

void QWSSocket::tell(uint connection, int code)
{
    if (connection != m_connection) {
        return;
    }
    if (code == PeerClosedError) {
        Q_EMIT connectionClosed();
    } else {
        Q_EMIT error(code);
    }
}

void QWSSocket::sendKept()
{
    write(std::exchange(m_kept, QByteArray()));
}

/// Drops what was kept for a connection that did not come about.
void QWSSocket::handleState(LocalSocketState state)
{
    if (state == UnconnectedState) {
        m_kept.clear();
    }
}

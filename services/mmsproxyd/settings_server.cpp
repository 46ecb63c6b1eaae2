// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/settings_server.h"

#include "services/mmsproxyd/config_checks.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>

#include <sys/socket.h>
#include <utility>

// answer := size uri, at most 128 bytes
//   size: int32, big-endian
//   uri:  uint32 byte length, big-endian; UTF-16, big-endian

namespace wmsg::proxy {

QByteArray settingsAnswer(qint32 maxSize, const QString &uri)
{
    QByteArray answer;
    if (uri.size() <= kLongestSettingsUri) {
        QDataStream stream(&answer, QIODevice::WriteOnly);
        stream << maxSize << uri;
    }
    return answer;
}

SettingsServer::SettingsServer(QByteArray answer, QObject *parent)
    : QObject(parent), m_answer(std::move(answer))
{
    connect(&m_listener, &service::LocalListener::connected, this, &SettingsServer::answer);
}

QString SettingsServer::listen(const QString &path, mode_t mode)
{
    return m_listener.listen(path, mode);
}

void SettingsServer::answer(qintptr descriptor) const
{
    // So few bytes fit into the buffer of a fresh connection, and stay there for the reader.
    const service::Descriptor client(static_cast<int>(descriptor));
    (void)::send(client.get(), m_answer.constData(), static_cast<size_t>(m_answer.size()),
                 MSG_NOSIGNAL);
}

} // namespace wmsg::proxy

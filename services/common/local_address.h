// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <algorithm>
#include <sys/socket.h>
#include <sys/un.h>

namespace wmsg::service {

/// A path as the system wants it in order to bind or connect a local socket.
class LocalAddress {
public:
    explicit LocalAddress(const QString &path)
    {
        const QByteArray name = QFile::encodeName(path);
        m_isPossible = name.startsWith('/') && !name.contains('\0')
            && name.size() < static_cast<qsizetype>(sizeof m_address.sun_path);
        m_address.sun_family = AF_UNIX;
        if (m_isPossible) {
            std::copy(name.cbegin(), name.cend(), m_address.sun_path);
        }
    }

    /// Whether the path is absolute and short enough.
    [[nodiscard]] bool isPossible() const { return m_isPossible; }
    [[nodiscard]] const char *path() const { return m_address.sun_path; }
    [[nodiscard]] const sockaddr *get() const
    {
        return reinterpret_cast<const sockaddr *>(&m_address);
    }
    [[nodiscard]] static socklen_t size() { return sizeof(sockaddr_un); }

private:
    sockaddr_un m_address = {};
    bool m_isPossible = false;
};

} // namespace wmsg::service

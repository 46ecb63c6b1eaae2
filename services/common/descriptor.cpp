// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace wmsg::service {

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept
{
    if (this != &other) {
        close();
        m_fd = other.release();
    }
    return *this;
}

int Descriptor::release()
{
    return std::exchange(m_fd, -1);
}

bool Descriptor::close()
{
    const int fd = release();
    return fd < 0 || ::close(fd) == 0;
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool writeAll(int fd, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(fd, bytes.data(), static_cast<size_t>(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return true;
}

} // namespace wmsg::service

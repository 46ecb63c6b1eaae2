// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/device_identity.h"

#include <QtCore/QFile>

#include <sys/stat.h>

namespace wmsg::telephonyd {

DeviceIdentity DeviceIdentity::of(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat device = {};
    struct stat node = {};
    DeviceIdentity identity;
    if (::stat(name.constData(), &device) == 0 && S_ISCHR(device.st_mode)
        && ::lstat(name.constData(), &node) == 0) {
        identity.m_number = device.st_rdev;
        identity.m_node = node.st_ino;
        if (S_ISLNK(node.st_mode)) {
            constexpr qint64 kNanoseconds = 1'000'000'000;
            identity.m_linkTime = node.st_ctim.tv_sec * kNanoseconds + node.st_ctim.tv_nsec;
        }
    }
    return identity;
}

} // namespace wmsg::telephonyd

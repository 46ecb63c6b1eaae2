// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <sys/types.h>

namespace wmsg::telephonyd {

/// DeviceIdentity tells whether a path still leads to the device that it led to: a modem that was
/// unplugged and plugged in again is another one, also under the same name and number.
class DeviceIdentity {
public:
    DeviceIdentity() = default;
    [[nodiscard]] static DeviceIdentity of(const QString &path);

    /// isDevice tells that the path leads to a device for characters.
    [[nodiscard]] bool isDevice() const { return m_number != 0; }

    bool operator==(const DeviceIdentity &other) const
    {
        return m_number == other.m_number && m_node == other.m_node
            && m_linkTime == other.m_linkTime;
    }

private:
    dev_t m_number = 0;
    ino_t m_node = 0; // of the path itself, which may be a link
    qint64 m_linkTime = 0; // of a link, in nanoseconds
};

} // namespace wmsg::telephonyd

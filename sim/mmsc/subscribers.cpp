// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/subscribers.h"

#include "sim/mmsc/address.h"

namespace wmsg::sim {

void Subscribers::add(const QString &address, NotificationPath *path)
{
    m_paths.insert(addressKey(address), path);
}

NotificationPath *Subscribers::pathTo(const QString &address) const
{
    const QString key = addressKey(address);
    return key.isEmpty() ? nullptr : m_paths.value(key, m_others);
}

} // namespace wmsg::sim

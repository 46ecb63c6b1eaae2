// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/notification_path.h"

#include <QtCore/QHash>
#include <QtCore/QString>

namespace wmsg::sim {

/// Who has a phone in this network, and the way to it. The paths are others'.
class Subscribers {
public:
    /// Numbers are told apart by addressKey(), so that any way of writing one will do.
    void add(const QString &address, NotificationPath *path);
    /// Where all those live that were not added.
    void setOthers(NotificationPath *path) { m_others = path; }

    /// Null: nobody here has that address.
    [[nodiscard]] NotificationPath *pathTo(const QString &address) const;

private:
    QHash<QString, NotificationPath *> m_paths;
    NotificationPath *m_others = nullptr;
};

} // namespace wmsg::sim

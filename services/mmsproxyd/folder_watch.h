// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

#include <memory>

namespace wmsg::proxy {

/// FolderWatch tells which files leave a folder. As long as none does, nothing wakes up.
class FolderWatch : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// watch begins; it returns the problem in words, or an empty text.
    [[nodiscard]] QString watch(const QString &folder);

Q_SIGNALS:
    /// left tells that the file of this name was removed, or moved elsewhere.
    void left(const QString &name);
    /// overflowed tells that so much happened that some of it was not told.
    void overflowed();

private:
    void read();

    service::Descriptor m_file;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace wmsg::proxy

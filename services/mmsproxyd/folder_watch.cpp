// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/folder_watch.h"

#include <QtCore/QFile>

#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace wmsg::proxy {

QString FolderWatch::watch(const QString &folder)
{
    m_file = service::Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!m_file.isOpen()
        || ::inotify_add_watch(m_file.get(), QFile::encodeName(folder).constData(),
                               IN_DELETE | IN_MOVED_FROM | IN_ONLYDIR)
            < 0) {
        return folder + QLatin1String(": it cannot be watched: ") + service::systemError();
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_file.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &FolderWatch::read);
    return QString();
}

void FolderWatch::read()
{
    char bytes[16 * 1024];
    const ssize_t size = ::read(m_file.get(), bytes, sizeof bytes);
    // Events come whole; each is a head and a name that is filled up with zeros.
    for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof(inotify_event)) <= size;) {
        inotify_event event;
        memcpy(&event, bytes + at, sizeof event);
        const char *name = bytes + at + sizeof event;
        at += static_cast<ssize_t>(sizeof event + event.len);
        if (event.mask & IN_Q_OVERFLOW) {
            Q_EMIT overflowed();
        } else if (event.len > 0) {
            Q_EMIT left(QFile::decodeName(name));
        }
    }
}

} // namespace wmsg::proxy

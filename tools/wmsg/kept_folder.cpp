// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/kept_folder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

QStringList reasonsIn(const QString &folder)
{
    return QDir(folder).entryList({u"in-*.txt"_s, u"out-*.txt"_s}, QDir::Files, QDir::Name);
}

} // namespace

KeptFolder::KeptFolder(const QString &spool) : m_folder(spool + u"/kept"_s)
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &KeptFolder::look);
}

QString KeptFolder::watch()
{
    if (!QDir(m_folder).exists() || !m_watcher.addPath(m_folder)) {
        return {};
    }
    const QStringList names = reasonsIn(m_folder);
    m_known = QSet<QString>(names.begin(), names.end());
    return names.isEmpty()
        ? QString()
        : u"%1 set aside before: see %2"_s.arg(
            names.size() == 1 ? u"a message was"_s : u"%1 messages were"_s.arg(names.size()),
            m_folder);
}

void KeptFolder::look()
{
    const QStringList names = reasonsIn(m_folder);
    for (const QString &name : names) {
        if (!m_known.contains(name)) {
            Q_EMIT setAside(lineOf(name));
        }
    }
    m_known = QSet<QString>(names.begin(), names.end());
}

QString KeptFolder::lineOf(const QString &name) const
{
    constexpr qint64 kLongestReason = 400;
    const QString path = m_folder + u'/' + name;
    QFile file(path);
    const QByteArray reason =
        file.open(QIODevice::ReadOnly) ? file.read(kLongestReason) : QByteArray();
    const bool hasArrived = name.startsWith(u"in-"_s);
    return u"a message %1 was set aside: %2 (%3)"_s.arg(
        hasArrived ? u"that came"_s : u"to be sent"_s, QString::fromUtf8(reason).simplified(),
        path);
}

} // namespace wmsg::cli

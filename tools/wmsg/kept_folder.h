// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFileSystemWatcher>
#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QString>

namespace wmsg::cli {

/// What the proxy daemon sets aside because nobody can read or send it: files in a folder of its
/// spool, with a text beside them that says why.
class KeptFolder : public QObject {
    Q_OBJECT

public:
    /// The folder of the spool in which the daemon lies.
    explicit KeptFolder(const QString &spool);

    /// watch begins, and tells in a line what is there already; an empty text when nothing is, or
    /// when there is no such spool.
    [[nodiscard]] QString watch();

Q_SIGNALS:
    /// A message was set aside: what and why, in a line.
    void setAside(const QString &line);

private:
    void look();
    [[nodiscard]] QString lineOf(const QString &name) const;

    QString m_folder;
    QFileSystemWatcher m_watcher;
    QSet<QString> m_known;
};

} // namespace wmsg::cli

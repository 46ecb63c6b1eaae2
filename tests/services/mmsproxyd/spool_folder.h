// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtTest/QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/// A folder for the spool of a test, which goes with the object.
class SpoolFolder {
public:
    QString path(const QString &name = QString()) const
    {
        return m_folder.path() + "/spool" + (name.isEmpty() ? QString() : '/' + name);
    }
    /// A path beside the spool.
    QString outside(const QString &name) const { return m_folder.path() + '/' + name; }

    /// The names in a folder of the spool, in order.
    QStringList names(const QString &folder) const
    {
        return QDir(path(folder))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDir::Name);
    }
    /// The paths of the files in a folder of the spool whose names end so.
    QStringList files(const QString &folder, const QString &end) const
    {
        QStringList found;
        for (const QString &name : names(folder)) {
            if (name.endsWith(end)) {
                found.append(path(folder + '/' + name));
            }
        }
        return found;
    }
    static QByteArray read(const QString &file)
    {
        QFile opened(file);
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("not there");
    }
    static void write(const QString &file, const QByteArray &bytes)
    {
        QFile opened(file);
        QVERIFY2(opened.open(QIODevice::WriteOnly), qPrintable(file));
        QCOMPARE(opened.write(bytes), bytes.size());
    }

private:
    QTemporaryDir m_folder;
};

/// A disk on which no file can have more than so many bytes, for the life of this object.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes = 0) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { free(); }
    Q_DISABLE_COPY_MOVE(FullDisk)

    /// There is room again.
    void free()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before = {};
    void (*m_handler)(int);
};

/// A tree of files in which nothing can be changed, for the life of this object. Root may do all,
/// so for that long it is another user, who owns the tree.
class ReadOnlyTree {
public:
    explicit ReadOnlyTree(const QString &top) : m_top(top), m_user(::geteuid())
    {
        constexpr uid_t kNobody = 65534;
        const bool isRoot = m_user == 0;
        forAll([=](const char *path, bool isFolder) {
            (void)::chmod(path, isFolder ? 0500 : 0400);
            return !isRoot || ::chown(path, kNobody, kNobody) == 0;
        });
        if (isRoot && ::seteuid(kNobody) != 0) {
            qFatal("ReadOnlyTree: cannot become another user");
        }
    }
    ~ReadOnlyTree()
    {
        (void)::seteuid(m_user);
        const bool isRoot = m_user == 0;
        forAll([=](const char *path, bool isFolder) {
            (void)::chmod(path, isFolder ? 0700 : 0600);
            return !isRoot || ::chown(path, 0, 0) == 0;
        });
    }
    Q_DISABLE_COPY_MOVE(ReadOnlyTree)

private:
    template <typename Change> void forAll(Change change)
    {
        QList<QFileInfo> all{QFileInfo(m_top)};
        QDirIterator entries(m_top, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            entries.next();
            all.append(entries.fileInfo());
        }
        // The folder above has to be entered.
        (void)::chmod(qPrintable(QFileInfo(m_top).path()), 0755);
        for (const QFileInfo &one : std::as_const(all)) {
            if (!change(qPrintable(one.filePath()), one.isDir())) {
                qFatal("ReadOnlyTree: cannot change %s", qPrintable(one.filePath()));
            }
        }
    }

    QString m_top;
    uid_t m_user;
};

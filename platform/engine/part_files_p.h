// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QSet>

#include <utility>

namespace wmsg::engine {

/// A file descriptor, closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) { }
    Descriptor(Descriptor &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) { }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor() { close(); }

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    /// False with errno set when the system reports a late write error.
    bool close();

private:
    int m_fd;
};

/// The files with the bytes of the parts, one for each message that has any: `parts/<number>.part`
/// in the folder of the store. A file is written once, before its message is committed, and its
/// number is not used again. No file is removed while a process of any user reads from one.
class PartFiles {
public:
    /// Opens the folder `store`, which must be there, and its folder of files, which is made when
    /// it is not. False with errno set.
    bool open(const QByteArray &store);

    /// The path of a file.
    [[nodiscard]] QByteArray path(qint64 number) const;
    /// The numbers of all files that are there.
    [[nodiscard]] QList<qint64> numbers() const;
    /// The size of a file; -1 with errno set when it cannot be had.
    [[nodiscard]] qint64 size(qint64 number) const;
    /// The SHA-256 of a file; empty with errno set when it cannot be read.
    [[nodiscard]] QByteArray hash(qint64 number) const;

    /// Writes a file, and makes it and its name survive the loss of power. False with errno set;
    /// the file is gone then.
    bool write(qint64 number, const QList<QByteArrayView> &pieces);

    /// Removes a file whose message was not committed.
    void remove(qint64 number);

    /// Keeps all files where they are until release() is called with the same owner.
    bool hold(const void *owner);
    void release(const void *owner);

    /// Removes files that belong to no message any more, now or when nobody reads.
    void discard(const QList<qint64> &numbers);
    /// Removes all files but `known`, unless somebody reads. Must run where no writer can be
    /// between its file and its commit. It returns how many.
    int sweep(const QSet<qint64> &known);

private:
    [[nodiscard]] static QByteArray name(qint64 number);
    bool fill(int fd, const QList<QByteArrayView> &pieces);

    QByteArray m_path;
    Descriptor m_folder;
    Descriptor m_readersLock; ///< Shared as long as bodies are held.
    Descriptor m_removersLock; ///< The same file, locked alone while files are removed.
    QSet<const void *> m_owners;
    QList<qint64> m_discarded;
};

/// Locks a file alone for as long as it lives, waiting for others.
class FileLock {
public:
    explicit FileLock(const QByteArray &path);
    [[nodiscard]] bool isLocked() const { return m_isLocked; }

private:
    Descriptor m_file;
    bool m_isLocked = false;
};

} // namespace wmsg::engine

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/part_files_p.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wmsg::engine {

namespace {

constexpr char kSuffix[] = ".part";
constexpr mode_t kFileMode = 0666; // and what the mask of the process leaves of it

bool lock(int fd, int operation)
{
    int result = -1;
    do {
        result = ::flock(fd, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

Descriptor openLock(int folder, const char *name)
{
    return Descriptor(::openat(folder, name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode));
}

bool writeAll(int fd, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(fd, bytes.data(), static_cast<size_t>(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return true;
}

/// The number of a file of ours; 0 for any other name.
qint64 numberOf(const char *fileName)
{
    QByteArray digits(fileName);
    if (!digits.endsWith(kSuffix)) {
        return 0;
    }
    digits.chop(qsizetype(sizeof kSuffix) - 1);
    bool isNumber = false;
    const qint64 number = digits.toLongLong(&isNumber);
    return isNumber && QByteArray::number(number) == digits ? number : 0;
}

} // namespace

bool Descriptor::close()
{
    const int fd = std::exchange(m_fd, -1);
    return fd < 0 || ::close(fd) == 0;
}

bool PartFiles::open(const QByteArray &store)
{
    const Descriptor parent(::open(store.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent.isOpen() || (::mkdirat(parent.get(), "parts", 0777) != 0 && errno != EEXIST)) {
        return false;
    }
    m_path = store + "parts/";
    m_folder = Descriptor(::open(m_path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.isOpen()) {
        return false;
    }
    m_readersLock = openLock(parent.get(), "readers.lock");
    m_removersLock = openLock(parent.get(), "readers.lock");
    return m_readersLock.isOpen() && m_removersLock.isOpen() && ::fsync(parent.get()) == 0;
}

QByteArray PartFiles::name(qint64 number)
{
    return QByteArray::number(number) + kSuffix;
}

QByteArray PartFiles::path(qint64 number) const
{
    return m_path + name(number);
}

QList<qint64> PartFiles::numbers() const
{
    QList<qint64> found;
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(m_path.constData()), &::closedir);
    while (const dirent *entry = folder ? ::readdir(folder.get()) : nullptr) {
        if (const qint64 number = numberOf(entry->d_name)) {
            found.append(number);
        }
    }
    return found;
}

qint64 PartFiles::size(qint64 number) const
{
    struct stat state;
    const bool isThere =
        ::fstatat(m_folder.get(), name(number).constData(), &state, AT_SYMLINK_NOFOLLOW) == 0;
    return isThere ? qint64(state.st_size) : -1;
}

QByteArray PartFiles::hash(qint64 number) const
{
    QFile file(QFile::decodeName(path(number)));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result() : QByteArray();
}

bool PartFiles::write(qint64 number, const QList<QByteArrayView> &pieces)
{
    const QByteArray fileName = name(number);
    // A file of this number can only be what a killed writer left.
    ::unlinkat(m_folder.get(), fileName.constData(), 0);
    Descriptor file(::openat(m_folder.get(), fileName.constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kFileMode));
    if (!file.isOpen()) {
        return false;
    }
    if (fill(file.get(), pieces) && file.close() && ::fsync(m_folder.get()) == 0) {
        return true;
    }
    const int error = errno;
    ::unlinkat(m_folder.get(), fileName.constData(), 0);
    errno = error;
    return false;
}

bool PartFiles::fill(int fd, const QList<QByteArrayView> &pieces)
{
    return std::all_of(pieces.begin(), pieces.end(),
                       [fd](QByteArrayView piece) { return writeAll(fd, piece); })
        && ::fsync(fd) == 0;
}

void PartFiles::remove(qint64 number)
{
    ::unlinkat(m_folder.get(), name(number).constData(), 0);
}

bool PartFiles::hold(const void *owner)
{
    if (m_owners.isEmpty() && !lock(m_readersLock.get(), LOCK_SH)) {
        return false;
    }
    m_owners.insert(owner);
    return true;
}

void PartFiles::release(const void *owner)
{
    if (m_owners.remove(owner) && m_owners.isEmpty()) {
        lock(m_readersLock.get(), LOCK_UN);
        discard({});
    }
}

void PartFiles::discard(const QList<qint64> &numbers)
{
    m_discarded += numbers;
    if (m_discarded.isEmpty() || !lock(m_removersLock.get(), LOCK_EX | LOCK_NB)) {
        return; // the next removal takes them along, or the next opening
    }
    for (const qint64 number : std::as_const(m_discarded)) {
        ::unlinkat(m_folder.get(), name(number).constData(), 0);
    }
    m_discarded.clear();
    lock(m_removersLock.get(), LOCK_UN);
}

int PartFiles::sweep(const QSet<qint64> &known)
{
    if (!lock(m_removersLock.get(), LOCK_EX | LOCK_NB)) {
        return 0;
    }
    int removed = 0;
    const QList<qint64> all = numbers();
    for (const qint64 number : all) {
        if (!known.contains(number)) {
            removed += ::unlinkat(m_folder.get(), name(number).constData(), 0) == 0 ? 1 : 0;
        }
    }
    lock(m_removersLock.get(), LOCK_UN);
    return removed;
}

FileLock::FileLock(const QByteArray &path)
    : m_file(::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kFileMode)),
      m_isLocked(m_file.isOpen() && lock(m_file.get(), LOCK_EX))
{
}

} // namespace wmsg::engine

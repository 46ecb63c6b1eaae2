// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/files.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

QString kindOf(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return u"is a directory"_s;
    case S_IFIFO:
        return u"is a pipe; read it as standard input: -"_s;
    case S_IFCHR:
    case S_IFBLK:
        return u"is a device"_s;
    case S_IFSOCK:
        return u"is a socket"_s;
    default:
        return u"is no regular file"_s;
    }
}

QString tooLarge(qint64 limit)
{
    return u"is larger than %1 bytes (see --max-size)"_s.arg(limit);
}

// Reads to the end, and one byte beyond the limit at most.
QString readAll(int fd, qint64 limit, QArray<char> &bytes)
{
    constexpr int kStep = 1 << 16;
    const auto highest = static_cast<int>(std::min<qint64>(limit, INT_MAX - kStep));
    int size = 0;
    while (size <= highest) {
        if (!bytes.resize(size + kStep)) {
            return u"does not fit into memory"_s;
        }
        const ssize_t got = ::read(fd, bytes.data() + size, kStep);
        if (got < 0 && errno != EINTR) {
            return u"cannot be read: "_s + systemError();
        }
        if (got == 0) {
            bytes.truncate(size);
            return {};
        }
        size += got > 0 ? static_cast<int>(got) : 0;
    }
    return tooLarge(limit);
}

// Opens a regular file, or says why not.
QString openInput(const QByteArray &path, Descriptor &file, struct stat &state)
{
    file = Descriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen() || ::fstat(file.get(), &state) != 0) {
        return u"cannot be opened: "_s + systemError();
    }
    return S_ISREG(state.st_mode) ? QString() : kindOf(state.st_mode);
}

// The new file beside the target, removed again unless it was put in place.
class TemporaryFile {
public:
    explicit TemporaryFile(const QByteArray &target) : m_name(target + ".XXXXXX")
    {
        m_fd = Descriptor(::mkostemp(m_name.data(), O_CLOEXEC));
    }
    ~TemporaryFile()
    {
        if (m_fd.isOpen()) {
            ::unlink(m_name.constData());
        }
    }
    Q_DISABLE_COPY_MOVE(TemporaryFile)

    [[nodiscard]] bool isOpen() const { return m_fd.isOpen(); }
    [[nodiscard]] bool fill(QByteArrayView bytes, mode_t mode) const
    {
        return ::fchmod(m_fd.get(), mode) == 0 && writeAll(m_fd.get(), bytes)
            && ::fsync(m_fd.get()) == 0;
    }
    bool moveTo(const QByteArray &target)
    {
        if (::rename(m_name.constData(), target.constData()) != 0) {
            return false;
        }
        return m_fd.close();
    }

private:
    QByteArray m_name;
    Descriptor m_fd;
};

mode_t modeOfNewFiles()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

QByteArray resolved(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.constData(), nullptr),
                                                           &std::free);
    return real ? QByteArray(real.get()) : path;
}

QString cannotWrite()
{
    return u"cannot be written: "_s + systemError();
}

QString writeInPlace(const QByteArray &path, QByteArrayView bytes)
{
    Descriptor target(::open(path.constData(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    return target.isOpen() && writeAll(target.get(), bytes) && target.close() ? QString()
                                                                              : cannotWrite();
}

} // namespace

QString problemOfFile(const QByteArray &path)
{
    struct stat state;
    Descriptor file;
    return openInput(path, file, state);
}

QString readInput(const QByteArray &path, qint64 limit, QArray<char> &bytes)
{
    bytes = QArray<char>();
    if (path == "-") {
        return readAll(STDIN_FILENO, limit, bytes);
    }
    struct stat state;
    Descriptor file;
    QString problem = openInput(path, file, state);
    if (!problem.isEmpty()) {
        return problem;
    }
    return state.st_size > limit ? tooLarge(limit) : readAll(file.get(), limit, bytes);
}

QString writeOutput(const QByteArray &path, QByteArrayView bytes)
{
    if (path == "-") {
        return std::fflush(stdout) == 0 && writeAll(STDOUT_FILENO, bytes) ? QString()
                                                                          : cannotWrite();
    }
    struct stat state;
    const bool exists = ::stat(path.constData(), &state) == 0;
    if (exists && S_ISDIR(state.st_mode)) {
        return kindOf(state.st_mode);
    }
    if (exists && !S_ISREG(state.st_mode)) {
        return writeInPlace(path, bytes);
    }
    const QByteArray target = resolved(path);
    TemporaryFile file(target);
    const mode_t mode = exists ? state.st_mode & 07777 : modeOfNewFiles();
    return file.isOpen() && file.fill(bytes, mode) && file.moveTo(target) ? QString()
                                                                          : cannotWrite();
}

} // namespace wmsg::cli

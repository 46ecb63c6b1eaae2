// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/durable_file.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

constexpr QLatin1String kTemporary(".new-");
constexpr int kRandomLetters = 6;

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

QString problemOf(const QString &path, const QString &what)
{
    return path + u": "_s + what;
}

QString problemOf(const QString &path)
{
    return problemOf(path, systemError());
}

QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash > 0 ? path.left(slash) : slash == 0 ? u"/"_s : u"."_s;
}

enum class Copied { All, TooMuch, Failed };

/// Where the system cannot copy from this kind of file to that one.
Copied copyByHand(int from, int to, qint64 done, qint64 limit)
{
    constexpr qint64 kStep = 1 << 16;
    const auto piece = std::make_unique<char[]>(kStep);
    for (;;) {
        const ssize_t got = ::pread(from, piece.get(), kStep, done);
        if (got == 0) {
            return Copied::All;
        }
        if (got < 0 && errno != EINTR) {
            return Copied::Failed;
        }
        done += std::max<ssize_t>(got, 0);
        if (done > limit) {
            return Copied::TooMuch;
        }
        if (got > 0 && !writeAll(to, {piece.get(), got})) {
            return Copied::Failed;
        }
    }
}

Copied copyAll(int from, int to, qint64 limit)
{
    constexpr qint64 kStep = 1 << 20;
    off64_t position = 0;
    while (position <= limit) {
        const auto step = static_cast<size_t>(std::min(kStep, limit + 1 - position));
        const ssize_t count = ::copy_file_range(from, &position, to, nullptr, step, 0);
        if (count == 0 && position > 0) {
            return Copied::All;
        }
        // Of an empty file nothing is known: some file systems tell a size of 0 and give bytes.
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return copyByHand(from, to, position, limit);
        }
    }
    return Copied::TooMuch;
}

} // namespace

NewFile::NewFile(const QString &path)
    : m_path(path), m_name(encoded(path + kTemporary) + QByteArray(kRandomLetters, 'X'))
{
    m_file = Descriptor(::mkostemp(m_name.data(), O_CLOEXEC));
}

NewFile::~NewFile()
{
    if (m_file.isOpen()) {
        ::unlink(m_name.constData());
    }
}

QString NewFile::problem() const
{
    return problemOf(m_path);
}

QString NewFile::commit()
{
    if (::fsync(m_file.get()) != 0
        || ::rename(m_name.constData(), encoded(m_path).constData()) != 0) {
        return problem();
    }
    return m_file.close() ? syncFolder(folderOf(m_path)) : problem();
}

bool isTemporaryName(const QString &fileName)
{
    const qsizetype mark = fileName.lastIndexOf(kTemporary);
    return mark > 0 && fileName.size() == mark + kTemporary.size() + kRandomLetters;
}

QString writeDurably(const QString &path, QByteArrayView bytes)
{
    NewFile file(path);
    return file.isOpen() && writeAll(file.descriptor(), bytes) ? file.commit() : file.problem();
}

QString copyDurably(int from, const QString &to, qint64 limit)
{
    NewFile file(to);
    const Copied copied = file.isOpen() ? copyAll(from, file.descriptor(), limit) : Copied::Failed;
    switch (copied) {
    case Copied::All:
        return file.commit();
    case Copied::TooMuch:
        return problemOf(to, u"what is copied is larger than %1 bytes"_s.arg(limit));
    case Copied::Failed:
        break;
    }
    return file.problem();
}

QString linkDurably(const QString &from, const QString &to)
{
    return ::link(encoded(from).constData(), encoded(to).constData()) == 0
        ? syncFolder(folderOf(to))
        : problemOf(to);
}

QString renameDurably(const QString &from, const QString &to)
{
    if (::rename(encoded(from).constData(), encoded(to).constData()) != 0) {
        return problemOf(to);
    }
    const QString folder = folderOf(to);
    const QString problem = syncFolder(folder);
    return problem.isEmpty() && folderOf(from) != folder ? syncFolder(folderOf(from)) : problem;
}

QString removeDurably(const QString &path)
{
    if (::unlink(encoded(path).constData()) != 0) {
        return errno == ENOENT ? QString() : problemOf(path);
    }
    return syncFolder(folderOf(path));
}

QString makeFolderDurably(const QString &path)
{
    if (::mkdir(encoded(path).constData(), 0700) == 0) {
        return syncFolder(folderOf(path));
    }
    const int error = errno;
    struct stat state = {};
    if (error == EEXIST && ::stat(encoded(path).constData(), &state) == 0
        && S_ISDIR(state.st_mode)) {
        return QString();
    }
    const QString above = folderOf(path);
    if (error != ENOENT || above == path || above == u"."_s) {
        errno = error;
        return problemOf(path);
    }
    const QString problem = makeFolderDurably(above);
    return problem.isEmpty() ? makeFolderDurably(path) : problem;
}

QString syncFolder(const QString &path)
{
    const Descriptor folder(::open(encoded(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.isOpen() && ::fsync(folder.get()) == 0 ? QString() : problemOf(path);
}

} // namespace wmsg::service

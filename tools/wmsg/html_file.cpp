// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/html_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kMostWaiting = qsizetype(64) * 1024;

QString exists()
{
    return u"exists already (see --force)"_s;
}

QString cannotWrite()
{
    return u"cannot be written: "_s + systemError();
}

bool isSameFile(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

mode_t modeOfNewFiles()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Makes the new name last, as far as the file system does that.
void syncFolderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray folder = slash < 0 ? "." : path.left(slash + 1);
    const Descriptor opened(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) {
        ::fsync(opened.get());
    }
}

} // namespace

HtmlFile::HtmlFile(QByteArray path, bool replaces, QByteArray message)
    : m_path(std::move(path)), m_replaces(replaces), m_message(std::move(message))
{
}

HtmlFile::~HtmlFile()
{
    if (m_file.isOpen()) {
        ::unlink(m_temporary.constData());
    }
}

QString HtmlFile::problemOfPlace() const
{
    struct stat place;
    if (::lstat(m_path.constData(), &place) != 0) {
        return errno == ENOENT ? QString() : cannotWrite();
    }
    if (S_ISLNK(place.st_mode)) {
        return u"is a link, and nothing is written through it"_s;
    }
    if (!S_ISREG(place.st_mode)) {
        return u"exists and is no regular file"_s;
    }
    struct stat message;
    const bool isKnown = m_message == "-" ? ::fstat(STDIN_FILENO, &message) == 0
                                          : ::stat(m_message.constData(), &message) == 0;
    if (isKnown && isSameFile(place, message)) {
        return u"is the message itself"_s;
    }
    return m_replaces ? QString() : exists();
}

QString HtmlFile::open()
{
    QString problem = problemOfPlace();
    if (!problem.isEmpty()) {
        return problem;
    }
    m_temporary = m_path + ".XXXXXX";
    m_file = Descriptor(::mkostemp(m_temporary.data(), O_CLOEXEC));
    if (!m_file.isOpen()) {
        return u"cannot be made: "_s + systemError();
    }
    return ::fchmod(m_file.get(), modeOfNewFiles()) == 0 ? QString() : cannotWrite();
}

bool HtmlFile::flush()
{
    const bool isWritten = writeAll(m_file.get(), m_waiting);
    m_waiting.clear();
    return isWritten;
}

bool HtmlFile::write(QByteArrayView piece)
{
    m_waiting.append(piece.data(), piece.size());
    m_size += piece.size();
    return m_waiting.size() < kMostWaiting || flush();
}

// What came under that name meanwhile stays unless it may be replaced.
bool HtmlFile::putInPlace()
{
    const unsigned flags = m_replaces ? 0 : RENAME_NOREPLACE;
    if (::renameat2(AT_FDCWD, m_temporary.constData(), AT_FDCWD, m_path.constData(), flags) == 0) {
        return true;
    }
    if (m_replaces || errno != EINVAL) {
        return false;
    }
    // Some file systems know no such flag; a second name for the file does the same there.
    return ::link(m_temporary.constData(), m_path.constData()) == 0
        && ::unlink(m_temporary.constData()) == 0;
}

QString HtmlFile::finish()
{
    if (!flush() || ::fsync(m_file.get()) != 0) {
        return cannotWrite();
    }
    if (!putInPlace()) {
        return errno == EEXIST ? exists() : cannotWrite();
    }
    syncFolderOf(m_path);
    return m_file.close() ? QString() : cannotWrite();
}

} // namespace wmsg::cli

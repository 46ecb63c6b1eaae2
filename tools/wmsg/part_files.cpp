// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/part_files.h"

#include "tools/wmsg/report.h"
#include "tools/wmsg/text_view.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

PartFiles::PartFiles(QByteArray directory, bool replaces, Tell tell)
    : m_directory(std::move(directory)), m_replaces(replaces), m_tell(std::move(tell))
{
}

QString PartFiles::open()
{
    if (::mkdir(m_directory.constData(), 0777) != 0 && errno != EEXIST) {
        return u"cannot be made: "_s + systemError();
    }
    m_fd = Descriptor(::open(m_directory.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return m_fd.isOpen() ? QString() : u"cannot be opened: "_s + systemError();
}

QStringList PartFiles::save(const QValueList<WMMSMultipart> &parts)
{
    QStringList problems;
    for (const WMMSMultipart &part : parts) {
        if (part.subParts() && !part.subParts()->isEmpty()) {
            problems += save(*part.subParts());
        } else {
            savePart(part, problems);
        }
    }
    return problems;
}

void PartFiles::savePart(const WMMSMultipart &part, QStringList &problems)
{
    const QString fallback = u"part%1"_s.arg(++m_number);
    const QString suggested = part.getSuggestLocalFileName(u"."_s);
    const QByteArray name = m_names.take(safeFileName(suggested, fallback)).toUtf8();
    const QString shown = shownName(m_directory + '/' + name);
    QString problem = write(name, part.getData().view());
    if (problem.isEmpty()) {
        m_tell(u"wrote %1, %2"_s.arg(printable(shown), sizeInWords(part.getData().size())));
    } else {
        problems += shown + u": "_s + problem;
    }
}

QString PartFiles::write(const QByteArray &name, QByteArrayView bytes)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    Descriptor file(::openat(m_fd.get(), name.constData(), kFlags, 0666));
    if (!file.isOpen() && errno == EEXIST) {
        QString problem = makeRoom(name);
        if (!problem.isEmpty()) {
            return problem;
        }
        file = Descriptor(::openat(m_fd.get(), name.constData(), kFlags, 0666));
    }
    if (!file.isOpen()) {
        return u"cannot be made: "_s + systemError();
    }
    if (!writeAll(file.get(), bytes) || !file.close()) {
        QString problem = u"cannot be written: "_s + systemError();
        ::unlinkat(m_fd.get(), name.constData(), 0);
        return problem;
    }
    return {};
}

// Removes the file that has the name, if that is allowed and it is one.
QString PartFiles::makeRoom(const QByteArray &name) const
{
    struct stat state;
    if (::fstatat(m_fd.get(), name.constData(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? QString() : systemError();
    }
    if (S_ISLNK(state.st_mode)) {
        return u"is a link, and nothing is written through it"_s;
    }
    if (!S_ISREG(state.st_mode)) {
        return u"exists and is no regular file"_s;
    }
    if (!m_replaces) {
        return u"exists already (see --force)"_s;
    }
    return ::unlinkat(m_fd.get(), name.constData(), 0) == 0 ? QString() : systemError();
}

} // namespace wmsg::cli

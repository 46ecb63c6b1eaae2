// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/source_file.h"

#include "services/common/durable_file.h"
#include "services/common/record_fields.h"

#include <QtCore/QFile>

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

constexpr qsizetype kLongestPath = 4096;

SourceId idOf(const QByteArray &path, const struct stat &state)
{
    constexpr qint64 kSecond = 1000000000;
    return {path, static_cast<qint64>(state.st_dev), static_cast<qint64>(state.st_ino),
            static_cast<qint64>(state.st_size),
            state.st_mtim.tv_sec * kSecond + state.st_mtim.tv_nsec};
}

bool isSame(const SourceId &one, const SourceId &other)
{
    return one.device == other.device && one.inode == other.inode && one.size == other.size
        && one.changed == other.changed;
}

/// Why such a file is not taken; empty when it is.
QString problemOf(const struct stat &state, uid_t owner, qint64 maxSize)
{
    if (!S_ISREG(state.st_mode)) {
        return u"is no regular file"_s;
    }
    if (state.st_uid != owner) {
        return u"belongs to another user"_s;
    }
    if (state.st_nlink != 1) {
        return u"has more than one name"_s;
    }
    return state.st_size > maxSize
        ? u"has %1 bytes, and %2 are allowed"_s.arg(state.st_size).arg(maxSize)
        : QString();
}

} // namespace

QString SourceId::remove() const
{
    struct stat state = {};
    if (::lstat(path.constData(), &state) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? QString() : systemError();
    }
    if (!S_ISREG(state.st_mode) || !isSame(*this, idOf(path, state))) {
        return u"another file has its name by now"_s;
    }
    return removeDurably(QFile::decodeName(path));
}

QJsonObject SourceId::toJson() const
{
    return {{"path"_L1, QString::fromUtf8(path)},
            {"device"_L1, device},
            {"inode"_L1, inode},
            {"size"_L1, size},
            {"changed"_L1, changed}};
}

std::optional<SourceId> SourceId::fromJson(const QJsonObject &json)
{
    constexpr qint64 kLowest = std::numeric_limits<qint64>::min();
    RecordFields fields(json);
    SourceId id;
    QString path;
    fields.need("path"_L1);
    fields.text("path"_L1, path);
    fields.number("device"_L1, id.device, kLowest);
    fields.number("inode"_L1, id.inode, kLowest);
    fields.number("size"_L1, id.size);
    fields.number("changed"_L1, id.changed, kLowest);
    id.path = path.toUtf8();
    const bool isUsable = fields.isUsable() && path.startsWith(u'/') && !path.contains(QChar::Null);
    return isUsable ? std::optional(id) : std::nullopt;
}

SourceFile::SourceFile(const QString &path, uid_t owner, qint64 maxSize)
{
    m_id.path = QFile::encodeName(path);
    // A text that is no valid UTF-16 has no path.
    const bool isPath = path.startsWith(u'/') && path.size() <= kLongestPath
        && !path.contains(QChar::Null) && QFile::decodeName(m_id.path) == path;
    if (isPath) {
        open(owner, maxSize);
    } else {
        refuse(u"is no absolute path"_s);
    }
}

void SourceFile::open(uid_t owner, qint64 maxSize)
{
    // Looked at before it is opened, because opening a device or a pipe can do something.
    struct stat state = {};
    if (::lstat(m_id.path.constData(), &state) != 0) {
        refuseForError();
        return;
    }
    QString problem = problemOf(state, owner, maxSize);
    if (!problem.isEmpty()) {
        refuse(problem);
        return;
    }
    m_file = Descriptor(
        ::open(m_id.path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!m_file.isOpen() || ::fstat(m_file.get(), &state) != 0) {
        refuseForError();
        return;
    }
    problem = problemOf(state, owner, maxSize);
    if (!problem.isEmpty()) {
        refuse(problem);
        return;
    }
    m_id = idOf(m_id.path, state);
}

void SourceFile::refuse(const QString &problem)
{
    m_result = Result::Refused;
    m_problem = problem;
    m_file.close();
}

void SourceFile::refuseForError()
{
    const int error = errno;
    refuse(systemError());
    switch (error) {
    case EMFILE:
    case ENFILE:
    case ENOMEM:
    case EIO:
        m_result = Result::Failed;
        break;
    default:
        break;
    }
}

} // namespace wmsg::proxy

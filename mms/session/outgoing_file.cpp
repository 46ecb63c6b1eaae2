// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/outgoing_file.h"

#include "util/mms_util_common.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr unsigned short kTextPlain = 3; // the kind of name that lies in /tmp
constexpr int kNames = 65536; // the count in a name has 16 bits
constexpr mode_t kPrivate = 0600; // everybody may look into /tmp

enum class Reserved { Yes, NameTaken, Failed };

/// Creates an empty file that must not exist, not even as a link.
Reserved create(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivate);
    if (file < 0) {
        return errno == EEXIST ? Reserved::NameTaken : Reserved::Failed;
    }
    ::close(file);
    return Reserved::Yes;
}

/// Tells whether a file is a plain one of this user: what an earlier message left when it could not
/// be saved. Anybody can make files in /tmp, and nothing is written into those of others.
bool isLeftover(const QByteArray &path)
{
    struct stat state = {};
    return ::lstat(path.constData(), &state) == 0 && S_ISREG(state.st_mode)
        && state.st_uid == ::geteuid() && state.st_nlink == 1;
}

/// Reserves a name together with the one that a message is written under before it gets there.
Reserved reserve(const QByteArray &path)
{
    Reserved result = create(path);
    if (result != Reserved::Yes) {
        return result;
    }
    const QByteArray temporary = path + ".tmp";
    result = create(temporary);
    if (result == Reserved::NameTaken && isLeftover(temporary)
        && ::chmod(temporary.constData(), kPrivate) == 0) {
        return Reserved::Yes;
    }
    if (result != Reserved::Yes) {
        ::unlink(path.constData());
    }
    return result;
}

} // namespace

OutgoingFile::OutgoingFile()
{
    for (int n = 0; n < kNames; ++n) {
        const QString name = MMS_UTIL_Common::generateFileNameAtTmp(kTextPlain);
        const Reserved result = reserve(QFile::encodeName(name));
        if (result == Reserved::Yes) {
            m_path = name;
        }
        if (result != Reserved::NameTaken) {
            return;
        }
    }
}

OutgoingFile::~OutgoingFile()
{
    if (!m_path.isNull() && !m_isKept) {
        ::unlink(QFile::encodeName(m_path).constData());
    }
}

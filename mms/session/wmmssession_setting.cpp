// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/model/mms_util_tool.h"
#include "mms/session/wmmssession.h"

#include <QtCore/QByteArray>
#include <QtCore/QDataStream>

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// answer := size uri, at most 128 bytes, sent to whoever connects
//   size: int32, big-endian
//   uri:  uint32 byte length, big-endian, 0xFFFFFFFF for a null string; UTF-16, big-endian

namespace {

constexpr char kSettingsPath[] = "/tmp/extra-mmserver";
constexpr int kLongestPath = 107;
constexpr int kLongestAnswer = 128;

/// A stream socket connected to a local path; -1 when that failed.
int connectedSocket(const QString &path)
{
    const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (file < 0) {
        return -1;
    }
    const QByteArray name = path.toLocal8Bit().left(kLongestPath);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::copy(name.cbegin(), name.cend(), address.sun_path);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    int result;
    do {
        result = ::connect(file, reinterpret_cast<const sockaddr *>(&address), length);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        ::close(file);
        return -1;
    }
    ::fcntl(file, F_SETFD, FD_CLOEXEC);
    return file;
}

/// What one read gives; nothing after a failure.
QByteArray readOnce(int file)
{
    QByteArray bytes(kLongestAnswer, '\0');
    ssize_t count;
    do {
        count = ::read(file, bytes.data(), kLongestAnswer);
    } while (count < 0 && errno == EINTR);
    bytes.truncate(std::max<ssize_t>(count, 0));
    return bytes;
}

} // namespace

bool WMMSSession::getSetting(MMS_Setting_Info &info)
{
    const int file = connectedSocket(QLatin1String(kSettingsPath));
    if (file < 0) {
        logLine(4, "ErrConnectionRefused");
        return false;
    }
    const QByteArray answer = readOnce(file);
    MMS_UTIL_Tool::logOut(reinterpret_cast<const unsigned char *>(answer.constData()),
                          static_cast<unsigned int>(answer.size()));
    // Kept: an answer that is cut short is taken, with what it lacks as 0 and an empty text.
    QDataStream stream(answer);
    stream >> info.moSize >> info.svrURI;
    logLine(4, "===== get moSize:%d,svrURI:%s", info.moSize, info.svrURI);
    ::close(file);
    return true;
}

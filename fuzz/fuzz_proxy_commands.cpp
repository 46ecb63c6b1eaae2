// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is what a session sends to the proxy daemon.

#include "fuzz/fuzz_application.h"
#include "fuzz/fuzz_support.h"
#include "services/mmsproxyd/proxy_session.h"

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <cstring>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace wmsg::fuzz;
using namespace wmsg::proxy;

namespace {

constexpr qsizetype kLongestByteByByte = 256;
constexpr qsizetype kHead = 8; // the type and the length of the variable part

/// What a session was heard to say, and how that ended.
struct Heard {
    QByteArray commands; // written again, one behind the other
    bool isDropped = false; // before its peer hung up

    bool operator==(const Heard &other) const
    {
        return commands == other.commands && isDropped == other.isDropped;
    }
};

/// A command as it came: with the variable part that it has.
QByteArray bytesOfCommand(const MMS_UA_Cmd &command)
{
    const qint32 extra = command.extra() ? command.extraLen() : 0;
    require(extra <= ProxySession::kLongestText, "no command is longer than allowed");
    const qint32 head[] = {command.type(), extra};
    return QByteArray(reinterpret_cast<const char *>(head), sizeof head)
        + command.fixedPart().toByteArray() + QByteArray(command.extra(), extra);
}

Heard hear(const QByteArray &input, qsizetype step)
{
    int ends[2];
    require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0,
            "there are sockets");
    Heard heard;
    bool hasEnded = false;
    ProxySession session(1, ends[0], ::getuid());
    QObject::connect(&session, &ProxySession::command, [&](MMS_UA_Cmd &command) {
        require(!hasEnded, "nothing is heard of a session that is over");
        heard.commands += bytesOfCommand(command);
    });
    QObject::connect(&session, &ProxySession::ended, [&] {
        require(!hasEnded, "a session ends once");
        hasEnded = true;
    });
    qsizetype sent = 0;
    while (sent < input.size() && !hasEnded) {
        const auto size = static_cast<size_t>(std::min(step, input.size() - sent));
        const ssize_t count = ::send(ends[1], input.constData() + sent, size, MSG_NOSIGNAL);
        sent += std::max<ssize_t>(count, 0);
        QCoreApplication::processEvents();
    }
    // Everything is read, unless the session ends before.
    for (int unread = 1; unread > 0 && !hasEnded; ::ioctl(ends[1], SIOCOUTQ, &unread)) {
        QCoreApplication::processEvents();
    }
    for (int i = 0; i < 4; ++i) {
        QCoreApplication::processEvents(); // its end is told by the loop
    }
    heard.isDropped = hasEnded;
    ::close(ends[1]);
    while (!hasEnded) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return heard;
}

/// The input with what a length of -1 means spelled out, which is how it is written again.
bool isBeginning(const QByteArray &commands, const QByteArray &input)
{
    qsizetype at = 0;
    while (at + kHead <= commands.size() && at + kHead <= input.size()) {
        qint32 sizes[2];
        memcpy(&sizes[0], commands.constData() + at + 4, sizeof sizes[0]);
        memcpy(&sizes[1], input.constData() + at + 4, sizeof sizes[1]);
        const qsizetype rest = commands.size() - at - kHead;
        if (memcmp(commands.constData() + at, input.constData() + at, 4) != 0
            || (sizes[0] != sizes[1] && (sizes[0] != 0 || sizes[1] != -1))) {
            return false;
        }
        qint32 type = 0;
        memcpy(&type, commands.constData() + at, sizeof type);
        const qsizetype words = type == MMS_UA_CMD_SEND || type == MMS_UA_CMD_RETRIEVE ? 12 : 8;
        const qsizetype size = std::min<qsizetype>(words + sizes[0], rest);
        if (commands.mid(at + kHead, size) != input.mid(at + kHead, size)) {
            return false;
        }
        at += kHead + size;
    }
    return at == commands.size();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    needApplication();
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const Heard whole = hear(input, std::max<qsizetype>(input.size(), 1));
    require(isBeginning(whole.commands, input), "commands are heard as they were sent");
    require(hear(input, 97) == whole, "any pieces give the same commands");
    if (input.size() <= kLongestByteByByte) {
        require(hear(input, 1) == whole, "single bytes give the same commands");
    }
    return 0;
}

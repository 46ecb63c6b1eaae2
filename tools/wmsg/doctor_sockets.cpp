// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"
#include "services/common/local_address.h"
#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/doctor_words.h"
#include "tools/wmsg/text_view.h"

#include <QtCore/QDataStream>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QtEndian>

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// The sockets of the daemons, and what the settings server answers.

namespace wmsg::cli {

namespace {

using service::Descriptor;
using service::LocalAddress;

constexpr mode_t kWritableByOthers = 0022;

constexpr qsizetype kLongestAnswer = 128;
constexpr qsizetype kHeadOfAnswer = 8;
constexpr quint32 kNullText = 0xFFFFFFFF;
/// Pictures of any use do not fit into less.
constexpr qint32 kSmallLimit = 30 * 1024;

Diagnosis absent(const SocketPlace &place)
{
    const QString what = u"%1 is not there: %2 does not run, or has another socket; %3"_s.arg(
        place.path, place.daemon, place.withoutIt);
    return place.isNeeded ? Diagnosis::problem(place.check, what, startCommand(place.daemon))
                          : Diagnosis::note(place.check, what, startCommand(place.daemon));
}

Diagnosis unanswered(const SocketPlace &place, int error)
{
    switch (error) {
    case ECONNREFUSED:
        return Diagnosis::problem(
            place.check,
            u"nobody listens at %1: the file is left of a %2 that was ended hard"_s.arg(
                place.path, place.daemon),
            startCommand(place.daemon) + u"; it replaces the file"_s);
    case EAGAIN:
        return Diagnosis::problem(
            place.check,
            u"%1 has more callers than it takes: %2 hangs"_s.arg(place.path, place.daemon),
            restartCommand(place.daemon));
    default:
        return Diagnosis::problem(
            place.check, u"%1 cannot be connected to: %2"_s.arg(place.path, errorInWords(error)),
            u"ls -l "_s + place.path);
    }
}

/// Connects to a socket file that looks right.
Diagnosis listener(const SocketPlace &place, const LocalAddress &address, mode_t mode, bool isLink)
{
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), address.get(), LocalAddress::size()) != 0) {
        return unanswered(place, errno);
    }
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0
        || peer.uid != ::geteuid()) {
        return Diagnosis::problem(place.check,
                                  u"%1 is held by process %2 of %3, not by yours"_s.arg(
                                      place.path, QString::number(peer.pid), userInWords(peer.uid)),
                                  u"end that process, and then: "_s + startCommand(place.daemon));
    }
    if (isLink) {
        return Diagnosis::note(
            place.check, u"%1 is a link, and somebody listens where it leads"_s.arg(place.path),
            u"readlink "_s + place.path);
    }
    if ((mode & kWritableByOthers) != 0) {
        return Diagnosis::note(
            place.check,
            u"%1 is open to other users (mode %2); %3 turns them away all the same"_s.arg(
                place.path, modeInWords(mode), place.daemon),
            u"start it with --socket-mode 600"_s);
    }
    return Diagnosis::ok(place.check,
                         u"%1: process %2 listens"_s.arg(place.path, QString::number(peer.pid)));
}

/// The problem with a link at the place of a socket, whose state it sets to that of where it leads.
Diagnosis followed(const SocketPlace &place, const LocalAddress &address, struct stat &state)
{
    const uid_t owner = state.st_uid;
    const QString remove = u"rm %1, and then: "_s.arg(place.path) + restartCommand(place.daemon);
    if (owner != ::geteuid() && owner != 0) {
        return Diagnosis::problem(
            place.check,
            u"%1 is a link that %2 made: your messages go where that user wants them"_s.arg(
                place.path, userInWords(owner)),
            remove);
    }
    if (::stat(address.path(), &state) != 0) {
        return Diagnosis::problem(place.check, u"%1 is a link that leads nowhere"_s.arg(place.path),
                                  remove);
    }
    return Diagnosis::ok(place.check, QString());
}

/// What came of a caller who waits for an answer.
struct Answer {
    QByteArray bytes;
    bool isLate = false;
};

/// Whether these are all bytes of an answer.
bool isWhole(const QByteArray &bytes)
{
    if (bytes.size() < kHeadOfAnswer) {
        return false;
    }
    const auto length = qFromBigEndian<quint32>(bytes.constData() + sizeof(qint32));
    return length == kNullText || bytes.size() - kHeadOfAnswer >= qint64(length);
}

Answer readAnswer(int socket, QDeadlineTimer deadline)
{
    Answer answer;
    while (!isWhole(answer.bytes) && answer.bytes.size() <= kLongestAnswer) {
        pollfd ready = {socket, POLLIN, 0};
        const int count = ::poll(&ready, 1, static_cast<int>(deadline.remainingTime()));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            answer.isLate = true;
            break;
        }
        char bytes[kLongestAnswer];
        const ssize_t size = ::recv(socket, bytes, sizeof bytes, 0);
        if (size <= 0) {
            break;
        }
        answer.bytes.append(bytes, size);
    }
    return answer;
}

Diagnosis judged(const QString &check, qint32 largest, const QString &server)
{
    const QString where = u"; or mmsc = http://... in %1"_s.arg(configOf(u"wmsg-mmsproxyd"_s));
    if (largest <= 0) {
        return Diagnosis::problem(
            check, u"the largest message that may be sent has %1 bytes"_s.arg(largest),
            u"start wmsg-mmsproxyd with a --max-size of 307200, say"_s);
    }
    if (server.isEmpty()) {
        return Diagnosis::problem(check, u"no MMSC is set: nothing can be sent"_s,
                                  u"wmsg-mmsproxyd --mmsc with the URL of your carrier"_s + where);
    }
    if (const QString problem = problemOfUrl(server); !problem.isEmpty()) {
        return Diagnosis::problem(check, u"the MMSC \"%1\" %2"_s.arg(server, problem),
                                  u"wmsg-mmsproxyd --mmsc with the URL of your carrier"_s + where);
    }
    const QString what = u"messages of up to %1 are sent to %2"_s.arg(sizeInWords(largest), server);
    return largest < kSmallLimit
        ? Diagnosis::note(check, what + u"; few pictures are that small"_s,
                          u"start wmsg-mmsproxyd with a larger --max-size"_s)
        : Diagnosis::ok(check, what);
}

} // namespace

Diagnosis checkSocket(const SocketPlace &place)
{
    const LocalAddress address(place.path);
    if (!address.isPossible()) {
        return Diagnosis::problem(
            place.check,
            u"%1 is no path for a socket: it must be absolute and have at most 107 bytes"_s.arg(
                place.path),
            u"give the socket another path"_s);
    }
    struct stat state = {};
    if (::lstat(address.path(), &state) != 0) {
        return errno == ENOENT || errno == ENOTDIR ? absent(place) : unanswered(place, errno);
    }
    const bool isLink = S_ISLNK(state.st_mode);
    if (isLink) {
        Diagnosis finding = followed(place, address, state);
        if (finding.verdict != Verdict::Ok) {
            return finding;
        }
    }
    if (!S_ISSOCK(state.st_mode)) {
        return Diagnosis::problem(
            place.check,
            u"%1 is no socket, and keeps %2 from making one"_s.arg(place.path, place.daemon),
            u"move it away, and then: "_s + restartCommand(place.daemon));
    }
    if (state.st_uid != ::geteuid()) {
        return Diagnosis::problem(
            place.check,
            u"%1 belongs to %2, and you are %3: daemons let in programs of their own user alone"_s
                .arg(place.path, userInWords(state.st_uid), userInWords(::geteuid())),
            u"run wmsg as that user, or end that daemon and start your own"_s);
    }
    return listener(place, address, state.st_mode, isLink);
}

Diagnosis checkSettings(const QString &path, std::chrono::milliseconds timeout, QString &server)
{
    const QString check = u"settings"_s;
    const QString daemon = u"wmsg-mmsproxyd"_s;
    const LocalAddress address(path);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), address.get(), LocalAddress::size()) != 0) {
        return Diagnosis::problem(check, u"nobody can be asked for them at "_s + path,
                                  u"see what is said of the settings socket"_s);
    }
    const Answer answer = readAnswer(socket.get(), QDeadlineTimer(timeout));
    if (answer.isLate) {
        return Diagnosis::problem(check,
                                  u"%1 has not told them within %2 ms: %3 hangs"_s.arg(
                                      path, QString::number(timeout.count()), daemon),
                                  restartCommand(daemon));
    }
    QDataStream stream(answer.bytes);
    qint32 largest = 0;
    QString named;
    stream >> largest >> named;
    if (!isWhole(answer.bytes) || answer.bytes.size() > kLongestAnswer
        || stream.status() != QDataStream::Ok || !stream.atEnd()) {
        return Diagnosis::problem(check,
                                  u"%1 answers with %2 that make no sense"_s.arg(
                                      path, counted(answer.bytes.size(), "byte"_L1)),
                                  u"see which program that is: ss -xlp | grep "_s + path);
    }
    server = problemOfUrl(named).isEmpty() ? named : QString();
    return judged(check, largest, named);
}

} // namespace wmsg::cli

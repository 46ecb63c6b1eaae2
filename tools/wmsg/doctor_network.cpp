// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/descriptor.h"
#include "tools/wmsg/doctor_checks.h"
#include "tools/wmsg/doctor_words.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QUrl>

#include <cerrno>
#include <future>
#include <memory>
#include <thread>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

// The way to the MMSC.

namespace wmsg::cli {

namespace {

constexpr int kHttpPort = 80;
constexpr int kHttpsPort = 443;

/// What the resolver knows of a host.
struct Resolved {
    std::shared_ptr<addrinfo> addresses;
    int error = 0; ///< of getaddrinfo()
};

Resolved resolve(const QByteArray &host, const QByteArray &port)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    Resolved resolved;
    resolved.error = ::getaddrinfo(host.constData(), port.constData(), &hints, &found);
    if (resolved.error == 0) {
        resolved.addresses.reset(found, ::freeaddrinfo);
    }
    return resolved;
}

/// Asks the resolver, which has no time limit of ours. False when it has not answered in time.
bool resolveInTime(const QByteArray &host, const QByteArray &port,
                   std::chrono::milliseconds timeout, Resolved &resolved)
{
    const auto promise = std::make_shared<std::promise<Resolved>>();
    std::future<Resolved> answer = promise->get_future();
    std::thread([=] { promise->set_value(resolve(host, port)); }).detach();
    if (answer.wait_for(timeout) != std::future_status::ready) {
        return false;
    }
    resolved = answer.get();
    return true;
}

/// Connects and closes. Returns 0, or a number of errno.
int tryAddress(const addrinfo &address, QDeadlineTimer deadline)
{
    const service::Descriptor socket(
        ::socket(address.ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) {
        return errno;
    }
    if (::connect(socket.get(), address.ai_addr, address.ai_addrlen) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    pollfd ready = {socket.get(), POLLOUT, 0};
    int count = 0;
    do {
        count = ::poll(&ready, 1, static_cast<int>(deadline.remainingTime()));
    } while (count < 0 && errno == EINTR);
    int error = 0;
    socklen_t size = sizeof error;
    if (count <= 0 || ::getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
        return ETIMEDOUT;
    }
    return error;
}

/// Tries all addresses of a host until one takes the connection. Each has its share of the time, so
/// that one that swallows everything leaves some to the next.
int tryAll(const addrinfo *first, std::chrono::milliseconds timeout)
{
    int number = 0;
    for (const addrinfo *one = first; one != nullptr; one = one->ai_next) {
        ++number;
    }
    int error = EADDRNOTAVAIL;
    for (const addrinfo *one = first; one != nullptr && error != 0; one = one->ai_next) {
        error = tryAddress(*one, QDeadlineTimer(timeout / number));
    }
    return error;
}

QString bearerAdvice(const QString &host)
{
    return u"is the bearer for MMS up? Many MMSCs are known and reached through it alone: ip "
           u"route; "
           "getent hosts %1. Where the daemon has --http-proxy, check that: wmsg doctor --mmsc "
           "http://PROXY"_s.arg(host);
}

Diagnosis unresolved(const QString &check, const QString &host, int error)
{
    return Diagnosis::problem(check,
                              u"the name %1 has no address here: %2"_s.arg(
                                  host, QString::fromLocal8Bit(::gai_strerror(error))),
                              bearerAdvice(host));
}

} // namespace

QString problemOfUrl(const QString &url)
{
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid()) {
        return u"is no URL"_s;
    }
    if (parsed.scheme() != "http"_L1 && parsed.scheme() != "https"_L1) {
        return u"does not begin with http:// or https://"_s;
    }
    return parsed.host().isEmpty() ? u"names no host"_s : QString();
}

Diagnosis checkMmsc(const QString &url, std::chrono::milliseconds timeout)
{
    const QString check = u"MMSC"_s;
    const QUrl parsed(url, QUrl::StrictMode);
    const bool isSecure = parsed.scheme() == "https"_L1;
    const QString host = parsed.host(QUrl::FullyEncoded);
    const QString port = QString::number(parsed.port(isSecure ? kHttpsPort : kHttpPort));
    const QString place = u"%1 at port %2"_s.arg(host, port);
    Resolved resolved;
    if (!resolveInTime(host.toLatin1(), port.toLatin1(), timeout, resolved)) {
        return Diagnosis::problem(check,
                                  u"nobody has told an address of %1 within %2 ms"_s.arg(
                                      host, QString::number(timeout.count())),
                                  bearerAdvice(host));
    }
    if (resolved.error != 0) {
        return unresolved(check, host, resolved.error);
    }
    const int error = tryAll(resolved.addresses.get(), timeout);
    if (error == ECONNREFUSED) {
        return Diagnosis::problem(check, place + u" refuses connections"_s,
                                  u"is the port in the URL right, and does the server run?"_s);
    }
    if (error != 0) {
        return Diagnosis::problem(check,
                                  u"%1 cannot be reached: %2"_s.arg(place, errorInWords(error)),
                                  bearerAdvice(host));
    }
    const QString open = isSecure ? u"; its certificate was not looked at"_s : QString();
    return Diagnosis::ok(check, place + u" takes connections"_s + open);
}

} // namespace wmsg::cli

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/http_server.h"

#include "sim/mmsc/http_exchange.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QSocketNotifier>

#include <arpa/inet.h>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

Q_LOGGING_CATEGORY(logHttp, "wmsg.sim.mmsc.http", QtWarningMsg)

constexpr size_t kHeaderRoom = size_t(64) * 1024;
constexpr int kSmallBuffer = 4096;
constexpr int kBacklog = 128;

MHD_Result serve(void *server, MHD_Connection *connection, const char *url, const char *method,
                 const char * /*version*/, const char *bytes, size_t *size, void **state)
{
    auto *exchange = static_cast<HttpExchange *>(*state);
    if (!exchange) {
        exchange = new HttpExchange(*static_cast<HttpServer *>(server), connection, method, url);
        *state = exchange; // the library gives it back to forget()
        return exchange->begin();
    }
    return *size > 0 ? exchange->take(bytes, *size) : exchange->finish();
}

void forget(void * /*server*/, MHD_Connection * /*connection*/, void **state,
            MHD_RequestTerminationCode /*why*/)
{
    delete static_cast<HttpExchange *>(*state);
    *state = nullptr;
}

void writeLog(void * /*server*/, const char *format, va_list arguments)
{
    char line[512];
    vsnprintf(line, sizeof line, format, arguments);
    qCDebug(logHttp, "%s", QByteArray(line).trimmed().constData());
}

QString systemProblem(const QString &what)
{
    return what + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

HttpAnswer plainAnswer(int status, const QByteArray &text)
{
    HttpAnswer answer;
    answer.status = status;
    answer.contentType = QByteArrayLiteral("text/plain; charset=utf-8");
    answer.head = text;
    return answer;
}

HttpServer::HttpServer(const Settings &settings, FaultPlan &plan, Handler handler, QObject *parent)
    : QObject(parent), m_settings(settings), m_plan(plan), m_handler(std::move(handler))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &HttpServer::run);
}

HttpServer::~HttpServer()
{
    m_notifier.reset();
    if (m_daemon) {
        // The library cannot stop with connections that wait.
        for (HttpExchange *exchange : std::as_const(m_exchanges)) {
            exchange->resume();
        }
        MHD_stop_daemon(m_daemon);
    }
}

// With a small buffer little is under way that was not taken: only then a slow upload is one for
// the client too.
QString HttpServer::openSocket(int &listener)
{
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener < 0) {
        return systemProblem(u"no socket"_s);
    }
    const int yes = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (m_plan.watchesUploads()) {
        ::setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &kSmallBuffer, sizeof kSmallBuffer);
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_settings.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (::bind(listener, generic, length) != 0 || ::listen(listener, kBacklog) != 0
        || ::getsockname(listener, generic, &length) != 0) {
        QString problem =
            systemProblem(u"port %1 of 127.0.0.1 cannot be used"_s.arg(m_settings.port));
        ::close(listener);
        return problem;
    }
    m_port = ntohs(address.sin_port);
    return {};
}

QString HttpServer::listen()
{
    int listener = -1;
    QString problem = openSocket(listener);
    if (!problem.isEmpty()) {
        return problem;
    }
    m_daemon = MHD_start_daemon(
        MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG, m_port, nullptr, nullptr,
        &serve, this, MHD_OPTION_EXTERNAL_LOGGER, &writeLog, nullptr, MHD_OPTION_LISTEN_SOCKET,
        listener, MHD_OPTION_NOTIFY_COMPLETED, &forget, this, MHD_OPTION_CONNECTION_LIMIT,
        m_settings.connections, MHD_OPTION_CONNECTION_TIMEOUT, m_settings.idleSeconds,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, kHeaderRoom, MHD_OPTION_END);
    const MHD_DaemonInfo *info =
        m_daemon ? MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_EPOLL_FD) : nullptr;
    if (!info) {
        ::close(listener);
        return u"the HTTP server does not start"_s;
    }
    m_notifier = std::make_unique<QSocketNotifier>(info->epoll_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &HttpServer::run);
    return {};
}

unsigned HttpServer::connections() const
{
    const auto *info = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_CURRENT_CONNECTIONS);
    return info ? info->num_connections : 0;
}

// The library listens again after a time of too many connections only when it runs once more.
void HttpServer::run()
{
    unsigned before = 0;
    do {
        before = connections();
        MHD_run(m_daemon);
    } while (connections() < before);
    MHD_UNSIGNED_LONG_LONG milliseconds = 0;
    if (MHD_get_timeout(m_daemon, &milliseconds) == MHD_YES) {
        m_timer.start(static_cast<int>(std::min<quint64>(milliseconds, 60000)));
    } else {
        m_timer.stop();
    }
}

} // namespace wmsg::sim

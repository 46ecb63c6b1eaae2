// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/http_client.h"

#include "services/mmsproxyd/http_client_p.h"

#include <QtCore/QPointer>

namespace wmsg::proxy {

namespace {

constexpr long kKeptConnections = 4;

/// libcurl wants to be told that it is going to be used, once.
void needCurl()
{
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (initialised != CURLE_OK) {
        qFatal("libcurl cannot be used: %s", curl_easy_strerror(initialised));
    }
}

CURLM *newMulti()
{
    needCurl();
    CURLM *multi = curl_multi_init();
    if (!multi) {
        qFatal("libcurl cannot be used: there is no memory");
    }
    return multi;
}

} // namespace

HttpClient::HttpClient(const HttpSettings &settings, QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(this, settings))
{
}

HttpClient::~HttpClient() = default;

HttpTransfer *HttpClient::start(const HttpRequest &request)
{
    return d->start(request);
}

HttpClient::Private::Private(HttpClient *client, const HttpSettings &settings)
    : m_client(client), m_settings(settings), m_multi(newMulti())
{
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &Private::watchSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &Private::setTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, kKeptConnections);
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    QObject::connect(&m_soon, &QTimer::timeout, client, [this] { settle(); });
    QObject::connect(&m_timer, &QTimer::timeout, client, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
}

HttpClient::Private::~Private()
{
    qDeleteAll(std::exchange(m_transfers, {}));
    curl_multi_cleanup(m_multi);
}

HttpTransfer *HttpClient::Private::start(const HttpRequest &request)
{
    auto *transfer =
        new HttpTransfer(std::make_unique<HttpTransfer::Private>(*this, request), m_client);
    m_transfers.append(transfer);
    transfer->d->begin(transfer);
    return transfer;
}

int HttpClient::Private::watchSocket(CURL *easy, curl_socket_t socket, int what, void *self,
                                     void * /*watch*/)
{
    if (auto *transfer = HttpTransfer::Private::of(easy)) {
        transfer->setSocket(what == CURL_POLL_REMOVE ? CURL_SOCKET_BAD : socket);
    }
    static_cast<Private *>(self)->watch(socket, what);
    return 0;
}

void HttpClient::Private::watch(curl_socket_t socket, int what)
{
    Watch &sides = m_watches[socket];
    watch(sides.readable, socket, QSocketNotifier::Read, (what & CURL_POLL_IN) != 0);
    watch(sides.writable, socket, QSocketNotifier::Write, (what & CURL_POLL_OUT) != 0);
    if (what == CURL_POLL_REMOVE) {
        m_watches.erase(socket);
    }
}

void HttpClient::Private::watch(Notifier &notifier, curl_socket_t socket,
                                QSocketNotifier::Type type, bool wanted)
{
    if (!wanted) {
        notifier.reset();
    } else if (!notifier) {
        notifier.reset(new QSocketNotifier(socket, type, m_client));
        const int event = type == QSocketNotifier::Read ? CURL_CSELECT_IN : CURL_CSELECT_OUT;
        QObject::connect(notifier.get(), &QSocketNotifier::activated, m_client,
                         [this, socket, event] { act(socket, event); });
    }
}

int HttpClient::Private::setTimer(CURLM * /*multi*/, long milliseconds, void *self)
{
    QTimer &timer = static_cast<Private *>(self)->m_timer;
    if (milliseconds < 0) {
        timer.stop();
    } else {
        timer.start(std::chrono::milliseconds(milliseconds));
    }
    return 0;
}

void HttpClient::Private::act(curl_socket_t socket, int events)
{
    int running;
    curl_multi_socket_action(m_multi, socket, events, &running);
    settle();
}

void HttpClient::Private::settleSoon()
{
    m_soon.start();
}

// Whoever is told something may start, abort or destroy anything, the client too.
void HttpClient::Private::settle()
{
    int left;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg == CURLMSG_DONE) {
            HttpTransfer::Private::of(message->easy_handle)->close(message->data.result);
        }
    }
    const QPointer<HttpClient> client(m_client);
    const QList<QPointer<HttpTransfer>> transfers(m_transfers.cbegin(), m_transfers.cend());
    for (const auto &transfer : transfers) {
        if (client && transfer) {
            transfer->d->tell();
        }
    }
}

} // namespace wmsg::proxy

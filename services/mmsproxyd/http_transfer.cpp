// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/http_client_p.h"

#include <QtCore/QPointer>

#include <algorithm>

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace wmsg::proxy {

namespace {

constexpr qint64 kLargestHeader = 65536; // all lines of all headers of an answer together

HttpOutcome failure(HttpOutcome::Kind kind, const QString &text)
{
    HttpOutcome outcome;
    outcome.kind = kind;
    outcome.text = text;
    return outcome;
}

} // namespace

HttpTransfer::HttpTransfer(std::unique_ptr<Private> half, QObject *parent)
    : QObject(parent), d(std::move(half))
{
}

HttpTransfer::~HttpTransfer() = default;

void HttpTransfer::pause()
{
    d->pause();
}

void HttpTransfer::resume()
{
    d->resume();
}

void HttpTransfer::abort()
{
    d->abort();
}

bool HttpTransfer::isPaused() const
{
    return d->isPaused();
}

HttpTransfer::Private::Private(HttpClient::Private &client, const HttpRequest &request)
    : m_client(client), m_request(request)
{
    m_stallTimer.setSingleShot(true);
}

HttpTransfer::Private::~Private()
{
    if (m_easy) {
        curl_multi_remove_handle(m_client.multi(), m_easy.get());
    }
}

HttpTransfer::Private *HttpTransfer::Private::of(CURL *easy)
{
    void *self = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &self);
    return static_cast<Private *>(self);
}

void HttpTransfer::Private::begin(HttpTransfer *transfer)
{
    m_transfer = transfer;
    QObject::connect(&m_stallTimer, &QTimer::timeout, transfer, [this] { checkForStall(); });
    const QByteArray url = encodedUrl();
    if (url.isEmpty()) {
        end(failure(HttpOutcome::Kind::Impossible, QStringLiteral("no URL of http or https")));
    } else if (!openFiles() || !setUp(url)) {
        end(failure(HttpOutcome::Kind::LocalFailure, m_localProblem));
    }
    if (m_outcome) {
        m_client.settleSoon();
    }
}

size_t HttpTransfer::Private::giveBody(char *out, size_t size, size_t count, void *self)
{
    return static_cast<Private *>(self)->giveBody(out, size * count);
}

size_t HttpTransfer::Private::giveBody(char *out, size_t room)
{
    if (m_isPaused) {
        return CURL_READFUNC_PAUSE;
    }
    const size_t wanted = std::min(room, static_cast<size_t>(m_bodySize - m_bodyGiven));
    if (!m_bodyFile.isOpen()) {
        std::copy_n(m_request.body.constData() + m_bodyGiven, wanted, out);
        m_bodyGiven += static_cast<qint64>(wanted);
        return wanted;
    }
    const ssize_t got = ::pread(m_bodyFile.get(), out, wanted, m_bodyGiven);
    if (got < 0 || (got == 0 && wanted > 0)) {
        noteProblem(m_request.bodyFile,
                    got < 0 ? service::systemError() : QStringLiteral("has become shorter"));
        return CURL_READFUNC_ABORT;
    }
    m_bodyGiven += got;
    return static_cast<size_t>(got);
}

// A connection that was kept may turn out to be dead; the body then begins again on another one.
int HttpTransfer::Private::seekBody(void *self, curl_off_t offset, int origin)
{
    if (origin != SEEK_SET) {
        return CURL_SEEKFUNC_CANTSEEK;
    }
    static_cast<Private *>(self)->m_bodyGiven = offset;
    return CURL_SEEKFUNC_OK;
}

size_t HttpTransfer::Private::takeAnswer(char *bytes, size_t size, size_t count, void *self)
{
    return static_cast<Private *>(self)->takeAnswer(bytes, size * count);
}

size_t HttpTransfer::Private::takeAnswer(const char *bytes, size_t size)
{
    if (m_isPaused) {
        return CURL_WRITEFUNC_PAUSE;
    }
    noteMove();
    const auto length = static_cast<qsizetype>(size);
    if (length > m_request.answerLimit - m_answerSize) {
        m_isTooLarge = true;
        return 0;
    }
    m_answerSize += length;
    if (!m_answerFile.isOpen()) {
        m_answer.append(bytes, length);
    } else if (!service::writeAll(m_answerFile.get(), {bytes, length})) {
        noteProblem(m_request.answerFile, service::systemError());
        return 0;
    }
    return size;
}

size_t HttpTransfer::Private::takeHeader(char * /*bytes*/, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<Private *>(self);
    transfer->noteMove();
    transfer->m_headerSize += static_cast<qint64>(size * count);
    return transfer->m_headerSize <= kLargestHeader ? size * count : 0;
}

int HttpTransfer::Private::noteProgress(void *self, curl_off_t downTotal, curl_off_t down,
                                        curl_off_t /*upTotal*/, curl_off_t up)
{
    auto *transfer = static_cast<Private *>(self);
    const bool sends = transfer->m_request.method == HttpRequest::Method::Post;
    const Progress now = sends ? Progress{up, transfer->m_bodySize} : Progress{down, downTotal};
    if (now.done != transfer->m_progress.done) {
        transfer->noteMove();
    }
    transfer->m_progress = now;
    return 0;
}

int HttpTransfer::Private::noteConnected(void *self, char * /*ourAddress*/, char * /*theirAddress*/,
                                         int /*ourPort*/, int /*theirPort*/)
{
    auto *transfer = static_cast<Private *>(self);
    transfer->m_isConnected = true;
    transfer->noteMove();
    transfer->startStallTimer(transfer->m_client.settings().stallTimeout);
    return CURL_PREREQFUNC_OK;
}

/// What the system has taken counts as sent: it must not take much more than the wire does.
int HttpTransfer::Private::makeBufferSmall(void * /*self*/, curl_socket_t socket,
                                           curlsocktype /*purpose*/)
{
    const int size = kSendBuffer;
    ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    return CURL_SOCKOPT_OK;
}

void HttpTransfer::Private::noteMove()
{
    m_sinceMove.start();
    m_queuedAtMove = queuedBytes();
}

void HttpTransfer::Private::startStallTimer(std::chrono::milliseconds patience)
{
    if (m_isConnected && !m_isPaused) {
        m_stallTimer.start(patience);
    }
}

/// On a very slow line the system takes nothing from us for a long time while it still sends.
void HttpTransfer::Private::checkForStall()
{
    const auto patience = m_client.settings().stallTimeout;
    const std::chrono::milliseconds still(m_sinceMove.elapsed());
    if (still < patience) {
        startStallTimer(patience - still);
    } else if (queuedBytes() != m_queuedAtMove) {
        noteMove();
        startStallTimer(patience);
    } else {
        end(failure(HttpOutcome::Kind::TimedOut,
                    QStringLiteral("nothing moved for %1 seconds")
                        .arg(static_cast<double>(patience.count()) / 1000)));
        m_client.settle();
    }
}

/// How many bytes the system has taken that the peer has not.
int HttpTransfer::Private::queuedBytes() const
{
    int queued = 0;
    if (m_socket != CURL_SOCKET_BAD) {
        ::ioctl(m_socket, SIOCOUTQ, &queued);
    }
    return queued;
}

void HttpTransfer::Private::noteProblem(const QString &path, const QString &problem)
{
    m_localProblem = path + QLatin1String(": ") + problem;
}

void HttpTransfer::Private::pause()
{
    if (m_isPaused) {
        return;
    }
    m_isPaused = true;
    m_stallTimer.stop();
    if (m_easy) {
        curl_easy_pause(m_easy.get(), CURLPAUSE_ALL);
    }
}

void HttpTransfer::Private::resume()
{
    if (!m_isPaused) {
        return;
    }
    m_isPaused = false;
    if (m_easy) {
        noteMove();
        startStallTimer(m_client.settings().stallTimeout);
        curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
    }
    m_client.settleSoon();
}

void HttpTransfer::Private::abort()
{
    m_isPaused = false;
    end(failure(HttpOutcome::Kind::Aborted, QStringLiteral("aborted")));
    m_client.settleSoon();
}

void HttpTransfer::Private::close(CURLcode result)
{
    end(outcomeOf(result));
}

void HttpTransfer::Private::end(const HttpOutcome &outcome)
{
    if (m_outcome) {
        return;
    }
    m_outcome = outcome;
    m_stallTimer.stop();
    if (m_easy) {
        curl_multi_remove_handle(m_client.multi(), m_easy.get());
        m_easy.reset();
    }
    m_bodyFile.close();
    if (!m_answerFile.close() && outcome.kind == HttpOutcome::Kind::Answered) {
        noteProblem(m_request.answerFile, service::systemError());
        m_outcome = failure(HttpOutcome::Kind::LocalFailure, m_localProblem);
    }
}

void HttpTransfer::Private::tell()
{
    if (m_isPaused || m_isTold) {
        return;
    }
    const QPointer<HttpTransfer> transfer(m_transfer);
    if (m_progress != m_toldProgress) {
        m_toldProgress = m_progress;
        Q_EMIT transfer->progress(m_progress.done, m_progress.total);
    }
    if (transfer && m_outcome && !m_isPaused && !m_isTold) {
        m_isTold = true;
        m_client.forget(m_transfer);
        m_transfer->deleteLater();
        const HttpOutcome outcome = *m_outcome;
        Q_EMIT m_transfer->finished(outcome);
    }
}

} // namespace wmsg::proxy

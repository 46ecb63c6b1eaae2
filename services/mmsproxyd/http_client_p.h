// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/descriptor.h"
#include "services/mmsproxyd/http_client.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QList>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <unordered_map>

/// The two halves behind http_client.h. libcurl calls back into them from inside its own functions,
/// in which it must not be called again: the callbacks only take notes, and what is new is told
/// when libcurl has returned.

namespace wmsg::proxy {

/// What may lie between us and the wire, in bytes.
inline constexpr int kSendBuffer = 16384;

struct CurlCleanup {
    void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};

/// A notifier is often done with while its own signal is being sent.
struct NotifierCleanup {
    void operator()(QSocketNotifier *notifier) const
    {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
};

/// The client: libcurl's sockets and its one timer in the event loop.
class HttpClient::Private {
public:
    Private(HttpClient *client, const HttpSettings &settings);
    ~Private();
    Q_DISABLE_COPY_MOVE(Private)

    HttpTransfer *start(const HttpRequest &request);
    /// Takes the transfers that have ended out of libcurl, and tells everybody what is new.
    void settle();
    /// The same from the event loop.
    void settleSoon();

    [[nodiscard]] const HttpSettings &settings() const { return m_settings; }
    [[nodiscard]] CURLM *multi() const { return m_multi; }
    /// Forgets a transfer that has told its end.
    void forget(HttpTransfer *transfer) { m_transfers.removeOne(transfer); }

private:
    using Notifier = std::unique_ptr<QSocketNotifier, NotifierCleanup>;

    /// What wakes up for one socket.
    struct Watch {
        Notifier readable;
        Notifier writable;
    };

    static int watchSocket(CURL *easy, curl_socket_t socket, int what, void *self, void *watch);
    static int setTimer(CURLM *multi, long milliseconds, void *self);
    void watch(curl_socket_t socket, int what);
    void watch(Notifier &notifier, curl_socket_t socket, QSocketNotifier::Type type, bool wanted);
    void act(curl_socket_t socket, int events);

    HttpClient *m_client;
    HttpSettings m_settings;
    CURLM *m_multi;
    QTimer m_timer; ///< libcurl's.
    QTimer m_soon; ///< There is something to settle.
    std::unordered_map<curl_socket_t, Watch> m_watches;
    QList<HttpTransfer *> m_transfers;
};

/// The transfer: the files, the handle of libcurl, and what is still to be told.
class HttpTransfer::Private {
public:
    Private(HttpClient::Private &client, const HttpRequest &request);
    ~Private();
    Q_DISABLE_COPY_MOVE(Private)

    /// Begins, or notes why it cannot.
    void begin(HttpTransfer *transfer);
    /// libcurl has done with it.
    void close(CURLcode result);
    /// Takes it from libcurl and notes how it ended.
    void end(const HttpOutcome &outcome);
    /// Tells what is new, unless it is paused. The transfer may be gone afterwards.
    void tell();

    void pause();
    void resume();
    void abort();
    [[nodiscard]] bool isPaused() const { return m_isPaused; }

    /// The transfer of a handle; null for one that libcurl made for itself.
    static Private *of(CURL *easy);
    /// Notes the socket that this transfer waits for.
    void setSocket(curl_socket_t socket) { m_socket = socket; }

private:
    static size_t giveBody(char *out, size_t size, size_t count, void *self);
    static int seekBody(void *self, curl_off_t offset, int origin);
    static size_t takeAnswer(char *bytes, size_t size, size_t count, void *self);
    static size_t takeHeader(char *bytes, size_t size, size_t count, void *self);
    static int noteProgress(void *self, curl_off_t downTotal, curl_off_t down, curl_off_t upTotal,
                            curl_off_t up);
    static int noteConnected(void *self, char *, char *, int, int);
    static int makeBufferSmall(void *self, curl_socket_t socket, curlsocktype purpose);

    size_t giveBody(char *out, size_t room);
    size_t takeAnswer(const char *bytes, size_t size);
    [[nodiscard]] QByteArray encodedUrl() const;
    bool openFiles();
    bool setUp(const QByteArray &url);
    void setUpRequest();
    void setUpConnection();
    void setUpCallbacks();
    void addHeader(const char *name, const QByteArray &value);
    void addHeaderLine(const QByteArray &line);
    template <typename Value> void set(CURLoption option, Value value);

    void noteMove();
    void startStallTimer(std::chrono::milliseconds patience);
    void checkForStall();
    [[nodiscard]] int queuedBytes() const;
    void noteProblem(const QString &path, const QString &problem);

    [[nodiscard]] HttpOutcome outcomeOf(CURLcode result) const;
    [[nodiscard]] HttpOutcome::Kind kindOf(CURLcode result) const;
    [[nodiscard]] QString textOf(HttpOutcome::Kind kind, CURLcode result) const;
    void describeAnswer(HttpOutcome &outcome) const;
    [[nodiscard]] int httpStatus() const;

    HttpClient::Private &m_client;
    HttpRequest m_request;
    HttpTransfer *m_transfer = nullptr;

    std::unique_ptr<CURL, CurlCleanup> m_easy;
    std::unique_ptr<curl_slist, CurlCleanup> m_headers;
    curl_socket_t m_socket = CURL_SOCKET_BAD;
    char m_error[CURL_ERROR_SIZE] = {};

    service::Descriptor m_bodyFile;
    service::Descriptor m_answerFile;
    qint64 m_bodySize = 0;
    qint64 m_bodyGiven = 0;
    QByteArray m_answer;
    qint64 m_answerSize = 0;
    qint64 m_headerSize = 0;
    bool m_isTooLarge = false;
    QString m_localProblem;

    struct Progress {
        qint64 done = 0;
        qint64 total = 0;
        bool operator!=(const Progress &other) const
        {
            return done != other.done || total != other.total;
        }
    };
    Progress m_progress;
    Progress m_toldProgress;
    std::optional<HttpOutcome> m_outcome;
    bool m_isPaused = false;
    bool m_isTold = false;

    bool m_isConnected = false;
    QTimer m_stallTimer;
    QElapsedTimer m_sinceMove;
    int m_queuedAtMove = 0; ///< Bytes on the way when something moved last.
};

} // namespace wmsg::proxy

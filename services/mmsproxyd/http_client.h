// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <chrono>
#include <memory>

/// HTTP with an MMSC: requests whose bodies are read from files, and answers that are written to
/// files, so that a message of any size takes the same few kilobytes of memory.
///
/// Everything runs on the thread of the event loop. Nothing is told from inside a call: all signals
/// come from the loop. While no transfer runs, and while one is paused, nothing wakes up.
///
/// Redirects are not followed, what an answer is compressed with is not asked for, and neither the
/// environment nor a file of the user's says anything about proxies or passwords. The program is to
/// ignore SIGPIPE: a connection through TLS may raise it.

namespace wmsg::proxy {

/// HttpSettings is what all requests of a client have in common.
struct HttpSettings {
    /// The URL of an HTTP proxy ("http://10.0.0.1:8080"), or nothing. A proxy resolves names.
    QString proxy;
    /// What to bind to: a name or an address, or "if!wwan0" and "host!10.1.2.3", which are taken as
    /// nothing else. Empty: what the system chooses.
    QString interfaceName;
    QString userAgent;
    /// Where the profile of this device is found; sent as x-wap-profile unless it is empty.
    QString profileUrl;
    /// How long a connection may take to come about, the look-up of the name and TLS included.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(30);
    /// How long a transfer may stand still, in either direction, once it is connected. The time
    /// that it is paused does not count.
    std::chrono::milliseconds stallTimeout = std::chrono::seconds(60);
    /// A file with the certificates of the authorities that are believed about https, in PEM.
    /// Empty: those that the system believes.
    QString authorities = {};
};

/// HttpRequest is one request: a GET, or a POST with a body from memory or from a file.
struct HttpRequest {
    enum class Method { Get, Post };

    static constexpr qint64 kSmallAnswer = 65536;

    Method method = Method::Get;
    /// http or https.
    QString url;
    /// The body of a POST, unless there is a file.
    QByteArray body;
    /// The path of a regular file that is the body of a POST. It is opened when the request starts
    /// and must keep its size until the end.
    QString bodyFile;
    QByteArray contentType = QByteArrayLiteral("application/vnd.wap.mms-message");
    /// Where the body of the answer goes, whatever the status of the answer; the file is made, or
    /// emptied, when the request starts, readable by its owner alone, and no link is followed. It
    /// stays after a failure, and it is not synced. Empty: the answer is kept in memory.
    QString answerFile;
    /// How many bytes an answer may have. One that announces more is not read at all.
    qint64 answerLimit = kSmallAnswer;
};

/// HttpOutcome is how a request ended.
struct HttpOutcome {
    enum class Kind {
        Answered, ///< A whole answer came, whatever its status.
        Impossible, ///< No such request can be made: a URL that is none, or not http or https.
        Unreachable, ///< No connection: name, interface, route, refusal, or no trust in the peer.
        TimedOut, ///< The connection, or the transfer, took too long.
        Cut, ///< The connection ended too early, or what came is no HTTP.
        TooLarge, ///< The answer is larger than allowed.
        LocalFailure, ///< A file could not be read or written.
        Aborted, ///< As abort() wanted it.
    };

    Kind kind = Kind::Answered;
    /// The status of the answer; 0 unless Answered.
    int httpStatus = 0;
    /// The answer, when no file was wanted; and its media type as the peer gave it.
    QByteArray body;
    QByteArray contentType;
    /// Where the peer sends us instead, with a status of 3xx.
    QByteArray location;
    /// How many bytes the body of the answer has.
    qint64 answerSize = 0;
    /// One line for the log: what went wrong, or the status. It names hosts and files
    /// of ours, never the path of a URL.
    QString text;

    /// isSuccess tells whether the answer came with status 200.
    [[nodiscard]] bool isSuccess() const { return kind == Kind::Answered && httpStatus == 200; }
    /// mayRetry tells whether the same request may end better at another time: failures of the
    /// network and of the disk, and the statuses 408, 429 and 5xx.
    [[nodiscard]] bool mayRetry() const;
};

/// HttpTransfer is a request under way. It belongs to its client, and deletes itself once it has
/// told how it ended: keep a QPointer to it, or nothing behind finished().
class HttpTransfer : public QObject {
    Q_OBJECT

public:
    ~HttpTransfer() override;

    /// pause holds the transfer, both ways, for as long as it takes. A transfer that is paused
    /// tells nothing, not even its end: that waits for resume(). What the system has already taken
    /// still leaves, at most 16 KB or so.
    void pause();
    /// resume lets a paused transfer go on. The peer may have hung up meanwhile; that ends as Cut.
    void resume();
    [[nodiscard]] bool isPaused() const;
    /// abort closes the connection at once; finished() follows, Aborted, unless it was about to
    /// come. It works on a paused transfer too.
    void abort();

Q_SIGNALS:
    /// progress tells how many bytes of the body have gone out (POST) or come in (GET), and how
    /// many there are; 0 when the peer does not say. What was sent lies with the peer, but for some
    /// 16 KB on the way. It comes as often as the system takes or gives a piece.
    void progress(qint64 done, qint64 total);
    /// finished tells the end, once.
    void finished(const wmsg::proxy::HttpOutcome &outcome);

private:
    friend class HttpClient;
    class Private;

    HttpTransfer(std::unique_ptr<Private> half, QObject *parent);

    std::unique_ptr<Private> d;
};

/// HttpClient makes requests. Any number may run at a time; connections are kept and used again.
class HttpClient : public QObject {
    Q_OBJECT

public:
    explicit HttpClient(const HttpSettings &settings, QObject *parent = nullptr);
    /// ~HttpClient drops the transfers that run; they tell nothing more.
    ~HttpClient() override;

    /// start begins a request and returns its transfer, never null. One that cannot even begin
    /// tells so by finished().
    HttpTransfer *start(const HttpRequest &request);

private:
    friend class HttpTransfer;
    class Private;

    std::unique_ptr<Private> d;
};

} // namespace wmsg::proxy

Q_DECLARE_METATYPE(wmsg::proxy::HttpOutcome)

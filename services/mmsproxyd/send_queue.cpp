// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/send_queue.h"

#include "services/common/durable_file.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/outgoing_pdu.h"
#include "services/mmsproxyd/progress_gate.h"
#include "services/mmsproxyd/send_record.h"

#include <QtCore/QDateTime>
#include <QtCore/QLoggingCategory>
#include <QtCore/QPointer>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kSends, "wmsg.sends", QtInfoMsg)

constexpr auto kOut = Spool::Box::Out;
constexpr qint64 kHeaderRoom = 16LL * 1024; // what a mail file has beside the content of a message

// What a request ends with, beside the response status of the MMSC. On the wire: never renumber.
constexpr qint32 kSent = 0;
constexpr qint32 kRefused = 15;
constexpr qint32 kFailed = 19;

QString freshTransactionId()
{
    return u"W%1"_s.arg(QRandomGenerator::system()->generate64(), 16, 16, QChar(u'0'));
}

void logProblem(MessageId id, const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(kSends, "message %llu: %ls", id, qUtf16Printable(problem));
    }
}

/// An answer that is too large is, whatever it was, no confirmation.
bool mayPass(const HttpOutcome &outcome)
{
    return outcome.mayRetry() || outcome.kind == HttpOutcome::Kind::TooLarge;
}

} // namespace

/// A message that is to be sent.
struct Outgoing {
    explicit Outgoing(MessageId number) : id(number) { }
    ~Outgoing() { drop(); }
    Q_DISABLE_COPY_MOVE(Outgoing)

    [[nodiscard]] bool isRunning() const { return transfer && !isPaused; }
    /// Ends the transfer without a word.
    void drop()
    {
        if (transfer) {
            transfer->disconnect();
            transfer->abort();
            transfer = nullptr;
        }
    }

    MessageId id;
    SendRecord record;
    SessionId session = 0; // 0: nobody is told
    qint32 requestId = 0;
    QString uri;
    bool isPaused = false;
    bool wasPaused = false; // while the transfer ran: the peer may have lost patience
    QPointer<HttpTransfer> transfer;
    ProgressGate gate;
};

SendQueue::SendQueue(Spool &spool, HttpClient &http, SendSettings settings, QObject *parent)
    : QObject(parent), m_spool(spool), m_http(http), m_settings(std::move(settings))
{
    connect(&m_alarm, &service::Alarm::rang, this, &SendQueue::postNext);
}

SendQueue::~SendQueue() = default;

void SendQueue::start()
{
    for (const Spool::Stored &stored : m_spool.restore(kOut)) {
        restore(stored);
    }
    proceed();
}

void SendQueue::restore(const Spool::Stored &stored)
{
    QString reason;
    const auto record = SendRecord::fromJson(stored.record, reason);
    const bool hasFile = m_spool.has(kOut, stored.id, Spool::Part::Mail)
        || m_spool.has(kOut, stored.id, Spool::Part::Pdu);
    if (!record || !hasFile) {
        m_spool.setAside(kOut, stored.id, record ? u"the message has lost its file"_s : reason);
        return;
    }
    auto message = std::make_unique<Outgoing>(stored.id);
    message->record = *record;
    qCInfo(kSends, "message %llu is taken up again", stored.id);
    removeSource(*message);
    m_messages[stored.id] = std::move(message);
}

void SendQueue::take(SessionId session, qint32 requestId, const QString &path, uid_t peer)
{
    if (knows(session, requestId)) {
        qCWarning(kSends, "request %d of session %llu is in use", requestId, session);
        Q_EMIT finished(session, requestId, path, kRefused);
        return;
    }
    auto taken = std::make_unique<Outgoing>(m_spool.nextId());
    Outgoing &message = *taken;
    message.session = session;
    message.requestId = requestId;
    message.uri = path;
    const qint32 status = receive(message, path, peer);
    if (status != kSent) {
        Q_EMIT finished(session, requestId, path, status);
        return;
    }
    m_messages[message.id] = std::move(taken);
    (void)prepare(message); // tells of a message that cannot be sent before its turn
    proceed();
}

/// Takes a file into the spool. Whatever goes wrong leaves it where it is.
qint32 SendQueue::receive(Outgoing &message, const QString &path, uid_t peer)
{
    if (m_settings.mmsc.isEmpty()) {
        qCWarning(kSends, "a message is refused: no MMSC is configured");
        return kFailed;
    }
    const qint64 limit = m_settings.maxSize + kHeaderRoom;
    const SourceFile source(path, peer, limit);
    if (source.result() != SourceFile::Result::Opened) {
        qCWarning(kSends, "a message is refused: %ls: %ls", qUtf16Printable(path),
                  qUtf16Printable(source.problem()));
        return source.result() == SourceFile::Result::Refused ? kRefused : kFailed;
    }
    message.record.transactionId = freshTransactionId();
    message.record.taken = currentTime();
    message.record.source = source.id();
    QString problem =
        copyDurably(source.descriptor(), m_spool.path(kOut, message.id, Spool::Part::Mail), limit);
    problem =
        problem.isEmpty() ? m_spool.write(kOut, message.id, message.record.toJson()) : problem;
    if (!problem.isEmpty()) {
        logProblem(message.id, problem);
        logProblem(message.id, m_spool.remove(kOut, message.id));
        return kFailed;
    }
    qCInfo(kSends, "message %llu is taken over", message.id);
    removeSource(message);
    return kSent;
}

/// Once the message is in the spool its file goes; at the start too, when that was cut off.
void SendQueue::removeSource(Outgoing &message)
{
    if (message.record.source) {
        logProblem(message.id, message.record.source->remove());
        message.record.source.reset();
    }
}

/// Makes the PDU of a message, unless there is one. False: the message has come to its end, or has
/// to wait.
bool SendQueue::prepare(Outgoing &message)
{
    const QString mail = m_spool.path(kOut, message.id, Spool::Part::Mail);
    const bool isMade = m_spool.has(kOut, message.id, Spool::Part::Pdu);
    const OutgoingPdu made = isMade
        ? OutgoingPdu()
        : writeSendRequest(mail, m_spool.path(kOut, message.id, Spool::Part::Pdu),
                           message.record.transactionId,
                           QDateTime::fromMSecsSinceEpoch(message.record.taken, Qt::UTC));
    switch (made.result) {
    case OutgoingPdu::Result::Written:
        logProblem(message.id, removeDurably(mail));
        return true;
    case OutgoingPdu::Result::Refused:
        logProblem(message.id, m_spool.keep(kOut, message.id, made.text));
        end(message, kFailed);
        return false;
    case OutgoingPdu::Result::Failed:
        break;
    }
    failed(message, kFailed, made.text);
    return false;
}

bool SendQueue::abort(SessionId session, qint32 requestId)
{
    Outgoing *message = find(session, requestId);
    if (message) {
        qCInfo(kSends, "message %llu is aborted", message->id);
        end(*message, kFailed);
    }
    return message != nullptr;
}

bool SendQueue::pause(SessionId session, qint32 requestId)
{
    Outgoing *message = find(session, requestId);
    if (message && !message->isPaused) {
        message->isPaused = true;
        if (message->transfer) {
            message->wasPaused = true;
            message->transfer->pause();
        }
        proceed(); // others may pass
    }
    return message != nullptr;
}

bool SendQueue::resume(SessionId session, qint32 requestId)
{
    Outgoing *message = find(session, requestId);
    if (message) {
        resume(*message);
    }
    return message != nullptr;
}

void SendQueue::resume(Outgoing &message)
{
    if (!message.isPaused) {
        return;
    }
    message.isPaused = false;
    if (message.transfer) {
        message.transfer->resume();
    }
    proceed();
}

bool SendQueue::knows(SessionId session, qint32 requestId) const
{
    return find(session, requestId) != nullptr;
}

void SendQueue::forget(SessionId session)
{
    for (const auto &[id, message] : m_messages) {
        if (message->session == session) {
            message->session = 0;
            resume(*message);
        }
    }
}

void SendQueue::proceed()
{
    m_alarm.start(RetrySchedule::Pause(0));
}

/// Starts what is due and has room, and sets the alarm for what is not due.
void SendQueue::postNext()
{
    if (m_settings.mmsc.isEmpty()) {
        return;
    }
    const auto running = std::count_if(m_messages.begin(), m_messages.end(),
                                       [](const auto &one) { return one.second->isRunning(); });
    const qint64 now = currentTime();
    std::optional<RetrySchedule::Pause> earliest;
    for (const auto &[id, message] : m_messages) {
        if (message->isPaused || message->transfer) {
            continue;
        }
        const SendRecord &record = message->record;
        const auto pause = m_settings.schedule.remaining(record.nextTry, now, record.attempts);
        if (pause.count() > 0) {
            earliest = std::min(earliest.value_or(pause), pause);
        } else if (running < m_settings.transfersAtOnce) {
            proceed(); // for the others
            if (prepare(*message)) {
                post(*message);
            }
            return;
        }
    }
    if (earliest) {
        m_alarm.start(*earliest);
    }
}

void SendQueue::post(Outgoing &message)
{
    HttpRequest request;
    request.method = HttpRequest::Method::Post;
    request.url = m_settings.mmsc;
    request.bodyFile = m_spool.path(kOut, message.id, Spool::Part::Pdu);
    message.wasPaused = false;
    message.transfer = m_http.start(request);
    const MessageId id = message.id;
    connect(message.transfer, &HttpTransfer::progress, this,
            [this, id](qint64 done, qint64 total) { tellProgress(id, done, total); });
    connect(message.transfer, &HttpTransfer::finished, this,
            [this, id](const HttpOutcome &outcome) { postEnded(id, outcome); });
}

void SendQueue::tellProgress(MessageId id, qint64 done, qint64 total)
{
    const auto found = m_messages.find(id);
    if (found == m_messages.end()) {
        return;
    }
    Outgoing &message = *found->second;
    if (message.session != 0 && message.gate.passes(steadyTime(), done, total)) {
        Q_EMIT progress(message.session, message.requestId, done, total);
    }
}

void SendQueue::postEnded(MessageId id, const HttpOutcome &outcome)
{
    const auto found = m_messages.find(id);
    if (found == m_messages.end()) {
        return;
    }
    Outgoing &message = *found->second;
    message.transfer = nullptr;
    proceed();
    if (outcome.isSuccess()) {
        answered(message, readSendConfirmation(outcome.body, message.record.transactionId));
    } else if (!mayPass(outcome)) {
        qCWarning(kSends, "message %llu cannot be sent: %ls", id, qUtf16Printable(outcome.text));
        end(message, kFailed);
    } else if (message.wasPaused && outcome.kind == HttpOutcome::Kind::Cut) {
        qCInfo(kSends, "message %llu was paused for too long, and is sent anew", id);
    } else {
        failed(message, kFailed, outcome.text);
    }
}

void SendQueue::answered(Outgoing &message, const SendConfirmation &confirmation)
{
    if (!confirmation.isValid()) {
        failed(message, kFailed, u"the MMSC gave no confirmation: "_s + confirmation.text);
        return;
    }
    const qint32 status = confirmation.isAccepted() ? kSent : confirmation.responseStatus;
    if (confirmation.isTransient()) {
        failed(message, status, u"the MMSC answers with response status %1"_s.arg(status));
        return;
    }
    qCInfo(kSends, "message %llu: the MMSC answers with response status %d", message.id,
           int(confirmation.responseStatus));
    end(message, status);
}

/// Waits for the next attempt, or ends the request when that was the last.
void SendQueue::failed(Outgoing &message, qint32 finalStatus, const QString &reason)
{
    SendRecord &record = message.record;
    ++record.attempts;
    const auto pause = m_settings.schedule.pauseAfter(record.attempts);
    if (!pause) {
        qCWarning(kSends, "message %llu cannot be sent, after %d attempts: %ls", message.id,
                  record.attempts, qUtf16Printable(reason));
        end(message, finalStatus);
        return;
    }
    qCInfo(kSends, "message %llu is tried again in %lld s: %ls", message.id,
           static_cast<long long>(pause->count() / 1000), qUtf16Printable(reason));
    record.nextTry = currentTime() + pause->count();
    // A record that cannot be written makes a daemon that starts again try earlier.
    logProblem(message.id, m_spool.write(kOut, message.id, record.toJson()));
    proceed();
    if (message.session != 0) {
        Q_EMIT retrying(message.session, message.requestId);
    }
}

/// The last of a message: it is gone from the spool before anybody is told.
void SendQueue::end(Outgoing &message, qint32 status)
{
    logProblem(message.id, m_spool.remove(kOut, message.id));
    qCInfo(kSends, "message %llu has ended with %d", message.id, status);
    const auto ended = m_messages.extract(message.id);
    const Outgoing &last = *ended.mapped();
    ended.mapped()->drop();
    proceed();
    if (last.session != 0) {
        Q_EMIT finished(last.session, last.requestId, last.uri, status);
    }
}

Outgoing *SendQueue::find(SessionId session, qint32 requestId) const
{
    const auto found = std::find_if(m_messages.begin(), m_messages.end(), [=](const auto &one) {
        return one.second->session == session && one.second->requestId == requestId;
    });
    return session != 0 && found != m_messages.end() ? found->second.get() : nullptr;
}

} // namespace wmsg::proxy

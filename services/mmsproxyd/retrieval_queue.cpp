// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/retrieval_queue.h"

#include "services/common/durable_file.h"
#include "services/common/record_fields.h"
#include "services/mmsproxyd/answer_queue.h"
#include "services/mmsproxyd/fetch.h"
#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/mail_file_writer.h"
#include "services/mmsproxyd/notification.h"
#include "services/mmsproxyd/outgoing_pdu.h"

#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QUrl>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;
using namespace wmsg::service;

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kRetrievals, "wmsg.retrievals", QtInfoMsg)

using Kind = IncomingRecord::Kind;
using Stage = IncomingRecord::Stage;

constexpr auto kIn = Spool::Box::In;
constexpr qsizetype kLongestAppId = 1024;
constexpr qsizetype kLongestLoss = 1024;

// What a request ends with. On the wire: never renumber.
constexpr qint32 kRetrieved = 0;
constexpr qint32 kRefused = 15;
constexpr qint32 kFailed = 19;

bool isFetchableUrl(const QString &text)
{
    const QUrl url(text);
    const QString scheme = url.scheme().toLower();
    return text.size() <= RecordFields::kLongestText && url.isValid() && !url.host().isEmpty()
        && (scheme == "http"_L1 || scheme == "https"_L1)
        && QString::fromUtf8(text.toUtf8()) == text;
}

bool isShort(const QString &text)
{
    return text.size() <= RecordFields::kLongestText;
}

/// Whether there is nothing left to be fetched.
bool isGone(const HttpOutcome &outcome)
{
    constexpr int kNotFound = 404;
    constexpr int kGone = 410;
    return outcome.kind == HttpOutcome::Kind::Impossible
        || (outcome.kind == HttpOutcome::Kind::Answered
            && (outcome.httpStatus == kNotFound || outcome.httpStatus == kGone));
}

/// Whether a file begins as every PDU does. What does not came from somewhere else, like the page
/// at which a network wants a password.
bool beginsAsPdu(const QString &path)
{
    constexpr quint8 kFirstField = 0x81;
    constexpr quint8 kLastField = 0x98;
    QFile file(path);
    char byte = 0;
    if (!file.open(QIODevice::ReadOnly) || !file.getChar(&byte)) {
        return false;
    }
    const auto first = static_cast<quint8>(byte);
    return first >= kFirstField && first <= kLastField;
}

IncomingRecord recordOf(const Notification &notification)
{
    IncomingRecord record;
    record.transactionId = notification.transactionId;
    record.location = notification.location;
    record.expires = notification.expires.isValid() ? notification.expires.toMSecsSinceEpoch() : 0;
    record.since = currentTime();
    return record;
}

void setResponse(IncomingRecord &record, MessageStatus status)
{
    record.response = static_cast<quint8>(status);
}

/// What a push says; one with a text that no record has room for says nothing that we know.
Notification notificationIn(const QByteArray &pdu)
{
    Notification notification = readNotification(pdu, QDateTime::currentDateTimeUtc());
    for (const QString *text : {&notification.transactionId, &notification.location,
                                &notification.messageId, &notification.recipient}) {
        if (!isShort(*text)) {
            Notification unknown;
            unknown.reason = u"an id or an address has %1 characters"_s.arg(text->size());
            return unknown;
        }
    }
    return notification;
}

Answer notifyResponseOf(const IncomingRecord &record)
{
    return {Answer::Kind::NotifyResponse, record.transactionId, record.response};
}

} // namespace

RetrievalQueue::RetrievalQueue(Spool &spool, Inbox &inbox, HttpClient &http,
                               RetrievalSettings settings, QObject *parent)
    : QObject(parent), m_spool(spool), m_inbox(inbox), m_http(http),
      m_settings(std::move(settings)),
      m_answers(std::make_unique<AnswerQueue>(inbox, http, m_settings.mmsc, m_settings.schedule))
{
    connect(&m_alarm, &service::Alarm::rang, this, &RetrievalQueue::fetchNext);
}

RetrievalQueue::~RetrievalQueue() = default;

void RetrievalQueue::start()
{
    m_answers->proceed();
    proceed();
}

QString RetrievalQueue::pushed(const QByteArray &pdu)
{
    return take(notificationIn(pdu), pdu);
}

QString RetrievalQueue::pushedOnce(const QByteArray &pdu)
{
    const Notification notification = notificationIn(pdu);
    if (notification.kind != Notification::Kind::Unknown) {
        return take(notification, pdu);
    }
    const MessageId id = m_spool.nextId();
    QString problem = writeDurably(m_spool.path(kIn, id, Spool::Part::Notice), pdu);
    problem = problem.isEmpty() ? m_spool.keep(kIn, id, notification.reason) : problem;
    if (!problem.isEmpty()) {
        qCWarning(kRetrievals, "a push cannot be kept: %ls", qUtf16Printable(problem));
        m_inbox.forget(id);
    }
    return problem;
}

QString RetrievalQueue::take(const Notification &notification, const QByteArray &pdu)
{
    switch (notification.kind) {
    case Notification::Kind::MessageWaits:
        return announced(notification, pdu);
    case Notification::Kind::DeliveryReport:
        return reported(notification);
    case Notification::Kind::ReadReport:
        qCInfo(kRetrievals, "a read report is not told");
        return QString();
    case Notification::Kind::Unknown:
        break;
    }
    qCWarning(kRetrievals, "a push is refused: %ls", qUtf16Printable(notification.reason));
    return notification.reason;
}

QString RetrievalQueue::announced(const Notification &notification, const QByteArray &pdu)
{
    IncomingRecord record = recordOf(notification);
    if (const MessageId known = m_inbox.known(record); known != 0) {
        announcedAgain(known);
        return QString();
    }
    m_inbox.forgetOld(currentTime());
    if (m_inbox.isFull()) {
        qCWarning(kRetrievals, "a notification is refused: too many messages wait");
        return u"too many messages wait"_s;
    }
    const MessageId id = m_spool.nextId();
    QString problem = writeDurably(m_spool.path(kIn, id, Spool::Part::Notice), pdu);
    problem = problem.isEmpty() ? decide(id, record, notification) : problem;
    problem = problem.isEmpty() ? m_inbox.save(id, record) : problem;
    if (!problem.isEmpty()) {
        qCWarning(kRetrievals, "a notification is refused: %ls", qUtf16Printable(problem));
        m_inbox.forget(id);
        return problem;
    }
    qCInfo(kRetrievals, "message %llu is announced", id);
    start();
    if (record.stage == Stage::Over) {
        m_inbox.update(id, record); // its files go
    }
    if (record.stage == Stage::Deferred) {
        Q_EMIT notified(record.location, record.transactionId);
    }
    return QString();
}

/// Decides what is done about a message that is announced for the first time.
QString RetrievalQueue::decide(MessageId id, IncomingRecord &record,
                               const Notification &notification)
{
    if (!isFetchableUrl(record.location)) {
        record.stage = Stage::Over;
        setResponse(record, MessageStatus::Unrecognised);
        m_answers->owe(record, notifyResponseOf(record));
        return m_spool.keep(kIn, id, u"the location is no URL of http or https"_s);
    }
    const bool isTooLarge = notification.size > m_settings.maxIncoming;
    if (m_settings.mode == RetrievalMode::Never) {
        qCInfo(kRetrievals, "message %llu is rejected, as the configuration has it", id);
        record.stage = Stage::Over;
        setResponse(record, MessageStatus::Rejected);
    } else if (m_settings.mode == RetrievalMode::Deferred || isTooLarge) {
        record.stage = Stage::Deferred;
        setResponse(record, MessageStatus::Deferred);
    } else {
        return QString(); // answered when it is here
    }
    if (isTooLarge) {
        qCWarning(kRetrievals, "message %llu has %u bytes, and %lld are allowed", id,
                  notification.size, m_settings.maxIncoming);
    }
    m_answers->owe(record, notifyResponseOf(record));
    return QString();
}

/// The MMSC has not heard of us, or the network said it twice.
void RetrievalQueue::announcedAgain(MessageId id)
{
    qCInfo(kRetrievals, "message %llu is announced again", id);
    IncomingRecord record = *m_inbox.find(id);
    if (record.response != 0) {
        m_answers->owe(record, notifyResponseOf(record));
    }
    if (record.stage == Stage::Announced) {
        record.nextTry = 0; // the network is there
    }
    m_inbox.update(id, std::move(record));
    start();
}

QString RetrievalQueue::reported(const Notification &notification)
{
    if (notification.status != static_cast<quint8>(MessageStatus::Retrieved)) {
        // There is no event for it, and the one of delivery would say what is not so.
        qCInfo(kRetrievals, "a delivery report with status %d is not told", notification.status);
        return QString();
    }
    IncomingRecord record;
    record.kind = Kind::Report;
    record.stage = Stage::Ready;
    record.messageId = notification.messageId;
    record.to = notification.recipient;
    record.date = std::max<qint64>(notification.date.toMSecsSinceEpoch(), 0);
    record.since = currentTime();
    if (m_inbox.known(record) != 0) {
        return QString();
    }
    m_inbox.forgetOld(currentTime());
    const MessageId id = m_spool.nextId();
    QString problem = m_inbox.isFull() ? u"too many messages wait"_s : m_inbox.save(id, record);
    if (!problem.isEmpty()) {
        qCWarning(kRetrievals, "a delivery report is refused: %ls", qUtf16Printable(problem));
        return problem;
    }
    Q_EMIT reportReady(id);
    return QString();
}

void RetrievalQueue::retrieve(SessionId session, qint32 requestId, const QString &uri)
{
    const bool isInUse = knows(session, requestId);
    if (isInUse || !isFetchableUrl(uri)) {
        qCWarning(kRetrievals, "request %d of session %llu is refused: its %s", requestId, session,
                  isInUse ? "number is in use" : "URI is none of http or https");
        Q_EMIT finished(session, requestId, uri, kRefused);
        return;
    }
    MessageId id = m_inbox.fetchable(uri);
    const QString problem = ask(id, uri);
    if (!problem.isEmpty() || m_inbox.find(id)->stage == Stage::Ready) {
        const QString what = problem.isEmpty() ? u"the message is here"_s : problem;
        qCInfo(kRetrievals, "request %d of session %llu: %ls", requestId, session,
               qUtf16Printable(what));
        Q_EMIT finished(session, requestId, uri, problem.isEmpty() ? kRetrieved : kFailed);
        return;
    }
    m_fetches[id].requests.push_back({session, requestId, uri, false, {}});
    applyPause(m_fetches[id]);
    proceed();
}

/// Sees to it that the message at a URI is fetched, or here. Sets `id` when there was none.
QString RetrievalQueue::ask(MessageId &id, const QString &uri)
{
    IncomingRecord record;
    if (id != 0) {
        record = *m_inbox.find(id);
    } else if (m_inbox.isFull()) {
        return u"too many messages wait"_s;
    } else {
        id = m_spool.nextId();
        record.location = uri;
        record.since = currentTime();
        record.stage = Stage::Deferred;
    }
    if (record.stage == Stage::Ready) {
        return QString();
    }
    if (record.stage == Stage::Deferred) {
        record.stage = Stage::Asked;
        record.attempts = 0;
    }
    record.nextTry = 0;
    return m_inbox.save(id, record);
}

bool RetrievalQueue::abort(SessionId session, qint32 requestId)
{
    const auto [id, place] = find(session, requestId);
    if (id == 0) {
        return false;
    }
    Fetch &fetch = m_fetches[id];
    const QString uri = fetch.requests[place].uri;
    fetch.requests.erase(fetch.requests.begin() + static_cast<std::ptrdiff_t>(place));
    const IncomingRecord *record = m_inbox.find(id);
    if (fetch.requests.empty() && record && record->stage == Stage::Asked) {
        m_fetches.erase(id);
        unask(id, *record);
    } else {
        applyPause(fetch);
    }
    proceed();
    Q_EMIT finished(session, requestId, uri, kFailed);
    return true;
}

bool RetrievalQueue::pause(SessionId session, qint32 requestId)
{
    return setPaused(session, requestId, true);
}

bool RetrievalQueue::resume(SessionId session, qint32 requestId)
{
    return setPaused(session, requestId, false);
}

bool RetrievalQueue::setPaused(SessionId session, qint32 requestId, bool isPaused)
{
    const auto [id, place] = find(session, requestId);
    if (id != 0) {
        Fetch &fetch = m_fetches[id];
        fetch.requests[place].isPaused = isPaused;
        applyPause(fetch);
        proceed();
    }
    return id != 0;
}

bool RetrievalQueue::knows(SessionId session, qint32 requestId) const
{
    return find(session, requestId).first != 0;
}

void RetrievalQueue::forget(SessionId session)
{
    for (auto &[id, fetch] : m_fetches) {
        fetch.forget(session);
        applyPause(fetch);
    }
    proceed();
}

void RetrievalQueue::applyPause(Fetch &fetch)
{
    if (!fetch.transfer) {
        return;
    }
    if (fetch.isPaused()) {
        fetch.wasPaused = true;
        fetch.transfer->pause();
    } else {
        fetch.transfer->resume();
    }
}

void RetrievalQueue::proceed()
{
    m_alarm.start(RetrySchedule::Pause(0));
}

/// Starts what is due when there is room, and sets the alarm for what is not due.
void RetrievalQueue::fetchNext()
{
    const bool isBusy = std::any_of(m_fetches.begin(), m_fetches.end(), [](const auto &one) {
        return one.second.transfer && !one.second.isPaused();
    });
    const qint64 now = currentTime();
    std::optional<RetrySchedule::Pause> earliest;
    for (const auto &[id, record] : m_inbox.all()) {
        const auto fetch = m_fetches.find(id);
        const bool isHeld =
            fetch != m_fetches.end() && (fetch->second.transfer || fetch->second.isPaused());
        if (!record.isFetched() || isHeld) {
            continue;
        }
        const auto pause = m_settings.schedule.remaining(record.nextTry, now, record.attempts);
        if (pause.count() > 0) {
            earliest = std::min(earliest.value_or(pause), pause);
        } else if (!isBusy) {
            startFetch(id, record.location);
            proceed(); // for the alarm of the others
            return;
        }
    }
    if (earliest) {
        m_alarm.start(*earliest);
    }
}

void RetrievalQueue::startFetch(MessageId id, const QString &location)
{
    HttpRequest request;
    request.url = location;
    request.answerFile = m_spool.path(kIn, id, Spool::Part::Fetched);
    request.answerLimit = m_settings.maxIncoming;
    Fetch &fetch = m_fetches[id];
    fetch.wasPaused = false;
    fetch.transfer = m_http.start(request);
    connect(fetch.transfer, &HttpTransfer::progress, this,
            [this, id](qint64 done, qint64 total) { tellProgress(id, done, total); });
    connect(fetch.transfer, &HttpTransfer::finished, this,
            [this, id](const HttpOutcome &outcome) { fetchEnded(id, outcome); });
}

void RetrievalQueue::tellProgress(MessageId id, qint64 done, qint64 total)
{
    const auto found = m_fetches.find(id);
    if (found == m_fetches.end()) {
        return;
    }
    for (const Request &request : found->second.thatHear(done, total)) {
        Q_EMIT progress(request.session, request.id, done, total);
    }
}

void RetrievalQueue::fetchEnded(MessageId id, const HttpOutcome &outcome)
{
    const auto found = m_fetches.find(id);
    const IncomingRecord *record = m_inbox.find(id);
    if (found == m_fetches.end() || !record) {
        return;
    }
    found->second.transfer = nullptr;
    proceed();
    const IncomingRecord before = *record;
    const bool lostPatience = found->second.wasPaused && outcome.kind == HttpOutcome::Kind::Cut;
    if (outcome.isSuccess()) {
        takeIn(id, before);
    } else if (!lostPatience && hasCutMessage(id, before)) {
        settleForCutMessage(id, before, outcome.text);
    } else if (outcome.kind == HttpOutcome::Kind::TooLarge) {
        tooLarge(id, before, outcome.text);
    } else if (isGone(outcome)) {
        gone(id, before, outcome.text);
    } else if (lostPatience) {
        qCInfo(kRetrievals, "message %llu was paused for too long, and is fetched anew", id);
    } else {
        failed(id, before, outcome.text, outcome.mayRetry());
    }
}

void RetrievalQueue::takeIn(MessageId id, const IncomingRecord &record)
{
    const QString fetched = m_spool.path(kIn, id, Spool::Part::Fetched);
    const QString mail = m_spool.path(kIn, id, Spool::Part::Mail);
    const MailFileWriter writer(m_settings.maxIncoming);
    const bool hasCut = hasCutMessage(id, record);
    const Taken taken = hasCut ? writer.takeBetter(fetched, mail) : writer.take(fetched, mail);
    if (hasCut && taken.kind != Taken::Kind::Message) {
        settleForCutMessage(id, record, taken.reason);
        return;
    }
    switch (taken.kind) {
    case Taken::Kind::Message:
        if (!taken.loss.isNull() && record.loss.isNull()) {
            cutOff(id, record, taken);
        } else {
            arrived(id, record, taken);
        }
        return;
    case Taken::Kind::Failed:
        failed(id, record, taken.reason, true);
        return;
    case Taken::Kind::NoMessage:
        if (taken.mayPass()) {
            failed(id, record, taken.reason, true);
        } else {
            gone(id, record, taken.reason);
        }
        return;
    case Taken::Kind::NoBetter:
    case Taken::Kind::Unreadable:
        break;
    }
    if (beginsAsPdu(fetched)) {
        unreadable(id, record, taken);
    } else {
        failed(id, record, u"the MMSC gave no PDU: "_s + taken.reason, true);
    }
}

/// A message that is cut off is fetched once more, now. The record knows that before it is: a
/// daemon that is killed meanwhile does not begin to count again.
void RetrievalQueue::cutOff(MessageId id, IncomingRecord record, const Taken &taken)
{
    record.loss = taken.loss.left(kLongestLoss);
    record.nextTry = 0;
    const QString problem = m_inbox.save(id, record);
    if (!problem.isEmpty()) {
        failed(id, *m_inbox.find(id), problem, true);
        return;
    }
    qCWarning(kRetrievals, "message %llu is cut off, and is fetched again: %ls", id,
              qUtf16Printable(taken.loss));
    tellRetrying(id);
}

/// Whether a message lies here that is cut off, and is being fetched once more.
bool RetrievalQueue::hasCutMessage(MessageId id, const IncomingRecord &record) const
{
    return !record.loss.isNull() && m_spool.has(kIn, id, Spool::Part::Mail);
}

/// What is here of a message is all of it: it did not come another time.
void RetrievalQueue::settleForCutMessage(MessageId id, const IncomingRecord &record,
                                         const QString &reason)
{
    Taken taken = MailFileWriter::reread(m_spool.path(kIn, id, Spool::Part::Mail));
    if (taken.kind != Taken::Kind::Message) {
        IncomingRecord fresh = record;
        fresh.loss = QString();
        failed(id, fresh, taken.reason, true);
        return;
    }
    qCInfo(kRetrievals, "message %llu was fetched again, and no more came: %ls", id,
           qUtf16Printable(reason));
    taken.loss = record.loss;
    arrived(id, record, taken);
}

/// The mail file is durable: from now on the message is here.
void RetrievalQueue::arrived(MessageId id, IncomingRecord record, const Taken &taken)
{
    const bool wasAsked = record.stage == Stage::Asked;
    record.stage = Stage::Ready;
    record.appId = taken.applicationId.left(kLongestAppId);
    record.attempts = 0;
    record.nextTry = 0;
    record.loss = taken.loss.left(kLongestLoss);
    setResponse(record, MessageStatus::Retrieved);
    if (!wasAsked) {
        m_answers->owe(record, notifyResponseOf(record));
    } else if (!taken.transactionId.isEmpty() && isShort(taken.transactionId)) {
        m_answers->owe(record, {Answer::Kind::Acknowledge, taken.transactionId, 0});
    }
    const QString problem = m_inbox.save(id, record);
    if (!problem.isEmpty()) {
        failed(id, *m_inbox.find(id), problem, true);
        return;
    }
    if (taken.loss.isNull()) {
        qCInfo(kRetrievals, "message %llu is here", id);
    } else {
        qCWarning(kRetrievals, "message %llu is here, but for what was cut off: %ls", id,
                  qUtf16Printable(taken.loss));
    }
    (void)QFile::remove(m_spool.path(kIn, id, Spool::Part::Fetched));
    m_answers->proceed();
    Q_EMIT messageReady(id);
    endRequests(id, kRetrieved);
}

/// A message that is a PDU and yet none that a session could read.
void RetrievalQueue::unreadable(MessageId id, IncomingRecord record, const Taken &taken)
{
    const QString where = taken.offset >= 0 ? u" (at offset %1)"_s.arg(taken.offset) : QString();
    const QString problem = m_spool.keep(kIn, id, taken.reason + where);
    if (!problem.isEmpty()) {
        failed(id, record, problem, true);
        return;
    }
    const bool wasAsked = record.stage == Stage::Asked;
    if (wasAsked && !taken.transactionId.isEmpty() && isShort(taken.transactionId)) {
        m_answers->owe(record, {Answer::Kind::Acknowledge, taken.transactionId, 0});
    }
    close(id, std::move(record), MessageStatus::Unrecognised, !wasAsked);
}

/// Nothing can be fetched any more. The notification is all that there is to keep.
void RetrievalQueue::gone(MessageId id, const IncomingRecord &record, const QString &reason)
{
    qCWarning(kRetrievals, "message %llu cannot be fetched any more: %ls", id,
              qUtf16Printable(reason));
    if (record.transactionId.isNull()) {
        m_inbox.forget(id);
        endRequests(id, kFailed);
        return;
    }
    const QString problem = m_spool.keep(kIn, id, reason);
    if (!problem.isEmpty()) {
        failed(id, record, problem, true);
        return;
    }
    close(id, record, MessageStatus::Expired, true);
}

/// A message of a size that is not allowed stays with the MMSC, until another size is.
void RetrievalQueue::tooLarge(MessageId id, IncomingRecord record, const QString &reason)
{
    qCWarning(kRetrievals, "message %llu is too large: %ls", id, qUtf16Printable(reason));
    (void)QFile::remove(m_spool.path(kIn, id, Spool::Part::Fetched));
    if (record.stage == Stage::Asked) {
        unask(id, record);
        endRequests(id, kFailed);
        return;
    }
    record.stage = Stage::Deferred;
    setResponse(record, MessageStatus::Deferred);
    m_answers->owe(record, notifyResponseOf(record));
    const QString location = record.location;
    const QString transactionId = record.transactionId;
    m_inbox.update(id, std::move(record));
    m_answers->proceed();
    endRequests(id, kFailed);
    Q_EMIT notified(location, transactionId);
}

/// Waits for the next attempt. What a session asked for ends with the schedule, and at once when
/// another attempt is of no use; what was announced goes on until it expires.
void RetrievalQueue::failed(MessageId id, IncomingRecord record, const QString &reason,
                            bool mayPass)
{
    const qint64 now = currentTime();
    if (record.expires != 0 && now > record.expires) {
        qCWarning(kRetrievals, "message %llu has expired: %ls", id, qUtf16Printable(reason));
        close(id, std::move(record), MessageStatus::Expired, true);
        return;
    }
    ++record.attempts;
    const auto pause = m_settings.schedule.pauseAfter(record.attempts);
    const bool isLast = !mayPass || !pause;
    if (isLast && record.stage == Stage::Asked) {
        qCWarning(kRetrievals, "message %llu could not be fetched: %ls", id,
                  qUtf16Printable(reason));
        unask(id, record);
        endRequests(id, kFailed);
        return;
    }
    const auto lasting = m_settings.schedule.lastingPauseAfter(record.attempts);
    qCInfo(kRetrievals, "message %llu is fetched again in %lld s: %ls", id,
           static_cast<long long>(lasting.count() / 1000), qUtf16Printable(reason));
    record.nextTry = now + lasting.count();
    m_inbox.update(id, std::move(record));
    if (isLast) {
        endRequests(id, kFailed);
    } else {
        tellRetrying(id);
    }
}

/// Makes a message that nobody asks for any more what it was before.
void RetrievalQueue::unask(MessageId id, IncomingRecord record)
{
    if (record.transactionId.isNull()) {
        m_inbox.forget(id);
        return;
    }
    (void)QFile::remove(m_spool.path(kIn, id, Spool::Part::Fetched));
    record.stage = Stage::Deferred;
    record.attempts = 0;
    record.nextTry = 0;
    m_inbox.update(id, std::move(record));
}

/// Ends the life of a message without it having been here for anybody.
void RetrievalQueue::close(MessageId id, IncomingRecord record, MessageStatus status, bool answer)
{
    if (record.transactionId.isNull()) {
        m_inbox.forget(id);
        endRequests(id, kFailed);
        return;
    }
    record.stage = Stage::Over;
    setResponse(record, status);
    if (answer) {
        m_answers->owe(record, notifyResponseOf(record));
    }
    m_inbox.update(id, std::move(record));
    m_answers->proceed();
    endRequests(id, kFailed);
}

void RetrievalQueue::endRequests(MessageId id, qint32 status)
{
    const auto ended = m_fetches.extract(id);
    if (ended.empty()) {
        return;
    }
    for (const Request &request : ended.mapped().requests) {
        Q_EMIT finished(request.session, request.id, request.uri, status);
    }
}

void RetrievalQueue::tellRetrying(MessageId id)
{
    const auto found = m_fetches.find(id);
    if (found == m_fetches.end()) {
        return;
    }
    const std::vector<Request> requests = found->second.requests;
    for (const Request &request : requests) {
        Q_EMIT retrying(request.session, request.id);
    }
}

std::pair<MessageId, size_t> RetrievalQueue::find(SessionId session, qint32 requestId) const
{
    for (const auto &[id, fetch] : m_fetches) {
        for (size_t n = 0; n < fetch.requests.size(); ++n) {
            if (fetch.requests[n].session == session && fetch.requests[n].id == requestId) {
                return {id, n};
            }
        }
    }
    return {0, 0};
}

} // namespace wmsg::proxy

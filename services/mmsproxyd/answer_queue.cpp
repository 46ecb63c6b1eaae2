// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/answer_queue.h"

#include "services/mmsproxyd/http_client.h"
#include "services/mmsproxyd/outgoing_pdu.h"

#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <optional>

namespace wmsg::proxy {

namespace {

Q_LOGGING_CATEGORY(kAnswers, "wmsg.answers", QtInfoMsg)

QByteArray pduOf(const Answer &answer)
{
    switch (answer.kind) {
    case Answer::Kind::NotifyResponse:
        return notifyResponse(answer.transactionId, static_cast<MessageStatus>(answer.status));
    case Answer::Kind::Acknowledge:
        break;
    }
    return acknowledge(answer.transactionId);
}

/// Nothing in the body of the reply matters, so there may as well be none.
bool isTaken(const HttpOutcome &outcome)
{
    return outcome.kind == HttpOutcome::Kind::TooLarge
        || (outcome.kind == HttpOutcome::Kind::Answered && outcome.httpStatus / 100 == 2);
}

} // namespace

AnswerQueue::AnswerQueue(Inbox &inbox, HttpClient &http, QString mmsc, RetrySchedule schedule,
                         QObject *parent)
    : QObject(parent), m_inbox(inbox), m_http(http), m_mmsc(std::move(mmsc)),
      m_schedule(std::move(schedule))
{
    connect(&m_alarm, &service::Alarm::rang, this, &AnswerQueue::postNext);
}

AnswerQueue::~AnswerQueue()
{
    if (m_transfer) {
        m_transfer->disconnect(this);
        m_transfer->abort();
    }
}

void AnswerQueue::owe(IncomingRecord &record, const Answer &answer) const
{
    if (m_mmsc.isEmpty() || record.answers.contains(answer)) {
        return;
    }
    while (record.answers.size() >= kMostAnswers) {
        record.answers.removeFirst();
    }
    record.answers.append(answer);
}

void AnswerQueue::proceed()
{
    m_alarm.start(RetrySchedule::Pause(0));
}

void AnswerQueue::postNext()
{
    if (m_transfer || m_mmsc.isEmpty()) {
        return;
    }
    const qint64 now = currentTime();
    std::optional<RetrySchedule::Pause> earliest;
    for (const auto &[id, record] : m_inbox.all()) {
        if (record.answers.isEmpty()) {
            continue;
        }
        const auto pause = m_schedule.remaining(record.nextAnswer, now, record.answerAttempts);
        if (pause.count() == 0) {
            post(id, record.answers.first());
            return;
        }
        earliest = std::min(earliest.value_or(pause), pause);
    }
    if (earliest) {
        m_alarm.start(*earliest);
    }
}

void AnswerQueue::post(MessageId id, const Answer &answer)
{
    HttpRequest request;
    request.method = HttpRequest::Method::Post;
    request.url = m_mmsc;
    request.body = pduOf(answer);
    m_transfer = m_http.start(request);
    connect(m_transfer, &HttpTransfer::finished, this,
            [this, id, answer](const HttpOutcome &outcome) { postEnded(id, answer, outcome); });
}

void AnswerQueue::postEnded(MessageId id, const Answer &answer, const HttpOutcome &outcome)
{
    m_transfer = nullptr;
    proceed();
    const IncomingRecord *found = m_inbox.find(id);
    if (!found || !found->answers.contains(answer)) {
        return;
    }
    IncomingRecord record = *found;
    ++record.answerAttempts;
    const auto pause = m_schedule.pauseAfter(record.answerAttempts);
    if (!isTaken(outcome) && outcome.mayRetry() && pause) {
        qCInfo(kAnswers, "message %llu: the MMSC did not take an answer, it is tried again: %ls",
               id, qUtf16Printable(outcome.text));
        record.nextAnswer = currentTime() + pause->count();
    } else {
        if (!isTaken(outcome)) {
            qCWarning(kAnswers, "message %llu: an answer to the MMSC is given up: %ls", id,
                      qUtf16Printable(outcome.text));
        }
        record.answers.removeOne(answer);
        record.answerAttempts = 0;
        record.nextAnswer = 0;
    }
    m_inbox.update(id, std::move(record));
}

} // namespace wmsg::proxy

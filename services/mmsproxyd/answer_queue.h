// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/alarm.h"
#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/retry_schedule.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>

namespace wmsg::proxy {

class HttpClient;
struct HttpOutcome;
class HttpTransfer;

/// AnswerQueue posts the answers that the messages of the inbox owe the MMSC, one at a time. One
/// that fails is tried again by the schedule and then given up: an MMSC that misses it notifies
/// again, and gets it then.
class AnswerQueue : public QObject {
    Q_OBJECT

public:
    /// How many answers one message may owe; the oldest go first.
    static constexpr qsizetype kMostAnswers = 4;

    /// Without an `mmsc` nothing is owed, and what the inbox holds stays there.
    AnswerQueue(Inbox &inbox, HttpClient &http, QString mmsc, RetrySchedule schedule,
                QObject *parent = nullptr);
    ~AnswerQueue() override;

    /// owe adds an answer to a record that is about to be saved, unless it is owed already.
    void owe(IncomingRecord &record, const Answer &answer) const;
    /// proceed posts, from the event loop, what is owed by now.
    void proceed();

private:
    void postNext();
    void post(MessageId id, const Answer &answer);
    void postEnded(MessageId id, const Answer &answer, const HttpOutcome &outcome);

    Inbox &m_inbox;
    HttpClient &m_http;
    QString m_mmsc;
    RetrySchedule m_schedule;
    service::Alarm m_alarm;
    QPointer<HttpTransfer> m_transfer;
};

} // namespace wmsg::proxy

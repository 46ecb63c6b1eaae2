// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/alarm.h"
#include "services/mmsproxyd/retry_schedule.h"
#include "services/mmsproxyd/session_id.h"
#include "services/mmsproxyd/spool.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <map>
#include <memory>

#include <sys/types.h>

namespace wmsg::proxy {

class HttpClient;
struct HttpOutcome;
struct Outgoing;
struct SendConfirmation;

struct SendSettings {
    QString mmsc; ///< the URL of the MMSC; without one nothing can be sent
    qint64 maxSize = 300LL * 1024; ///< of a message, in bytes
    RetrySchedule schedule;
    int transfersAtOnce = 1;
};

/// SendQueue takes messages over from sessions and sends them to the MMSC, in the order in which
/// they came. A message that waits for another attempt, or is paused, lets those behind it pass.
///
/// Each step is durable before the next: the message is copied into the spool and its file removed,
/// it is turned into a PDU, the PDU is posted until the MMSC has answered or the schedule ends, and
/// it is removed from the spool; then the session is told. What a daemon left that was killed goes
/// on with start(), under the same transaction id; nobody is told of its end.
///
/// Requests are those of one session. Signals may be emitted from inside the operations.
class SendQueue : public QObject {
    Q_OBJECT

public:
    SendQueue(Spool &spool, HttpClient &http, SendSettings settings, QObject *parent = nullptr);
    ~SendQueue() override;

    /// start takes up what the spool holds. Call it once, when the spool is open.
    void start();

    /// take takes a mail file of the user `peer` over. It ends, now or later, with exactly one
    /// finished().
    void take(SessionId session, qint32 requestId, const QString &path, uid_t peer);

    // False: the session has no request of this number that goes on.

    /// abort ends a request with finished(), emitted before it returns. What the MMSC has by then,
    /// it has.
    bool abort(SessionId session, qint32 requestId);
    bool pause(SessionId session, qint32 requestId);
    bool resume(SessionId session, qint32 requestId);
    [[nodiscard]] bool knows(SessionId session, qint32 requestId) const;

    /// forget ends a session: its requests go on, also those that it paused, and nobody is told.
    void forget(SessionId session);

    /// How many messages are in the spool to be sent.
    [[nodiscard]] int count() const { return static_cast<int>(m_messages.size()); }

Q_SIGNALS:
    /// A request has ended: with 0, with the response status of the MMSC (129 to 234), with 19 for
    /// a failure for good or an abort, or with 15 when the file or the number of the request is
    /// refused.
    void finished(wmsg::proxy::SessionId session, qint32 requestId, const QString &uri,
                  qint32 status);
    /// An attempt has failed, and another one will be made.
    void retrying(wmsg::proxy::SessionId session, qint32 requestId);
    /// How many bytes the MMSC has of how many; at most ten times a second, and the last.
    void progress(wmsg::proxy::SessionId session, qint32 requestId, qint64 sent, qint64 total);

private:
    void restore(const Spool::Stored &stored);
    [[nodiscard]] qint32 receive(Outgoing &message, const QString &path, uid_t peer);
    void removeSource(Outgoing &message);
    [[nodiscard]] bool prepare(Outgoing &message);
    void resume(Outgoing &message);
    [[nodiscard]] Outgoing *find(SessionId session, qint32 requestId) const;

    void proceed();
    void postNext();
    void post(Outgoing &message);
    void tellProgress(MessageId id, qint64 done, qint64 total);
    void postEnded(MessageId id, const HttpOutcome &outcome);
    void answered(Outgoing &message, const SendConfirmation &confirmation);
    void failed(Outgoing &message, qint32 finalStatus, const QString &reason);
    void end(Outgoing &message, qint32 status);

    Spool &m_spool;
    HttpClient &m_http;
    SendSettings m_settings;
    service::Alarm m_alarm;
    std::map<MessageId, std::unique_ptr<Outgoing>> m_messages;
};

} // namespace wmsg::proxy

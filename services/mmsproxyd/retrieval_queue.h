// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/alarm.h"
#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/retry_schedule.h"
#include "services/mmsproxyd/session_id.h"
#include "services/mmsproxyd/spool.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <map>
#include <memory>
#include <utility>

namespace wmsg::proxy {

class AnswerQueue;
class HttpClient;
struct Fetch;
struct HttpOutcome;
enum class MessageStatus : quint8;
struct Notification;
struct Taken;

/// What is done about a message when it is announced.
enum class RetrievalMode {
    Immediate, ///< it is fetched
    Deferred, ///< sessions are told of it, and one may ask for it
    Never, ///< it is rejected
};

struct RetrievalSettings {
    QString mmsc; ///< where answers go; without one none is sent
    qint64 maxIncoming = 2LL * 1024 * 1024; ///< of a message, in bytes
    RetrySchedule schedule;
    RetrievalMode mode = RetrievalMode::Immediate;
};

/// RetrievalQueue takes what is pushed, fetches messages from the MMSC, one at a time and oldest
/// first, and answers the MMSC. What it fetched lies in the Inbox, ready to be handed out.
///
/// A notification is durable before pushed() returns, a message before messageReady() is emitted,
/// and both before the MMSC gets an answer. A message that cannot be fetched is tried again until
/// it expires; one that cannot be read is kept aside with the reason; one that came cut off is
/// fetched once more, and what is there of it then is the message.
///
/// Requests are those of one session. Signals may be emitted from inside the operations.
class RetrievalQueue : public QObject {
    Q_OBJECT

public:
    RetrievalQueue(Spool &spool, Inbox &inbox, HttpClient &http, RetrievalSettings settings,
                   QObject *parent = nullptr);
    ~RetrievalQueue() override;

    /// start takes up what the inbox holds. Call it once, when the inbox is restored. Nothing is
    /// signalled of what was there before; ask the inbox for it.
    void start();

    /// pushed takes a notification or a delivery report. It returns an empty text when that is
    /// durable, or was known already; else why it is refused.
    [[nodiscard]] QString pushed(const QByteArray &pdu);

    /// pushedOnce takes what nobody pushes again, like a short message: what is refused for good is
    /// kept aside, with the reason. It returns an empty text when that is durable; else why the
    /// push cannot be taken now.
    [[nodiscard]] QString pushedOnce(const QByteArray &pdu);

    /// retrieve fetches the message at a URI. It ends, now or later, with exactly one finished().
    void retrieve(SessionId session, qint32 requestId, const QString &uri);

    // False: the session has no request of this number that goes on.

    /// abort ends a request with finished(), emitted before it returns. A message that was
    /// announced can be asked for again.
    bool abort(SessionId session, qint32 requestId);
    bool pause(SessionId session, qint32 requestId);
    bool resume(SessionId session, qint32 requestId);
    [[nodiscard]] bool knows(SessionId session, qint32 requestId) const;

    /// forget ends a session: its requests go on, also those that it paused, and nobody is told.
    void forget(SessionId session);

Q_SIGNALS:
    /// A request has ended: with 0, with 19 for a failure for good or an abort, or with 15 when the
    /// URI is none of http or https, or the number of the request is in use. With 0 the message is
    /// ready, and messageReady() was emitted before.
    void finished(wmsg::proxy::SessionId session, qint32 requestId, const QString &uri,
                  qint32 status);
    void retrying(wmsg::proxy::SessionId session, qint32 requestId);
    /// How many bytes of how many are here; 0 for the latter while it is not known. At most ten
    /// times a second, and the last.
    void progress(wmsg::proxy::SessionId session, qint32 requestId, qint64 received, qint64 total);

    /// A message lies in the inbox.
    void messageReady(wmsg::proxy::MessageId id);
    /// A message was announced and waits to be asked for.
    void notified(const QString &uri, const QString &transactionId);
    /// A delivery report lies in the inbox.
    void reportReady(wmsg::proxy::MessageId id);

private:
    [[nodiscard]] QString take(const Notification &notification, const QByteArray &pdu);
    [[nodiscard]] QString announced(const Notification &notification, const QByteArray &pdu);
    [[nodiscard]] QString decide(MessageId id, IncomingRecord &record,
                                 const Notification &notification);
    void announcedAgain(MessageId id);
    [[nodiscard]] QString reported(const Notification &notification);

    [[nodiscard]] QString ask(MessageId &id, const QString &uri);
    void unask(MessageId id, IncomingRecord record);
    [[nodiscard]] bool setPaused(SessionId session, qint32 requestId, bool isPaused);
    static void applyPause(Fetch &fetch);
    [[nodiscard]] std::pair<MessageId, size_t> find(SessionId session, qint32 requestId) const;

    void proceed();
    void fetchNext();
    void startFetch(MessageId id, const QString &location);
    void tellProgress(MessageId id, qint64 done, qint64 total);
    void tellRetrying(MessageId id);
    void endRequests(MessageId id, qint32 status);

    // How a fetch ends.
    void fetchEnded(MessageId id, const HttpOutcome &outcome);
    void takeIn(MessageId id, const IncomingRecord &record);
    void arrived(MessageId id, IncomingRecord record, const Taken &taken);
    void cutOff(MessageId id, IncomingRecord record, const Taken &taken);
    [[nodiscard]] bool hasCutMessage(MessageId id, const IncomingRecord &record) const;
    void settleForCutMessage(MessageId id, const IncomingRecord &record, const QString &reason);
    void unreadable(MessageId id, IncomingRecord record, const Taken &taken);
    void gone(MessageId id, const IncomingRecord &record, const QString &reason);
    void tooLarge(MessageId id, IncomingRecord record, const QString &reason);
    void failed(MessageId id, IncomingRecord record, const QString &reason, bool mayPass);
    void close(MessageId id, IncomingRecord record, MessageStatus status, bool answer);

    Spool &m_spool;
    Inbox &m_inbox;
    HttpClient &m_http;
    RetrievalSettings m_settings;
    service::Alarm m_alarm;
    std::unique_ptr<AnswerQueue> m_answers;
    std::map<MessageId, Fetch> m_fetches;
};

} // namespace wmsg::proxy

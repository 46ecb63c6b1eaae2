// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/folder_watch.h"
#include "services/mmsproxyd/inbox.h"
#include "services/mmsproxyd/session_id.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace wmsg::proxy {

/// Delivery brings what lies in the inbox to sessions. A message goes to all sessions that have
/// registered its application; one that names none goes to all that never registered any. Each
/// gets a file of its own, and has the message when it removes the file. With the first of them
/// that does the message is delivered; when all go without doing so it waits again, as it does when
/// there is nobody to give it to.
///
/// A session that has just connected may be about to register. It counts as one that does not after
/// a moment, or when it asks for something else first.
class Delivery : public QObject {
    Q_OBJECT

public:
    /// The longest name of an application, in characters.
    static constexpr int kLongestAppId = 256;
    /// How many applications a session can have registered at a time.
    static constexpr int kMostAppIds = 64;
    /// How many messages a session can have at a time without confirming one.
    static constexpr int kMostHeld = 64;

    /// What registering ends with.
    enum Result : qint32 { Done = 0, Invalid = 15 };

    /// Files are watched in `folder`, in which the inbox makes them. What could not be handed out
    /// is tried again after `pause`.
    Delivery(Inbox &inbox, QString folder,
             std::chrono::milliseconds pause = std::chrono::seconds(30), QObject *parent = nullptr);
    ~Delivery() override;

    /// start begins; call it once, when the inbox is restored. It returns the problem in words, or
    /// an empty text.
    [[nodiscard]] QString start();

    void opened(SessionId id);
    void closed(SessionId id);
    /// settle tells that a session has asked for something else than to be registered.
    void settle(SessionId id);
    /// registerApp registers an application of a session; once more is fine.
    [[nodiscard]] Result registerApp(SessionId id, const QString &appId);
    [[nodiscard]] Result deregisterApp(SessionId id, const QString &appId);

    /// look tells that there is something new in the inbox.
    void look();
    /// announce tells all sessions of a message that waits to be asked for.
    void announce(const QString &uri, const QString &transactionId);

Q_SIGNALS:
    // None is emitted from inside an operation, but for announced().

    void retrieved(wmsg::proxy::SessionId session, const QString &path);
    void reported(wmsg::proxy::SessionId session, const wmsg::proxy::Inbox::Report &report);
    void announced(wmsg::proxy::SessionId session, const QString &uri,
                   const QString &transactionId);

private:
    struct Session;
    struct Handed {
        MessageId message;
        SessionId session;
    };

    void handOut();
    void tellReports();
    [[nodiscard]] bool handOutNext();
    [[nodiscard]] bool give(MessageId message, SessionId session);
    [[nodiscard]] std::vector<SessionId> addresseesOf(MessageId message) const;
    [[nodiscard]] bool isHeld(MessageId message) const;
    void confirm(const QString &path);
    void confirmMissing();
    void letGo(const QString &path, bool isConfirmed);

    Inbox &m_inbox;
    QString m_folder;
    std::chrono::milliseconds m_pause;
    FolderWatch m_watch;
    QTimer m_soon; // something may be handed out
    QTimer m_again; // after a failure
    std::map<SessionId, std::unique_ptr<Session>> m_sessions;
    std::map<QString, Handed> m_handed; // by path
    std::set<MessageId> m_delivered; // of which there still are files
    std::set<MessageId> m_failed; // that could not be handed out of late
};

} // namespace wmsg::proxy

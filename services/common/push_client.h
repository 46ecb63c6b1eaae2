// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtNetwork/QLocalSocket>

#include <chrono>

/// The pushing side of the push socket of wmsg-mmsproxyd; docs/formats/push-socket.md shows the
/// bytes.
namespace wmsg::service {

/// The longest PDU that can be pushed, in bytes.
inline constexpr int kLongestPush = 64 * 1024;

/// PushOutcome is what became of one PDU.
struct PushOutcome {
    enum Kind {
        Taken, ///< The daemon has it, durably.
        Refused, ///< The daemon does not want it: pushing it again ends likewise.
        NotReached ///< No daemon, or no whole answer in time: push it again later.
    };

    Kind kind = NotReached;
    /// Why, unless it was taken.
    QString reason;
};

/// Pushes one PDU to the socket at `path` and waits for the answer, at most for `timeout`.
[[nodiscard]] PushOutcome push(const QString &path, const QByteArray &pdu,
                               std::chrono::milliseconds timeout = std::chrono::seconds(10));

/// PushRequest pushes one PDU from an event loop. It is its owner's; deleting it takes a push that
/// has not ended back as far as that is possible.
class PushRequest : public QObject {
    Q_OBJECT

public:
    /// PushRequest begins. Whatever happens, finished() is not emitted before the event loop runs.
    PushRequest(const QString &path, const QByteArray &pdu, std::chrono::milliseconds timeout,
                QObject *parent = nullptr);

Q_SIGNALS:
    /// finished tells the outcome, once. The request may be deleted from there with deleteLater().
    void finished(const wmsg::service::PushOutcome &outcome);

private:
    void write();
    void read();
    void expire();
    void fail();
    void end(const PushOutcome &outcome);

    QLocalSocket m_socket;
    QTimer m_timer;
    QString m_refusal;
    QByteArray m_record;
    QByteArray m_answer;
    bool m_hasEnded = false;
};

} // namespace wmsg::service

Q_DECLARE_METATYPE(wmsg::service::PushOutcome)

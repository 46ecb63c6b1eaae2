// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QThread>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>

namespace wmsg::proxy {

/// PushThread runs a ShortMessagePush in a thread of its own, for a telephony service may take its
/// time to answer, and sessions are not to wait for it. The taker is called in the thread that made
/// this object, from its event loop.
///
/// Deleting it ends the thread, which takes as long as the service takes to answer what it was
/// asked: twenty seconds at most. A message that is then under way stays with the service.
class PushThread : public QThread {
    Q_OBJECT

public:
    /// Takes the body of a message; false: it cannot be kept now.
    using Taker = std::function<bool(const QByteArray &body)>;

    explicit PushThread(Taker taker);
    ~PushThread() override;

protected:
    void run() override;

Q_SIGNALS:
    /// A body waits for the taker.
    void arrived();

private:
    [[nodiscard]] bool handOver(const QByteArray &body);
    void serve();
    void endWaiting();

    Taker m_taker;
    std::mutex m_mutex; ///< of all that follows
    std::condition_variable m_changed;
    QByteArray m_body;
    std::optional<bool> m_isTaken; ///< Nothing: the body waits.
    bool m_isOver = false;
};

} // namespace wmsg::proxy

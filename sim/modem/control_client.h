// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtNetwork/QLocalSocket>

#include <chrono>

/// The commanding side of the control socket of wmsg-sim-modem; docs/simulators.md has the
/// commands.
namespace wmsg::sim {

/// ControlOutcome is what became of the commands.
struct ControlOutcome {
    enum Kind {
        Done, ///< All of them were obeyed.
        Refused, ///< One was not, and those behind it were not tried.
        NotReached ///< No simulator, or not all answers in time: nobody knows what was done.
    };

    Kind kind = NotReached;
    /// Why, unless they were done; else what the last answer says behind "ok".
    QString text;
};

/// ControlRequest gives commands to the simulator at the control socket `path`, one by one, from an
/// event loop. It is its owner's; deleting it gives no further command.
class ControlRequest : public QObject {
    Q_OBJECT

public:
    /// ControlRequest begins. Whatever happens, finished() is not emitted before the event loop
    /// runs. A command has no line feed in it.
    ControlRequest(const QString &path, const QByteArrayList &commands,
                   std::chrono::milliseconds timeout, QObject *parent = nullptr);

Q_SIGNALS:
    /// finished tells the outcome, once. The request may be deleted from there with deleteLater().
    void finished(const wmsg::sim::ControlOutcome &outcome);

private:
    void writeNext();
    void read();
    void take(const QByteArray &answer);
    void fail();
    void end(ControlOutcome::Kind kind, const QString &text);

    QLocalSocket m_socket;
    QTimer m_timer;
    QByteArrayList m_commands; // that were not given yet
    QByteArray m_received;
    bool m_hasEnded = false;
};

/// deliverCommand returns the command that delivers a message from the network: a service centre
/// with its length, which may be 0, and a TPDU.
[[nodiscard]] QByteArray deliverCommand(const QByteArray &serviceCentreAndTpdu);

} // namespace wmsg::sim

Q_DECLARE_METATYPE(wmsg::sim::ControlOutcome)

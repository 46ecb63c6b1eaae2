// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/telephonyd/client_socket.h"
#include "services/telephonyd/inbox.h"
#include "services/telephonyd/modem.h"
#include "services/telephonyd/offers.h"
#include "services/telephonyd/outbox.h"
#include "services/telephonyd/port_table.h"
#include "services/telephonyd/spool.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <sys/types.h>

namespace wmsg::telephonyd {

/// What the daemon is told, but for its modem.
struct DaemonSettings {
    QString socket;
    mode_t socketMode = 0600;
    QString spool;
    std::chrono::milliseconds giveUp = std::chrono::hours(24);
    std::chrono::milliseconds partLifetime = std::chrono::hours(24);
};

/// TelephonyDaemon is the daemon: it makes the parts, hands them the records of clients and what
/// the modem tells, and writes what becomes of it to the clients.
class TelephonyDaemon : public QObject {
    Q_OBJECT

public:
    /// How long stopping waits for the outcome of a message that the modem has.
    static constexpr std::chrono::seconds kPatience{30};

    TelephonyDaemon(DaemonSettings settings, std::unique_ptr<Modem> modem,
                    QObject *parent = nullptr);
    ~TelephonyDaemon() override;

    /// start opens the spool, listens, takes up what the spool holds and looks for the modem. It
    /// returns the problem in words, or an empty text.
    [[nodiscard]] QString start();

    /// stop sends nothing more, and waits for the outcome of a message that the modem has, so that
    /// the next daemon does not send it again; stopped() tells when the daemon can be deleted. A
    /// second call does not wait.
    void stop();

Q_SIGNALS:
    void stopped();

private:
    /// A request that the modem has to answer.
    struct CenterRequest {
        SessionId session;
        quint16 number;
        QByteArray center;
    };

    void connectModem();
    void connectClients();

    void open(ClientSession &session);
    void close(SessionId session, const QByteArray &client);
    void obey(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool take(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeSend(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeResultTaken(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeMessageAnswer(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeRegister(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeDeregister(ClientSession &session, const telephony::Frame &frame);
    [[nodiscard]] bool takeServiceCenter(ClientSession &session, const telephony::Frame &frame);
    static void answer(ClientSession &session, quint16 number, telephony::Answer answer);
    void lookForAll();

    void changeModem(TAPI_MODEM_E state, const QByteArray &serviceCenter);
    void setNextCenter();
    void centerIsSet(bool isDone);
    void tellResult(const QByteArray &client, const telephony::Result &result);
    void tell(ClientSession &session, const telephony::Result &result);

    const DaemonSettings m_settings;
    const std::unique_ptr<Modem> m_modem;
    Spool m_spool;
    Inbox m_inbox;
    Outbox m_outbox;
    PortTable m_ports;
    ClientSocket m_clients;
    Offers m_offers;
    TAPI_MODEM_E m_state = TAPI_MODEM_ABSENT;
    QByteArray m_serviceCenter;
    std::deque<CenterRequest> m_centers; ///< the modem has the first of them
    std::map<SessionId, std::set<qint32>> m_told; ///< results that wait to be confirmed
    QTimer m_stopping;
};

} // namespace wmsg::telephonyd

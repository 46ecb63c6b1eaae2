// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/sms_pdu/tpdu.h"
#include "sim/common/pdu_files.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QString>

namespace wmsg::sim {

/// Network is what lies behind the antenna of the modem: it takes the messages of the phone, and
/// keeps those for the phone until the modem has taken them.
class Network : public QObject {
    Q_OBJECT

public:
    struct Settings {
        bool isLoopback = false; ///< what the phone sends comes back to it
        QString serviceCentre; ///< of what comes back
    };

    /// What became of a message of the phone.
    struct Submission {
        int cause = 0; ///< why the network refused it; 0: it did not
        quint8 reference = 0;
        bool isAnswerLost = false; ///< the connection to the modem breaks before the answer
    };

    /// `log` outlives the network.
    Network(Settings settings, PduFiles &log, QObject *parent = nullptr);

    /// submit takes a message of the phone, or refuses it. `message` is what `tpdu` says.
    Submission submit(const QByteArray &serviceCentre, const QByteArray &tpdu,
                      const smspdu::Tpdu &message);

    /// deliver keeps a message for the phone, a service centre with its length and a TPDU. It
    /// returns why it is none; an empty text when it is one. Only a raw one is not read.
    [[nodiscard]] QString deliver(const QByteArray &pdu, bool isRaw = false);

    [[nodiscard]] bool hasMessage() const { return !m_waiting.isEmpty(); }
    [[nodiscard]] const QByteArray &message() const { return m_waiting.head(); }
    /// takeMessage takes the next message, because the modem has it now.
    QByteArray takeMessage();

    void failNext(int cause, int count);
    void loseNextAnswer() { m_isNextAnswerLost = true; }

    [[nodiscard]] int accepted() const { return m_accepted; }
    [[nodiscard]] int delivered() const { return m_delivered; }
    [[nodiscard]] int waiting() const { return static_cast<int>(m_waiting.size()); }

Q_SIGNALS:
    /// messageWaiting tells that there is one more for the phone.
    void messageWaiting();

private:
    void sendBack(const smspdu::Tpdu &message);

    Settings m_settings;
    PduFiles &m_log;
    QQueue<QByteArray> m_waiting;
    quint8 m_reference = 0;
    int m_failures = 0;
    int m_cause = 0;
    bool m_isNextAnswerLost = false;
    int m_accepted = 0;
    int m_delivered = 0;
};

} // namespace wmsg::sim

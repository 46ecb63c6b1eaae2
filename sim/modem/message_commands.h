// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/modem/at_terminal.h"
#include "sim/modem/message_store.h"
#include "sim/modem/network.h"

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <array>

namespace wmsg::sim {

/// The causes of +CMS ERROR that the modem itself gives.
enum MessageError {
    kOperationNotAllowed = 302,
    kOperationNotSupported = 303,
    kInvalidPdu = 304,
    kInvalidParameter = 305,
    kSimPinRequired = 311,
    kInvalidIndex = 321,
    kMemoryFull = 322,
    kNoServiceCentre = 330,
};

/// MessageCommands is the part of the modem that short messages go through: the memories of the
/// card ("SM") and of the phone ("ME"), and the commands for them, in PDU mode.
class MessageCommands : public QObject {
    Q_OBJECT

public:
    struct Settings {
        int places = 20; ///< of each memory
        QByteArray serviceCentre; ///< of messages that name none
    };

    /// `network` outlives it.
    MessageCommands(const Settings &settings, Network &network, QObject *parent = nullptr);

    [[nodiscard]] static bool knows(const QByteArray &command);
    AtAnswer obey(const AtCommand &command);
    /// enter takes the text that a command has asked for; answered() follows.
    void enter(const QByteArray &text, bool isWhole);
    /// fetch takes what waits in the network, as far as there is room.
    void fetch();
    /// restart brings back what the modem begins with; the memories stay.
    void restart();

    void setDelay(int milliseconds) { m_delay.setInterval(milliseconds); }
    /// setReachable decides whether the network finds the modem.
    void setReachable(bool isReachable) { m_isReachable = isReachable; }
    void setLocked(bool isLocked) { m_isLocked = isLocked; }
    [[nodiscard]] bool isLocked() const { return m_isLocked; }
    [[nodiscard]] StoredMessage *messageAt(int store, int place)
    {
        return m_stores[static_cast<size_t>(store)].at(place);
    }
    bool removeMessage(int store, int place)
    {
        return m_stores[static_cast<size_t>(store)].remove(place);
    }
    [[nodiscard]] int used(int store) const { return m_stores[static_cast<size_t>(store)].used(); }
    [[nodiscard]] int places() const { return m_stores[0].size(); }

Q_SIGNALS:
    /// answered tells the end of a command that asked for a text.
    void answered(const wmsg::sim::AtAnswer &answer);
    /// arrived tells the lines that nobody asked for.
    void arrived(const QByteArrayList &lines);
    /// answerLost tells that the network has a message, and the modem is to break off.
    void answerLost();

private:
    using Handler = AtAnswer (MessageCommands::*)(const AtCommand &command);
    struct Row {
        const char *name;
        Handler handler;
    };
    static const Row kRows[];

    AtAnswer service(const AtCommand &command); // +CSMS
    AtAnswer format(const AtCommand &command); // +CMGF
    AtAnswer centre(const AtCommand &command); // +CSCA
    AtAnswer memories(const AtCommand &command); // +CPMS
    AtAnswer indications(const AtCommand &command); // +CNMI
    AtAnswer moreMessages(const AtCommand &command); // +CMMS
    AtAnswer list(const AtCommand &command); // +CMGL
    AtAnswer read(const AtCommand &command); // +CMGR
    AtAnswer remove(const AtCommand &command); // +CMGD
    AtAnswer send(const AtCommand &command); // +CMGS
    AtAnswer sendStored(const AtCommand &command); // +CMSS
    AtAnswer write(const AtCommand &command); // +CMGW

    AtAnswer ask(const AtCommand &command);
    AtAnswer submitOrStore(const QByteArray &text, bool isWhole);
    AtAnswer submission(const QByteArray &answer, const QByteArray &pdu);
    AtAnswer setMemories(const AtCommand &command);
    void answer();
    void indicate(const QByteArrayList &lines);
    bool takeMessage();
    [[nodiscard]] QByteArray usage(int role) const;
    MessageStore &store(int role);

    Network &m_network;
    QByteArray m_serviceCentre;
    std::array<MessageStore, 2> m_stores; // of kStoreNames
    std::array<int, 3> m_memory = {}; // to read, to write, and of what comes
    std::array<int, 5> m_indications = {};
    QByteArrayList m_heldBack; // indications
    int m_length = 0; // of the TPDU that was announced
    int m_state = -1; // to be stored with; -1 when it is to be sent
    bool m_isLocked = false;
    bool m_isReachable = true;
    QTimer m_room; // there may be some for what waits, when the command has its answer
    QTimer m_delay;
    AtAnswer m_answer; // after the delay
    bool m_isAnswerLost = false;
};

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/tapi_client.h"
#include "platform/telephony/tapi_sms.h"
#include "platform/telephony/telephony_records_p.h"
#include "platform/telephony/telephony_socket_p.h"
#include "platform/telephony/util_tapi_device.h"
#include "platform/telephony/util_tapi_event.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QPointer>
#include <QtCore/QQueue>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <memory>
#include <optional>

namespace wmsg::telephony {

/// TelephonyClient is one client of the daemon: what stands behind a handle.
///
/// Frames are read when they arrive. Answers to requests and changes of the service centre count at
/// once; what is to be told waits in a queue for the device, and for the event loop. A device may
/// end the client from inside an event, so each step of the delivery asks whether there is anything
/// left to do.
class TelephonyClient final : public QObject, public std::enable_shared_from_this<TelephonyClient> {
public:
    /// open connects and greets, and returns null when the daemon does not welcome.
    static std::shared_ptr<TelephonyClient> open(const QByteArray &name, quint32 events);
    TelephonyClient(const QByteArray &name, quint32 events);

    void attach(UTIL_TAPI_Device *device);
    /// close ends the connection for good. A message that is being told counts as answered.
    void close();

    /// send numbers `record` and hands it to the daemon; it is kept until its result is there.
    TAPI_RESULT_E send(Send record, qint32 &reference);
    TAPI_RESULT_E registerPort(quint16 port, quint8 mode);
    TAPI_RESULT_E deregisterPort(quint16 port);
    TAPI_RESULT_E setServiceCenter(const QByteArray &number);
    [[nodiscard]] QByteArray serviceCenter() const { return m_serviceCenter; }

private:
    enum class Phase {
        Away, ///< not connected; a timer may be running
        Greeting, ///< connected, not welcome yet
        Ready,
        Closed, ///< for good
    };

    /// A thing to be told, as the event that tells it, and what is answered when it was told.
    struct Told {
        UTIL_TAPI_Event event;
        std::optional<quint64> messageId;
        std::optional<qint32> reference;
        quint16 port = 0; ///< of a message
    };

    // The connection.
    bool greet(QDeadlineTimer deadline);
    void watch();
    void unwatch();
    void receive();
    void lose(Phase next);
    void pause();
    void retry();
    void resume();
    template <typename Record> void write(const Record &record, quint16 number = 0);

    // What arrives. False: it makes no sense.
    bool take(const Frame &frame);
    bool takeWelcome(const Frame &frame);
    bool takeDone(const Frame &frame);
    bool takeResult(const Frame &frame);
    bool takeMessage(const Frame &frame);
    bool takeModemState(const Frame &frame);
    void setModem(quint32 modem);
    void giveUpUnfinished();

    // What is told.
    template <typename Record> void tell(TAPI_EVENT_E type, const Record &record);
    void tell(const Told &told);
    void deliver();
    [[nodiscard]] bool isWanted(const Told &told) const;
    void answer(const Told &told);
    void forgetMessages();

    // Requests that wait for their answer.
    template <typename Record> TAPI_RESULT_E ask(const Record &record);
    quint16 nextNumber();

    const QByteArray m_name;
    const quint32 m_events;
    const QByteArray m_id;

    Phase m_phase = Phase::Away;
    DaemonSocket m_socket;
    FrameReader m_reader;
    std::unique_ptr<QSocketNotifier> m_reading;
    std::unique_ptr<QSocketNotifier> m_writing;
    QTimer m_timer;
    int m_pause = 0;

    quint32 m_modem = TAPI_MODEM_ABSENT;
    QByteArray m_serviceCenter;
    QMap<quint16, quint8> m_ports; ///< port -> mode
    qint32 m_lastReference = 0;
    QMap<qint32, Send> m_unfinished;
    quint16 m_lastNumber = 0;
    quint16 m_awaited = 0; ///< the request that waits, 0: none
    std::optional<Answer> m_answer;
    QHash<quint16, quint16> m_renewals; ///< request -> port
    QList<quint64> m_takenMessages; ///< the latest ones

    QPointer<UTIL_TAPI_Device> m_device;
    QQueue<Told> m_queue;
    QTimer m_delivery; ///< of the queue, from the event loop
    QList<const Told *> m_beingTold;
};

} // namespace wmsg::telephony

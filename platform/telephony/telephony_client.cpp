// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/telephony_client_p.h"

#include <QtCore/QDateTime>
#include <QtCore/QRandomGenerator>
#include <QtCore/QtEndian>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

namespace wmsg::telephony {

namespace {

/// The longest that a daemon may take to answer.
constexpr std::chrono::seconds kPatience(10);

// The pauses between attempts to connect again, in milliseconds. Each is twice the one before;
// when a pause would be longer than kPatientPause, unfinished messages are given up.
constexpr int kFirstPause = 50;
constexpr int kPatientPause = 1600;
constexpr int kLongestPause = 30000;

/// What may wait to be sent, in bytes, before new messages are refused.
constexpr qsizetype kMostUnsent = 1 << 20;

/// So many messages are remembered as taken.
constexpr qsizetype kRememberedMessages = 64;

QByteArray newClientId()
{
    quint32 words[kClientIdSize / sizeof(quint32)];
    QRandomGenerator::system()->fillRange(words);
    return QByteArray(reinterpret_cast<const char *>(words), sizeof words);
}

template <typename Record> QByteArray bytesOf(const Record &record)
{
    return QByteArray(reinterpret_cast<const char *>(&record), sizeof record);
}

template <size_t size> void setNumber(char (&field)[size], const QByteArray &number)
{
    memcpy(field, number.constData(), std::min(static_cast<size_t>(number.size()), size - 1));
}

void setTime(TAPI_SMS_INCOMING_S &record, qint64 seconds)
{
    constexpr int kLastYear = 9999;
    const QDateTime time = QDateTime::fromSecsSinceEpoch(seconds);
    if (seconds == 0 || !time.isValid() || time.date().year() < 1
        || time.date().year() > kLastYear) {
        return;
    }
    record.year = static_cast<quint16>(time.date().year());
    record.month = static_cast<quint8>(time.date().month());
    record.day = static_cast<quint8>(time.date().day());
    record.hour = static_cast<quint8>(time.time().hour());
    record.minute = static_cast<quint8>(time.time().minute());
    record.second = static_cast<quint8>(time.time().second());
}

/// The record of event 774.
QByteArray incomingRecord(const Message &message)
{
    TAPI_SMS_INCOMING_S head = {};
    head.dataCoding = static_cast<quint32>(message.coding);
    head.port1 = message.hasPorts ? message.destinationPort : 0;
    head.port2 = message.hasPorts ? message.sourcePort : 0;
    setNumber(head.serviceCenter, message.serviceCenter);
    setNumber(head.sender, message.sender);
    setTime(head, message.time);
    head.msgLength = static_cast<quint16>(message.body.size());

    QByteArray record = bytesOf(head).left(offsetof(TAPI_SMS_INCOMING_S, body)) + message.body;
    if (message.coding == Coding::Ucs2) {
        char *body = record.data() + offsetof(TAPI_SMS_INCOMING_S, body);
        qFromLittleEndian<quint16>(body, message.body.size() / 2, body);
        record.append(2, '\0');
    }
    return record;
}

TAPI_RESULT_E resultOf(Answer answer)
{
    switch (answer) {
    case Answer::Ok:
        return TAPI_OK;
    case Answer::PortTaken:
    case Answer::NotRegistered:
        return TAPI_REFUSED;
    case Answer::Invalid:
        return TAPI_INVALID;
    case Answer::NoModem:
        break;
    }
    return TAPI_NO_SERVICE;
}

} // namespace

std::shared_ptr<TelephonyClient> TelephonyClient::open(const QByteArray &name, quint32 events)
{
    const auto client = std::make_shared<TelephonyClient>(name, events);
    const QDeadlineTimer deadline(kPatience);
    if (!client->greet(deadline)) {
        return nullptr;
    }
    while (client->m_phase == Phase::Greeting && client->m_socket.wait(deadline)) {
        client->receive();
    }
    return client->m_phase == Phase::Ready ? client : nullptr;
}

TelephonyClient::TelephonyClient(const QByteArray &name, quint32 events)
    : m_name(name), m_events(events), m_id(newClientId())
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TelephonyClient::retry);
    m_delivery.setSingleShot(true);
    m_delivery.setInterval(0);
    connect(&m_delivery, &QTimer::timeout, this, &TelephonyClient::deliver);
}

void TelephonyClient::attach(UTIL_TAPI_Device *device)
{
    m_device = device;
    m_delivery.start();
}

void TelephonyClient::close()
{
    for (const Told *told : std::as_const(m_beingTold)) {
        answer(*told);
    }
    unwatch();
    m_timer.stop();
    m_delivery.stop();
    m_socket.close();
    m_phase = Phase::Closed;
    m_device.clear();
    m_queue.clear();
    m_unfinished.clear();
}

// The connection.

bool TelephonyClient::greet(QDeadlineTimer deadline)
{
    m_reader = FrameReader();
    if (!m_socket.connectTo(socketPath(), deadline)) {
        return false;
    }
    m_phase = Phase::Greeting;
    watch();
    Hello hello;
    hello.clientId = m_id;
    hello.events = m_events;
    hello.name = m_name;
    write(hello);
    return true;
}

void TelephonyClient::watch()
{
    m_reading = std::make_unique<QSocketNotifier>(m_socket.descriptor(), QSocketNotifier::Read);
    connect(m_reading.get(), &QSocketNotifier::activated, this, &TelephonyClient::receive);
    m_writing = std::make_unique<QSocketNotifier>(m_socket.descriptor(), QSocketNotifier::Write);
    m_writing->setEnabled(false);
    connect(m_writing.get(), &QSocketNotifier::activated, this, [this] {
        m_socket.flush();
        m_writing->setEnabled(m_socket.unsent() > 0);
    });
}

/// The notifiers stay until they are replaced: one of them may be the caller.
void TelephonyClient::unwatch()
{
    if (m_reading) {
        m_reading->setEnabled(false);
        m_writing->setEnabled(false);
    }
}

template <typename Record> void TelephonyClient::write(const Record &record, quint16 number)
{
    m_socket.send(toFrame(record, number));
    m_writing->setEnabled(m_socket.unsent() > 0);
}

void TelephonyClient::receive()
{
    if (!m_socket.isOpen()) {
        return;
    }
    const bool isConnected = m_socket.receive(m_reader);
    Frame frame;
    while (m_reader.next(frame)) {
        if (!take(frame)) {
            lose(Phase::Closed);
            return;
        }
    }
    if (m_reader.isBroken()) {
        lose(Phase::Closed);
    } else if (!isConnected) {
        lose(Phase::Away);
    }
}

/// What speaks no sense is not asked again; a daemon that went is.
void TelephonyClient::lose(Phase next)
{
    const bool wasReady = m_phase == Phase::Ready;
    unwatch();
    m_socket.close();
    m_phase = next;
    m_renewals.clear();
    m_serviceCenter.clear();
    forgetMessages();
    setModem(TAPI_MODEM_ABSENT);
    if (next == Phase::Closed) {
        m_timer.stop();
        giveUpUnfinished();
        return;
    }
    m_pause = wasReady ? kFirstPause : m_pause;
    pause();
}

void TelephonyClient::pause()
{
    if (m_pause > kPatientPause) {
        giveUpUnfinished();
    }
    m_timer.start(m_pause);
}

/// The pause is over, or a daemon did not answer the greeting.
void TelephonyClient::retry()
{
    if (m_phase == Phase::Greeting) {
        giveUpUnfinished(); // it had the longest pause of all
    }
    unwatch();
    m_socket.close();
    m_phase = Phase::Away;
    m_pause = std::min(2 * m_pause, kLongestPause);
    if (greet(QDeadlineTimer(0))) {
        m_timer.start(kPatience);
    } else {
        pause();
    }
}

/// Takes up where the connection before this one ended.
void TelephonyClient::resume()
{
    for (auto port = m_ports.cbegin(); port != m_ports.cend(); ++port) {
        RegisterPort record;
        record.port = port.key();
        record.mode = port.value();
        const quint16 number = nextNumber();
        m_renewals.insert(number, record.port);
        write(record, number);
    }
    for (const Send &record : std::as_const(m_unfinished)) {
        write(record);
    }
}

// What arrives.

bool TelephonyClient::take(const Frame &frame)
{
    if (m_phase == Phase::Greeting) {
        return frame.type == RecordType::Welcome && takeWelcome(frame);
    }
    switch (frame.type) {
    case RecordType::Done:
        return takeDone(frame);
    case RecordType::Result:
        return takeResult(frame);
    case RecordType::Message:
        return takeMessage(frame);
    case RecordType::ModemState:
        return takeModemState(frame);
    default:
        return true; // of a daemon that can do more
    }
}

bool TelephonyClient::takeWelcome(const Frame &frame)
{
    Welcome welcome;
    if (!fromPayload(frame.payload, welcome) || welcome.version != kVersion) {
        return false;
    }
    m_timer.stop();
    m_phase = Phase::Ready;
    m_serviceCenter = welcome.serviceCenter;
    setModem(welcome.modem);
    resume();
    return true;
}

bool TelephonyClient::takeDone(const Frame &frame)
{
    Done done;
    if (!fromPayload(frame.payload, done)) {
        return false;
    }
    if (m_awaited != 0 && frame.number == m_awaited) {
        m_answer = done.answer;
    } else if (m_renewals.contains(frame.number)) {
        const quint16 port = m_renewals.take(frame.number);
        if (done.answer != Answer::Ok && m_ports.remove(port) > 0) {
            tell(TAPI_EVENT_PORT_LOST, TAPI_PORT_LOST_S{port});
        }
    }
    return true;
}

bool TelephonyClient::takeResult(const Frame &frame)
{
    Result result;
    if (!fromPayload(frame.payload, result)) {
        return false;
    }
    if (m_unfinished.remove(result.reference) == 0) {
        // It was told already, or given up.
        ResultTaken taken;
        taken.reference = result.reference;
        write(taken);
        return true;
    }
    const TAPI_SMS_RESULT_S record = {result.reference, result.networkReference, result.status};
    tell({UTIL_TAPI_Event(TAPI_EVENT_SMS_RESULT, bytesOf(record)), {}, result.reference});
    return true;
}

bool TelephonyClient::takeMessage(const Frame &frame)
{
    Message message;
    if (!fromPayload(frame.payload, message)) {
        return false;
    }
    if (m_takenMessages.contains(message.id)) {
        // The answer to it was lost with the connection.
        MessageAnswer again;
        again.id = message.id;
        again.isTaken = true;
        write(again);
        return true;
    }
    tell({UTIL_TAPI_Event(TAPI_EVENT_SMS_INCOMING, incomingRecord(message)),
          message.id,
          {},
          message.hasPorts ? message.destinationPort : quint16(0)});
    return true;
}

bool TelephonyClient::takeModemState(const Frame &frame)
{
    ModemState state;
    if (!fromPayload(frame.payload, state)) {
        return false;
    }
    m_serviceCenter = state.serviceCenter;
    setModem(state.modem);
    return true;
}

void TelephonyClient::setModem(quint32 modem)
{
    if (std::exchange(m_modem, modem) != modem) {
        tell(TAPI_EVENT_MODEM, TAPI_MODEM_S{modem});
    }
}

void TelephonyClient::giveUpUnfinished()
{
    const QMap<qint32, Send> unfinished = std::exchange(m_unfinished, {});
    for (const Send &record : unfinished) {
        tell(TAPI_EVENT_SMS_RESULT, TAPI_SMS_RESULT_S{record.reference, 0, TAPI_SMS_LOST});
    }
}

// What is told.

template <typename Record> void TelephonyClient::tell(TAPI_EVENT_E type, const Record &record)
{
    tell({UTIL_TAPI_Event(type, bytesOf(record)), {}, {}});
}

void TelephonyClient::tell(const Told &told)
{
    m_queue.enqueue(told);
    m_delivery.start();
}

void TelephonyClient::deliver()
{
    const auto self = shared_from_this();
    while (m_device && !m_queue.isEmpty()) {
        Told told = m_queue.dequeue();
        if (isWanted(told)) {
            m_beingTold.append(&told);
            Q_EMIT m_device->TAPI_SendEvent(&told.event);
            m_beingTold.removeOne(&told);
        } else {
            told.event.SetTaken(false);
        }
        answer(told);
    }
}

/// A message may have been under way when this client said that it wants no such ones.
bool TelephonyClient::isWanted(const Told &told) const
{
    const bool takesOthers = (m_events & TAPI_EVENTS_SMS) != 0
        && std::none_of(m_ports.cbegin(), m_ports.cend(),
                        [](quint8 mode) { return mode == SMS_RECV_MODE_PORTS; });
    return !told.messageId || takesOthers || (told.port != 0 && m_ports.contains(told.port));
}

void TelephonyClient::answer(const Told &told)
{
    if (told.messageId && told.event.IsTaken()) {
        m_takenMessages.append(*told.messageId);
        m_takenMessages = m_takenMessages.mid(m_takenMessages.size() - kRememberedMessages);
    }
    if (m_phase != Phase::Ready) {
        return;
    }
    if (told.messageId) {
        MessageAnswer record;
        record.id = *told.messageId;
        record.isTaken = told.event.IsTaken();
        write(record);
    }
    if (told.reference) {
        ResultTaken record;
        record.reference = *told.reference;
        write(record);
    }
}

/// The daemon offers again what was not answered.
void TelephonyClient::forgetMessages()
{
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(),
                                 [](const Told &told) { return told.messageId.has_value(); }),
                  m_queue.end());
}

// Requests.

quint16 TelephonyClient::nextNumber()
{
    m_lastNumber = m_lastNumber == UINT16_MAX ? 1 : m_lastNumber + 1;
    return m_lastNumber;
}

template <typename Record> TAPI_RESULT_E TelephonyClient::ask(const Record &record)
{
    if (m_phase != Phase::Ready) {
        return TAPI_NO_SERVICE;
    }
    m_awaited = nextNumber();
    m_answer.reset();
    write(record, m_awaited);
    const QDeadlineTimer deadline(kPatience);
    while (m_phase == Phase::Ready && !m_answer && m_socket.wait(deadline)) {
        receive();
    }
    m_awaited = 0;
    if (m_answer) {
        return resultOf(*m_answer);
    }
    if (m_phase == Phase::Ready) {
        lose(Phase::Away); // what it does with the request later cannot be known
    }
    return TAPI_NO_SERVICE;
}

TAPI_RESULT_E TelephonyClient::send(Send record, qint32 &reference)
{
    if (m_phase != Phase::Ready || m_socket.unsent() > kMostUnsent) {
        return TAPI_NO_SERVICE;
    }
    do {
        m_lastReference = m_lastReference == INT32_MAX ? 1 : m_lastReference + 1;
    } while (m_unfinished.contains(m_lastReference));
    record.reference = m_lastReference;
    m_unfinished.insert(record.reference, record);
    write(record);
    reference = record.reference;
    return TAPI_OK;
}

TAPI_RESULT_E TelephonyClient::registerPort(quint16 port, quint8 mode)
{
    RegisterPort record;
    record.port = port;
    record.mode = mode;
    const TAPI_RESULT_E result = ask(record);
    if (result == TAPI_OK) {
        m_ports.insert(port, mode);
    }
    return result;
}

TAPI_RESULT_E TelephonyClient::deregisterPort(quint16 port)
{
    DeregisterPort record;
    record.port = port;
    const TAPI_RESULT_E result = ask(record);
    if (result == TAPI_OK) {
        m_ports.remove(port);
    }
    return result;
}

TAPI_RESULT_E TelephonyClient::setServiceCenter(const QByteArray &number)
{
    SetServiceCenter record;
    record.number = number;
    const TAPI_RESULT_E result = ask(record);
    if (result == TAPI_OK) {
        m_serviceCenter = number;
    }
    return result;
}

} // namespace wmsg::telephony

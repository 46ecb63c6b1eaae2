// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/telephony_daemon.h"

#include <QtCore/QLoggingCategory>

#include <utility>

namespace wmsg::telephonyd {

using telephony::Answer;
using telephony::Frame;
using telephony::fromPayload;
using telephony::RecordType;

namespace {

Q_LOGGING_CATEGORY(kDaemon, "wmsg.telephonyd", QtInfoMsg)

/// How many requests for another service centre may wait.
constexpr size_t kMostCenters = 16;

const char *nameOf(TAPI_MODEM_E state)
{
    switch (state) {
    case TAPI_MODEM_ABSENT:
        return "absent";
    case TAPI_MODEM_STARTING:
        return "starting";
    case TAPI_MODEM_READY:
        return "ready";
    case TAPI_MODEM_BLOCKED:
        break;
    }
    return "blocked";
}

} // namespace

TelephonyDaemon::TelephonyDaemon(DaemonSettings settings, std::unique_ptr<Modem> modem,
                                 QObject *parent)
    : QObject(parent), m_settings(std::move(settings)), m_modem(std::move(modem)),
      m_spool(m_settings.spool), m_inbox(m_spool, m_settings.partLifetime),
      m_outbox(m_spool, *m_modem, m_settings.giveUp), m_offers(m_inbox, m_ports, m_clients)
{
    m_stopping.setSingleShot(true);
    connect(&m_stopping, &QTimer::timeout, this, &TelephonyDaemon::stopped);
    connectModem();
    connectClients();
}

TelephonyDaemon::~TelephonyDaemon() = default;

QString TelephonyDaemon::start()
{
    QString problem = m_spool.open();
    if (!problem.isEmpty()) {
        return problem;
    }
    // Before anybody can ask: a client that comes first repeats what the spool may know.
    m_inbox.restore();
    m_outbox.restore();
    problem = m_clients.listen(m_settings.socket, m_settings.socketMode);
    if (problem.isEmpty()) {
        m_modem->start();
    }
    return problem;
}

void TelephonyDaemon::stop()
{
    m_outbox.stop();
    const bool isAgain = m_stopping.isActive();
    m_stopping.start(m_outbox.isSending() && !isAgain ? kPatience : std::chrono::seconds(0));
}

void TelephonyDaemon::connectModem()
{
    connect(m_modem.get(), &Modem::stateChanged, this, &TelephonyDaemon::changeModem);
    connect(m_modem.get(), &Modem::serviceCenterSet, this, &TelephonyDaemon::centerIsSet);
    connect(m_modem.get(), &Modem::arrived, &m_inbox, &Inbox::arrived);
    connect(m_modem.get(), &Modem::forgotten, &m_inbox, &Inbox::forgotten);
    connect(&m_inbox, &Inbox::safe, m_modem.get(), [this](const QByteArray &place) {
        if (!place.isEmpty()) {
            m_modem->forget(place);
        }
    });
    connect(&m_outbox, &Outbox::idle, this, [this] {
        if (m_stopping.isActive()) {
            m_stopping.start(0);
        }
    });
}

void TelephonyDaemon::connectClients()
{
    connect(&m_clients, &ClientSocket::opened, this, &TelephonyDaemon::open);
    connect(&m_clients, &ClientSocket::closed, this, &TelephonyDaemon::close);
    connect(&m_clients, &ClientSocket::received, this, &TelephonyDaemon::obey);
    connect(&m_outbox, &Outbox::finished, this, &TelephonyDaemon::tellResult);
}

void TelephonyDaemon::open(ClientSession &session)
{
    telephony::Welcome welcome;
    welcome.modem = m_state;
    welcome.serviceCenter = m_serviceCenter;
    session.send(welcome);
    const QByteArray client = session.hello().clientId;
    m_outbox.clientCame(client);
    const auto results = m_outbox.results(client);
    for (const telephony::Result &result : results) {
        tell(session, result);
    }
    m_offers.look(session);
}

void TelephonyDaemon::close(SessionId session, const QByteArray &client)
{
    m_ports.removeAll(session);
    m_offers.closed(session);
    m_told.erase(session);
    m_outbox.clientWent(client);
    lookForAll(); // a message to one of its ports may be others' now
}

void TelephonyDaemon::obey(ClientSession &session, const Frame &frame)
{
    if (!take(session, frame)) {
        session.drop("it sent a record that makes no sense");
    }
}

bool TelephonyDaemon::take(ClientSession &session, const Frame &frame)
{
    qCDebug(kDaemon, "session %llu: record %d of %lld bytes", session.id(),
            static_cast<int>(frame.type), static_cast<long long>(frame.payload.size()));
    switch (frame.type) {
    case RecordType::Send:
        return takeSend(session, frame);
    case RecordType::RegisterPort:
        return takeRegister(session, frame);
    case RecordType::DeregisterPort:
        return takeDeregister(session, frame);
    case RecordType::SetServiceCenter:
        return takeServiceCenter(session, frame);
    case RecordType::MessageAnswer:
        return takeMessageAnswer(session, frame);
    case RecordType::ResultTaken:
        return takeResultTaken(session, frame);
    default:
        return true; // of a client that can do more
    }
}

bool TelephonyDaemon::takeSend(ClientSession &session, const Frame &frame)
{
    telephony::Send send;
    if (!fromPayload(frame.payload, send)) {
        return false;
    }
    m_outbox.take(session.hello().clientId, send);
    return true;
}

bool TelephonyDaemon::takeResultTaken(ClientSession &session, const Frame &frame)
{
    telephony::ResultTaken record;
    if (!fromPayload(frame.payload, record)) {
        return false;
    }
    m_told[session.id()].erase(record.reference);
    m_outbox.resultTaken(session.hello().clientId, record.reference);
    return true;
}

bool TelephonyDaemon::takeMessageAnswer(ClientSession &session, const Frame &frame)
{
    telephony::MessageAnswer record;
    if (!fromPayload(frame.payload, record)) {
        return false;
    }
    m_offers.answered(session.id(), record.id, record.isTaken);
    return true;
}

bool TelephonyDaemon::takeRegister(ClientSession &session, const Frame &frame)
{
    telephony::RegisterPort record;
    if (!fromPayload(frame.payload, record)) {
        return false;
    }
    answer(session, frame.number, m_ports.add(session.id(), record.port, record.mode));
    m_offers.look(session);
    return true;
}

bool TelephonyDaemon::takeDeregister(ClientSession &session, const Frame &frame)
{
    telephony::DeregisterPort record;
    if (!fromPayload(frame.payload, record)) {
        return false;
    }
    const Answer result = m_ports.remove(session.id(), record.port);
    answer(session, frame.number, result);
    if (result == Answer::Ok) {
        lookForAll();
    }
    return true;
}

bool TelephonyDaemon::takeServiceCenter(ClientSession &session, const Frame &frame)
{
    telephony::SetServiceCenter record;
    if (!fromPayload(frame.payload, record)) {
        return false;
    }
    if (!isNumber(record.number)) {
        answer(session, frame.number, Answer::Invalid);
    } else if (m_state != TAPI_MODEM_READY || m_centers.size() >= kMostCenters) {
        answer(session, frame.number, Answer::NoModem);
    } else {
        m_centers.push_back({session.id(), frame.number, record.number});
        if (m_centers.size() == 1) {
            setNextCenter();
        }
    }
    return true;
}

void TelephonyDaemon::answer(ClientSession &session, quint16 number, Answer result)
{
    telephony::Done done;
    done.answer = result;
    session.send(done, number);
}

void TelephonyDaemon::lookForAll()
{
    m_clients.forEach([this](ClientSession &session) { m_offers.look(session); });
}

void TelephonyDaemon::changeModem(TAPI_MODEM_E state, const QByteArray &serviceCenter)
{
    if (state != m_state) {
        qCInfo(kDaemon, "the modem is %s", nameOf(state));
    }
    m_state = state;
    m_serviceCenter = serviceCenter;
    telephony::ModemState record;
    record.modem = state;
    record.serviceCenter = serviceCenter;
    m_clients.forEach([&record](ClientSession &session) { session.send(record); });
    m_outbox.setReady(state == TAPI_MODEM_READY);
}

void TelephonyDaemon::setNextCenter()
{
    if (!m_centers.empty()) {
        m_modem->setServiceCenter(m_centers.front().center);
    }
}

void TelephonyDaemon::centerIsSet(bool isDone)
{
    if (m_centers.empty()) {
        return;
    }
    const CenterRequest request = m_centers.front();
    m_centers.pop_front();
    if (ClientSession *session = m_clients.find(request.session)) {
        answer(*session, request.number, isDone ? Answer::Ok : Answer::NoModem);
    }
    setNextCenter();
}

void TelephonyDaemon::tellResult(const QByteArray &client, const telephony::Result &result)
{
    if (ClientSession *session = m_clients.sessionOf(client)) {
        tell(*session, result);
    }
}

/// A client that has come back repeats what it has no result of; it has just been told some.
void TelephonyDaemon::tell(ClientSession &session, const telephony::Result &result)
{
    std::set<qint32> &told = m_told[session.id()];
    if (told.size() > Outbox::kMost) {
        session.drop("it confirms no results");
    } else if (told.insert(result.reference).second) {
        session.send(result);
    }
}

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/telephonyd/gammu_worker.h"

#include "services/telephonyd/gammu_messages.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QMutexLocker>
#include <QtCore/QThread>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

using namespace std::chrono_literals;

namespace wmsg::telephonyd {

namespace {

Q_LOGGING_CATEGORY(kGammu, "wmsg.gammu", QtInfoMsg)

constexpr auto kPolling = 50ms;
constexpr auto kShortestPause = 1s;
constexpr auto kLongestPause = 60s;
/// How often the memories are looked through although nobody told of a message: an indication may
/// get lost, and a modem that does not answer is found out in this way.
constexpr std::chrono::milliseconds kBetweenScans = 60s;
/// The longest that networks are given to take a message.
constexpr auto kPatience = 120s;

/// How often libgammu repeats a command.
constexpr int kRepetitions = 2;
/// What a modem says that only says ERROR.
constexpr qint32 kCauseUnknown = 500;
constexpr qint32 kHighestCause = 65535;

/// Whether an error means that nothing can be asked of the modem any more.
bool isLoss(GSM_Error error)
{
    switch (error) {
    case ERR_DEVICEOPENERROR:
    case ERR_DEVICENOTEXIST:
    case ERR_DEVICENOTWORK:
    case ERR_DEVICEWRITEERROR:
    case ERR_DEVICEREADERROR:
    case ERR_TIMEOUT:
    case ERR_NOTCONNECTED:
    case ERR_ABORTED:
    case ERR_GETTING_SMSC:
        return true;
    default:
        return false;
    }
}

/// What frees the strings of a configuration is free().
void configure(GSM_StateMachine *machine, const GammuSettings &settings)
{
    GSM_Config *config = GSM_GetConfig(machine, 0);
    std::memset(config, 0, sizeof *config);
    config->Device = ::strdup(QFile::encodeName(settings.device).constData());
    config->Connection = ::strdup(settings.connection.toLatin1().constData());
    constexpr char kModel[] = "at";
    std::copy(std::begin(kModel), std::end(kModel), config->Model);
    // Messages are stored and told of: what is handed over is lost with whoever was to keep it.
    constexpr int kAsTheModemCan = -1;
    std::fill(std::begin(config->CNMIParams), std::end(config->CNMIParams), kAsTheModemCan);
    GSM_SetConfigNum(machine, 1);
}

} // namespace

GammuWorker::GammuWorker(GammuSettings settings)
    : m_settings(std::move(settings)), m_polling(this), m_retry(this), m_pause(kShortestPause)
{
    m_polling.setInterval(kPolling);
    connect(&m_polling, &QTimer::timeout, this, &GammuWorker::poll);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &GammuWorker::connectToModem);
}

GammuWorker::~GammuWorker()
{
    disconnectFromModem();
}

void GammuWorker::abort()
{
    m_isAborted = true;
    const QMutexLocker lock(&m_machineLock);
    if (m_machine) {
        GSM_AbortOperation(m_machine.get());
    }
}

void GammuWorker::abortIfGone()
{
    const QMutexLocker lock(&m_machineLock);
    if (m_machine && !isThere()) {
        GSM_AbortOperation(m_machine.get());
    }
}

void GammuWorker::start()
{
    connectToModem();
}

bool GammuWorker::isThere() const
{
    return m_machine && DeviceIdentity::of(m_settings.device) == m_device;
}

void GammuWorker::setState(TAPI_MODEM_E state)
{
    m_state = state;
    Q_EMIT stateChanged(m_state, m_serviceCenter);
}

void GammuWorker::connectToModem()
{
    m_device = DeviceIdentity::of(m_settings.device);
    if (m_isAborted) {
        return;
    }
    if (!m_device.isDevice()) {
        tryLater();
        return;
    }
    setState(TAPI_MODEM_STARTING);
    if (open() && prepare()) {
        qCInfo(kGammu, "%s is ready", qUtf8Printable(m_settings.device));
        m_pause = kShortestPause;
        m_isScanWanted = true;
        setState(TAPI_MODEM_READY);
        m_polling.start();
    } else if (m_state == TAPI_MODEM_STARTING) {
        disconnectFromModem();
        setState(TAPI_MODEM_ABSENT);
        tryLater();
    }
}

/// Opens the line and talks to what is at its end.
bool GammuWorker::open()
{
    {
        const QMutexLocker lock(&m_machineLock);
        m_machine.reset(GSM_AllocStateMachine());
        configure(m_machine.get(), m_settings);
    }
    const GSM_Error error = GSM_InitConnection(m_machine.get(), kRepetitions);
    if (error != ERR_NONE) {
        qCWarning(kGammu, "%s: no modem answers: %s", qUtf8Printable(m_settings.device),
                  GSM_ErrorName(error));
        return false;
    }
    GSM_SetSendSMSStatusCallback(m_machine.get(), takeStatus, this);
    GSM_SetIncomingSMSCallback(m_machine.get(), takeIncoming, this);
    return true;
}

/// Finds out whether the card can be used, and switches indications on.
bool GammuWorker::prepare()
{
    GSM_SecurityCodeType wanted = SEC_None;
    if (m_isAborted) {
        return false;
    }
    if (GSM_GetSecurityStatus(m_machine.get(), &wanted) == ERR_NONE && wanted != SEC_None) {
        qCWarning(kGammu, "%s: the card wants a code, which somebody must enter",
                  qUtf8Printable(m_settings.device));
        disconnectFromModem();
        setState(TAPI_MODEM_BLOCKED);
        tryLater();
        return false;
    }
    if (m_isAborted || !readServiceCenter()) {
        return false;
    }
    const GSM_Error error = GSM_SetIncomingSMS(m_machine.get(), 1);
    if (error != ERR_NONE) {
        qCWarning(kGammu, "%s: the modem will not tell of messages: %s",
                  qUtf8Printable(m_settings.device), GSM_ErrorName(error));
    }
    return !isLoss(error);
}

/// False when there is no modem any more. One without a service centre is one.
bool GammuWorker::readServiceCenter()
{
    GSM_SMSC centre = {};
    centre.Location = 1;
    const GSM_Error error = GSM_GetSMSC(m_machine.get(), &centre);
    m_serviceCenter = error == ERR_NONE ? numberFromGammu(centre.Number) : QByteArray();
    return !isLoss(error);
}

void GammuWorker::disconnectFromModem()
{
    m_polling.stop();
    m_told.clear();
    m_unreadable.clear();
    std::unique_ptr<GSM_StateMachine, Freer> machine;
    {
        const QMutexLocker lock(&m_machineLock);
        machine = std::move(m_machine);
    }
    if (machine && GSM_IsConnected(machine.get())) {
        GSM_TerminateConnection(machine.get());
    }
}

void GammuWorker::lose(const char *what, GSM_Error error)
{
    qCWarning(kGammu, "%s: the modem is gone (%s: %s)", qUtf8Printable(m_settings.device), what,
              GSM_ErrorName(error));
    disconnectFromModem();
    setState(TAPI_MODEM_ABSENT);
    tryLater();
}

void GammuWorker::tryLater()
{
    if (!m_isAborted) {
        m_retry.start(m_pause);
        m_pause = std::min<std::chrono::milliseconds>(2 * m_pause, kLongestPause);
    }
}

void GammuWorker::poll()
{
    if (!isThere()) {
        lose("watching", ERR_DEVICENOTEXIST);
        return;
    }
    if (GSM_ReadDevice(m_machine.get(), 0) < 0) {
        lose("reading", ERR_DEVICEREADERROR);
        return;
    }
    const bool isTime = !m_sinceScan.isValid() || m_sinceScan.hasExpired(kBetweenScans.count());
    if (m_isScanWanted || isTime) {
        scan();
    }
}

void GammuWorker::takeIncoming(GSM_StateMachine *, GSM_SMSMessage *message, void *worker)
{
    auto *self = static_cast<GammuWorker *>(worker);
    // No command can be given from here. The indication of a message has no state.
    if (message->State != SMS_UnRead || message->PDU != SMS_Deliver) {
        self->m_isScanWanted = true;
        return;
    }
    // A modem that cannot store has handed it over.
    if (const auto sms = fromGammu(*message)) {
        Q_EMIT self->arrived(*sms);
    }
}

/// Looks through the memories for messages that were not told of.
void GammuWorker::scan()
{
    m_isScanWanted = false;
    m_sinceScan.start();
    const auto messages = std::make_unique<GSM_MultiSMSMessage>();
    int last = -1;
    GSM_Error error = GSM_GetNextSMS(m_machine.get(), messages.get(), 1);
    while (error != ERR_EMPTY && !isLoss(error) && !m_isAborted) {
        const int location = messages->SMS[0].Location;
        if (location == last) {
            break; // it does not go on
        }
        last = location;
        if (error == ERR_NONE) {
            tell(messages->SMS[0]);
        } else if (!m_unreadable.contains(location)) {
            m_unreadable.insert(location);
            qCWarning(kGammu, "what lies at %d of the modem cannot be read: %s", location,
                      GSM_ErrorName(error));
        }
        messages->SMS[0].Folder = 0;
        messages->SMS[0].Location = location;
        error = GSM_GetNextSMS(m_machine.get(), messages.get(), 0);
    }
    if (isLoss(error)) {
        lose("reading messages", error);
    }
}

void GammuWorker::tell(const GSM_SMSMessage &message)
{
    if (message.PDU != SMS_Deliver) {
        return; // a draft, or a report
    }
    auto sms = fromGammu(message);
    if (!sms) {
        if (!m_unreadable.contains(message.Location)) {
            m_unreadable.insert(message.Location);
            qCWarning(kGammu, "what lies at %d of the modem is in an unknown form",
                      message.Location);
        }
        return;
    }
    sms->place = placeOf(message.Location, *sms);
    if (!m_told.contains(sms->place)) {
        m_told.insert(sms->place);
        Q_EMIT arrived(*sms);
    }
}

void GammuWorker::forget(const QByteArray &place)
{
    if (!m_told.contains(place) || m_isAborted) {
        return; // of a modem that is gone: the next one tells of it again
    }
    const auto messages = std::make_unique<GSM_MultiSMSMessage>();
    messages->SMS[0].Location = locationOf(place);
    GSM_Error error = GSM_GetSMS(m_machine.get(), messages.get());
    const auto found = error == ERR_NONE ? fromGammu(messages->SMS[0]) : std::nullopt;
    if (found && placeOf(locationOf(place), *found) == place) {
        GSM_SMSMessage message = messages->SMS[0];
        message.Folder = 0;
        message.Location = locationOf(place);
        error = GSM_DeleteSMS(m_machine.get(), &message);
    }
    if (isLoss(error)) {
        lose("deleting", error);
        return;
    }
    m_told.remove(place);
    // Another message that lies there now is not the one that was meant.
    if (error == ERR_NONE || error == ERR_EMPTY || error == ERR_INVALIDLOCATION) {
        Q_EMIT forgotten(place);
    } else {
        qCWarning(kGammu, "a message cannot be deleted: %s", GSM_ErrorName(error));
    }
}

void GammuWorker::takeStatus(GSM_StateMachine *, int status, int reference, void *worker)
{
    auto *self = static_cast<GammuWorker *>(worker);
    self->m_hasStatus = true;
    self->m_status = status;
    self->m_reference = reference;
}

void GammuWorker::send(const OutgoingSms &message)
{
    const SendOutcome outcome = attempt(message);
    Q_EMIT sent(message.id, outcome);
    if (outcome.kind == SendOutcome::NotNow && m_machine && !m_isAborted) {
        lose("sending", ERR_NOTCONNECTED);
    }
}

SendOutcome GammuWorker::attempt(const OutgoingSms &message)
{
    if (!isThere() || m_isAborted) {
        return {SendOutcome::NotNow, 0, 0, QStringLiteral("there is no modem")};
    }
    const auto out = std::make_unique<GSM_SMSMessage>();
    const qint32 cause = toGammu(message, m_serviceCenter, *out);
    if (cause != 0) {
        return {SendOutcome::Refused, 0, cause, QStringLiteral("it cannot be sent by libgammu")};
    }
    m_hasStatus = false;
    const GSM_Error error = GSM_SendSMS(m_machine.get(), out.get());
    if (error == ERR_NONE) {
        waitForStatus();
    }
    return outcomeOf(error);
}

/// The network takes its time. What comes meanwhile is taken too.
void GammuWorker::waitForStatus()
{
    const QDeadlineTimer deadline(kPatience);
    while (!m_hasStatus && !deadline.hasExpired() && !m_isAborted && isThere()) {
        if (GSM_ReadDevice(m_machine.get(), 0) < 0) {
            return;
        }
        QThread::msleep(10);
    }
}

SendOutcome GammuWorker::outcomeOf(GSM_Error error)
{
    if (m_hasStatus && m_status == 0) {
        return {SendOutcome::Sent, std::max(m_reference, 0), 0, QString()};
    }
    if (m_hasStatus) {
        const qint32 cause = m_status > 0 ? std::min(m_status, kHighestCause) : kCauseUnknown;
        return {SendOutcome::Refused, 0, cause, QStringLiteral("modem or network refused it")};
    }
    if (error == ERR_NONE || isLoss(error)) {
        return {SendOutcome::NotNow, 0, 0, QStringLiteral("the modem did not answer")};
    }
    return {SendOutcome::Refused, 0, kCauseUnknown, QString::fromLatin1(GSM_ErrorName(error))};
}

void GammuWorker::setServiceCenter(const QByteArray &number)
{
    GSM_SMSC centre = {};
    centre.Location = 1;
    if (!isThere() || m_isAborted || !numberToGammu(number, centre.Number)) {
        Q_EMIT serviceCenterSet(false);
        return;
    }
    const GSM_Error error = GSM_SetSMSC(m_machine.get(), &centre);
    if (isLoss(error)) {
        Q_EMIT serviceCenterSet(false);
        lose("setting the service centre", error);
        return;
    }
    const QByteArray before = m_serviceCenter;
    const bool isStillThere = readServiceCenter();
    Q_EMIT serviceCenterSet(error == ERR_NONE);
    if (!isStillThere) {
        lose("reading the service centre", ERR_GETTING_SMSC);
    } else if (m_serviceCenter != before) {
        setState(m_state);
    }
}

} // namespace wmsg::telephonyd

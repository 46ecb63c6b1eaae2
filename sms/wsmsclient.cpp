// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sms/wsmsclient.h"

#include "core/log.h"
#include "core/wmfmlistener.h"
#include "mms/model/mms_util_tool.h"
#include "platform/telephony/tapi_client.h"
#include "platform/telephony/util_tapi_device.h"
#include "sms/tapi_records.h"
#include "sms/wsmsmsg.h"
#include "sms/wsmssession.h"

#include <new>

namespace {

constexpr char kClientName[] = "WSMS";
constexpr quint8 kPhoneNumber = 1;

QDateTime timeOf(const TapiRecord &record)
{
    return QDateTime(QDate(record.number(kIncomingYear), record.number(kIncomingMonth),
                           record.number(kIncomingDay)),
                     QTime(record.number(kIncomingHour), record.number(kIncomingMinute),
                           record.number(kIncomingSecond)));
}

/// What the body takes of the record, with the zero unit that ends a text.
int bodySize(const TapiRecord &record)
{
    const int length = record.number(kIncomingLength);
    return record.number(kIncomingCoding) == TAPI_SMS_UCS2 ? length + int(sizeof(char16_t))
                                                           : length;
}

void setData(WSMSMsg &message, SMS_ENCODE_TYPE_E type, QByteArrayView bytes)
{
    message.setBodyType(type);
    message.getData() = QArray<char>(bytes);
}

/// Takes the body over. False: it is of a kind that nobody knows.
bool setBody(WSMSMsg &message, const TapiRecord &record)
{
    const QByteArrayView bytes = record.body(kIncomingBody, bodySize(record));
    switch (record.number(kIncomingCoding)) {
    case TAPI_SMS_UCS2:
        logLine(4, "msgLength:%d", record.number(kIncomingLength));
        setData(message, SMS_ENCODE_TYPE_TEXT, bytes);
        MMS_UTIL_Tool::logOut(reinterpret_cast<const unsigned char *>(message.getData().data()),
                              static_cast<unsigned int>(message.getData().size()));
        return true;
    case TAPI_SMS_8BIT:
        message.setBody(QString::fromLatin1(bytes));
        return true;
    case TAPI_SMS_BINARY:
        setData(message, SMS_ENCODE_TYPE_BINARY, bytes);
        return true;
    default:
        return false;
    }
}

std::unique_ptr<WSMSMsg> messageOf(const TapiRecord &record)
{
    auto message = std::make_unique<WSMSMsg>();
    // Kept: a message that arrives has a port pair always, of zeros where it came without one.
    message->setPortNumber(record.number(kIncomingPort1), record.number(kIncomingPort2));
    const QByteArray sender = record.text(kIncomingSender, kIncomingSenderEnd);
    message->setFrom(WMFMEntry(kPhoneNumber, QString::fromLatin1(sender)));
    message->setTimeStamp(timeOf(record));
    return setBody(*message, record) ? std::move(message) : nullptr;
}

} // namespace

WSMSClient::WSMSClient() = default;

WSMSClient::~WSMSClient()
{
    m_device.reset();
    if (m_tapiHandle >= 0) {
        TAPI_CLIENT_Fini(m_tapiHandle);
    }
}

void WSMSClient::loadSession(WSMSSession *session, WMFM::STATUS_T &status)
{
    status = WMFM::STATUS_OK;
    if (!m_device) {
        m_tapiHandle = TAPI_CLIENT_Init(kClientName, TAPI_EVENTS_SMS);
        if (m_tapiHandle < 0) {
            logLine(4, "\n");
            status = WMFM::STATUS_FAIL;
            return;
        }
        m_device.reset(new (std::nothrow) UTIL_TAPI_Device(nullptr, nullptr));
        logLine(4, m_device ? "new TapiDevice success" : "new TapiDevice fail");
        const bool isConnected = m_device
            && connect(m_device.get(), &UTIL_TAPI_Device::TAPI_SendEvent, this,
                       &WSMSClient::ProcessTAPIEvent);
        logLine(4, isConnected ? "connect TapiDevice success." : "connect TapiDevice fail.");
        if (!isConnected) {
            m_device.reset();
            TAPI_CLIENT_Fini(std::exchange(m_tapiHandle, -1));
            status = WMFM::STATUS_FAIL;
            return;
        }
        m_device->attach(m_tapiHandle);
    }
    m_session = session;
}

void WSMSClient::ProcessTAPIEvent(UTIL_TAPI_Event *pTapiEvent)
{
    if (!pTapiEvent) {
        return;
    }
    logLine(4, "pTapiEvent->GetType()=%d\n", pTapiEvent->GetType());
    switch (pTapiEvent->GetType()) {
    case TAPI_EVENT_SMS_RESULT:
        tellResult(*pTapiEvent);
        break;
    case TAPI_EVENT_SMS_INCOMING:
        tellMessage(*pTapiEvent);
        break;
    default:
        break;
    }
}

void WSMSClient::tellResult(const UTIL_TAPI_Event &event) const
{
    const TapiRecord record(event);
    WMFMListener *listener = m_session ? m_session->getListener() : nullptr;
    if (listener && record.has(kResultSize)) {
        listener->statusChanged(record.number(kResultReference),
                                static_cast<WMFM::STATUS_T>(record.number(kResultStatus)));
    }
}

/// The listener may have closed the session when its call returns: nothing of it is touched then.
void WSMSClient::tellMessage(UTIL_TAPI_Event &event) const
{
    const TapiRecord record(event);
    if (!record.has(kIncomingBody) || !record.has(kIncomingBody + bodySize(record))) {
        return;
    }
    WMFMListener *listener = m_session ? m_session->getListener() : nullptr;
    if (!listener || !m_session->takesMessages()) {
        event.SetTaken(false); // it stays with the telephone
        return;
    }
    if (std::unique_ptr<WSMSMsg> message = messageOf(record)) {
        listener->msgIncome(message.release());
    }
}

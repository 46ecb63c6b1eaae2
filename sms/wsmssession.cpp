// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sms/wsmssession.h"

#include "core/log.h"
#include "mms/model/mms_util_tool.h"
#include "platform/telephony/tapi_sms.h"
#include "sms/wsmsclient.h"
#include "sms/wsmsmsg.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kUnitSize = sizeof(char16_t);

/// What is used of a service centre's number.
constexpr int kLongestServiceCenter = 42;

constexpr int kRefused = -1;

/// Fills a field of a record; it ends with a NUL, for records are cleared first.
void setNumber(char (&field)[kTapiNumberSize], const QByteArray &number)
{
    memcpy(field, number.constData(),
           std::min(static_cast<size_t>(number.size()), sizeof field - 1));
}

int refuse(WMFM::STATUS_T &status, WMFM::STATUS_T reason, int result = kRefused)
{
    status = reason;
    return result;
}

} // namespace

WSMSSession::WSMSSession(WMFM::STATUS_T &status) : m_client(std::make_unique<WSMSClient>())
{
    m_client->loadSession(this, status);
}

WSMSSession::~WSMSSession() = default;

WMFM::MSG_TYPE_T WSMSSession::getMsgType() const
{
    return WMFM::MSG_TYPE_SMS;
}

int WSMSSession::send(WMFMMsg *msg, WMFM::STATUS_T &status)
{
    if (!msg) {
        return refuse(status, WMFM::STATUS_FAIL);
    }
    auto *message =
        msg->getMsgType() == WMFM::MSG_TYPE_SMS ? dynamic_cast<WSMSMsg *>(msg) : nullptr;
    if (!message) {
        // Kept: a message of another kind gives 0 and not -1.
        return refuse(status, WMFM::STATUS_FAIL, 0);
    }
    if (message->getTo().getEntryVal().isEmpty()) {
        logLine(4, "no To address,send fail!");
        return refuse(status, WMFM::STATUS_SEND_FAIL);
    }
    const QByteArray serviceCenter = serviceCenterOf(*message);
    return message->getPortNumberValid() ? sendToPort(*message, serviceCenter, status)
                                         : sendPlain(*message, serviceCenter, status);
}

QByteArray WSMSSession::serviceCenterOf(const WSMSMsg &msg) const
{
    QByteArray number = msg.getServiceCenter().toLatin1();
    if (number.isEmpty()) {
        char byDefault[kLongestServiceCenter + 1] = {};
        TAPI_SMS_GetServiceCenter(m_client->getTapiHandle(), byDefault, sizeof byDefault);
        number = QByteArray(byDefault,
                            static_cast<qsizetype>(qstrnlen(byDefault, kLongestServiceCenter)));
        logLine(4, "default serviceCenter:%s", number);
    }
    return number.left(kLongestServiceCenter);
}

int WSMSSession::sendPlain(WSMSMsg &msg, const QByteArray &serviceCenter, WMFM::STATUS_T &status)
{
    const QByteArray to = msg.getTo().getEntryVal().toLatin1();
    TAPI_SMS_SM_S sm = {};
    setNumber(sm.serviceCenter, serviceCenter);
    setNumber(sm.destination, to);
    logLine(4, "to:%s", sm.destination);
    logLine(4, "server:%s", sm.serviceCenter);
    const QArray<char> &data = msg.getData();
    sm.msgBuf = data.constData();
    if (msg.getEncodeType() == 1) {
        sm.dataCoding = TAPI_SMS_BINARY;
        sm.msgLength = static_cast<quint32>(data.size());
    } else {
        sm.dataCoding = TAPI_SMS_UCS2;
        sm.msgLength = static_cast<quint32>(std::max(data.size() / kUnitSize - 1, 0));
        if (TAPI_SMS_CaculateSm(&sm) != 0) {
            logLine(4, "the SMS content overflow,send fail");
            return refuse(status, WMFM::STATUS_CONTENT_OVERFLOW);
        }
    }
    qint32 reference = kRefused;
    const int result = TAPI_SMS_SendSmUnblockMode(m_client->getTapiHandle(), &sm, &reference);
    status = result == 0 ? WMFM::STATUS_OK : WMFM::STATUS_FAIL;
    return reference;
}

int WSMSSession::sendToPort(WSMSMsg &msg, const QByteArray &serviceCenter, WMFM::STATUS_T &status)
{
    logLine(7, "SMS send with port number");
    TAPI_SMS_PORT_SM_S sm = {};
    const QArray<char> &data = msg.getData();
    sm.msgBuf = data.constData();
    if (msg.getEncodeType() == 1) {
        sm.dataCoding = TAPI_SMS_BINARY;
        sm.msgBufLength = static_cast<quint32>(data.size());
    } else {
        sm.dataCoding = TAPI_SMS_UCS2;
        sm.msgBufLength = static_cast<quint32>(std::max(data.size() - kUnitSize, 0));
        if (TAPI_SMS_CaculatePortNumberSm(&sm) != 0) {
            logLine(4, "the SMS content overflow,send fail");
            return refuse(status, WMFM::STATUS_CONTENT_OVERFLOW);
        }
    }
    logLine(4, "out, sm.msgBufLength:%d", sm.msgBufLength);
    MMS_UTIL_Tool::logOut(reinterpret_cast<const unsigned char *>(sm.msgBuf), sm.msgBufLength);
    msg.getPortNumber(&sm.port1, &sm.port2);
    setNumber(sm.serviceCenter, serviceCenter);
    setNumber(sm.destination, msg.getTo().getEntryVal().toLatin1());
    qint32 reference = kRefused;
    const int result =
        TAPI_SMS_SendPortNumberSmUnblockMode(m_client->getTapiHandle(), &sm, &reference);
    status = result == 0 ? WMFM::STATUS_OK : WMFM::STATUS_FAIL;
    return reference;
}

WMFM::STATUS_T WSMSSession::registerPortNumber(unsigned short port, SMS_RECV_MODE_E mode)
{
    if (TAPI_SMS_RegisterPortNumber(m_client->getTapiHandle(), port, mode) != 0) {
        logLine(4, "registerPortNumber fail");
        return WMFM::STATUS_FAIL;
    }
    m_registeredPort = port;
    return WMFM::STATUS_OK;
}

WMFM::STATUS_T WSMSSession::deregisterPortNumber(unsigned short port)
{
    if (TAPI_SMS_DeregisterPortNumber(m_client->getTapiHandle(), port) != 0) {
        logLine(4, "\n");
        return WMFM::STATUS_FAIL;
    }
    // Kept: no port is registered from then on, although it may have been another one.
    m_registeredPort = 0;
    return WMFM::STATUS_OK;
}

unsigned short WSMSSession::getRegisteredPort() const
{
    return static_cast<unsigned short>(m_registeredPort);
}

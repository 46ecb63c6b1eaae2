// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/model/wmmsmsg.h"

// The header fields of one value: a getter and a setter each. A setter marks its field as present.

namespace {

template <typename Value>
bool store(Value &member, const Value &value, Msg_Field_Mask &mask, unsigned char id)
{
    member = value;
    mask.setMask(id);
    return true;
}

} // namespace

unsigned int WMMSMsg::getExpiryTime() const
{
    return static_cast<unsigned int>(m_header->expiry);
}

bool WMMSMsg::setExpiryTime(unsigned int seconds)
{
    return store(m_header->expiry, static_cast<qint32>(seconds), *m_mask, MMS_FIELD_EXPIRY);
}

WMFMEntry WMMSMsg::getFrom()
{
    return m_header->from;
}

bool WMMSMsg::setFrom(const WMFMEntry &value)
{
    return store(m_header->from, value, *m_mask, MMS_FIELD_FROM);
}

QString WMMSMsg::getSubject() const
{
    return m_header->subject;
}

bool WMMSMsg::setSubject(const QString &value)
{
    return store(m_header->subject, value, *m_mask, MMS_FIELD_SUBJECT);
}

QDateTime WMMSMsg::getDate() const
{
    return m_header->msgDate.toLocalTime();
}

bool WMMSMsg::setDate(const QDateTime &value)
{
    return store(m_header->msgDate, value, *m_mask, MMS_FIELD_DATE);
}

unsigned char WMMSMsg::getPDUType() const
{
    return m_header->msgType;
}

bool WMMSMsg::setPDUType(unsigned char value)
{
    return store(m_header->msgType, value, *m_mask, MMS_FIELD_MSG_TYPE);
}

QString WMMSMsg::getTransactionID() const
{
    return m_header->transactionId;
}

bool WMMSMsg::setTransactionID(const QString &value)
{
    return store(m_header->transactionId, value, *m_mask, MMS_FIELD_TRANSACTION_ID);
}

unsigned char WMMSMsg::getVersion() const
{
    return m_header->version;
}

bool WMMSMsg::setVersion(unsigned char value)
{
    return store(m_header->version, value, *m_mask, MMS_FIELD_VERSION);
}

QString WMMSMsg::getMsgID() const
{
    return m_header->msgID;
}

bool WMMSMsg::setMsgID(const QString &value)
{
    return store(m_header->msgID, value, *m_mask, MMS_FIELD_MSG_ID);
}

unsigned char WMMSMsg::getMsgClass() const
{
    return m_header->msgClass;
}

bool WMMSMsg::setMsgClass(unsigned char value)
{
    return store(m_header->msgClass, value, *m_mask, MMS_FIELD_MSG_CLASS);
}

int WMMSMsg::getMsgSize() const
{
    return m_header->msgSize;
}

bool WMMSMsg::setMsgSize(int value)
{
    return store(m_header->msgSize, value, *m_mask, MMS_FIELD_MSG_SIZE);
}

unsigned char WMMSMsg::getPriority() const
{
    return m_header->priority;
}

bool WMMSMsg::setPriority(unsigned char value)
{
    return store(m_header->priority, value, *m_mask, MMS_FIELD_PRIORITY);
}

QDateTime WMMSMsg::getDeliveryTime() const
{
    return m_header->deliveryTime.toLocalTime();
}

bool WMMSMsg::setDeliveryTime(const QDateTime &value)
{
    return store(m_header->deliveryTime, value, *m_mask, MMS_FIELD_DELIVERY_TIME);
}

bool WMMSMsg::getDeliveryReportNecessity() const
{
    return m_header->deliveryReport;
}

bool WMMSMsg::setDeliveryReportNecessity(bool value)
{
    return store(m_header->deliveryReport, value, *m_mask, MMS_FIELD_DELIVERY_REPORT);
}

bool WMMSMsg::getReadReportNecessity() const
{
    return m_header->readReport;
}

bool WMMSMsg::setReadReportNecessity(bool value)
{
    return store(m_header->readReport, value, *m_mask, MMS_FIELD_READ_REPORT);
}

bool WMMSMsg::getReportAllowedity() const
{
    return m_header->reportAllowed;
}

bool WMMSMsg::setReportAllowedity(bool value)
{
    return store(m_header->reportAllowed, value, *m_mask, MMS_FIELD_REPORT_ALLOWED);
}

bool WMMSMsg::getSenderVisibility() const
{
    return m_header->senderVisibility;
}

bool WMMSMsg::setSenderVisibility(bool value)
{
    return store(m_header->senderVisibility, value, *m_mask, MMS_FIELD_SENDER_VISIBILITY);
}

QString WMMSMsg::getContentLocation() const
{
    return m_header->contentLocation;
}

bool WMMSMsg::setContentLocation(const QString &value)
{
    return store(m_header->contentLocation, value, *m_mask, MMS_FIELD_CONTENT_LOCATION);
}

unsigned char WMMSMsg::getResponseStatus() const
{
    return m_header->responseStatus;
}

bool WMMSMsg::setResponseStatus(unsigned char value)
{
    return store(m_header->responseStatus, value, *m_mask, MMS_FIELD_RESPONSE_STATUS);
}

QString WMMSMsg::getResponseText() const
{
    return m_header->responseText;
}

bool WMMSMsg::setResponseText(const QString &value)
{
    return store(m_header->responseText, value, *m_mask, MMS_FIELD_RESPONSE_TEXT);
}

unsigned char WMMSMsg::getMsgStatus() const
{
    return m_header->msgStatus;
}

bool WMMSMsg::setMsgStatus(unsigned char value)
{
    return store(m_header->msgStatus, value, *m_mask, MMS_FIELD_MSG_STATUS);
}

bool WMMSMsg::setTo(const QValueList<WMFMEntry> &value)
{
    return store(m_header->to, value, *m_mask, MMS_FIELD_TO);
}

bool WMMSMsg::setCc(const QValueList<WMFMEntry> &value)
{
    return store(m_header->cc, value, *m_mask, MMS_FIELD_CC);
}

bool WMMSMsg::setBcc(const QValueList<WMFMEntry> &value)
{
    return store(m_header->bcc, value, *m_mask, MMS_FIELD_BCC);
}

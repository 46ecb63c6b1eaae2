// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sms/wsmsmsg.h"

#include "core/log.h"
#include "sms/wsmsmsg_p.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kUnitSize = sizeof(char16_t);
constexpr quint8 kPhoneNumber = 1;
constexpr int kLongestNumber = 41;
// Kept: a text has 3200 characters at most and data 3201 bytes.
constexpr int kLongestText = 3200;
constexpr int kLongestData = 3201;

bool isNumber(const QString &value)
{
    // Kept: an at sign as the very first character is accepted.
    return !value.isEmpty() && value.size() <= kLongestNumber
        && value.indexOf(QLatin1Char('@'), 1) < 0;
}

} // namespace

WSMSMsg::WSMSMsg() : m_private(std::make_unique<WSMSMsgPrivate>()) { }

WSMSMsg::WSMSMsg(const WSMSMsg &other)
    : WMFMMsg(other), m_private(std::make_unique<WSMSMsgPrivate>(*other.m_private))
{
    m_private->data = m_private->data.copy();
}

WSMSMsg &WSMSMsg::operator=(const WSMSMsg &other)
{
    if (this != &other) {
        *m_private = *other.m_private;
        m_private->data = m_private->data.copy();
    }
    return *this;
}

WSMSMsg::~WSMSMsg() = default;

WSMSMsgPrivate &WSMSMsg::record()
{
    return *m_private;
}

WMFM::MSG_TYPE_T WSMSMsg::getMsgType() const
{
    return WMFM::MSG_TYPE_SMS;
}

WMFMEntry WSMSMsg::getFrom()
{
    return WMFMEntry(kPhoneNumber, m_private->from);
}

WMFMEntry WSMSMsg::getTo()
{
    return WMFMEntry(kPhoneNumber, m_private->to);
}

bool WSMSMsg::setFrom(const WMFMEntry &entry)
{
    m_private->from = entry.getEntryVal();
    return true;
}

bool WSMSMsg::setTo(const WMFMEntry &entry)
{
    if (entry.getEntryType() != kPhoneNumber || !isNumber(entry.getEntryVal())) {
        return false;
    }
    m_private->to = entry.getEntryVal();
    return true;
}

QString WSMSMsg::getServiceCenter() const
{
    return m_private->serviceCenter;
}

bool WSMSMsg::setServiceCenter(const QString &sc)
{
    if (sc.isEmpty()) {
        return false;
    }
    m_private->serviceCenter = sc;
    return true;
}

QDateTime WSMSMsg::getTimeStamp() const
{
    return m_private->timeStamp;
}

void WSMSMsg::setTimeStamp(const QDateTime &time)
{
    m_private->timeStamp = time;
}

void WSMSMsg::setPortNumber(unsigned short p1, unsigned short p2)
{
    m_private->port1 = p1;
    m_private->port2 = p2;
    m_private->portValid = true;
}

bool WSMSMsg::getPortNumber(unsigned short *p1, unsigned short *p2) const
{
    if (!p1 || !p2) {
        return false;
    }
    // Kept: the ports are written whether or not a pair was ever set.
    *p1 = m_private->port1;
    *p2 = m_private->port2;
    return true;
}

bool WSMSMsg::getPortNumberValid() const
{
    return m_private->portValid;
}

int WSMSMsg::getEncodeType() const
{
    return m_private->bodyType == WSMSMsgPrivate::kText ? 0 : 1;
}

SMS_ENCODE_TYPE_E WSMSMsg::getBodyType() const
{
    // Kept: a body of 8-bit text is text here and not text for getEncodeType().
    return m_private->bodyType == WSMSMsgPrivate::kBinary ? SMS_ENCODE_TYPE_BINARY
                                                          : SMS_ENCODE_TYPE_TEXT;
}

void WSMSMsg::setBodyType(SMS_ENCODE_TYPE_E t)
{
    m_private->bodyType =
        t == SMS_ENCODE_TYPE_BINARY ? WSMSMsgPrivate::kBinary : WSMSMsgPrivate::kText;
}

bool WSMSMsg::setBody(const QString &text)
{
    if (text.size() > kLongestText) {
        logLine(4, "the string length overflow, length=%d", static_cast<int>(text.size()));
        return false;
    }
    // Bytes of its own: the ones before may be the application's.
    QArray<char> data((static_cast<int>(text.size()) + 1) * kUnitSize);
    if (data.isNull()) {
        return false;
    }
    stringToBuf(text, reinterpret_cast<unsigned short *>(data.data()), data.size());
    m_private->data = data;
    m_private->bodyType = WSMSMsgPrivate::kText;
    return true;
}

bool WSMSMsg::getBody(QString &text) const
{
    const QArray<char> &data = m_private->data;
    switch (m_private->bodyType) {
    case WSMSMsgPrivate::kText: {
        logLine(4, "text");
        QString units(std::max(data.size() / kUnitSize - 1, 0), Qt::Uninitialized);
        if (!units.isEmpty()) {
            memcpy(units.data(), data.constData(), static_cast<size_t>(units.size()) * kUnitSize);
        }
        text = units;
        return true;
    }
    case WSMSMsgPrivate::kText8:
        logLine(4, "bin");
        text = QString::fromLatin1(data.constData(), std::max(data.size() - 1, 0));
        return true;
    default:
        return false;
    }
}

bool WSMSMsg::setBody(const QArray<char> &bytes)
{
    if (bytes.size() > kLongestData) {
        logLine(4, "the data size overflow, size=%d", bytes.size());
        return false;
    }
    m_private->data = bytes;
    m_private->bodyType = WSMSMsgPrivate::kBinary;
    return true;
}

bool WSMSMsg::getBody(QArray<char> &bytes) const
{
    if (m_private->bodyType != WSMSMsgPrivate::kBinary) {
        return false;
    }
    bytes = m_private->data;
    return true;
}

int WSMSMsg::stringToBuf(const QString &s, unsigned short *buf, int size) const
{
    if (!buf || size < 1) {
        return 0;
    }
    const int count = static_cast<int>(std::min<qsizetype>(size - 1, s.size()));
    std::copy_n(s.utf16(), count, buf);
    buf[count] = 0;
    return count;
}

QArray<char> &WSMSMsg::getData()
{
    return m_private->data;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/header_field_walk.h"

#include "services/intake/wire_bytes.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"

#include <mms/codec/mms_hdr_s.h>

#include <QtCore/QDateTime>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

using intake::kHighBit;
using intake::kNo;
using intake::kParamCharset;
using intake::kParamStart;
using intake::kParamType;
using intake::kYes;

constexpr quint8 kPresent = 128; // an address; of times: an absolute one
constexpr quint8 kOther = 129; // the network inserts the address; a relative time

QString dateOf(quint32 seconds)
{
    return dateInWords(QDateTime::fromSecsSinceEpoch(seconds));
}

bool isPrintable(int byte)
{
    return byte >= 0x20 && byte < 0x7F;
}

} // namespace

bool HeaderFieldWalk::walk()
{
    QString text;
    switch (m_id) {
    case MMS_FIELD_BCC:
    case MMS_FIELD_CC:
    case MMS_FIELD_TO:
        return address();
    case MMS_FIELD_CONTENT_LOCATION:
    case MMS_FIELD_MSG_ID:
    case MMS_FIELD_TRANSACTION_ID:
        return m_in.text(text, u"text"_s);
    case MMS_FIELD_SUBJECT:
    case MMS_FIELD_RESPONSE_TEXT:
        return m_in.encodedText(text, u"text"_s);
    case MMS_FIELD_CONTENT_TYPE:
        return contentType();
    case MMS_FIELD_DATE:
        return date();
    case MMS_FIELD_DELIVERY_TIME:
    case MMS_FIELD_EXPIRY:
        return time();
    case MMS_FIELD_FROM:
        return sender();
    case MMS_FIELD_DELIVERY_REPORT:
    case MMS_FIELD_READ_REPORT:
    case MMS_FIELD_REPORT_ALLOWED:
        return yesNo();
    case MMS_FIELD_SENDER_VISIBILITY:
        return visibility();
    case MMS_FIELD_VERSION:
        return version();
    case MMS_FIELD_MSG_SIZE:
        return size();
    default:
        return code();
    }
}

bool HeaderFieldWalk::code()
{
    quint8 value;
    if (!m_in.byte(value, u"the value"_s)) {
        return false;
    }
    if (!codeWords(m_id, value)) {
        m_in.warn(m_in.pos() - 1, u"%1 is no known code"_s.arg(value));
    }
    m_in.mark([&] { return codeInWords(m_id, value); });
    return true;
}

bool HeaderFieldWalk::yesNo()
{
    quint8 value;
    if (!m_in.byte(value, u"the value"_s)) {
        return false;
    }
    if (value != kYes && value != kNo) {
        return m_in.fail(m_in.pos() - 1, u"%1 is neither yes (128) nor no (129)"_s.arg(value));
    }
    m_in.mark([&] { return value == kYes ? u"yes"_s : u"no"_s; });
    return true;
}

bool HeaderFieldWalk::visibility()
{
    quint8 value;
    if (!m_in.byte(value, u"the value"_s)) {
        return false;
    }
    if (value != kYes && value != kNo) {
        return m_in.fail(m_in.pos() - 1, u"%1 is neither hide (128) nor show (129)"_s.arg(value));
    }
    m_in.mark([&] { return value == kYes ? u"hide the sender"_s : u"show the sender"_s; });
    return true;
}

bool HeaderFieldWalk::version()
{
    quint32 value;
    if (!m_in.integer(value, u"the version"_s)) {
        return false;
    }
    m_in.mark([&] { return versionInWords(static_cast<quint8>(value)); });
    return true;
}

bool HeaderFieldWalk::size()
{
    quint32 value;
    if (!m_in.integer(value, u"the size"_s)) {
        return false;
    }
    m_in.mark([&] { return sizeInWords(value); });
    return true;
}

bool HeaderFieldWalk::date()
{
    quint32 seconds;
    if (!m_in.integer(seconds, u"the date"_s)) {
        return false;
    }
    m_in.mark([&] { return dateOf(seconds); });
    return true;
}

bool HeaderFieldWalk::time()
{
    quint32 length;
    quint8 token;
    quint32 seconds;
    if (!m_in.valueLength(length)) {
        return false;
    }
    const qint32 start = m_in.pos();
    if (!m_in.byte(token, u"the kind of time"_s)) {
        return false;
    }
    if (token != kPresent && token != kOther) {
        return m_in.fail(start, u"%1 is neither a date (128) nor a duration (129)"_s.arg(token));
    }
    m_in.mark([&] { return token == kPresent ? u"as a date"_s : u"as a duration"_s; });
    if (!m_in.integer(seconds, u"the time"_s)) {
        return false;
    }
    m_in.mark([&] { return token == kPresent ? dateOf(seconds) : durationInWords(seconds); });
    compareLength(length, start);
    return true;
}

bool HeaderFieldWalk::sender()
{
    quint32 length;
    quint8 token;
    if (!m_in.valueLength(length)) {
        return false;
    }
    const qint32 start = m_in.pos();
    if (!m_in.byte(token, u"the kind of sender"_s)) {
        return false;
    }
    if (token != kPresent && token != kOther) {
        return m_in.fail(start,
                         u"%1 is neither an address (128) nor its absence (129)"_s.arg(token));
    }
    m_in.mark([&] {
        return token == kPresent ? u"an address follows"_s : u"the network inserts the address"_s;
    });
    if (token == kPresent && !address()) {
        return false;
    }
    compareLength(length, start);
    return true;
}

bool HeaderFieldWalk::address()
{
    const qint32 start = m_in.pos();
    QString text;
    if (!m_in.encodedText(text, u"address"_s)) {
        return false;
    }
    if (text.isEmpty()) {
        m_in.warn(start, u"the address is empty"_s);
    }
    return true;
}

void HeaderFieldWalk::compareLength(quint32 announced, qint32 start)
{
    const qint64 read = m_in.pos() - start;
    if (read != announced) {
        m_in.warn(start,
                  u"the value says %1 and takes %2"_s.arg(counted(announced, "byte"_L1)).arg(read));
    }
}

bool HeaderFieldWalk::contentType()
{
    const int first = m_in.peek();
    quint32 length = 0;
    if (first > kHighBit) {
        return mediaNumber();
    }
    if (!m_in.valueLength(length)) {
        return false;
    }
    const qint32 start = m_in.pos();
    if (isPrintable(m_in.peek())) {
        m_in.warn(start, u"the media type seems to be spelled out; only numbers are read here"_s);
    }
    if (!mediaNumber()) {
        return false;
    }
    while (m_in.pos() < m_end) {
        if (!parameter()) {
            return false;
        }
    }
    compareLength(length, start);
    return true;
}

bool HeaderFieldWalk::mediaNumber()
{
    const qint32 start = m_in.pos();
    quint32 number;
    if (!m_in.integer(number, u"the media type"_s)) {
        return false;
    }
    const QString media = WMMSContentType::getMimeType(static_cast<quint8>(number));
    if (media.isEmpty()) {
        m_in.warn(start, u"%1 is no known media type"_s.arg(number));
    }
    m_in.mark([&] { return u"media type: %1 (%2)"_s.arg(media).arg(number); });
    return true;
}

bool HeaderFieldWalk::parameter()
{
    const qint32 start = m_in.pos();
    quint8 token;
    QString text;
    if (!m_in.byte(token, u"a parameter"_s)) {
        return false;
    }
    if (token < kHighBit) {
        m_in.moveTo(start);
        return m_in.text(text, u"parameter"_s) && m_in.text(text, u"value"_s);
    }
    if (token == kParamCharset) {
        quint32 charset;
        if (!m_in.integer(charset, u"the charset"_s)) {
            return false;
        }
        const char *name = charsetName(charset);
        m_in.mark([&] {
            return u"charset: %1 (%2)"_s.arg(QLatin1String(name ? name : "unknown")).arg(charset);
        });
        return true;
    }
    if (token == kParamType) {
        return m_in.text(text, u"type"_s);
    }
    if (token == kParamStart) {
        if (m_in.peek() == '"') {
            m_in.moveTo(m_in.pos() + 1);
        }
        return m_in.text(text, u"start"_s);
    }
    m_in.warn(start,
              u"parameter 0x%1 is not known; its value is read as parameters"_s.arg(token, 2, 16));
    m_in.mark([&] { return u"unknown parameter 0x%1"_s.arg(token, 2, 16); });
    return true;
}

} // namespace wmsg::cli

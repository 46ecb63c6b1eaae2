// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/tapi_sms.h"

#include "platform/telephony/sms_length.h"
#include "platform/telephony/telephony_clients_p.h"

#include <QtCore/QString>
#include <QtCore/QtEndian>

#include <cstring>

using namespace wmsg::telephony;

namespace {

/// The body of a record, whichever of the two records it stands in.
struct Body {
    quint32 coding;
    quint64 size; ///< in bytes
    const char *bytes;
    bool hasPorts;
};

Body bodyOf(const TAPI_SMS_SM_S &sm)
{
    const quint64 width = sm.dataCoding == TAPI_SMS_UCS2 ? sizeof(char16_t) : 1;
    return {sm.dataCoding, sm.msgLength * width, sm.msgBuf, false};
}

Body bodyOf(const TAPI_SMS_PORT_SM_S &sm)
{
    return {sm.dataCoding, sm.msgBufLength, sm.msgBuf, true};
}

/// The units of a text; half a one at the end does not count.
QString textOf(const Body &body)
{
    QString text(static_cast<qsizetype>(body.size / sizeof(char16_t)), Qt::Uninitialized);
    if (body.bytes && !text.isEmpty()) {
        memcpy(text.data(), body.bytes, static_cast<size_t>(text.size()) * sizeof(char16_t));
    }
    return text;
}

QByteArray littleEndian(const QString &text)
{
    QByteArray bytes(text.size() * static_cast<qsizetype>(sizeof(char16_t)), Qt::Uninitialized);
    qToLittleEndian<quint16>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

/// Sets coding and body of `record`, or tells why that cannot be.
TAPI_RESULT_E setBody(Send &record, const Body &body)
{
    const bool isText = body.coding == TAPI_SMS_UCS2;
    if ((!isText && body.coding != TAPI_SMS_BINARY) || (!body.bytes && body.size > 0)) {
        return TAPI_INVALID;
    }
    if (body.size > kLongestBody) {
        return TAPI_TOO_LONG;
    }
    if (!isText) {
        record.coding = Coding::Binary;
        record.body = QByteArray(body.bytes, static_cast<qsizetype>(body.size));
        return smsLengthOfData(record.body.size(), body.hasPorts).fits() ? TAPI_OK : TAPI_TOO_LONG;
    }
    const QString text = textOf(body);
    const SmsLength length = smsLengthOf(text, body.hasPorts);
    record.coding = length.alphabet == SmsAlphabet::Gsm7 ? Coding::Gsm7 : Coding::Ucs2;
    record.body = littleEndian(text);
    return length.fits() ? TAPI_OK : TAPI_TOO_LONG;
}

/// Copies a number that ends inside its field. False: it does not.
bool setNumber(QByteArray &number, const char (&field)[kTapiNumberSize])
{
    const auto length = qstrnlen(field, sizeof field);
    number = QByteArray(field, static_cast<qsizetype>(length));
    return length < sizeof field;
}

template <typename Sm> int checkLength(const Sm *sm)
{
    Send record;
    return sm ? setBody(record, bodyOf(*sm)) : TAPI_INVALID;
}

template <typename Sm> int send(int handle, Send record, const Sm *sm, qint32 *reference)
{
    if (!sm || !reference || !setNumber(record.serviceCenter, sm->serviceCenter)
        || !setNumber(record.destination, sm->destination) || record.destination.isEmpty()) {
        return TAPI_INVALID;
    }
    if (const TAPI_RESULT_E failure = setBody(record, bodyOf(*sm))) {
        return failure;
    }
    const auto client = clientOf(handle);
    return client ? client->send(record, *reference) : TAPI_NO_CLIENT;
}

} // namespace

int TAPI_SMS_GetServiceCenter(int handle, char *number, int size)
{
    if (!number || size < 1) {
        return TAPI_INVALID;
    }
    const auto client = clientOf(handle);
    if (!client) {
        return TAPI_NO_CLIENT;
    }
    qstrncpy(number, client->serviceCenter().constData(), static_cast<size_t>(size));
    return TAPI_OK;
}

int TAPI_SMS_SetServiceCenter(int handle, const char *number)
{
    if (!number || qstrlen(number) >= static_cast<size_t>(kTapiNumberSize)) {
        return TAPI_INVALID;
    }
    const auto client = clientOf(handle);
    return client ? client->setServiceCenter(number) : TAPI_NO_CLIENT;
}

int TAPI_SMS_CaculateSm(const TAPI_SMS_SM_S *sm)
{
    return checkLength(sm);
}

int TAPI_SMS_CaculatePortNumberSm(const TAPI_SMS_PORT_SM_S *sm)
{
    return checkLength(sm);
}

int TAPI_SMS_SendSmUnblockMode(int handle, const TAPI_SMS_SM_S *sm, qint32 *reference)
{
    return send(handle, Send(), sm, reference);
}

int TAPI_SMS_SendPortNumberSmUnblockMode(int handle, const TAPI_SMS_PORT_SM_S *sm,
                                         qint32 *reference)
{
    Send record;
    if (sm) {
        record.hasPorts = true;
        record.destinationPort = sm->port1;
        record.sourcePort = sm->port2;
    }
    return send(handle, record, sm, reference);
}

int TAPI_SMS_RegisterPortNumber(int handle, quint16 port, SMS_RECV_MODE_E mode)
{
    // A message that is addressed to no port has the ports 0.
    if (port == 0 || (mode != SMS_RECV_MODE_ALL && mode != SMS_RECV_MODE_PORTS)) {
        return TAPI_INVALID;
    }
    const auto client = clientOf(handle);
    return client ? client->registerPort(port, static_cast<quint8>(mode)) : TAPI_NO_CLIENT;
}

int TAPI_SMS_DeregisterPortNumber(int handle, quint16 port)
{
    const auto client = clientOf(handle);
    return client ? client->deregisterPort(port) : TAPI_NO_CLIENT;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/tapi_client.h"
#include "platform/telephony/tapi_sms.h"
#include "platform/telephony/util_tapi_device.h"
#include "tests/support/hex.h"

#include <QtCore/QByteArray>
#include <QtCore/QPointer>
#include <QtCore/QStringList>
#include <QtCore/QtGlobal>

/// FakeTelephony answers the operations of the telephony service during its life, and writes down
/// how they were called. The names that it defines come before those of the library; it is included
/// by one source of a test program.
///
///     FakeTelephony phone;
///     phone.fitsOneMessage = false;
///     QCOMPARE(session.send(&msg, status), -1);
class FakeTelephony {
public:
    FakeTelephony() { s_phone = this; }
    ~FakeTelephony() { s_phone = nullptr; }
    Q_DISABLE_COPY_MOVE(FakeTelephony)

    int handle = 5; ///< below 0: there is no service
    bool fitsOneMessage = true;
    int misfit = 1; ///< what the checks say of a message that does not fit
    int sendResult = 0;
    int portResult = 0;
    qint32 reference = 41;
    QByteArray serviceCenter = "+4366";
    int serviceCenterResult = 0;
    int eventAtAttach = -1; ///< the type of an event that waits for the device, below 0: none

    QStringList calls; ///< but for the two below
    int inits = 0;
    int finis = 0;
    QPointer<UTIL_TAPI_Device> device;

    /// event brings an event to the device, and returns whether it was taken.
    bool event(int type, const QByteArray &record)
    {
        UTIL_TAPI_Event event(type, record);
        Q_EMIT device->TAPI_SendEvent(&event);
        return event.IsTaken();
    }

    /// phone returns the one that lives; there must be one.
    static FakeTelephony &phone()
    {
        if (!s_phone) {
            qFatal("FakeTelephony: there is none");
        }
        return *s_phone;
    }

    void called(const QString &what) { calls.append(what); }
    /// The number in a field, which has to end inside it.
    static QString number(const char (&field)[kTapiNumberSize])
    {
        const auto length = qstrnlen(field, sizeof field);
        if (length == sizeof field) {
            qFatal("FakeTelephony: a number has no end");
        }
        return QString::fromLatin1(field, qsizetype(length));
    }
    static QString body(const char *bytes, quint32 size)
    {
        return '[' + QString(toHex(QByteArrayView(bytes, qsizetype(size)))) + ']';
    }

private:
    inline static FakeTelephony *s_phone = nullptr;
};

int TAPI_CLIENT_Init(const char *name, int events)
{
    FakeTelephony &phone = FakeTelephony::phone();
    ++phone.inits;
    phone.called(QString("init %1 %2").arg(name).arg(events));
    return phone.handle;
}

void TAPI_CLIENT_Fini(int handle)
{
    FakeTelephony &phone = FakeTelephony::phone();
    ++phone.finis;
    phone.called(QString("fini %1").arg(handle));
}

bool UTIL_TAPI_Device::attach(int handle)
{
    FakeTelephony &phone = FakeTelephony::phone();
    phone.called(QString("attach %1").arg(handle));
    phone.device = this;
    if (phone.eventAtAttach >= 0) {
        phone.event(phone.eventAtAttach, QByteArray());
    }
    return true;
}

int TAPI_SMS_GetServiceCenter(int handle, char *number, int size)
{
    FakeTelephony &phone = FakeTelephony::phone();
    phone.called(QString("service centre %1").arg(handle));
    if (phone.serviceCenterResult == 0) {
        memcpy(number, phone.serviceCenter.constData(),
               size_t(qMin<qsizetype>(phone.serviceCenter.size(), size)));
    }
    return phone.serviceCenterResult;
}

int TAPI_SMS_CaculateSm(const TAPI_SMS_SM_S *sm)
{
    FakeTelephony &phone = FakeTelephony::phone();
    phone.called(QString("fits %1 %2").arg(sm->dataCoding).arg(sm->msgLength));
    return phone.fitsOneMessage ? 0 : phone.misfit;
}

int TAPI_SMS_CaculatePortNumberSm(const TAPI_SMS_PORT_SM_S *sm)
{
    FakeTelephony &phone = FakeTelephony::phone();
    phone.called(QString("fits to port %1 %2").arg(sm->dataCoding).arg(sm->msgBufLength));
    return phone.fitsOneMessage ? 0 : phone.misfit;
}

int TAPI_SMS_SendSmUnblockMode(int handle, const TAPI_SMS_SM_S *sm, qint32 *reference)
{
    FakeTelephony &phone = FakeTelephony::phone();
    const quint32 size = sm->dataCoding == TAPI_SMS_UCS2 ? sm->msgLength * 2 : sm->msgLength;
    phone.called(QString("send %1 to '%2' by '%3' coding %4 length %5 %6")
                     .arg(handle)
                     .arg(phone.number(sm->destination), phone.number(sm->serviceCenter))
                     .arg(sm->dataCoding)
                     .arg(sm->msgLength)
                     .arg(phone.body(sm->msgBuf, size)));
    *reference = phone.reference;
    return phone.sendResult;
}

int TAPI_SMS_SendPortNumberSmUnblockMode(int handle, const TAPI_SMS_PORT_SM_S *sm,
                                         qint32 *reference)
{
    FakeTelephony &phone = FakeTelephony::phone();
    phone.called(QString("send %1 to '%2' port %3 from %4 by '%5' coding %6 length %7 %8")
                     .arg(handle)
                     .arg(phone.number(sm->destination))
                     .arg(sm->port1)
                     .arg(sm->port2)
                     .arg(phone.number(sm->serviceCenter))
                     .arg(sm->dataCoding)
                     .arg(sm->msgBufLength)
                     .arg(phone.body(sm->msgBuf, sm->msgBufLength)));
    *reference = phone.reference;
    return phone.sendResult;
}

int TAPI_SMS_RegisterPortNumber(int handle, quint16 port, SMS_RECV_MODE_E mode)
{
    FakeTelephony::phone().called(
        QString("register %1 port %2 mode %3").arg(handle).arg(port).arg(int(mode)));
    return FakeTelephony::phone().portResult;
}

int TAPI_SMS_DeregisterPortNumber(int handle, quint16 port)
{
    FakeTelephony::phone().called(QString("deregister %1 port %2").arg(handle).arg(port));
    return FakeTelephony::phone().portResult;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"
#include "platform/telephony/tapi_client.h"

#include <QtCore/QtGlobal>

#include <cstddef>

/// Short messages of the telephony service. Records are plain structs, with numbers in the byte
/// order of the device and texts as Latin-1 that ends with a NUL.
///
/// Of a pair of ports the **first is the destination and the second the source**.

/// What the body of a record is.
enum TAPI_SMS_CODING_E : quint32 {
    TAPI_SMS_UCS2 = 0, ///< text, in 16-bit units
    TAPI_SMS_8BIT = 1, ///< text, in Latin-1; incoming messages only
    TAPI_SMS_BINARY = 2, ///< data
};

/// What else a client gets that registers a port.
enum SMS_RECV_MODE_E : int {
    SMS_RECV_MODE_ALL = 0, ///< all that it got before
    SMS_RECV_MODE_PORTS = 1, ///< messages to its ports alone, as long as it has this port
};

/// The numbers of the events.
enum TAPI_EVENT_E : int {
    TAPI_EVENT_MODEM = 513, ///< TAPI_MODEM_S: the state of the modem changed
    TAPI_EVENT_PORT_LOST = 514, ///< TAPI_PORT_LOST_S: a port could not be renewed
    TAPI_EVENT_SMS_INCOMING = 774, ///< TAPI_SMS_INCOMING_S: a short message arrived
    TAPI_EVENT_SMS_RESULT = 778, ///< TAPI_SMS_RESULT_S: what became of a message that was sent
};

/// The status of a result: 0, the cause that the network or the modem gives (1 to 65535), or one of
/// these.
enum TAPI_SMS_STATUS_E : qint32 {
    TAPI_SMS_SENT = 0,
    TAPI_SMS_MALFORMED = 65536, ///< the daemon can make no message of it: a number that is none
    TAPI_SMS_GIVEN_UP = 65537, ///< the modem did not take it for too long
    TAPI_SMS_LOST = 65538, ///< the daemon went; the message may or may not have been sent
};

/// The numbers of a record have this room, with the NUL behind them.
constexpr int kTapiNumberSize = 44;

/// A message to be sent. The body stays the caller's and is read during the call alone.
struct TAPI_SMS_SM_S {
    quint32 dataCoding; ///< TAPI_SMS_UCS2 or TAPI_SMS_BINARY
    quint32 msgLength; ///< of the body: 16-bit units of a text, bytes of data
    char serviceCenter[kTapiNumberSize]; ///< empty: the default one
    char destination[kTapiNumberSize];
    const char *msgBuf;
};
static_assert(offsetof(TAPI_SMS_SM_S, serviceCenter) == 8);
static_assert(offsetof(TAPI_SMS_SM_S, destination) == 52);
static_assert(offsetof(TAPI_SMS_SM_S, msgBuf) == 96);
static_assert(sizeof(TAPI_SMS_SM_S) == 96 + sizeof(void *));

/// A message to be sent to a port. The body stays the caller's and is read during the call alone.
struct TAPI_SMS_PORT_SM_S {
    quint32 dataCoding; ///< TAPI_SMS_UCS2 or TAPI_SMS_BINARY
    quint32 msgBufLength; ///< of the body, in bytes for texts too
    quint16 port1; ///< destination
    quint16 port2; ///< source
    char serviceCenter[kTapiNumberSize]; ///< empty: the default one
    char destination[kTapiNumberSize];
    quint32 reserved; ///< 0
    const char *msgBuf;
};
static_assert(offsetof(TAPI_SMS_PORT_SM_S, port1) == 8);
static_assert(offsetof(TAPI_SMS_PORT_SM_S, serviceCenter) == 12);
static_assert(offsetof(TAPI_SMS_PORT_SM_S, destination) == 56);
static_assert(offsetof(TAPI_SMS_PORT_SM_S, msgBuf) == 104);
static_assert(sizeof(TAPI_SMS_PORT_SM_S) == 104 + sizeof(void *));

/// Event 778. Every message that was accepted for sending gets one.
struct TAPI_SMS_RESULT_S {
    qint32 reference; ///< the one that the send operation gave
    qint32 networkReference; ///< the one that the network gave, 0 when it gave none
    qint32 status;
};
static_assert(sizeof(TAPI_SMS_RESULT_S) == 12);

/// Event 774: the head of the record, and the first two bytes of its body. A text of TAPI_SMS_UCS2
/// has two zero bytes behind its `msgLength` bytes.
struct TAPI_SMS_INCOMING_S {
    quint32 reserved; ///< 0
    quint32 dataCoding;
    quint16 port2; ///< source, 0 when the message is addressed to no port
    quint16 port1; ///< destination, 0 likewise
    char serviceCenter[42];
    char sender[46];
    quint16 year; ///< local time; all 0 when the network told none
    quint8 month;
    quint8 day;
    quint8 hour;
    quint8 minute;
    quint8 second;
    quint8 reserved2[5]; ///< 0
    quint16 msgLength; ///< in bytes
    char body[2]; ///< and on, `msgLength` bytes
};
static_assert(offsetof(TAPI_SMS_INCOMING_S, dataCoding) == 4);
static_assert(offsetof(TAPI_SMS_INCOMING_S, port2) == 8);
static_assert(offsetof(TAPI_SMS_INCOMING_S, port1) == 10);
static_assert(offsetof(TAPI_SMS_INCOMING_S, serviceCenter) == 12);
static_assert(offsetof(TAPI_SMS_INCOMING_S, sender) == 54);
static_assert(offsetof(TAPI_SMS_INCOMING_S, year) == 100);
static_assert(offsetof(TAPI_SMS_INCOMING_S, second) == 106);
static_assert(offsetof(TAPI_SMS_INCOMING_S, msgLength) == 112);
static_assert(offsetof(TAPI_SMS_INCOMING_S, body) == 114);

/// Event 513.
struct TAPI_MODEM_S {
    quint32 state; ///< of TAPI_MODEM_E
};
static_assert(sizeof(TAPI_MODEM_S) == 4);

/// Event 514.
struct TAPI_PORT_LOST_S {
    quint32 port;
};
static_assert(sizeof(TAPI_PORT_LOST_S) == 4);

/// TAPI_SMS_GetServiceCenter writes the default service centre's number to `number`, which has room
/// for `size` bytes, and returns 0. The number is cut to fit and always ends with a NUL; it is
/// empty when the telephone knows none.
WMSG_PLATFORM_EXPORT int TAPI_SMS_GetServiceCenter(int handle, char *number, int size);

/// TAPI_SMS_SetServiceCenter makes `number` the default service centre, and waits until that is
/// done. The SDK does not need it; it is for tools that set a telephone up.
WMSG_PLATFORM_EXPORT int TAPI_SMS_SetServiceCenter(int handle, const char *number);

/// TAPI_SMS_CaculateSm and TAPI_SMS_CaculatePortNumberSm return 0 when the message fits one short
/// message: 160 septets, 70 units or 140 bytes, and 152, 66 or 133 with ports.
WMSG_PLATFORM_EXPORT int TAPI_SMS_CaculateSm(const TAPI_SMS_SM_S *sm);
WMSG_PLATFORM_EXPORT int TAPI_SMS_CaculatePortNumberSm(const TAPI_SMS_PORT_SM_S *sm);

/// TAPI_SMS_SendSmUnblockMode and TAPI_SMS_SendPortNumberSmUnblockMode start a send and return at
/// once: 0, with `reference` set to the word under which event 778 tells the outcome, or another
/// number with `reference` unchanged.
WMSG_PLATFORM_EXPORT int TAPI_SMS_SendSmUnblockMode(int handle, const TAPI_SMS_SM_S *sm,
                                                    qint32 *reference);
WMSG_PLATFORM_EXPORT int TAPI_SMS_SendPortNumberSmUnblockMode(int handle,
                                                              const TAPI_SMS_PORT_SM_S *sm,
                                                              qint32 *reference);

/// TAPI_SMS_RegisterPortNumber asks for the messages to `port`, which no other client then gets,
/// and waits for the answer. Registering a port again changes its mode. The registration ends with
/// the client.
WMSG_PLATFORM_EXPORT int TAPI_SMS_RegisterPortNumber(int handle, quint16 port,
                                                     SMS_RECV_MODE_E mode);

/// TAPI_SMS_DeregisterPortNumber gives a port of this client back, and waits for the answer.
WMSG_PLATFORM_EXPORT int TAPI_SMS_DeregisterPortNumber(int handle, quint16 port);

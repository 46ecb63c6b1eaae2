// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

/// The telephony service: one client per user of the telephone in this process.
///
/// A client is known by its handle, which is good in the thread that made it, and needs the event
/// loop of that thread. What the telephone has to tell comes as events through a UTIL_TAPI_Device
/// that is attached to the handle.
///
/// Here a client is one connection to the telephony daemon, `wmsg-telephonyd`, at the local socket
/// that the environment variable WMSG_TELEPHONY_SOCKET names, or at /tmp/wmsg-telephony. The daemon
/// must run as the same user. When the connection breaks, the client connects again by itself, with
/// growing pauses, and renews its ports and its unfinished requests; until then requests fail.

/// What the operations return: 0, or why not.
enum TAPI_RESULT_E : int {
    TAPI_OK = 0,
    TAPI_NO_CLIENT = 1, ///< there is no client of this handle in this thread
    TAPI_INVALID = 2, ///< an argument or a record that makes no sense
    TAPI_TOO_LONG = 3, ///< the message does not fit one short message
    TAPI_NO_SERVICE = 4, ///< the daemon is gone, or does not keep up
    TAPI_REFUSED = 5, ///< the daemon says no: the port is another client's
};

/// The events that a client wants, added up.
enum TAPI_EVENTS_E : int {
    TAPI_EVENTS_NONE = 0, ///< results, and messages to its ports alone
    TAPI_EVENTS_SMS = 2, ///< and the short messages that are addressed to no port
};

/// The state of the modem, as TAPI_EVENT_MODEM brings it.
enum TAPI_MODEM_E : int {
    TAPI_MODEM_ABSENT = 0, ///< no modem, or no daemon
    TAPI_MODEM_STARTING = 1, ///< found, not ready yet
    TAPI_MODEM_READY = 2,
    TAPI_MODEM_BLOCKED = 3, ///< there, and of no use until somebody does something about it
};

/// TAPI_CLIENT_Init makes a client under a short name, which tells clients apart in logs, for
/// `events` of TAPI_EVENTS_E. It returns its handle, or a negative number when there is no daemon
/// that answers within ten seconds, speaks this version and runs as the same user.
WMSG_PLATFORM_EXPORT int TAPI_CLIENT_Init(const char *name, int events);

/// TAPI_CLIENT_Fini ends a client: its ports are free, its device hears no more. What it sent goes
/// its way. It may be called from inside an event. An unknown handle is ignored.
WMSG_PLATFORM_EXPORT void TAPI_CLIENT_Fini(int handle);

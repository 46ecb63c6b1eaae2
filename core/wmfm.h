// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// WMFM holds the two enumerations that all public operations speak. Both are part of the binary
/// interface with applications and have the size of an int: add at the end, never renumber. A
/// variable of either type may hold a number without a name, for what a service reports is passed
/// on as it came.
namespace WMFM {

/// STATUS_T is the outcome that session operations write through their out-parameter. Test it
/// against STATUS_OK: any other value is a failure, also one that is not named here.
enum STATUS_T : int {
    STATUS_OK = 0,
    STATUS_INVALID_PARAM = 15, ///< an unknown message type, or no temporary file name to be had
    STATUS_SEND_FAIL =
        19, ///< a message without address or content type, or one that cannot be encoded
    STATUS_LISTENER_EXISTS = 21, ///< the session has a listener already
    STATUS_CONTENT_OVERFLOW = 27, ///< the content does not fit one short message
    STATUS_FAIL = 127, ///< anything else
};

/// MSG_TYPE_T is the kind of a message or of a session.
enum MSG_TYPE_T : int {
    MSG_TYPE_MMS = 0, ///< multimedia messages: WMMSMsg, WMMSSession
    MSG_TYPE_SMS = 1, ///< short messages: WSMSMsg, WSMSSession
};

} // namespace WMFM

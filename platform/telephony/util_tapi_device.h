// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"
#include "platform/telephony/util_tapi_event.h"

#include <QtCore/QObject>

/// UTIL_TAPI_Device is where the events of one telephony client come out, from the event loop of
/// its thread.
///
/// Connect it first and attach it then: events wait until a device is attached. A device may be
/// deleted, and its client ended, from inside an event; events that come later wait for the next
/// device.
class WMSG_PLATFORM_EXPORT UTIL_TAPI_Device : public QObject {
    Q_OBJECT

public:
    explicit UTIL_TAPI_Device(QObject *parent = nullptr, const char *name = nullptr);
    ~UTIL_TAPI_Device() override;

    /// attach makes this the device of the client `handle`, in place of the one before. It returns
    /// false when there is no such client.
    bool attach(int handle);

Q_SIGNALS:
    /// TAPI_SendEvent brings one event, which is good until all receivers have returned.
    void TAPI_SendEvent(UTIL_TAPI_Event *event);
};

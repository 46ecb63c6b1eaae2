// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/util_tapi_device.h"

#include "platform/telephony/telephony_clients_p.h"

UTIL_TAPI_Device::UTIL_TAPI_Device(QObject *parent, const char *name) : QObject(parent)
{
    setObjectName(QLatin1String(name));
}

UTIL_TAPI_Device::~UTIL_TAPI_Device() = default;

bool UTIL_TAPI_Device::attach(int handle)
{
    const auto client = wmsg::telephony::clientOf(handle);
    if (client) {
        client->attach(this);
    }
    return client != nullptr;
}

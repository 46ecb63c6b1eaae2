// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/telephony/tapi_client.h"

#include "platform/telephony/telephony_clients_p.h"

#include <QtCore/QAbstractEventDispatcher>

#include <atomic>

using namespace wmsg::telephony;

namespace {

// Each thread has clients of its own, and no number is given twice, so that a handle of another
// thread is one that nobody knows.
thread_local QHash<int, std::shared_ptr<TelephonyClient>> s_clients;
std::atomic<int> s_lastHandle = 0;

} // namespace

std::shared_ptr<TelephonyClient> wmsg::telephony::clientOf(int handle)
{
    return s_clients.value(handle);
}

int TAPI_CLIENT_Init(const char *name, int events)
{
    // Without an event loop nothing would ever be heard.
    if (!name || events < 0 || !QAbstractEventDispatcher::instance()) {
        return -TAPI_INVALID;
    }
    const auto client = TelephonyClient::open(name, static_cast<quint32>(events));
    if (!client) {
        return -TAPI_NO_SERVICE;
    }
    const int handle = ++s_lastHandle;
    s_clients.insert(handle, client);
    return handle;
}

void TAPI_CLIENT_Fini(int handle)
{
    if (const auto client = s_clients.take(handle)) {
        client->close();
    }
}

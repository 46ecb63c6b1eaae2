// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/fetch.h"

#include "services/mmsproxyd/http_client.h"

#include <algorithm>

namespace wmsg::proxy {

Fetch::~Fetch()
{
    if (transfer) {
        transfer->disconnect();
        transfer->abort();
    }
}

bool Fetch::isPaused() const
{
    return !requests.empty()
        && std::all_of(requests.begin(), requests.end(),
                       [](const Request &one) { return one.isPaused; });
}

void Fetch::forget(SessionId session)
{
    requests.erase(std::remove_if(requests.begin(), requests.end(),
                                  [session](const Request &one) { return one.session == session; }),
                   requests.end());
}

std::vector<Request> Fetch::thatHear(qint64 done, qint64 total)
{
    std::vector<Request> heard;
    const qint64 now = steadyTime();
    for (Request &request : requests) {
        if (request.gate.passes(now, done, total)) {
            heard.push_back(request);
        }
    }
    return heard;
}

} // namespace wmsg::proxy

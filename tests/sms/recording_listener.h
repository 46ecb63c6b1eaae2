// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmlistener.h"
#include "sms/wsmsmsg.h"

#include <QtCore/QStringList>

#include <functional>
#include <memory>

/// Keeps the messages that it gets, writes down the results, and does what `then` says after each.
class RecordingListener : public WMFMListener {
public:
    using WMFMListener::WMFMListener;

    void msgIncome(WMFMMsg *msg) override
    {
        messages.emplace_back(dynamic_cast<WSMSMsg *>(msg));
        did();
    }
    void statusChanged(int id, WMFM::STATUS_T status) override
    {
        statuses.append(QString("%1: %2").arg(id).arg(int(status)));
        did();
    }
    QString listenerName() const override { return "recording"; }

    std::vector<std::unique_ptr<WSMSMsg>> messages;
    QStringList statuses;
    std::function<void()> then;

private:
    void did()
    {
        if (then) {
            then();
        }
    }
};

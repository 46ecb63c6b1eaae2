// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/mmsc.h"
#include "tests/sim/mmsc/fake_path.h"
#include "tests/sim/mmsc/messages.h"

#include <memory>

/// An MMSC without HTTP: PDUs are handed in as the server would, and phones are lists.
class Network {
public:
    static constexpr int kNever = 3600000;

    explicit Network(const QString &plan = {}, int notifyAgain = kNever, qint64 mostBytes = 1 << 20)
    {
        QCOMPARE(faults.read("plan", plan), QString());
        wmsg::sim::Deliveries::Settings settings;
        settings.notifyAgain = notifyAgain;
        settings.pushRetry = 1;
        settings.mostBytes = mostBytes;
        deliveries = std::make_unique<wmsg::sim::Deliveries>(settings, subscribers, faults, log);
        deliveries->setBase("http://mmsc/");
        subscribers.add("+431", &ann);
        subscribers.add("bob@x.org", &bob);
        mmsc = std::make_unique<wmsg::sim::Mmsc>(wmsg::sim::Mmsc::Settings{"+431", 3600},
                                                 subscribers, *deliveries, log);
    }

    /// Posts a PDU as the phone of a number, or of one that the network does not know.
    wmsg::sim::HttpAnswer post(const QByteArray &pdu, const QByteArray &sender = {},
                               const wmsg::sim::Faults &happens = {})
    {
        wmsg::sim::HttpRequest request;
        request.method = "POST";
        request.path = "/";
        request.contentType = "application/vnd.wap.mms-message";
        request.sender = sender;
        request.body = pdu;
        request.faults = happens;
        return mmsc->answer(request);
    }
    /// Posts a send request; the header of the confirmation.
    MMS_HDR_S send(const QByteArray &pdu, const QByteArray &sender = {})
    {
        return decoded(post(pdu, sender).head).header();
    }
    wmsg::sim::HttpAnswer get(const QByteArray &path)
    {
        wmsg::sim::HttpRequest request;
        request.method = "GET";
        request.path = path;
        return mmsc->answer(request);
    }
    /// Fetches what a notification tells of; all of its bytes.
    QByteArray fetch(const QByteArray &notification)
    {
        const QString location = decoded(notification).header().contentLocation;
        const auto answer = get(location.toLatin1().mid(qstrlen("http://mmsc")));
        return answer.status == 200 ? answer.head + answer.pdu.mid(answer.pduStart) : QByteArray();
    }

    wmsg::sim::FaultPlan faults;
    wmsg::sim::Subscribers subscribers;
    wmsg::sim::PduLog log;
    FakePath ann;
    FakePath bob;
    std::unique_ptr<wmsg::sim::Deliveries> deliveries;
    std::unique_ptr<wmsg::sim::Mmsc> mmsc;
};

inline QString transactionOf(const QByteArray &pdu)
{
    return decoded(pdu).header().transactionId;
}

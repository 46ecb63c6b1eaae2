// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "sim/mmsc/deliveries.h"
#include "sim/mmsc/http_server.h"

#include <QtCore/QHash>
#include <QtCore/QQueue>

namespace wmsg::sim {

/// The MMSC behind its HTTP server: takes what phones post and gives what they fetch.
class Mmsc {
public:
    struct Settings {
        QString sender; ///< of messages for which neither the network nor they name one
        qint64 keepFor = 0; ///< seconds that a message waits when it says nothing itself
    };

    Mmsc(Settings settings, const Subscribers &subscribers, Deliveries &deliveries, PduLog &log);

    /// Answers one request.
    [[nodiscard]] HttpAnswer answer(const HttpRequest &request);

private:
    HttpAnswer post(const HttpRequest &request);
    HttpAnswer fetch(const HttpRequest &request);
    HttpAnswer takeMessage(const HttpRequest &request, const ReceivedPdu &pdu);
    HttpAnswer takeNotifyResponse(const ReceivedPdu &pdu);
    HttpAnswer takeAcknowledge(const ReceivedPdu &pdu);

    SendConf accept(const ReceivedPdu &pdu, const WMFMEntry &sender);
    QString refusal(const ReceivedPdu &pdu, const QList<WMFMEntry> &recipients,
                    SendConf &conf) const;
    Message messageOf(const ReceivedPdu &pdu, const WMFMEntry &sender) const;
    WMFMEntry senderOf(const HttpRequest &request, const ReceivedPdu &pdu) const;
    HttpAnswer confirm(const SendConf &conf);
    void remember(const QString &transaction, const SendConf &conf);

    Settings m_settings;
    const Subscribers &m_subscribers;
    Deliveries &m_deliveries;
    PduLog &m_log;
    QHash<QString, SendConf> m_accepted; // by sender and transaction id
    QQueue<QString> m_acceptedOrder;
};

} // namespace wmsg::sim

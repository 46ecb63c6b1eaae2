// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/mmsc/mmsc.h"

#include "sim/mmsc/address.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QSet>
#include <QtCore/QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

Q_LOGGING_CATEGORY(logMmsc, "wmsg.sim.mmsc", QtInfoMsg)

constexpr quint8 kTransientFailure = 192;
constexpr quint8 kPermanentFailure = 224;
constexpr quint8 kFormatCorrupt = 226;
constexpr quint8 kAddressUnresolved = 227;
constexpr quint8 kAccepted = 128;

constexpr qsizetype kMostRecipients = 1000;
constexpr qsizetype kMostRemembered = 10000;
constexpr qint64 kLongestExpiry = qint64(30) * 86400;

QByteArray mmsType()
{
    return QByteArrayLiteral("application/vnd.wap.mms-message");
}

HttpAnswer pduAnswer(const QByteArray &pdu)
{
    HttpAnswer answer;
    answer.contentType = mmsType();
    answer.head = pdu;
    return answer;
}

// To, Cc and Bcc, each address once.
QList<WMFMEntry> recipientsOf(const MMS_HDR_S &header)
{
    QList<WMFMEntry> recipients;
    QSet<QString> keys;
    for (const auto *list : {&header.to, &header.cc, &header.bcc}) {
        for (const WMFMEntry &entry : *list) {
            const QString key = addressKey(entry.getEntryVal());
            if (!key.isEmpty() && !keys.contains(key)) {
                keys.insert(key);
                recipients.append(entry);
            }
        }
    }
    return recipients;
}

bool allowsReport(const ReceivedPdu &pdu)
{
    return !pdu.has(MMS_FIELD_REPORT_ALLOWED) || pdu.header().reportAllowed;
}

} // namespace

Mmsc::Mmsc(Settings settings, const Subscribers &subscribers, Deliveries &deliveries, PduLog &log)
    : m_settings(std::move(settings)), m_subscribers(subscribers), m_deliveries(deliveries),
      m_log(log)
{
}

HttpAnswer Mmsc::answer(const HttpRequest &request)
{
    if (request.method == "POST") {
        return post(request);
    }
    return request.method == "GET"
        ? fetch(request)
        : plainAnswer(405, QByteArrayLiteral("GET and POST are what is done here.\n"));
}

HttpAnswer Mmsc::post(const HttpRequest &request)
{
    const QByteArray type = request.contentType.split(';').first().trimmed().toLower();
    if (type != mmsType()) {
        return plainAnswer(415, "This takes " + mmsType() + ".\n");
    }
    m_log.in(request.body);
    ReceivedPdu pdu;
    const QString problem = pdu.read(request.body);
    const quint8 kind = pduType(request.body);
    if (!problem.isEmpty()) {
        qCInfo(logMmsc, "a PDU cannot be read: %s", qUtf8Printable(problem));
    }
    if (kind == MMS_PDU_SEND_REQ && !problem.isEmpty()) {
        return confirm({pdu.header().transactionId, kFormatCorrupt, problem, {}});
    }
    if (problem.isEmpty() && kind == MMS_PDU_SEND_REQ) {
        return takeMessage(request, pdu);
    }
    if (problem.isEmpty() && kind == MMS_PDU_NOTIFYRESP_IND) {
        return takeNotifyResponse(pdu);
    }
    if (problem.isEmpty() && kind == MMS_PDU_ACKNOWLEDGE_IND) {
        return takeAcknowledge(pdu);
    }
    return plainAnswer(400,
                       problem.isEmpty() ? QByteArrayLiteral("Phones do not send this.\n")
                                         : problem.toUtf8() + '\n');
}

HttpAnswer Mmsc::fetch(const HttpRequest &request)
{
    const Delivery *delivery = m_deliveries.at(request.path.mid(1));
    if (!delivery) {
        return plainAnswer(404, QByteArrayLiteral("There is no message here.\n"));
    }
    const ReceivedPdu &original = delivery->message->request;
    HttpAnswer answer = pduAnswer(delivery->head);
    answer.pdu = original.bytes();
    answer.pduStart = original.contentStart();
    if (m_log.isOpen()) {
        m_log.out(delivery->head + original.bytes().sliced(original.contentStart()));
    }
    return answer;
}

HttpAnswer Mmsc::confirm(const SendConf &conf)
{
    const QByteArray pdu = encoded(conf);
    m_log.out(pdu);
    return pduAnswer(pdu);
}

HttpAnswer Mmsc::takeMessage(const HttpRequest &request, const ReceivedPdu &pdu)
{
    const QString &transactionId = pdu.header().transactionId;
    if (request.faults.responseStatus) {
        return confirm({transactionId, *request.faults.responseStatus, u"The fault plan says so."_s,
                        QString()});
    }
    const WMFMEntry sender = senderOf(request, pdu);
    const QString transaction = addressKey(sender.getEntryVal()) + u' ' + transactionId;
    const auto known = m_accepted.constFind(transaction);
    if (known != m_accepted.cend()) {
        qCInfo(logMmsc, "message %s has been sent again", qUtf8Printable(known->messageId));
        return confirm(*known);
    }
    const SendConf conf = accept(pdu, sender);
    if (conf.responseStatus == kAccepted) {
        remember(transaction, conf);
    }
    return confirm(conf);
}

void Mmsc::remember(const QString &transaction, const SendConf &conf)
{
    m_accepted.insert(transaction, conf);
    m_acceptedOrder.enqueue(transaction);
    if (m_acceptedOrder.size() > kMostRemembered) {
        m_accepted.remove(m_acceptedOrder.dequeue());
    }
}

// What the network knows goes before what the message says.
WMFMEntry Mmsc::senderOf(const HttpRequest &request, const ReceivedPdu &pdu) const
{
    const QString subscriber = QString::fromUtf8(request.sender).trimmed();
    if (!addressKey(subscriber).isEmpty()) {
        return entryOf(subscriber);
    }
    const WMFMEntry &from = pdu.header().from;
    return from.isValid() ? from : entryOf(m_settings.sender);
}

SendConf Mmsc::accept(const ReceivedPdu &pdu, const WMFMEntry &sender)
{
    SendConf conf;
    conf.transactionId = pdu.header().transactionId;
    const QList<WMFMEntry> recipients = recipientsOf(pdu.header());
    conf.responseText = refusal(pdu, recipients, conf);
    if (!conf.responseText.isEmpty()) {
        qCInfo(logMmsc, "a message is not accepted: %s", qUtf8Printable(conf.responseText));
        return conf;
    }
    const auto message = std::make_shared<const Message>(messageOf(pdu, sender));
    conf.messageId = message->id;
    if (!Deliveries::canBeHandedOut(*message)) {
        return {conf.transactionId, kPermanentFailure, u"the header is too large"_s, QString()};
    }
    qCInfo(logMmsc, "message %s is accepted: %lld bytes, %lld recipient(s)",
           qUtf8Printable(message->id), static_cast<long long>(pdu.bytes().size()),
           static_cast<long long>(recipients.size()));
    m_deliveries.add(message, recipients);
    return conf;
}

// Why a message is not accepted, with the status of the answer; an empty text when it is.
QString Mmsc::refusal(const ReceivedPdu &pdu, const QList<WMFMEntry> &recipients,
                      SendConf &conf) const
{
    const auto isKnown = [this](const WMFMEntry &to) {
        return m_subscribers.pathTo(to.getEntryVal()) != nullptr;
    };
    const struct {
        bool applies;
        quint8 status;
        QString text;
    } reasons[] = {
        {conf.transactionId.isEmpty(), kFormatCorrupt, u"there is no transaction id"_s},
        {!pdu.has(MMS_FIELD_VERSION), kFormatCorrupt, u"there is no version"_s},
        {pdu.contentStart() < 0, kFormatCorrupt, u"there is no content type"_s},
        {recipients.isEmpty(), kAddressUnresolved, u"there is no recipient"_s},
        {recipients.size() > kMostRecipients, kPermanentFailure,
         u"there are too many recipients"_s},
        {std::none_of(recipients.cbegin(), recipients.cend(), isKnown), kAddressUnresolved,
         u"no recipient is known here"_s},
        {!m_deliveries.hasRoomFor(pdu.bytes().size(), recipients.size()), kTransientFailure,
         u"too many messages wait"_s},
    };
    for (const auto &reason : reasons) {
        if (reason.applies) {
            conf.responseStatus = reason.status;
            return reason.text;
        }
    }
    return {};
}

Message Mmsc::messageOf(const ReceivedPdu &pdu, const WMFMEntry &sender) const
{
    const MMS_HDR_S &header = pdu.header();
    Message message;
    message.request = pdu;
    message.id = QUuid::createUuid().toString(QUuid::Id128) + u"@sim"_s;
    message.sender = sender;
    message.senderIsHidden = pdu.has(MMS_FIELD_SENDER_VISIBILITY) && !header.senderVisibility;
    message.wantsReports = pdu.has(MMS_FIELD_DELIVERY_REPORT) && header.deliveryReport;
    message.received = QDateTime::currentDateTimeUtc();
    if (pdu.has(MMS_FIELD_DELIVERY_TIME)) {
        message.notBefore = header.deliveryTime.toMSecsSinceEpoch();
    }
    const bool saysHowLong = pdu.has(MMS_FIELD_EXPIRY) && header.expiry != -1;
    const qint64 seconds =
        saysHowLong ? std::clamp<qint64>(header.expiry, 0, kLongestExpiry) : m_settings.keepFor;
    message.expiresAt = message.received.toMSecsSinceEpoch() + seconds * 1000;
    return message;
}

HttpAnswer Mmsc::takeNotifyResponse(const ReceivedPdu &pdu)
{
    const MMS_HDR_S &header = pdu.header();
    if (!m_deliveries.notificationAnswered(header.transactionId, header.msgStatus,
                                           allowsReport(pdu))) {
        qCInfo(logMmsc, "a notify-response is for no notification that waits for one");
    }
    return {};
}

HttpAnswer Mmsc::takeAcknowledge(const ReceivedPdu &pdu)
{
    if (!m_deliveries.acknowledged(pdu.header().transactionId, allowsReport(pdu))) {
        qCInfo(logMmsc, "an acknowledge is for no retrieval that waits for one");
    }
    return {};
}

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/network.h"

#include <QtCore/QDateTime>

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr int kMostWaiting = 1000;
/// Of a whole message for the phone: a service centre, and the TPDU with all that it can have.
constexpr qsizetype kLongestPdu = 12 + 164;

} // namespace

Network::Network(Settings settings, PduFiles &log, QObject *parent)
    : QObject(parent), m_settings(std::move(settings)), m_log(log)
{
}

Network::Submission Network::submit(const QByteArray &serviceCentre, const QByteArray &tpdu,
                                    const smspdu::Tpdu &message)
{
    if (m_failures > 0) {
        --m_failures;
        return {m_cause, 0, false};
    }
    const quint8 reference = m_reference++;
    QByteArray numbered = tpdu;
    numbered[1] = static_cast<char>(reference); // the modem's number takes the place of the phone's
    ++m_accepted;
    m_log.write(u"submit"_s, serviceCentre + numbered);
    if (m_settings.isLoopback) {
        sendBack(message);
    }
    return {0, reference, std::exchange(m_isNextAnswerLost, false)};
}

/// The number that it was sent to becomes the sender.
void Network::sendBack(const smspdu::Tpdu &message)
{
    smspdu::Tpdu back;
    back.kind = smspdu::Kind::Deliver;
    back.address = message.address;
    back.pid = message.pid;
    back.dcs = message.dcs;
    back.timeStamp = QDateTime::currentDateTimeUtc();
    back.udh = message.udh;
    back.userData = message.userData;
    const auto centre = smspdu::Address::fromString(m_settings.serviceCentre);
    m_waiting.enqueue(smspdu::writtenServiceCentre(centre) + smspdu::writeTpdu(back));
    Q_EMIT messageWaiting();
}

QString Network::deliver(const QByteArray &pdu, bool isRaw)
{
    const auto centre = smspdu::readServiceCentre(pdu);
    if (!centre) {
        return u"it does not begin with a service centre"_s;
    }
    if (pdu.size() > kLongestPdu) {
        return u"it is too long"_s;
    }
    const auto read =
        smspdu::readTpdu(QByteArrayView(pdu).sliced(centre->size), smspdu::Origin::Network);
    if (!isRaw && !read.isRead()) {
        return u"at %1: %2"_s.arg(centre->size + read.offset).arg(read.problem);
    }
    if (!isRaw && read.tpdu.kind != smspdu::Kind::Deliver) {
        return u"it is no message for a phone"_s;
    }
    if (m_waiting.size() >= kMostWaiting) {
        return u"too many messages wait for the phone"_s;
    }
    m_waiting.enqueue(pdu);
    Q_EMIT messageWaiting();
    return {};
}

QByteArray Network::takeMessage()
{
    QByteArray pdu = m_waiting.dequeue();
    ++m_delivered;
    m_log.write(u"deliver"_s, pdu);
    return pdu;
}

void Network::failNext(int cause, int count)
{
    m_cause = cause;
    m_failures = count;
}

} // namespace wmsg::sim

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/common/push_records.h"

#include <QtCore/QtEndian>

using namespace Qt::StringLiterals;

namespace wmsg::service {

namespace {

constexpr qsizetype kLengthSize = sizeof(quint32);
constexpr qsizetype kAnswerHead = 1 + sizeof(quint16);
constexpr qsizetype kLongestReason = 1000; // characters; their UTF-8 fits whatever they are
constexpr char kTaken = 0;
constexpr char kRefused = 1;

template <typename Number> QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof number, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

} // namespace

QByteArray pushRecord(const QByteArray &pdu)
{
    return bigEndian(static_cast<quint32>(pdu.size())) + pdu;
}

ReceivedPush readPush(QByteArrayView stream)
{
    if (stream.size() < kLengthSize) {
        return {};
    }
    const auto length = qFromBigEndian<quint32>(stream.data());
    if (length == 0 || length > static_cast<quint32>(kLongestPush)) {
        return {ReceivedPush::Impossible, {}, 0};
    }
    if (stream.size() - kLengthSize < static_cast<qsizetype>(length)) {
        return {};
    }
    return {ReceivedPush::Whole,
            stream.sliced(kLengthSize, static_cast<qsizetype>(length)).toByteArray(),
            kLengthSize + static_cast<qsizetype>(length)};
}

QByteArray pushAnswer(const QString &reason)
{
    const QByteArray text = reason.left(kLongestReason).toUtf8();
    return QByteArray(1, text.isEmpty() ? kTaken : kRefused)
        + bigEndian(static_cast<quint16>(text.size())) + text;
}

std::optional<PushOutcome> readPushAnswer(QByteArrayView bytes)
{
    if (bytes.size() < kAnswerHead) {
        return std::nullopt;
    }
    const qsizetype length = qFromBigEndian<quint16>(bytes.data() + 1);
    if (bytes.size() - kAnswerHead < length) {
        return std::nullopt;
    }
    const QString reason = QString::fromUtf8(bytes.sliced(kAnswerHead, length));
    if (bytes[0] == kTaken) {
        return PushOutcome{PushOutcome::Taken, QString()};
    }
    return PushOutcome{PushOutcome::Refused, reason.isEmpty() ? u"refused"_s : reason};
}

} // namespace wmsg::service

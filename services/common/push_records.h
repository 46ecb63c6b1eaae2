// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/common/push_client.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <optional>

// push   := length pdu               length: uint32, big-endian, 1 to 65536
// answer := outcome length reason    outcome: uint8, 0 taken, 1 refused; length: uint16, big-endian
//                                    reason:  UTF-8, empty when taken

namespace wmsg::service {

[[nodiscard]] QByteArray pushRecord(const QByteArray &pdu);

/// What the start of a stream of pushes holds.
struct ReceivedPush {
    enum Kind { Whole, CutOff, Impossible };

    Kind kind = CutOff;
    QByteArray pdu; ///< When it is whole.
    qsizetype size = 0; ///< How many bytes of the stream it took.
};

[[nodiscard]] ReceivedPush readPush(QByteArrayView stream);

/// The answer that `reason` is; an empty one means that the PDU was taken.
[[nodiscard]] QByteArray pushAnswer(const QString &reason);

/// The answer that `bytes` begin with; none when they do not hold a whole one.
[[nodiscard]] std::optional<PushOutcome> readPushAnswer(QByteArrayView bytes);

} // namespace wmsg::service

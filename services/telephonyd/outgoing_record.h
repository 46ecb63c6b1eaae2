// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/telephonyd/modem.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>

namespace wmsg::telephonyd {

/// OutgoingRecord is what the spool knows of a message that a client sent.
struct OutgoingRecord {
    QByteArray client; ///< its id; with the reference of `send` the name of the message for ever
    qint64 taken = 0; ///< when it was taken over, in milliseconds since 1970
    telephony::Send send; ///< without its body when it has a result
    std::optional<telephony::Result> result;

    [[nodiscard]] QJsonObject toJson() const;
    /// Nothing when the record is none that toJson() makes; `reason` then says why.
    static std::optional<OutgoingRecord> fromJson(const QJsonObject &json, QString &reason);
};

/// problemOf says in words why no short message can be made of a record; an empty text: one can.
[[nodiscard]] QString problemOf(const telephony::Send &send);

/// isNumber tells whether a text is a telephone number: a plus perhaps, and 1 to 20 of the digits,
/// * and #.
[[nodiscard]] bool isNumber(const QByteArray &text);

/// outgoingSms returns the short message of a record that has no problem.
[[nodiscard]] OutgoingSms outgoingSms(quint64 id, const telephony::Send &send);

} // namespace wmsg::telephonyd

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/telephony/telephony_records_p.h"
#include "services/telephonyd/modem.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>

namespace wmsg::telephonyd {

/// Segment is what is remembered of one short message, to know it when it comes again.
struct Segment {
    QByteArray place; ///< where it lies in the modem; empty: nowhere any more
    QByteArray digest; ///< of its sender, header, coding and body
    qint64 time = 0;
};

/// IncomingRecord is what the spool knows of something that came in.
struct IncomingRecord {
    /// In files: add at the end, never renumber; they stand there as words.
    enum class Kind {
        Whole, ///< a message that waits for somebody
        Part, ///< of a message whose other parts are awaited
        Over, ///< the memory of a message that somebody has; it has no body
    };

    Kind kind = Kind::Whole;
    qint64 kept = 0; ///< when it became durable, in milliseconds since 1970
    QList<Segment> segments; ///< one, or those of all parts of a whole message
    telephony::Message message; ///< its id, unless it is a part

    // Of a part.
    quint16 reference = 0; ///< the same in all parts
    bool isWide = false; ///< a reference of 16 bits, else of 8
    quint8 total = 1;
    quint8 number = 1; ///< from 1

    [[nodiscard]] bool isPart() const { return kind == Kind::Part; }
    [[nodiscard]] QJsonObject toJson() const;
    /// Nothing when the record is none that toJson() makes; `reason` then says why.
    static std::optional<IncomingRecord> fromJson(const QJsonObject &json, QString &reason);
};

/// newMessageId returns an id that no message had, nor will have from a daemon that starts anew.
[[nodiscard]] quint64 newMessageId();

/// incomingRecord returns the record of one short message: a part, or a whole one under a new id.
[[nodiscard]] IncomingRecord incomingRecord(const IncomingSms &sms);

} // namespace wmsg::telephonyd

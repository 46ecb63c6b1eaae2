// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "services/mmsproxyd/source_file.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <optional>

namespace wmsg::proxy {

/// SendRecord is what the spool knows of a message that is to be sent. Points in time are
/// milliseconds since 1970.
struct SendRecord {
    QString transactionId; ///< the same at every attempt
    qint64 taken = 0; ///< when the message was taken over; its date when it has none
    int attempts = 0;
    qint64 nextTry = 0;
    /// The file of the session, as long as it is not known to be removed.
    std::optional<SourceId> source;

    [[nodiscard]] QJsonObject toJson() const;
    /// Nothing when the record is none that toJson() makes; `reason` then says why.
    static std::optional<SendRecord> fromJson(const QJsonObject &json, QString &reason);
};

} // namespace wmsg::proxy

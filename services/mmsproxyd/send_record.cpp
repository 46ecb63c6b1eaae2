// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/send_record.h"

#include "services/common/record_fields.h"

using namespace Qt::StringLiterals;
using wmsg::service::RecordFields;

namespace wmsg::proxy {

QJsonObject SendRecord::toJson() const
{
    QJsonObject json{{"transactionId"_L1, transactionId},
                     {"taken"_L1, taken},
                     {"attempts"_L1, attempts},
                     {"nextTry"_L1, nextTry}};
    if (source) {
        json.insert("source"_L1, source->toJson());
    }
    return json;
}

std::optional<SendRecord> SendRecord::fromJson(const QJsonObject &json, QString &reason)
{
    RecordFields fields(json);
    SendRecord record;
    fields.need("transactionId"_L1);
    fields.need("taken"_L1);
    fields.text("transactionId"_L1, record.transactionId);
    fields.number("taken"_L1, record.taken);
    fields.number("attempts"_L1, record.attempts);
    fields.number("nextTry"_L1, record.nextTry);
    if (fields.isUsable() && record.transactionId.isEmpty()) {
        fields.refuse(u"transactionId is empty"_s);
    }
    // A source that cannot be read is one that is not removed; the message is sent all the same.
    record.source = SourceId::fromJson(json.value("source"_L1).toObject());
    reason = fields.reason();
    return fields.isUsable() ? std::optional(record) : std::nullopt;
}

} // namespace wmsg::proxy

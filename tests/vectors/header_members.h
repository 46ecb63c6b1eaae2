// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/wmmsmsg.h"

#include <QtCore/QJsonValue>
#include <QtCore/QString>

/// The header values of a message by name, as members of the header record and behind the accessors
/// of the message.

namespace vectors {

/// A member of the header record; row n is that of field n + 1.
struct HeaderMember {
    const char *name;
    void (*set)(MMS_HDR_S &header, const QJsonValue &json);
    QJsonValue (*get)(const MMS_HDR_S &header);
};

/// A setter of a message; `set` returns what the setter returned, true where it returns nothing.
struct MessageSetter {
    const char *name;
    bool (*set)(WMMSMsg &message, const QJsonValue &json);
};

struct MessageGetter {
    const char *name;
    QJsonValue (*get)(WMMSMsg &message);
};

constexpr int kFieldCount = 24;

/// The member of field `id`, 1 to 24; a VectorError for any other id.
const HeaderMember &headerMember(int id);
/// The id of the field of that member; a VectorError for an unknown name.
int fieldId(const QString &memberName);

/// What a message holds for field `id`.
QJsonValue messageMember(WMMSMsg &message, int id);

/// Null for an unknown name.
const MessageSetter *findMessageSetter(const QString &name);
const MessageGetter *findMessageGetter(const QString &name);

} // namespace vectors

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/message_results.h"

#include "mms/codec/mms_hdr_s.h"
#include "mms/model/result_codes.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/header_members.h"

#include <QtCore/QRegularExpression>

namespace vectors {

QJsonArray maskOf(WMMSMsg &message)
{
    QJsonArray present;
    for (int id = 1; id <= kFieldCount; ++id) {
        if (message.fieldIsPresent(static_cast<quint8>(id))) {
            present.append(id);
        }
    }
    return present;
}

/// The field whose value could not be read; 0 when there was none. Its member is not settled.
static int failedField(const QString &logged)
{
    static const QRegularExpression line(QStringLiteral("error handler,fieldID: (\\d+)\n?$"));
    return line.match(logged).captured(1).toInt();
}

static QJsonObject membersOf(WMMSMsg &message, int failed)
{
    QJsonObject members;
    for (int id = 1; id <= kFieldCount; ++id) {
        const bool hasDefault = id == MMS_FIELD_PRIORITY || id == MMS_FIELD_MSG_CLASS
            || id == MMS_FIELD_SENDER_VISIBILITY || id == MMS_FIELD_MSG_TYPE;
        if (id != failed && (hasDefault || message.fieldIsPresent(static_cast<quint8>(id)))) {
            members.insert(headerMember(id).name, messageMember(message, id));
        }
    }
    return members;
}

static QJsonObject rootOf(WMMSMsg &message, quint32 ret)
{
    WMMSMultipart &root = message.getMultiParts();
    QJsonObject form{{"data", hex(root.getData())},
                     {"parts", toJson(root.getSubMmsMultipartList())}};
    if (ret == 100) {
        form.insert("type", toJson(root.getContentType()));
    }
    return form;
}

Result decoded(quint32 ret, WMMSMsg &message, const QString &logged)
{
    Result result;
    result.set("ret", toJson(ret))
        .set("mask", maskOf(message))
        .set("headerLength", toJson(message.headerLength()))
        .set("bodyLength", toJson(message.bodyLength()))
        .set("fields", membersOf(message, ret == 113 ? failedField(logged) : 0));
    if (ret == 100 || ret == 111) {
        result.set("root", rootOf(message, ret));
    }
    return result;
}

bool hasOpenEnd(WMMSMsg &message)
{
    WMMSMultipart &root = message.getMultiParts();
    return message.getContentType().needDecode() && root.getSubMmsMultipartList().isEmpty()
        && !root.getData().isEmpty();
}

} // namespace vectors

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/msgfieldbase.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/header_members.h"
#include "tests/vectors/operations.h"

#include <memory>

namespace vectors {

static std::unique_ptr<MsgFieldBase> codecOf(int id)
{
    WMMSMsg message;
    std::unique_ptr<MsgFieldBase> codec(message.selectField(static_cast<quint8>(id)));
    if (!codec) {
        throw VectorError(QStringLiteral("no codec for field %1").arg(id));
    }
    return codec;
}

static QJsonValue printed(MsgFieldBase &codec, MMS_HDR_S &header)
{
    LogCapture log;
    codec.printField(&header);
    return log.text();
}

/// Whether the member is compared: after a success, and for the yes and no fields also after a
/// failure when it had a value before.
static bool showsMember(quint32 ret, int id, const QJsonObject &before)
{
    const bool isYesOrNo = id == MMS_FIELD_DELIVERY_REPORT || id == MMS_FIELD_READ_REPORT
        || id == MMS_FIELD_REPORT_ALLOWED;
    return ret == 1 || (isYesOrNo && before.contains(headerMember(id).name));
}

static Result read(const QJsonObject &in)
{
    const int id = from<int>(in.value("id"));
    const std::unique_ptr<MsgFieldBase> codec = codecOf(id);
    const QJsonObject before = in.value("before").toObject();
    MMS_HDR_S header;
    for (const QString &name : before.keys()) {
        headerMember(fieldId(name)).set(header, before.value(name));
    }
    QArray<char> buffer = from<QArray<char>>(in.value("hex"));
    WSP_Stream stream(buffer);
    const quint32 ret = codec->read(stream, &header);
    Result result;
    result.set("ret", toJson(ret)).set("pos", toJson(stream.pos));
    if (showsMember(ret, id, before)) {
        const HeaderMember &member = headerMember(id);
        result.set("fields", QJsonObject{{member.name, member.get(header)}});
    }
    if (ret == 1 && valueOr(in, "log", false)) {
        result.set("log", printed(*codec, header));
    }
    return result;
}

static Result write(const QJsonObject &in)
{
    const int id = from<int>(in.value("id"));
    MMS_HDR_S header;
    headerMember(id).set(header, in.value("value"));
    QArray<char> buffer(valueOr(in, "size", 4096));
    WSP_Stream stream(buffer);
    const quint32 ret = codecOf(id)->write(stream, &header);
    return Result().set("ret", toJson(ret)).set("hex", hex(buffer.view().first(stream.pos)));
}

static Result print(const QJsonObject &in)
{
    const int id = from<int>(in.value("id"));
    MMS_HDR_S header;
    headerMember(id).set(header, in.value("value"));
    return Result().set("log", printed(*codecOf(id), header));
}

Operations fieldOperations()
{
    return {
        {"field.read", "id hex before log", "ret pos fields log", read},
        {"field.write", "id value size", "ret hex", write},
        {"field.print", "id value", "log", print},
    };
}

} // namespace vectors

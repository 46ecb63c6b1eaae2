// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/wmmscontenttype.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

namespace vectors {

static Result described(const WMMSContentType &type)
{
    const QJsonObject form = toJson(type).toObject();
    return Result()
        .set("main", form.value("main"))
        .set("sub", form.value("sub"))
        .set("params", form.value("params"))
        .set("mime", toJson(type.getMimeType()))
        .set("empty", toJson(type.isEmpty()))
        .set("count", toJson(type.getParamCount()))
        .set("needDecode", toJson(type.needDecode()))
        .set("toString", toJson(type.toString()))
        .set("toStringWithQuotes", toJson(type.toStringWithQuotes()));
}

static void callSetter(WMMSContentType &type, const QJsonArray &call)
{
    const QString name = call.at(0).toString();
    const QString text = from<QString>(call.at(1));
    if (name == "setMimeType") {
        type.setMimeType(text);
    } else if (name == "setMainType") {
        type.setMainType(text);
    } else if (name == "setSubType") {
        type.setSubType(text);
    } else if (name == "setParam") {
        type.setParam(text, from<QString>(call.at(2)));
    } else if (name == "setParamType") {
        type.setParamType(text);
    } else if (name == "setParamStart") {
        type.setParamStart(text);
    } else {
        throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
    }
}

static Result make(const QJsonObject &in)
{
    WMMSContentType type;
    for (const QJsonValue &call : in.value("steps").toArray()) {
        callSetter(type, call.toArray());
    }
    return described(type);
}

static Result fromString(const QJsonObject &in)
{
    WMMSContentType type;
    const bool ok = type.fromString(from<QString>(in.value("text")));
    return described(type).set("ok", toJson(ok));
}

static Result getMimeType(const QJsonObject &in)
{
    return Result().set("text", toJson(WMMSContentType::getMimeType(from<quint8>(in.value("id")))));
}

static Result getMimeID(const QJsonObject &in)
{
    return Result().set("id", toJson(WMMSContentType::getMimeID(from<QString>(in.value("text")))));
}

static Result getParam(const QJsonObject &in)
{
    const WMMSContentType type = from<WMMSContentType>(in.value("type"));
    return Result().set("value", toJson(type.getParam(from<QString>(in.value("name")))));
}

Operations contentTypeOperations()
{
    return {
        {"contenttype.getMimeType", "id", "text", getMimeType},
        {"contenttype.getMimeID", "text", "id", getMimeID},
        {"contenttype.make", "steps",
         "main sub params mime empty count needDecode toString toStringWithQuotes", make},
        {"contenttype.fromString", "text",
         "main sub params mime empty count needDecode toString toStringWithQuotes ok", fromString},
        {"contenttype.getParam", "type name", "value", getParam},
    };
}

} // namespace vectors

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/wmfmentry.h"
#include "mms/codec/msg_field_mask.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

namespace vectors {

static WMFMEntry constructed(const QJsonArray &args)
{
    switch (args.size()) {
    case 0:
        return WMFMEntry();
    case 2:
        return WMFMEntry(from<quint8>(args.at(0)), from<QString>(args.at(1)));
    case 3:
        return WMFMEntry(from<quint8>(args.at(0)), from<QString>(args.at(1)),
                         from<QString>(args.at(2)));
    default:
        throw VectorError(QStringLiteral("an entry has no such constructor"));
    }
}

static void callSetter(WMFMEntry &entry, const QJsonArray &call)
{
    const QString name = call.at(0).toString();
    if (name == "setEntryType") {
        entry.setEntryType(from<quint8>(call.at(1)));
    } else if (name == "setEntryVal") {
        entry.setEntryVal(from<QString>(call.at(1)));
    } else if (name == "setContactName") {
        entry.setContactName(from<QString>(call.at(1)));
    } else {
        throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
    }
}

static Result make(const QJsonObject &in)
{
    WMFMEntry entry = constructed(in.value("args").toArray());
    for (const QJsonValue &call : in.value("then").toArray()) {
        callSetter(entry, call.toArray());
    }
    return Result()
        .set("type", toJson(entry.getEntryType()))
        .set("value", toJson(entry.getEntryVal()))
        .set("name", toJson(entry.getContactName()))
        .set("valid", toJson(entry.isValid()))
        .set("display", toJson(entry.getDisplayValue()));
}

static Result setType(const QJsonObject &in)
{
    WMFMEntry entry(from<quint8>(in.value("from")), QStringLiteral("v"));
    const bool ok = entry.setEntryType(from<quint8>(in.value("set")));
    return Result().set("ok", toJson(ok)).set("type", toJson(entry.getEntryType()));
}

static quint32 maskStep(Msg_Field_Mask &mask, const QJsonArray &step)
{
    const QString name = step.at(0).toString();
    if (name == "setMask") {
        return mask.setMask(from<quint8>(step.at(1)));
    }
    if (name == "getMask") {
        return mask.getMask(from<quint8>(step.at(1)));
    }
    if (name == "clear") {
        return mask.clear();
    }
    if (name == "getFieldsCount") {
        return mask.getFieldsCount();
    }
    throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
}

static Result maskScript(const QJsonObject &in)
{
    Msg_Field_Mask mask;
    QJsonArray results;
    for (const QJsonValue &step : in.value("steps").toArray()) {
        results.append(toJson(maskStep(mask, step.toArray())));
    }
    return Result().set("results", results);
}

Operations entryOperations()
{
    return {
        {"entry.make", "args then", "type value name valid display", make},
        {"entry.setType", "from set", "ok type", setType},
        {"mask.script", "steps", "results", maskScript},
    };
}

} // namespace vectors

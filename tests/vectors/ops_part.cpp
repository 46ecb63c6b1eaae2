// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmultipart.h"
#include "tests/support/log_capture.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"
#include "tests/vectors/script.h"
#include "util/mms_util_common.h"

namespace vectors {

using Json = QJsonValue;
using Part = WMMSMultipart;

using PartStep = ScriptStep<Part>;

static Json nothing()
{
    return QJsonObject{{"void", true}};
}

static Json printed(Part &part)
{
    LogCapture log;
    part.printInfo();
    return QJsonObject{{"log", log.text()}};
}

static Json sourcesOf(Part &part)
{
    QJsonObject names;
    const QMap<QString, QString> map = part.getSrcToLocalNameMap();
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        names.insert(entry.key(), toJson(entry.value()));
    }
    return names;
}

static QValueList<Part> partsFrom(const Json &json)
{
    QValueList<Part> parts;
    for (const Json &part : json.toArray()) {
        parts.append(from<Part>(part));
    }
    return parts;
}

// clang-format off
static const PartStep kSteps[] = {
    {"setContentType",      1, [](Part &p, const QJsonArray &s) { p.setContentType(from<WMMSContentType>(s.at(1))); return nothing(); }},
    {"setContentID",        1, [](Part &p, const QJsonArray &s) { p.setContentID(from<QString>(s.at(1))); return nothing(); }},
    {"setContentLocation",  1, [](Part &p, const QJsonArray &s) { p.setContentLocation(from<QString>(s.at(1))); return nothing(); }},
    {"setContentLocationIfNull", 0, [](Part &p, const QJsonArray &) { p.setContentLocationIfNull(); return nothing(); }},
    {"setData",             1, [](Part &p, const QJsonArray &s) { p.setData(from<QArray<char>>(s.at(1))); return nothing(); }},
    {"setLocalFileName",    1, [](Part &p, const QJsonArray &s) { return toJson(p.setLocalFileName(from<QString>(s.at(1)))); }},
    {"setSubMmsMultipart",  1, [](Part &p, const QJsonArray &s) { p.setSubMmsMultipart(partsFrom(s.at(1))); return nothing(); }},
    {"creatSubList",        0, [](Part &p, const QJsonArray &) { p.creatSubList(); return nothing(); }},
    {"clear",               0, [](Part &p, const QJsonArray &) { p.clear(); return nothing(); }},
    {"clearLocalFileName",  0, [](Part &p, const QJsonArray &) { p.clearLocalFileName(); return nothing(); }},
    {"getContentType",      0, [](Part &p, const QJsonArray &) { return toJson(p.getContentType()); }},
    {"getContentID",        0, [](Part &p, const QJsonArray &) { return toJson(p.getContentID()); }},
    {"getContentLocation",  0, [](Part &p, const QJsonArray &) { return toJson(p.getContentLocation()); }},
    {"getLocalFileName",    0, [](Part &p, const QJsonArray &) { return toJson(p.getLocalFileName()); }},
    {"getData",             0, [](Part &p, const QJsonArray &) { return hex(p.getData()); }},
    {"getSubMmsMultipartList", 0, [](Part &p, const QJsonArray &) { return toJson(p.getSubMmsMultipartList()); }},
    {"getSrc",              0, [](Part &p, const QJsonArray &) { return toJson(p.getSrc()); }},
    {"getSrcToLocalNameMap", 0, [](Part &p, const QJsonArray &) { return sourcesOf(p); }},
    {"getApproxSize",       0, [](Part &p, const QJsonArray &) { return toJson(p.getApproxSize()); }},
    {"isDrmObj",            0, [](Part &p, const QJsonArray &) { return toJson(p.isDrmObj()); }},
    {"isUPI",               0, [](Part &p, const QJsonArray &) { return toJson(p.isUPI()); }},
    {"isEmpty",             0, [](Part &p, const QJsonArray &) { return toJson(p.isEmpty()); }},
    {"isMediaType",         1, [](Part &p, const QJsonArray &s) { return toJson(p.isMediaType(from<QString>(s.at(1)))); }},
    {"saveFile",            0, [](Part &p, const QJsonArray &) { return toJson(p.saveFile()); }},
    {"readFile",            1, [](Part &p, const QJsonArray &s) { return toJson(p.readFile(from<bool>(s.at(1)))); }},
    {"printInfo",           0, [](Part &p, const QJsonArray &) { return printed(p); }},
    {"addSub",              1, [](Part &p, const QJsonArray &s) { p.getSubMmsMultipartList().append(from<Part>(s.at(1))); return nothing(); }},
    {"subCount",            0, [](Part &p, const QJsonArray &) { return toJson(static_cast<int>(p.getSubMmsMultipartList().size())); }},
};
// clang-format on

static Result partScript(const QJsonObject &in)
{
    Part part;
    return runScript(part, kSteps, in);
}

static Result construct(const QJsonObject &in)
{
    QArray<char> body = from<QArray<char>>(in.value("hex"));
    Part part;
    LogCapture log;
    const bool ok = part.construct(body, valueOr(in, "offset", 0));
    Result result;
    result.set("ok", toJson(ok)).set("parts", toJson(part.getSubMmsMultipartList()));
    if (valueOr(in, "log", false)) {
        result.set("log", log.text());
    }
    return result;
}

static QJsonArray dataSizes(QValueList<Part> &parts)
{
    QJsonArray sizes;
    for (Part &part : parts) {
        sizes.append(toJson(part.getData().size()));
    }
    return sizes;
}

/// Of a part without sub-parts only the beginning is settled.
static Result exportTo(const QJsonObject &in)
{
    Part part = from<Part>(in.value("part"));
    QArray<char> out = valueOr(in, "before", QArray<char>());
    const bool hasParts = !in.value("part").toObject().value("subs").toArray().isEmpty();
    const bool ok = part.exportTo(out, valueOr(in, "offset", out.size()));
    Result result;
    result.set("ok", toJson(ok));
    if (ok && hasParts) {
        result.set("hex", hex(out)).set("subDataSizes", dataSizes(part.getSubMmsMultipartList()));
    } else if (ok) {
        result.set("prefix", hex(out));
    }
    return result;
}

static Result toUTF8(const QJsonObject &in)
{
    const QArray<char> source = from<QArray<char>>(in.value("hex"));
    QArray<char> out;
    const bool ok = MMS_UTIL_Common::toUTF8(source, from<QString>(in.value("charset")), out);
    Result result;
    result.set("ok", toJson(ok));
    if (ok) {
        result.set("hex", hex(out));
    }
    return result;
}

Operations partOperations()
{
    return {
        {"part.script", "steps", "results", partScript},
        {"multipart.construct", "hex offset log", "ok parts log", construct},
        {"multipart.exportTo", "part before offset", "ok hex prefix subDataSizes", exportTo},
        {"text.toUTF8", "hex charset", "ok hex", toUTF8},
    };
}

} // namespace vectors

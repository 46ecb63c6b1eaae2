// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sms/wsmsmsg.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"
#include "tests/vectors/script.h"

namespace vectors {

using Json = QJsonValue;

using SmsStep = ScriptStep<WSMSMsg>;

static Json bodyText(WSMSMsg &message)
{
    QString text;
    return message.getBody(text) ? QJsonArray{true, toJson(text)} : QJsonArray{false};
}

static Json bodyBytes(WSMSMsg &message)
{
    QArray<char> bytes;
    return message.getBody(bytes) ? QJsonArray{true, hex(bytes)} : QJsonArray{false};
}

static Json setBytes(WSMSMsg &message, const QByteArray &bytes)
{
    return message.setBody(QArray<char>(QByteArrayView(bytes.constData(), bytes.size())));
}

static Json setType(WSMSMsg &message, int type)
{
    message.setBodyType(static_cast<SMS_ENCODE_TYPE_E>(type));
    return QJsonObject{{"void", true}};
}

static Json ports(WSMSMsg &message, const QJsonArray &step)
{
    unsigned short p1 = 0;
    unsigned short p2 = 0;
    const bool isWanted1 = step.at(1).toBool(true);
    const bool isWanted2 = step.at(2).toBool(true);
    const bool ok = message.getPortNumber(isWanted1 ? &p1 : nullptr, isWanted2 ? &p2 : nullptr);
    return QJsonArray{ok, p1, p2};
}

static Json setPorts(WSMSMsg &message, const QJsonArray &step)
{
    message.setPortNumber(from<quint16>(step.at(1)), from<quint16>(step.at(2)));
    return QJsonObject{{"void", true}};
}

static Json setTime(WSMSMsg &message, const QJsonArray &step)
{
    message.setTimeStamp(from<QDateTime>(step.at(1)));
    return QJsonObject{{"void", true}};
}

// clang-format off
static const SmsStep kSteps[] = {
    {"setFrom",            1, [](WSMSMsg &m, const QJsonArray &s) { return Json(m.setFrom(from<WMFMEntry>(s.at(1)))); }},
    {"setTo",              1, [](WSMSMsg &m, const QJsonArray &s) { return Json(m.setTo(from<WMFMEntry>(s.at(1)))); }},
    {"setServiceCenter",   1, [](WSMSMsg &m, const QJsonArray &s) { return Json(m.setServiceCenter(from<QString>(s.at(1)))); }},
    {"setTimeStamp",       1, setTime},
    {"setPortNumber",      2, setPorts},
    {"setBodyType",        1, [](WSMSMsg &m, const QJsonArray &s) { return setType(m, from<int>(s.at(1))); }},
    {"setBodyText",        1, [](WSMSMsg &m, const QJsonArray &s) { return Json(m.setBody(from<QString>(s.at(1)))); }},
    {"setBodyTextRepeat",  2, [](WSMSMsg &m, const QJsonArray &s) { return Json(m.setBody(from<QString>(s.at(1)).repeated(from<int>(s.at(2))))); }},
    {"setBodyBytes",       1, [](WSMSMsg &m, const QJsonArray &s) { return setBytes(m, from<QArray<char>>(s.at(1)).toByteArray()); }},
    {"setBodyBytesRepeat", 2, [](WSMSMsg &m, const QJsonArray &s) { return setBytes(m, from<QArray<char>>(s.at(1)).toByteArray().repeated(from<int>(s.at(2)))); }},
    {"getMsgType",         0, [](WSMSMsg &m, const QJsonArray &) { return toJson(int(m.getMsgType())); }},
    {"getFrom",            0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getFrom()); }},
    {"getTo",              0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getTo()); }},
    {"getServiceCenter",   0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getServiceCenter()); }},
    {"getTimeStamp",       0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getTimeStamp()); }},
    {"getPortNumberValid", 0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getPortNumberValid()); }},
    {"getPortNumber",      0, ports},
    {"getPortNumber",      2, ports},
    {"getEncodeType",      0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getEncodeType()); }},
    {"getBodyType",        0, [](WSMSMsg &m, const QJsonArray &) { return toJson(int(m.getBodyType())); }},
    {"getBodyText",        0, [](WSMSMsg &m, const QJsonArray &) { return bodyText(m); }},
    {"getBodyBytes",       0, [](WSMSMsg &m, const QJsonArray &) { return bodyBytes(m); }},
    {"data",               0, [](WSMSMsg &m, const QJsonArray &) { return hex(m.getData()); }},
    {"dataSize",           0, [](WSMSMsg &m, const QJsonArray &) { return toJson(m.getData().size()); }},
};
// clang-format on

static Result script(const QJsonObject &in)
{
    WSMSMsg message;
    return runScript(message, kSteps, in);
}

Operations smsOperations()
{
    return {{"sms.script", "steps", "results", script}};
}

} // namespace vectors

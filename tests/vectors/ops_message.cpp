// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/codec/msgfieldbase.h"
#include "mms/model/wmmsmsg.h"
#include "tests/support/log_capture.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/header_members.h"
#include "tests/vectors/message_results.h"
#include "tests/vectors/operations.h"

#include <memory>
#include <utility>

namespace vectors {

/// A script on a message, with the other message that "copy" makes and "swap" exchanges.
class MessageScript {
public:
    MessageScript() : m_message(std::make_unique<WMMSMsg>()), m_other(std::make_unique<WMMSMsg>())
    {
    }

    QJsonValue run(const QJsonArray &step);

private:
    QJsonValue runSpecial(const QString &name, const QJsonValue &argument);

    std::unique_ptr<WMMSMsg> m_message;
    std::unique_ptr<WMMSMsg> m_other;
};

static QJsonValue nothing()
{
    return QJsonObject{{"void", true}};
}

QJsonValue MessageScript::run(const QJsonArray &step)
{
    const QString name = step.at(0).toString();
    if (const MessageSetter *setter = findMessageSetter(name)) {
        return setter->set(*m_message, step.at(1)) ? nothing() : QJsonValue(false);
    }
    if (const MessageGetter *getter = findMessageGetter(name)) {
        return getter->get(*m_message);
    }
    return runSpecial(name, step.at(1));
}

QJsonValue MessageScript::runSpecial(const QString &name, const QJsonValue &argument)
{
    if (name == "mask") {
        return maskOf(*m_message);
    }
    if (name == "fieldIsPresent") {
        return toJson(static_cast<int>(m_message->fieldIsPresent(from<quint8>(argument))));
    }
    if (name == "selectField") {
        const std::unique_ptr<MsgFieldBase> codec(m_message->selectField(from<quint8>(argument)));
        return codec ? QJsonValue("codec") : QJsonValue(QJsonValue::Null);
    }
    if (name == "clear") {
        m_message->clear();
    } else if (name == "copy") {
        m_other = std::make_unique<WMMSMsg>(*m_message);
    } else if (name == "swap") {
        std::swap(m_message, m_other);
    } else {
        throw VectorError(QStringLiteral("unknown step \"%1\"").arg(name));
    }
    return nothing();
}

static Result messageScript(const QJsonObject &in)
{
    MessageScript script;
    QJsonArray results;
    for (const QJsonValue &step : in.value("steps").toArray()) {
        results.append(script.run(step.toArray()));
    }
    return Result().set("results", results);
}

static Result construct(const QJsonObject &in)
{
    QArray<char> pdu = from<QArray<char>>(in.value("hex"));
    WMMSMsg message;
    LogCapture log;
    const quint32 ret = message.construct(pdu, valueOr(in, "decodeBody", true));
    Result result = decoded(ret, message, log.text());
    if (valueOr(in, "log", false)) {
        result.set("log", log.text());
    }
    return result;
}

static Result packTo(const QJsonObject &in)
{
    WMMSMsg message;
    build(message, in.value("msg"));
    QArray<char> out;
    int h = kUntouched;
    int b = kUntouched;
    LogCapture log;
    const quint32 ret = message.packTo(out, &h, &b);
    const bool openEnd = ret == 200 && hasOpenEnd(message);
    Result result;
    result.set("ret", toJson(ret)).set("mask", maskOf(message)).set("h", toJson(h));
    if (!openEnd) {
        result.set("b", toJson(b));
    }
    if (ret == 200) {
        result.set(openEnd ? "prefix" : "hex", hex(out));
    }
    if (valueOr(in, "log", false)) {
        result.set("log", log.text());
    }
    return result;
}

static Result getMessageLength(const QJsonObject &in)
{
    WMMSMsg message;
    build(message, in.value("msg"));
    int h = kUntouched;
    int b = kUntouched;
    const bool ok = message.getMessageLength(h, b);
    return Result().set("ok", toJson(ok)).set("h", toJson(h)).set("b", toJson(b));
}

static Result transcode(const QJsonObject &in)
{
    QArray<char> pdu = from<QArray<char>>(in.value("hex"));
    WMMSMsg message;
    Result result;
    const quint32 ret1 = message.construct(pdu, true);
    result.set("ret1", toJson(ret1));
    if (ret1 != 100) {
        return result;
    }
    if (!in.value("pduType").isNull()) {
        message.setPDUType(from<quint8>(in.value("pduType")));
    }
    QArray<char> out;
    const quint32 ret2 = message.packTo(out, nullptr, nullptr);
    result.set("ret2", toJson(ret2));
    if (ret2 == 200) {
        result.set(hasOpenEnd(message) ? "prefix" : "hex", hex(out));
    }
    return result;
}

static Result classify(const QJsonObject &in)
{
    WMMSMsg message;
    if (in.contains("parts")) {
        for (const QJsonValue &part : in.value("parts").toArray()) {
            message.getMultiParts().getSubMmsMultipartList().append(from<WMMSMultipart>(part));
        }
        message.getMultiParts().creatSubList();
    }
    LogCapture log;
    const int type = message.getMMSTypeByContentType(from<WMMSContentType>(in.value("type")),
                                                     from<bool>(in.value("inspectParts")));
    return Result().set("type", toJson(type)).set("log", log.text());
}

static Result mapMmscResp(const QJsonObject &in)
{
    WMMSMsg message;
    return Result().set("code", toJson(message.mapMmscResp(from<short>(in.value("engine")))));
}

static Result printMsg(const QJsonObject &in)
{
    WMMSMsg message;
    build(message, in.value("msg"));
    LogCapture log;
    message.printMsg();
    return Result().set("log", log.text()).set("mask", maskOf(message));
}

Operations messageOperations()
{
    return {
        {"msg.script", "steps", "results", messageScript},
        {"pdu.construct", "hex decodeBody log", "ret mask headerLength bodyLength fields root log",
         construct},
        {"pdu.packTo", "msg log", "ret mask h b hex prefix log", packTo},
        {"pdu.getMessageLength", "msg", "ok h b", getMessageLength},
        {"pdu.transcode", "hex pduType", "ret1 ret2 hex prefix", transcode},
        {"msg.classify", "type inspectParts parts", "type log", classify},
        {"msg.mapMmscResp", "engine", "code", mapMmscResp},
        {"msg.printMsg", "msg", "log mask", printMsg},
    };
}

} // namespace vectors

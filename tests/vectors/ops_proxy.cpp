// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_cmd.h"
#include "mms/session/mms_ua_svcmd.h"
#include "tests/support/socket_pair.h"
#include "tests/vectors/forms.h"
#include "tests/vectors/operations.h"

#include <memory>

namespace vectors {

static int intOf(const QJsonObject &in, const char *key)
{
    return from<int>(in.value(QLatin1String(key)));
}

static QString textOf(const QJsonObject &in, const char *key)
{
    return from<QString>(in.value(QLatin1String(key)));
}

static QJsonValue extraOf(const MMS_UA_CmdItem &record)
{
    return hex(QByteArrayView(record.extra(), record.extra() ? record.extraLen() : 0));
}

static std::unique_ptr<MMS_UA_SvCmd> newEvent(const QJsonObject &in)
{
    std::unique_ptr<MMS_UA_SvCmd> event(MMS_UA_SvCmd::factory(intOf(in, "id")));
    if (!event) {
        throw VectorError(QStringLiteral("no event of this id"));
    }
    return event;
}

static Result factory(const QJsonObject &in)
{
    const int id = intOf(in, "id");
    std::unique_ptr<MMS_UA_CmdItem> record;
    if (textOf(in, "kind") == "cmd") {
        record.reset(MMS_UA_Cmd::factory(id));
    } else {
        record.reset(MMS_UA_SvCmd::factory(id));
    }
    Result result;
    result.set("null", !record);
    if (record) {
        result.set("type", toJson(record->type()))
            .set("dataLen", toJson(record->dataLen()))
            .set("extraLen", toJson(record->extraLen()));
    }
    return result;
}

static QJsonValue written(MMS_UA_CmdItem &record)
{
    SocketPair pair;
    record.write(pair.socket());
    return hex(pair.taken());
}

static Result cmd(const QJsonObject &in)
{
    const std::unique_ptr<MMS_UA_Cmd> command(MMS_UA_Cmd::factory(intOf(in, "id")));
    if (!command) {
        throw VectorError(QStringLiteral("no command of this id"));
    }
    command->setRequestId(intOf(in, "requestId"));
    if (auto *uriCommand = dynamic_cast<MMS_UA_UriCmd *>(command.get())) {
        uriCommand->setUri(textOf(in, "text"));
    } else if (auto *appIdCommand = dynamic_cast<MMS_UA_AppIdCmd *>(command.get())) {
        appIdCommand->setAppId(textOf(in, "text"));
    } else {
        dynamic_cast<MMS_UA_TargetCmd &>(*command).setTargetId(intOf(in, "targetId"));
    }
    return Result().set("hex", written(*command));
}

/// One row for each event: how it gets its values from a vector, and how it gives them.
static void fill(MMS_UA_SvReqCompleteCmd &event, const QJsonObject &in)
{
    event.setRequestId(intOf(in, "requestId"));
    event.setUri(textOf(in, "uri"));
    event.setStatus(intOf(in, "status"));
}
static void tell(const MMS_UA_SvReqCompleteCmd &event, Result &result)
{
    result.set("requestId", event.getRequestId())
        .set("uri", toJson(event.getUri()))
        .set("status", event.getStatus());
}
static void fill(MMS_UA_SvRegCompleteCmd &event, const QJsonObject &in)
{
    event.setRequestId(intOf(in, "requestId"));
    event.setResult(intOf(in, "result"));
}
static void tell(const MMS_UA_SvRegCompleteCmd &event, Result &result)
{
    result.set("requestId", event.getRequestId()).set("result", event.getResult());
}
static void fill(MMS_UA_SvRetrCompleteCmd &event, const QJsonObject &in)
{
    event.setUri(textOf(in, "uri"));
}
static void tell(const MMS_UA_SvRetrCompleteCmd &event, Result &result)
{
    result.set("uri", toJson(event.getUri()));
}
static void fill(MMS_UA_SvProgCmd &event, const QJsonObject &in)
{
    event.setRequestId(intOf(in, "requestId"));
    event.setValue1(intOf(in, "value1"));
    event.setValue2(intOf(in, "value2"));
}
static void tell(const MMS_UA_SvProgCmd &event, Result &result)
{
    result.set("requestId", event.getRequestId())
        .set("value1", event.getValue1())
        .set("value2", event.getValue2());
}
static void fill(MMS_UA_SvStsRetCmd &event, const QJsonObject &in)
{
    event.setRequestId(intOf(in, "requestId"));
    event.setStatus(intOf(in, "status"));
}
static void tell(const MMS_UA_SvStsRetCmd &event, Result &result)
{
    result.set("requestId", event.getRequestId()).set("status", event.getStatus());
}
static void fill(MMS_UA_SvNotiCmd &event, const QJsonObject &in)
{
    event.setUriAndTranID(textOf(in, "uri"), textOf(in, "tranId"));
}
static void tell(const MMS_UA_SvNotiCmd &event, Result &result)
{
    result.set("uri", toJson(event.getUri())).set("tranId", toJson(event.getTranID()));
}
template <typename Report> static void fillReport(Report &event, const QJsonObject &in)
{
    event.setMsgIDAndToAndDate(textOf(in, "msgId"), textOf(in, "to"),
                               from<QDateTime>(in.value("date")));
}
static void fill(MMS_UA_SvDeliCmd &event, const QJsonObject &in)
{
    fillReport(event, in);
}
static void tell(const MMS_UA_SvDeliCmd &event, Result &result)
{
    result.set("to", toJson(event.getTo()))
        .set("date", toJson(event.getDate()))
        .set("msgId", toJson(event.getMsgID()));
}

/// Calls `action` with the event as what it is.
template <typename Action> static void as(MMS_UA_SvCmd &event, const Action &action)
{
    switch (event.type()) {
    case MMS_UA_SVCMD_REQ_COMPLETE:
        return action(dynamic_cast<MMS_UA_SvReqCompleteCmd &>(event));
    case MMS_UA_SVCMD_REG_COMPLETE:
        return action(dynamic_cast<MMS_UA_SvRegCompleteCmd &>(event));
    case MMS_UA_SVCMD_RETR_COMPLETE:
        return action(dynamic_cast<MMS_UA_SvRetrCompleteCmd &>(event));
    case MMS_UA_SVCMD_PROGRESS:
        return action(dynamic_cast<MMS_UA_SvProgCmd &>(event));
    case MMS_UA_SVCMD_STATUS:
        return action(dynamic_cast<MMS_UA_SvStsRetCmd &>(event));
    case MMS_UA_SVCMD_NOTIFICATION:
        return action(dynamic_cast<MMS_UA_SvNotiCmd &>(event));
    case MMS_UA_SVCMD_DELIVERY:
        return action(dynamic_cast<MMS_UA_SvDeliCmd &>(event));
    default:
        throw VectorError(QStringLiteral("an event of an unknown type"));
    }
}

static Result eventWrite(const QJsonObject &in)
{
    if (in.value("id") == "readRec") {
        MMS_UA_SvReadRecCmd report;
        fillReport(report, in);
        return Result().set("variable", extraOf(report));
    }
    const std::unique_ptr<MMS_UA_SvCmd> event = newEvent(in);
    as(*event, [&in](auto &concrete) { fill(concrete, in); });
    return Result().set("hex", written(*event));
}

static Result eventRead(const QJsonObject &in)
{
    const std::unique_ptr<MMS_UA_SvCmd> event = newEvent(in);
    SocketPair pair;
    pair.feed(from<QArray<char>>(in.value("hex")).toByteArray());
    Result result;
    const int ret = event->read(pair.socket());
    result.set("ret", ret);
    if (ret == 1) {
        as(*event, [&result](auto &concrete) { tell(concrete, result); });
        result.set("left", static_cast<int>(pair.unread().size()));
    }
    return result;
}

static Result readCmd(const QJsonObject &in)
{
    const std::unique_ptr<MMS_UA_SvCmd> event = newEvent(in);
    SocketPair pair;
    QJsonArray results;
    int ret = 0;
    for (const QJsonValue &chunk : in.value("chunks").toArray()) {
        pair.feed(from<QArray<char>>(chunk).toByteArray());
        if (ret == 0) {
            ret = event->read(pair.socket());
            results.append(ret);
        }
    }
    Result result;
    result.set("results", results).set("extraLen", event->extraLen());
    if (ret == 1) {
        result.set("fixed", hex(event->fixedPart()))
            .set("extra", extraOf(*event))
            .set("left", hex(pair.unread()))
            .set("ownsExtra", event->ownsExtra())
            .set("readState", event->readState());
    }
    return result;
}

static Result setData(const QJsonObject &in)
{
    MMS_UA_AbortCmd record;
    QList<QArray<char>> given; // the record may point at them
    QJsonArray results;
    for (const QJsonValue &step : in.value("steps").toArray()) {
        const QJsonArray arguments = step.toArray();
        given.append(arguments.at(0).isNull() ? QArray<char>()
                                              : from<QArray<char>>(arguments.at(0)));
        record.setData(given.last().data(), from<int>(arguments.at(1)),
                       from<bool>(arguments.at(2)));
        QJsonObject state{{"extraLen", record.extraLen()}};
        state.insert("extra", record.extra() ? extraOf(record) : QJsonValue());
        if (record.extra()) {
            state.insert("ownsExtra", record.ownsExtra());
        }
        results.append(state);
    }
    return Result().set("results", results);
}

Operations proxyOperations()
{
    return {
        {"proxy.factory", "kind id", "null type dataLen extraLen", factory},
        {"proxy.cmd", "id requestId text targetId", "hex", cmd},
        {"proxy.eventWrite", "id requestId uri status result value1 value2 tranId to date msgId",
         "hex variable", eventWrite},
        {"proxy.eventRead", "id hex",
         "ret left requestId uri status result value1 value2 tranId to date msgId", eventRead},
        {"proxy.readCmd", "id chunks", "results extraLen fixed extra left ownsExtra readState",
         readCmd},
        {"proxy.setData", "steps", "results", setData},
    };
}

} // namespace vectors

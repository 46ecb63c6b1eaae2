// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/header_members.h"

#include "tests/vectors/forms.h"

#include <algorithm>
#include <array>

namespace vectors {

template <auto Member> static void setMember(MMS_HDR_S &header, const QJsonValue &json)
{
    using Value = std::remove_reference_t<decltype(header.*Member)>;
    header.*Member = from<Value>(json);
}

template <auto Member> static QJsonValue getMember(const MMS_HDR_S &header)
{
    return toJson(header.*Member);
}

template <auto Member> static constexpr HeaderMember row(const char *name)
{
    return {name, setMember<Member>, getMember<Member>};
}

static constexpr std::array<HeaderMember, kFieldCount> kMembers = {{
    row<&MMS_HDR_S::bcc>("bcc"),
    row<&MMS_HDR_S::cc>("cc"),
    row<&MMS_HDR_S::contentLocation>("contentLocation"),
    row<&MMS_HDR_S::contentType>("contentType"),
    row<&MMS_HDR_S::msgDate>("msgDate"),
    row<&MMS_HDR_S::deliveryReport>("deliveryReport"),
    row<&MMS_HDR_S::deliveryTime>("deliveryTime"),
    row<&MMS_HDR_S::expiry>("expiry"),
    row<&MMS_HDR_S::from>("from"),
    row<&MMS_HDR_S::msgClass>("msgClass"),
    row<&MMS_HDR_S::msgID>("msgID"),
    row<&MMS_HDR_S::msgType>("msgType"),
    row<&MMS_HDR_S::version>("version"),
    row<&MMS_HDR_S::msgSize>("msgSize"),
    row<&MMS_HDR_S::priority>("priority"),
    row<&MMS_HDR_S::readReport>("readReport"),
    row<&MMS_HDR_S::reportAllowed>("reportAllowed"),
    row<&MMS_HDR_S::responseStatus>("responseStatus"),
    row<&MMS_HDR_S::responseText>("responseText"),
    row<&MMS_HDR_S::senderVisibility>("senderVisibility"),
    row<&MMS_HDR_S::msgStatus>("msgStatus"),
    row<&MMS_HDR_S::subject>("subject"),
    row<&MMS_HDR_S::to>("to"),
    row<&MMS_HDR_S::transactionId>("transactionId"),
}};

using Entries = QValueList<WMFMEntry>;
using Msg = WMMSMsg;
using Json = QJsonValue;

// clang-format off
static const MessageSetter kSetters[] = {
    {"setBcc",                     [](Msg &m, const Json &v) { return m.setBcc(from<Entries>(v)); }},
    {"setBccEntry",                [](Msg &m, const Json &v) { return m.setBcc(from<WMFMEntry>(v)); }},
    {"setCc",                      [](Msg &m, const Json &v) { return m.setCc(from<Entries>(v)); }},
    {"setCcEntry",                 [](Msg &m, const Json &v) { return m.setCc(from<WMFMEntry>(v)); }},
    {"setContentLocation",         [](Msg &m, const Json &v) { return m.setContentLocation(from<QString>(v)); }},
    {"setContentType",             [](Msg &m, const Json &v) { return m.setContentType(from<WMMSContentType>(v)); }},
    {"setDate",                    [](Msg &m, const Json &v) { return m.setDate(from<QDateTime>(v)); }},
    {"setDeliveryReportNecessity", [](Msg &m, const Json &v) { return m.setDeliveryReportNecessity(from<bool>(v)); }},
    {"setDeliveryTime",            [](Msg &m, const Json &v) { return m.setDeliveryTime(from<QDateTime>(v)); }},
    {"setExpiryTime",              [](Msg &m, const Json &v) { return m.setExpiryTime(from<unsigned int>(v)); }},
    {"setFrom",                    [](Msg &m, const Json &v) { return m.setFrom(from<WMFMEntry>(v)); }},
    {"setMsgClass",                [](Msg &m, const Json &v) { return m.setMsgClass(from<quint8>(v)); }},
    {"setMsgID",                   [](Msg &m, const Json &v) { return m.setMsgID(from<QString>(v)); }},
    {"setPDUType",                 [](Msg &m, const Json &v) { return m.setPDUType(from<quint8>(v)); }},
    {"setVersion",                 [](Msg &m, const Json &v) { return m.setVersion(from<quint8>(v)); }},
    {"setMsgSize",                 [](Msg &m, const Json &v) { return m.setMsgSize(from<int>(v)); }},
    {"setPriority",                [](Msg &m, const Json &v) { return m.setPriority(from<quint8>(v)); }},
    {"setReadReportNecessity",     [](Msg &m, const Json &v) { return m.setReadReportNecessity(from<bool>(v)); }},
    {"setReportAllowedity",        [](Msg &m, const Json &v) { return m.setReportAllowedity(from<bool>(v)); }},
    {"setResponseStatus",          [](Msg &m, const Json &v) { return m.setResponseStatus(from<quint8>(v)); }},
    {"setResponseText",            [](Msg &m, const Json &v) { return m.setResponseText(from<QString>(v)); }},
    {"setSenderVisibility",        [](Msg &m, const Json &v) { return m.setSenderVisibility(from<bool>(v)); }},
    {"setMsgStatus",               [](Msg &m, const Json &v) { return m.setMsgStatus(from<quint8>(v)); }},
    {"setSubject",                 [](Msg &m, const Json &v) { return m.setSubject(from<QString>(v)); }},
    {"setTo",                      [](Msg &m, const Json &v) { return m.setTo(from<Entries>(v)); }},
    {"setTransactionID",           [](Msg &m, const Json &v) { return m.setTransactionID(from<QString>(v)); }},
    {"setAppID",                   [](Msg &m, const Json &v) { return m.setAppID(from<QString>(v)); }},
    {"setReplyAppID",              [](Msg &m, const Json &v) { return m.setReplyAppID(from<QString>(v)); }},
    {"setAuxAppInfo",              [](Msg &m, const Json &v) { return m.setAuxAppInfo(from<QString>(v)); }},
    {"setMultiParts",              [](Msg &m, const Json &v) { return m.setMultiParts(from<WMMSMultipart>(v)); }},
    {"setAudioExistence",          [](Msg &m, const Json &v) { m.setAudioExistence(from<bool>(v)); return true; }},
    {"setVideoExistence",          [](Msg &m, const Json &v) { m.setVideoExistence(from<bool>(v)); return true; }},
    {"setAttachmentExistence",     [](Msg &m, const Json &v) { m.setAttachmentExistence(from<bool>(v)); return true; }},
    {"setUPIType",                 [](Msg &m, const Json &v) { m.setUPIType(from<quint8>(v)); return true; }},
    {"setMMSType",                 [](Msg &m, const Json &v) { m.setMMSType(from<quint8>(v)); return true; }},
    // Appends; through the base class, whose setTo() takes one recipient.
    {"setToEntry",                 [](Msg &m, const Json &v) { return static_cast<WMFMMsg &>(m).setTo(from<WMFMEntry>(v)); }},
};

/// Rows 0 to 23 are those of field 1 to 24.
static const MessageGetter kGetters[] = {
    {"getBcc",                     [](Msg &m) { return toJson(m.getBcc()); }},
    {"getCc",                      [](Msg &m) { return toJson(m.getCc()); }},
    {"getContentLocation",         [](Msg &m) { return toJson(m.getContentLocation()); }},
    {"getContentType",             [](Msg &m) { return toJson(m.getContentType()); }},
    {"getDate",                    [](Msg &m) { return toJson(m.getDate()); }},
    {"getDeliveryReportNecessity", [](Msg &m) { return toJson(m.getDeliveryReportNecessity()); }},
    {"getDeliveryTime",            [](Msg &m) { return toJson(m.getDeliveryTime()); }},
    {"getExpiryTime",              [](Msg &m) { return toJson(static_cast<int>(m.getExpiryTime())); }},
    {"getFrom",                    [](Msg &m) { return toJson(m.getFrom()); }},
    {"getMsgClass",                [](Msg &m) { return toJson(m.getMsgClass()); }},
    {"getMsgID",                   [](Msg &m) { return toJson(m.getMsgID()); }},
    {"getPDUType",                 [](Msg &m) { return toJson(m.getPDUType()); }},
    {"getVersion",                 [](Msg &m) { return toJson(m.getVersion()); }},
    {"getMsgSize",                 [](Msg &m) { return toJson(m.getMsgSize()); }},
    {"getPriority",                [](Msg &m) { return toJson(m.getPriority()); }},
    {"getReadReportNecessity",     [](Msg &m) { return toJson(m.getReadReportNecessity()); }},
    {"getReportAllowedity",        [](Msg &m) { return toJson(m.getReportAllowedity()); }},
    {"getResponseStatus",          [](Msg &m) { return toJson(m.getResponseStatus()); }},
    {"getResponseText",            [](Msg &m) { return toJson(m.getResponseText()); }},
    {"getSenderVisibility",        [](Msg &m) { return toJson(m.getSenderVisibility()); }},
    {"getMsgStatus",               [](Msg &m) { return toJson(m.getMsgStatus()); }},
    {"getSubject",                 [](Msg &m) { return toJson(m.getSubject()); }},
    {"getTo",                      [](Msg &m) { return toJson(m.getTo()); }},
    {"getTransactionID",           [](Msg &m) { return toJson(m.getTransactionID()); }},
    {"getAppID",                   [](Msg &m) { return toJson(m.getAppID()); }},
    {"getReplyAppID",              [](Msg &m) { return toJson(m.getReplyAppID()); }},
    {"getAuxAppInfo",              [](Msg &m) { return toJson(m.getAuxAppInfo()); }},
    {"getMultiParts",              [](Msg &m) { return toJson(m.getMultiParts()); }},
    {"getAudioExistence",          [](Msg &m) { return toJson(m.getAudioExistence()); }},
    {"getVideoExistence",          [](Msg &m) { return toJson(m.getVideoExistence()); }},
    {"getAttachmentExistence",     [](Msg &m) { return toJson(m.getAttachmentExistence()); }},
    {"getUPIType",                 [](Msg &m) { return toJson(m.getUPIType()); }},
    {"getMMSType",                 [](Msg &m) { return toJson(m.getMMSType()); }},
    {"getMsgType",                 [](Msg &m) { return toJson(static_cast<int>(m.getMsgType())); }},
};
// clang-format on

const HeaderMember &headerMember(int id)
{
    if (id < 1 || id > kFieldCount) {
        throw VectorError(QStringLiteral("no header field: %1").arg(id));
    }
    return kMembers[id - 1];
}

int fieldId(const QString &memberName)
{
    const auto found =
        std::find_if(kMembers.begin(), kMembers.end(), [&](const HeaderMember &member) {
            return memberName == QLatin1String(member.name);
        });
    if (found == kMembers.end()) {
        throw VectorError(QStringLiteral("no header member: %1").arg(memberName));
    }
    return static_cast<int>(found - kMembers.begin()) + 1;
}

QJsonValue messageMember(WMMSMsg &message, int id)
{
    return kGetters[id - 1].get(message);
}

template <typename Rows> static auto findRow(const Rows &rows, const QString &name)
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), [&](const auto &row) {
        return name == QLatin1String(row.name);
    });
    return found == std::end(rows) ? nullptr : found;
}

const MessageSetter *findMessageSetter(const QString &name)
{
    return findRow(kSetters, name);
}
const MessageGetter *findMessageGetter(const QString &name)
{
    return findRow(kGetters, name);
}

} // namespace vectors

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/vectors/forms.h"

#include "tests/vectors/header_members.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

#include <limits>

namespace vectors {

[[noreturn]] static void fail(const char *what, const QJsonValue &json)
{
    const QByteArray shown = QJsonDocument(QJsonArray{json}).toJson(QJsonDocument::Compact);
    throw VectorError(QStringLiteral("%1: %2").arg(QLatin1String(what), QString::fromUtf8(shown)));
}

void allowKeys(const QJsonObject &object, const char *keys)
{
    const QStringList allowed =
        QString::fromLatin1(keys).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &key : object.keys()) {
        if (!allowed.contains(key)) {
            throw VectorError(QStringLiteral("unknown key \"%1\"").arg(key));
        }
    }
}

static QJsonObject objectOf(const char *what, const QJsonValue &json, const char *keys)
{
    if (!json.isObject()) {
        fail(what, json);
    }
    allowKeys(json.toObject(), keys);
    return json.toObject();
}

template <typename T> static T integer(const QJsonValue &json)
{
    const qint64 value = json.toInteger(std::numeric_limits<qint64>::min());
    if (!json.isDouble() || value < qint64{std::numeric_limits<T>::min()}
        || value > qint64{std::numeric_limits<T>::max()}) {
        fail("no number that fits", json);
    }
    return static_cast<T>(value);
}

template <> quint8 from<quint8>(const QJsonValue &json)
{
    return integer<quint8>(json);
}
template <> quint16 from<quint16>(const QJsonValue &json)
{
    return integer<quint16>(json);
}
template <> short from<short>(const QJsonValue &json)
{
    return integer<short>(json);
}
template <> int from<int>(const QJsonValue &json)
{
    return integer<int>(json);
}
template <> unsigned int from<unsigned int>(const QJsonValue &json)
{
    return integer<unsigned int>(json);
}

template <> bool from<bool>(const QJsonValue &json)
{
    if (!json.isBool()) {
        fail("neither true nor false", json);
    }
    return json.toBool();
}

template <> QString from<QString>(const QJsonValue &json)
{
    if (!json.isNull() && !json.isString()) {
        fail("no text", json);
    }
    return json.isNull() ? QString() : json.toString(); // "" gives an empty text that is not null
}

template <> QArray<char> from<QArray<char>>(const QJsonValue &json)
{
    const QByteArray text = json.toString().toLatin1();
    const QByteArray bytes = QByteArray::fromHex(text);
    if (!json.isString() || bytes.toHex() != text) {
        fail("no bytes in lower-case hex", json);
    }
    return QArray<char>(bytes);
}

/// One half of a date-time: null, "invalid" or the half itself.
template <typename Half>
static Half halfOf(const QJsonValue &json, const QString &format, const Half &invalid)
{
    if (json.isNull() || json.toString() == QLatin1String("invalid")) {
        return json.isNull() ? Half() : invalid;
    }
    const Half half = Half::fromString(json.toString(), format);
    if (!half.isValid()) {
        fail("no date or time", json);
    }
    return half;
}

template <> QDateTime from<QDateTime>(const QJsonValue &json)
{
    if (json.isNull()) {
        return QDateTime();
    }
    const QJsonObject object = objectOf("no date-time", json, "date time");
    const QDate impossibleDate(2001, 2, 31);
    const QDate date = halfOf(object.value("date"), "yyyy-MM-dd", impossibleDate);
    const QTime time = halfOf(object.value("time"), "hh:mm:ss", QTime(25, 0, 0));
    if (date.isValid() && !time.isValid()) {
        // A date-time of a valid date and an invalid time cannot exist in Qt 6, where it becomes
        // midnight. One whose other half is invalid stands for it: invalid, and not null.
        return QDateTime(impossibleDate, QTime(12, 30));
    }
    return QDateTime(date, time);
}

template <> WMFMEntry from<WMFMEntry>(const QJsonValue &json)
{
    const QJsonObject object = objectOf("no entry", json, "type value name");
    WMFMEntry entry;
    if (object.contains("type") && object.value("type").toInteger() != entry.getEntryType()
        && !entry.setEntryType(from<quint8>(object.value("type")))) {
        fail("no entry type", json);
    }
    entry.setEntryVal(valueOr(object, "value", QString::fromLatin1("")));
    entry.setContactName(valueOr(object, "name", QString::fromLatin1("")));
    return entry;
}

template <> QValueList<WMFMEntry> from<QValueList<WMFMEntry>>(const QJsonValue &json)
{
    if (!json.isArray()) {
        fail("no list of entries", json);
    }
    QValueList<WMFMEntry> entries;
    for (const QJsonValue &entry : json.toArray()) {
        entries.append(from<WMFMEntry>(entry));
    }
    return entries;
}

template <> WMMSContentType from<WMMSContentType>(const QJsonValue &json)
{
    const QJsonObject object = objectOf("no content type", json, "main sub params");
    WMMSContentType type;
    type.setMainType(valueOr(object, "main", QString()));
    type.setSubType(valueOr(object, "sub", QString()));
    const QJsonObject params = object.value("params").toObject();
    for (const QString &name : params.keys()) {
        type.setParam(name, from<QString>(params.value(name)));
    }
    return type;
}

static void appendParts(QValueList<WMMSMultipart> &list, const QJsonValue &json)
{
    if (!json.isArray()) {
        fail("no list of parts", json);
    }
    for (const QJsonValue &part : json.toArray()) {
        list.append(from<WMMSMultipart>(part));
    }
}

template <> WMMSMultipart from<WMMSMultipart>(const QJsonValue &json)
{
    const QJsonObject object = objectOf("no part", json, "type id location data subs");
    WMMSMultipart part;
    if (object.contains("type")) {
        part.setContentType(from<WMMSContentType>(object.value("type")));
    }
    if (object.contains("id")) {
        part.setContentID(from<QString>(object.value("id")));
    }
    if (object.contains("location")) {
        part.setContentLocation(from<QString>(object.value("location")));
    }
    if (object.contains("data")) {
        part.setData(from<QArray<char>>(object.value("data")));
    }
    if (object.contains("subs")) {
        appendParts(part.getSubMmsMultipartList(), object.value("subs"));
    }
    return part;
}

static void buildRoot(WMMSMultipart &root, const QJsonValue &json)
{
    const QJsonObject object = objectOf("no root part", json, "data subs");
    if (object.contains("data")) {
        root.setData(from<QArray<char>>(object.value("data")));
    }
    if (object.contains("subs")) {
        appendParts(root.getSubMmsMultipartList(), object.value("subs"));
    }
}

void build(WMMSMsg &message, const QJsonValue &json)
{
    const QJsonObject object = objectOf("no message", json, "root set");
    if (!object.value("root").isNull() && !object.value("root").isUndefined()) {
        buildRoot(message.getMultiParts(), object.value("root"));
    }
    for (const QJsonValue &call : object.value("set").toArray()) {
        const MessageSetter *setter = findMessageSetter(call.toArray().at(0).toString());
        if (!setter || call.toArray().size() != 2) {
            fail("no setter of a message", call);
        }
        if (!setter->set(message, call.toArray().at(1))) {
            fail("a setter did not return true", call);
        }
    }
}

QJsonValue toJson(bool value)
{
    return value;
}
QJsonValue toJson(quint8 value)
{
    return qint64{value};
}
QJsonValue toJson(quint16 value)
{
    return qint64{value};
}
QJsonValue toJson(int value)
{
    return qint64{value};
}
QJsonValue toJson(unsigned int value)
{
    return qint64{value};
}

QJsonValue toJson(const QString &text)
{
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonValue toJson(const QDateTime &dateTime)
{
    if (dateTime.isNull()) {
        return QJsonValue::Null;
    }
    if (!dateTime.isValid()) {
        return QJsonObject{{"invalid", true}};
    }
    const QDateTime local = dateTime.toLocalTime(); // a decoded date is kept in UTC
    return QJsonObject{{"date", local.date().toString("yyyy-MM-dd")},
                       {"time", local.time().toString("hh:mm:ss")}};
}

QJsonValue toJson(const WMFMEntry &entry)
{
    return QJsonObject{{"type", toJson(entry.getEntryType())},
                       {"value", toJson(entry.getEntryVal())},
                       {"name", toJson(entry.getContactName())}};
}

QJsonValue toJson(const QValueList<WMFMEntry> &entries)
{
    QJsonArray list;
    for (const WMFMEntry &entry : entries) {
        list.append(toJson(entry));
    }
    return list;
}

QJsonValue hex(QByteArrayView bytes)
{
    return QString::fromLatin1(QByteArray::fromRawData(bytes.data(), bytes.size()).toHex());
}

QJsonValue toJson(const WMMSContentType &type)
{
    QJsonObject params;
    for (auto param = type.params().cbegin(); param != type.params().cend(); ++param) {
        params.insert(param.key(), toJson(param.value()));
    }
    return QJsonObject{{"main", toJson(type.getMainType())},
                       {"sub", toJson(type.getSubType())},
                       {"params", params}};
}

QJsonValue toJson(WMMSMultipart &part)
{
    QJsonObject object{{"type", toJson(part.getContentType())},
                       {"id", toJson(part.getContentID())},
                       {"location", toJson(part.getContentLocation())},
                       {"data", hex(part.getData())}};
    if (QValueList<WMMSMultipart> &subs = part.getSubMmsMultipartList(); !subs.isEmpty()) {
        object.insert("subs", toJson(subs));
    }
    return object;
}

QJsonValue toJson(QValueList<WMMSMultipart> &parts)
{
    QJsonArray list;
    for (WMMSMultipart &part : parts) {
        list.append(toJson(part));
    }
    return list;
}

} // namespace vectors

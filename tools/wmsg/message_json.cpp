// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_json.h"

#include "tools/wmsg/field_words.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QJsonArray>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

void insertText(QJsonObject &object, const QString &key, const QString &text)
{
    if (!text.isEmpty()) {
        object.insert(key, text);
    }
}

QJsonObject entryJson(const WMFMEntry &entry)
{
    QJsonObject object;
    if (entry.isValid()) {
        object.insert(u"type"_s, entry.getEntryType() == 1 ? u"PLMN"_s : u"EMAIL"_s);
        object.insert(u"value"_s, entry.getEntryVal());
        insertText(object, u"name"_s, entry.getContactName());
    }
    return object;
}

QJsonArray entriesJson(const QValueList<WMFMEntry> &entries)
{
    QJsonArray array;
    for (const WMFMEntry &entry : entries) {
        array.append(entryJson(entry));
    }
    return array;
}

QJsonObject contentTypeJson(const WMMSContentType &type)
{
    QJsonObject params;
    for (auto param = type.params().begin(); param != type.params().end(); ++param) {
        params.insert(param.key(), param.value());
    }
    return {{u"type"_s, type.getMimeType()}, {u"params"_s, params}};
}

// A word for a known code, the number for any other.
QJsonValue codeJson(int fieldId, quint8 code)
{
    const CodeWords *words = codeWords(fieldId, code);
    return words ? QJsonValue(QLatin1String(words->key)) : QJsonValue(code);
}

QJsonValue dateJson(const QDateTime &date)
{
    return date.toSecsSinceEpoch();
}

QJsonValue codeFieldJson(int id, const MMS_HDR_S &header)
{
    switch (id) {
    case MMS_FIELD_MSG_TYPE:
        return codeJson(id, header.msgType);
    case MMS_FIELD_MSG_CLASS:
        return codeJson(id, header.msgClass);
    case MMS_FIELD_PRIORITY:
        return codeJson(id, header.priority);
    case MMS_FIELD_RESPONSE_STATUS:
        return codeJson(id, header.responseStatus);
    case MMS_FIELD_MSG_STATUS:
        return codeJson(id, header.msgStatus);
    case MMS_FIELD_VERSION:
        return versionInWords(header.version);
    default:
        return QJsonValue::Undefined;
    }
}

QJsonValue textFieldJson(int id, const MMS_HDR_S &header)
{
    switch (id) {
    case MMS_FIELD_TRANSACTION_ID:
        return header.transactionId;
    case MMS_FIELD_SUBJECT:
        return header.subject;
    case MMS_FIELD_MSG_ID:
        return header.msgID;
    case MMS_FIELD_CONTENT_LOCATION:
        return header.contentLocation;
    case MMS_FIELD_RESPONSE_TEXT:
        return header.responseText;
    default:
        return codeFieldJson(id, header);
    }
}

QJsonValue valueFieldJson(int id, const MMS_HDR_S &header)
{
    switch (id) {
    case MMS_FIELD_DATE:
        return dateJson(header.msgDate);
    case MMS_FIELD_DELIVERY_TIME:
        return dateJson(header.deliveryTime);
    case MMS_FIELD_EXPIRY:
        return header.expiry;
    case MMS_FIELD_MSG_SIZE:
        return header.msgSize;
    case MMS_FIELD_DELIVERY_REPORT:
        return header.deliveryReport;
    case MMS_FIELD_READ_REPORT:
        return header.readReport;
    case MMS_FIELD_REPORT_ALLOWED:
        return header.reportAllowed;
    case MMS_FIELD_SENDER_VISIBILITY:
        return header.senderVisibility;
    default:
        return textFieldJson(id, header);
    }
}

QJsonValue fieldJson(int id, const MMS_HDR_S &header)
{
    switch (id) {
    case MMS_FIELD_FROM:
        return entryJson(header.from);
    case MMS_FIELD_TO:
        return entriesJson(header.to);
    case MMS_FIELD_CC:
        return entriesJson(header.cc);
    case MMS_FIELD_BCC:
        return entriesJson(header.bcc);
    case MMS_FIELD_CONTENT_TYPE:
        return contentTypeJson(header.contentType);
    default:
        return valueFieldJson(id, header);
    }
}

// By field id.
constexpr const char *kKeys[] = {
    nullptr,
    "bcc",
    "cc",
    "contentLocation",
    "contentType",
    "date",
    "deliveryReport",
    "deliveryTime",
    "expiry",
    "from",
    "messageClass",
    "messageId",
    "type",
    "version",
    "messageSize",
    "priority",
    "readReport",
    "reportAllowed",
    "responseStatus",
    "responseText",
    "senderVisibility",
    "status",
    "subject",
    "to",
    "transactionId",
};

// A field whose value could not be read is left out; 0 stands for none.
QJsonObject headersJson(const WMMSMsg &message, int failedField)
{
    const MMS_HDR_S &header = message.header();
    QJsonObject headers;
    for (quint8 id = MMS_FIELD_BCC; id <= MMS_FIELD_TRANSACTION_ID; ++id) {
        if (message.fieldIsPresent(id) && id != failedField) {
            headers.insert(QLatin1String(kKeys[id]), fieldJson(id, header));
        }
    }
    if (headers.contains(u"type"_s)) {
        headers.insert(u"typeCode"_s, header.msgType);
    }
    return headers;
}

QJsonArray presentJson(const WMMSMsg &message)
{
    QJsonArray ids;
    for (quint8 id = MMS_FIELD_BCC; id <= MMS_FIELD_TRANSACTION_ID; ++id) {
        if (message.fieldIsPresent(id)) {
            ids.append(id);
        }
    }
    return ids;
}

QJsonArray partsJson(const QValueList<WMMSMultipart> &parts)
{
    QJsonArray array;
    for (const WMMSMultipart &part : parts) {
        const QByteArrayView data = part.getData().view();
        QCryptographicHash hash(QCryptographicHash::Sha256);
        hash.addData(data);
        QJsonObject object{
            {u"contentType"_s, contentTypeJson(part.getContentType())},
            {u"size"_s, data.size()},
            {u"sha256"_s, QString::fromLatin1(hash.result().toHex())},
        };
        insertText(object, u"contentId"_s, part.getContentID());
        insertText(object, u"contentLocation"_s, part.getContentLocation());
        if (isText(part)) {
            object.insert(u"text"_s, textOf(part));
        }
        if (part.subParts()) {
            object.insert(u"parts"_s, partsJson(*part.subParts()));
        }
        array.append(object);
    }
    return array;
}

QJsonArray warningsJson(const PduWalk &walk, qint64 size)
{
    QJsonArray array;
    for (const Finding &warning : walk.warnings()) {
        array.append(QJsonObject{{u"offset"_s, warning.offset},
                                 {u"field"_s, warning.field},
                                 {u"message"_s, warning.message}});
    }
    if (walk.untoldWarnings() > 0) {
        array.append(QJsonObject{{u"offset"_s, size},
                                 {u"field"_s, u"rest"_s},
                                 {u"message"_s, u"%1 more warnings"_s.arg(walk.untoldWarnings())}});
    }
    return array;
}

} // namespace

QJsonObject contentJson(const WMMSMsg &message)
{
    return {
        {u"headers"_s, headersJson(message, 0)},
        {u"present"_s, presentJson(message)},
        {u"parts"_s, partsJson(partsOf(message))},
    };
}

namespace {

QJsonObject remarkJson(const intake::Remark &remark)
{
    return {{u"offset"_s, remark.offset}, {u"what"_s, remark.what}};
}

QJsonArray remarksJson(const QList<intake::Remark> &remarks)
{
    QJsonArray array;
    for (const intake::Remark &remark : remarks) {
        array.append(remarkJson(remark));
    }
    return array;
}

QJsonObject intakeJson(const Explanation &intake)
{
    QJsonObject object{
        {u"changed"_s, intake.isChanged},
        {u"steps"_s, remarksJson(intake.steps)},
        {u"lost"_s, remarksJson(intake.lost)},
    };
    if (intake.problem) {
        object.insert(u"keptAside"_s, remarkJson(*intake.problem));
    }
    insertText(object, u"notice"_s, intake.notice);
    return object;
}

QJsonObject codecJson(const Explanation &intake)
{
    QJsonObject object{{u"result"_s, qint64(intake.codecResult)}};
    if (const auto &failure = intake.codecFailure) {
        object.insert(u"offset"_s, failure->offset);
        object.insert(u"field"_s, failure->field);
        object.insert(u"message"_s, failure->message);
    }
    return object;
}

QJsonArray otherFieldsJson(const QList<OtherField> &fields)
{
    QJsonArray array;
    for (const OtherField &field : fields) {
        QJsonObject object{
            {u"offset"_s, field.offset},
            {u"name"_s, field.name},
            {u"value"_s, field.value},
        };
        if (field.id != 0) {
            object.insert(u"id"_s, field.id);
        }
        array.append(object);
    }
    return array;
}

QJsonObject pushJson(const PushFacts &push)
{
    QJsonObject object{
        {u"transaction"_s, push.transaction},
        {u"type"_s, push.type},
        {u"contentType"_s, push.media},
    };
    insertText(object, u"application"_s, push.application);
    return object;
}

void insertExplanation(QJsonObject &object, const Explanation &intake)
{
    object.insert(u"intake"_s, intakeJson(intake));
    object.insert(u"codec"_s, codecJson(intake));
    object.insert(u"headerLength"_s, intake.headerLength);
    object.insert(u"bodyLength"_s, intake.bodyLength);
    if (!intake.otherFields.isEmpty()) {
        object.insert(u"otherFields"_s, otherFieldsJson(intake.otherFields));
    }
    if (intake.push) {
        object.insert(u"push"_s, pushJson(*intake.push));
    }
}

} // namespace

QJsonObject messageJson(const DecodedFile &file)
{
    const bool isMailFile = file.kind == FileKind::MailFile;
    QJsonObject object{
        {u"file"_s, file.name},
        {u"kind"_s, isMailFile ? u"mailfile"_s : u"pdu"_s},
        {u"result"_s, qint64(file.result)},
        {u"headers"_s, headersJson(file.message, file.walk.failedField())},
        {u"present"_s, presentJson(file.message)},
        {u"headerLength"_s, file.walk.headerLength()},
        {u"bodyLength"_s, file.walk.bodyLength()},
        {u"parts"_s, partsJson(partsOf(file.message))},
        {u"warnings"_s, warningsJson(file.walk, file.bytes.size())},
    };
    if (isMailFile) {
        object.insert(u"mmsType"_s, file.message.getMMSType());
    }
    if (file.intake) {
        insertExplanation(object, *file.intake);
    }
    return object;
}

} // namespace wmsg::cli

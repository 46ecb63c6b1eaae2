// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_view.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/text_view.h"

#include <mms/model/result_codes.h>

#include <QtCore/QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kShownValue = 200;
constexpr qsizetype kShownName = 48;
constexpr qsizetype kShownEntries = 1000;
constexpr qsizetype kShownText = 160;

QString inLine(const QString &text, Detail detail)
{
    return text.isNull() ? u"(nothing)"_s
        : text.isEmpty() ? u"(empty)"_s
                         : shortened(text, detail == Detail::Full ? 0 : kShownValue);
}

QString yesNo(bool value)
{
    return value ? u"yes"_s : u"no"_s;
}

QString entryView(const WMFMEntry &entry, Detail detail)
{
    const QString value = inLine(entry.getEntryVal(), detail);
    const QString contact = entry.getContactName().trimmed();
    const QString name = contact.isEmpty() ? contact : inLine(contact, detail);
    const QString kind = entry.getEntryType() == 1 ? u"phone number"_s : u"e-mail address"_s;
    return (name.isEmpty() ? value : u"%1 <%2>"_s.arg(name, value)) + u" ("_s + kind + u')';
}

QStringList entriesView(const QValueList<WMFMEntry> &entries, Detail detail)
{
    const qsizetype shown =
        detail == Detail::Full ? entries.size() : std::min(entries.size(), kShownEntries);
    QStringList lines;
    for (qsizetype n = 0; n < shown; ++n) {
        lines += entryView(entries[n], detail);
    }
    if (shown < entries.size()) {
        lines += u"and %1 more"_s.arg(entries.size() - shown);
    }
    return lines;
}

QStringList contentTypeView(const WMMSContentType &type, Detail detail)
{
    QStringList lines{type.isEmpty() ? u"(unknown)"_s : inLine(type.getMimeType(), detail)};
    for (auto param = type.params().begin(); param != type.params().end(); ++param) {
        lines += inLine(param.key(), detail) + u" = "_s + inLine(param.value(), detail);
    }
    return lines;
}

QString textFieldView(int id, const MMS_HDR_S &header, Detail detail)
{
    switch (id) {
    case MMS_FIELD_TRANSACTION_ID:
        return inLine(header.transactionId, detail);
    case MMS_FIELD_SUBJECT:
        return inLine(header.subject, detail);
    case MMS_FIELD_MSG_ID:
        return inLine(header.msgID, detail);
    case MMS_FIELD_CONTENT_LOCATION:
        return inLine(header.contentLocation, detail);
    case MMS_FIELD_RESPONSE_TEXT:
        return inLine(header.responseText, detail);
    case MMS_FIELD_MSG_TYPE:
        return codeInWords(id, header.msgType);
    case MMS_FIELD_MSG_CLASS:
        return codeInWords(id, header.msgClass);
    case MMS_FIELD_PRIORITY:
        return codeInWords(id, header.priority);
    case MMS_FIELD_RESPONSE_STATUS:
        return codeInWords(id, header.responseStatus);
    default:
        return codeInWords(id, header.msgStatus);
    }
}

QString valueFieldView(int id, const MMS_HDR_S &header, Detail detail)
{
    switch (id) {
    case MMS_FIELD_VERSION:
        return versionInWords(header.version);
    case MMS_FIELD_DATE:
        return dateInWords(header.msgDate);
    case MMS_FIELD_DELIVERY_TIME:
        return dateInWords(header.deliveryTime);
    case MMS_FIELD_EXPIRY:
        return durationInWords(header.expiry);
    case MMS_FIELD_MSG_SIZE:
        return sizeInWords(header.msgSize);
    case MMS_FIELD_DELIVERY_REPORT:
        return yesNo(header.deliveryReport);
    case MMS_FIELD_READ_REPORT:
        return yesNo(header.readReport);
    case MMS_FIELD_REPORT_ALLOWED:
        return yesNo(header.reportAllowed);
    case MMS_FIELD_SENDER_VISIBILITY:
        return header.senderVisibility ? u"shown"_s : u"hidden"_s;
    default:
        return textFieldView(id, header, detail);
    }
}

QStringList fieldView(int id, const MMS_HDR_S &header, Detail detail)
{
    switch (id) {
    case MMS_FIELD_FROM:
        return {header.from.isValid() ? entryView(header.from, detail)
                                      : u"(the network inserts the address)"_s};
    case MMS_FIELD_TO:
        return entriesView(header.to, detail);
    case MMS_FIELD_CC:
        return entriesView(header.cc, detail);
    case MMS_FIELD_BCC:
        return entriesView(header.bcc, detail);
    case MMS_FIELD_CONTENT_TYPE:
        return contentTypeView(header.contentType, detail);
    default:
        return {valueFieldView(id, header, detail)};
    }
}

// In the order that people look for them.
constexpr int kOrder[] = {
    MMS_FIELD_MSG_TYPE,
    MMS_FIELD_TRANSACTION_ID,
    MMS_FIELD_VERSION,
    MMS_FIELD_DATE,
    MMS_FIELD_FROM,
    MMS_FIELD_TO,
    MMS_FIELD_CC,
    MMS_FIELD_BCC,
    MMS_FIELD_SUBJECT,
    MMS_FIELD_MSG_ID,
    MMS_FIELD_MSG_CLASS,
    MMS_FIELD_PRIORITY,
    MMS_FIELD_MSG_STATUS,
    MMS_FIELD_RESPONSE_STATUS,
    MMS_FIELD_RESPONSE_TEXT,
    MMS_FIELD_MSG_SIZE,
    MMS_FIELD_CONTENT_LOCATION,
    MMS_FIELD_EXPIRY,
    MMS_FIELD_DELIVERY_TIME,
    MMS_FIELD_SENDER_VISIBILITY,
    MMS_FIELD_DELIVERY_REPORT,
    MMS_FIELD_READ_REPORT,
    MMS_FIELD_REPORT_ALLOWED,
    MMS_FIELD_CONTENT_TYPE,
};

QString headerView(const WMMSMsg &message, int failedField, Detail detail)
{
    constexpr int kNameWidth = 19;
    QString view;
    for (const FieldView &field : headerFields(message, failedField, detail)) {
        QString name = field.name;
        for (const QString &line : field.lines) {
            view += u"  "_s + name.leftJustified(kNameWidth) + line + u'\n';
            name.clear();
        }
    }
    return view;
}

/// One line of the table of parts.
struct PartRow {
    QString number;
    QString type;
    QString name;
    QString size;
    QString text;
};

/// A name in the table of parts.
QString inTable(const QString &name, Detail detail)
{
    if (detail == Detail::Full || name.size() <= kShownName) {
        return printable(name);
    }
    const bool isSplit = name[kShownName - 2].isHighSurrogate();
    return printable(name.left(kShownName - (isSplit ? 2 : 1))) + u'…';
}

QString nameOf(const WMMSMultipart &part, Detail detail)
{
    const QString location = part.getContentLocation();
    const QString id = part.getContentID();
    const bool isSame = id.isEmpty() || id == location || part.getSrc() == location;
    return inTable((isSame ? location : location + u' ' + id).trimmed(), detail);
}

void addRows(QList<PartRow> &rows, const QValueList<WMMSMultipart> &parts, const QString &prefix,
             Detail detail)
{
    int number = 0;
    for (const WMMSMultipart &part : parts) {
        PartRow row;
        row.number = prefix + QString::number(++number);
        const WMMSContentType &type = part.getContentType();
        row.type = type.isEmpty() ? u"(unknown type)"_s : inTable(type.getMimeType(), detail);
        row.name = nameOf(part, detail);
        row.size = sizeInWords(part.getData().size());
        if (isText(part) && !part.getData().isEmpty()) {
            row.text =
                u'"' + shortened(textOf(part), detail == Detail::Full ? 0 : kShownText) + u'"';
        }
        rows.append(row);
        if (part.subParts()) {
            addRows(rows, *part.subParts(), row.number + u'.', detail);
        }
    }
}

/// Longer names do not make the others wider.
template <typename Member> int widthOf(const QList<PartRow> &rows, Member member)
{
    qsizetype width = 0;
    for (const PartRow &row : rows) {
        width = std::max(width, std::min((row.*member).size(), kShownName));
    }
    return static_cast<int>(width);
}

QString partsView(const WMMSMsg &message, Detail detail)
{
    const QValueList<WMMSMultipart> parts = partsOf(message);
    QList<PartRow> rows;
    addRows(rows, parts, QString(), detail);
    if (rows.isEmpty()) {
        return {};
    }
    const int numberWidth = widthOf(rows, &PartRow::number);
    const int typeWidth = widthOf(rows, &PartRow::type);
    const int nameWidth = widthOf(rows, &PartRow::name);
    QString view = u"\n  "_s + counted(parts.size(), "part"_L1) + u'\n';
    for (const PartRow &row : rows) {
        const qsizetype depth = row.number.count(u'.');
        const QString indent = QString(2 * depth, u' ');
        view += u"  "_s + indent + row.number.leftJustified(numberWidth) + u"  "_s
            + row.type.leftJustified(typeWidth) + u"  "_s + row.name.leftJustified(nameWidth)
            + u"  "_s + row.size + u'\n';
        if (!row.text.isEmpty()) {
            view += u"  "_s + indent + QString(numberWidth, u' ') + u"  "_s + row.text + u'\n';
        }
    }
    return view;
}

} // namespace

QList<FieldView> headerFields(const WMMSMsg &message, int failedField, Detail detail)
{
    QList<FieldView> fields;
    for (const int id : kOrder) {
        if (message.fieldIsPresent(static_cast<quint8>(id))) {
            const bool isFailed = id == failedField;
            fields.append({fieldName(id),
                           isFailed ? QStringList(u"(cannot be read)"_s)
                                    : fieldView(id, message.header(), detail)});
        }
    }
    return fields;
}

QString kindInWords(const DecodedFile &file)
{
    if (file.kind == FileKind::MailFile) {
        return u"mail file (%1)"_s.arg(mmsTypeInWords(file.message.getMMSType()));
    }
    if (!file.message.fieldIsPresent(MMS_FIELD_MSG_TYPE)) {
        return u"PDU"_s;
    }
    const CodeWords *type = codeWords(MMS_FIELD_MSG_TYPE, file.message.header().msgType);
    return type ? QString::fromLatin1(type->words) : u"PDU of an unknown type"_s;
}

QString titleOf(const DecodedFile &file)
{
    const QString size = sizeInWords(file.bytes.size());
    const qint32 header = file.intake ? file.intake->headerLength : file.walk.headerLength();
    const qint32 body = file.intake ? file.intake->bodyLength : file.walk.bodyLength();
    const QString lengths = u"header %1, body %2"_s.arg(header).arg(body);
    return u"%1: %2, %3, %4\n"_s.arg(printable(file.name), kindInWords(file), size, lengths);
}

QString warningsView(const PduWalk &walk)
{
    const qint64 number = walk.warnings().size() + walk.untoldWarnings();
    if (number == 0) {
        return {};
    }
    QString view = u"\n  "_s + counted(number, "warning"_L1) + u'\n';
    for (const Finding &warning : walk.warnings()) {
        view += u"  offset %1, %2: %3\n"_s.arg(warning.offset)
                    .arg(warning.field, harmless(warning.message));
    }
    if (walk.untoldWarnings() > 0) {
        view += u"  and %1 more\n"_s.arg(walk.untoldWarnings());
    }
    return view;
}

QString contentView(const WMMSMsg &message, Detail detail)
{
    return headerView(message, 0, detail) + partsView(message, detail);
}

namespace {

QString remarksView(const QList<intake::Remark> &remarks, const QString &what)
{
    if (remarks.isEmpty()) {
        return {};
    }
    QString view = u"\n  "_s + what + u'\n';
    for (const intake::Remark &remark : remarks) {
        view += u"  offset %1: %2\n"_s.arg(remark.offset).arg(printable(remark.what));
    }
    return view;
}

QString codecView(const Explanation &intake)
{
    if (intake.codecResult == MMS_DECODE_OK) {
        return {};
    }
    QString view = u"\n  the codec alone: result %1 (%2"_s.arg(intake.codecResult)
                       .arg(resultInWords(intake.codecResult));
    if (const auto &why = intake.codecFailure) {
        view += u": %1) at offset %2, field %3"_s.arg(harmless(why->message))
                    .arg(why->offset)
                    .arg(harmless(why->field));
    } else {
        view += u')';
    }
    return view + u'\n';
}

QString pushView(const PushFacts &push)
{
    QString view = u"transaction %1"_s.arg(push.transaction);
    if (!push.media.isEmpty()) {
        view += u", "_s + printable(push.media);
    }
    if (!push.application.isNull()) {
        view += u", application "_s + push.application;
    }
    return view;
}

/// What stands around the fields that the codec knows.
QString aroundView(const Explanation &intake)
{
    constexpr int kNameWidth = 19;
    QString view;
    if (intake.push) {
        view +=
            u"  "_s + QString(u"Push"_s).leftJustified(kNameWidth) + pushView(*intake.push) + u'\n';
    }
    for (const OtherField &field : intake.otherFields) {
        view += u"  "_s + (field.name + u' ').leftJustified(kNameWidth) + field.value + u'\n';
    }
    return view;
}

} // namespace

QString notesView(const DecodedFile &file)
{
    if (!file.intake) {
        return warningsView(file.walk);
    }
    const Explanation &intake = *file.intake;
    QString view;
    if (!intake.notice.isEmpty()) {
        view += u"\n  "_s + harmless(intake.notice) + u'\n';
    }
    view += remarksView(intake.steps, counted(intake.steps.size(), "repair"_L1));
    view += remarksView(intake.lost, u"lost"_s);
    if (intake.problem) {
        view += remarksView({*intake.problem}, u"kept aside by the daemon"_s);
    }
    return view + warningsView(file.walk) + codecView(intake);
}

QString messageView(const DecodedFile &file, Detail detail)
{
    const QString around = file.intake ? aroundView(*file.intake) : QString();
    return titleOf(file) + headerView(file.message, file.walk.failedField(), detail) + around
        + partsView(file.message, detail) + notesView(file);
}

} // namespace wmsg::cli

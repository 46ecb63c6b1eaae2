// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/draft.h"

#include "tools/wmsg/address_text.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/media_type.h"
#include "tools/wmsg/presentation.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/stored_message.h"
#include "tools/wmsg/text_view.h"
#include "tools/wmsg/time_text.h"

#include <mms/codec/mms_hdr_s.h>
#include <mms/codec/msgfieldbase.h>
#include <mms/codec/wsp_stream.h>
#include <mms/model/result_codes.h>
#include <platform/mimetype/am_mimetype.h>

#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr quint8 kVersion = 0x12;
constexpr qsizetype kMostParts = 254; // their number is one byte, and the presentation is one too
constexpr int kHeaderRoom = 10240;
constexpr qsizetype kLongestIdentifier = 64;
constexpr quint8 kSentFields[] = {
    MMS_FIELD_TO,      MMS_FIELD_CC,     MMS_FIELD_BCC,          MMS_FIELD_FROM,
    MMS_FIELD_SUBJECT, MMS_FIELD_MSG_ID, MMS_FIELD_CONTENT_TYPE,
};

QString presentationId()
{
    return u"<smil>"_s;
}

// Sets `text` to an argument of the command line; false when it is no UTF-8.
bool readArgument(const QByteArray &argument, QString &text)
{
    text = QString::fromUtf8(argument);
    return argument.isValidUtf8();
}

QString notUtf8(const QString &what)
{
    return what + u": is not valid UTF-8"_s;
}

bool isGraphicAscii(const QByteArray &text)
{
    return !text.isEmpty()
        && std::all_of(text.begin(), text.end(), [](char c) { return c > 0x20 && c < 0x7F; });
}

QString newIdentifier()
{
    const quint64 number = QRandomGenerator::system()->generate64();
    return u'T' + QString::number(number, 16).toUpper().rightJustified(16, u'0');
}

} // namespace

QString Draft::make()
{
    m_message.setPDUType(m_request.pduType);
    m_message.setVersion(kVersion);
    setMarks();
    using Step = QString (Draft::*)();
    for (const Step step : {&Draft::setRecipients, &Draft::setSender, &Draft::setTimes,
                            &Draft::setIdentifiers, &Draft::addTexts}) {
        QString problem = (this->*step)();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    arrange();
    return checkFields();
}

void Draft::setMarks()
{
    m_message.setPriority(m_request.priority);
    m_message.setMsgClass(m_request.messageClass);
    if (m_request.deliveryReport) {
        m_message.setDeliveryReportNecessity(*m_request.deliveryReport);
    }
    if (m_request.readReport) {
        m_message.setReadReportNecessity(*m_request.readReport);
    }
}

QString Draft::setRecipients()
{
    QString problem = setAddresses(u"--to"_s, m_request.to, &WMMSMsg::setTo);
    if (problem.isEmpty()) {
        problem = setAddresses(u"--cc"_s, m_request.cc, &WMMSMsg::setCc);
    }
    return problem.isEmpty() ? setAddresses(u"--bcc"_s, m_request.bcc, &WMMSMsg::setBcc) : problem;
}

QString Draft::setAddresses(const QString &option, Lines addresses,
                            bool (WMMSMsg::*add)(const WMFMEntry &))
{
    for (const QByteArray &address : addresses) {
        QString text;
        WMFMEntry entry;
        if (!readArgument(address, text)) {
            return notUtf8(option);
        }
        QString problem = parseAddress(text, entry);
        if (!problem.isEmpty()) {
            return u"%1: \"%2\" %3"_s.arg(option, shortened(text, 80), problem);
        }
        (m_message.*add)(entry);
    }
    return {};
}

QString Draft::setSender()
{
    QString subject;
    if (!readArgument(m_request.subject, subject)) {
        return notUtf8(u"--subject"_s);
    }
    if (std::any_of(subject.begin(), subject.end(),
                    [](QChar c) { return c.category() == QChar::Other_Control; })) {
        return u"--subject: has a control character"_s;
    }
    if (!subject.isEmpty()) {
        m_message.setSubject(subject);
    }
    if (m_request.from.isEmpty()) {
        return {}; // the network inserts the address
    }
    QString from;
    WMFMEntry entry;
    if (!readArgument(m_request.from, from)) {
        return notUtf8(u"--from"_s);
    }
    QString problem = parseAddress(from, entry);
    m_message.setFrom(entry);
    return problem.isEmpty() ? problem : u"--from: \"%1\" %2"_s.arg(shortened(from, 80), problem);
}

QString Draft::setTimes()
{
    const auto date = m_request.date.isEmpty()
        ? std::optional<QDateTime>(QDateTime::currentDateTime())
        : parseDate(QString::fromUtf8(m_request.date));
    if (!date) {
        return u"--date: \"%1\" is no date from 1970 to 2038 (2024-05-01T12:00:00Z, or seconds)"_s
            .arg(shortened(QString::fromUtf8(m_request.date), 80));
    }
    m_message.setDate(*date);
    if (m_request.expiry.isEmpty()) {
        return {};
    }
    const auto expiry = parseDuration(QString::fromUtf8(m_request.expiry));
    if (!expiry) {
        return u"--expiry: \"%1\" is no duration (90, 15m, 12h, 3d, 1w)"_s.arg(
            shortened(QString::fromUtf8(m_request.expiry), 80));
    }
    m_message.setExpiryTime(static_cast<unsigned int>(*expiry));
    return {};
}

QString Draft::setIdentifiers()
{
    struct Identifier {
        QString option;
        const QByteArray &value;
    };
    const Identifier identifiers[] = {{u"--transaction-id"_s, m_request.transactionId},
                                      {u"--message-id"_s, m_request.messageId},
                                      {u"--app-id"_s, m_request.appId}};
    for (const Identifier &identifier : identifiers) {
        if (identifier.value.isEmpty()) {
            continue;
        }
        if (!isGraphicAscii(identifier.value)) {
            return identifier.option + u": takes ASCII letters, digits and signs alone"_s;
        }
        if (identifier.value.size() > kLongestIdentifier) {
            return u"%1: is longer than %2 characters"_s.arg(identifier.option)
                .arg(kLongestIdentifier);
        }
    }
    m_message.setTransactionID(m_request.transactionId.isEmpty()
                                   ? newIdentifier()
                                   : QString::fromLatin1(m_request.transactionId));
    if (!m_request.messageId.isEmpty()) {
        m_message.setMsgID(QString::fromLatin1(m_request.messageId));
    }
    return {};
}

QString Draft::addTexts()
{
    for (const QByteArray &argument : m_request.texts) {
        QString text;
        if (!readArgument(argument, text)) {
            return notUtf8(u"--text"_s);
        }
        QString problem = addText(text);
        if (!problem.isEmpty()) {
            return u"--text: "_s + problem;
        }
    }
    QString problem = addFiles(m_request.textFiles, true);
    return problem.isEmpty() ? addFiles(m_request.files, false) : problem;
}

QString Draft::addText(const QString &text)
{
    return addPart(u"text/plain"_s, u"text.txt"_s, QArray<char>(text.toUtf8()));
}

QString Draft::addFiles(Lines paths, bool areTexts)
{
    for (const QByteArray &path : paths) {
        QString problem = addFile(path, areTexts);
        if (!problem.isEmpty()) {
            return shownName(path) + u": "_s + problem;
        }
    }
    return {};
}

QString Draft::addFile(const QByteArray &path, bool isText)
{
    QArray<char> bytes;
    QString problem = readInput(path, m_request.sizeLimit - m_size, bytes);
    if (!problem.isEmpty()) {
        return problem;
    }
    if (bytes.isEmpty()) {
        return u"is empty"_s;
    }
    const QString name = path == "-" ? QString() : QString::fromUtf8(path);
    const QString mediaType = isText ? u"text/plain"_s : mediaTypeOf(name, bytes);
    // Every text is labelled as UTF-8 when it is written.
    if (mediaType.startsWith("text/"_L1) && !bytes.toByteArray().isValidUtf8()) {
        return u"is a text (%1), and not in UTF-8"_s.arg(mediaType);
    }
    return addPart(mediaType, name, bytes);
}

QString Draft::addPart(const QString &mediaType, const QString &name, const QArray<char> &bytes)
{
    if (m_parts.size() >= kMostParts) {
        return u"is one too many; a message takes %1 texts and files"_s.arg(kMostParts);
    }
    m_size += bytes.size();
    WMMSContentType type;
    type.setMimeType(mediaType);
    const QStringList extensions = AM_MimeType::instance()->getExtListByMimeId(mediaType);
    QString safeName = safePartName(name, u"part%1"_s.arg(m_parts.size() + 1));
    if (!safeName.contains(u'.') && !extensions.isEmpty()) {
        safeName += u'.' + extensions.first();
    }
    safeName = m_names.take(safeName);
    WMMSMultipart part;
    part.setContentType(type);
    part.setContentID(u'<' + safeName + u'>');
    part.setContentLocation(safeName);
    part.setData(bytes);
    m_parts.append(part);
    return {};
}

void Draft::arrange()
{
    WMMSContentType type;
    type.setMimeType(u"application/vnd.wap.multipart.mixed"_s);
    if (m_request.hasPresentation && !slidesOf(m_parts).isEmpty()) {
        addPresentation();
        type.setMimeType(u"application/vnd.wap.multipart.related"_s);
        type.setParamStart(presentationId());
        type.setParamType(u"application/smil"_s);
    }
    m_message.setContentType(type);
    m_message.setAppID(QString::fromLatin1(m_request.appId));
    m_message.getMultiParts().setSubMmsMultipart(m_parts);
    const int mmsType = m_message.getMMSTypeByContentType(m_message.getContentType(), true);
    m_message.setMMSType(static_cast<unsigned char>(mmsType));
}

void Draft::addPresentation()
{
    WMMSContentType type;
    type.setMimeType(u"application/smil"_s);
    WMMSMultipart part;
    part.setContentType(type);
    part.setContentID(presentationId());
    part.setContentLocation(m_names.take(u"smil.smil"_s));
    part.setData(QArray<char>(smilOf(slidesOf(m_parts))));
    m_parts.prepend(part);
}

// A field that its codec cannot write whole is named; the message itself would only be refused.
QString Draft::checkFields() const
{
    MMS_HDR_S header = m_message.header();
    QByteArray room(kHeaderRoom, Qt::Uninitialized);
    for (const quint8 id : kSentFields) {
        WSP_Stream stream(room.data(), kHeaderRoom);
        const std::unique_ptr<MsgFieldBase> codec(WMMSMsg::selectField(id));
        if (!codec->write(stream, &header) || stream.hasOverflowed()) {
            return fieldName(id) + u": is too long to be written"_s;
        }
    }
    return {};
}

QString Draft::encode(QByteArray &bytes)
{
    if (m_request.pduType == MMS_PDU_STORED) {
        return mailFileBytes(m_message, bytes);
    }
    QArray<char> pdu;
    const quint32 result = m_message.packTo(pdu, nullptr, nullptr);
    bytes = pdu.toByteArray();
    return result == MMS_ENCODE_OK ? QString()
                                   : u"result %1 (%2)"_s.arg(result).arg(resultInWords(result));
}

} // namespace wmsg::cli

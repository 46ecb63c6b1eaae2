// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/model/engine_text.h"
#include "mms/model/mms_util_conv.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "platform/engine/mms_char.h"
#include "platform/engine/mms_eng_controller.h"

#include <QtCore/QDateTime>

#include <algorithm>
#include <climits>
#include <cstdlib>

// Messages on their way into the message store of the device and back, as the records of its
// engine.
//
//   message, constructEngMsg        -> header record, body record with a record for each part
//   header, status and body records -> message, constructWMMSMsg

namespace {

using wmsg::engine_bridge::recordText;
using wmsg::engine_bridge::textOf;

constexpr int kCodeBase = 128; // the records count priorities and classes from 0
constexpr unsigned int kNoExpiry = 0xFFFFFFFF;
constexpr int kAtOnce = -1;

/// The code of a word, in 8 bits.
unsigned char codeOf(int word)
{
    return static_cast<unsigned char>(static_cast<unsigned int>(word) + kCodeBase);
}

QLatin1String relatedType()
{
    return QLatin1String("application/vnd.wap.multipart.related");
}
QLatin1String presentationType()
{
    return QLatin1String("application/smil");
}

/// Seconds since 1970 as far as a word of a record goes.
int wordOf(const QDateTime &time)
{
    return static_cast<int>(std::clamp<long>(MMS_UTIL_Conv::toUTC(time), INT_MIN, INT_MAX));
}

unsigned short *wideText(const QString &text)
{
    unsigned short *wide = nullptr;
    if (!text.isEmpty()) {
        const auto length = static_cast<unsigned int>(text.size());
        wide = static_cast<unsigned short *>(std::calloc(length + 1, sizeof(unsigned short)));
        if (wide) {
            MMS_UTIL_Conv::qwcsncpy(wide, text, length);
        }
    }
    return wide;
}

/// The wide form of up to `length` Latin-1 bytes of a text; null for an empty one.
// Kept: subject and application ids go through Latin-1.
unsigned short *wideFromLatin1(const QString &text, qsizetype length)
{
    const auto room = static_cast<unsigned int>(text.size()) + 1;
    auto *wide = text.isEmpty()
        ? nullptr
        : static_cast<unsigned short *>(std::calloc(room, sizeof(unsigned short)));
    if (wide) {
        const QByteArray bytes = text.toLatin1();
        MMS_Char_convUTF8toUCS2String(bytes.constData(), static_cast<unsigned int>(length), wide,
                                      room);
    }
    return wide;
}

/// The subject of a record, cut where its UTF-8 form exceeds two bytes a unit and two more.
QString subjectOf(const unsigned short *wide)
{
    const unsigned int length = MMS_UTIL_Conv::wcsnlen(wide, 0);
    QByteArray utf8((qsizetype(length) + 1) * 2, '\0');
    utf8.truncate(MMS_Char_convUCS2toUTF8String(wide, length, utf8.data(),
                                                static_cast<unsigned int>(utf8.size())));
    return QString::fromUtf8(utf8);
}

bool isProtected(const QString &mimeType)
{
    return mimeType.contains(QLatin1String("application/vnd.oma.drm.message"))
        || mimeType.contains(QLatin1String("application/vnd.oma.drm.content"));
}

/// "Content-Type:", "Content-ID:" and "Content-Location:" of a part.
QByteArray headerTextOf(const WMMSMultipart &part)
{
    const QString charset = part.getContentType().getParam(QStringLiteral("charset"));
    QString text = QLatin1String("Content-Type:") + part.getContentType().getMimeType().toLower();
    if (!charset.isEmpty()) {
        logLine(3, "charset to give to part_hdr =%s", charset);
        text += QLatin1String(";charset=utf-8"); // as texts are kept
    }
    text += QLatin1Char(';');
    const QString fileName = part.getLocalFileName();
    if (!fileName.isEmpty()) {
        text += QLatin1String("name=") + fileName.mid(fileName.lastIndexOf(QLatin1Char('/')) + 1);
    }
    if (!part.getContentID().isEmpty()) {
        text += QLatin1String("\r\nContent-ID:") + part.getContentID();
    }
    if (!part.getContentLocation().isEmpty()) {
        text += QLatin1String("\r\nContent-Location:") + part.getContentLocation();
    }
    logLine(4, "part Hdr= %s", text);
    return text.toLatin1();
}

/// The records of one message on their way into the engine, released at the end.
struct OutgoingRecords {
    OutgoingRecords() = default;
    ~OutgoingRecords()
    {
        MMS_ENG_Controller::Instance()->FreeMMSHdr(&header);
        if (body) {
            MMS_ENG_Controller::Instance()->FreeMMSBdy(body);
        }
        std::free(body);
    }
    Q_DISABLE_COPY_MOVE(OutgoingRecords)

    MMS_MSG_HDR_T header = {};
    MMS_MSG_BDY_T *body = nullptr;
};

} // namespace

void WMMSMsg::engDataInitHdr(MMS_MSG_HDR_T *header)
{
    logLine(8, "Entering function %s\n", "engDataInitHdr");
    *header = {};
    header->priority = m_header->priority - kCodeBase;
    header->msgClass = m_header->msgClass - kCodeBase;
    header->expiry = getExpiryTime();
    header->deliveryTime = kAtOnce;
    const QDateTime now = QDateTime::currentDateTime();
    if (m_header->deliveryTime > now) {
        logLine(3, "Setting the scheduled delivery time");
        const int deliveryTime = wordOf(m_header->deliveryTime);
        if (header->expiry != kNoExpiry) {
            header->expiry += static_cast<unsigned int>(deliveryTime);
        }
        header->deliveryTime = deliveryTime;
        logLine(3, "engDataInitHdr:: final expiry_period =  %d", header->expiry);
    }
    logLine(3, "Setting the delivery time to value = %d", header->deliveryTime);
    header->date = wordOf(m_header->msgDate.isNull() ? now : m_header->msgDate);
    header->deliveryReport = m_header->deliveryReport ? 1 : 0;
    header->readReport = m_header->readReport ? 1 : 0;
    header->size = m_header->msgSize;
    engDataInitTexts(header);
}

void WMMSMsg::engDataInitTexts(MMS_MSG_HDR_T *header) const
{
    const WMMSContentType &type = m_header->contentType;
    if (type.getMimeType().toLower() == relatedType() && !type.getParamType().isEmpty()) {
        header->presentation = recordText(type.getParamType().toLatin1());
    }
    header->from = wideText(m_header->from.getEntryVal());
    MMS_UTIL_Conv::copyAddress_AddrListToWchar(m_header->to, &header->to);
    MMS_UTIL_Conv::copyAddress_AddrListToWchar(m_header->cc, &header->cc);
    MMS_UTIL_Conv::copyAddress_AddrListToWchar(m_header->bcc, &header->bcc);
    header->subject = wideFromLatin1(m_header->subject, m_header->subject.size());
    const QString appId = getAppID();
    header->appId = wideFromLatin1(appId, appId.size());
    // Kept: the reply application id is cut to the length of the application id.
    header->replyAppId = wideFromLatin1(getReplyAppID(), appId.size());
    const QString auxAppInfo = getAuxAppInfo();
    header->auxAppInfo = wideFromLatin1(auxAppInfo, auxAppInfo.size());
}

// The signature is fixed. NOLINTNEXTLINE(performance-unnecessary-value-param)
void WMMSMsg::engDataInitMsgbdy(QString contentType, MMS_MSG_BDY_T **body)
{
    *body = static_cast<MMS_MSG_BDY_T *>(std::calloc(1, sizeof(MMS_MSG_BDY_T)));
    if (!*body) {
        logLine(3, "Engine body allocation failed");
        return;
    }
    (*body)->contentType = recordText(contentType.isNull() ? QByteArray() : contentType.toLatin1());
    (*body)->parts =
        static_cast<MMS_MSG_PART_T *>(std::calloc(MMS_ENG_MAX_PARTS, sizeof(MMS_MSG_PART_T)));
    if (!(*body)->parts) {
        logLine(3, "multiparts allocation failed");
    }
}

quint32 WMMSMsg::engDataAppendParts(WMMSMultipart *part, MMS_MSG_BDY_T *body)
{
    if (!part || !body || !body->parts) {
        logLine(4, "Body and multiparts are NULL");
        return MMS_ENCODE_BAD_FIELD;
    }
    if (body->partCount >= MMS_ENG_MAX_PARTS) {
        return MMS_ENCODE_NO_CODEC;
    }
    const QArray<char> &bytes = part->getData();
    void *data = bytes.isEmpty() ? nullptr : std::malloc(static_cast<size_t>(bytes.size()));
    if (!data && !bytes.isEmpty()) {
        return MMS_ENCODE_BAD_FIELD;
    }
    MMS_MSG_PART_T &record = body->parts[body->partCount++];
    record.mimeType = recordText(part->getContentType().getMimeType().toLower().toLatin1());
    record.contentId = recordText(part->getContentID().toLatin1());
    logLine(4, "ContentId = %s", part->getContentID());
    record.contentLocation = recordText(part->getContentLocation().toUtf8());
    logLine(4, "getContentLocation= %s\n", part->getContentLocation());
    record.fileName = recordText(part->getLocalFileName().toLatin1());
    logLine(4, "Localfilename= %s\n", part->getLocalFileName());
    record.headerText = recordText(headerTextOf(*part));
    std::copy(bytes.begin(), bytes.end(), static_cast<char *>(data));
    record.data = data;
    record.size = bytes.size();
    logLine(4, "part size is %d\n", record.size);
    return MMS_ENCODE_OK;
}

quint32 WMMSMsg::constructEngMsg(unsigned short *msgId, unsigned short folder)
{
    logLine(8, "Entering function %s\n", "constructEngMsg");
    OutgoingRecords records;
    engDataInitHdr(&records.header);
    const QString mimeType = m_header->contentType.toStringWithQuotes();
    logLine(4, "mimetypeStr after toStringWithQuotes=%s", mimeType);
    engDataInitMsgbdy(mimeType, &records.body);
    m_body.printInfo();
    bool hasProtectedPart = false;
    if (!appendAllParts(records.body, hasProtectedPart)) {
        return MMS_ENCODE_BAD_FIELD;
    }
    records.header.forwardable = hasProtectedPart ? 0 : 1;
    unsigned short id = msgId ? *msgId : MMS_ENG_INVALID_ID;
    auto *engine = MMS_ENG_Controller::Instance();
    const int result = id < MMS_ENG_INVALID_ID
        ? engine->UpdateMMS(folder, id, &records.header, records.body)
        : engine->CreateMMS(folder, &id, &records.header, records.body);
    logLine(3, "msgID=%d", id);
    if (msgId) {
        *msgId = id;
    }
    return result == MMS_ENG_OK ? MMS_SAVE_OK : MMS_SAVE_FAIL;
}

// Kept: a protected part counts among several and not alone.
bool WMMSMsg::appendAllParts(MMS_MSG_BDY_T *body, bool &hasProtectedPart)
{
    if (!m_body.subParts() || m_body.subParts()->isEmpty()) {
        return engDataAppendParts(&m_body, body) == MMS_ENCODE_OK;
    }
    for (WMMSMultipart &part : m_body.getSubMmsMultipartList()) {
        const QString mimeType = part.getContentType().getMimeType().toLower();
        logLine(3, " The content type is = %s", mimeType);
        hasProtectedPart = hasProtectedPart || isProtected(mimeType);
        if (engDataAppendParts(&part, body) != MMS_ENCODE_OK) {
            return false;
        }
    }
    return true;
}

quint32 WMMSMsg::constructWMMSMsg(unsigned short msgId, MMS_MSG_HDR_T *header, bool readBody,
                                  unsigned short /*unused*/)
{
    logLine(8, "Entering function %s\n", "constructWMMSMsg");
    if (msgId == MMS_ENG_INVALID_ID) {
        logLine(3, "Invalid Msg Id");
        return MMS_DECODE_BAD_FIELD;
    }
    auto *engine = MMS_ENG_Controller::Instance();
    m_engineMsgId = msgId;
    MMS_MSG_HDR_T own = {};
    MMS_MSG_HDR_T *record = header ? header : &own;
    *record = {};
    if (engine->ReadMMSHdr(msgId, record) != MMS_ENG_OK) {
        engine->FreeMMSHdr(record);
        return MMS_DECODE_BAD_FIELD;
    }
    takeAddresses(*record);
    takeStatus(msgId);
    takeValues(*record);
    const bool isWhole = !readBody || takeBody(msgId, *record);
    if (!isWhole || !header) {
        engine->FreeMMSHdr(record);
    }
    if (!isWhole) {
        return MMS_DECODE_BAD_BODY;
    }
    setMMSType(
        static_cast<unsigned char>(getMMSTypeByContentType(m_header->contentType, readBody)));
    logLine(7, "mmsType=%d", m_mmsType);
    return MMS_DECODE_OK;
}

void WMMSMsg::takeAddresses(const MMS_MSG_HDR_T &record)
{
    m_mask->setMask(MMS_FIELD_TO);
    m_mask->setMask(MMS_FIELD_CC);
    m_mask->setMask(MMS_FIELD_BCC);
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(record.cc, &m_header->cc);
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(record.to, &m_header->to);
    MMS_UTIL_Conv::copyAddress_WcharToAddrList(record.bcc, &m_header->bcc);
    MMS_UTIL_Conv::setWMFMEntry(record.from, &m_header->from);
    if (record.presentation && QLatin1String(record.presentation).contains(presentationType())) {
        m_header->contentType.setMimeType(relatedType());
        m_header->contentType.setParamType(presentationType());
    }
    logLine(3, "Filled the presentation content type");
}

void WMMSMsg::takeStatus(unsigned short msgId)
{
    MMS_MOMT_STATUS_T status = {};
    if (MMS_ENG_Controller::Instance()->ReadMMSMoMtStatus(msgId, &status) != MMS_ENG_OK) {
        m_header->responseStatus = 0;
        m_header->responseText = QStringLiteral("");
        return;
    }
    const char *text = status.result != 0 ? status.errorText : status.statusText;
    setResponseStatus(status.result != 0
                          ? mapMmscResp(static_cast<short>(std::clamp(status.result, -1, SHRT_MAX)))
                          : static_cast<unsigned char>(status.status));
    if (text) {
        setResponseText(QString::fromUtf8(text));
    }
    std::free(status.errorText);
    std::free(status.statusText);
}

// What is not set with a setter is not marked as present.
void WMMSMsg::takeValues(const MMS_MSG_HDR_T &record)
{
    setPriority(codeOf(record.priority));
    m_header->msgClass = codeOf(record.msgClass);
    if (record.subject) {
        setSubject(subjectOf(record.subject));
    } else {
        m_header->subject = QStringLiteral("");
    }
    m_header->expiry = static_cast<qint32>(record.expiry);
    m_header->deliveryReport = record.deliveryReport != 0;
    m_header->msgDate = MMS_UTIL_Conv::fromUTC(record.date);
    m_header->msgSize = record.size;
    m_header->readReport = record.readReport != 0;
    m_header->contentLocation = QStringLiteral("");
    m_header->deliveryTime = QDateTime();
    if (record.deliveryTime != kAtOnce) {
        setDeliveryTime(
            QDateTime::fromSecsSinceEpoch(static_cast<unsigned int>(record.deliveryTime)));
    }
    m_header->msgStatus = 0;
    m_header->msgID = QStringLiteral("");
    m_header->version = 0;
    m_header->transactionId = QStringLiteral("");
}

bool WMMSMsg::takeBody(unsigned short msgId, const MMS_MSG_HDR_T &record)
{
    logLine(7, "Decoding Body");
    auto *engine = MMS_ENG_Controller::Instance();
    MMS_MSG_BDY_T body = {};
    if (engine->ReadMMSBody(msgId, &body) != MMS_ENG_OK) {
        engine->FreeMMSBdy(&body);
        return false;
    }
    const bool isWhole = m_body.constructWMMSBdy(&body);
    engine->FreeMMSBdy(&body);
    if (!isWhole) {
        logLine(4, "constructWMMSBdy returns false");
        return false;
    }
    if (getAppID().isEmpty()) {
        setAppID(textOf(record.appId));
    }
    if (getReplyAppID().isEmpty()) {
        setReplyAppID(textOf(record.replyAppId));
    }
    if (getAuxAppInfo().isEmpty()) {
        setAuxAppInfo(textOf(record.auxAppInfo));
    }
    return true;
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/wmmsmsg.h"

#include "mms/codec/field_table.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/codec/msgfieldbase.h"

namespace {

constexpr unsigned char kDefaultPriority = 1;
constexpr unsigned char kClassPersonal = 128;
constexpr quint8 kNoUpiType = 12;
constexpr quint8 kNotClassified = 255;

QString appIdName()
{
    return QStringLiteral("Application-ID");
}
QString replyAppIdName()
{
    return QStringLiteral("Reply-To-Application-ID");
}
// Kept: the name is spelled "Auxillary-Application-Information". Peers expect it so.
QString auxAppInfoName()
{
    return QStringLiteral("Auxillary-Application-Information");
}

bool appendEntry(QValueList<WMFMEntry> &list, const WMFMEntry &entry, Msg_Field_Mask &mask,
                 unsigned char id)
{
    list.append(entry);
    mask.setMask(id);
    return true;
}

} // namespace

WMMSMsg::WMMSMsg()
{
    init();
}

WMMSMsg::WMMSMsg(const WMMSMsg &other)
    : WMFMMsg(other), m_header(std::make_unique<MMS_HDR_S>()),
      m_mask(std::make_unique<Msg_Field_Mask>())
{
    copyFrom(other);
}

WMMSMsg &WMMSMsg::operator=(const WMMSMsg &other)
{
    if (this != &other) {
        copyFrom(other);
    }
    return *this;
}

WMMSMsg::~WMMSMsg() = default;

void WMMSMsg::copyFrom(const WMMSMsg &other)
{
    m_body = other.m_body;
    *m_header = *other.m_header;
    m_headerLength = other.m_headerLength;
    m_bodyLength = other.m_bodyLength;
    m_audioExistence = other.m_audioExistence;
    m_videoExistence = other.m_videoExistence;
    m_attachmentExistence = other.m_attachmentExistence;
    m_upiType = other.m_upiType;
    m_mmsType = other.m_mmsType;
    m_msgDBID = other.m_msgDBID;
    m_engineMsgId = other.m_engineMsgId;
    m_reservedId = other.m_reservedId;
    *m_mask = *other.m_mask;
}

void WMMSMsg::init()
{
    m_audioExistence = false;
    m_videoExistence = false;
    m_attachmentExistence = false;
    m_headerLength = 0;
    m_bodyLength = 0;
    m_upiType = kNoUpiType;
    m_mmsType = kNotClassified;
    m_msgDBID = -1;
    m_engineMsgId = 0xFFFF;
    m_reservedId = -1;
    m_header = std::make_unique<MMS_HDR_S>();
    m_mask = std::make_unique<Msg_Field_Mask>();
    setSenderVisibility(true);
    m_header->msgType = MMS_PDU_STORED; // not marked as present: the stored form does not carry it
    setPriority(kDefaultPriority);
    setMsgClass(kClassPersonal);
}

void WMMSMsg::clear()
{
    m_body.clear();
    *m_header = MMS_HDR_S();
    m_mask->clear();
}

WMFM::MSG_TYPE_T WMMSMsg::getMsgType() const
{
    return WMFM::MSG_TYPE_MMS;
}

bool WMMSMsg::setMultiParts(const WMMSMultipart &root)
{
    m_body = root;
    return true;
}

bool WMMSMsg::fieldIsPresent(unsigned char id) const
{
    return m_mask->getMask(id) != 0;
}

MsgFieldBase *WMMSMsg::selectField(unsigned char id)
{
    const auto *row = wmsg::codec::fieldRow(id);
    return row ? row->create() : nullptr;
}

QValueList<WMFMEntry> &WMMSMsg::getTo()
{
    return m_header->to;
}

bool WMMSMsg::setTo(const WMFMEntry &entry)
{
    return appendEntry(m_header->to, entry, *m_mask, MMS_FIELD_TO);
}

QValueList<WMFMEntry> &WMMSMsg::getCc()
{
    return m_header->cc;
}

bool WMMSMsg::setCc(const WMFMEntry &entry)
{
    return appendEntry(m_header->cc, entry, *m_mask, MMS_FIELD_CC);
}

QValueList<WMFMEntry> &WMMSMsg::getBcc()
{
    return m_header->bcc;
}

bool WMMSMsg::setBcc(const WMFMEntry &entry)
{
    return appendEntry(m_header->bcc, entry, *m_mask, MMS_FIELD_BCC);
}

WMMSContentType WMMSMsg::getContentType() const
{
    return m_header->contentType;
}

bool WMMSMsg::setContentType(const WMMSContentType &type)
{
    const QString appId = getAppID();
    const QString replyAppId = getReplyAppID();
    const QString auxAppInfo = getAuxAppInfo();
    m_header->contentType = type;
    if (getAppID().isEmpty()) {
        setAppID(appId);
    }
    if (getReplyAppID().isEmpty()) {
        setReplyAppID(replyAppId);
    }
    if (getAuxAppInfo().isEmpty()) {
        setAuxAppInfo(auxAppInfo);
    }
    m_mask->setMask(MMS_FIELD_CONTENT_TYPE);
    return true;
}

QString WMMSMsg::getAppID() const
{
    return m_header->contentType.getParam(appIdName());
}

bool WMMSMsg::setAppID(const QString &id)
{
    m_header->contentType.setParam(appIdName(), id);
    return true;
}

QString WMMSMsg::getReplyAppID() const
{
    return m_header->contentType.getParam(replyAppIdName());
}

bool WMMSMsg::setReplyAppID(const QString &id)
{
    m_header->contentType.setParam(replyAppIdName(), id);
    return true;
}

QString WMMSMsg::getAuxAppInfo() const
{
    return m_header->contentType.getParam(auxAppInfoName());
}

bool WMMSMsg::setAuxAppInfo(const QString &info)
{
    m_header->contentType.setParam(auxAppInfoName(), info);
    return true;
}

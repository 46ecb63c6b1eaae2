// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/field_table.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/codec/msg_field_mask.h"
#include "mms/model/wmmsmsg.h"

// Kept: printing marks fields as present, From always, as encoding would.
void WMMSMsg::printMsg()
{
    m_mask->setMask(MMS_FIELD_FROM);
    if (!m_header->bcc.isEmpty()) {
        m_mask->setMask(MMS_FIELD_BCC);
    }
    if (!m_header->cc.isEmpty()) {
        m_mask->setMask(MMS_FIELD_CC);
    }
    if (!m_header->to.isEmpty()) {
        m_mask->setMask(MMS_FIELD_TO);
    }
    if (!m_header->contentType.isEmpty()) {
        m_mask->setMask(MMS_FIELD_CONTENT_TYPE);
    }

    logLine(4, "====================== printMsg ============================\n");
    logLine(4, "============ MMS Message Header Fields & Value =============\n");
    for (quint8 id = MMS_FIELD_BCC; id <= MMS_FIELD_TRANSACTION_ID; ++id) {
        if (fieldIsPresent(id)) {
            wmsg::codec::fieldRow(id)->print(m_header.get());
        }
    }
    if (!m_body.isEmpty()) {
        logLine(4, "============ MMS Message Body Information= =============\n");
        m_body.printInfo();
    }
    logLine(4, "==================== Misc Information ======================\n");
    logLine(4, "mmsType: %d", m_mmsType);
    logLine(4, "msgDBID: %d", m_msgDBID);
    logLine(4, "UPIType: %d", m_upiType);
    logLine(4, "audioExistence: %d", m_audioExistence);
    logLine(4, "videoExistence: %d", m_videoExistence);
    logLine(4, "attachmentExistence: %d", m_attachmentExistence);
    logLine(4, "============================================================\n");
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/mms_ua_cmd.h"

namespace {

constexpr int kTextLength = 1; // the word with the length of the text

} // namespace

MMS_UA_Cmd *MMS_UA_Cmd::factory(int type)
{
    switch (type) {
    case MMS_UA_CMD_SEND:
        return new MMS_UA_SendCmd;
    case MMS_UA_CMD_REGISTER:
        return new MMS_UA_RegisterCmd;
    case MMS_UA_CMD_DEREGISTER:
        return new MMS_UA_DeRegisterCmd;
    case MMS_UA_CMD_RETRIEVE:
        return new MMS_UA_RetrieveCmd;
    case MMS_UA_CMD_ABORT:
        return new MMS_UA_AbortCmd;
    case MMS_UA_CMD_PAUSE:
        return new MMS_UA_PauseCmd;
    case MMS_UA_CMD_RESUME:
        return new MMS_UA_ResumeCmd;
    default: // Kept: command 5 has no class.
        return nullptr;
    }
}

void MMS_UA_TextCmd::setData(char *buf, int len, bool copy)
{
    MMS_UA_CmdItem::setData(buf, len, copy);
    qint32 position = 0;
    m_text = takeText(position, word(kTextLength));
}

void MMS_UA_TextCmd::setText(const QString &text)
{
    setWord(kTextLength, lengthOf(text));
    setTexts({text});
    m_text = text;
}

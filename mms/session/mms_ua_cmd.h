// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "mms/session/mms_ua_cmditem.h"
#include "wmsg_export.h"

#include <QtCore/QString>

// Commands, from a session to the proxy daemon.
//
//   id  class                 fixed part, in words                   variable part
//   1   MMS_UA_SendCmd        request id, URI bytes, 0               URI: path of a mail file
//   2   MMS_UA_RegisterCmd    request id, application id bytes       application id
//   3   MMS_UA_DeRegisterCmd  request id, application id bytes       application id
//   4   MMS_UA_RetrieveCmd    request id, URI bytes, 0               URI of a message to fetch
//   5   none
//   6   MMS_UA_AbortCmd       request id, request to abort
//   7   MMS_UA_PauseCmd       request id, request to pause
//   8   MMS_UA_ResumeCmd      request id, request to resume

/// The command ids. On the wire: add at the end, never renumber.
enum MMS_UA_CMD_E : qint32 {
    MMS_UA_CMD_SEND = 1,
    MMS_UA_CMD_REGISTER = 2,
    MMS_UA_CMD_DEREGISTER = 3,
    MMS_UA_CMD_RETRIEVE = 4,
    // 5 is no command.
    MMS_UA_CMD_ABORT = 6,
    MMS_UA_CMD_PAUSE = 7,
    MMS_UA_CMD_RESUME = 8,
};

/// MMS_UA_Cmd is a command: a request of a session, with the id under which its outcome is told.
class WMSG_EXPORT MMS_UA_Cmd : public MMS_UA_CmdItem {
public:
    /// factory returns a new, empty command of an id of MMS_UA_CMD_E, which the caller deletes;
    /// null for any other number.
    static MMS_UA_Cmd *factory(int type);

    qint32 getRequestId() const { return word(0); }
    void setRequestId(qint32 id) { setWord(0, id); }

protected:
    using MMS_UA_CmdItem::MMS_UA_CmdItem;
};

/// MMS_UA_TextCmd is what the commands with one text share. The text goes into the variable part,
/// and its length in bytes into the second word.
class WMSG_EXPORT MMS_UA_TextCmd : public MMS_UA_Cmd {
public:
    /// setData sets the variable part and takes the text out of it, as many bytes as the second
    /// word says and the variable part has.
    void setData(char *buf, int len, bool copy) override;

protected:
    using MMS_UA_Cmd::MMS_UA_Cmd;

    const QString &text() const { return m_text; }
    void setText(const QString &text);

private:
    QString m_text;
};

/// MMS_UA_UriCmd is a command that names a message by its URI.
class WMSG_EXPORT MMS_UA_UriCmd : public MMS_UA_TextCmd {
public:
    QString getUri() const { return text(); }
    void setUri(const QString &uri) { setText(uri); }

protected:
    explicit MMS_UA_UriCmd(qint32 type) : MMS_UA_TextCmd(type, 3) { }
};

/// MMS_UA_AppIdCmd is a command that names an application.
class WMSG_EXPORT MMS_UA_AppIdCmd : public MMS_UA_TextCmd {
public:
    QString getAppId() const { return text(); }
    void setAppId(const QString &appId) { setText(appId); }

protected:
    explicit MMS_UA_AppIdCmd(qint32 type) : MMS_UA_TextCmd(type, 2) { }
};

/// MMS_UA_TargetCmd is a command about an earlier request of the same session.
class WMSG_EXPORT MMS_UA_TargetCmd : public MMS_UA_Cmd {
public:
    qint32 getTargetId() const { return word(1); }
    void setTargetId(qint32 id) { setWord(1, id); }

protected:
    explicit MMS_UA_TargetCmd(qint32 type) : MMS_UA_Cmd(type, 2) { }
};

/// MMS_UA_SendCmd asks to send the message in the mail file at a path. The file is the daemon's
/// from then on.
class WMSG_EXPORT MMS_UA_SendCmd final : public MMS_UA_UriCmd {
public:
    MMS_UA_SendCmd() : MMS_UA_UriCmd(MMS_UA_CMD_SEND) { }
};

/// MMS_UA_RegisterCmd asks for the messages to an application.
class WMSG_EXPORT MMS_UA_RegisterCmd final : public MMS_UA_AppIdCmd {
public:
    MMS_UA_RegisterCmd() : MMS_UA_AppIdCmd(MMS_UA_CMD_REGISTER) { }
};

/// MMS_UA_DeRegisterCmd wants no more messages to an application.
class WMSG_EXPORT MMS_UA_DeRegisterCmd final : public MMS_UA_AppIdCmd {
public:
    MMS_UA_DeRegisterCmd() : MMS_UA_AppIdCmd(MMS_UA_CMD_DEREGISTER) { }
};

/// MMS_UA_RetrieveCmd asks to fetch the message at a URI.
class WMSG_EXPORT MMS_UA_RetrieveCmd final : public MMS_UA_UriCmd {
public:
    MMS_UA_RetrieveCmd() : MMS_UA_UriCmd(MMS_UA_CMD_RETRIEVE) { }
};

/// MMS_UA_AbortCmd ends a request.
class WMSG_EXPORT MMS_UA_AbortCmd final : public MMS_UA_TargetCmd {
public:
    MMS_UA_AbortCmd() : MMS_UA_TargetCmd(MMS_UA_CMD_ABORT) { }
};

/// MMS_UA_PauseCmd holds a request up.
class WMSG_EXPORT MMS_UA_PauseCmd final : public MMS_UA_TargetCmd {
public:
    MMS_UA_PauseCmd() : MMS_UA_TargetCmd(MMS_UA_CMD_PAUSE) { }
};

/// MMS_UA_ResumeCmd lets a request that was held up go on.
class WMSG_EXPORT MMS_UA_ResumeCmd final : public MMS_UA_TargetCmd {
public:
    MMS_UA_ResumeCmd() : MMS_UA_TargetCmd(MMS_UA_CMD_RESUME) { }
};

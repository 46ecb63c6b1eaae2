// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/wmmssession.h"

#include "core/log.h"
#include "mms/model/wmmsmsg.h"
#include "mms/session/wmmssession_p.h"

#include <new>

namespace {

/// Keeps the numbers of our events from being handed out as those of others. Once is enough for the
/// process.
void reserveEventTypes()
{
    static const bool isDone = [] {
        for (int type = kFirstProxyEvent; type <= kLastProxyEvent; ++type) {
            QEvent::registerEventType(type);
        }
        return true;
    }();
    Q_UNUSED(isDone)
}

/// What a request on a session without a private half gives.
bool isMissing(const std::unique_ptr<WMMSSessionPrivate> &half, WMFM::STATUS_T &status)
{
    status = half ? WMFM::STATUS_OK : WMFM::STATUS_FAIL;
    return !half;
}

bool hasRecipient(WMMSMsg &message)
{
    return !message.getTo().isEmpty() || !message.getCc().isEmpty() || !message.getBcc().isEmpty();
}

} // namespace

WMMSSession::WMMSSession(WMFM::STATUS_T &status)
    : m_private(new (std::nothrow) WMMSSessionPrivate(this))
{
    if (!m_private) {
        logLine(4,
                "WMMSSession::WMMSSession constructs a new WMMSSessionPrivate failed, return fail "
                "status!");
        status = WMFM::STATUS_FAIL;
        return;
    }
    reserveEventTypes();
    m_private->socket = std::make_unique<QWSSocket>(this);
    QWSSocket *socket = m_private->socket.get();
    m_private->closed = false;
    connect(socket, &QWSSocket::readyRead, this, &WMMSSession::readData);
    connect(socket, qOverload<int>(&QWSSocket::error), this, &WMMSSession::errorHandler);
    connect(socket, &QWSSocket::connectionClosed, this, &WMMSSession::closeClient);
    socket->connectToLocalFile(QStringLiteral("/tmp/mmsproxy"));
    status = WMFM::STATUS_OK;
}

WMMSSession::~WMMSSession()
{
    if (m_private) {
        m_private->close();
    }
}

int WMMSSession::registerAppID(const QString &appId, WMFM::STATUS_T &status)
{
    if (isMissing(m_private, status)) {
        return -1;
    }
    MMS_UA_RegisterCmd command;
    command.setAppId(appId);
    return m_private->request(command);
}

int WMMSSession::deRegisterAppID(const QString &appId, WMFM::STATUS_T &status)
{
    if (isMissing(m_private, status)) {
        return -1;
    }
    MMS_UA_DeRegisterCmd command;
    command.setAppId(appId);
    return m_private->request(command);
}

int WMMSSession::send(WMFMMsg *msg, WMFM::STATUS_T &status)
{
    logLine(8, "Entering function %s\n", "send");
    const bool isMms = msg && msg->getMsgType() == WMFM::MSG_TYPE_MMS;
    auto *message = isMms ? dynamic_cast<WMMSMsg *>(msg) : nullptr;
    if (!message || !m_private) {
        status = WMFM::STATUS_FAIL;
        return -1;
    }
    if (!hasRecipient(*message)) {
        logLine(4, "no target address,send fail!");
        status = WMFM::STATUS_SEND_FAIL;
        return -1;
    }
    if (message->getContentType().isEmpty()) {
        logLine(4, "no contentType,send fail!");
        status = WMFM::STATUS_SEND_FAIL;
        return -1;
    }
    logLine(4, "============== the input msg to be send =================");
    message->printMsg();
    status = WMFM::STATUS_OK;
    const QString path = WMMSSessionPrivate::save(*message, status);
    if (path.isNull()) {
        return -1;
    }
    MMS_UA_SendCmd command;
    command.setUri(path);
    return m_private->request(command);
}

void WMMSSession::mmsAbort(int id, WMFM::STATUS_T &status)
{
    if (!isMissing(m_private, status)) {
        m_private->request(MMS_UA_AbortCmd(), id);
    }
}

void WMMSSession::mmsPause(int id, WMFM::STATUS_T &status)
{
    if (!isMissing(m_private, status)) {
        m_private->request(MMS_UA_PauseCmd(), id);
    }
}

void WMMSSession::mmsResume(int id, WMFM::STATUS_T &status)
{
    if (!isMissing(m_private, status)) {
        m_private->request(MMS_UA_ResumeCmd(), id);
    }
}

WMFM::MSG_TYPE_T WMMSSession::getMsgType() const
{
    return WMFM::MSG_TYPE_MMS;
}

bool WMMSSession::event(QEvent *e)
{
    const int type = e->type();
    logLine(8, "Entering function %s\nevent type is %d \n", "event", type);
    if (type >= kFirstProxyEvent && type <= kLastProxyEvent) {
        const auto *carrier = dynamic_cast<QCustomEvent *>(e);
        return m_private && m_private->handle(type, carrier ? carrier->data() : nullptr);
    }
    return QObject::event(e) && type < QEvent::User;
}

void WMMSSession::readData()
{
    while (m_private && m_private->readEvent()) { }
}

void WMMSSession::errorHandler(int)
{
    if (m_private) {
        m_private->closed = true;
        m_private->socket->flush();
    }
    Q_EMIT connectionClosed();
}

void WMMSSession::closeClient()
{
    logLine(8, "Entering function %s\n", "closeClient");
    if (m_private) {
        m_private->closed = true;
    }
}

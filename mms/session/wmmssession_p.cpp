// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/session/wmmssession_p.h"

#include "core/log.h"
#include "core/wmfmlistener.h"
#include "core/wmfmmsg.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"
#include "mms/session/outgoing_file.h"
#include "mms/session/wmmssession.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QPointer>

#include <cstring>
#include <utility>

namespace {

constexpr int kIdSize = sizeof(qint32);

/// The record of an event as what its type says it is.
template <typename Record> Record *as(void *record)
{
    return static_cast<Record *>(static_cast<MMS_UA_SvCmd *>(record));
}

void removeFile(const QString &path)
{
    if (!path.isEmpty() && !path.contains(QChar::Null)) {
        QFile::remove(path);
    }
}

} // namespace

void WMMSSessionPrivate::close()
{
    for (const QString &path : std::as_const(beingTold)) {
        removeFile(path);
    }
    socket->disconnect(owner);
    socket->close();
}

int WMMSSessionPrivate::request(MMS_UA_Cmd &command)
{
    command.setRequestId(++requestCounter);
    command.write(socket.get());
    return requestCounter;
}

void WMMSSessionPrivate::request(MMS_UA_TargetCmd &&command, int target)
{
    command.setTargetId(target);
    request(command);
}

QString WMMSSessionPrivate::save(WMMSMsg &message, WMFM::STATUS_T &status)
{
    OutgoingFile file;
    if (file.path().isNull()) {
        logLine(4, "WMMSSession::send: message input is not correct\n");
        status = WMFM::STATUS_INVALID_PARAM;
        return QString();
    }
    if (message.saveAs(file.path(), nullptr, nullptr) != MMS_SAVE_OK) {
        logLine(4, "encode error,send fail!");
        status = WMFM::STATUS_SEND_FAIL;
        return QString();
    }
    file.keep();
    return file.path();
}

bool WMMSSessionPrivate::readEvent()
{
    qint32 id = -1;
    char bytes[kIdSize];
    const bool hasId =
        socket->bytesAvailable() >= kIdSize && socket->readBlock(bytes, kIdSize) == kIdSize;
    if (hasId) {
        memcpy(&id, bytes, kIdSize);
    }
    logLine(8, "WMMSSession::readData: evType is %d\n", id);
    if (!hasId) {
        return false; // up to three bytes wait for the others
    }
    if (id > 0) {
        std::unique_ptr<MMS_UA_SvCmd> record(MMS_UA_SvCmd::factory(id));
        // Kept: a record that has not arrived whole is posted, and what follows is a new record.
        if (!record || (record->read(socket.get()) == 0 && record->isRefused())) {
            drop();
            return false;
        }
        QCoreApplication::postEvent(owner, new ProxyEvent(std::move(record)));
    }
    return socket->bytesAvailable() > 0;
}

void WMMSSessionPrivate::drop()
{
    socket->abort();
    owner->closeClient();
}

bool WMMSSessionPrivate::handle(int eventType, void *record)
{
    // Of an event whose words have not arrived nothing can be told.
    if (record && as<MMS_UA_SvCmd>(record)->isCutOff()
        && eventType <= proxyEventType(MMS_UA_SVCMD_STATUS)) {
        return true;
    }
    switch (eventType - proxyEventType(0)) {
    case MMS_UA_SVCMD_REQ_COMPLETE:
        procEvReqCompleted(as<MMS_UA_SvReqCompleteCmd>(record));
        return true;
    case MMS_UA_SVCMD_REG_COMPLETE:
        procEvRegCompleted(as<MMS_UA_SvRegCompleteCmd>(record));
        return true;
    case MMS_UA_SVCMD_RETR_COMPLETE:
        procEvRetrCompleted(as<MMS_UA_SvRetrCompleteCmd>(record));
        return true;
    case MMS_UA_SVCMD_PROGRESS:
        procEvProgress(as<MMS_UA_SvProgCmd>(record));
        return true;
    case MMS_UA_SVCMD_STATUS:
        procEvStsRet(as<MMS_UA_SvStsRetCmd>(record));
        return true;
    default:
        return false;
    }
}

void WMMSSessionPrivate::tellStatus(qint32 id, qint32 status) const
{
    if (WMFMListener *listener = owner->getListener()) {
        listener->statusChanged(id, static_cast<WMFM::STATUS_T>(status));
    }
}

void WMMSSessionPrivate::procEvReqCompleted(MMS_UA_SvReqCompleteCmd *ev)
{
    logLine(8, "Entering function %s\n", "procEvReqCompleted");
    if (!ev) {
        logLine(4, "WMMSSessionPrivate::procEvReqCompleted ev is null return!\n");
        return;
    }
    tellStatus(ev->getRequestId(), ev->getStatus());
}

void WMMSSessionPrivate::procEvRegCompleted(MMS_UA_SvRegCompleteCmd *ev)
{
    logLine(8, "Entering function %s\n", "procEvRegCompleted");
    if (!ev) {
        logLine(4, "WMMSSessionPrivate::procEvRegCompleted: ev is null return!\n");
        return;
    }
    if (ev->getRequestId() != nativeRegId) {
        logLine(4,
                "WMMSSessionPrivate::procEvReqCompleted: ev is not native "
                "registration/deregistration!\n");
        tellStatus(ev->getRequestId(), ev->getResult());
        return;
    }
    logLine(4, "WMMSSessionPrivate::procEvRegCompleted: ev is native registration!\n");
    if (ev->getResult() == 0) {
        logLine(4, "WMMSSessionPrivate::procEvRegCompleted: native register/deregister succeed!\n");
    } else {
        logLine(4, "WMMSSessionPrivate::procEvRegCompleted: native  register/deregister failed!\n");
    }
}

void WMMSSessionPrivate::procEvRetrCompleted(MMS_UA_SvRetrCompleteCmd *ev)
{
    logLine(8, "Entering function %s\n", "procEvRetrCompleted");
    if (!ev) {
        logLine(4, "WMMSSessionPrivate::procEvRetrCompleted, ev is null return!\n");
        return;
    }
    const QString uri = ev->getUri();
    logLine(4, "WMMSSessionPrivate::procEvRetrCompleted, uri is %s \n", uri);
    WMFMListener *listener = owner->getListener();
    if (!listener) {
        return; // nobody to take the message: the file stays
    }
    std::unique_ptr<WMFMMsg> message(WMFMMsg::factory(WMFM::MSG_TYPE_MMS));
    if (static_cast<WMMSMsg &>(*message).construct(uri, true) == MMS_DECODE_OK) {
        const QPointer<WMMSSession> session(owner);
        beingTold.append(uri);
        listener->msgIncome(message.release());
        if (session) {
            beingTold.removeLast();
        }
    } else {
        logLine(4, "get a MMS,decode fail!");
    }
    removeFile(uri);
}

void WMMSSessionPrivate::procEvProgress(MMS_UA_SvProgCmd *ev)
{
    WMFMListener *listener = owner->getListener();
    if (ev && listener) {
        listener->progress(ev->getRequestId(), ev->getValue1(), ev->getValue2());
    }
}

void WMMSSessionPrivate::procEvStsRet(MMS_UA_SvStsRetCmd *ev)
{
    logLine(8, "Entering function %s\n", "procEvStsRet");
    if (!ev) {
        logLine(4, "WMMSSessionPrivate::procEvStsRet: ev is null, return!\n");
        return;
    }
    logLine(4, "WMMSSessionPrivate::procEvStsRet: call listener requestStatusRet...\n");
    tellStatus(ev->getRequestId(), ev->getStatus());
}

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/engine/mms_eng_controller.h"

#include "platform/engine/engine_log_p.h"
#include "platform/engine/store_p.h"

#include <QtCore/QFile>

#include <cstdlib>

namespace {

constexpr unsigned short kInvalidFolder = 65535;

template <typename... Records> bool areThere(const Records *...records)
{
    return ((records != nullptr) && ...);
}

int refuseParameters(const char *operation)
{
    return wmsg::engine::refuse(
        MMS_ENG_BAD_PARAM,
        QStringLiteral("%1 was given no record or no folder").arg(QLatin1String(operation)));
}

} // namespace

MMS_ENG_Controller::MMS_ENG_Controller() = default;
MMS_ENG_Controller::~MMS_ENG_Controller() = default;

MMS_ENG_Controller *MMS_ENG_Controller::Instance()
{
    // Never destroyed: at the end of the process Qt may have closed the database before.
    static auto *const instance = new MMS_ENG_Controller;
    return instance;
}

QString MMS_ENG_Controller::StorePath()
{
    const QString root = QFile::decodeName(qgetenv("UVO_EXTRA_SYS_DATA_PATH"));
    const bool endsWithSlash = root.endsWith(QLatin1Char('/'));
    return root + (endsWithSlash ? QLatin1String("mms/engine/") : QLatin1String("/mms/engine/"));
}

wmsg::engine::Store *MMS_ENG_Controller::openStore(int &result)
{
    const QString path = StorePath();
    if (!m_store || !m_store->isAt(path)) {
        m_store.reset();
        auto store = std::make_unique<wmsg::engine::Store>(path);
        result = store->open();
        if (result != MMS_ENG_OK) {
            return nullptr;
        }
        m_store = std::move(store);
    }
    return m_store.get();
}

int MMS_ENG_Controller::CreateMMS(unsigned short folder, unsigned short *msgId,
                                  const MMS_MSG_HDR_T *header, const MMS_MSG_BDY_T *body)
{
    if (!areThere(msgId, header, body) || folder == kInvalidFolder) {
        return refuseParameters("CreateMMS");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->create(folder, *msgId, *header, *body) : result;
}

int MMS_ENG_Controller::UpdateMMS(unsigned short folder, unsigned short msgId,
                                  const MMS_MSG_HDR_T *header, const MMS_MSG_BDY_T *body)
{
    if (!areThere(header, body) || folder == kInvalidFolder) {
        return refuseParameters("UpdateMMS");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->update(folder, msgId, *header, *body) : result;
}

int MMS_ENG_Controller::ReadMMSHdr(unsigned short msgId, MMS_MSG_HDR_T *header)
{
    if (!areThere(header)) {
        return refuseParameters("ReadMMSHdr");
    }
    *header = {};
    int result = MMS_ENG_OK;
    if (auto *store = openStore(result)) {
        result = store->readHeader(msgId, *header);
    }
    if (result != MMS_ENG_OK) {
        FreeMMSHdr(header);
    }
    return result;
}

int MMS_ENG_Controller::ReadMMSBody(unsigned short msgId, MMS_MSG_BDY_T *body)
{
    if (!areThere(body)) {
        return refuseParameters("ReadMMSBody");
    }
    *body = {};
    int result = MMS_ENG_OK;
    if (auto *store = openStore(result)) {
        result = store->readBody(msgId, *body);
    }
    if (result != MMS_ENG_OK) {
        FreeMMSBdy(body);
    }
    return result;
}

int MMS_ENG_Controller::ReadMMSMoMtStatus(unsigned short msgId, MMS_MOMT_STATUS_T *status)
{
    if (!areThere(status)) {
        return refuseParameters("ReadMMSMoMtStatus");
    }
    *status = {};
    int result = MMS_ENG_OK;
    if (auto *store = openStore(result)) {
        result = store->readStatus(msgId, *status);
    }
    if (result != MMS_ENG_OK) {
        std::free(status->errorText);
        std::free(status->statusText);
        *status = {};
    }
    return result;
}

int MMS_ENG_Controller::FreeMMSHdr(MMS_MSG_HDR_T *header)
{
    if (header) {
        for (unsigned short *text :
             {header->from, header->to, header->cc, header->bcc, header->subject, header->appId,
              header->replyAppId, header->auxAppInfo}) {
            std::free(text);
        }
        std::free(header->presentation);
        *header = {};
    }
    return MMS_ENG_OK;
}

int MMS_ENG_Controller::FreeMMSBdy(MMS_MSG_BDY_T *body)
{
    if (!body) {
        return MMS_ENG_OK;
    }
    for (unsigned int i = 0; body->parts && i < MMS_ENG_MAX_PARTS; ++i) {
        const MMS_MSG_PART_T &part = body->parts[i];
        for (char *text : {part.mimeType, part.contentId, part.contentLocation, part.fileName,
                           part.headerText}) {
            std::free(text);
        }
        std::free(part.data);
        std::free(part.dataFile);
    }
    if (m_store && body->parts) {
        m_store->releaseBody(body->parts);
    }
    std::free(body->parts);
    std::free(body->contentType);
    *body = {};
    return MMS_ENG_OK;
}

int MMS_ENG_Controller::ListFolders(QList<unsigned short> *folders)
{
    if (!areThere(folders)) {
        return refuseParameters("ListFolders");
    }
    folders->clear();
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->folders(*folders) : result;
}

int MMS_ENG_Controller::ListMMS(unsigned short folder, QList<unsigned short> *ids)
{
    if (!areThere(ids)) {
        return refuseParameters("ListMMS");
    }
    ids->clear();
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->list(folder, *ids) : result;
}

int MMS_ENG_Controller::CountMMS(unsigned short folder, unsigned int *count)
{
    if (!areThere(count)) {
        return refuseParameters("CountMMS");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->count(folder, *count) : result;
}

int MMS_ENG_Controller::FindMMS(unsigned short msgId, unsigned short *folder)
{
    if (!areThere(folder)) {
        return refuseParameters("FindMMS");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->find(msgId, *folder) : result;
}

int MMS_ENG_Controller::DeleteMMS(unsigned short msgId)
{
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->remove(msgId) : result;
}

int MMS_ENG_Controller::MoveMMS(unsigned short msgId, unsigned short folder)
{
    if (folder == kInvalidFolder) {
        return refuseParameters("MoveMMS");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->move(msgId, folder) : result;
}

int MMS_ENG_Controller::SetMMSMoMtStatus(unsigned short msgId, const MMS_MOMT_STATUS_T *status)
{
    if (!areThere(status)) {
        return refuseParameters("SetMMSMoMtStatus");
    }
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->setStatus(msgId, *status) : result;
}

int MMS_ENG_Controller::CheckStore(QStringList *problems)
{
    if (!areThere(problems)) {
        return refuseParameters("CheckStore");
    }
    problems->clear();
    int result = MMS_ENG_OK;
    auto *store = openStore(result);
    return store ? store->check(*problems) : result;
}

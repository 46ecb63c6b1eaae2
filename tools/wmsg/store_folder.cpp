// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/store_folder.h"

#include "tools/wmsg/stored_message.h"

#include <mms/model/result_codes.h>
#include <platform/engine/mms_eng_controller.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

QString StoreFolder::open() const
{
    const EngineWords words;
    unsigned int count = 0;
    const int result = MMS_ENG_Controller::Instance()->CountMMS(m_number, &count);
    return result == MMS_ENG_OK ? QString() : words.last();
}

QString StoreFolder::objection(const WMMSMsg &message)
{
    const auto *parts = message.getMultiParts().subParts();
    return parts && parts->size() > MMS_ENG_MAX_PARTS
        ? u"has %1 parts, and the store keeps %2"_s.arg(parts->size()).arg(MMS_ENG_MAX_PARTS)
        : QString();
}

QString StoreFolder::add(const WMMSMsg &message)
{
    m_id.reset();
    QString problem = objection(message);
    if (!problem.isEmpty()) {
        return problem;
    }
    const EngineWords words;
    WMMSMsg copy(message); // what stores a message may change it
    unsigned short id = MMS_ENG_INVALID_ID;
    if (copy.constructEngMsg(&id, m_number) != MMS_SAVE_OK) {
        return words.last();
    }
    m_id = id;
    return {};
}

QString StoreFolder::placeInWords() const
{
    return m_id ? u"message %1 in %2"_s.arg(*m_id).arg(folderName(m_number)) : QString();
}

void StoreFolder::addPlace(QJsonObject &object) const
{
    if (m_id) {
        object.insert(u"id"_s, *m_id);
        object.insert(u"folder"_s, folderName(m_number));
    }
}

} // namespace wmsg::cli

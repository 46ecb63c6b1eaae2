// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/drm_container_p.h"

namespace wmsg::drm {

// The formats exclude each other by their first bytes, but for content of version 1 and binary XML
// of version 1.1, which both begin with 01. Content is asked first: it is told by a media type at
// its place, which rights never have there. The other way round a letter of the content could pass
// for a tag of rights.
Container readContainer(QByteArrayView head, qint64 size)
{
    if (auto message = readDrmMessage(head)) {
        return *message;
    }
    if (auto content = readContentVersion2(head)) {
        return *content;
    }
    if (auto content = readContentVersion1(head, size)) {
        return *content;
    }
    if (auto rights = readRightsWbxml(head)) {
        return *rights;
    }
    return readRightsXml(head).value_or(Container());
}

} // namespace wmsg::drm

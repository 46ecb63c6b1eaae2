// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a rights object as XML.

#include "fuzz/drm_properties.h"

using namespace wmsg::fuzz;
using wmsg::drm::kLongestRights;
using wmsg::drm::readRightsXml;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = viewOf(data, size);
    const auto rights = readRightsXml(bytes);
    if (!rights) {
        return 0;
    }
    checkContainer(bytes, *rights);
    require(rights->kind == DRM_KIND_RIGHTS && rights->contentType.isEmpty(),
            "rights hold no content");
    const QByteArray padded = bytes.toByteArray() + QByteArray(2 * kLongestRights, ' ');
    const auto longer = readRightsXml(padded);
    const auto much = readRightsXml(QByteArrayView(padded).first(kLongestRights));
    require(longer && much, "white space behind rights makes nothing else of them");
    require(isEqual(*longer, *much), "what lies behind the longest rights is not looked at");
    return 0;
}

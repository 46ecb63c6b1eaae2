// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a rights object as binary XML.

#include "fuzz/drm_properties.h"

using namespace wmsg::fuzz;
using wmsg::drm::readRightsWbxml;

namespace {

/// A rights object with an asset that has the identifier `uri`.
QByteArray written(const QByteArray &uri)
{
    return QByteArray::fromHex("030E6A00454A48") + '\x03' + uri + '\0'
        + QByteArray::fromHex("010101");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = viewOf(data, size);
    const auto rights = readRightsWbxml(bytes);
    if (!rights) {
        return 0;
    }
    checkContainer(bytes, *rights);
    require(rights->kind == DRM_KIND_RIGHTS && rights->contentType.isEmpty(),
            "rights hold no content");
    const auto longer = readRightsWbxml(bytes.toByteArray() + "\x01\x01");
    require(longer.has_value(), "more bytes make nothing else of rights");
    require(rights->contentUri.isEmpty() || longer->contentUri == rights->contentUri,
            "the first identifier counts");
    const auto read = readRightsWbxml(written(rights->contentUri));
    require(read && isEqual(*read, *rights), "what is written reads back");
    return 0;
}

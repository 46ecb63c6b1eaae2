// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a DRM message: forward-lock or combined delivery.

#include "fuzz/drm_properties.h"

using namespace wmsg::fuzz;
using wmsg::drm::readDrmMessage;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = viewOf(data, size);
    const auto message = readDrmMessage(bytes);
    if (!message) {
        return 0;
    }
    checkContainer(bytes, *message);
    require(message->kind == DRM_KIND_FORWARD_LOCK || message->kind == DRM_KIND_COMBINED_DELIVERY,
            "a message is locked or has rights");
    // An empty line ends the header, wherever the input stopped.
    const auto longer = readDrmMessage(bytes.toByteArray() + "\r\n\r\ndata");
    require(longer && longer->kind == message->kind, "more data make nothing else of a message");
    return 0;
}

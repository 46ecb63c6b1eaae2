// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is DRM content of version 1.

#include "fuzz/drm_properties.h"

using namespace wmsg::fuzz;
using wmsg::drm::Container;
using wmsg::drm::readContentVersion1;

namespace {

QByteArray uintvar(qsizetype value)
{
    QByteArray bytes(1, static_cast<char>(value & 0x7F));
    while ((value >>= 7) != 0) {
        bytes.prepend(static_cast<char>((value & 0x7F) | 0x80));
    }
    return bytes;
}

QByteArray headersOf(const Container &content)
{
    return "Content-Name: " + content.contentName + "\r\nRights-Issuer: " + content.rightsIssuerUrl
        + "\r\nEncryption-Method: " + content.encryption + "; padding=x\r\n";
}

QByteArray written(const Container &content)
{
    const QByteArray headers = headersOf(content);
    return QByteArray(1, 1) + number(content.contentType.size(), 1)
        + number(content.contentUri.size(), 1) + content.contentType + content.contentUri
        + uintvar(headers.size()) + uintvar(0) + headers;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes = viewOf(data, size);
    const auto content = readContentVersion1(bytes, bytes.size());
    if (!content) {
        return 0;
    }
    checkContainer(bytes, *content);
    require(content->kind == DRM_KIND_CONTENT_V1 && !content->contentType.isEmpty(),
            "content of version 1 has a type");
    const QByteArray again = written(*content);
    const auto read = readContentVersion1(again, again.size());
    require(read && isEqual(*read, *content), "what is written reads back");
    require(!readContentVersion1(again, again.size() - 1), "headers past the end are no content");
    return 0;
}

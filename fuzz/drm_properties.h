// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/fuzz_support.h"
#include "platform/drmclient/drm_container_p.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <algorithm>

/// What must hold for every container that a reader knows, and containers made of what was read.

namespace wmsg::fuzz {

inline QByteArrayView viewOf(const uint8_t *data, size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)};
}

inline bool isPrintable(const QByteArray &text)
{
    return std::none_of(text.cbegin(), text.cend(),
                        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; });
}

inline bool isEqual(const drm::Container &a, const drm::Container &b)
{
    return a.kind == b.kind && a.encryption == b.encryption && a.contentName == b.contentName
        && a.contentUri == b.contentUri && a.contentType == b.contentType
        && a.rightsIssuerUrl == b.rightsIssuerUrl;
}

/// checkContainer holds a container to what its fields promise, and to what all readers together
/// make of its bytes.
inline void checkContainer(QByteArrayView bytes, const drm::Container &container)
{
    require(container.kind != DRM_KIND_NONE, "a container has a kind");
    for (const QByteArray &text :
         {container.encryption, container.contentName, container.contentUri, container.contentType,
          container.rightsIssuerUrl}) {
        require(isPrintable(text), "no field holds control characters");
        require(text == text.trimmed(), "no field has white space around it");
    }
    require(container.contentType.isEmpty() || container.contentType.count('/') == 1,
            "a media type has one slash");
    const drm::Container read = drm::readContainer(bytes, bytes.size());
    require(isEqual(read, container)
                || (container.kind == DRM_KIND_RIGHTS && read.kind == DRM_KIND_CONTENT_V1),
            "a container is of one kind, but for rights that look like content");
}

inline QByteArray number(qsizetype value, int size)
{
    QByteArray bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.append(static_cast<char>(value >> shift & 0xFF));
    }
    return bytes;
}

inline QByteArray box(const char *type, const QByteArray &content)
{
    return number(8 + content.size(), 4) + type + content;
}

} // namespace wmsg::fuzz

// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/drmclient/drm_client.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QtGlobal>

#include <optional>

/// The readers of the container formats, one file each. A reader looks at the head of a file: its
/// first bytes, all of them or kLongestHead. It returns nothing for what is not of its format, and
/// leaves a field empty that it cannot find. Each takes time and memory in proportion to the head.
namespace wmsg::drm {

/// As many bytes of a file are read.
inline constexpr qsizetype kLongestHead = qsizetype(256) * 1024;

/// Rights are looked for in as many bytes. A rights object of a phone has less than ten thousand.
inline constexpr qsizetype kLongestRights = qsizetype(32) * 1024;

struct Container {
    DRM_KIND_T kind = DRM_KIND_NONE;
    QByteArray encryption;
    QByteArray contentName;
    QByteArray contentUri;
    QByteArray contentType;
    QByteArray rightsIssuerUrl;
};

using MaybeContainer = std::optional<Container>;

/// Forward-lock and combined delivery.
MaybeContainer readDrmMessage(QByteArrayView head);
/// DRM content of version 1. `size` is that of the whole file.
MaybeContainer readContentVersion1(QByteArrayView head, qint64 size);
/// DRM content of version 2, also as a film or a sound with encrypted tracks.
MaybeContainer readContentVersion2(QByteArrayView head);
/// Rights objects of both versions as XML.
MaybeContainer readRightsXml(QByteArrayView head);
/// Rights objects of version 1 as binary XML.
MaybeContainer readRightsWbxml(QByteArrayView head);

/// readContainer asks all of them; a head that none knows has the kind DRM_KIND_NONE.
Container readContainer(QByteArrayView head, qint64 size);

} // namespace wmsg::drm

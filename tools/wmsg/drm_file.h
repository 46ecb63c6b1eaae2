// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <platform/drmclient/drm_client.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// What is told about one file that may be protected, in words and as JSON.
namespace wmsg::cli {

struct DrmFile {
    QString name;
    bool isProtected = false;
    DRM_KIND_T kind = DRM_KIND_NONE;
    QString contentType;
    QString contentUri;
    QString contentName;
    QString encryption;
    QString rightsIssuer;
    bool hasSendableFormat = true; ///< its extension is not that of DRM messages
    bool isForwardable = true; ///< its rights allow it

    [[nodiscard]] bool isSendable() const { return hasSendableFormat && isForwardable; }
};

/// Asks the checks about a file that can be read.
[[nodiscard]] DrmFile drmFileAt(const QString &path);

/// "forward-lock", "DRM content, version 1" and so on.
[[nodiscard]] QString kindInWords(const DrmFile &file);

/// One line with the kind and both answers.
[[nodiscard]] QString drmLine(const DrmFile &file);

/// All that is known, a line each, and why the answers are as they are.
[[nodiscard]] QString drmView(const DrmFile &file);

/// The same for programs. What is not known is absent.
[[nodiscard]] QJsonObject drmJson(const DrmFile &file);

} // namespace wmsg::cli

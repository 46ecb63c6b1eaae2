// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <QtCore/QStringList>

/// The device's media player, as far as file names go: it chooses its decoder by the extension, so
/// a sound or a film must be saved under one that it knows.
class WMSG_PLATFORM_EXPORT UTIL_MimeType {
public:
    /// What is to be played. The values are part of the interface.
    enum MIME_TYPE_T : int {
        MIME_TYPE_AUDIO = 0, ///< sound
        MIME_TYPE_VIDEO = 1, ///< film
        MIME_TYPE_MEDIA = 2, ///< either
    };

    /// queryMpSupportedExtensions returns the extensions that the media player plays for `kind`, in
    /// lower case and without a dot. It is empty for any other value.
    static QStringList queryMpSupportedExtensions(MIME_TYPE_T kind);
};
